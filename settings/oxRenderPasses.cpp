#include "oxRenderPasses.h"

#include <algorithm>

const std::array<oxRenderPassFlagInfo, kPassFlagCount> kPassFlags = {{
#define OX_PASS_FLAG_ROW(enumName, field, sceneKey, slot, widget, twin, label, alias, id, count)   \
    {PassFlag::enumName, #field, sceneKey, slot, widget, twin, label, alias, id, count},
    OX_RENDER_PASS_FLAGS(OX_PASS_FLAG_ROW)
#undef OX_PASS_FLAG_ROW
}};

namespace {
using F = PassFlag;
} // namespace

// The scene keys run as the record does, except that mask, position and view vector come
// before the image processing flags, which follow right after them.
const std::array<PassFlag, kPassFlagCount> kPassFlagSceneKeyOrder = {
    F::Beauty,
    F::DiffuseIBL,
    F::DiffuseLight,
    F::DiffuseIndirect,
    F::GlossyIBL,
    F::GlossyLight,
    F::GlossyIndirect,
    F::SpecularIBL,
    F::SpecularLight,
    F::Translucency,
    F::Incandescence,
    F::Albedo,
    F::Occlusion,
    F::Normal,
    F::CameraNormal,
    F::Depth,
    F::CryptoObject,
    F::CryptoMaterial,
    F::MaterialID,
    F::Mask,
    F::Position,
    F::ViewVector,
    F::Fog,
    F::LensFlare,
    F::Frontplate,
    F::Backplate,
    F::DiffuseColor,
    F::GlossyColor,
    F::SpecularColor,
    F::TranslucencyColor,
    F::TransparencyColor,
    F::BackgroundColor,
    F::DiffuseIBLIllumination,
    F::DiffuseLightIllumination,
    F::DiffuseIndirectIllumination,
    F::GlossyIBLIllumination,
    F::GlossyLightIllumination,
    F::GlossyIndirectIllumination,
    F::TranslucencyIBLIllumination,
    F::TranslucencyLightIllumination,
    F::TranslucencyIndirectIllumination,
    F::SpecularReflection,
};

// The preset columns put the four image processing flags before mask, position and view
// vector; otherwise they run as the scene keys do.
const std::array<PassFlag, kPassFlagCount> kPassFlagColumnOrder = [] {
    std::array<PassFlag, kPassFlagCount> order = kPassFlagSceneKeyOrder;
    const auto mask = std::find(order.begin(), order.end(), PassFlag::Mask);
    const auto fog = std::find(order.begin(), order.end(), PassFlag::Fog);
    std::rotate(mask, fog, fog + 4);
    return order;
}();

const std::array<PassFlag, kPassFlagCount - 1> kPassFlagScriptOrder = {
    F::Beauty,
    F::DiffuseIBL,
    F::DiffuseLight,
    F::DiffuseIndirect,
    F::GlossyIBL,
    F::GlossyLight,
    F::GlossyIndirect,
    F::SpecularIBL,
    F::Translucency,
    F::Incandescence,
    F::DiffuseColor,
    F::GlossyColor,
    F::SpecularColor,
    F::TranslucencyColor,
    F::TransparencyColor,
    F::BackgroundColor,
    F::DiffuseIBLIllumination,
    F::GlossyIBLIllumination,
    F::TranslucencyIBLIllumination,
    F::DiffuseLightIllumination,
    F::GlossyLightIllumination,
    F::TranslucencyLightIllumination,
    F::DiffuseIndirectIllumination,
    F::GlossyIndirectIllumination,
    F::SpecularReflection,
    F::TranslucencyIndirectIllumination,
    F::Albedo,
    F::Occlusion,
    F::Normal,
    F::CameraNormal,
    F::Depth,
    F::CryptoObject,
    F::CryptoMaterial,
    F::MaterialID,
    F::Mask,
    F::Position,
    F::ViewVector,
    F::Fog,
    F::LensFlare,
    F::Frontplate,
    F::Backplate,
};

bool findPassFlagByScriptName(const std::string& name, PassFlag& flag)
{
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        const char* scriptName = info.scriptName();
        if (scriptName && name == scriptName) {
            flag = info.flag;
            return true;
        }
    }
    return false;
}

const std::vector<oxRenderPassGroup> kPassGroups = {
    {"combinedChannelsTab",
     "Combined Channels",
     "Color Channels",
     {F::Beauty, F::DiffuseIBL, F::DiffuseLight, F::GlossyIBL, F::GlossyLight, F::SpecularIBL,
      F::Translucency, F::Incandescence, F::DiffuseIndirect, F::GlossyIndirect,
      F::TransparencyColor, F::BackgroundColor}},
    {"combinedChannelsTab",
     "Combined Channels",
     "Image Processing",
     {F::Fog, F::LensFlare, F::Frontplate, F::Backplate}},
    {"combinedChannelsTab",
     "Combined Channels",
     "Auxiliary Channels",
     {F::Occlusion, F::Albedo, F::Normal, F::Depth, F::CryptoObject, F::CryptoMaterial,
      F::MaterialID, F::Mask, F::Position, F::ViewVector, F::CameraNormal}},
    {"separateChannelsTab",
     "Separated Channels",
     "Material Channels",
     {F::Incandescence, F::DiffuseColor, F::GlossyColor, F::SpecularColor, F::TranslucencyColor,
      F::TransparencyColor, F::BackgroundColor}},
    {"separateChannelsTab",
     "Separated Channels",
     "Illumination Channels",
     {F::DiffuseIBLIllumination, F::GlossyIBLIllumination, F::TranslucencyIBLIllumination,
      F::DiffuseLightIllumination, F::GlossyLightIllumination, F::TranslucencyLightIllumination,
      F::DiffuseIndirectIllumination, F::GlossyIndirectIllumination, F::SpecularReflection,
      F::TranslucencyIndirectIllumination}},
    {"separateChannelsTab",
     "Separated Channels",
     "Image Processing",
     {F::Fog, F::LensFlare, F::Frontplate, F::Backplate}},
};
