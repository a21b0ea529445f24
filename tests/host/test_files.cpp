#include "oxFile.h"
#include "oxFileIO.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxPathText.h"
#include "oxPreferences.h"

#include "oxTestSupport.h"

#include <QString>

#include <cstdlib>

namespace {

using FileTest = oxTest;
using PreferencesTest = oxTest;

} // namespace

TEST_F(FileTest, PathRuleAcceptsBothSeparatorsAndMapsDrivesToHome)
{
    const std::string home = oxFile::homeDirectory();
    EXPECT_EQ(oxFile::expandFilename("c:\\oxlin-snapshots"), home + "/oxlin-snapshots");
    EXPECT_EQ(oxFile::expandFilename("D:/renders\\shot.png"), home + "/renders/shot.png");
    EXPECT_EQ(oxFile::expandFilename("c:\\"), home);
    EXPECT_EQ(oxFile::expandFilename("\\\\?\\c:\\long\\name.exr"), home + "/long/name.exr");
    EXPECT_EQ(oxFile::expandFilename("~/a\\b"), home + "/a/b");
    EXPECT_EQ(oxFile::expandFilename("/tmp\\out\\image.png"), "/tmp/out/image.png");

    ::setenv("OX_TEST_FOLDER", "/data/shots", 1);
    EXPECT_EQ(oxFile::expandFilename("$OX_TEST_FOLDER\\a.png"), "/data/shots/a.png");
    EXPECT_EQ(oxFile::expandFilename("${OX_TEST_FOLDER}x/a.png"), "/data/shotsx/a.png");
    EXPECT_EQ(oxFile::expandFilename("price$"), "price$");

    EXPECT_EQ(oxFileIO::getLongWindowsPath(QString("c:\\x\\y.png")),
              QString::fromStdString(home + "/x/y.png"));
    EXPECT_EQ(oxFile::convertSeparators("a\\b/c"), "a/b/c");
}

TEST_F(FileTest, NamePieces)
{
    EXPECT_EQ(oxFile::getFilePath("c:\\renders\\car.final.png"), "c:/renders");
    EXPECT_EQ(oxFile::getFilePath("/image.png"), "/");
    EXPECT_EQ(oxFile::getFilePath("image.png"), "");
    EXPECT_EQ(oxFile::getBaseName("c:\\renders\\car.final.png"), "car.final");
    EXPECT_EQ(oxFile::getExtension("c:\\renders\\car.final.png"), "png");
    EXPECT_EQ(oxFile::getExtension("/a.b/noext"), "");
    EXPECT_EQ(oxFile::getBaseName("/a.b/noext"), "noext");
    EXPECT_EQ(oxFile::getBaseName(".hidden"), ".hidden");
    EXPECT_EQ(oxFile::getFileName("x/y\\z.tif"), "z.tif");
}

TEST_F(FileTest, ExistenceWriteTestsAndFolders)
{
    oxTempDir dir;
    const std::string nested = dir.path() + "\\a\\b\\c";
    EXPECT_FALSE(oxFile::exists(nested));
    ASSERT_TRUE(oxFile::createPath(nested));
    EXPECT_TRUE(oxFile::exists(nested, false, true));
    EXPECT_FALSE(oxFile::exists(nested, true, false));
    EXPECT_TRUE(oxFile::createPath(nested)); // already there

    const std::string file = dir.file("a/out.png");
    EXPECT_TRUE(oxFile::checkWrite(file));
    EXPECT_FALSE(oxFile::checkWrite(file, true));
    EXPECT_TRUE(oxFile::checkWrite(file, false, true));
    EXPECT_FALSE(oxFile::exists(file)); // the probe leaves nothing behind
    EXPECT_FALSE(oxFile::checkWrite(dir.file("missing/out.png")));
    EXPECT_FALSE(oxFile::checkWrite(nested)); // a folder is no file to write

    ASSERT_TRUE(oxFile::writeAtomically(file, "pixels"));
    EXPECT_TRUE(oxFile::exists(file, true));
    EXPECT_EQ(oxReadFile(file), "pixels");
}

// A failed atomic write keeping the old file is checked through the preset file's save.
TEST_F(FileTest, AtomicWriteIntoAMissingFolderFailsCleanly)
{
    oxTempDir dir;
    std::string error;
    EXPECT_FALSE(oxFile::writeAtomically(dir.file("no/such/folder/x.txt"), "x", &error));
    EXPECT_NE(error.find("temporary file"), std::string::npos) << error;
}

// File names cross QString with every byte kept: valid UTF-8 reads as that text, anything
// else (stray, overlong, cut off, encoded surrogates, beyond U+10FFFF) comes back unchanged.
TEST_F(FileTest, FileNamesKeepTheirBytesThroughQString)
{
    const char* const names[] = {"plain/ascii.png",  "caf\xc3\xa9/\xf0\x9f\x93\xb7.png",
                                 "caf\xe9.png",      "\xc0\xaf../overlong",
                                 "cut\xe2\x82",      "\xed\xa0\x80surrogate",
                                 "\xf4\x90\x80\x80", "\xff\xfe\x80"};
    for (const std::string name : names)
        EXPECT_EQ(oxPathText::fromQString(oxPathText::toQString(name)), name);
    EXPECT_EQ(oxPathText::toQString("caf\xc3\xa9"), QString::fromUtf8("caf\xc3\xa9"));
    EXPECT_EQ(oxPathText::toQString("caf\xe9").size(), 4);
    EXPECT_EQ(oxPathText::fromQString(QString::fromUtf8("\xf0\x9f\x93\xb7")), "\xf0\x9f\x93\xb7");
}

TEST_F(PreferencesTest, FolderEndsWithSeparatorAndDataRoundTrips)
{
    oxTempDir dir;
    oxPreferences::setPreferencesDir(dir.path() + "\\prefs");
    EXPECT_EQ(oxPreferences::getPreferencesDir(), dir.path() + "/prefs/");
    EXPECT_TRUE(oxFile::exists(dir.path() + "/prefs", false, true));

    // No file yet: empty data.
    oxPreferences::getData().set("stale", 1);
    EXPECT_TRUE(oxPreferences::load());
    EXPECT_TRUE(oxPreferences::getData().getMap().empty());

    oxPreferences::getData().set("Maximum Antialiasing Samples", 256);
    oxPreferences::getData().set("SnapshotExport path", std::string("c:\\oxlin-snapshots"));
    oxPreferences::getData().set("Play sound", true);
    ASSERT_TRUE(oxPreferences::save());
    oxPreferences::getData().clear();
    ASSERT_TRUE(oxPreferences::load());
    int samples = 0;
    std::string path;
    bool sound = false;
    EXPECT_TRUE(oxPreferences::getData().get("Maximum Antialiasing Samples", samples));
    EXPECT_TRUE(oxPreferences::getData().get("SnapshotExport path", path));
    EXPECT_TRUE(oxPreferences::getData().get("Play sound", sound));
    EXPECT_EQ(samples, 256);
    EXPECT_EQ(path, "c:\\oxlin-snapshots");
    EXPECT_TRUE(sound);
    oxPreferences::getData().clear();
}

TEST_F(PreferencesTest, ChangedKeysDuringAConfirmation)
{
    oxPreferences::clearUnchanged();
    EXPECT_TRUE(oxPreferences::isChanged("Image Filter Size X"));
    oxPreferences::addUnchanged("Image Filter Size X");
    EXPECT_FALSE(oxPreferences::isChanged("Image Filter Size X"));
    EXPECT_TRUE(oxPreferences::isChanged("Image Filter Size Y"));
    oxPreferences::clearUnchanged();
    EXPECT_TRUE(oxPreferences::isChanged("Image Filter Size X"));
}
