#include "oxImageEncoder.h"

#include "oxFile.h"

#include "oxImageCodec.h"
#include "oxLog.h"
#include "oxPartialFiles.h"

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

#include <dlfcn.h>
#include <unistd.h>

namespace oxImageEncoder {

namespace {

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return text;
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

// The codec module, loaded on first use from the folder of the host library; null (after
// one error line per use) when it can't be loaded.
const oxImageCodec* codec()
{
    static const oxImageCodec* const loaded = [] {
        Dl_info info{};
        std::string folder;
        if (::dladdr(reinterpret_cast<void*>(&codec), &info) && info.dli_fname) {
            folder = info.dli_fname;
            folder = folder.substr(0, folder.rfind('/') + 1);
        }
        const std::string path = folder + "liboximagecodec.so";
        void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        auto entry =
            library
                ? reinterpret_cast<oxImageCodecEntryFunction>(::dlsym(library, "oxImageCodecEntry"))
                : nullptr;
        const oxImageCodec* table = entry ? entry() : nullptr;
        if (!table || table->version != oxImageCodec::kVersion) {
            const char* reason = ::dlerror();
            oxLog::error("The image codec module '%s' can't be loaded: %s", path.c_str(),
                         reason ? reason : "it is of another version");
            return static_cast<const oxImageCodec*>(nullptr);
        }
        return table;
    }();
    return loaded;
}

const std::map<std::string, std::string>& writableFormats()
{
    static const std::map<std::string, std::string> formats =
        codec() ? codec()->writableFormats() : std::map<std::string, std::string>();
    return formats;
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
    if (!codec()) {
        error = "the image codec module isn't available";
        return false;
    }
    if (!codec()->encode(format, extension, width, height, layers, settings, bytes, error))
        return false;
    if (!settings.xmp.empty() && !embedXMP(format, bytes, settings.xmp)) {
        error = "the metadata can't be embedded";
        return false;
    }
    return true;
}

std::string temporaryName(const std::string& path) { return oxPartialFiles::begin(path); }

bool commitTemporary(const std::string& temporary, const std::string& path, std::string& error)
{
    return oxPartialFiles::commit(temporary, path, error);
}

bool writeFile(const std::string& path, int width, int height,
               const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
               std::string& error)
{
    std::string bytes;
    // Formats the codec can't encode in memory go through a file of their own beside the
    // target: it is tracked like the temporary, so that no signal leaves it behind.
    oxEncodeSettings withScratch = settings;
    withScratch.scratchFile = temporaryName(path);
    const bool encoded =
        encode(oxFile::getExtension(path), width, height, layers, withScratch, bytes, error);
    oxPartialFiles::discard(withScratch.scratchFile);
    if (!encoded)
        return false;
    const std::string temporary = temporaryName(path);
    FILE* file = std::fopen(temporary.c_str(), "wb");
    if (!file) {
        error = std::string("can't create the file: ") + std::strerror(errno);
        oxPartialFiles::forget(temporary);
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        error = std::string("can't write the file: ") + std::strerror(errno);
        oxPartialFiles::discard(temporary);
        return false;
    }
    return commitTemporary(temporary, path, error);
}

} // namespace oxImageEncoder
