#include "oxExampleScene.h"

#include "oxFile.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxSceneIO.h"

#include <QByteArray>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>

using nlohmann::json;

namespace {

constexpr float kPi = 3.14159265358979f;
const char kBaseName[] = "showroom";

// Materials of the model, in glTF order: name, base colour, metallic, roughness, and the
// glass and lacquer factors: transmission and clearcoat.
struct MaterialEntry {
    const char* name;
    float color[3];
    float metallic;
    float roughness;
    float transmission;
    float clearcoat;
};
const MaterialEntry kMaterials[] = {
    {"Red Paint", {0.7f, 0.05f, 0.04f}, 0.3f, 0.25f, 0.0f, 1.0f},
    {"Blue Paint", {0.05f, 0.15f, 0.6f}, 0.3f, 0.25f, 0.0f, 1.0f},
    {"Silver Paint", {0.75f, 0.75f, 0.78f}, 0.8f, 0.3f, 0.0f, 1.0f},
    {"Glass", {0.9f, 0.94f, 0.96f}, 0.0f, 0.05f, 1.0f, 0.0f},
    {"Tyre Rubber", {0.03f, 0.03f, 0.03f}, 0.0f, 0.9f, 0.0f, 0.0f},
    {"Chrome", {0.9f, 0.9f, 0.9f}, 1.0f, 0.1f, 0.0f, 0.0f},
    {"Painted Rim", {0.15f, 0.15f, 0.15f}, 0.2f, 0.5f, 0.0f, 0.0f},
    {"Floor", {0.6f, 0.6f, 0.58f}, 0.0f, 0.7f, 0.0f, 0.0f},
};
enum { RedPaint, BluePaint, SilverPaint, Glass, TyreRubber, Chrome, PaintedRim, FloorMaterial };

// The paint variants: glTF variant index = position, with the material it selects.
struct PaintEntry {
    const char* variant;
    const char* set;
    int material;
};
const PaintEntry kPaints[] = {
    {"Red", "Paint Red", RedPaint},
    {"Blue", "Paint Blue", BluePaint},
    {"Silver", "Paint Silver", SilverPaint},
};
// Rim styles: the rim switch's children in order, and the set that chooses each.
const char* const kRimStyles[] = {"Sport", "Classic"};
const char* const kRimSets[] = {"Rims Sport", "Rims Classic"};
const char* const kWheels[] = {"Wheel FL", "Wheel FR", "Wheel RL", "Wheel RR"};

struct Viewpoint {
    const char* name;
    osg::Vec3f eye;
};
const Viewpoint kViewpoints[] = {
    {"Front", {6.5f, 1.4f, 0.0f}},
    {"Side", {0.0f, 1.3f, 6.5f}},
    {"Rear Three-Quarter", {-4.8f, 1.8f, -4.8f}},
    {"Top", {0.01f, 9.0f, 0.0f}},
};
constexpr int kTurntableViewpoints = 8;
constexpr int kSpinFrames = 100;

struct Mesh {
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<uint32_t> indices;

    void quad(const osg::Vec3f& a, const osg::Vec3f& b, const osg::Vec3f& c, const osg::Vec3f& d,
              const osg::Vec3f& n)
    {
        const auto base = uint32_t(positions.size() / 3);
        for (const osg::Vec3f* p : {&a, &b, &c, &d}) {
            positions.insert(positions.end(), p->begin(), p->end());
            normals.insert(normals.end(), n.begin(), n.end());
        }
        indices.insert(indices.end(), {base, base + 1, base + 2, base, base + 2, base + 3});
    }

    static Mesh box(const osg::Vec3f& c, const osg::Vec3f& s)
    {
        Mesh m;
        const float x0 = c[0] - s[0] / 2, x1 = c[0] + s[0] / 2, y0 = c[1] - s[1] / 2,
                    y1 = c[1] + s[1] / 2, z0 = c[2] - s[2] / 2, z1 = c[2] + s[2] / 2;
        m.quad({x1, y0, z0}, {x1, y1, z0}, {x1, y1, z1}, {x1, y0, z1}, {1, 0, 0});
        m.quad({x0, y0, z1}, {x0, y1, z1}, {x0, y1, z0}, {x0, y0, z0}, {-1, 0, 0});
        m.quad({x0, y1, z0}, {x0, y1, z1}, {x1, y1, z1}, {x1, y1, z0}, {0, 1, 0});
        m.quad({x0, y0, z1}, {x0, y0, z0}, {x1, y0, z0}, {x1, y0, z1}, {0, -1, 0});
        m.quad({x1, y0, z1}, {x1, y1, z1}, {x0, y1, z1}, {x0, y0, z1}, {0, 0, 1});
        m.quad({x0, y0, z0}, {x0, y1, z0}, {x1, y1, z0}, {x1, y0, z0}, {0, 0, -1});
        return m;
    }

    // A closed cylinder around the Z axis, centred at the origin.
    static Mesh cylinder(float radius, float width, int segments)
    {
        Mesh m;
        for (int i = 0; i < segments; ++i) {
            const float a0 = 2 * kPi * float(i) / float(segments);
            const float a1 = 2 * kPi * float(i + 1) / float(segments);
            const osg::Vec3f p0{radius * std::cos(a0), radius * std::sin(a0), 0};
            const osg::Vec3f p1{radius * std::cos(a1), radius * std::sin(a1), 0};
            const float h = width / 2;
            const float am = (a0 + a1) / 2;
            m.quad({p0[0], p0[1], -h}, {p1[0], p1[1], -h}, {p1[0], p1[1], h}, {p0[0], p0[1], h},
                   {std::cos(am), std::sin(am), 0});
            m.quad({0, 0, h}, {p0[0], p0[1], h}, {p1[0], p1[1], h}, {0, 0, h}, {0, 0, 1});
            m.quad({0, 0, -h}, {p1[0], p1[1], -h}, {p0[0], p0[1], -h}, {0, 0, -h}, {0, 0, -1});
        }
        return m;
    }
};

// Builds the glTF JSON while appending binary data.
struct Writer {
    json doc;
    std::string bin;

    int view(const void* data, size_t bytes, int target)
    {
        while (bin.size() % 4)
            bin.push_back('\0');
        json v = {{"buffer", 0}, {"byteOffset", bin.size()}, {"byteLength", bytes}};
        if (target)
            v["target"] = target;
        bin.append(static_cast<const char*>(data), bytes);
        doc["bufferViews"].push_back(v);
        return int(doc["bufferViews"].size()) - 1;
    }

    int accessor(const std::vector<float>& values, const char* type, int components, int target,
                 bool bounds)
    {
        json a = {{"bufferView", view(values.data(), values.size() * 4, target)},
                  {"componentType", 5126},
                  {"count", values.size() / size_t(components)},
                  {"type", type}};
        if (bounds) {
            std::vector<float> lo(size_t(components), 1e30f), hi(size_t(components), -1e30f);
            for (size_t i = 0; i < values.size(); ++i) {
                lo[i % size_t(components)] = std::min(lo[i % size_t(components)], values[i]);
                hi[i % size_t(components)] = std::max(hi[i % size_t(components)], values[i]);
            }
            a["min"] = lo;
            a["max"] = hi;
        }
        doc["accessors"].push_back(a);
        return int(doc["accessors"].size()) - 1;
    }

    int mesh(const std::string& name, const Mesh& m, int material, json extensions = json())
    {
        const int positions = accessor(m.positions, "VEC3", 3, 34962, true);
        const int normals = accessor(m.normals, "VEC3", 3, 34962, false);
        json indices = {{"bufferView", view(m.indices.data(), m.indices.size() * 4, 34963)},
                        {"componentType", 5125},
                        {"count", m.indices.size()},
                        {"type", "SCALAR"}};
        doc["accessors"].push_back(indices);
        json primitive = {{"attributes", {{"POSITION", positions}, {"NORMAL", normals}}},
                          {"indices", int(doc["accessors"].size()) - 1},
                          {"material", material},
                          {"mode", 4}};
        if (!extensions.is_null())
            primitive["extensions"] = extensions;
        doc["meshes"].push_back({{"name", name}, {"primitives", json::array({primitive})}});
        return int(doc["meshes"].size()) - 1;
    }

    int node(json n)
    {
        doc["nodes"].push_back(std::move(n));
        return int(doc["nodes"].size()) - 1;
    }
};

osg::Quaternion axisAngle(const osg::Vec3f& axis, float degrees)
{
    const float half = degrees * kPi / 360.0f;
    return {axis[0] * std::sin(half), axis[1] * std::sin(half), axis[2] * std::sin(half),
            std::cos(half)};
}

// Orientation that makes -Z look from eye at target, Y up.
osg::Quaternion lookAt(const osg::Vec3f& eye, const osg::Vec3f& target)
{
    auto normalize = [](osg::Vec3f v) {
        const float l = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        return osg::Vec3f{v[0] / l, v[1] / l, v[2] / l};
    };
    auto cross = [](const osg::Vec3f& a, const osg::Vec3f& b) {
        return osg::Vec3f{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                          a[0] * b[1] - a[1] * b[0]};
    };
    const osg::Vec3f z = normalize({eye[0] - target[0], eye[1] - target[1], eye[2] - target[2]});
    const osg::Vec3f x = normalize(cross({0, 1, 0}, z));
    const osg::Vec3f y = cross(z, x);
    osg::Matrix m = osg::identityMatrix();
    for (size_t i = 0; i < 3; ++i) {
        m[i] = x[i];
        m[4 + i] = y[i];
        m[8 + i] = z[i];
    }
    osg::Vec3f t, s;
    osg::Quaternion q;
    osg::decompose(m, t, q, s);
    return q;
}

void setView(osg::NodePtr node, const osg::Vec3f& eye, float fov)
{
    auto* camera = node->getCoreAs<osg::UberCameraBase>();
    camera->position = eye;
    camera->orientation = lookAt(eye, {0, 0.6f, 0});
    camera->setFov(fov);
}

} // namespace

void oxExampleScene::generateModel(std::string& text, std::string& bin, bool embedBuffer,
                                   const std::string& binName)
{
    Writer w;
    w.doc["asset"] = {{"version", "2.0"}, {"generator", "oxlin example scene"}};
    w.doc["extensionsUsed"] = {"KHR_materials_variants", "KHR_lights_punctual",
                               "KHR_materials_transmission", "KHR_materials_clearcoat"};
    for (const MaterialEntry& m : kMaterials) {
        json material = {{"name", m.name},
                         {"pbrMetallicRoughness",
                          {{"baseColorFactor", {m.color[0], m.color[1], m.color[2], 1.0f}},
                           {"metallicFactor", m.metallic},
                           {"roughnessFactor", m.roughness}}}};
        if (m.transmission > 0.0f)
            material["extensions"]["KHR_materials_transmission"] = {
                {"transmissionFactor", m.transmission}};
        if (m.clearcoat > 0.0f)
            material["extensions"]["KHR_materials_clearcoat"] = {
                {"clearcoatFactor", m.clearcoat}, {"clearcoatRoughnessFactor", 0.03f}};
        w.doc["materials"].push_back(material);
    }
    // Glass and chrome look right only with more bounces and finer reflections than the rest
    // of the scene needs, so they override the scene's raytracing settings.
    const char* const overrides = oxSceneIO::kRaytracingOverridesExtra;
    w.doc["materials"][size_t(Glass)]["extras"][overrides] = {{"TraceDepth", 12},
                                                              {"IlluminationMode", 3}};
    w.doc["materials"][size_t(Chrome)]["extras"][overrides] = {{"ReflectionQuality", 3},
                                                               {"IBLQuality", 3}};
    json variants = json::array();
    json mappings = json::array();
    for (size_t i = 0; i < std::size(kPaints); ++i) {
        variants.push_back({{"name", kPaints[i].variant}});
        mappings.push_back({{"material", kPaints[i].material}, {"variants", {int(i)}}});
    }
    w.doc["extensions"]["KHR_materials_variants"]["variants"] = variants;
    w.doc["extensions"]["KHR_lights_punctual"]["lights"] =
        json::array({{{"name", "Sun"},
                      {"type", "directional"},
                      {"color", {1.0, 0.96, 0.9}},
                      {"intensity", 3.0}}});

    const int body = w.mesh("Body", Mesh::box({0, 0.6f, 0}, {4.2f, 0.6f, 1.8f}), RedPaint,
                            {{"KHR_materials_variants", {{"mappings", mappings}}}});
    const int cabin = w.mesh("Cabin", Mesh::box({-0.2f, 1.17f, 0}, {2.2f, 0.55f, 1.6f}), Glass);
    const int tyre = w.mesh("Tyre", Mesh::cylinder(0.36f, 0.26f, 32), TyreRubber);
    const int rimMeshes[] = {w.mesh("Sport Rim", Mesh::cylinder(0.26f, 0.28f, 24), Chrome),
                             w.mesh("Classic Rim", Mesh::cylinder(0.22f, 0.28f, 12), PaintedRim)};
    const int floor = w.mesh("Floor", Mesh::box({0, -0.01f, 0}, {20, 0.02f, 20}), FloorMaterial);

    json wheels = json::array();
    for (size_t i = 0; i < std::size(kWheels); ++i) {
        json rims = json::array();
        for (size_t r = 0; r < std::size(kRimStyles); ++r)
            rims.push_back(w.node({{"name", kRimStyles[r]}, {"mesh", rimMeshes[r]}}));
        const int tyreNode = w.node({{"name", "Tyre"}, {"mesh", tyre}});
        const int rimSwitch =
            w.node({{"name", "Rims"}, {"children", rims}, {"extras", {{"switch", 0}}}});
        const float x = i < 2 ? 1.35f : -1.35f;
        const float z = i % 2 == 0 ? 0.9f : -0.9f;
        wheels.push_back(w.node({{"name", kWheels[i]},
                                 {"translation", {x, 0.36f, z}},
                                 {"children", {tyreNode, rimSwitch}}}));
    }
    const int wheelGroup = w.node({{"name", "Wheels"}, {"children", wheels}});
    const int product = w.node({{"name", "Product"},
                                {"children",
                                 {w.node({{"name", "Body"}, {"mesh", body}}),
                                  w.node({{"name", "Cabin"}, {"mesh", cabin}}), wheelGroup}}});
    const int floorNode = w.node({{"name", "Floor"}, {"mesh", floor}});
    const osg::Quaternion sun = lookAt({4, 8, 3}, {0, 0, 0});
    const int sunNode = w.node({{"name", "Sun"},
                                {"translation", {4, 8, 3}},
                                {"rotation", {sun[0], sun[1], sun[2], sun[3]}},
                                {"extensions", {{"KHR_lights_punctual", {{"light", 0}}}}}});
    w.doc["scenes"] =
        json::array({{{"name", "Showroom"}, {"nodes", {product, floorNode, sunNode}}}});
    w.doc["scene"] = 0;

    // "Product Spin": a full turn about Y over 100 frames (4 s at 25 frames per second).
    std::vector<float> times, rotations;
    for (int k = 0; k <= 4; ++k) {
        times.push_back(float(k) * float(kSpinFrames) / 4.0f / 25.0f);
        const osg::Quaternion q = axisAngle({0, 1, 0}, 90.0f * float(k));
        rotations.insert(rotations.end(), q.begin(), q.end());
    }
    const int input = w.accessor(times, "SCALAR", 1, 0, true);
    const int output = w.accessor(rotations, "VEC4", 4, 0, false);
    w.doc["animations"] = json::array(
        {{{"name", "Product Spin"},
          {"samplers", {{{"input", input}, {"output", output}, {"interpolation", "LINEAR"}}}},
          {"channels",
           {{{"sampler", 0}, {"target", {{"node", product}, {"path", "rotation"}}}}}}}});

    bin = w.bin;
    std::string uri = binName;
    if (embedBuffer) {
        const QByteArray encoded = QByteArray(bin.data(), int(bin.size())).toBase64();
        uri = "data:application/octet-stream;base64," + encoded.toStdString();
    }
    w.doc["buffers"] = json::array({{{"byteLength", bin.size()}, {"uri", uri}}});
    text = w.doc.dump(1);
}

void oxExampleScene::populate(oxScene& scene)
{
    osg::NodePtr camera = scene.getDefaultCamera();
    setView(camera, kViewpoints[0].eye, 40.0f);
    for (const Viewpoint& viewpoint : kViewpoints)
        setView(scene.addViewpoint(viewpoint.name, camera), viewpoint.eye, 40.0f);
    osg::NodePtr track = scene.addCameraTrack("Turntable", camera);
    for (int i = 0; i < kTurntableViewpoints; ++i) {
        const float angle = 2 * kPi * float(i) / float(kTurntableViewpoints);
        setView(scene.addViewpoint("Turntable " + std::to_string(i + 1), track),
                {6.5f * std::cos(angle), 1.6f, 6.5f * std::sin(angle)}, 40.0f);
    }

    // Replace the sets the import made of the material variants by grouped ones.
    scene.variantSets.clear();
    auto addGroup = [&](const char* name) {
        scene.variantGroups.push_back(std::make_unique<oxVariantSetGroup>());
        scene.variantGroups.back()->name = name;
        return scene.variantGroups.back().get();
    };
    auto addSet = [&](const std::string& name, oxVariantSetGroup* group, const QColor& preview) {
        scene.variantSets.push_back(std::make_unique<oxVariantSet>());
        oxVariantSet* set = scene.variantSets.back().get();
        set->name = name;
        set->group = group;
        set->previewColor = preview;
        if (group)
            group->sets.push_back(set);
        return set;
    };
    oxVariantSetGroup* paint = addGroup("Paint");
    for (size_t i = 0; i < std::size(kPaints); ++i) {
        const float* c = kMaterials[kPaints[i].material].color;
        addSet(kPaints[i].set, paint, QColor::fromRgbF(c[0], c[1], c[2]))
            ->changes.push_back({oxVariantChange::MaterialVariant, std::string(), int(i)});
    }
    oxVariantSetGroup* rims = addGroup("Rims");
    for (size_t r = 0; r < std::size(kRimSets); ++r) {
        oxVariantSet* set =
            addSet(kRimSets[r], rims, r == 0 ? QColor(230, 230, 230) : QColor(40, 40, 40));
        for (const char* wheel : kWheels)
            set->changes.push_back({oxVariantChange::SwitchChoice,
                                    std::string("Product/Wheels/") + wheel + "/Rims", int(r)});
    }
    addSet("Floor Hidden", nullptr, QColor(255, 255, 255))
        ->changes.push_back({oxVariantChange::Visibility, "Floor", 0});
    addSet("Floor Shown", nullptr, QColor(150, 150, 148))
        ->changes.push_back({oxVariantChange::Visibility, "Floor", 1});
    oxVariantSet* hero = addSet("Hero Shot", nullptr, QColor(180, 20, 10));
    hero->changes.push_back({oxVariantChange::MaterialVariant, std::string(), 0});
    hero->viewpoint = "Rear Three-Quarter";

    osg::UEnvironmentMaterialBase* sky = scene.getEnvironment();
    sky->name = "Sky";
    sky->skyColor = {0.4f, 0.6f, 0.95f};
    sky->groundColor = {0.35f, 0.32f, 0.3f};
}

bool oxExampleScene::build(oxScene& scene, std::string& error)
{
    std::string text, bin;
    generateModel(text, bin, true, std::string());
    if (!oxSceneIO::importGltfText(text, scene, error))
        return false;
    populate(scene);
    return true;
}

bool oxExampleScene::writeModel(const std::string& folder, const std::string& baseName,
                                std::string& error)
{
    std::string text, bin;
    generateModel(text, bin, false, baseName + ".bin");
    const std::string base = oxFile::expandFilename(folder) + "/" + baseName;
    return oxFile::writeAtomically(base + ".bin", bin, &error) &&
           oxFile::writeAtomically(base + ".gltf", text, &error);
}

bool oxExampleScene::write(const std::string& folder, std::string& error)
{
    const std::string dir = oxFile::expandFilename(folder);
    if (!oxFile::createPath(dir)) {
        error = "the folder '" + folder + "' can't be created";
        return false;
    }
    if (!writeModel(dir, kBaseName, error))
        return false;
    // The project is made from the model as written, so that it matches it exactly.
    oxScene scene;
    const std::string model = std::string(kBaseName) + ".gltf";
    if (!oxSceneIO::importGltf(dir + "/" + model, scene, error))
        return false;
    populate(scene);
    oxMessage project;
    oxSceneIO::writeProject(scene, model, project);
    const std::string projectFile = dir + "/" + kBaseName + ".oxp";
    if (!oxMessageRW::write(project, projectFile.c_str())) {
        error = "'" + projectFile + "' can't be written";
        return false;
    }
    return true;
}
