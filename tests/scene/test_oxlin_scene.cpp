// The oxlin program's scene options.

#include "oxController.h"
#include "oxFile.h"
#include "oxMainWindow.h"
#include "oxTestSupport.h"

#include <QAction>
#include <QMenu>

namespace {
const std::string kOxlin = std::string(OX_TEST_BINARY_DIR) + "/bin/oxlin";
} // namespace

TEST(OxlinScene, WriteExampleThenListIt)
{
    oxTempDir dir;
    const oxProcessResult written = oxRunProcess(kOxlin, {"--write-example", dir.path()});
    ASSERT_EQ(written.exitCode, 0) << written.err;

    const oxProcessResult listed =
        oxRunProcess(kOxlin, {"--no-gui", dir.file("showroom.oxp"), "--list-scene"});
    ASSERT_EQ(listed.exitCode, 0) << listed.err;
    for (const char* text :
         {"  Perspective (default) (active)\n", "    camera track Turntable (8 viewpoints)\n",
          "      viewpoint Turntable 8\n", "viewpoint Rear Three-Quarter",
          "  Product Spin frames 0-100\n",
          "  Paint\n    Paint Red\n    Paint Blue\n    Paint Silver\n",
          "  Rims\n    Rims Sport\n    Rims Classic\n", "Ungrouped variant sets:\n  Floor Hidden\n",
          "  Hero Shot\n", "  Sun (directional, value 3)\n", "Environment: Sky\n"})
        EXPECT_NE(listed.out.find(text), std::string::npos) << text << "\nin\n" << listed.out;

    // Without a file the built-in scene is the same showroom.
    const oxProcessResult builtIn = oxRunProcess(kOxlin, {"--no-gui", "--list-scene"});
    ASSERT_EQ(builtIn.exitCode, 0) << builtIn.err;
    EXPECT_EQ(builtIn.out, listed.out);
}

TEST(OxlinScene, BadFileFailsInHeadlessMode)
{
    oxTempDir dir;
    ASSERT_TRUE(oxFile::writeAtomically(dir.file("broken.gltf"), "{\"asset\":"));
    const oxProcessResult result =
        oxRunProcess(kOxlin, {"--no-gui", dir.file("broken.gltf"), "--list-scene"});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_NE(result.err.find("Can't open '" + dir.file("broken.gltf") + "': "), std::string::npos)
        << result.err;
    EXPECT_EQ(result.out.find("Cameras:"), std::string::npos) << result.out;
}

TEST(OxlinScene, FileMenuOffersOpenAndSave)
{
    oxMainWindow window;
    QStringList texts;
    for (QAction* action : oxController::getMenu("File")->actions())
        texts << action->text();
    for (const char* text : {"&Open...", "&Save", "Save &As...", "Export", "&Quit"})
        EXPECT_TRUE(texts.contains(QString::fromLatin1(text))) << text;
    EXPECT_LT(texts.indexOf(QStringLiteral("Save &As...")),
              texts.indexOf(QStringLiteral("Export")));
}
