#include "oxDeprecatedSettings.h"

#include <cstdio>

namespace {

// Standard output, not the log: script users read these lines in the script's own output.
void printDeprecated(const char* text)
{
    std::fputs(text, stdout);
    std::fflush(stdout);
}

} // namespace

void setInitialAASamples(int)
{
    printDeprecated("Warning: setInitialAASamples is deprecated and is no longer used.\n");
}

void setAdaptiveAASamples(int)
{
    printDeprecated("Warning: setAdaptiveAASamples is deprecated and is no longer used.\n");
}
