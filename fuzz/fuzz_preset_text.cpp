// The render job presets that the render queue hands over as text (readPresetsFromString): the
// preset file's reader on any string. Presets read must write back to text.

#include "oxLog.h"
#include "oxRenderSettingsPresetFile.h"

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
    const oxRenderSettingsPresets presets =
        readPresetsFromString(std::string(reinterpret_cast<const char*>(data), size));
    std::string text;
    if (!presets.empty() && !writePresetsToString(presets, text))
        std::abort();
    return 0;
}
