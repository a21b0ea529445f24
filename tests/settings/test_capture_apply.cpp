// Capture of the live settings, merge and push of a record, and the window's named presets.

#include "oxSettingsWindowSupport.h"

#include "oxRenderSettingsApply.h"
#include "oxRaytracingUtilsBase.h"
#include "oxRenderSettingsPresetFile.h"

#include <QFile>
#include <QFileInfo>

#include <sstream>

using P = oxRenderSettingsPreset;

namespace {

using CaptureApplyTest = oxSettingsWindowTest;

P::ApplyPresetMode mode(int bits) { return static_cast<P::ApplyPresetMode>(bits); }

std::vector<std::string> tracedNames()
{
    std::vector<std::string> names;
    for (const oxCallTrace::Call& call : oxCallTrace::calls())
        names.push_back(call.name);
    return names;
}

} // namespace

TEST_F(CaptureApplyTest, PushedRecordComesBackFromCaptureFieldForField)
{
    const P wanted = distinctRecord(1);
    window().applyPreset(wanted, mode(P::KeepSpectral));
    EXPECT_EQ(differingFields(*window().getCurrentRenderSettings(), wanted),
              std::vector<std::string>{});

    // The live values win over the record's copy, which may lag behind.
    oxRenderParameter::setImageSamples(4096);
    oxRaytracingManager::getRaytracingUtils()->setNurbsMaxDepthCurve(31);
    const oxRenderSettingsPresetSPtr captured = window().getCurrentRenderSettings();
    EXPECT_EQ(captured->imageSamples, 4096);
    EXPECT_EQ(captured->nurbsMaxDepthCurve, 31);
    EXPECT_EQ(current().imageSamples, wanted.imageSamples);
    EXPECT_EQ(captured->filename, wanted.filename);
}

TEST_F(CaptureApplyTest, MergeKeepsWhatEachModeNames)
{
    P target = distinctRecord(1);
    target.spectralRendering = true;
    target.pbParameters = false;
    const P source = distinctRecord(2);
    struct Case {
        int mode;
        std::vector<std::string> kept;
    };
    const std::vector<std::string> photometric = {"pbParameters", "displayLuminance",
                                                  "sim2LuminanceMapping", "reflectionClampValue"};
    const std::vector<Case> cases = {
        {P::ApplyAll, {}},
        {P::KeepSpectral, {"spectralRendering"}},
        {P::KeepFilename, {"filename"}},
        {P::KeepClip, {"clip"}},
        {P::KeepVariantSets, {"variantSets"}},
        {P::KeepPhotometric, photometric},
        {kApplyModeByName,
         {"filename", "clip", "variantSets", "pbParameters", "displayLuminance",
          "sim2LuminanceMapping", "reflectionClampValue"}},
    };
    for (const Case& c : cases) {
        P merged = target;
        mergeRenderSettings(merged, source, c.mode);
        // Kept fields are those still equal to the target (the two records differ in all).
        std::vector<std::string> kept;
        const std::vector<std::string> fromSource = differingFields(merged, target);
        for (const std::string& field : differingFields(source, target)) {
            if (std::find(fromSource.begin(), fromSource.end(), field) == fromSource.end())
                kept.push_back(field);
        }
        std::sort(kept.begin(), kept.end());
        std::vector<std::string> expected = c.kept;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(kept, expected) << "mode " << c.mode;
        EXPECT_EQ(merged.name, source.name) << "mode " << c.mode;
    }

    P cleared = target;
    mergeRenderSettings(cleared, source, kApplyModeRenderQueue);
    EXPECT_EQ(cleared.name, "");
    EXPECT_EQ(cleared.filename, source.filename);

    // Scene load and the default settings merge the current record into itself.
    P self = target;
    mergeRenderSettings(self, self, kApplyModeByName | P::ClearName);
    EXPECT_EQ(differingFields(self, target), std::vector<std::string>{"name"});
}

TEST_F(CaptureApplyTest, WithoutPhotometricParametersTheServicesGetStandardDisplayValues)
{
    P record = distinctRecord(1);
    record.pbParameters = false;
    record.displayLuminance = 500.0f;
    record.sim2LuminanceMapping = 7.0f;
    window().applyPreset(record);

    EXPECT_FLOAT_EQ(current().displayLuminance, 500.0f);
    EXPECT_FLOAT_EQ(oxRenderParameter::getDisplayLuminance(), 1.0f);
    EXPECT_FLOAT_EQ(oxRenderParameter::getSim2LuminanceMapping(), 2000.0f);
    EXPECT_FLOAT_EQ(oxOSGWidget::getDisplayLuminance(), 1.0f);
    EXPECT_FLOAT_EQ(oxOSGWidget::getSim2LuminanceMapping(), 2000.0f);
    EXPECT_EQ(oxSceneDataManager::getSceneData(0)->getPhotometric(), 0);
    EXPECT_FALSE(oxInterfaceFactory::getMaterialInterface()->getPhotometricMode());
    EXPECT_FLOAT_EQ(window().getCurrentRenderSettings()->displayLuminance, 1.0f);

    record.pbParameters = true;
    window().applyPreset(record);
    EXPECT_FLOAT_EQ(oxRenderParameter::getDisplayLuminance(), 500.0f);
    EXPECT_FLOAT_EQ(oxOSGWidget::getSim2LuminanceMapping(), 7.0f);
    EXPECT_EQ(oxSceneDataManager::getSceneData(0)->getPhotometric(), 1);
    EXPECT_TRUE(oxInterfaceFactory::getMaterialInterface()->getPhotometricMode());
}

// The host's services depend on the order of the writes: the denoise filter comes first and
// again after the quality and time settings, the pixel filter reaches the raytracer before
// the render parameters, the NURBS settings come between the raytracing and photon settings.
TEST_F(CaptureApplyTest, PushRunsInItsFixedOrderUnderTheLock)
{
    std::vector<bool> lockedDuringPush;
    const int handle = oxRenderParameter::addListener(
        [&](const char*) { lockedDuringPush.push_back(window().isGuiUpdateLocked()); });
    // A new BRDF mode rewrites the materials on the refresh, and each asks for a render of its
    // own; the push itself asks for none.
    P record = distinctRecord(3);
    record.brdfMode = osg::UberMaterial::getBrdfMode();
    const uint64_t renders = oxController::getRenderUpdateCount();
    oxCallTrace::setEnabled(true);
    window().applyPreset(record, mode(P::KeepSpectral));
    oxCallTrace::setEnabled(false);
    oxRenderParameter::removeListener(handle);

    // Short names: "RP:" oxRenderParameter::set, "NURBS:" oxRaytracingUtilsBase::setNurbs.
    const char* order =
        "oxOSGWidget::setMotionBlur oxOSGWidget::enableStillDOF RP:DenoiseFilter "
        "RP:UseRaySplitting RP:DenoiserType RP:DenoiserInput RP:DenoiseAlpha "
        "RP:UseTwoSampleImportanceSampling oxSceneData::setPhotometric RP:DisplayLuminance "
        "RP:Sim2LuminanceMapping oxMaterialInterface::setPhotometricMode "
        "oxOSGWidget::setDisplayLuminance oxOSGWidget::setSim2LuminanceMapping "
        "oxPixelfilterFactory::setPixelFilterType oxPixelfilterFactory::setPixelFilterWidth "
        "oxPixelfilterFactory::setPixelFilterHeight oxOSGWidget::setImageSamples "
        "oxOSGWidget::setSamplesThreshold oxRaytracingUtilsBase::updatePixelFilter "
        "RP:InteractiveReflectionDepth RP:StillFrameReflectionDepth RP:ImageSamples "
        "RP:AdaptiveAAThresholdQuality RP:Clamping RP:ReflectionClampValue "
        "RP:LightOptimizationMode RP:BrdfMode RP:PBParameters RP:UseHighQualityTextureFiltering "
        "RP:StillFrameSupersampling RP:IgnoreOverrideTraceDepth "
        "RP:IgnoreOverrideIlluminationMode RP:IgnoreOverrideReflectionQuality "
        "RP:IgnoreOverrideIBLQuality RP:InteractiveQualityMode RP:InteractiveQuality "
        "RP:StillFrameQualityMode RP:StillFrameQuality RP:EnvironmentInteractiveQuality "
        "RP:EnvironmentStillQuality RP:PhotonDispersionQuality RP:RenderTimeInSeconds "
        "RP:UseRenderTimeLimit RP:UseInfiniteRendering RP:DenoiseFilter NURBS:Mode "
        "NURBS:Epsilon NURBS:NewtonEpsilon NURBS:MinDepthSurface NURBS:MaxDepthSurface "
        "NURBS:ThresholdSurface NURBS:MinDepthCurve NURBS:MaxDepthCurve NURBS:ThresholdCurve "
        "NURBS:UsePreclassification RP:Renderer RP:PhotonMode RP:PhotonTraceDepth "
        "RP:PhotonNoiseReductionSteps RP:PhotonUseAutomaticRadius "
        "RP:InteractiveFinalGatherQuality RP:StillFrameFinalGatherQuality RP:FinalGatherRadius "
        "RP:UseFinalGatherForGlossy RP:IndirectPhotonRadius RP:InteractivePhotonCount "
        "RP:StillFramePhotonCount RP:PhotonMapRefreshMode RP:PhotonMapFreezeMode "
        "RP:PhotonLookupCount RP:RaytracingSampleOffset RP:InteractiveTextureSharpness "
        "RP:StillFrameTextureSharpness RP:LightEvaluationThreshold RP:Illuminant";
    std::vector<std::string> expected;
    std::istringstream words(order);
    for (std::string word; words >> word;) {
        if (word.rfind("RP:", 0) == 0)
            word = "oxRenderParameter::set" + word.substr(3);
        else if (word.rfind("NURBS:", 0) == 0)
            word = "oxRaytracingUtilsBase::setNurbs" + word.substr(6);
        expected.push_back(word);
    }

    const std::vector<std::string> traced = tracedNames();
    ASSERT_GE(traced.size(), expected.size());
    EXPECT_EQ(std::vector<std::string>(traced.begin(), traced.begin() + expected.size()), expected);
    EXPECT_EQ(std::count(lockedDuringPush.begin(), lockedDuringPush.end(), false), 0);
    EXPECT_FALSE(window().isGuiUpdateLocked());
    EXPECT_EQ(oxController::getRenderUpdateCount(), renders);
}

TEST_F(CaptureApplyTest, AnApplyThatFlipsSpectralModeEndsWithTheAppliedRecordUnderOneLock)
{
    std::vector<bool> lockedDuringPush;
    const int handle = oxRenderParameter::addListener(
        [&](const char*) { lockedDuringPush.push_back(window().isGuiUpdateLocked()); });
    P record = distinctRecord(2);
    record.spectralRendering = true;
    // Without the spectral bit the switch runs inside the apply, before the push.
    window().applyPreset(record);
    oxRenderParameter::removeListener(handle);

    EXPECT_TRUE(oxOSGWidget::getSpectralRaytracingMode());
    EXPECT_EQ(differingFields(current(), record), std::vector<std::string>{});
    EXPECT_EQ(differingFields(*window().getCurrentRenderSettings(), record),
              std::vector<std::string>{});
    EXPECT_EQ(std::count(lockedDuringPush.begin(), lockedDuringPush.end(), false), 0);
    EXPECT_FALSE(window().isGuiUpdateLocked());
}

TEST_F(CaptureApplyTest, WithoutRaytracingUtilitiesThePushStopsAtTheViewSamples)
{
    oxRaytracingManager::setRaytracingUtils(nullptr);
    const P record = distinctRecord(1);
    window().applyPreset(record, mode(P::KeepSpectral));
    EXPECT_EQ(oxOSGWidget::getImageSamples(), record.imageSamples);
    EXPECT_EQ(oxPixelfilterFactory::getPixelFilterType(), record.filterType);
    EXPECT_EQ(oxRenderParameter::getDenoiserInput(), record.denoiserInput);
    // Everything after the view's samples waits for a raytracer.
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 256);
    EXPECT_EQ(oxRenderParameter::getIlluminant(), 1);
    EXPECT_EQ(current().imageSamples, record.imageSamples);
}

TEST_F(CaptureApplyTest, ApplyingByNameKeepsTheSceneBoundFieldsAndActivatesThePreset)
{
    P studio = distinctRecord(2);
    studio.name = "Studio";
    studio.pbParameters = false;
    window().getPresets() = {std::make_shared<P>(distinctRecord(4)), std::make_shared<P>(studio)};
    window().getPresets()[0]->name = "Other";
    const P before = distinctRecord(1);
    window().applyPreset(before, mode(P::KeepSpectral));
    current().name = "";

    window().applyPresetByName("Nowhere");
    window().applyPresetByName("");
    EXPECT_EQ(differingFields(current(), before), std::vector<std::string>{"name"});

    window().applyPresetByName("Studio");
    std::vector<std::string> fromScene = differingFields(current(), studio);
    std::sort(fromScene.begin(), fromScene.end());
    EXPECT_EQ(fromScene, (std::vector<std::string>{"clip", "displayLuminance", "filename",
                                                   "pbParameters", "reflectionClampValue",
                                                   "sim2LuminanceMapping", "variantSets"}));
    EXPECT_EQ(current().name, "Studio");
    EXPECT_EQ(current().view, studio.view);
    // The preset in the list is not touched by the merge.
    EXPECT_EQ(differingFields(*window().getPresets()[1], studio), std::vector<std::string>{});
}

TEST_F(CaptureApplyTest, SavingUnderANameReplacesInPlaceAndRenamingRefusesTakenNames)
{
    const std::string file = dir().file("rendersettingstemplates.xml");
    auto named = [](const std::string& name) {
        auto preset = std::make_shared<P>();
        preset->name = name;
        return preset;
    };
    window().getPresets() = {named("a"), named("b"), named("c")};
    const oxRenderSettingsPresetSPtr b = window().getPresets()[1];

    // Nothing is saved without an active preset.
    window().savePreset();
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(file)));

    current().name = "b";
    current().filename = "/tmp/saved.png";
    oxRenderParameter::setImageSamples(99);
    window().savePreset();
    ASSERT_EQ(window().getPresets().size(), 3u);
    EXPECT_EQ(window().getPresets()[1], b);
    EXPECT_EQ(b->filename, "/tmp/saved.png");
    EXPECT_EQ(b->imageSamples, 99);
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(file)));
    EXPECT_EQ(readPresetsFromFile(file).size(), 3u);

    // A taken name is refused without a word and without writing the file.
    QFile::remove(QString::fromStdString(file));
    window().renamePreset("a", "b");
    EXPECT_EQ(window().getPresets()[0]->name, "a");
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(file)));
    // The active preset's name follows a rename.
    window().renamePreset("b", "Beta");
    EXPECT_EQ(b->name, "Beta");
    EXPECT_EQ(current().name, "Beta");
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(file)));

    // Deleting the active preset leaves the settings unnamed; the list closes the gap.
    QFile::remove(QString::fromStdString(file));
    window().deletePresetByName("Beta");
    EXPECT_EQ(current().name, "");
    ASSERT_EQ(window().getPresets().size(), 2u);
    EXPECT_EQ(window().getPresets()[1]->name, "c");
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(file)));
    window().deletePresets({QStringLiteral("a"), QStringLiteral("zzz")});
    ASSERT_EQ(window().getPresets().size(), 1u);
    EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(file)));
}

TEST_F(CaptureApplyTest, SaveAsRefusesTheDefaultNameAndLeavesTheActivePreset)
{
    oxDialogResponder::queueAnswer(QStringLiteral("Default"));
    window().savePresetAs();
    ASSERT_EQ(oxDialogResponder::history().size(), 2);
    EXPECT_EQ(oxDialogResponder::history()[1].title, QStringLiteral("RenderSettings"));
    EXPECT_EQ(oxDialogResponder::history()[1].question,
              QStringLiteral("You can't overwrite the default settings!"));
    EXPECT_TRUE(window().getPresets().empty());

    current().name = "Active";
    oxDialogResponder::queueAnswer(QStringLiteral("Night"));
    window().savePresetAs();
    ASSERT_EQ(window().getPresets().size(), 1u);
    EXPECT_EQ(window().getPresets()[0]->name, "Night");
    EXPECT_EQ(current().name, "Active");
}
