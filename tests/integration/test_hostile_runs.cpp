// The real oxlin on hostile options and files: each run ends with an exit status and a clear
// message, never by a signal, and writes nothing it reports as written.

#include "oxFile.h"
#include "oxTestSupport.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

const std::string kOxlin = std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin";

class HostileRunTest : public oxTest {
protected:
    void SetUp() override
    {
        const oxProcessResult written = oxRunProcess(kOxlin, {"--write-example", dir.path()});
        ASSERT_EQ(written.exitCode, 0) << written.err;
    }

    oxProcessResult run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"--prefs-dir", prefs.path(), "--no-gui"});
        return oxRunProcess(kOxlin, arguments);
    }

    // The lines of text that contain needle.
    static std::vector<std::string> linesWith(const std::string& text, const std::string& needle)
    {
        std::vector<std::string> lines;
        size_t start = 0;
        while (start < text.size()) {
            size_t end = text.find('\n', start);
            if (end == std::string::npos)
                end = text.size();
            const std::string line = text.substr(start, end - start);
            if (line.find(needle) != std::string::npos)
                lines.push_back(line);
            start = end + 1;
        }
        return lines;
    }

    oxTempDir dir, prefs;
};

} // namespace

// Sizes are parsed with range checks: nothing wraps around into a small number, and an image
// larger than the machine's memory is a clear error naming the size, not an abort.
TEST_F(HostileRunTest, SnapshotSizesAreCheckedAndMemoryIsNamed)
{
    const std::string out = dir.file("size.png");
    for (const char* size :
         {"4294967360x64", "64x4294967297", "99999999999999999999x1", "0x10", "+64x64", "64x64x"}) {
        const oxProcessResult result = run({"--snapshot", out, "--size", size});
        EXPECT_EQ(result.exitCode, 2) << size << result.err;
        EXPECT_NE(result.err.find("oxlin: bad size '" + std::string(size) +
                                  "' for --snapshot (expected WxH, each 1 to 32768, e.g. "
                                  "640x360)\n"),
                  std::string::npos)
            << result.err;
        EXPECT_FALSE(oxFile::exists(out)) << size;
    }

    // Seventeen passes of 32768x32768 pixels need 272 GiB.
    const std::string exr = dir.file("huge.exr");
    const oxProcessResult result =
        run({"--snapshot", exr, "--size", "32768x32768", "--passes",
             "beauty,albedo,normal,camera_normal,depth,position,view,occlusion,materialID,mask,"
             "background_color,cryptoObject00,cryptoObject01,cryptoObject02,cryptoMaterial00,"
             "cryptoMaterial01,cryptoMaterial02"});
    EXPECT_EQ(result.exitCode, 1) << result.err;
    const std::vector<std::string> errors = linesWith(result.err, "[error]");
    ASSERT_EQ(errors.size(), 1u) << result.err;
    EXPECT_EQ(errors[0].rfind("[error] Image writer: rendering '" + exr +
                                  "' failed: there is not enough memory for 17 pass buffer(s) of "
                                  "32768x32768 pixels (16384 MiB each; the machine has ",
                              0),
              0u)
        << errors[0];
    EXPECT_TRUE(linesWith(result.err + result.out, "written").empty()) << result.err;
    EXPECT_TRUE(linesWith(result.out, "Wrote").empty()) << result.out;
    EXPECT_FALSE(oxFile::exists(exr));
}

// Transforms that are each within range can still multiply into vertices the ray kernel can't
// take; the renderer refuses them with a message instead of letting the kernel abort.
TEST_F(HostileRunTest, ValuesBeyondTheKernelsRangeNeverReachIt)
{
    std::string text;
    ASSERT_TRUE(oxFile::readAll(dir.file("showroom.gltf"), text));
    nlohmann::json model = nlohmann::json::parse(text);
    nlohmann::json& nodes = model["nodes"];
    for (nlohmann::json& node : nodes)
        if (node.value("name", "") == "Product" || node.value("name", "") == "Body")
            node["scale"] = {1e9, 1e9, 1e9};
    ASSERT_TRUE(oxFile::writeAtomically(dir.file("huge.gltf"), model.dump()));
    const std::string png = dir.file("huge.png");
    const oxProcessResult result =
        run({dir.file("huge.gltf"), "--snapshot", png, "--size", "32x24"});
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_NE(result.err.find("[error] Image writer: rendering '" + png +
                              "' failed: the scene has a vertex at an unusable position ("),
              std::string::npos)
        << result.err;
    EXPECT_FALSE(oxFile::exists(png));
}

// A value of the wrong type in a project is one line naming the entry and the file.
TEST_F(HostileRunTest, WronglyTypedProjectValueIsOneLine)
{
    std::string text;
    ASSERT_TRUE(oxFile::readAll(dir.file("showroom.oxp"), text));
    const std::string fps = "<float n=\"fps\">25</float>";
    ASSERT_NE(text.find(fps), std::string::npos);
    text.replace(text.find(fps), fps.size(), "<string n=\"fps\">fast</string>");
    ASSERT_TRUE(oxFile::writeAtomically(dir.file("typed.oxp"), text));
    const oxProcessResult result = run({dir.file("typed.oxp"), "--list-scene"});
    EXPECT_EQ(result.exitCode, 1) << result.err;
    EXPECT_EQ(linesWith(result.err, "[error]"),
              std::vector<std::string>{"[error] Can't open '" + dir.file("typed.oxp") +
                                       "': the entry 'fps' is missing or has the wrong type."});
    EXPECT_TRUE(linesWith(result.err, "Stack trace").empty()) << result.err;
}

// File names are bytes: a project in a folder whose name isn't UTF-8 finds its model, and a
// snapshot of such a name is written and reported under exactly that name.
TEST_F(HostileRunTest, FileNamesThatAreNotUtf8KeepTheirBytes)
{
    const std::string folder = dir.file("caf\xe9");
    ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
    for (const char* name : {"showroom.oxp", "showroom.gltf", "showroom.bin"})
        ASSERT_EQ(std::rename(dir.file(name).c_str(), (folder + "/" + name).c_str()), 0);
    const std::string png = folder + "/sn\xffp.png";
    // The test harness passes arguments as text; the shell makes the bytes from escapes.
    const oxProcessResult result = oxRunProcess(
        "/bin/sh", {"-c",
                    "d=\"$2/caf$(printf '\\351')\"; exec \"$0\" --prefs-dir \"$1\" --no-gui "
                    "\"$d/showroom.oxp\" --snapshot \"$d/sn$(printf '\\377')p.png\" --size 32x24",
                    kOxlin, prefs.path(), dir.path()});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(oxFile::exists(png, true));
    EXPECT_EQ(linesWith(result.out, "Wrote"), std::vector<std::string>{"Wrote '" + png + "'."})
        << result.out;
}
