// Unique paths, node lookup and the handle rules on a small hand-built scene.

#include "oxController.h"
#include "oxScene.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"
#include "oxdObject.h"

#include <QtGlobal>

namespace {

std::vector<std::string> criticalLines;

void captureCritical(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtCriticalMsg)
        criticalLines.push_back(text.toStdString());
}

class SceneGraphTest : public oxTest {
protected:
    void SetUp() override
    {
        auto scene = std::make_unique<oxScene>();
        osg::NodePtr root = scene->getRoot();
        car =
            root->addChild(std::make_unique<osg::Node>(std::make_shared<osg::Transform>(), "Car"));
        first = car->addChild(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "Wheel"));
        second =
            car->addChild(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "Wheel"));
        odd =
            car->addChild(std::make_unique<osg::Node>(std::make_shared<osg::Group>(), "a/b\\c[1]"));
        camera = scene->addCamera("Studio");
        viewpoint = scene->addViewpoint("Front", camera);
        track = scene->addCameraTrack("Orbit", camera);
        scene->addViewpoint("Orbit 1", track);
        scene->addViewpoint("Orbit 2", track);
        oxScene::replaceCurrent(std::move(scene));
    }
    void TearDown() override
    {
        oxScene::replaceCurrent(nullptr);
        oxTest::TearDown();
    }

    osg::NodePtr car, first, second, odd, camera, viewpoint, track;
};

} // namespace

TEST_F(SceneGraphTest, UniquePathsRoundTripWithDuplicatesAndEscapes)
{
    osg::NodePtr root = oxScenegraph::getRoot();
    EXPECT_EQ(oxNodeUtils::getUniquePath(first, root), "Car/Wheel");
    EXPECT_EQ(oxNodeUtils::getUniquePath(second, root), "Car/Wheel[2]");
    EXPECT_EQ(oxNodeUtils::getUniquePath(odd, root), "Car/a\\/b\\\\c\\[1]");
    for (osg::NodePtr node : {car, first, second, odd})
        EXPECT_EQ(oxScenegraph::findUniquePath(root, oxNodeUtils::getUniquePath(node, root)), node);
    EXPECT_EQ(oxScenegraph::getUniquePathLeaf("Car/Wheel[2]"), "Wheel");
    EXPECT_EQ(oxScenegraph::getUniquePathLeaf("Car/a\\/b\\\\c\\[1]"), "a/b\\c[1]");

    // Missing, out-of-range and malformed paths find nothing.
    for (const char* path :
         {"", "Car/Wheel[3]", "Car/Tyre", "Car/Wheel[", "Car/Wheel[x]", "Car/Wheel[2]x", "Car\\"})
        EXPECT_EQ(oxScenegraph::findUniquePath(root, path), nullptr) << path;
    // A node outside the root has no path relative to it.
    EXPECT_EQ(oxNodeUtils::getUniquePath(camera, root), "");
}

TEST_F(SceneGraphTest, FindNodesByNameAndCameraPool)
{
    EXPECT_EQ(oxNodeUtils::findNodes(oxScenegraph::getRoot(), "Wheel"),
              (std::vector<osg::NodePtr>{first, second}));
    EXPECT_EQ(oxNodeUtils::findNode(oxScenegraph::getRoot(), "Wheel"), first);
    EXPECT_EQ(oxNodeUtils::findNode(oxScenegraph::getRoot(), "Nothing"), nullptr);

    oxUberCameraPool* pool = oxUberCameraPool::the();
    EXPECT_EQ(pool->getCustomCameras(), std::vector<osg::NodePtr>{camera});
    EXPECT_EQ(pool->getDefaultCameras().size(), 1u);
    EXPECT_EQ(oxUberCameraUtils::getViewpointNodes(camera), std::vector<osg::NodePtr>{viewpoint});
    EXPECT_EQ(oxUberCameraUtils::getCameraTrackNodes(camera), std::vector<osg::NodePtr>{track});
    EXPECT_EQ(oxNodeUtils::getUniquePath(track, pool->getRoot()), "Studio/Orbit");
    // Default camera, custom camera and three viewpoints.
    EXPECT_EQ(pool->getContentPtrs(false, false).size(), 5u);
    EXPECT_EQ(pool->getContentPtrs(false, true).size(), 2u);
}

TEST_F(SceneGraphTest, HandlesFollowTheTypeRules)
{
    const oxdNode general(viewpoint);
    oxdCameraNode asCamera;
    EXPECT_FALSE(general.isTypeOf(oxdCameraNode::staticMetaObject));
    EXPECT_FALSE(asCamera.assign(general));
    EXPECT_FALSE(asCamera.isValid());

    oxdViewpointNode asViewpoint;
    ASSERT_TRUE(general.isTypeOf(oxdViewpointNode::staticMetaObject));
    EXPECT_TRUE(general.isTypeOf(oxdTransformNode::staticMetaObject));
    EXPECT_TRUE(asViewpoint.assign(general));
    EXPECT_TRUE(asViewpoint.isValid());
    EXPECT_EQ(asViewpoint.getName(), "Front");

    // A handle made of an object of another type is invalid, not an error.
    EXPECT_FALSE(oxdCameraTrackNode(camera).isValid());
    const oxdCameraTrackNode orbit(track);
    ASSERT_TRUE(orbit.isValid());
    ASSERT_EQ(orbit.getViewpointCount(), 2);
    EXPECT_EQ(orbit.getViewpoints()[1].getName(), "Orbit 2");

    // Activation changes the camera the renderer uses.
    EXPECT_TRUE(oxdCameraNode(camera).activate());
    EXPECT_EQ(oxScene::current().getActiveCamera(), camera);
    EXPECT_TRUE(orbit.getViewpoints()[0].activate(true, false));
    EXPECT_EQ(oxScene::current().getActiveCamera(), camera);

    // Handles on a destroyed scene are invalid.
    oxScene::replaceCurrent(std::make_unique<oxScene>());
    EXPECT_FALSE(asViewpoint.isValid());
    EXPECT_EQ(asViewpoint.getNode(), nullptr);
    EXPECT_FALSE(asViewpoint.activate(true, false));
}

TEST_F(SceneGraphTest, ObjectManagerTypeIdsAndExternalTypes)
{
    oxdObjectManager* manager = oxdObjectManager::the();
    const uint64_t viewpointType =
        manager->getTypeId(oxdViewpointNode::staticMetaObject.className());
    ASSERT_NE(viewpointType, 0u);
    EXPECT_EQ(manager->getTypeId("NoSuchHandle"), 0u);
    const oxdNode made = manager->create(viewpointType, viewpoint);
    EXPECT_TRUE(made.isTypeOf(oxdViewpointNode::staticMetaObject));
    EXPECT_EQ(manager->create(12345, viewpoint).getObjectId(), 0u);

    criticalLines.clear();
    const QtMessageHandler previous = qInstallMessageHandler(captureCritical);
    const oxdNode fromTrack =
        manager->createFromExternal(oxdObjectManager::getExternalTypeId(track), track);
    const oxdCameraNode wrong = manager->createFromExternal<oxdCameraNode>(
        oxdObjectManager::getExternalTypeId(track), track);
    const oxdNode unknown = manager->createFromExternal(42, track);
    qInstallMessageHandler(previous);

    EXPECT_TRUE(fromTrack.isTypeOf(oxdCameraTrackNode::staticMetaObject));
    EXPECT_EQ(wrong.getObjectId(), 0u);
    EXPECT_EQ(unknown.getObjectId(), 0u);
    const std::string trackType = std::to_string(oxdObjectManager::getExternalTypeId(track));
    EXPECT_EQ(criticalLines,
              (std::vector<std::string>{
                  "oxdObjectManager::createFromExternal: externalType '" + trackType +
                      "' is not a type of 'oxdCameraNode'!",
                  "oxdObjectManager::createFromExternal: externalType 42 is not registered!"}));
}

TEST_F(SceneGraphTest, ContainerIdsAndChangeProtocol)
{
    osg::FieldContainerFactory* factory = osg::FieldContainerFactory::the();
    EXPECT_EQ(factory->getContainer(car->getId()), car);
    const osg::UInt32 id = car->getId();
    oxScene::replaceCurrent(std::make_unique<oxScene>());
    EXPECT_EQ(factory->getContainer(id), nullptr);

    oxController::setModified(false);
    const uint64_t renders = oxController::getRenderUpdateCount();
    std::vector<osg::NodePtr> lights;
    oxLights::getLights(oxOpenSGUtils::getSuperRoot(), lights);
    ASSERT_EQ(lights, std::vector<osg::NodePtr>{oxScenegraph::getHeadlightNode()});
    osg::WinThreadBase::getCurrentChangeList()->clear();
    oxLights::setLightValue(lights[0], 2.5f);
    EXPECT_FLOAT_EQ(oxLights::getLightValue(lights[0]), 2.5f);
    EXPECT_TRUE(oxController::isModified());
    EXPECT_GT(oxController::getRenderUpdateCount(), renders);
    EXPECT_EQ(osg::WinThreadBase::getCurrentChangeList()->getChanged().size(), 1u);

    // With changes ignored, the list still records but the scene isn't touched.
    oxController::setModified(false);
    osg::FieldContainerPtr::_ignore_change = true;
    oxLights::setIsPhysicallyBased(lights[0], true);
    osg::FieldContainerPtr::_ignore_change = false;
    EXPECT_FALSE(oxController::isModified());
    EXPECT_EQ(osg::WinThreadBase::getCurrentChangeList()->getChanged().size(), 2u);
    oxLights::setDefaultLightUnit(lights[0]);
    EXPECT_EQ(lights[0]->getCoreAs<osg::Light>()->unit, osg::Light::Lux);
}
