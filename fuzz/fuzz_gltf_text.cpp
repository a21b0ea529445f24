// The glTF importer on JSON text (buffers as data URIs).

#include "oxLog.h"
#include "oxScene.h"
#include "oxSceneIO.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    oxLog::setStderrEnabled(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    oxScene scene;
    std::string error;
    oxSceneIO::importGltfText(std::string(reinterpret_cast<const char*>(data), size), scene, error);
    return 0;
}
