#include "oxImagePasses.h"

namespace oxImagePasses {

const std::array<const char*, count> names = {
    "beauty",
    "diffuse_ibl",
    "diffuse_light",
    "glossy_ibl",
    "glossy_light",
    "specular_reflection",
    "translucency",
    "incandescence",
    "diffuse_indirect",
    "glossy_indirect",
    "diffuse_color",
    "glossy_color",
    "specular_color",
    "translucency_color",
    "transparency_color",
    "background_color",
    "diffuse_ibl_illumination",
    "glossy_ibl_illumination",
    "translucency_ibl_illumination",
    "diffuse_light_illumination",
    "glossy_light_illumination",
    "translucency_light_illumination",
    "diffuse_indirect_illumination",
    "glossy_indirect_illumination",
    "specular_indirect_illumination",
    "translucency_indirect_illumination",
    "fog",
    "lens_flare",
    "backplates",
    "frontplates",
    "occlusion",
    "albedo",
    "normal",
    "depth",
    "cryptoObject00",
    "cryptoObject01",
    "cryptoObject02",
    "cryptoMaterial00",
    "cryptoMaterial01",
    "cryptoMaterial02",
    "materialID",
    "mask",
    "position",
    "view",
    "camera_normal",
    "motion_vector",
    "gpu_depth",
};

const char* name(unsigned id) { return id < count ? names[id] : nullptr; }

bool isCryptomatte(unsigned id)
{
    return id >= cryptoObjectFirst && id < cryptoMaterialFirst + cryptoLayersPerType;
}

} // namespace oxImagePasses
