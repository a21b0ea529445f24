// Image stream capture: snapshots of the example scene caught in memory instead of files.

#include "test_snapshot_support.h"

#include "oxFile.h"
#include "oxStreamCapture.h"
#include "oxSnapshots.h"

#include <QByteArray>

#include <stdexcept>

namespace {

const std::string kPngSignature("\x89PNG\r\n\x1a\n", 8);

class StreamTest : public oxSnapshotModuleTest {
protected:
    /// Writes a snapshot of the standard test size to a real file; returns its path.
    std::string fileSnapshot(const std::string& name)
    {
        const std::string path = dir.file(name);
        EXPECT_TRUE(createSnapshot(path.c_str(), 16, 12, 0));
        return path;
    }
    bool snapshot(const std::string& name)
    {
        return createSnapshot(dir.file(name).c_str(), 16, 12, 0);
    }
    /// Reads encoded bytes back through a file of that extension.
    ImageInfo decode(const std::string& bytes, const std::string& extension)
    {
        const std::string path = dir.file("decoded." + extension);
        EXPECT_TRUE(oxFile::writeAtomically(path, bytes));
        return readImage(path);
    }
    /// The 8-bit RGB values of an image file.
    static std::vector<unsigned char> rgbOfFile(const std::string& path)
    {
        auto input = OIIO::ImageInput::open(path);
        if (!input)
            return {};
        const OIIO::ImageSpec& spec = input->spec();
        std::vector<unsigned char> pixels(size_t(spec.width) * size_t(spec.height) * 3);
        if (!input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT8, pixels.data()))
            return {};
        return pixels;
    }
    /// The 8-bit RGB values of encoded PNG bytes.
    std::vector<unsigned char> rgbOf(const std::string& bytes)
    {
        const std::string path = dir.file("decoded.png");
        EXPECT_TRUE(oxFile::writeAtomically(path, bytes));
        return rgbOfFile(path);
    }
    /// Concatenated PNG files cut at their signatures.
    static std::vector<std::string> splitPngs(const std::string& bytes)
    {
        std::vector<std::string> parts;
        size_t start = bytes.find(kPngSignature);
        while (start != std::string::npos) {
            const size_t next = bytes.find(kPngSignature, start + 1);
            parts.push_back(bytes.substr(start, next == std::string::npos ? next : next - start));
            start = next;
        }
        return parts;
    }
};

} // namespace

TEST_F(StreamTest, CaptureHoldsTheImageOfAFileWriteAndWritesNoFile)
{
    const std::vector<unsigned char> written = rgbOfFile(fileSnapshot("file.png"));
    ASSERT_FALSE(written.empty());

    testing::internal::CaptureStdout();
    const std::string captured = imageStream([&] { EXPECT_TRUE(snapshot("streamed.png")); });
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(captured.compare(0, kPngSignature.size(), kPngSignature), 0);
    EXPECT_EQ(rgbOf(captured), written);
    EXPECT_EQ(out, "oxMovieExport::imageStream: ImageWriterFunc overwritten fn:" +
                       dir.file("streamed.png") + "\n");
    EXPECT_FALSE(oxFile::exists(dir.file("streamed.png")));
    EXPECT_FALSE(oxImageOutStream::isActive());

    testing::internal::CaptureStdout();
    const std::string base64 = imageStreamBase64([&] { snapshot("streamed.png"); });
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(base64.find('\n'), std::string::npos);
    const QByteArray decoded = QByteArray::fromBase64(QByteArray::fromStdString(base64));
    EXPECT_EQ(decoded.toStdString(), captured);
}

TEST_F(StreamTest, SeveralImagesFollowEachOtherAllAsPng)
{
    const std::vector<unsigned char> single = rgbOfFile(fileSnapshot("single.png"));
    testing::internal::CaptureStdout();
    const std::string captured = imageStream([&] {
        snapshot("one.png");
        snapshot("two.jpg");
        snapshot("three.tif");
    });
    const std::string out = testing::internal::GetCapturedStdout();
    const std::vector<std::string> images = splitPngs(captured);
    ASSERT_EQ(images.size(), 3u);
    EXPECT_EQ(images[0] + images[1] + images[2], captured);
    for (const std::string& image : images)
        EXPECT_EQ(rgbOf(image), single);
    EXPECT_NE(out.find("fn:" + dir.file("two.jpg") + "\n"), std::string::npos) << out;
    EXPECT_EQ(filesIn(dir.path()), (std::vector<std::string>{"decoded.png", "single.png"}));
}

TEST_F(StreamTest, LayeredImagesAreCapturedAsPngOfTheFirstLayer)
{
    std::vector<bool> passes(47, false);
    passes[0] = passes[33] = true;
    oxImageRenderWidget::setActiveRenderPasses(passes);
    module->getImageWriter()->setExportMultiLayer(true);
    testing::internal::CaptureStdout();
    const std::string captured = imageStream([&] { snapshot("layers.exr"); });
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "oxMovieExport::imageStream: ImageLayeredWriterFunc overwritten fn:" +
                       dir.file("layers.exr") + "\n");
    ASSERT_EQ(captured.compare(0, kPngSignature.size(), kPngSignature), 0);
    const ImageInfo info = decode(captured, "png");
    EXPECT_EQ(info.width, 16);
    EXPECT_EQ(info.height, 12);
}

TEST_F(StreamTest, HostErrorsEndTheCaptureWithWhatWasWritten)
{
    EXPECT_EQ(imageStream([] {}), "");
    EXPECT_EQ(imageStreamBase64([] {}), "");
    const std::vector<unsigned char> single = rgbOfFile(fileSnapshot("single.png"));
    expectLog(oxLog::Error, "python: imageStream could not execute function argument boom");
    testing::internal::CaptureStdout();
    const std::string captured = imageStream([&] {
        snapshot("first.png");
        throw std::runtime_error("boom");
    });
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(splitPngs(captured).size(), 1u);
    EXPECT_EQ(rgbOf(captured), single);
    EXPECT_FALSE(oxImageOutStream::isActive());
}

TEST_F(StreamTest, ScriptErrorsPassOnAndLeaveTheRedirection)
{
    struct ScriptError {};
    EXPECT_THROW(imageStream([] { throw ScriptError(); }), ScriptError);
    EXPECT_TRUE(oxImageOutStream::hasImageWriteFunctions());
    // Images still go somewhere harmless, not into a file.
    testing::internal::CaptureStdout();
    EXPECT_TRUE(snapshot("after.png"));
    testing::internal::GetCapturedStdout();
    EXPECT_FALSE(oxFile::exists(dir.file("after.png")));
}

TEST_F(StreamTest, SnapshotStreamEncodesTheAskedFormat)
{
    const std::string png = createSnapshotStream("png", 16, 12);
    ASSERT_EQ(png.compare(0, kPngSignature.size(), kPngSignature), 0);
    ImageInfo info = decode(png, "png");
    EXPECT_EQ(info.width, 16);
    EXPECT_EQ(info.height, 12);
    EXPECT_EQ(createSnapshotStream("", 16, 12), png);
    EXPECT_EQ(createSnapshotStream("image/png", 16, 12), png);

    for (const char* jpeg : {"jpg", "image/Jpg", "JPEG"}) {
        const std::string bytes = createSnapshotStream(jpeg, 16, 12);
        ASSERT_GE(bytes.size(), 3u) << jpeg;
        EXPECT_EQ(bytes.substr(0, 3), std::string("\xff\xd8\xff", 3)) << jpeg;
    }
    info = decode(createSnapshotStream("exr", 16, 12), "exr");
    EXPECT_EQ(info.format, "openexr");
    EXPECT_EQ(info.width, 16);

    // The whole upper-case text names the file; supersampling is on.
    const std::vector<std::string> exports = oxTraced("oxImageWriter::exportImage");
    ASSERT_EQ(exports.size(), 7u);
    EXPECT_EQ(exports[2], "diverted.IMAGE/PNG,16,12,3,-1,-1.000000,false");
    EXPECT_EQ(exports[4], "diverted.JPEG,16,12,3,-1,-1.000000,false");
    EXPECT_FALSE(oxImageOutStream::isActive());
    EXPECT_FALSE(oxFile::exists("diverted.PNG"));
}
