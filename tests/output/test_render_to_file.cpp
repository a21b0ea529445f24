// Render to file: the job's names are exactly its files, and the render state is restored.

#include "oxOutputTestSupport.h"

#include <OpenImageIO/imageio.h>

namespace {

std::vector<std::string> renderNotices;
void hearRenderNotice(oxMessage& message)
{
    const char* sender = "";
    message.get("sender", sender);
    renderNotices.push_back(sender);
}

} // namespace

TEST_F(RenderJobTest, NamesOfAJobAreTheFilesItWrites)
{
    oxRenderSettingsPreset& preset = current();
    preset.renderpasses = true;
    preset.beauty_pass = true;
    preset.depth_pass = true;
    chooseVariantSets({"Paint Red", "Paint Blue"}, {"Rims Sport"});
    // Still images of a track: viewpoints x tuples x passes.
    preset.view = "Turntable";
    auto still = record();
    const QStringList stillNames = collect(still);
    EXPECT_EQ(stillNames.size(), 8 * 2 * 2);
    EXPECT_FALSE(module->renderPresetToFile(still));
    // A sequence of the current view: tuples x passes x frames.
    preset.view.clear();
    preset.filename = dir.file("seq/spin.png");
    preset.renderAnimation = true;
    preset.clip = "Product Spin";
    preset.stopFrame = 4;
    preset.stepFrame = 2;
    auto sequence = record();
    const QStringList sequenceNames = collect(sequence);
    EXPECT_EQ(sequenceNames.size(), 2 * 2 * 3);
    EXPECT_FALSE(module->renderPresetToFile(sequence));

    EXPECT_EQ(filesOnDisk(), cleaned(stillNames + sequenceNames));
    EXPECT_EQ(source.renders, 8 * 2 + 2 * 3);
}

TEST_F(RenderJobTest, RenderAppliesItsStateAndRestoresIt)
{
    oxRenderSettingsPreset& preset = current();
    preset.use_render_region = true;
    preset.region_start_x = 24; // corners in either order
    preset.region_end_x = 8;
    preset.region_end_y = 9;
    preset.premultiply = true;
    preset.renderpasses = true;
    preset.beauty_pass = true;
    preset.normal_pass = true;
    preset.metaDataFlags = FILEOUTPUT_ANIMATION_SETTINGS;
    preset.iccProfileID = 1;
    preset.exrHalf = false;
    preset.multiLayer = true;
    auto frozen = record();
    preset.clip = "Product Spin"; // metadata describe the window, not the frozen record

    oxController::enableSimulation(true);
    bool busy = false, simulating = true, premultiply = false, passOverride = false;
    oxRenderRegion region{};
    source.beforeRender = [&] {
        busy = oxController::isBusy();
        simulating = oxController::isSimulationEnable();
        premultiply = oxRaytracer::getPremultiply();
        passOverride = oxImageRenderWidget::hasActiveRenderPasses();
        region = oxRenderParameter::getRaytracingRenderRegion();
    };
    EXPECT_FALSE(module->renderPresetToFile(frozen));
    EXPECT_TRUE(busy && !simulating && premultiply && passOverride);
    // Pixels count from the top, the region from the bottom.
    EXPECT_EQ(region, (oxRenderRegion{0.25f, 0.5f, 0.75f, 1.0f}));

    EXPECT_FALSE(oxController::isBusy());
    EXPECT_TRUE(oxController::isSimulationEnable());
    oxController::enableSimulation(false);
    EXPECT_FALSE(oxRaytracer::getPremultiply());
    EXPECT_FALSE(oxImageRenderWidget::hasActiveRenderPasses());
    // The earlier region was the whole image: region rendering is off again.
    EXPECT_EQ(oxRenderParameter::getRaytracingRenderRegion(),
              (oxRenderRegion{0.0f, 0.0f, 1.0f, 1.0f}));
    EXPECT_EQ(filesOnDisk(), cleaned({path("car.beauty.png"), path("car.normal.png")}));

    // Metadata flags go back to none; the profile and format switches stay.
    oxImageWriter* writer = module->getImageWriter();
    EXPECT_EQ(writer->getMetaData()->getValue("MovieExport Clip"), "Product Spin");
    EXPECT_EQ(writer->getMetaDataFlags(), 0);
    EXPECT_EQ(writer->getICCProfile(), 1);
    EXPECT_FALSE(writer->getExportExrHalf());
    EXPECT_TRUE(writer->getExportMultiLayer());
}

TEST_F(RenderJobTest, CancelStopsAfterTheRunningExportAndStillRestores)
{
    current().renderAnimation = true;
    current().stopFrame = 1;
    current().stepFrame = 1;
    current().use_render_region = true;
    current().region_end_x = 16;
    current().region_end_y = 18;
    chooseVariantSets({"Paint Red", "Paint Blue", "Paint Silver"}, {});
    oxRenderParameter::setRaytracingRenderRegion({0.1f, 0.1f, 0.9f, 0.9f});

    // Cancelled during the second tuple's first frame: its export ends after that frame.
    source.beforeRender = [&] {
        if (source.renders == 3)
            module->getImageWriter()->cancel();
    };
    EXPECT_TRUE(module->renderPresetToFile(record()));
    EXPECT_EQ(filesOnDisk(),
              cleaned({path("car_Paint Red.0000.png"), path("car_Paint Red.0001.png"),
                       path("car_Paint Blue.0000.png")}));
    EXPECT_FALSE(oxController::isBusy());
    EXPECT_EQ(oxRenderParameter::getRaytracingRenderRegion(),
              (oxRenderRegion{0.1f, 0.1f, 0.9f, 0.9f}));
}

TEST_F(RenderJobTest, RenderButtonRendersThenTellsListeners)
{
    renderNotices.clear();
    oxController::addCB("oxRenderSettings::render", hearRenderNotice);
    current().filename = dir.file("out/car.jpg");
    window()->_render->click();
    oxController::subCB("oxRenderSettings::render", hearRenderNotice);
    EXPECT_EQ(filesOnDisk(), QStringList{path("out/car.jpg")});
    EXPECT_EQ(renderNotices, std::vector<std::string>{"Render"});
}

TEST_F(RenderJobTest, FirstSettingsActivateEachTrackViewpointWithTheFirstTuple)
{
    current().view = "Turntable";
    chooseVariantSets({"Paint Blue", "Paint Silver"}, {"Rims Classic"});
    oxCallTrace::setEnabled(true);
    emit window()->renderQueuePresetApplied();

    std::vector<std::string> viewpoints, sets;
    for (int i = 1; i <= 8; ++i) {
        viewpoints.push_back("Turntable " + std::to_string(i));
        sets.insert(sets.end(), {"Paint Blue,true", "Rims Classic,true"});
    }
    EXPECT_EQ(oxTraced("oxCameraService::activateViewpoint"), viewpoints);
    EXPECT_EQ(oxTraced("oxVariants::selectVariantSet"), sets);
    EXPECT_EQ(source.renders, 0);
}

TEST_F(RenderJobTest, CommandLineJobTakesANamedPresetOfThePresetFile)
{
    // A preset of the preset file that renders at another size than the window's settings;
    // taking it is choosing it in the preset menu, which keeps the window's output name.
    auto preset = std::make_shared<oxRenderSettingsPreset>(*record());
    preset->name = "Thumbnail";
    preset->pixel_width = 12.0f;
    preset->pixel_height = 10.0f;
    // As a preset saved from the window holds them (the test's host starts with none).
    preset->filterWidth = preset->filterHeight = 1.0f;
    window()->getPresets().push_back(preset);
    const std::vector<std::string> expected{current().filename};

    oxMessage listing;
    listing.set("preset", QStringLiteral("Thumbnail"));
    ASSERT_TRUE(oxController::call("oxMovieExport::listOutputFiles", listing));
    std::vector<std::string> files;
    ASSERT_TRUE(listing.get("files", files));
    EXPECT_EQ(files, expected);

    oxMessage render;
    render.set("preset", QStringLiteral("Thumbnail"));
    ASSERT_TRUE(oxController::call("oxMovieExport::renderOutputFiles", render));
    EXPECT_FALSE(render.has("error"));
    auto input = OIIO::ImageInput::open(expected.front());
    ASSERT_TRUE(input);
    EXPECT_EQ(input->spec().width, 12);
    EXPECT_EQ(input->spec().height, 10);
}
