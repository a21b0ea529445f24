#include "oxImagePasses.h"
#include "oxImageWriter.h"
#include "oxTestSupport.h"

namespace {
class ImageNaming : public oxTest {
protected:
    oxImageWriter writer;
};
} // namespace

TEST_F(ImageNaming, StillImageWithAndWithoutPasses)
{
    EXPECT_EQ(writer.getExportedImageFilenames("c:\\out\\car.png", {}, false),
              QStringList{"c:\\out\\car.png"});
    EXPECT_EQ(writer.getExportedImageFilenames("c:\\out\\car.png", {0, 31, 34}, false),
              (QStringList{"c:\\out\\car.beauty.png", "c:\\out\\car.albedo.png",
                           "c:\\out\\car.cryptoObject00.png"}));
    // Ids outside the table and repeated ids name no file.
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {33, 99, 33}, false),
              QStringList{"/o/car.depth.png"});
}

TEST_F(ImageNaming, MultiLayerOnlyWhereTheFormatHoldsLayers)
{
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.exr", {0, 31}, true),
              QStringList{"/o/car.exr"});
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.TIF", {0, 31}, true),
              QStringList{"/o/car.TIF"});
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {0, 31}, true),
              (QStringList{"/o/car.beauty.png", "/o/car.albedo.png"}));
    EXPECT_TRUE(oxImageWriter::isMultilayerSupported("a\\b.exr"));
    EXPECT_FALSE(oxImageWriter::isMultilayerSupported("a.exr\\b"));
    EXPECT_FALSE(oxImageWriter::isMultilayerSupported("b.jpg"));
}

TEST_F(ImageNaming, SequencesPadFramesAndIncludeBothEnds)
{
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {}, false, 8, 12, 2),
              (QStringList{"/o/car.0008.png", "/o/car.0010.png", "/o/car.0012.png"}));
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {}, false, 9999, 10000, 1),
              (QStringList{"/o/car.9999.png", "/o/car.10000.png"}));
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {}, false, -2, -1, 0),
              (QStringList{"/o/car.-0002.png", "/o/car.-0001.png"}));
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {}, false, 3, 1, 1),
              (QStringList{"/o/car.0003.png", "/o/car.0002.png", "/o/car.0001.png"}));
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.png", {0, 32}, false, 1, 2, 1),
              (QStringList{"/o/car.beauty.0001.png", "/o/car.normal.0001.png",
                           "/o/car.beauty.0002.png", "/o/car.normal.0002.png"}));
    EXPECT_EQ(writer.getExportedImageFilenames("/o/car.exr", {0, 32}, true, 1, 2, 1),
              (QStringList{"/o/car.0001.exr", "/o/car.0002.exr"}));
}

TEST_F(ImageNaming, DotsInFoldersAndNamesWithoutExtension)
{
    EXPECT_EQ(writer.getExportedImageFilenames("/o.d/car", {0}, false, 1, 1, 1),
              QStringList{"/o.d/car.beauty.0001"});
    EXPECT_EQ(writer.getExportedImageFilenames("\\\\?\\c:\\a.b\\my.car.", {}, false, 5, 5, 1),
              QStringList{"\\\\?\\c:\\a.b\\my.car.0005."});
}

TEST_F(ImageNaming, EveryPassHasItsOwnName)
{
    std::set<std::string> names;
    for (const char* name : oxImagePasses::names)
        names.insert(name);
    EXPECT_EQ(names.size(), oxImagePasses::count);
    EXPECT_STREQ(oxImagePasses::name(0), "beauty");
    EXPECT_STREQ(oxImagePasses::name(46), "gpu_depth");
    EXPECT_EQ(oxImagePasses::name(47), nullptr);
}
