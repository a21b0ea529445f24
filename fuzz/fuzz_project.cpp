// The project loader: each input is a project file beside the example model, loaded as oxlin
// opens a project (model, cameras, tracks, clips, variant sets, lights, the plug-ins' record).

#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxScene.h"
#include "oxSceneIO.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {
std::string folder;
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    oxLog::setStderrEnabled(false);
    char pattern[] = "/tmp/oxlin-fuzz-XXXXXX";
    if (!::mkdtemp(pattern))
        std::abort();
    folder = pattern;
    std::string error;
    if (!oxExampleScene::write(folder, error)) {
        std::fprintf(stderr, "fuzz_project: %s\n", error.c_str());
        std::abort();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string path = folder + "/input.oxp";
    if (!oxFile::writeAtomically(path, std::string(reinterpret_cast<const char*>(data), size)))
        std::abort();
    oxMessage pluginRecord;
    std::unique_ptr<oxScene> scene = oxSceneIO::load(path, &pluginRecord);
    if (scene)
        oxSceneIO::describe(*scene);
    return 0;
}
