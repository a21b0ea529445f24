// The XML message reader: every record file of the host and the plug-in (presets, preferences,
// projects, job records, variant set configurations) goes through it. A read that succeeds
// must write back and read again to the same text.

#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageRW.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    oxLog::setStderrEnabled(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    oxMessage message;
    if (!oxMessageRW::read(message, nullptr, text))
        return 0;
    std::string written, again;
    oxMessage reread;
    if (!oxMessageRW::write(message, written) || !oxMessageRW::read(reread, nullptr, written) ||
        !oxMessageRW::write(reread, again) || again != written)
        std::abort();
    return 0;
}
