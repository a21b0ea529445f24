#pragma once

#include <string>
#include <utility>
#include <vector>

/// One layer of an image to encode: width * height RGBA floats, top row first.
struct oxImageLayer {
    std::string name;
    const float* rgba = nullptr;
    /// Cryptomatte layers are always written as 32-bit float RGBA: their channels hold ids.
    bool cryptomatte = false;
    /// Data layers (depth, normals, positions, ids, masks) hold measurements, not colours:
    /// integer formats store them as they are, never through the display curve.
    bool data = false;
};

/// How layers become the bytes of one image file.
struct oxEncodeSettings {
    /// Write the alpha channel where the format has one.
    bool alpha = true;
    /// TIFF with float channels instead of 8 bits.
    bool tiffHDR = false;
    /// EXR with 16-bit floats (Cryptomatte layers stay 32-bit).
    bool exrHalf = true;
    /// All layers into one file (EXR channels "LAYER.R/G/B/A", TIFF subimages); otherwise only
    /// the first layer is written.
    bool multiLayer = false;
    /// PNG compression level 0..9.
    int pngCompression = 1;
    /// JPEG (and other lossy formats) quality 1..100; 0 for the library's default.
    int quality = 0;
    /// TIFF compression ("lzw", "zip", "none"; empty for the library's default).
    std::string tiffCompression;
    /// Pixels per inch, written as resolution when positive.
    float ppi = -1.0f;
    /// An ICC profile to embed where the format can hold one.
    std::string iccProfile;
    /// The display curve of colour layers in integer formats (oxDisplayCurve::table); empty
    /// to store linear values. Float formats always store linear values.
    std::vector<float> displayCurve;
    /// An XMP packet to embed (PNG, JPEG, TIFF, EXR).
    std::string xmp;
    /// Further string attributes (EXR header entries, PNG text); Cryptomatte keys go here.
    std::vector<std::pair<std::string, std::string>> attributes;
    /// A file the encoder may write and read back for formats it can't encode in memory
    /// (multi-layer TIFF), best beside the target so that it never lands in a shared temporary
    /// folder; empty: a private file in the system's temporary folder. The caller removes it.
    std::string scratchFile;
};

/// Image encoding through OpenImageIO, with the format chosen by a file extension.
namespace oxImageEncoder {

/// The format name for an extension ("png" -> "png", "tif" -> "tiff"), "" when unknown.
std::string formatOf(const std::string& extension);

/// True when the format of that extension holds all layers in one file (EXR, TIFF).
bool isMultiLayerFormat(const std::string& extension);

/// Writable extensions, lower case, sorted; pseudo formats (null, term, depth-only) left out.
std::vector<std::string> writableExtensions();

/// Encodes into bytes. False with error set when the format or the data can't be written.
bool encode(const std::string& extension, int width, int height,
            const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
            std::string& bytes, std::string& error);

/// Encodes and writes path atomically: a temporary file in the same folder, renamed when
/// complete. The extension of path chooses the format.
bool writeFile(const std::string& path, int width, int height,
               const std::vector<oxImageLayer>& layers, const oxEncodeSettings& settings,
               std::string& error);

/// A temporary name in the folder of path that keeps its extension.
std::string temporaryName(const std::string& path);

/// Renames a complete temporary file over path; removes it on failure.
bool commitTemporary(const std::string& temporary, const std::string& path, std::string& error);

} // namespace oxImageEncoder
