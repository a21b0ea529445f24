#include "oxStreamCapture.h"

#include "oxImageOutStream.h"
#include "oxLog.h"
#include "oxOSGImage.h"
#include "oxSnapshots.h"

#include <QByteArray>

#include <exception>
#include <iostream>
#include <locale>
#include <memory>
#include <sstream>
#include <vector>

namespace {

// Captured images are always PNG, whatever format the caller asked the writer for.
const char kCaptureMimeType[] = "image/png";
// The name of the first layer of a layered capture: the beauty pass.
const char kFirstLayerName[] = "beauty";
// Supersampling factor of createSnapshotStream: any positive value means full supersampling.
constexpr int kStreamSnapshotSupersampling = 100;

using Buffer = std::shared_ptr<std::stringstream>;

Buffer newBuffer()
{
    return std::make_shared<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
}

// Sets the redirection into buffer. The functions share the buffer rather than point at it,
// so that a redirection left in place by a script error still writes into live memory.
void redirectInto(const Buffer& buffer)
{
    oxImageOutStream::setImageWriteFunctions(
        [buffer](const osg::ImagePtr& image, const std::string& fileName) {
            std::cout << "oxMovieExport::imageStream: ImageWriterFunc overwritten fn:" << fileName
                      << std::endl;
            return osg::ImageFileHandler::the().write(image, *buffer, kCaptureMimeType);
        },
        [buffer](osg::ImageFileType* type, const osg::ImagePtr& image, const std::string& fileName,
                 const std::vector<osg::ImagePtr>& layers) {
            std::cout << "oxMovieExport::imageStream: ImageLayeredWriterFunc overwritten fn:"
                      << fileName << std::endl;
            const std::vector<osg::ImagePtr> ownLayers(layers);
            return type->write(image, *buffer, kCaptureMimeType, ownLayers, kFirstLayerName);
        });
}

std::string capture(const std::function<void()>& function)
{
    const Buffer buffer = newBuffer();
    redirectInto(buffer);
    try {
        function();
    } catch (const std::exception& error) {
        oxLog::error("python: imageStream could not execute function argument %s", error.what());
    }
    oxImageOutStream::resetImageWriteFunctions();
    return buffer->str();
}

} // namespace

std::string imageStream(const std::function<void()>& function) { return capture(function); }

std::string imageStreamBase64(const std::function<void()>& function)
{
    const std::string bytes = capture(function);
    // With the length, so that zero bytes are kept.
    const QByteArray encoded = QByteArray(bytes.data(), int(bytes.size())).toBase64();
    return std::string(encoded.constData(), size_t(encoded.size()));
}

std::string createSnapshotStream(std::string mimeType, int width, int height)
{
    std::stringstream buffer(std::ios::in | std::ios::out | std::ios::binary);
    if (mimeType.empty())
        mimeType = "png";
    const std::ctype<char>& facet = std::use_facet<std::ctype<char>>(std::locale());
    for (char& c : mimeType)
        c = facet.toupper(c);
    if (mimeType.find("JPG") != std::string::npos)
        mimeType = "JPEG";
    oxImageOutStream::openStream(buffer, std::string());
    // The whole text stays in the name, a mime type's slash included: the writer picks the
    // format from what follows the last dot and slash.
    const std::string fileName = "diverted." + mimeType;
    createSnapshot(fileName.c_str(), width, height, kStreamSnapshotSupersampling);
    oxImageOutStream::close();
    return buffer.str();
}
