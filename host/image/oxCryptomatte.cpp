#include "oxCryptomatte.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstring>

namespace oxCryptomatte {

namespace {
uint32_t rotl32(uint32_t x, int r) { return (x << r) | (x >> (32 - r)); }

std::string hex8(uint32_t value)
{
    char text[9];
    std::snprintf(text, sizeof(text), "%08x", value);
    return text;
}
} // namespace

uint32_t murmurHash3(const std::string& text, uint32_t seed)
{
    const auto* data = reinterpret_cast<const uint8_t*>(text.data());
    const size_t length = text.size();
    const size_t blocks = length / 4;
    const uint32_t c1 = 0xcc9e2d51;
    const uint32_t c2 = 0x1b873593;
    uint32_t h1 = seed;

    for (size_t i = 0; i < blocks; ++i) {
        uint32_t k1;
        std::memcpy(&k1, data + i * 4, 4); // the hash is defined on little-endian blocks
        k1 *= c1;
        k1 = rotl32(k1, 15);
        k1 *= c2;
        h1 ^= k1;
        h1 = rotl32(h1, 13);
        h1 = h1 * 5 + 0xe6546b64;
    }

    const uint8_t* tail = data + blocks * 4;
    uint32_t k1 = 0;
    switch (length & 3) {
    case 3:
        k1 ^= uint32_t(tail[2]) << 16;
        [[fallthrough]];
    case 2:
        k1 ^= uint32_t(tail[1]) << 8;
        [[fallthrough]];
    case 1:
        k1 ^= tail[0];
        k1 *= c1;
        k1 = rotl32(k1, 15);
        k1 *= c2;
        h1 ^= k1;
    }

    h1 ^= uint32_t(length);
    h1 ^= h1 >> 16;
    h1 *= 0x85ebca6b;
    h1 ^= h1 >> 13;
    h1 *= 0xc2b2ae35;
    h1 ^= h1 >> 16;
    return h1;
}

float hashToFloat(uint32_t hash)
{
    const uint32_t exponent = (hash >> 23) & 255;
    if (exponent == 0 || exponent == 255)
        hash ^= 1u << 23;
    float value;
    std::memcpy(&value, &hash, sizeof(value));
    return value;
}

float idOf(const std::string& name) { return hashToFloat(murmurHash3(name)); }

std::string manifest(const std::vector<std::string>& names)
{
    nlohmann::json object = nlohmann::json::object();
    for (const std::string& name : names)
        object[name] = hex8(murmurHash3(name));
    return object.dump();
}

std::vector<std::pair<std::string, std::string>> metadata(const std::string& typeName,
                                                          const std::vector<std::string>& names)
{
    const std::string prefix = "cryptomatte/" + hex8(murmurHash3(typeName)).substr(0, 7) + "/";
    return {{prefix + "name", typeName},
            {prefix + "hash", "MurmurHash3_32"},
            {prefix + "conversion", "uint32_to_float32"},
            {prefix + "manifest", manifest(names)}};
}

} // namespace oxCryptomatte
