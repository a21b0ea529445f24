// The image codec module: every use of OpenImageIO, in a library of its own that the host
// loads on the first image it encodes. OpenImageIO brings in some 250 shared libraries, whose
// loading would otherwise cost every start of the program about half a second.

#include "oxDisplayCurve.h"
#include "oxImageCodec.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <QDir>
#include <QTemporaryFile>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <cctype>
#include <map>
#include <memory>
#include <string>
#include <vector>

using namespace OIIO;

namespace {

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

// Extension -> format name of every format OpenImageIO can write here.
std::map<std::string, std::string> writableFormats()
{
    return [] {
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
        // Integer files hold display-referred code values: colour layers pass through the
        // display curve on the way; data layers and float files keep their values.
        const float* pixels = layers[i].rgba;
        std::vector<float> encoded;
        const bool integer = specs[i].format.basetype == TypeDesc::UINT8 ||
                             specs[i].format.basetype == TypeDesc::UINT16;
        if (integer && !settings.displayCurve.empty() && !layers[i].data &&
            !layers[i].cryptomatte) {
            encoded.assign(pixels, pixels + size_t(width) * size_t(height) * 4);
            for (size_t p = 0; p < encoded.size(); p += 4)
                for (size_t c = 0; c < 3; ++c)
                    encoded[p + c] = oxApplyDisplayCurve(settings.displayCurve, encoded[p + c]);
            pixels = encoded.data();
        }
        // The stride skips alpha when only three channels are written.
        if (!out.write_image(TypeDesc::FLOAT, pixels, 4 * sizeof(float))) {
            error = describe(out.geterror());
            return false;
        }
    }
    return closeChecked(out, error);
}

bool encode(const std::string& format, const std::string& extension, int width, int height,
            const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
            std::string& bytes, std::string& error)
{
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
        // Formats without in-memory output go through a file: the caller's scratch file, else
        // a private temporary one.
        QTemporaryFile file(QDir::tempPath() + "/oximage-XXXXXX." +
                            QString::fromStdString(extension));
        std::string path = settings.scratchFile;
        if (path.empty()) {
            if (!file.open()) {
                error = "no temporary file for encoding";
                return false;
            }
            path = QFile::encodeName(file.fileName()).toStdString();
            file.close();
        }
        if (!writeLayers(*out, path, format, width, height, layers, settings, error))
            return false;
        out.reset();
        std::ifstream encoded(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(encoded), std::istreambuf_iterator<char>());
        if (!encoded) {
            error = "the encoded image can't be read back";
            return false;
        }
    }
    return true;
}

const oxImageCodec kCodec = {oxImageCodec::kVersion, &writableFormats, &encode};

} // namespace

extern "C" __attribute__((visibility("default"))) const oxImageCodec* oxImageCodecEntry()
{
    return &kCodec;
}
