#include "oxOSGImage.h"

#include "oxDisplayCurve.h"
#include "oxFile.h"
#include "oxImageEncoder.h"
#include "oxImageOutStream.h"
#include "oxImagePasses.h"
#include "oxLog.h"

#include <algorithm>
#include <cctype>
#include <ostream>

int osg_image_file_handler_errno = 0;

namespace osg {

namespace {
std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

std::string mimeOfFormat(const std::string& format)
{
    if (format == "openexr")
        return "image/x-exr";
    return "image/" + format;
}

// Whether an image named after a pass holds data rather than colours.
bool isDataLayer(const std::string& name)
{
    for (unsigned id = 0; id < oxImagePasses::count; ++id)
        if (name == oxImagePasses::names[id])
            return oxImagePasses::isData(id);
    return false;
}

std::vector<oxImageLayer> layersOf(const ImagePtr& image, const std::vector<ImagePtr>& more,
                                   const std::string& firstName)
{
    std::vector<oxImageLayer> layers;
    layers.push_back({firstName.empty() ? image->getName() : firstName, image->getData().data(),
                      image->isCryptomatte(), isDataLayer(image->getName())});
    for (const ImagePtr& layer : more)
        if (layer && layer != image)
            layers.push_back({layer->getName(), layer->getData().data(), layer->isCryptomatte(),
                              isDataLayer(layer->getName())});
    return layers;
}

// Integer files are display-referred, as the image writer's own files are.
const std::vector<float>& sRGBCurve()
{
    static const oxDisplayCurve curve = oxDisplayCurve::sRGB();
    return curve.table();
}

bool sizesMatch(const ImagePtr& image, const std::vector<ImagePtr>& layers)
{
    const size_t size = size_t(image->getWidth()) * size_t(image->getHeight()) * 4;
    if (image->getData().size() != size)
        return false;
    for (const ImagePtr& layer : layers)
        if (layer && (layer->getWidth() != image->getWidth() ||
                      layer->getHeight() != image->getHeight() || layer->getData().size() != size))
            return false;
    return true;
}
} // namespace

Image::Image(int width, int height, std::vector<float> rgba, std::string name)
    : m_width(width), m_height(height), m_rgba(std::move(rgba)), m_name(std::move(name))
{}

ImageFileType::ImageFileType(std::string mimeType, std::vector<std::string> suffixes)
    : m_mimeType(std::move(mimeType)), m_suffixes(std::move(suffixes))
{}

bool ImageFileType::write(const ImagePtr& image, std::ostream& stream, const std::string& mimeType,
                          const std::vector<ImagePtr>& layers, const std::string& layerName)
{
    osg_image_file_handler_errno = 1;
    // The mime type asked for wins over the type's own format (a layered write asked for PNG
    // gives PNG of the first layer).
    std::string suffix = encoderSuffix();
    if (!mimeType.empty() && lower(mimeType) != m_mimeType) {
        ImageFileType* asked = ImageFileHandler::the().getFileType(mimeType);
        if (asked)
            suffix = asked->encoderSuffix();
    }
    if (!image || !sizesMatch(image, layers)) {
        oxLog::error("Image writer: can't encode %s: the image is empty or its layers differ in "
                     "size.",
                     m_mimeType.c_str());
        return false;
    }
    oxEncodeSettings settings;
    ImageFileHandler::the().applyOptions(suffix, settings);
    settings.multiLayer = !layers.empty();
    settings.displayCurve = sRGBCurve();
    std::string bytes;
    std::string error;
    if (!oxImageEncoder::encode(suffix, image->getWidth(), image->getHeight(),
                                layersOf(image, layers, layerName), settings, bytes, error)) {
        oxLog::error("Image writer: can't encode %s: %s.", m_mimeType.c_str(), error.c_str());
        return false;
    }
    stream.write(bytes.data(), std::streamsize(bytes.size()));
    if (!stream) {
        oxLog::error("Image writer: can't write the %s data into its stream.", m_mimeType.c_str());
        return false;
    }
    osg_image_file_handler_errno = 0;
    return true;
}

PNGImageFileType::PNGImageFileType() : ImageFileType("image/png", {"png"}) {}

PNGImageFileType& PNGImageFileType::the()
{
    static PNGImageFileType* type = new PNGImageFileType();
    return *type;
}

ImageFileHandler& ImageFileHandler::the()
{
    static ImageFileHandler* handler = new ImageFileHandler();
    return *handler;
}

ImageFileType* ImageFileHandler::getFileType(const std::string& mimeOrSuffix)
{
    std::string key = lower(mimeOrSuffix);
    std::string format;
    if (key.rfind("image/", 0) == 0) {
        for (const std::string& suffix : oxImageEncoder::writableExtensions()) {
            if (mimeOfFormat(oxImageEncoder::formatOf(suffix)) == key) {
                format = oxImageEncoder::formatOf(suffix);
                break;
            }
        }
    } else {
        format = oxImageEncoder::formatOf(key);
    }
    if (format.empty())
        return nullptr;
    if (format == "png")
        return &PNGImageFileType::the();
    auto& type = m_types[format];
    if (!type) {
        std::vector<std::string> suffixes;
        for (const std::string& suffix : oxImageEncoder::writableExtensions())
            if (oxImageEncoder::formatOf(suffix) == format)
                suffixes.push_back(suffix);
        // The format's usual suffix first: it is the one the encoder is given.
        const auto usual = std::find_if(suffixes.begin(), suffixes.end(), [&](const auto& s) {
            return s == "exr" || s == "tif" || s == "jpg" || s == format;
        });
        if (usual != suffixes.end())
            std::rotate(suffixes.begin(), usual, usual + 1);
        type = std::make_unique<ImageFileType>(mimeOfFormat(format), suffixes);
    }
    return type.get();
}

void ImageFileHandler::getSuffixList(std::list<std::string>& suffixes, bool writable)
{
    (void)writable; // every format offered here can be written
    for (const std::string& suffix : oxImageEncoder::writableExtensions())
        suffixes.push_back(suffix);
}

bool ImageFileHandler::write(const ImagePtr& image, std::ostream& stream,
                             const std::string& mimeType)
{
    ImageFileType* type = getFileType(mimeType);
    if (!type) {
        osg_image_file_handler_errno = 1;
        oxLog::error("Image writer: no image format for '%s'.", mimeType.c_str());
        return false;
    }
    return type->write(image, stream, mimeType);
}

bool ImageFileHandler::write(const ImagePtr& image, const std::string& fileName)
{
    osg_image_file_handler_errno = 1;
    // A redirected image never becomes a file, whichever route it takes.
    if (oxImageOutStream::isActive()) {
        if (!image || !oxImageOutStream::write(image, fileName, {}))
            return false;
        osg_image_file_handler_errno = 0;
        return true;
    }
    const std::string path = oxFile::expandFilename(fileName);
    if (!image || !sizesMatch(image, {})) {
        oxLog::error("Image writer: can't write '%s': the image is empty.", path.c_str());
        return false;
    }
    oxEncodeSettings settings;
    applyOptions(oxFile::getExtension(path), settings);
    settings.displayCurve = sRGBCurve();
    std::string error;
    if (!oxImageEncoder::writeFile(path, image->getWidth(), image->getHeight(),
                                   layersOf(image, {}, std::string()), settings, error)) {
        oxLog::error("Image writer: can't write '%s': %s.", path.c_str(), error.c_str());
        return false;
    }
    osg_image_file_handler_errno = 0;
    return true;
}

void ImageFileHandler::setOptions(const std::string& mimeType, const std::string& options)
{
    m_options[lower(mimeType)] = options;
}

std::string ImageFileHandler::getOptions(const std::string& mimeType) const
{
    const auto it = m_options.find(lower(mimeType));
    return it == m_options.end() ? std::string() : it->second;
}

void ImageFileHandler::applyOptions(const std::string& extension, oxEncodeSettings& settings) const
{
    const std::string format = oxImageEncoder::formatOf(extension);
    if (format == "png")
        settings.pngCompression = int(std::min(PNGImageFileType::the().getQuality(), 9u));
    // Options are "key=value" pairs separated by ';' or ','.
    std::string options = getOptions(mimeOfFormat(format));
    size_t start = 0;
    while (start < options.size()) {
        size_t end = options.find_first_of(";,", start);
        if (end == std::string::npos)
            end = options.size();
        const std::string pair = options.substr(start, end - start);
        start = end + 1;
        const size_t equal = pair.find('=');
        if (equal == std::string::npos)
            continue;
        const std::string key = lower(pair.substr(0, equal));
        const std::string value = pair.substr(equal + 1);
        if (key == "compressiontype")
            settings.tiffCompression = lower(value);
        else if (key == "quality")
            settings.quality = std::atoi(value.c_str());
    }
}

} // namespace osg
