#include "oxImagePasses.h"

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

} // namespace oxImagePasses
