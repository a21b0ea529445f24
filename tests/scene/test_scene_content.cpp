// What a renderer and the plug-in's switches read from a scene: the flat snapshot, materials,
// lights, and the content of bare glTF models and of saved projects.

#include "oxExampleScene.h"
#include "oxFile.h"
#include "oxFileIO.h"
#include "oxScene.h"
#include "oxSceneIO.h"
#include "oxSceneServices.h"
#include "oxTestSupport.h"
#include "oxVariants.h"

#include <nlohmann/json.hpp>

#include <map>

namespace {

class SceneContentTest : public oxTest {
protected:
    void TearDown() override
    {
        oxScene::replaceCurrent(nullptr);
        oxFileIO::clearProject();
        oxTest::TearDown();
    }
    oxTempDir dir;
};

std::shared_ptr<osg::Geometry> triangle(const std::shared_ptr<osg::Material>& material)
{
    auto geometry = std::make_shared<osg::Geometry>();
    geometry->positions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    geometry->indices = {0, 1, 2};
    geometry->material = geometry->defaultMaterial = material;
    return geometry;
}

} // namespace

TEST_F(SceneContentTest, SnapshotIsWorldSpaceAndHonoursVisibilityAndSwitches)
{
    oxScene scene;
    auto grey = std::make_shared<osg::UBRDFMaterialBase>();
    auto red = std::make_shared<osg::UBRDFMaterialBase>();
    auto moved = std::make_shared<osg::Transform>();
    moved->translation = {1, 2, 3};
    moved->rotation = {0, 0.70710678f, 0, 0.70710678f}; // 90 degrees about Y
    osg::NodePtr parent = scene.getRoot()->addChild(std::make_unique<osg::Node>(moved, "Moved"));
    osg::NodePtr shown = parent->addChild(std::make_unique<osg::Node>(triangle(grey), "A"));
    parent->addChild(std::make_unique<osg::Node>(triangle(red), "Hidden"))->setActive(false);
    auto choice = std::make_shared<osg::Switch>();
    choice->setChoice(1);
    osg::NodePtr switchNode =
        scene.getRoot()->addChild(std::make_unique<osg::Node>(choice, "Pick"));
    switchNode->addChild(std::make_unique<osg::Node>(triangle(red), "Off"));
    osg::NodePtr on = switchNode->addChild(std::make_unique<osg::Node>(triangle(red), "On"));
    auto lamp = std::make_shared<osg::Light>();
    parent->addChild(std::make_unique<osg::Node>(lamp, "Lamp"));

    oxSceneSnapshot flat;
    scene.snapshot(flat);
    ASSERT_EQ(flat.indices.size(), 6u);
    EXPECT_EQ(flat.triangleObject, (std::vector<uint32_t>{shown->getId(), on->getId()}));
    EXPECT_EQ(flat.triangleMaterial, (std::vector<uint32_t>{0, 1}));
    ASSERT_EQ(flat.materials.size(), 2u);
    EXPECT_EQ(flat.materials[0], grey.get());
    // Vertex (1, 0, 0) turned about Y lands at (0, 0, -1), then moves by (1, 2, 3).
    EXPECT_NEAR(flat.positions[3], 1.0f, 1e-5f);
    EXPECT_NEAR(flat.positions[4], 2.0f, 1e-5f);
    EXPECT_NEAR(flat.positions[5], 2.0f, 1e-5f);
    ASSERT_EQ(flat.lights.size(), 2u); // the lamp, then the headlight
    EXPECT_EQ(flat.lights[0].light, lamp.get());
    EXPECT_EQ(flat.lights[1].light, scene.getHeadlightNode()->getCoreAs<osg::Light>());
    EXPECT_NEAR(flat.lights[0].position[2], 3.0f, 1e-5f);
    EXPECT_NEAR(flat.lights[0].direction[0], -1.0f, 1e-5f);
    EXPECT_EQ(flat.camera, scene.getDefaultCamera()->getCoreAs<osg::UberCameraBase>());
    EXPECT_EQ(flat.environment, scene.getEnvironment());
}

TEST_F(SceneContentTest, MaterialsLightsAndSceneDataForTheSwitches)
{
    oxSceneIO::newScene();
    std::vector<std::shared_ptr<osg::Material>> all;
    oxMaterials::getAllMaterials(oxScenegraph::getRoot(), all, 1);
    EXPECT_EQ(all.size(), 8u);
    osg::MaterialPool* pool =
        oxMaterials::findMaterialPool(oxOpenSGUtils::getRoot(), true, true, 0);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(pool->get().size(), 8u);
    for (const auto& material : pool->get()) {
        auto* brdf = dynamic_cast<osg::UBRDFMaterialBase*>(material.get());
        ASSERT_NE(brdf, nullptr);
        EXPECT_EQ(brdf->getRenderMode(), osg::UberMaterial::getRenderingMode());
        EXPECT_EQ(oxMaterials::getRealMaterial(material), material);
    }
    EXPECT_EQ(osg::UberMaterial::getBrdfMode(), 2);
    ASSERT_EQ(oxMaterials::getAuxiliaryMaterials().size(), 1u);
    EXPECT_NE(dynamic_cast<osg::UBRDFMaterialBase*>(oxMaterials::getAuxiliaryMaterials()[0].get()),
              nullptr);

    std::vector<osg::NodePtr> lights;
    oxLights::getLights(oxOpenSGUtils::getSuperRoot(), lights);
    ASSERT_EQ(lights.size(), 2u);
    EXPECT_EQ(lights[0]->getName(), "Sun");
    oxLights::setIsPhysicallyBased(lights[0], true);
    oxLights::setAttenuation(lights[0], 2);
    oxLights::setAreaLightRealisticFalloff(lights[0], 1);
    oxLights::setDefaultLightUnit(lights[0]);
    EXPECT_EQ(lights[0]->getCoreAs<osg::Light>()->unit, osg::Light::Lux);
    EXPECT_EQ(oxLights::getIESProfileAttachment(lights[0]), nullptr);

    oxLights::setLightValue(oxScenegraph::getHeadlightNode(), 40.0f);
    oxScenegraph::resetHeadlight();
    EXPECT_EQ(oxLights::getLightValue(oxScenegraph::getHeadlightNode()), 1.0f);

    osg::UEnvironmentMaterialBase* sky = oxUberMaterialUtils::getDefaultOXEnvironment();
    ASSERT_NE(sky, nullptr);
    osg::USphereEnvironmentMaterial::resetDefaultEnvironment(true);
    EXPECT_EQ(sky->getLuminanceMapping(), 100.0f);

    ASSERT_NE(oxSceneDataManager::getSceneData(0), nullptr);
    EXPECT_EQ(oxSceneDataManager::getSceneData(1), nullptr);
    EXPECT_EQ(oxSceneDataManager::getSceneData(0)->getPhotometric(), 0);
}

// The example's glass and chrome bring raytracing overrides in their glTF extras; switching one
// off keeps its value, runs the change protocol once, and gives no material an attachment.
TEST_F(SceneContentTest, RaytracingOverridesComeFromTheModelAndSwitchOffOneByOne)
{
    oxSceneIO::newScene();
    std::map<std::string, osg::UberMaterialBase*> materials;
    for (const auto& material : oxScene::current().getMaterialPool()->get())
        materials[material->name] = dynamic_cast<osg::UberMaterialBase*>(material.get());
    osg::UberMaterialBase* glass = materials.at("Glass");
    osg::UberMaterialBase* paint = materials.at("Red Paint");
    ASSERT_NE(glass->getRaytracingAttachment(), nullptr);
    EXPECT_EQ(paint->getRaytracingAttachment(), nullptr);
    EXPECT_TRUE(glass->getOverrideTraceDepth());
    EXPECT_EQ(glass->getRaytracingAttachment()->getTraceDepth(), 12);
    EXPECT_FALSE(glass->getOverrideReflectionQuality());
    EXPECT_TRUE(materials.at("Chrome")->getOverrideReflectionQuality());
    EXPECT_NE(oxSceneIO::describe(oxScene::current())
                  .find("  Glass (overrides IlluminationMode 3, TraceDepth 12)\n  Tyre Rubber\n"),
              std::string::npos);

    osg::ChangeList& changes = *osg::WinThreadBase::getCurrentChangeList();
    changes.clear();
    glass->setOverrideTraceDepth(false);
    glass->setOverrideTraceDepth(false);
    paint->setOverrideTraceDepth(true);
    EXPECT_FALSE(glass->getOverrideTraceDepth());
    EXPECT_TRUE(glass->getOverrideIlluminationMode());
    EXPECT_EQ(glass->getRaytracingAttachment()->getTraceDepth(), 12);
    EXPECT_FALSE(paint->getOverrideTraceDepth());
    EXPECT_EQ(paint->getRaytracingAttachment(), nullptr);
    ASSERT_EQ(changes.getChanged().size(), 1u);
    EXPECT_EQ(changes.getChanged()[0].id, glass->getId());
    EXPECT_EQ(changes.getChanged()[0].mask, osg::UberMaterialBase::RaytracingFieldMask);
}

TEST_F(SceneContentTest, BareGltfGivesViewpointsSetsAndClips)
{
    std::string error;
    ASSERT_TRUE(oxExampleScene::writeModel(dir.path(), "model", error)) << error;
    std::string text;
    ASSERT_TRUE(oxFile::readAll(dir.file("model.gltf"), text));
    nlohmann::json doc = nlohmann::json::parse(text);
    doc["cameras"] = {{{"type", "perspective"}, {"perspective", {{"yfov", 0.5}, {"znear", 0.1}}}}};
    doc["nodes"].push_back({{"name", "Shop Window"}, {"camera", 0}, {"translation", {0, 1, 9}}});
    doc["scenes"][0]["nodes"].push_back(doc["nodes"].size() - 1);
    ASSERT_TRUE(oxFile::writeAtomically(dir.file("model.gltf"), doc.dump()));

    expectLog(oxLog::Info, "Opened '" + dir.file("model.gltf") + "'.");
    ASSERT_TRUE(oxSceneIO::open(dir.file("model.gltf")));
    const std::vector<osg::NodePtr> unassigned = oxUberCameraPool::the()->getUnassignedViewpoints();
    ASSERT_EQ(unassigned.size(), 1u);
    const auto* view = unassigned[0]->getCoreAs<osg::UberCameraBase>();
    EXPECT_EQ(unassigned[0]->getName(), "Shop Window");
    EXPECT_EQ(view->position, (osg::Vec3f{0, 1, 9}));
    EXPECT_NEAR(view->getFov(), 28.6479f, 1e-3f);

    EXPECT_TRUE(oxVariants::getVariantSetGroups().isEmpty());
    const QList<oxdVariantSet> sets = oxVariants::getUngroupedVariantSets();
    ASSERT_EQ(sets.size(), 3);
    EXPECT_EQ(sets[1].getName(), "Blue");
    EXPECT_TRUE(oxVariants::selectVariantSet("Blue", true));
    osg::NodePtr body = oxScenegraph::findUniquePath(oxScenegraph::getRoot(), "Product/Body/Body");
    EXPECT_EQ(body->getCoreAs<osg::Geometry>()->material->name, "Blue Paint");
    EXPECT_NE(oxAnimManager::the()->findClip("Product Spin"), nullptr);
}

TEST_F(SceneContentTest, ProjectsKeepCamerasLightsAndDuplicateNames)
{
    oxSceneIO::newScene();
    oxScene& scene = oxScene::current();
    osg::NodePtr studio = scene.addCamera("Studio");
    scene.addViewpoint("Close", studio)->getCoreAs<osg::UberCameraBase>()->setFov(20.0f);
    scene.addViewpoint("Close", studio)->getCoreAs<osg::UberCameraBase>()->setFov(30.0f);
    scene.addViewpoint("Loose", scene.getCameraRoot());
    studio->getCoreAs<osg::UberCameraBase>()->getTonemappingSettings()->setWhitepoint(250.0f);
    scene.setActiveCamera(studio);
    std::vector<osg::NodePtr> lights;
    oxLights::getLights(scene.getRoot(), lights);
    oxLights::setIsPhysicallyBased(lights[0], true);
    oxLights::setLightValue(lights[0], 80000.0f);
    lights[0]->getCoreAs<osg::Light>()->ies = std::make_shared<osg::IESProfileAttachment>();
    lights[0]->getCoreAs<osg::Light>()->ies->fileName = "profiles/sun.ies";
    scene.sceneData().setPhotometric(1);

    expectLog(oxLog::Info, "Saved '" + dir.file("edited.oxp") + "'.");
    ASSERT_TRUE(oxSceneIO::save(dir.file("edited.oxp")));
    std::unique_ptr<oxScene> loaded = oxSceneIO::load(dir.file("edited.oxp"));
    ASSERT_NE(loaded, nullptr);

    osg::NodePtr root = loaded->getCameraRoot();
    osg::NodePtr second = oxScenegraph::findUniquePath(root, "Studio/Close[2]");
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->getCoreAs<osg::UberCameraBase>()->getFov(), 30.0f);
    EXPECT_EQ(loaded->getActiveCamera()->getName(), "Studio");
    EXPECT_EQ(loaded->getActiveCamera()
                  ->getCoreAs<osg::UberCameraBase>()
                  ->getTonemappingSettings()
                  ->getWhitepoint(),
              250.0f);
    EXPECT_NE(oxScenegraph::findUniquePath(root, "Loose"), nullptr);
    std::vector<osg::NodePtr> loadedLights;
    oxLights::getLights(loaded->getRoot(), loadedLights);
    ASSERT_EQ(loadedLights.size(), 1u);
    const auto* sun = loadedLights[0]->getCoreAs<osg::Light>();
    EXPECT_TRUE(sun->physicallyBased);
    EXPECT_EQ(sun->value, 80000.0f);
    ASSERT_NE(sun->ies, nullptr);
    EXPECT_EQ(sun->ies->fileName, "profiles/sun.ies");
    EXPECT_EQ(loaded->sceneData().getPhotometric(), 1);
    EXPECT_EQ(oxSceneIO::describe(*loaded), oxSceneIO::describe(scene));
}
