#include "oxActiveRenderPasses.h"

#include "oxController.h"
#include "oxImageRenderWidget.h"
#include "oxRenderPasses.h"

#include <QCoreApplication>
#include <QMessageBox>

#include <initializer_list>
#include <utility>

namespace {

using Writes = std::initializer_list<std::pair<PassId, bool>>;

// Copies the host's list, pads it to every pass id, writes the given ids in order and hands
// the list back. With clearToViewVector every id up to the view vector is cleared first.
void writeActivePasses(Writes writes, bool clearToViewVector = false)
{
    ActivePassList passes = oxImageRenderWidget::getActiveRenderPasses();
    if (passes.size() < kPassCount)
        passes.resize(kPassCount, false);
    if (clearToViewVector)
        for (unsigned id = PassBeauty; id <= PassViewVector; ++id)
            passes[id] = false;
    for (const auto& write : writes)
        passes[write.first] = write.second;
    oxImageRenderWidget::setActiveRenderPasses(passes);
}

} // namespace

void setCombinedChannelsRenderPasses(bool beauty, bool diffuseIBL, bool diffuseLight,
                                     bool glossyIBL, bool glossyLight, bool specularReflection,
                                     bool translucency, bool incandescence, bool diffuseIndirect,
                                     bool glossyIndirect, bool transparency, bool background)
{
    writeActivePasses({{PassBeauty, beauty},
                       {PassDiffuseIBL, diffuseIBL},
                       {PassDiffuseLight, diffuseLight},
                       {PassGlossyIBL, glossyIBL},
                       {PassGlossyLight, glossyLight},
                       {PassSpecularReflection, specularReflection},
                       {PassTranslucency, translucency},
                       {PassIncandescence, incandescence},
                       {PassDiffuseIndirect, diffuseIndirect},
                       {PassGlossyIndirect, glossyIndirect},
                       {PassTransparencyColor, transparency},
                       {PassBackgroundColor, background}});
}

void setMaterialChannelsRenderPasses(bool diffuse, bool glossy, bool specular, bool translucency,
                                     bool transparency, bool background, bool incandescence)
{
    writeActivePasses({{PassDiffuseColor, diffuse},
                       {PassGlossyColor, glossy},
                       {PassSpecularColor, specular},
                       {PassTranslucencyColor, translucency},
                       {PassTransparencyColor, transparency},
                       {PassBackgroundColor, background},
                       {PassIncandescence, incandescence}});
}

void setIlluminationChannelsRenderPasses(bool diffuseIBL, bool glossyIBL, bool translucencyIBL,
                                         bool diffuseLight, bool glossyLight,
                                         bool translucencyLight, bool diffuseIndirect,
                                         bool glossyIndirect, bool specularIndirect,
                                         bool translucencyIndirect)
{
    writeActivePasses({{PassDiffuseIBLIllumination, diffuseIBL},
                       {PassGlossyIBLIllumination, glossyIBL},
                       {PassTranslucencyIBLIllumination, translucencyIBL},
                       {PassDiffuseLightIllumination, diffuseLight},
                       {PassGlossyLightIllumination, glossyLight},
                       {PassTranslucencyLightIllumination, translucencyLight},
                       {PassDiffuseIndirectIllumination, diffuseIndirect},
                       {PassGlossyIndirectIllumination, glossyIndirect},
                       {PassSpecularIndirectIllumination, specularIndirect},
                       {PassTranslucencyIndirectIllumination, translucencyIndirect}});
}

void setAuxiliaryChannelsRenderPasses(bool occlusion, bool normal, bool depth, bool materialID,
                                      bool mask, bool position, bool viewVector, bool cryptoObject,
                                      bool cryptoMaterial)
{
    writeActivePasses({{PassOcclusion, occlusion},
                       {PassNormal, normal},
                       {PassDepth, depth},
                       {PassMaterialID, materialID},
                       {PassMask, mask},
                       {PassPosition, position},
                       {PassViewVector, viewVector},
                       {PassCryptoObject00, cryptoObject},
                       {PassCryptoObject01, cryptoObject},
                       {PassCryptoObject02, cryptoObject},
                       {PassCryptoMaterial00, cryptoMaterial},
                       {PassCryptoMaterial01, cryptoMaterial},
                       {PassCryptoMaterial02, cryptoMaterial},
                       {PassAlbedo, false}});
}

void setImageProcessingRenderPasses(bool fog, bool lensFlare, bool backplate, bool frontplate)
{
    writeActivePasses({{PassFog, fog},
                       {PassLensFlare, lensFlare},
                       {PassBackplates, backplate},
                       {PassFrontplates, frontplate}});
}

void setActiveSnapshotMovieRenderPasses(bool beauty, bool diffuseIBL, bool diffuseLight,
                                        bool glossyIBL, bool glossyLight, bool specularReflection,
                                        bool /*specularLight*/, bool translucency,
                                        bool incandescence, bool diffuseIndirect,
                                        bool glossyIndirect, bool occlusion, bool normal,
                                        bool depth, bool materialID, bool fog, bool lensFlare,
                                        bool frontplate, bool backplate, bool cryptoObject,
                                        bool cryptoMaterial)
{
    // Frontplate, backplate and the cryptomatte flags alone don't make a pass selection.
    const bool anySelected = beauty || diffuseIBL || diffuseLight || glossyIBL || glossyLight ||
                             specularReflection || translucency || incandescence ||
                             diffuseIndirect || glossyIndirect || occlusion || normal || depth ||
                             materialID || fog || lensFlare;
    if (!anySelected) {
        oxImageRenderWidget::setActiveRenderPasses(ActivePassList());
        if (!oxController::isNoGUI()) {
            QMessageBox::warning(
                nullptr,
                QCoreApplication::translate("oxMovieExport", "setActiveSnapshotMovieRenderPasses"),
                QCoreApplication::translate(
                    "oxMovieExport",
                    "Warning: No renderpass is active, rendering beauty image only!\n"),
                QMessageBox::Ok, QMessageBox::NoButton);
        }
        return;
    }

    // Every id up to the view vector is written; the ones no argument reaches are cleared.
    writeActivePasses({{PassBeauty, beauty},
                       {PassDiffuseIBL, diffuseIBL},
                       {PassDiffuseLight, diffuseLight},
                       {PassGlossyIBL, glossyIBL},
                       {PassGlossyLight, glossyLight},
                       {PassSpecularReflection, specularReflection},
                       {PassTranslucency, translucency},
                       {PassIncandescence, incandescence},
                       {PassDiffuseIndirect, diffuseIndirect},
                       {PassGlossyIndirect, glossyIndirect},
                       {PassOcclusion, occlusion},
                       {PassNormal, normal},
                       {PassDepth, depth},
                       {PassMaterialID, materialID},
                       {PassFog, fog},
                       {PassLensFlare, lensFlare},
                       {PassFrontplates, frontplate},
                       {PassBackplates, backplate},
                       {PassCryptoObject00, cryptoObject},
                       {PassCryptoObject01, cryptoObject},
                       {PassCryptoObject02, cryptoObject},
                       {PassCryptoMaterial00, cryptoMaterial},
                       {PassCryptoMaterial01, cryptoMaterial},
                       {PassCryptoMaterial02, cryptoMaterial}},
                      true);
}

void resetActiveSnapshotMovieRenderPasses()
{
    oxImageRenderWidget::setActiveRenderPasses(ActivePassList());
}
