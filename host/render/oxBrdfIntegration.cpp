#include "oxBrdfIntegration.h"

#include "oxCallTrace.h"

#include <string>

namespace {
int brdfType = 2;
}

void oxBrdfIntegration::setBrdfType(int type)
{
    oxCallTrace::record("oxBrdfIntegration::setBrdfType", std::to_string(type));
    brdfType = type;
}

int oxBrdfIntegration::getBrdfType() { return brdfType; }
