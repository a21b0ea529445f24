#pragma once

#include <iosfwd>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct oxEncodeSettings;

/// Error state of the last image write: 0 after a success, non-zero after a failure. Callers
/// set it to 0 before an export and read it afterwards.
extern int osg_image_file_handler_errno;

namespace osg {

/// An image in memory: width * height RGBA floats, top row first, with a layer name.
class Image {
public:
    Image() = default;
    Image(int width, int height, std::vector<float> rgba, std::string name = std::string());

    int getWidth() const { return m_width; }
    int getHeight() const { return m_height; }
    const std::vector<float>& getData() const { return m_rgba; }
    std::vector<float>& editData() { return m_rgba; }
    const std::string& getName() const { return m_name; }
    void setName(const std::string& name) { m_name = name; }
    /// Cryptomatte layers keep 32-bit floats in every format.
    bool isCryptomatte() const { return m_cryptomatte; }
    void setCryptomatte(bool on) { m_cryptomatte = on; }

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<float> m_rgba;
    std::string m_name;
    bool m_cryptomatte = false;
};

using ImagePtr = std::shared_ptr<Image>;

/// One image file format, known by its mime type and suffixes.
class ImageFileType {
public:
    ImageFileType(std::string mimeType, std::vector<std::string> suffixes);
    virtual ~ImageFileType() = default;

    const std::string& getMimeType() const { return m_mimeType; }
    const std::vector<std::string>& getSuffixList() const { return m_suffixes; }

    /// Encodes image into stream. layers, when given, are written as further layers where the
    /// format holds several (EXR, TIFF), the first named layerName; other formats write image.
    virtual bool write(const ImagePtr& image, std::ostream& stream, const std::string& mimeType,
                       const std::vector<ImagePtr>& layers = {},
                       const std::string& layerName = std::string());

protected:
    /// The suffix by which the encoder picks the format.
    const std::string& encoderSuffix() const { return m_suffixes.front(); }

private:
    std::string m_mimeType;
    std::vector<std::string> m_suffixes;
};

/// PNG, with a compression level as its quality.
class PNGImageFileType : public ImageFileType {
public:
    static PNGImageFileType& the();
    /// Compression level 0..9 (default 1).
    void setQuality(unsigned quality) { m_quality = quality; }
    unsigned getQuality() const { return m_quality; }

private:
    PNGImageFileType();
    unsigned m_quality = 1;
};

/// The registry of image file types: writes images by mime type or file name.
class ImageFileHandler {
public:
    static ImageFileHandler& the();

    /// The type of a mime type ("image/png") or suffix ("png", "PNG"), or nullptr.
    ImageFileType* getFileType(const std::string& mimeOrSuffix);

    /// Writable (or readable, when writable is false: the same list here) suffixes.
    void getSuffixList(std::list<std::string>& suffixes, bool writable = true);

    /// Encodes image into stream in the format of mimeType. Sets osg_image_file_handler_errno.
    bool write(const ImagePtr& image, std::ostream& stream, const std::string& mimeType);
    /// Writes image to a file, atomically; the suffix chooses the format. While
    /// oxImageOutStream redirects images, the image goes there instead.
    bool write(const ImagePtr& image, const std::string& fileName);

    /// Options of a format as "key=value" (e.g. "image/tiff", "compressionType=LZW";
    /// "quality=N").
    void setOptions(const std::string& mimeType, const std::string& options);
    std::string getOptions(const std::string& mimeType) const;
    /// Puts the options of the format of extension (and the PNG quality) into settings.
    void applyOptions(const std::string& extension, oxEncodeSettings& settings) const;

private:
    ImageFileHandler() = default;
    std::map<std::string, std::unique_ptr<ImageFileType>> m_types;
    std::map<std::string, std::string> m_options;
};

} // namespace osg
