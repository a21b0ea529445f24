#pragma once

#include "oxImageEncoder.h"

#include <map>
#include <string>
#include <vector>

/// The entry table of the image codec module (liboximagecodec.so), which holds the host's use
/// of the image file library. oxImageEncoder loads it on first use.
struct oxImageCodec {
    static constexpr int kVersion = 2;
    int version;
    /// Extension -> format name of every format that can be written here.
    std::map<std::string, std::string> (*writableFormats)();
    /// Encodes layers in format (the name writableFormats gives for extension) into bytes.
    bool (*encode)(const std::string& format, const std::string& extension, int width, int height,
                   const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
                   std::string& bytes, std::string& error);
};

extern "C" {
/// The module's one exported symbol.
typedef const oxImageCodec* (*oxImageCodecEntryFunction)();
}
