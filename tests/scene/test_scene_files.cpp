// The example scene through real files: writing, opening, saving, variant sets, animation,
// and the messages the plug-ins get.

#include "oxController.h"
#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxModuleBase.h"
#include "oxScene.h"
#include "oxSceneIO.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"
#include "oxVariants.h"

#include <cmath>

namespace {

// Records the "_loading" flag of every project message it receives.
class ProjectListener : public oxModuleBase {
public:
    ProjectListener() : oxModuleBase("ProjectListener", "Test", 0, nullptr) {}
    int receivedMessage(oxMessage& message) override
    {
        if (message.id() == oxController::MessageProjectReadWrite) {
            bool loading = false;
            oxFileIO::getProject().get("_loading", loading);
            loadingFlags.push_back(loading);
        }
        return 0;
    }
    std::vector<bool> loadingFlags;
};

class SceneFilesTest : public oxTest {
protected:
    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(oxExampleScene::write(dir.path(), error)) << error;
        project = dir.file("showroom.oxp");
    }
    void TearDown() override
    {
        oxScene::replaceCurrent(nullptr);
        oxFileIO::clearProject();
        oxTest::TearDown();
    }
    void openExample()
    {
        expectLog(oxLog::Info, "Opened '" + project + "'.");
        ASSERT_TRUE(oxSceneIO::open(project));
    }
    static osg::NodePtr node(const std::string& path)
    {
        return oxScenegraph::findUniquePath(oxScenegraph::getRoot(), path);
    }

    oxTempDir dir;
    std::string project;
};

const osg::UberCameraBase* activeCamera()
{
    return oxScene::current().getActiveCamera()->getCoreAs<osg::UberCameraBase>();
}

osg::NodePtr viewpointNamed(const std::string& name)
{
    return oxNodeUtils::findNode(oxUberCameraPool::the()->getRoot(), name);
}

} // namespace

TEST_F(SceneFilesTest, ExampleOffersWhatARenderJobNeeds)
{
    for (const char* name : {"showroom.gltf", "showroom.bin", "showroom.oxp"})
        EXPECT_TRUE(oxFile::exists(dir.file(name), true)) << name;
    std::string text;
    ASSERT_TRUE(oxFile::readAll(project, text));
    EXPECT_EQ(text.rfind("<?xml", 0), 0u);

    openExample();
    const oxScene& scene = oxScene::current();
    ASSERT_EQ(scene.variantGroups.size(), 2u);
    EXPECT_EQ(oxVariants::findVariantGroup("Paint").getVariantSets().size(), 3);
    EXPECT_EQ(oxVariants::findVariantGroup("Rims").getVariantSets().size(), 2);
    EXPECT_EQ(oxVariants::getUngroupedVariantSets().size(), 3);
    EXPECT_EQ(oxVariants::findVariantSet("Paint Blue").getGroupName(), "Paint");
    EXPECT_FALSE(oxVariants::findVariantSet("Paint Green").isValid());
    EXPECT_FALSE(oxVariants::getVariantSets()[0].getPreview().isNull());

    osg::NodePtr perspective = scene.getDefaultCamera();
    EXPECT_EQ(oxUberCameraUtils::getViewpointNodes(perspective).size(), 4u);
    const std::vector<osg::NodePtr> tracks = oxUberCameraUtils::getCameraTrackNodes(perspective);
    ASSERT_EQ(tracks.size(), 1u);
    EXPECT_EQ(oxdCameraTrackNode(tracks[0]).getViewpointCount(), 8);

    osg::NodePtr clip = oxAnimManager::the()->findClip("Product Spin");
    int start = -1, stop = -1;
    ASSERT_TRUE(oxAnimManager::the()->getFrameBounds(clip, start, stop));
    EXPECT_EQ(start, 0);
    EXPECT_EQ(stop, 100);

    // The scene's listing, and that the built-in scene is the same, are checked through the
    // program's --list-scene.
    EXPECT_EQ(scene.getTriangleCount(), 1668u);
}

TEST_F(SceneFilesTest, SelectingVariantSetsChangesTheScene)
{
    openExample();
    auto bodyMaterial = [] {
        return node("Product/Body/Body")->getCoreAs<osg::Geometry>()->material->name;
    };
    EXPECT_EQ(bodyMaterial(), "Red Paint");
    oxController::setModified(false);
    EXPECT_TRUE(oxVariants::selectVariantSet("Paint Blue", true));
    EXPECT_EQ(bodyMaterial(), "Blue Paint");
    EXPECT_TRUE(oxController::isModified());

    EXPECT_TRUE(oxVariants::selectVariantSet("Rims Classic", true));
    for (const char* wheel : {"Wheel FL", "Wheel RR"})
        EXPECT_EQ(node(std::string("Product/Wheels/") + wheel + "/Rims")
                      ->getCoreAs<osg::Switch>()
                      ->getChoice(),
                  1);

    oxSceneSnapshot before, after;
    oxScene::current().snapshot(before);
    EXPECT_TRUE(oxVariants::selectVariantSet("Floor Hidden", false));
    oxScene::current().snapshot(after);
    EXPECT_FALSE(node("Floor")->getActive());
    EXPECT_EQ(before.indices.size() - after.indices.size(), 36u);
    EXPECT_EQ(after.triangleMaterial.size() * 3, after.indices.size());
    EXPECT_EQ(after.lights.size(), 2u); // sun and headlight

    // The view of a set moves the camera unless the caller leaves it out.
    const osg::Vec3f start = activeCamera()->position;
    EXPECT_TRUE(oxVariants::selectVariantSet("Hero Shot", true));
    EXPECT_EQ(activeCamera()->position, start);
    EXPECT_TRUE(oxVariants::selectVariantSet("Hero Shot", false));
    EXPECT_EQ(activeCamera()->position,
              viewpointNamed("Rear Three-Quarter")->getCoreAs<osg::UberCameraBase>()->position);

    expectLog(oxLog::Warning, "oxVariants: no variant set 'Paint Green'.");
    EXPECT_FALSE(oxVariants::selectVariantSet("Paint Green", false));
}

TEST_F(SceneFilesTest, ClipsAndCameraTracksAnimate)
{
    openExample();
    oxAnimManager* animation = oxAnimManager::the();
    osg::NodePtr spin = animation->find("Product Spin");
    ASSERT_NE(spin, nullptr);
    oxController::setModified(false);
    const uint64_t renders = oxController::getRenderUpdateCount();
    ASSERT_TRUE(animation->evaluate(spin, 50.0f));
    // Playing an animation changes the picture, not the document.
    EXPECT_FALSE(oxController::isModified());
    EXPECT_GT(oxController::getRenderUpdateCount(), renders);
    const osg::Quaternion half = node("Product")->getCoreAs<osg::Transform>()->rotation;
    EXPECT_NEAR(std::fabs(half[1]), 1.0f, 1e-4f); // half a turn about Y
    EXPECT_NEAR(half[3], 0.0f, 1e-4f);

    osg::NodePtr track = oxNodeUtils::findNode(oxUberCameraPool::the()->getRoot(), "Turntable");
    osg::NodePtr block = animation->getCameraTrackBlock(track);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(animation->getCameraTrackBlock(track), block);
    EXPECT_EQ(animation->find("Turntable"), block);
    int start = -1, stop = -1;
    ASSERT_TRUE(animation->getFrameBounds(block, start, stop));
    EXPECT_EQ(start, 0);
    EXPECT_EQ(stop, 175);
    ASSERT_TRUE(animation->evaluate(block, 25.0f));
    EXPECT_EQ(activeCamera()->position,
              viewpointNamed("Turntable 2")->getCoreAs<osg::UberCameraBase>()->position);
    EXPECT_EQ(animation->getCameraTrackBlock(viewpointNamed("Front")), nullptr);
    EXPECT_FALSE(animation->getFrameBounds(nullptr, start, stop));

    animation->setMotionBlurObjectID(block->getId());
    EXPECT_EQ(animation->getMotionBlurObjectID(), block->getId());
    animation->resetMotionBlurObjectID();
    EXPECT_EQ(animation->getMotionBlurObjectID(), 0u);
}

TEST_F(SceneFilesTest, SaveAndReopenKeepScenePluginRecordAndMessages)
{
    ProjectListener listener;
    openExample();
    const std::string original = oxSceneIO::describe(oxScene::current());

    oxMessage& record = oxFileIO::getProject();
    record.set("RaytracingSettings_imageSamples", 64u, true);
    record.set("RenderSettings_ppi", 300.0f, true);
    record.set("RenderSettings_filename", std::string("c:\\out\\shot.png"), true);
    record.set("RenderSettings_variants", std::vector<std::string>{"Paint Red", "Rims Sport"},
               true);
    // The plug-in's keys of a project record, as text.
    auto pluginKeys = [](const oxMessage& from) {
        oxMessage keys;
        for (const char* key : {"RaytracingSettings_imageSamples", "RenderSettings_ppi",
                                "RenderSettings_filename", "RenderSettings_variants"})
            keys.set(key, from.get(key), true);
        std::string text;
        EXPECT_TRUE(oxMessageRW::write(keys, text));
        return text;
    };
    const std::string keys = pluginKeys(record);
    const std::string saved = dir.file("sub/copy.oxp");
    ASSERT_TRUE(oxFile::createPath(dir.file("sub")));
    expectLog(oxLog::Info, "Saved '" + saved + "'.");
    ASSERT_TRUE(oxSceneIO::save(saved));

    oxFileIO::clearProject();
    expectLog(oxLog::Info, "Opened '" + saved + "'.");
    ASSERT_TRUE(oxSceneIO::open(saved));
    EXPECT_EQ(listener.loadingFlags, (std::vector<bool>{true, false, true}));
    EXPECT_EQ(oxSceneIO::describe(oxScene::current()), original);
    EXPECT_EQ(pluginKeys(oxFileIO::getProject()), keys);
}

TEST_F(SceneFilesTest, SavingTheBuiltInSceneWritesItsModel)
{
    oxSceneIO::newScene();
    const std::string saved = dir.file("fresh/studio.oxp");
    ASSERT_TRUE(oxFile::createPath(dir.file("fresh")));
    expectLog(oxLog::Info, "Saved '" + saved + "'.");
    ASSERT_TRUE(oxSceneIO::save(saved));
    EXPECT_TRUE(oxFile::exists(dir.file("fresh/studio.gltf"), true));
    EXPECT_TRUE(oxFile::exists(dir.file("fresh/studio.bin"), true));
    std::unique_ptr<oxScene> loaded = oxSceneIO::load(saved);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(oxSceneIO::describe(*loaded), oxSceneIO::describe(oxScene::current()));

    // Saving over a project file that can't be read keeps that file beside the new one.
    const std::string damaged = "<oxMessage ox:format=\"1\"><floats n=\"cameraViews\">1 2";
    ASSERT_TRUE(oxFile::writeAtomically(saved, damaged));
    expectLog(oxLog::Warning, "'" + saved + "' couldn't be read; it is kept as '" + saved +
                                  ".bad' and the project is saved in its place.");
    expectLog(oxLog::Info, "Saved '" + saved + "'.");
    ASSERT_TRUE(oxSceneIO::save(saved));
    EXPECT_EQ(oxReadFile(saved + ".bad"), damaged);
    EXPECT_NE(oxSceneIO::load(saved), nullptr);

    expectLog(oxLog::Error, "Can't save '" + dir.file("fresh/studio.txt") +
                                "': projects are saved as .oxp files.");
    EXPECT_FALSE(oxSceneIO::save(dir.file("fresh/studio.txt")));
}
