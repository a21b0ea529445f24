#include "oxFile.h"
#include "oxImageWriterTest.h"
#include "oxMessage.h"
#include "oxPreferences.h"

#include <OpenImageIO/imageio.h>
#include <lcms2.h>

#include <QDir>

#include <sstream>

using namespace OIIO;

namespace {

std::unique_ptr<ImageInput> openImage(const std::string& path)
{
    ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    return ImageInput::open(path, &config);
}

// Saves an lcms2 profile to path and gives its bytes ("" on failure).
std::string saveProfile(cmsHPROFILE profile, const std::string& path)
{
    std::string data;
    if (profile && cmsSaveProfileToFile(profile, path.c_str()))
        oxFile::readAll(path, data);
    if (profile)
        cmsCloseProfile(profile);
    return data;
}

std::string embeddedProfile(const std::string& path)
{
    auto in = openImage(path);
    const ParamValue* icc = in ? in->spec().find_attribute("ICCProfile") : nullptr;
    return icc ? std::string(static_cast<const char*>(icc->data()),
                             icc->type().size() * size_t(icc->nvalues()))
               : std::string();
}

class ImageMetaData : public oxImageWriterTest {
protected:
    void SetUp() override
    {
        oxImageWriterTest::SetUp();
        savedMap = oxImageMetaData::getRenderSettingsXMPToMsgMap();
        oxImageMetaData::getRenderSettingsXMPToMsgMap() = {{"pixelWidth", "ImageExport floatwidth"},
                                                           {"animationFps", "MovieExport fps"}};
    }
    void TearDown() override
    {
        oxImageMetaData::getRenderSettingsXMPToMsgMap() = savedMap;
        oxImageWriterTest::TearDown();
    }

    std::map<std::string, std::string> savedMap;
};

} // namespace

TEST_F(ImageMetaData, XMPIsEmbeddedInPngJpegTiffAndExr)
{
    oxImageMetaData* meta = writer.getMetaData();
    meta->setFileOutputImageSettings(1920, 1080, 300, 3, false, true, false, 1, 1, 1, 1, 9);
    meta->setFileOutputAnimationSettings(true, 0, 0, "clip", 1, 9, 1, 30, false);
    oxMessage passes;
    passes.set("MovieExport beauty pass", true);
    meta->setFileOutputRenderPasses(passes);
    writer.setMetaDataFlags(oxImageMetaData::FILEOUTPUT_IMAGE_SETTINGS |
                            oxImageMetaData::FILEOUTPUT_RENDERPASSES_SETTINGS |
                            oxImageMetaData::CAMERA_SETTINGS);
    for (const char* extension : {"png", "jpg", "tif", "exr"}) {
        const std::string path = dir.file(std::string("meta.") + extension);
        ASSERT_TRUE(still(path)) << extension;
        auto in = openImage(path);
        ASSERT_TRUE(in) << extension; // the file stays valid with its packet
        std::vector<float> pixels(16 * 8 * size_t(in->spec().nchannels));
        EXPECT_TRUE(in->read_image(0, 0, 0, in->spec().nchannels, TypeDesc::FLOAT, pixels.data()))
            << extension;
        const std::string packet = std::string(extension) == "exr"
                                       ? std::string(in->spec().get_string_attribute("xmp"))
                                       : oxReadFile(path);
        EXPECT_NE(packet.find("<ox:pixelWidth>1920</ox:pixelWidth>"), std::string::npos)
            << extension;
        EXPECT_NE(packet.find("<rdf:li>MovieExport beauty pass=true</rdf:li>"), std::string::npos)
            << extension;
        EXPECT_NE(packet.find("<rdf:li>fov=45</rdf:li>"), std::string::npos) << extension;
        // The animation group was not selected.
        EXPECT_EQ(packet.find("animationFps"), std::string::npos) << extension;
    }
    writer.setMetaDataFlags(0);
    ASSERT_TRUE(still(dir.file("plain.png")));
    EXPECT_EQ(oxReadFile(dir.file("plain.png")).find("xmpmeta"), std::string::npos);
}

TEST_F(ImageMetaData, ICCProfilesAreEmbeddedWhereTheFormatHoldsThem)
{
    const std::string srgb = oxImageWriter::iccProfileData(1);
    const std::string adobe = oxImageWriter::iccProfileData(2);
    ASSERT_GT(srgb.size(), 128u);
    ASSERT_GT(adobe.size(), 128u);
    EXPECT_NE(srgb, adobe);
    EXPECT_EQ(srgb.substr(36, 4), "acsp"); // the profile file signature
    EXPECT_TRUE(oxImageWriter::iccProfileData(0).empty());

    for (int profile : {1, 2}) {
        writer.setICCProfile(profile);
        for (const char* extension : {"png", "jpg", "tif"}) {
            const std::string path = dir.file(std::string("icc.") + extension);
            ASSERT_TRUE(still(path)) << extension;
            EXPECT_TRUE(embeddedProfile(path) == (profile == 1 ? srgb : adobe))
                << extension << " profile " << profile;
        }
    }
    writer.setICCProfile(0);
    ASSERT_TRUE(still(dir.file("none.png")));
    EXPECT_TRUE(embeddedProfile(dir.file("none.png")).empty());
}

// Profiles 3 and 4 embed the files the preferences name; a missing or bad file gives one
// warning per export and images without a profile.
TEST_F(ImageMetaData, MonitorAndImageProfilesComeFromThePreferencesFiles)
{
    oxMessage& preferences = oxPreferences::getData();
    const oxMessage saved = preferences;
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 1.8);
    cmsToneCurve* curves[3] = {gamma, gamma, gamma};
    const cmsCIExyY white = {0.3457, 0.3585, 1.0};
    const cmsCIExyYTRIPLE primaries = {
        {0.7347, 0.2653, 1.0}, {0.1596, 0.8404, 1.0}, {0.0366, 0.0001, 1.0}};
    const std::string monitor =
        saveProfile(cmsCreateRGBProfile(&white, &primaries, curves), dir.file("monitor.icc"));
    const std::string gray = saveProfile(cmsCreateGrayProfile(&white, gamma), dir.file("gray.icc"));
    cmsFreeToneCurve(gamma);
    ASSERT_GT(monitor.size(), 128u);
    ASSERT_FALSE(gray.empty());
    const std::string image = oxImageWriter::iccProfileData(2);
    ASSERT_TRUE(oxFile::writeAtomically(dir.file("image.icc"), image));

    preferences.set(oxImageWriter::monitorICCProfileKey, dir.file("monitor.icc"));
    preferences.set(oxImageWriter::imageICCProfileKey,
                    QString::fromStdString(dir.file("image.icc")));
    writer.setICCProfile(3);
    for (const char* extension : {"png", "jpg", "tif"}) {
        const std::string path = dir.file(std::string("monitor.") + extension);
        ASSERT_TRUE(still(path)) << extension;
        EXPECT_TRUE(embeddedProfile(path) == monitor) << extension;
    }
    writer.setICCProfile(4);
    ASSERT_TRUE(still(dir.file("image.png")));
    EXPECT_TRUE(embeddedProfile(dir.file("image.png")) == image);

    // Each bad setting: the warning names the file and the problem; the image has no profile.
    const std::string out = dir.file("bad.png");
    const std::string tail = "; '" + out + "' is written without an ICC profile.";
    ASSERT_TRUE(oxFile::writeAtomically(dir.file("junk.icc"), "not a profile at all"));
    const struct {
        std::string file;
        std::string warning;
    } cases[] = {
        {"", "Image writer: the preference \"Image ICC Profile File\" names no ICC profile "
             "file" +
                 tail},
        {dir.file("missing.icc"), "Image writer: the ICC profile file '" + dir.file("missing.icc") +
                                      "' (preference \"Image ICC Profile File\") can't be used: "
                                      "it can't be read" +
                                      tail},
        {dir.file("junk.icc"), "Image writer: the ICC profile file '" + dir.file("junk.icc") +
                                   "' (preference \"Image ICC Profile File\") can't be used: it "
                                   "is no ICC profile" +
                                   tail},
        {dir.file("gray.icc"), "Image writer: the ICC profile file '" + dir.file("gray.icc") +
                                   "' (preference \"Image ICC Profile File\") can't be used: it "
                                   "is no RGB profile" +
                                   tail},
    };
    for (const auto& entry : cases) {
        preferences.set(oxImageWriter::imageICCProfileKey, entry.file);
        expectLog(oxLog::Warning, entry.warning);
        ASSERT_TRUE(still(out)) << entry.file;
        EXPECT_TRUE(embeddedProfile(out).empty()) << entry.file;
    }
    EXPECT_EQ(log().messages(oxLog::Warning).size(), std::size(cases));

    // A sequence reads the file once and warns once.
    preferences.remove(oxImageWriter::imageICCProfileKey);
    const std::string sequence = dir.file("seq.png");
    expectLog(oxLog::Warning, "Image writer: the preference \"Image ICC Profile File\" names no "
                              "ICC profile file; '" +
                                  sequence + "' is written without an ICC profile.");
    ASSERT_TRUE(writer.exportImages(QString::fromStdString(sequence), 8, 4, 25, 1, 3, 0, 1, false,
                                    -1, "", 1, false));
    EXPECT_EQ(log().messages(oxLog::Warning).size(), std::size(cases) + 1);
    EXPECT_TRUE(embeddedProfile(dir.file("seq.0002.png")).empty());

    writer.setICCProfile(0);
    preferences = saved;
}

TEST_F(ImageMetaData, HandlerOptionsReachTheEncoder)
{
    osg::ImageFileHandler::the().setOptions("image/tiff", "compressionType=LZW");
    ASSERT_TRUE(still(dir.file("lzw.tif")));
    EXPECT_EQ(openImage(dir.file("lzw.tif"))->spec().get_string_attribute("compression"), "lzw");
    osg::ImageFileHandler::the().setOptions("image/tiff", "");

    const unsigned saved = osg::PNGImageFileType::the().getQuality();
    osg::PNGImageFileType::the().setQuality(0);
    ASSERT_TRUE(still(dir.file("raw.png")));
    osg::PNGImageFileType::the().setQuality(9);
    ASSERT_TRUE(still(dir.file("small.png")));
    osg::PNGImageFileType::the().setQuality(saved);
    EXPECT_GT(oxReadFile(dir.file("raw.png")).size(), oxReadFile(dir.file("small.png")).size());
}

TEST_F(ImageMetaData, WriteFunctionsReceiveEveryImageAndNoFileIsMade)
{
    std::vector<std::string> names;
    std::vector<size_t> layerCounts;
    oxImageOutStream::setImageWriteFunctions(
        [&](const osg::ImagePtr& image, const std::string& name) {
            EXPECT_EQ(image->getWidth(), 16);
            names.push_back(name);
            layerCounts.push_back(1);
            return true;
        },
        [&](osg::ImageFileType* type, const osg::ImagePtr& image, const std::string& name,
            const std::vector<osg::ImagePtr>& layers) {
            EXPECT_EQ(type->getMimeType(), "image/x-exr");
            names.push_back(name);
            layerCounts.push_back(layers.size());
            // Asked for PNG, the EXR type encodes the first layer as PNG.
            std::stringstream png;
            EXPECT_TRUE(type->write(image, png, "image/png", layers, "beauty"));
            EXPECT_EQ(png.str().substr(1, 3), "PNG");
            std::stringstream exr;
            EXPECT_TRUE(type->write(image, exr, "", layers, "beauty"));
            EXPECT_EQ(exr.str().substr(0, 4), "\x76\x2f\x31\x01");
            return true;
        });
    EXPECT_TRUE(oxImageWriter::isStreamOutput());
    activate({0, 33});
    const std::string png = dir.file("s.png");
    ASSERT_TRUE(still(png, 16, 8, 1, true));
    writer.setExportMultiLayer(true);
    const std::string exr = dir.file("s.exr");
    ASSERT_TRUE(still(exr, 16, 8, 1, true));
    EXPECT_EQ(names,
              (std::vector<std::string>{dir.file("s.beauty.png"), dir.file("s.depth.png"), exr}));
    EXPECT_EQ(layerCounts, (std::vector<size_t>{1, 1, 2}));
    EXPECT_TRUE(QDir(QString::fromStdString(dir.path())).isEmpty());
    oxImageOutStream::resetImageWriteFunctions();
    EXPECT_FALSE(oxImageWriter::isStreamOutput());
}

TEST_F(ImageMetaData, OpenStreamEncodesByTheComposedName)
{
    std::stringstream buffer;
    oxImageOutStream::openStream(buffer, "");
    ASSERT_TRUE(writer.exportImage("diverted.JPEG", 16, 8, 3, 1, 72, false, "", false, false));
    const std::string jpeg = buffer.str();
    ASSERT_GT(jpeg.size(), 4u);
    EXPECT_EQ(uint8_t(jpeg[0]), 0xff);
    EXPECT_EQ(uint8_t(jpeg[1]), 0xd8);
    buffer.str("");
    ASSERT_TRUE(writer.exportImage("diverted.IMAGE/PNG", 16, 8, 3, 1, 72, false, "", false, false));
    EXPECT_EQ(buffer.str().substr(1, 3), "PNG");
    oxImageOutStream::close();
    EXPECT_FALSE(QFileInfo::exists("diverted.JPEG"));
}

TEST_F(ImageMetaData, HandlerEncodesPngIntoAStream)
{
    std::vector<float> rgba(4 * 3 * 4, 0.25f);
    auto image = std::make_shared<osg::Image>(4, 3, rgba, "beauty");
    std::stringstream buffer;
    osg_image_file_handler_errno = 1;
    ASSERT_TRUE(osg::ImageFileHandler::the().write(image, buffer, "image/png"));
    EXPECT_EQ(osg_image_file_handler_errno, 0);
    const std::string png = buffer.str();
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(uint8_t(png[19]), 4); // IHDR width
    EXPECT_EQ(uint8_t(png[23]), 3); // IHDR height

    // A file write while a stream is open lands in the stream, and no file is made.
    std::stringstream redirected;
    oxImageOutStream::openStream(redirected, "");
    const std::string path = dir.file("handler.png");
    ASSERT_TRUE(osg::ImageFileHandler::the().write(image, path));
    oxImageOutStream::close();
    EXPECT_EQ(redirected.str(), png);
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(path)));
    ASSERT_TRUE(osg::ImageFileHandler::the().write(image, path));
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(path)));

    auto wrong = std::make_shared<osg::Image>(4, 3, std::vector<float>(5), "bad");
    expectLog(oxLog::Error, "Image writer: can't encode image/png: the image is empty or its "
                            "layers differ in size.");
    EXPECT_FALSE(osg::ImageFileHandler::the().write(wrong, buffer, "image/png"));
    EXPECT_NE(osg_image_file_handler_errno, 0);
}
