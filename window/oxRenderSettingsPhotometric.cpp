// The scene's photometric mode: the switch of _enable_PBParameters with its question, the
// conversion of the scene's lights and materials between the modes, and the headlight and
// default environment that follow the mode on load and reset.

#include "oxRenderSettings.h"

#include "oxController.h"
#include "oxLog.h"
#include "oxMaterialInterface.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxOSGWidget.h"
#include "oxPreferences.h"
#include "oxRenderParameter.h"
#include "oxSceneGraph.h"
#include "oxSceneServices.h"

#include <QCheckBox>
#include <QMessageBox>

#include <map>
#include <memory>
#include <vector>

namespace {

// Weights of red, green and blue in a colour's luminance, for the conversions.
constexpr float kLuminanceRed = 0.22285376f;
constexpr float kLuminanceGreen = 0.70867276f;
constexpr float kLuminanceBlue = 0.06847366f;
constexpr float kEnableDisplayLuminance = 100.0f;
constexpr float kEnableSim2Luminance = 1.0f;
// Disabling doesn't mirror enabling for the Sim2 value: the standard display maps 2000.
constexpr float kDisableDisplayLuminance = 1.0f;
constexpr float kDisableSim2Luminance = 2000.0f;
constexpr float kPhotometricEnvironmentMapping = 100.0f;
constexpr float kStandardEnvironmentMapping = 1.0f;
constexpr int kPhotometricAttenuation = 2;
constexpr unsigned kPhotometricModeChangedMessage = 0x2000000;
constexpr const char* kUnconvertedWarning =
    "Changing photometric parameters mode without adjusting values.";

// The texts of the question, by direction.
struct PhotometricQuestion {
    const char* title;
    const char* text;
    const char* details;
    const char* checkBox;
    const char* accept;
};

const PhotometricQuestion kEnableQuestion = {
    QT_TRANSLATE_NOOP("oxRenderSettings", "Enable Photometric Parameters"),
    QT_TRANSLATE_NOOP("oxRenderSettings",
                      "Do you really want to enable photometric parameters?\nWarning! This might "
                      "result in irreversible changes in the scene description!"),
    QT_TRANSLATE_NOOP(
        "oxRenderSettings",
        "Choosing \"Enable Photometric Mode\" enables photometric parameters for all the light "
        "sources, materials, environment maps, cameras, the display, and the clamping. All the "
        "light sources in the scene are converted to physically-based light sources with "
        "realistic attenuation and photometrically consistent colors. The incandescence of all "
        "the materials in the scene is converted to have a photometrically consistent color. The "
        "photometric quantities of all the light sources, materials, environment maps, cameras, "
        "the display, and the clamping are adjusted to comply with the photometric parameters "
        "unless the option not to do so is checked."),
    QT_TRANSLATE_NOOP("oxRenderSettings", "Do not convert values to photometric values"),
    QT_TRANSLATE_NOOP("oxRenderSettings", "Enable Photometric Mode"),
};

const PhotometricQuestion kDisableQuestion = {
    QT_TRANSLATE_NOOP("oxRenderSettings", "Disable Photometric Parameters"),
    QT_TRANSLATE_NOOP("oxRenderSettings",
                      "Do you really want to disable photometric parameters?\nWarning! This might "
                      "result in irreversible changes in the scene description!"),
    QT_TRANSLATE_NOOP(
        "oxRenderSettings",
        "Choosing \"Disable Photometric Mode\" disables photometric parameters for all the light "
        "sources, materials, environment maps, cameras, the display, and the clamping. The "
        "photometric quantities of all the light sources, materials, environment maps, cameras, "
        "the display, and the clamping are adjusted to comply with the standard parameters "
        "unless the option not to do so is checked."),
    QT_TRANSLATE_NOOP("oxRenderSettings", "Do not convert values from photometric values"),
    QT_TRANSLATE_NOOP("oxRenderSettings", "Disable Photometric Mode"),
};

QString translated(const char* text)
{
    return QCoreApplication::translate("oxRenderSettings", text);
}

// The scene's lights, one node per light core: a core shared by several nodes is converted
// once, through the last of its nodes. Ordered by the core's id.
std::map<osg::UInt32, osg::NodePtr> lightsByCore()
{
    std::vector<osg::NodePtr> nodes;
    oxLights::getLights(oxOpenSGUtils::getSuperRoot(), nodes);
    std::map<osg::UInt32, osg::NodePtr> byCore;
    for (osg::NodePtr node : nodes) {
        if (node && node->getCore())
            byCore[node->getCore()->getId()] = node;
    }
    return byCore;
}

std::vector<std::shared_ptr<osg::Material>> poolMaterials()
{
    osg::MaterialPool* pool =
        oxMaterials::findMaterialPool(oxOpenSGUtils::getRoot(), true, true, 0);
    return pool ? pool->get() : std::vector<std::shared_ptr<osg::Material>>();
}

void setLuminanceMapping(osg::UEnvironmentMaterialBase* environment, float mapping)
{
    environment->setLuminanceMapping(mapping);
    osg::commitChanges(environment, osg::UEnvironmentMaterialBase::LuminanceMappingFieldMask);
}

void forAuxiliaryBrdfMaterials(void (oxMaterialInterface::*operation)(osg::Material*))
{
    oxMaterialInterface* materials = oxInterfaceFactory::getMaterialInterface();
    for (const std::shared_ptr<osg::Material>& material : oxMaterials::getAuxiliaryMaterials()) {
        if (dynamic_cast<osg::UBRDFMaterialBase*>(material.get()))
            (materials->*operation)(material.get());
    }
}

} // namespace

void oxRenderSettings::applyHeadlightPhotometric(bool on)
{
    oxScenegraph::resetHeadlight();
    const osg::NodePtr headlight = oxScenegraph::getHeadlightNode();
    oxLights::setIsPhysicallyBased(headlight, on);
    // A photometric headlight shines as bright as the display is set to show white.
    oxLights::setLightValue(headlight, on ? oxRenderParameter::getDisplayLuminance() : 1.0f);
    osg::USphereEnvironmentMaterial::resetDefaultEnvironment(on);
}

void oxRenderSettings::switchPhotometricFlag(bool on)
{
    currentPreset.pbParameters = on;
    oxRenderParameter::setPBParameters(on);
    if (oxSceneData* sceneData = oxSceneDataManager::getSceneData(0))
        sceneData->setPhotometric(on ? 1 : 0);
    oxMaterialInterface* materials = oxInterfaceFactory::getMaterialInterface();
    materials->setPhotometricMode(on);
    materials->materialsChanged();
    updateGUI();
}

std::unique_ptr<QMessageBox> oxRenderSettings::createPhotometricQuestion(bool enable)
{
    const PhotometricQuestion& q = enable ? kEnableQuestion : kDisableQuestion;
    auto box = std::make_unique<QMessageBox>(this);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(translated(q.title));
    box->setText(translated(q.text));
    box->setInformativeText(translated(q.details));
    box->setCheckBox(new QCheckBox(translated(q.checkBox), box.get()));
    box->addButton(translated(q.accept), QMessageBox::AcceptRole);
    // Closing the box by its window control counts as Cancel.
    box->setEscapeButton(box->addButton(tr("Cancel"), QMessageBox::RejectRole));
    return box;
}

void oxRenderSettings::changedPBParameters(bool toggled)
{
    // Nothing changes before the answer: the box runs the event loop while it is open.
    const std::unique_ptr<QMessageBox> box = createPhotometricQuestion(toggled);
    box->exec();
    const QAbstractButton* clicked = box->clickedButton();
    if (!clicked ||
        box->buttonRole(const_cast<QAbstractButton*>(clicked)) != QMessageBox::AcceptRole) {
        QSignalBlocker blocker(_enable_PBParameters);
        _enable_PBParameters->setChecked(!toggled);
        return;
    }

    switchPhotometricFlag(toggled);
    if (toggled) {
        currentPreset.displayLuminance = kEnableDisplayLuminance;
        getFromMessage(oxPreferences::getData(), "Display Luminance",
                       currentPreset.displayLuminance);
        currentPreset.sim2LuminanceMapping = kEnableSim2Luminance;
        getFromMessage(oxPreferences::getData(), "Sim2 Display Luminance",
                       currentPreset.sim2LuminanceMapping);
        oxRenderParameter::setDisplayLuminance(currentPreset.displayLuminance);
        oxRenderParameter::setSim2LuminanceMapping(currentPreset.sim2LuminanceMapping);
        oxOSGWidget::setDisplayLuminance(currentPreset.displayLuminance);
        oxOSGWidget::setSim2LuminanceMapping(currentPreset.sim2LuminanceMapping);
    }
    convertSceneToPhotometric(toggled);
    if (!box->checkBox()->isChecked())
        rescaleSceneValues(toggled);
    else
        oxLog::warning("%s", kUnconvertedWarning);
    // Only now: the conversion out of photometric mode divides by the old luminance.
    if (!toggled) {
        oxRenderParameter::setDisplayLuminance(kDisableDisplayLuminance);
        oxRenderParameter::setSim2LuminanceMapping(kDisableSim2Luminance);
        oxOSGWidget::setDisplayLuminance(kDisableDisplayLuminance);
        oxOSGWidget::setSim2LuminanceMapping(kDisableSim2Luminance);
    }
    // The other modules learn of the new mode (the window's own module ignores the id).
    oxMessage changed(kPhotometricModeChangedMessage);
    oxController::broadcastMessage(changed);
    refreshLive();
}

void oxRenderSettings::convertSceneToPhotometric(bool enable)
{
    oxMaterialInterface* materials = oxInterfaceFactory::getMaterialInterface();
    materials->setLuminanceWeights(kLuminanceRed, kLuminanceGreen, kLuminanceBlue);
    for (const std::shared_ptr<osg::Material>& entry : poolMaterials()) {
        const std::shared_ptr<osg::Material> material = oxMaterials::getRealMaterial(entry);
        if (dynamic_cast<osg::UBRDFMaterialBase*>(material.get()))
            materials->convertBrdfMaterial(material.get());
        auto* environment = dynamic_cast<osg::UEnvironmentMaterialBase*>(material.get());
        if (!enable && environment)
            setLuminanceMapping(environment, kStandardEnvironmentMapping);
    }
    for (const auto& [core, node] : lightsByCore()) {
        if (!oxLights::isLight(node))
            continue;
        oxLights::setDefaultLightUnit(node);
        const float value = oxLights::getLightValue(node);
        oxLights::setIsPhysicallyBased(node, enable);
        if (enable) {
            oxLights::setAttenuation(node, kPhotometricAttenuation);
            oxLights::setAreaLightRealisticFalloff(node, 1);
        }
        if (osg::IESProfileAttachment* ies = oxLights::getIESProfileAttachment(node))
            ies->setVersion(osg::IESProfileAttachment::IES_PROFILE_VERSION);
        // The unit and mode changes must not change the number the user set.
        oxLights::setLightValue(node, value);
    }
    if (!enable)
        applyDefaultEnvironmentMapping(false);
    forAuxiliaryBrdfMaterials(&oxMaterialInterface::convertBrdfMaterial);
    applyDefaultEnvironmentMapping(enable);
    forAuxiliaryBrdfMaterials(&oxMaterialInterface::adjustAuxiliaryMaterial);
    // Once more after the adjustment: the two operations don't commute.
    forAuxiliaryBrdfMaterials(&oxMaterialInterface::convertBrdfMaterial);
}

void oxRenderSettings::rescaleSceneValues(bool enable)
{
    // Enabling multiplies by the new display luminance, disabling divides by the old one.
    const float luminance = oxRenderParameter::getDisplayLuminance();
    const float s = enable ? luminance : 1.0f / luminance;
    oxInterfaceFactory::getMaterialInterface()->setPhotometricScale(s);

    const float clamp = oxRenderParameter::getReflectionClampValue() * s;
    oxRenderParameter::setReflectionClampValue(clamp);
    currentPreset.reflectionClampValue = clamp;

    for (const auto& [core, node] : lightsByCore()) {
        if (oxLights::isLight(node))
            oxLights::setLightValue(node, oxLights::getLightValue(node) * s);
    }
    for (const std::shared_ptr<osg::Material>& material : poolMaterials()) {
        if (auto* brdf = dynamic_cast<osg::UBRDFMaterialBase*>(material.get())) {
            osg::Vec4f glow = brdf->getIncandescenceColor();
            glow[3] *= s;
            brdf->setIncandescenceColor(glow);
            osg::commitChanges(brdf, osg::UBRDFMaterialBase::IncandescenceColorFieldMask);
        }
        auto* environment = dynamic_cast<osg::UEnvironmentMaterialBase*>(material.get());
        if (enable && environment)
            setLuminanceMapping(environment, kPhotometricEnvironmentMapping);
    }
    if (oxUberCameraPool* cameras = oxUberCameraPool::the()) {
        for (osg::UberCameraBase* camera : cameras->getContentPtrs(false, false)) {
            osg::TonemappingSettingsBase* tonemapping = camera->getTonemappingSettings();
            if (!tonemapping)
                continue;
            tonemapping->setWhitepoint(tonemapping->getWhitepoint() * s);
            osg::Vec3f glow = tonemapping->getGlowParameter();
            glow[2] *= s;
            tonemapping->setGlowParameter(glow);
            osg::Vec3f glare = tonemapping->getGlareParameter();
            glare[2] *= s;
            tonemapping->setGlareParameter(glare);
            osg::commitChanges(tonemapping,
                               osg::TonemappingSettingsBase::WhitepointFieldMask |
                                   osg::TonemappingSettingsBase::GlowParameterFieldMask |
                                   osg::TonemappingSettingsBase::GlareParameterFieldMask);
        }
    }
    if (enable) {
        applyDefaultEnvironmentMapping(true);
        forAuxiliaryBrdfMaterials(&oxMaterialInterface::adjustAuxiliaryMaterial);
    }
}

void oxRenderSettings::applyDefaultEnvironmentMapping(bool photometric)
{
    if (osg::UEnvironmentMaterialBase* environment = oxUberMaterialUtils::getDefaultOXEnvironment())
        setLuminanceMapping(environment, photometric ? kPhotometricEnvironmentMapping
                                                     : kStandardEnvironmentMapping);
}
