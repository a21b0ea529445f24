#pragma once

#include <array>
#include <cstddef>

/// The host's naming table of render passes: the name of each pass id, as the image writer
/// uses it in file names ("NAME.PASS.EXT") and as layer names of multi-layer files. The ids
/// are the positions of the active pass list that oxImageRenderWidget holds.
///
/// The list below is the one place that numbers the passes: X(Id, name), in id order. The
/// enumeration, the names and everything that calls a pass by id (the raytracer, the
/// plug-in's pass table) follow from it, so that ids and names can't disagree.
#define OX_IMAGE_PASSES(X)                                                                         \
    X(Beauty, "beauty")                                                                            \
    X(DiffuseIBL, "diffuse_ibl")                                                                   \
    X(DiffuseLight, "diffuse_light")                                                               \
    X(GlossyIBL, "glossy_ibl")                                                                     \
    X(GlossyLight, "glossy_light")                                                                 \
    X(SpecularReflection, "specular_reflection")                                                   \
    X(Translucency, "translucency")                                                                \
    X(Incandescence, "incandescence")                                                              \
    X(DiffuseIndirect, "diffuse_indirect")                                                         \
    X(GlossyIndirect, "glossy_indirect")                                                           \
    X(DiffuseColor, "diffuse_color")                                                               \
    X(GlossyColor, "glossy_color")                                                                 \
    X(SpecularColor, "specular_color")                                                             \
    X(TranslucencyColor, "translucency_color")                                                     \
    X(TransparencyColor, "transparency_color")                                                     \
    X(BackgroundColor, "background_color")                                                         \
    X(DiffuseIBLIllumination, "diffuse_ibl_illumination")                                          \
    X(GlossyIBLIllumination, "glossy_ibl_illumination")                                            \
    X(TranslucencyIBLIllumination, "translucency_ibl_illumination")                                \
    X(DiffuseLightIllumination, "diffuse_light_illumination")                                      \
    X(GlossyLightIllumination, "glossy_light_illumination")                                        \
    X(TranslucencyLightIllumination, "translucency_light_illumination")                            \
    X(DiffuseIndirectIllumination, "diffuse_indirect_illumination")                                \
    X(GlossyIndirectIllumination, "glossy_indirect_illumination")                                  \
    X(SpecularIndirectIllumination, "specular_indirect_illumination")                              \
    X(TranslucencyIndirectIllumination, "translucency_indirect_illumination")                      \
    X(Fog, "fog")                                                                                  \
    X(LensFlare, "lens_flare")                                                                     \
    X(Backplates, "backplates")                                                                    \
    X(Frontplates, "frontplates")                                                                  \
    X(Occlusion, "occlusion")                                                                      \
    X(Albedo, "albedo")                                                                            \
    X(Normal, "normal")                                                                            \
    X(Depth, "depth")                                                                              \
    X(CryptoObject00, "cryptoObject00")                                                            \
    X(CryptoObject01, "cryptoObject01")                                                            \
    X(CryptoObject02, "cryptoObject02")                                                            \
    X(CryptoMaterial00, "cryptoMaterial00")                                                        \
    X(CryptoMaterial01, "cryptoMaterial01")                                                        \
    X(CryptoMaterial02, "cryptoMaterial02")                                                        \
    X(MaterialID, "materialID")                                                                    \
    X(Mask, "mask")                                                                                \
    X(Position, "position")                                                                        \
    X(ViewVector, "view")                                                                          \
    X(CameraNormal, "camera_normal")                                                               \
    X(MotionVector, "motion_vector")                                                               \
    X(GPUDepth, "gpu_depth")

namespace oxImagePasses {

/// The pass ids, numbered by their place in OX_IMAGE_PASSES.
enum Id : unsigned {
#define OX_IMAGE_PASS_ID(id, name) id,
    OX_IMAGE_PASSES(OX_IMAGE_PASS_ID)
#undef OX_IMAGE_PASS_ID
};

#define OX_IMAGE_PASS_ONE(id, name) +1
constexpr size_t count = 0 OX_IMAGE_PASSES(OX_IMAGE_PASS_ONE);
#undef OX_IMAGE_PASS_ONE

/// Pass names in id order.
extern const std::array<const char*, count> names;

/// The name of a pass id, or nullptr for an id outside the table.
const char* name(unsigned id);

/// The Cryptomatte layers: three ranked layers per type, each holding two (id, coverage)
/// pairs in R, G and B, A.
constexpr unsigned cryptoObjectFirst = CryptoObject00;
constexpr unsigned cryptoMaterialFirst = CryptoMaterial00;
constexpr unsigned cryptoLayersPerType = 3;
static_assert(cryptoMaterialFirst == cryptoObjectFirst + cryptoLayersPerType &&
                  CryptoMaterial02 == cryptoMaterialFirst + cryptoLayersPerType - 1,
              "the Cryptomatte layers of a type follow each other");
bool isCryptomatte(unsigned id);

/// True for the passes that hold measurements rather than colours (depth, normals, positions,
/// vectors, ids, masks, occlusion, Cryptomatte): image files store them as they are, never
/// through a display curve.
bool isData(unsigned id);

} // namespace oxImagePasses
