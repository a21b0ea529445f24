// Bad scene files: each gives one clear error naming the file, and leaves the open scene and
// the project record as they were.

#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxScene.h"
#include "oxSceneIO.h"
#include "oxTestSupport.h"

#include <nlohmann/json.hpp>

#include <functional>

namespace {

class SceneErrorsTest : public oxTest {
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(oxExampleScene::write(dir.path(), error)) << error;
        ASSERT_TRUE(oxFile::readAll(dir.file("showroom.gltf"), gltf));
        ASSERT_TRUE(oxFile::readAll(dir.file("showroom.bin"), bin));
        ASSERT_TRUE(oxFile::readAll(dir.file("showroom.oxp"), oxp));
        oxSceneIO::newScene();
        oxFileIO::getProject().set("marker", 7, true);
        before = &oxScene::current();
        listing = oxSceneIO::describe(*before);
    }
    void TearDown() override
    {
        oxScene::replaceCurrent(nullptr);
        oxFileIO::clearProject();
        oxTest::TearDown();
    }

    // Writes a corrupted copy into its own folder and returns its path.
    std::string copy(const std::string& name, const std::string& data,
                     const std::string& binData = std::string(), bool withBin = false)
    {
        const std::string folder = dir.file("case" + std::to_string(++cases));
        EXPECT_TRUE(oxFile::createPath(folder));
        EXPECT_TRUE(oxFile::writeAtomically(folder + "/" + name, data));
        if (withBin) {
            EXPECT_TRUE(oxFile::writeAtomically(folder + "/showroom.bin", binData));
        }
        return folder + "/" + name;
    }

    // Opening fails and nothing of the session changed.
    void expectRefused(const std::string& path)
    {
        EXPECT_FALSE(oxSceneIO::open(path)) << path;
        EXPECT_EQ(&oxScene::current(), before);
        EXPECT_EQ(oxSceneIO::describe(oxScene::current()), listing);
        int marker = 0;
        EXPECT_TRUE(oxFileIO::getProject().get("marker", marker));
    }

    void expectRefused(const std::string& path, const std::string& problem)
    {
        expectLog(oxLog::Error, "Can't open '" + path + "': " + problem + ".");
        expectRefused(path);
    }

    std::string gltfWith(const std::function<void(nlohmann::json&)>& edit)
    {
        nlohmann::json doc = nlohmann::json::parse(gltf);
        edit(doc);
        return doc.dump();
    }

    oxTempDir dir;
    std::string gltf, bin, oxp, listing;
    const oxScene* before = nullptr;
    int cases = 0;
};

} // namespace

TEST_F(SceneErrorsTest, FileNamesAndProjectsWeOwnTheWordsOf)
{
    expectRefused(copy("showroom.obj", gltf),
                  "unknown file type 'obj' (oxlin opens .oxp projects and .gltf or .glb models)");
    expectRefused(dir.file("nothing.gltf"), "the file doesn't exist");
    expectRefused(copy("showroom.oxp", oxp),
                  "the model 'showroom.gltf' it references doesn't exist");
    expectRefused(copy("showroom.oxp", oxp.substr(0, oxp.size() / 2)),
                  "the project file is malformed, truncated or unreadable");
    std::string text;
    ASSERT_TRUE(oxMessageRW::write(oxMessage(), text));
    expectRefused(copy("plain.oxp", text), "this is no oxlin project");

    // A project whose entries don't fit its model: the model is fine, the entry is not.
    oxMessage project;
    ASSERT_TRUE(oxMessageRW::read(project, dir.file("showroom.oxp").c_str(), std::string()));
    project.set("model", std::string("../showroom.gltf"), true);
    project.set("cameraViews", std::vector<float>{1, 2, 3}, true);
    ASSERT_TRUE(oxMessageRW::write(project, text));
    expectRefused(copy("views.oxp", text), "the entry 'cameraViews' has 3 values instead of 18");
    project.set("cameraViews", 5, true);
    ASSERT_TRUE(oxMessageRW::write(project, text));
    expectRefused(copy("views.oxp", text),
                  "the entry 'cameraViews' is missing or has the wrong type");
}

TEST_F(SceneErrorsTest, InconsistentGltfContent)
{
    expectRefused(copy("showroom.gltf",
                       gltfWith([](nlohmann::json& d) { d["accessors"][0]["count"] = 100000; }),
                       bin, true),
                  "POSITION reads past the end of its buffer (truncated data?)");
    expectRefused(copy("showroom.gltf",
                       gltfWith([](nlohmann::json& d) { d["scenes"][0]["nodes"].push_back(0); }),
                       bin, true),
                  "node 0 is used more than once (a cycle?)");
    expectRefused(copy("showroom.gltf",
                       gltfWith([](nlohmann::json& d) { d["nodes"][0]["mesh"] = 99; }), bin, true),
                  "node 'Sport' refers to a mesh that doesn't exist");
    // Indices past the vertices: the third accessor is the body's index list.
    std::string badIndices = bin;
    const uint32_t huge = 0xFFFFFF;
    const auto doc = nlohmann::json::parse(gltf);
    const size_t offset = doc["bufferViews"][2]["byteOffset"].get<size_t>();
    badIndices.replace(offset, 4, reinterpret_cast<const char*>(&huge), 4);
    expectRefused(copy("showroom.gltf", gltf, badIndices, true),
                  "an index refers to a vertex that doesn't exist");
}

TEST_F(SceneErrorsTest, BrokenFilesTheParserReports)
{
    // The wording of these comes from the glTF reader; ours is the frame around it.
    const std::vector<std::string> paths = {
        copy("showroom.gltf", gltf.substr(0, gltf.size() / 2), bin, true), // truncated JSON
        copy("showroom.gltf", gltf),                                       // no .bin
        copy("showroom.gltf", gltf, bin.substr(0, bin.size() / 2), true),  // truncated .bin
        copy("showroom.glb", "glTF\x02\x00\x00\x00garbage"),               // broken binary
        copy("showroom.gltf", ""),                                         // empty
    };
    for (const std::string& path : paths) {
        oxLogCapture capture;
        expectRefused(path);
        const std::vector<std::string> errors = capture.messages(oxLog::Error);
        ASSERT_EQ(errors.size(), 1u) << path;
        const std::string prefix = "Can't open '" + path + "': ";
        EXPECT_EQ(errors[0].rfind(prefix, 0), 0u) << errors[0];
        EXPECT_GT(errors[0].size(), prefix.size() + 5) << errors[0];
        expectLog(oxLog::Error, errors[0]);
    }
}
