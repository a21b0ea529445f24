#include "oxImagePasses.h"

#include <algorithm>
#include <iterator>

namespace oxImagePasses {

const std::array<const char*, count> names = {
#define OX_IMAGE_PASS_NAME(id, name) name,
    OX_IMAGE_PASSES(OX_IMAGE_PASS_NAME)
#undef OX_IMAGE_PASS_NAME
};

const char* name(unsigned id) { return id < count ? names[id] : nullptr; }

bool isCryptomatte(unsigned id)
{
    return id >= cryptoObjectFirst && id < cryptoMaterialFirst + cryptoLayersPerType;
}

namespace {
const Id kDataPasses[] = {Occlusion, Normal,     Depth,        MaterialID,   Mask,
                          Position,  ViewVector, CameraNormal, MotionVector, GPUDepth};
} // namespace

bool isData(unsigned id)
{
    return isCryptomatte(id) ||
           std::find(std::begin(kDataPasses), std::end(kDataPasses), id) != std::end(kDataPasses);
}

} // namespace oxImagePasses
