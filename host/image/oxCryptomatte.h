#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Cryptomatte ids and metadata: names hash to 32-bit ids with MurmurHash3_x86_32 (seed 0),
/// ids are stored in float channels by the "uint32_to_float32" conversion, and each type of
/// matte (object, material) carries its name, hash, conversion and manifest as metadata.
namespace oxCryptomatte {

uint32_t murmurHash3(const std::string& text, uint32_t seed = 0);

/// The id as the float stored in an ID channel: the hash's bits, with the exponent moved
/// off 0 and 255 so that the float is never denormal, infinite or NaN.
float hashToFloat(uint32_t hash);
float idOf(const std::string& name);

/// The manifest of a type: a JSON object from each name to its hash as 8 hex digits.
std::string manifest(const std::vector<std::string>& names);

/// The metadata of one type, whose layers are typeName00, typeName01, ...:
/// "cryptomatte/<key>/name", ".../hash", ".../conversion", ".../manifest", where key is
/// the first 7 hex digits of the hash of typeName.
std::vector<std::pair<std::string, std::string>> metadata(const std::string& typeName,
                                                          const std::vector<std::string>& names);

} // namespace oxCryptomatte
