#include "oxImageEncoder.h"

#include "oxFile.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <QDir>
#include <QTemporaryFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <atomic>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>

#include <unistd.h>

using namespace OIIO;

namespace oxImageEncoder {

namespace {

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

// Extension -> format name of every format OpenImageIO can write here.
const std::map<std::string, std::string>& writableFormats()
{
    static const std::map<std::string, std::string> formats = [] {
        std::map<std::string, std::string> result;
        std::string writable =
            "," + std::string(OIIO::get_string_attribute("output_format_list")) + ",";
        const std::string list = std::string(OIIO::get_string_attribute("extension_list"));
        // "format:ext,ext;format:ext..."; null and term write no file, zfile holds depth only.
        size_t start = 0;
        while (start < list.size()) {
            size_t end = list.find(';', start);
            if (end == std::string::npos)
                end = list.size();
            const std::string entry = list.substr(start, end - start);
            start = end + 1;
            const size_t colon = entry.find(':');
            if (colon == std::string::npos)
                continue;
            const std::string format = entry.substr(0, colon);
            if (format == "null" || format == "term" || format == "zfile" ||
                writable.find("," + format + ",") == std::string::npos)
                continue;
            size_t e = colon + 1;
            while (e < entry.size()) {
                size_t comma = entry.find(',', e);
                if (comma == std::string::npos)
                    comma = entry.size();
                // Only extensions by which the library finds its writer count as offered.
                const std::string extension = lower(entry.substr(e, comma - e));
                if (ImageOutput::create("x." + extension))
                    result[extension] = format;
                e = comma + 1;
            }
        }
        return result;
    }();
    return formats;
}

uint32_t crc32(const unsigned char* data, size_t length, uint32_t crc = 0)
{
    static const auto table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xedb88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (size_t i = 0; i < length; ++i)
        crc = table[(crc ^ data[i]) & 0xff] ^ (crc >> 8);
    return ~crc;
}

void putBE32(std::string& out, uint32_t v)
{
    out += char(v >> 24);
    out += char(v >> 16);
    out += char(v >> 8);
    out += char(v);
}

// PNG carries XMP in an iTXt chunk with the keyword "XML:com.adobe.xmp", placed after IHDR.
bool embedXMPInPNG(std::string& png, const std::string& xmp)
{
    const size_t afterIHDR = 8 + 8 + 13 + 4;
    if (png.size() < afterIHDR || png.compare(12, 4, "IHDR") != 0)
        return false;
    std::string data = std::string("XML:com.adobe.xmp") + '\0' + '\0' + '\0' + '\0' + '\0' + xmp;
    std::string chunk;
    putBE32(chunk, uint32_t(data.size()));
    const std::string typed = "iTXt" + data;
    chunk += typed;
    putBE32(chunk, crc32(reinterpret_cast<const unsigned char*>(typed.data()), typed.size()));
    png.insert(afterIHDR, chunk);
    return true;
}

// JPEG carries XMP in an APP1 segment named by the XMP namespace, placed after the leading
// application segments (JFIF, Exif, ICC) so that those keep their usual places.
bool embedXMPInJPEG(std::string& jpeg, const std::string& xmp)
{
    const std::string payload = std::string("http://ns.adobe.com/xap/1.0/") + '\0' + xmp;
    if (jpeg.size() < 4 || uint8_t(jpeg[0]) != 0xff || uint8_t(jpeg[1]) != 0xd8 ||
        payload.size() + 2 > 0xffff)
        return false;
    size_t at = 2;
    while (at + 4 <= jpeg.size() && uint8_t(jpeg[at]) == 0xff &&
           (uint8_t(jpeg[at + 1]) & 0xf0) == 0xe0)
        at += 2 + ((uint8_t(jpeg[at + 2]) << 8) | uint8_t(jpeg[at + 3]));
    std::string segment;
    segment += char(0xff);
    segment += char(0xe1);
    const size_t length = payload.size() + 2;
    segment += char(length >> 8);
    segment += char(length & 0xff);
    segment += payload;
    jpeg.insert(std::min(at, jpeg.size()), segment);
    return true;
}

// TIFF carries XMP in tag 700 of the first directory. The directory is copied to the end of
// the file with the tag added, so the offsets of all other data stay valid.
bool embedXMPInTIFF(std::string& tiff, const std::string& xmp)
{
    if (tiff.size() < 8)
        return false;
    const bool little = tiff[0] == 'I' && tiff[1] == 'I';
    if (!little && !(tiff[0] == 'M' && tiff[1] == 'M'))
        return false;
    auto get16 = [&](size_t at) -> uint32_t {
        const auto* b = reinterpret_cast<const uint8_t*>(tiff.data()) + at;
        return little ? (b[0] | b[1] << 8) : (b[0] << 8 | b[1]);
    };
    auto get32 = [&](size_t at) -> uint32_t {
        return little ? (get16(at) | get16(at + 2) << 16) : (get16(at) << 16 | get16(at + 2));
    };
    auto put16 = [&](std::string& out, uint32_t v) {
        out += little ? char(v) : char(v >> 8);
        out += little ? char(v >> 8) : char(v);
    };
    auto put32 = [&](std::string& out, uint32_t v) {
        if (little) {
            put16(out, v & 0xffff);
            put16(out, v >> 16);
        } else {
            put16(out, v >> 16);
            put16(out, v & 0xffff);
        }
    };
    if (get16(2) != 42)
        return false; // BigTIFF is not written by this host
    const uint32_t ifd = get32(4);
    if (ifd + 2 > tiff.size())
        return false;
    const uint32_t count = get16(ifd);
    if (ifd + 2 + count * 12 + 4 > tiff.size())
        return false;

    if (tiff.size() % 2)
        tiff += '\0';
    const uint32_t xmpOffset = uint32_t(tiff.size());
    tiff += xmp;
    if (tiff.size() % 2)
        tiff += '\0';
    const uint32_t newIfd = uint32_t(tiff.size());

    std::vector<std::string> entries;
    bool added = false;
    std::string xmpEntry;
    put16(xmpEntry, 700);
    put16(xmpEntry, 1); // BYTE
    put32(xmpEntry, uint32_t(xmp.size()));
    put32(xmpEntry, xmpOffset);
    for (uint32_t i = 0; i < count; ++i) {
        const size_t at = ifd + 2 + i * 12;
        const uint32_t tag = get16(at);
        if (!added && tag >= 700) {
            entries.push_back(xmpEntry);
            added = true;
            if (tag == 700)
                continue;
        }
        entries.push_back(tiff.substr(at, 12));
    }
    if (!added)
        entries.push_back(xmpEntry);
    const uint32_t next = get32(ifd + 2 + count * 12);

    std::string directory;
    put16(directory, uint32_t(entries.size()));
    for (const std::string& entry : entries)
        directory += entry;
    put32(directory, next);
    tiff += directory;
    std::string header;
    put32(header, newIfd);
    tiff.replace(4, 4, header);
    return true;
}

bool embedXMP(const std::string& format, std::string& bytes, const std::string& xmp)
{
    if (format == "png")
        return embedXMPInPNG(bytes, xmp);
    if (format == "jpeg")
        return embedXMPInJPEG(bytes, xmp);
    if (format == "tiff")
        return embedXMPInTIFF(bytes, xmp);
    return true; // EXR holds it as a header attribute; other formats have no place for it
}

ImageSpec makeSpec(const std::string& format, int width, int height, const oxImageLayer& layer,
                   int channels, const oxEncodeSettings& settings, ImageOutput& out)
{
    TypeDesc type = TypeDesc::UINT8;
    if (format == "openexr")
        type = settings.exrHalf ? TypeDesc::HALF : TypeDesc::FLOAT;
    else if (format == "tiff" && settings.tiffHDR)
        type = TypeDesc::FLOAT;
    else if (format == "hdr" || format == "fits" || format == "rla" || format == "dpx")
        type = TypeDesc::FLOAT;
    if (layer.cryptomatte && (format == "openexr" || format == "tiff"))
        type = TypeDesc::FLOAT;

    ImageSpec spec(width, height, channels, type);
    if (channels == 4)
        spec.alpha_channel = 3;
    // Colours arrive as the renderer made them (premultiplied or not, its switch): they are
    // stored as they are, never divided by alpha on the way.
    spec.attribute("oiio:UnassociatedAlpha", 1);
    if (format == "png")
        spec.attribute("png:compressionLevel", settings.pngCompression);
    if (settings.quality > 0)
        spec.attribute("CompressionQuality", settings.quality);
    if (format == "tiff" && !settings.tiffCompression.empty())
        spec.attribute("compression", settings.tiffCompression);
    if (settings.ppi > 0.0f) {
        spec.attribute("XResolution", settings.ppi);
        spec.attribute("YResolution", settings.ppi);
        spec.attribute("ResolutionUnit", "in");
    }
    if (!settings.iccProfile.empty() && format != "openexr")
        spec.attribute("ICCProfile", TypeDesc(TypeDesc::UINT8, int(settings.iccProfile.size())),
                       settings.iccProfile.data());
    if (format == "openexr") {
        for (const auto& attribute : settings.attributes)
            spec.attribute(attribute.first, attribute.second);
        if (!settings.xmp.empty())
            spec.attribute("xmp", settings.xmp);
    }
    if (!layer.name.empty())
        spec.attribute("oiio:subimagename", layer.name);
    (void)out;
    return spec;
}

bool channelsOf(const std::string& format, bool alpha, ImageOutput& out)
{
    return alpha && out.supports("alpha") && format != "jpeg" && format != "hdr" && format != "pnm";
}

std::string describe(const std::string& text)
{
    return text.empty() ? std::string("unknown error") : text;
}

// The pending errors of out, less the one that this system's TIFF library reports for every
// file although the file is complete (it concerns an Exif directory that is never needed).
std::string pendingErrors(ImageOutput& out)
{
    const std::string all = out.geterror();
    std::string kept;
    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\n', start);
        if (end == std::string::npos)
            end = all.size();
        const std::string line = all.substr(start, end - start);
        start = end + 1;
        if (line.empty() ||
            line.find("TIFFWriteCustomDirectory() of the Exif data") != std::string::npos)
            continue;
        kept += (kept.empty() ? "" : "; ") + line;
    }
    return kept;
}

// Closes out; some writers report a failed encode only as a pending error after a
// "successful" close, so both count.
bool closeChecked(ImageOutput& out, std::string& error)
{
    const bool closed = out.close();
    error = pendingErrors(out);
    if (!closed || !error.empty()) {
        error = describe(error);
        return false;
    }
    return true;
}

// Writes through an open output; the data of each subimage comes from one layer.
bool writeLayers(ImageOutput& out, const std::string& target, const std::string& format, int width,
                 int height, const std::vector<oxImageLayer>& layers,
                 const oxEncodeSettings& settings, std::string& error)
{
    const bool alpha = channelsOf(format, settings.alpha, out);
    const int channels = alpha ? 4 : 3;
    const size_t pixels = size_t(width) * size_t(height);

    if (settings.multiLayer && format == "openexr" && layers.size() > 1) {
        ImageSpec spec = makeSpec(format, width, height, oxImageLayer(), 0, settings, out);
        spec.channelnames.clear();
        spec.channelformats.clear();
        std::vector<const float*> sources;
        std::vector<int> offsets;
        for (const oxImageLayer& layer : layers) {
            const int layerChannels = layer.cryptomatte ? 4 : channels;
            const char* suffix[] = {".R", ".G", ".B", ".A"};
            for (int c = 0; c < layerChannels; ++c) {
                spec.channelnames.push_back(layer.name + suffix[c]);
                spec.channelformats.push_back(
                    layer.cryptomatte || !settings.exrHalf ? TypeDesc::FLOAT : TypeDesc::HALF);
                sources.push_back(layer.rgba);
                offsets.push_back(c);
            }
        }
        spec.nchannels = int(spec.channelnames.size());
        spec.alpha_channel = -1;
        spec.format = settings.exrHalf ? TypeDesc::HALF : TypeDesc::FLOAT;
        const size_t total = size_t(spec.nchannels);
        std::vector<float> interleaved(pixels * total);
        for (size_t c = 0; c < total; ++c) {
            const float* source = sources[c] + offsets[c];
            float* target = interleaved.data() + c;
            for (size_t p = 0; p < pixels; ++p)
                target[p * total] = source[p * 4];
        }
        if (!out.open(target, spec) || !out.write_image(TypeDesc::FLOAT, interleaved.data())) {
            error = describe(out.geterror());
            return false;
        }
        return closeChecked(out, error);
    }

    const bool subimages = settings.multiLayer && format == "tiff" && layers.size() > 1;
    const size_t count = subimages ? layers.size() : 1;
    std::vector<ImageSpec> specs;
    for (size_t i = 0; i < count; ++i) {
        const int layerChannels = layers[i].cryptomatte && format == "tiff" ? 4 : channels;
        specs.push_back(makeSpec(format, width, height, layers[i], layerChannels, settings, out));
    }
    if (subimages && !out.supports("multiimage")) {
        error = "the format can't hold several images";
        return false;
    }
    if (!out.open(target, int(specs.size()), specs.data())) {
        error = describe(out.geterror());
        return false;
    }
    for (size_t i = 0; i < count; ++i) {
        if (i > 0) {
            const std::string pending = pendingErrors(out);
            if (!pending.empty() || !out.open(target, specs[i], ImageOutput::AppendSubimage)) {
                error = describe(pending.empty() ? out.geterror() : pending);
                return false;
            }
        }
        // The stride skips alpha when only three channels are written.
        if (!out.write_image(TypeDesc::FLOAT, layers[i].rgba, 4 * sizeof(float))) {
            error = describe(out.geterror());
            return false;
        }
    }
    return closeChecked(out, error);
}

} // namespace

std::string formatOf(const std::string& extension)
{
    const auto& formats = writableFormats();
    const auto it = formats.find(lower(extension));
    return it == formats.end() ? std::string() : it->second;
}

bool isMultiLayerFormat(const std::string& extension)
{
    const std::string format = formatOf(extension);
    return format == "openexr" || format == "tiff";
}

std::vector<std::string> writableExtensions()
{
    std::vector<std::string> result;
    for (const auto& entry : writableFormats())
        result.push_back(entry.first);
    return result;
}

bool encode(const std::string& extension, int width, int height,
            const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
            std::string& bytes, std::string& error)
{
    const std::string format = formatOf(extension);
    if (format.empty()) {
        error = "the image format '" + extension + "' can't be written";
        return false;
    }
    if (layers.empty() || width <= 0 || height <= 0) {
        error = "the image is empty";
        return false;
    }
    auto out = ImageOutput::create(format);
    if (!out) {
        error = describe(OIIO::geterror());
        return false;
    }
    bytes.clear();
    // In-memory output only for the writers known to honour it fully (others claim it and
    // write nothing); TIFF appends its subimages by reopening the file, which memory can't do.
    const bool subimages = settings.multiLayer && format == "tiff" && layers.size() > 1;
    const bool inMemory = format == "png" || format == "jpeg" || format == "openexr" ||
                          (format == "tiff" && !subimages);
    if (inMemory && out->supports("ioproxy")) {
        std::vector<unsigned char> buffer;
        Filesystem::IOVecOutput proxy(buffer);
        out->set_ioproxy(&proxy);
        if (!writeLayers(*out, "memory." + extension, format, width, height, layers, settings,
                         error))
            return false;
        out.reset();
        bytes.assign(reinterpret_cast<const char*>(buffer.data()), buffer.size());
    } else {
        // Formats without in-memory output go through a private temporary file.
        QTemporaryFile file(QDir::tempPath() + "/oximage-XXXXXX." +
                            QString::fromStdString(extension));
        if (!file.open()) {
            error = "no temporary file for encoding";
            return false;
        }
        const std::string path = file.fileName().toStdString();
        file.close();
        if (!writeLayers(*out, path, format, width, height, layers, settings, error))
            return false;
        out.reset();
        if (!oxFile::readAll(path, bytes)) {
            error = "the encoded image can't be read back";
            return false;
        }
    }
    if (!settings.xmp.empty() && !embedXMP(format, bytes, settings.xmp)) {
        error = "the metadata can't be embedded";
        return false;
    }
    return true;
}

std::string temporaryName(const std::string& path)
{
    static std::atomic<unsigned> counter{0};
    const std::string folder = oxFile::getFilePath(path);
    const std::string extension = oxFile::getExtension(path);
    std::string name = "." + oxFile::getBaseName(path) + ".part" + std::to_string(::getpid()) +
                       "-" + std::to_string(counter++);
    if (!extension.empty())
        name += "." + extension;
    return folder.empty() ? name : (folder == "/" ? "/" + name : folder + "/" + name);
}

bool commitTemporary(const std::string& temporary, const std::string& path, std::string& error)
{
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        error = std::string("can't rename the finished file: ") + std::strerror(errno);
        std::remove(temporary.c_str());
        return false;
    }
    return true;
}

bool writeFile(const std::string& path, int width, int height,
               const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
               std::string& error)
{
    std::string bytes;
    if (!encode(oxFile::getExtension(path), width, height, layers, settings, bytes, error))
        return false;
    const std::string temporary = temporaryName(path);
    FILE* file = std::fopen(temporary.c_str(), "wb");
    if (!file) {
        error = std::string("can't create the file: ") + std::strerror(errno);
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        error = std::string("can't write the file: ") + std::strerror(errno);
        std::remove(temporary.c_str());
        return false;
    }
    return commitTemporary(temporary, path, error);
}

} // namespace oxImageEncoder
