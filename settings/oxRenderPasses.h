#pragma once

#include "oxImagePasses.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

// The render pass vocabulary: every name by which the record, the scene, the preset file, the
// window, the scripts and the file naming know a pass. Everything else iterates these tables.

/// A pass's position in ActivePassList: the host's pass ids, under the plug-in's names
/// (PassBeauty is oxImagePasses::Beauty, and so on for every pass of the host's table).
using PassId = oxImagePasses::Id;
#define OX_PLUGIN_PASS_ID(id, name) constexpr PassId Pass##id = oxImagePasses::id;
OX_IMAGE_PASSES(OX_PLUGIN_PASS_ID)
#undef OX_PLUGIN_PASS_ID

constexpr size_t kPassCount = oxImagePasses::count;

/// Flags by pass id: empty (no override), one true (beauty only) or kPassCount flags.
using ActivePassList = std::vector<bool>;

/// The name of each pass id: the host's own naming table, by which its image writer names
/// files and layers, so that the plug-in and the files it asks for can't disagree.
inline const std::array<const char*, kPassCount>& kPassNames = oxImagePasses::names;

// The settings record's pass flags, one row each, in the record's field order:
//   X(enumName, field, sceneKey, slot, widget, twinWidget, label, scriptAlias, firstId, idCount)
// field is also the preset file column. twinWidget is the check box on the second tab, if
// any. scriptAlias replaces the pass name in the script commands setRenderPasses and
// getRenderPasses. A flag stands for idCount ids from firstId on; the specular light flag
// stands for none (idCount 0): that pass no longer exists, but the flag is still stored.
#define OX_RENDER_PASS_FLAGS(X)                                                                    \
    X(Beauty, beauty_pass, "MovieExport beauty pass", "changedExportBeautyPass", "_beauty_pass",   \
      nullptr, "Beauty", nullptr, PassBeauty, 1)                                                   \
    X(DiffuseIBL, diffuse_ibl_pass, "MovieExport diffuse ibl pass", "changedExportDiffuseIBLPass", \
      "_diffuse_ibl_pass", nullptr, "Diffuse IBL", nullptr, PassDiffuseIBL, 1)                     \
    X(DiffuseLight, diffuse_light_pass, "MovieExport diffuse light pass",                          \
      "changedExportDiffuseLightPass", "_diffuse_light_pass", nullptr, "Diffuse Light", nullptr,   \
      PassDiffuseLight, 1)                                                                         \
    X(DiffuseIndirect, diffuse_indirect_pass, "MovieExport diffuse indirect pass",                 \
      "changedExportDiffuseIndirectPass", "_diffuse_indirect_pass", nullptr, "Diffuse Indirect",   \
      nullptr, PassDiffuseIndirect, 1)                                                             \
    X(GlossyIBL, glossy_ibl_pass, "MovieExport glossy ibl pass", "changedExportGlossyIBLPass",     \
      "_glossy_ibl_pass", nullptr, "Glossy IBL", nullptr, PassGlossyIBL, 1)                        \
    X(GlossyLight, glossy_light_pass, "MovieExport glossy light pass",                             \
      "changedExportGlossyLightPass", "_glossy_light_pass", nullptr, "Glossy Light", nullptr,      \
      PassGlossyLight, 1)                                                                          \
    X(GlossyIndirect, glossy_indirect_pass, "MovieExport glossy indirect pass",                    \
      "changedExportGlossyIndirectPass", "_glossy_indirect_pass", nullptr, "Glossy Indirect",      \
      nullptr, PassGlossyIndirect, 1)                                                              \
    X(SpecularIBL, specular_ibl_pass, "MovieExport specular ibl pass",                             \
      "changedExportSpecularIBLPass", "_specular_ibl_pass", nullptr, "Specular Reflection",        \
      nullptr, PassSpecularReflection, 1)                                                          \
    X(SpecularLight, specular_light_pass, "MovieExport specular light pass",                       \
      "changedExportSpecularLightPass", nullptr, nullptr, nullptr, nullptr, PassBeauty, 0)         \
    X(Translucency, translucency_pass, "MovieExport translucency pass",                            \
      "changedExportTranslucencyPass", "_translucency_pass", nullptr, "Translucency", nullptr,     \
      PassTranslucency, 1)                                                                         \
    X(Incandescence, incandescence_pass, "MovieExport incandescence pass",                         \
      "changedExportIncandescencePass", "_incandescence_pass", "_incandescence_pass_2",            \
      "Incandescence", nullptr, PassIncandescence, 1)                                              \
    X(Albedo, albedo_pass, "MovieExport albedo pass", "changedExportAlbedoPass", "_albedo_pass",   \
      nullptr, "Albedo", nullptr, PassAlbedo, 1)                                                   \
    X(Occlusion, occlusion_pass, "MovieExport occlusion pass", "changedExportOcclusionPass",       \
      "_occlusion_pass", nullptr, "Occlusion", nullptr, PassOcclusion, 1)                          \
    X(Normal, normal_pass, "MovieExport normal pass", "changedExportNormalPass", "_normal_pass",   \
      nullptr, "Normal", nullptr, PassNormal, 1)                                                   \
    X(CameraNormal, camera_normal_pass, "MovieExport camera normal pass",                          \
      "changedExportCameraNormalPass", "_camera_normal_pass", nullptr, "Camera Normal", nullptr,   \
      PassCameraNormal, 1)                                                                         \
    X(Depth, depth_pass, "MovieExport depth pass", "changedExportDepthPass", "_depth_pass",        \
      nullptr, "Depth", nullptr, PassDepth, 1)                                                     \
    X(CryptoObject, crypto_object_pass, "MovieExport crypto object pass",                          \
      "changedExportCryptoObjectPass", "_crypto_object_pass", nullptr, "Cryptomatte Object",       \
      "cryptoObjectMatte", PassCryptoObject00, 3)                                                  \
    X(CryptoMaterial, crypto_material_pass, "MovieExport crypto material pass",                    \
      "changedExportCryptoMaterialPass", "_crypto_material_pass", nullptr, "Cryptomatte Material", \
      "cryptoMaterialMatte", PassCryptoMaterial00, 3)                                              \
    X(MaterialID, material_id_pass, "MovieExport material id pass", "changedExportMaterialIDPass", \
      "_material_id_pass", nullptr, "Material ID", nullptr, PassMaterialID, 1)                     \
    X(Mask, mask_pass, "MovieExport mask pass", "changedExportMaskPass", "_mask_pass", nullptr,    \
      "Mask", nullptr, PassMask, 1)                                                                \
    X(Position, position_pass, "MovieExport position pass", "changedExportPositionPass",           \
      "_position_pass", nullptr, "Position", nullptr, PassPosition, 1)                             \
    X(ViewVector, view_vector_pass, "MovieExport view vector pass", "changedExportViewVectorPass", \
      "_view_vector_pass", nullptr, "View Vector", nullptr, PassViewVector, 1)                     \
    X(DiffuseColor, diffuse_color_pass, "MovieExport diffuse color pass",                          \
      "changedExportDiffuseColorPass", "_diffuse_color_pass", nullptr, "Diffuse Color", nullptr,   \
      PassDiffuseColor, 1)                                                                         \
    X(GlossyColor, glossy_color_pass, "MovieExport glossy color pass",                             \
      "changedExportGlossyColorPass", "_glossy_color_pass", nullptr, "Glossy Color", nullptr,      \
      PassGlossyColor, 1)                                                                          \
    X(SpecularColor, specular_color_pass, "MovieExport specular color pass",                       \
      "changedExportSpecularColorPass", "_specular_color_pass", nullptr, "Specular Color",         \
      nullptr, PassSpecularColor, 1)                                                               \
    X(TranslucencyColor, translucency_color_pass, "MovieExport translucency color pass",           \
      "changedExportTranslucencyColorPass", "_translucency_color_pass", nullptr,                   \
      "Translucency Color", nullptr, PassTranslucencyColor, 1)                                     \
    X(TransparencyColor, transparency_color_pass, "MovieExport transparency color pass",           \
      "changedExportTransparencyColorPass", "_transparency_color_pass",                            \
      "_transparency_color_pass_2", "Transparency Color", nullptr, PassTransparencyColor, 1)       \
    X(BackgroundColor, background_color_pass, "MovieExport background color pass",                 \
      "changedExportBackgroundColorPass", "_background_color_pass", "_background_color_pass_2",    \
      "Background Color", nullptr, PassBackgroundColor, 1)                                         \
    X(DiffuseIBLIllumination, diffuse_ibl_illumination_pass,                                       \
      "MovieExport diffuse ibl illumination pass", "changedExportDiffuseIBLIlluminationPass",      \
      "_diffuse_ibl_illumination_pass", nullptr, "IBL Diffuse", nullptr,                           \
      PassDiffuseIBLIllumination, 1)                                                               \
    X(DiffuseLightIllumination, diffuse_light_illumination_pass,                                   \
      "MovieExport diffuse light illumination pass", "changedExportDiffuseLightIlluminationPass",  \
      "_diffuse_light_illumination_pass", nullptr, "Lights Diffuse", nullptr,                      \
      PassDiffuseLightIllumination, 1)                                                             \
    X(DiffuseIndirectIllumination, diffuse_indirect_illumination_pass,                             \
      "MovieExport diffuse indirect illumination pass",                                            \
      "changedExportDiffuseIndirectIlluminationPass", "_diffuse_indirect_illumination_pass",       \
      nullptr, "Indirect Diffuse", nullptr, PassDiffuseIndirectIllumination, 1)                    \
    X(GlossyIBLIllumination, glossy_ibl_illumination_pass,                                         \
      "MovieExport glossy ibl illumination pass", "changedExportGlossyIBLIlluminationPass",        \
      "_glossy_ibl_illumination_pass", nullptr, "IBL Glossy", nullptr, PassGlossyIBLIllumination,  \
      1)                                                                                           \
    X(GlossyLightIllumination, glossy_light_illumination_pass,                                     \
      "MovieExport glossy light illumination pass", "changedExportGlossyLightIlluminationPass",    \
      "_glossy_light_illumination_pass", nullptr, "Lights Glossy", nullptr,                        \
      PassGlossyLightIllumination, 1)                                                              \
    X(GlossyIndirectIllumination, glossy_indirect_illumination_pass,                               \
      "MovieExport glossy indirect illumination pass",                                             \
      "changedExportGlossyIndirectIlluminationPass", "_glossy_indirect_illumination_pass",         \
      nullptr, "Indirect Glossy", nullptr, PassGlossyIndirectIllumination, 1)                      \
    X(TranslucencyIBLIllumination, translucency_ibl_illumination_pass,                             \
      "MovieExport translucency ibl illumination pass",                                            \
      "changedExportTranslucencyIBLIlluminationPass", "_translucency_ibl_illumination_pass",       \
      nullptr, "IBL Translucency", nullptr, PassTranslucencyIBLIllumination, 1)                    \
    X(TranslucencyLightIllumination, translucency_light_illumination_pass,                         \
      "MovieExport translucency light illumination pass",                                          \
      "changedExportTranslucencyLightIlluminationPass", "_translucency_light_illumination_pass",   \
      nullptr, "Light Translucency", nullptr, PassTranslucencyLightIllumination, 1)                \
    X(TranslucencyIndirectIllumination, translucency_indirect_illumination_pass,                   \
      "MovieExport translucency indirect illumination pass",                                       \
      "changedExportTranslucencyIndirectIlluminationPass",                                         \
      "_translucency_indirect_illumination_pass", nullptr, "Indirect Translucency", nullptr,       \
      PassTranslucencyIndirectIllumination, 1)                                                     \
    X(SpecularReflection, specular_reflection_pass, "MovieExport specular reflection pass",        \
      "changedExportSpecularReflectionPass", "_specular_reflection_pass", nullptr,                 \
      "Indirect Specular", nullptr, PassSpecularIndirectIllumination, 1)                           \
    X(Fog, fog_pass, "MovieExport fog pass", "changedExportFogPass", "_fog_pass", "_fog_pass_2",   \
      "Fog", nullptr, PassFog, 1)                                                                  \
    X(LensFlare, lens_flare_pass, "MovieExport lens flare pass", "changedExportLensFlarePass",     \
      "_lens_flare_pass", "_lens_flare_pass_2", "Lens Flares", nullptr, PassLensFlare, 1)          \
    X(Frontplate, frontplate_pass, "MovieExport frontplate pass", "changedExportFrontplatePass",   \
      "_frontplate_pass", "_frontplate_pass_2", "Frontplates", nullptr, PassFrontplates, 1)        \
    X(Backplate, backplate_pass, "MovieExport backplate pass", "changedExportBackplatePass",       \
      "_backplate_pass", "_backplate_pass_2", "Backplates", nullptr, PassBackplates, 1)

/// The record's pass flags, in the record's field order.
enum class PassFlag : unsigned {
#define OX_PASS_FLAG_ENUM(enumName, ...) enumName,
    OX_RENDER_PASS_FLAGS(OX_PASS_FLAG_ENUM)
#undef OX_PASS_FLAG_ENUM
};

constexpr size_t kPassFlagCount = 42;

/// One row of the pass flag table.
struct oxRenderPassFlagInfo {
    PassFlag flag;
    const char* column;     ///< record field and preset file column
    const char* sceneKey;   ///< key in the scene's project record
    const char* slot;       ///< the window's slot that stores the flag
    const char* widget;     ///< check box object name, or null
    const char* twinWidget; ///< second check box of the same flag, or null
    const char* label;      ///< check box text, or null
    const char* scriptAlias;
    PassId firstId;
    unsigned idCount;

    /// True when the flag selects a pass that the host renders.
    bool hasPassId() const { return idCount > 0; }
    /// The name by which the script commands setRenderPasses/getRenderPasses know the flag.
    /// Null for the specular light flag, which scripts can't name.
    const char* scriptName() const
    {
        return scriptAlias ? scriptAlias : (hasPassId() ? kPassNames[firstId] : nullptr);
    }
};

/// All rows, in the record's field order (index = PassFlag).
extern const std::array<oxRenderPassFlagInfo, kPassFlagCount> kPassFlags;

inline const oxRenderPassFlagInfo& passFlagInfo(PassFlag flag)
{
    return kPassFlags[static_cast<size_t>(flag)];
}

/// The master switch of all pass flags.
struct oxRenderPassMaster {
    static constexpr const char* column = "renderpasses";
    static constexpr const char* sceneKey = "MovieExport renderpasses";
    static constexpr const char* slot = "changedExportRenderpasses";
    static constexpr const char* widget = "_export_renderpasses";
    static constexpr const char* label = "Export Renderpasses";
};

/// The flags in the order of the scene keys (after "MovieExport renderpasses").
extern const std::array<PassFlag, kPassFlagCount> kPassFlagSceneKeyOrder;
/// The flags in the order of the preset file columns (after "renderpasses").
extern const std::array<PassFlag, kPassFlagCount> kPassFlagColumnOrder;
/// The flags whose names getRenderPasses gives, in its order (the specular light flag has
/// no pass and no name there).
extern const std::array<PassFlag, kPassFlagCount - 1> kPassFlagScriptOrder;

/// The flag a script knows by name, or false when no flag has that name.
bool findPassFlagByScriptName(const std::string& name, PassFlag& flag);

/// A group of check boxes in the window's render pass tabs.
struct oxRenderPassGroup {
    const char* tabObjectName;
    const char* tabTitle;
    const char* groupLabel;
    std::vector<PassFlag> flags;
};

/// The check box groups of the two render pass tabs, tab by tab.
extern const std::vector<oxRenderPassGroup> kPassGroups;
