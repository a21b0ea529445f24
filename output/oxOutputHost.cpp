#include "oxOutputHost.h"

#include "oxLog.h"

namespace {
oxOutputHost* theOutputHost = nullptr;
}

oxOutputHost* oxOutputHost::current() { return theOutputHost; }

oxImageWriter* oxOutputHost::writerFor(const char* command)
{
    if (theOutputHost && theOutputHost->getImageWriter())
        return theOutputHost->getImageWriter();
    oxLog::error("%s: the render settings module is not loaded, nothing was exported.", command);
    return nullptr;
}

oxOutputHost::oxOutputHost() { theOutputHost = this; }

oxOutputHost::~oxOutputHost()
{
    if (theOutputHost == this)
        theOutputHost = nullptr;
}
