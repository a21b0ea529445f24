#pragma once

#include <array>
#include <cstddef>

/// The host's naming table of render passes: the name of each pass id, as the image writer
/// uses it in file names ("NAME.PASS.EXT") and as layer names of multi-layer files. The ids
/// are the positions of the active pass list that oxImageRenderWidget holds.
namespace oxImagePasses {

constexpr size_t count = 47;

/// Pass names in id order.
extern const std::array<const char*, count> names;

/// The name of a pass id, or nullptr for an id outside the table.
const char* name(unsigned id);

/// The Cryptomatte layers: three ranked layers per type, each holding two (id, coverage)
/// pairs in R, G and B, A.
constexpr unsigned cryptoObjectFirst = 34;
constexpr unsigned cryptoMaterialFirst = 37;
constexpr unsigned cryptoLayersPerType = 3;
bool isCryptomatte(unsigned id);

} // namespace oxImagePasses
