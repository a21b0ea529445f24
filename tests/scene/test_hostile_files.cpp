// Hostile scene files, made here at run time: sizes that wrap 64-bit arithmetic, nesting deep
// enough to exhaust a recursive parser, and numbers the ray kernel can't take. Each ends in one
// clear error and leaves the open scene alone.

#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxScene.h"
#include "oxSceneIO.h"
#include "oxTestSupport.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>

namespace {

constexpr uint64_t kMax64 = std::numeric_limits<uint64_t>::max();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

class HostileFilesTest : public oxTest {
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(oxExampleScene::write(dir.path(), error)) << error;
        ASSERT_TRUE(oxFile::readAll(dir.file("showroom.gltf"), gltf));
        ASSERT_TRUE(oxFile::readAll(dir.file("showroom.bin"), bin));
        ASSERT_TRUE(oxMessageRW::read(project, dir.file("showroom.oxp").c_str(), std::string()));
    }

    // Writes data under name in the example's folder (the model's .bin is beside it).
    std::string file(const std::string& name, const std::string& data)
    {
        EXPECT_TRUE(oxFile::writeAtomically(dir.file(name), data));
        return dir.file(name);
    }

    std::string gltfWith(const std::function<void(nlohmann::json&)>& edit) const
    {
        nlohmann::json doc = nlohmann::json::parse(gltf);
        edit(doc);
        return doc.dump();
    }

    // A binary file of this JSON (whose buffer has no uri) and the model's buffer as BIN chunk.
    std::string glb(std::string json) const
    {
        json.resize((json.size() + 3) / 4 * 4, ' ');
        std::string data = bin;
        data.resize((data.size() + 3) / 4 * 4, '\0');
        std::string out = "glTF";
        auto put = [&](uint32_t value) { out.append(reinterpret_cast<const char*>(&value), 4); };
        put(2);
        put(uint32_t(12 + 8 + json.size() + 8 + data.size()));
        put(uint32_t(json.size()));
        put(0x4E4F534A); // "JSON"
        out += json;
        put(uint32_t(data.size()));
        put(0x004E4942); // "BIN"
        out += data;
        return out;
    }

    std::string glbWith(const std::function<void(nlohmann::json&)>& edit) const
    {
        return glb(gltfWith([&](nlohmann::json& doc) {
            doc["buffers"][0].erase("uri");
            edit(doc);
        }));
    }

    // The example project with one entry changed, written under name.
    template <typename T>
    std::string projectWith(const std::string& name, const std::string& entry, const T& value)
    {
        oxMessage changed = project;
        changed.set(entry, value, true);
        std::string text;
        EXPECT_TRUE(oxMessageRW::write(changed, text));
        return file(name, text);
    }

    // Loading fails with exactly this problem.
    void expectRefused(const std::string& path, const std::string& problem)
    {
        expectLog(oxLog::Error, "Can't open '" + path + "': " + problem + ".");
        EXPECT_EQ(oxSceneIO::load(path), nullptr) << path;
    }

    std::vector<float> floats(const std::string& entry) const
    {
        std::vector<float> values;
        EXPECT_TRUE(project.get(entry, values)) << entry;
        return values;
    }

    oxTempDir dir;
    std::string gltf, bin;
    oxMessage project;
};

// Every offset, stride and count of an accessor is a 64-bit number of the file; sums and
// products that wrap around must not land inside the buffer, in text and binary files alike.
TEST_F(HostileFilesTest, AccessorSizesNearTwoToTheSixtyFourAreRefused)
{
    const std::vector<std::function<void(nlohmann::json&)>> edits = {
        [](nlohmann::json& d) { d["bufferViews"][0]["byteOffset"] = kMax64 - 15; },
        [](nlohmann::json& d) { d["accessors"][0]["count"] = kMax64; },
        [](nlohmann::json& d) { d["accessors"][0]["count"] = (kMax64 / 12) + 2; },
        [](nlohmann::json& d) {
            d["bufferViews"][0]["byteOffset"] = 16;
            d["accessors"][0]["byteOffset"] = kMax64 - 7;
        },
        [](nlohmann::json& d) {
            d["bufferViews"][0]["byteOffset"] = 16;
            d["bufferViews"][0]["byteLength"] = kMax64;
            d["accessors"][0]["count"] = 100000;
        },
    };
    const std::string problem = "POSITION reads past the end of its buffer (truncated data?)";
    for (size_t i = 0; i < edits.size(); ++i) {
        SCOPED_TRACE(i);
        expectRefused(file("wrap.gltf", gltfWith(edits[i])), problem);
        expectRefused(file("wrap.glb", glbWith(edits[i])), problem);
    }
    // The binary form itself is sound: unchanged, it opens.
    EXPECT_NE(oxSceneIO::load(file("plain.glb", glbWith([](nlohmann::json&) {}))), nullptr);
}

// Nesting is limited before the JSON or XML library sees the text: a 40 KB file of brackets
// would otherwise overflow the stack inside it. Real nesting well below the limit still opens.
TEST_F(HostileFilesTest, DeepNestingIsRefusedBeforeParsing)
{
    const std::string deep = std::string(40000, '[') + std::string(40000, ']');
    const std::string marker = "\"extras\":0";
    // The model with deep (or other) extras, as text or as the JSON of a binary file.
    auto withExtras = [&](const std::string& extras, bool binary) {
        std::string text = gltfWith([&](nlohmann::json& d) {
            d["extras"] = 0;
            if (binary)
                d["buffers"][0].erase("uri");
        });
        text.replace(text.find(marker), marker.size(), "\"extras\":" + extras);
        return binary ? glb(text) : text;
    };
    const std::string tooDeep = "its JSON nests deeper than 128 levels";
    expectRefused(file("deep.gltf", withExtras(deep, false)), tooDeep);
    expectRefused(file("deep.glb", withExtras(deep, true)), tooDeep);
    expectRefused(projectWith("deep.oxp", "model", std::string("deep.gltf")),
                  "its model 'deep.gltf': " + tooDeep);

    // Brackets inside strings are text, not nesting; real nesting below the limit opens.
    EXPECT_NE(oxSceneIO::load(file("strings.gltf", withExtras('"' + deep + '"', false))), nullptr);
    const std::string hundred = std::string(100, '[') + std::string(100, ']');
    EXPECT_NE(oxSceneIO::load(file("nested.glb", withExtras(hundred, true))), nullptr);

    std::string xml;
    ASSERT_TRUE(oxFile::readAll(dir.file("showroom.oxp"), xml));
    std::string nested;
    for (int i = 0; i < 20000; ++i)
        nested += "<a x='>'>";
    xml.insert(xml.find("<string"), nested);
    expectRefused(file("deep.oxp", xml), "the project file is malformed, truncated or unreadable");
    oxMessage message;
    EXPECT_FALSE(oxMessageRW::read(message, nullptr, xml));
    EXPECT_EQ(oxMessageRW::lastError(), "text: elements nested deeper than 64 levels");
}

// Numbers that would reach the ray kernel as origins or directions are checked where they are
// read; the message names the object and the value.
TEST_F(HostileFilesTest, UnusableSceneNumbersAreRefusedWhereRead)
{
    struct Case {
        const char* entry;
        size_t index;
        float value;
        const char* problem;
    };
    const Case cases[] = {
        {"cameraViews", 0, kNaN, "the camera 'Perspective' has an unusable position (nan)"},
        {"cameraViews", 1, 1e19f, "the camera 'Perspective' has an unusable position (1e+19)"},
        {"cameraViews", 7, kInf, "the camera 'Perspective' has an unusable field of view (inf)"},
        {"cameraViews", 10, -kInf,
         "the camera 'Perspective' has an unusable near or far distance (-inf)"},
        {"lightSettings", 0, kInf, "the entry 'lightSettings' holds the unusable value inf"},
        {"clip.0.frames", 1, kNaN, "the entry 'clip.0.frames' holds the unusable value nan"},
        {"clip.0.values", 2, -1e30f, "the entry 'clip.0.values' holds the unusable value -1e+30"},
        {"environment", 6, kNaN, "the entry 'environment' holds the unusable value nan"},
    };
    for (const Case& c : cases) {
        std::vector<float> values = floats(c.entry);
        ASSERT_LT(c.index, values.size()) << c.entry;
        values[c.index] = c.value;
        expectRefused(projectWith("values.oxp", c.entry, values), c.problem);
    }
    std::vector<std::string> viewpoints;
    ASSERT_TRUE(project.get("viewpointNames", viewpoints));
    ASSERT_FALSE(viewpoints.empty());
    std::vector<float> views = floats("viewpointViews");
    views[4] = kNaN;
    expectRefused(projectWith("values.oxp", "viewpointViews", views),
                  "the viewpoint '" + viewpoints[0] + "' has an unusable orientation (nan)");
    views = floats("cameraViews");
    std::fill(views.begin() + 3, views.begin() + 7, 0.0f);
    expectRefused(projectWith("values.oxp", "cameraViews", views),
                  "the camera 'Perspective' has an unusable orientation (a zero quaternion)");

    expectRefused(file("values.gltf", gltfWith([](nlohmann::json& d) {
                           d["nodes"][0]["translation"] = {1e19, 0, 0};
                       })),
                  "node 'Sport' has an unusable translation (1e+19)");
    expectRefused(file("values.gltf", gltfWith([](nlohmann::json& d) {
                           d["nodes"][25]["scale"] = {1, 1e300, 1};
                       })),
                  "node 'Sun' has an unusable scale (1e+300)");
    expectRefused(file("values.gltf", gltfWith([](nlohmann::json& d) {
                           d["extensions"]["KHR_lights_punctual"]["lights"][0]["intensity"] =
                               -1e200;
                       })),
                  "node 'Sun' has an unusable light intensity or cone angle (-1e+200)");
}

// A project written by a newer oxlin says so rather than calling itself malformed.
TEST_F(HostileFilesTest, NewerFormatVersionsAreNamed)
{
    std::string text;
    ASSERT_TRUE(oxFile::readAll(dir.file("showroom.oxp"), text));
    const std::string format = "ox:format=\"1\"", version = "version=\"1\"";
    ASSERT_NE(text.find(format), std::string::npos);
    ASSERT_NE(text.find(version), std::string::npos);
    std::string newer = text;
    newer.replace(newer.find(format), format.size(), "ox:format=\"7\"");
    expectRefused(file("format.oxp", newer),
                  "it was written in record format version 7, which this oxlin doesn't support "
                  "(it reads version 1); open it with a newer oxlin");
    newer = text;
    newer.replace(newer.find(version), version.size(), "version=\"3\"");
    expectRefused(file("version.oxp", newer),
                  "it was written in project format version 3, which this oxlin doesn't "
                  "support (it reads version 1); open it with a newer oxlin");
    newer = text;
    newer.replace(newer.find(version), version.size(), "version=\"" + std::string(500, '9') + "\"");
    expectRefused(file("version.oxp", newer),
                  "its project format version '" + std::string(80, '9') + "...' is not a number");
}

} // namespace
