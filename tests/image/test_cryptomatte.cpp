#include "oxCryptomatte.h"
#include "oxTestSupport.h"

#include <cmath>
#include <cstring>

TEST(Cryptomatte, HashMatchesMurmurHash3Reference)
{
    EXPECT_EQ(oxCryptomatte::murmurHash3(""), 0u);
    EXPECT_EQ(oxCryptomatte::murmurHash3("", 1), 0x514e28b7u);
    EXPECT_EQ(oxCryptomatte::murmurHash3("hello"), 0x248bfa47u);
    EXPECT_EQ(oxCryptomatte::murmurHash3("The quick brown fox jumps over the lazy dog"),
              0x2e4ff723u);
}

TEST(Cryptomatte, IdsAreAlwaysFiniteNormalFloats)
{
    for (uint32_t hash : {0u, 0x00400000u, 0x7f800000u, 0xff812345u, 0x3f800000u}) {
        const float id = oxCryptomatte::hashToFloat(hash);
        EXPECT_TRUE(std::isfinite(id)) << hash;
        EXPECT_TRUE(std::fpclassify(id) == FP_NORMAL) << hash;
    }
    uint32_t bits;
    const float one = oxCryptomatte::hashToFloat(0x3f800000u);
    std::memcpy(&bits, &one, 4);
    EXPECT_EQ(bits, 0x3f800000u); // already normal: kept as it is
}

TEST(Cryptomatte, MetadataKeysAndManifest)
{
    const auto entries = oxCryptomatte::metadata("cryptoObject", {"/root/car"});
    ASSERT_EQ(entries.size(), 4u);
    char key[9];
    std::snprintf(key, sizeof(key), "%08x", oxCryptomatte::murmurHash3("cryptoObject"));
    const std::string prefix = "cryptomatte/" + std::string(key).substr(0, 7) + "/";
    EXPECT_EQ(entries[0], std::make_pair(prefix + "name", std::string("cryptoObject")));
    EXPECT_EQ(entries[1], std::make_pair(prefix + "hash", std::string("MurmurHash3_32")));
    EXPECT_EQ(entries[2], std::make_pair(prefix + "conversion", std::string("uint32_to_float32")));
    char hash[9];
    std::snprintf(hash, sizeof(hash), "%08x", oxCryptomatte::murmurHash3("/root/car"));
    EXPECT_EQ(entries[3].second, "{\"/root/car\":\"" + std::string(hash) + "\"}");
}
