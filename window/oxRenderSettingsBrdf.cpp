// The BRDF mode switch: the render parameter, the material system's class-wide mode and the
// BRDF bits in the render mode of every material move together.

#include "oxRenderSettings.h"

#include "oxBrdfIntegration.h"
#include "oxProgress.h"
#include "oxRenderParameter.h"
#include "oxSceneGraph.h"
#include "oxSceneServices.h"
#include "oxScript.h"

#include <memory>
#include <vector>

bool oxRenderSettings::switchBrdfMode(int mode, bool withProgress)
{
    oxRenderParameter::setBrdfMode(mode);
    // The class-wide mode remembers the last switch; while it agrees the scene isn't walked,
    // so that frequent callers pay one comparison.
    if (osg::UberMaterial::getBrdfMode() == mode)
        return false;
    osg::UberMaterial::setBrdfMode(mode);

    const osg::UInt32 keep =
        ~(osg::UberMaterial::fresnel_respects_glossy_color | osg::UberMaterial::use_ggx_brdf);
    const osg::UInt32 bits = (mode >= 1 ? osg::UberMaterial::fresnel_respects_glossy_color : 0u) |
                             (mode >= 2 ? osg::UberMaterial::use_ggx_brdf : 0u);
    osg::UberMaterial::setRenderingMode((osg::UberMaterial::getRenderingMode() & keep) | bits);
    oxBrdfIntegration::setBrdfType(mode >= 2 ? 2 : 0);

    std::vector<std::shared_ptr<osg::Material>> materials;
    oxMaterials::getAllMaterials(oxScenegraph::getRoot(), materials, 1);
    oxProgress* progress = withProgress ? oxProgress::the() : nullptr;
    if (progress)
        progress->initProgress(tr("Switching BRDF mode"), materials.size(), 2);
    int rewritten = 0;
    for (const std::shared_ptr<osg::Material>& material : materials) {
        auto* uber = dynamic_cast<osg::UberMaterialBase*>(material.get());
        if (!uber)
            continue;
        uber->setRenderMode((uber->getRenderMode() & keep) | bits);
        osg::commitChanges(uber, osg::UberMaterialBase::RenderModeFieldMask);
        if (progress)
            progress->incrementProgress();
        ++rewritten;
    }
    if (progress)
        progress->terminateProgress();
    return rewritten > 0;
}

void oxRenderSettings::changedBrdfMode(int mode)
{
    // A user's change shows progress; a script's runs quietly.
    switchBrdfMode(mode, !oxScript::isRunning());
    updateGUI();
}
