// glTF 2.0 import: nodes, triangle meshes, materials with KHR_materials_variants, lights of
// KHR_lights_punctual, cameras (as viewpoints) and animations (as clips).

#include "oxSceneIO.h"

#include "oxFile.h"
#include "oxInputLimits.h"
#include "oxSceneServices.h"
#include "oxSceneValues.h"

#include <tiny_gltf.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr float kPi = 3.14159265358979f;

// Image data is never needed by this host; skipping it keeps loads fast and safe.
bool skipImage(tinygltf::Image*, const int, std::string*, std::string*, int, int,
               const unsigned char*, int, void*)
{
    return true;
}

// A member of a JSON object, or a null value (tinygltf's own Get asserts on non-objects).
const tinygltf::Value& member(const tinygltf::Value& value, const char* key)
{
    static const tinygltf::Value null;
    return value.Has(key) ? value.Get(key) : null;
}

// A whole number of a JSON value; -1 for anything else, and for numbers no int can hold
// (converting those would be undefined).
int wholeNumber(const tinygltf::Value& value)
{
    if (value.IsInt())
        return value.Get<int>();
    if (!value.IsReal())
        return -1;
    const double number = value.Get<double>();
    return number >= -2147483648.0 && number <= 2147483647.0 ? int(number) : -1;
}

struct Importer {
    const tinygltf::Model& model;
    oxScene& scene;
    std::string& error;
    std::vector<std::shared_ptr<osg::Material>> materials;
    std::shared_ptr<osg::Material> fallbackMaterial;
    std::vector<std::vector<std::shared_ptr<osg::Geometry>>> meshes;
    std::vector<osg::NodePtr> nodes; // glTF node index -> our node

    bool fail(const std::string& problem)
    {
        error = problem;
        return false;
    }

    // The bytes of an accessor, checked against its view and buffer.
    bool accessorData(int index, int type, std::vector<int> componentTypes, const char* what,
                      const unsigned char*& data, size_t& stride, size_t& count, int& componentType)
    {
        if (index < 0 || size_t(index) >= model.accessors.size())
            return fail(std::string(what) + " refers to a missing accessor");
        const tinygltf::Accessor& accessor = model.accessors[size_t(index)];
        if (accessor.sparse.isSparse)
            return fail(std::string(what) + " uses a sparse accessor, which isn't supported");
        if (accessor.type != type)
            return fail(std::string(what) + " has an accessor of the wrong type");
        bool known = false;
        for (int c : componentTypes)
            known = known || c == accessor.componentType;
        if (!known)
            return fail(std::string(what) + " has an accessor of an unsupported component type");
        if (accessor.bufferView < 0 || size_t(accessor.bufferView) >= model.bufferViews.size())
            return fail(std::string(what) + " has an accessor without valid buffer view");
        const tinygltf::BufferView& view = model.bufferViews[size_t(accessor.bufferView)];
        if (view.buffer < 0 || size_t(view.buffer) >= model.buffers.size())
            return fail(std::string(what) + " has a buffer view without valid buffer");
        const tinygltf::Buffer& buffer = model.buffers[size_t(view.buffer)];
        const int componentSize =
            tinygltf::GetComponentSizeInBytes(uint32_t(accessor.componentType));
        const int components = tinygltf::GetNumComponentsInType(uint32_t(accessor.type));
        const size_t elementSize = size_t(componentSize) * size_t(components);
        stride = view.byteStride ? view.byteStride : elementSize;
        count = accessor.count;
        // Offsets, stride and count come from the file as 64-bit numbers: every step of the
        // bounds arithmetic is checked, so that no sum wraps around into the buffer.
        size_t start = 0, end = 0, viewEnd = 0;
        bool inside = componentSize > 0 && components > 0 && stride >= elementSize &&
                      !__builtin_add_overflow(view.byteOffset, accessor.byteOffset, &start) &&
                      !__builtin_add_overflow(view.byteOffset, view.byteLength, &viewEnd);
        if (inside && count) {
            inside = !__builtin_mul_overflow(stride, count - 1, &end) &&
                     !__builtin_add_overflow(end, elementSize, &end) &&
                     !__builtin_add_overflow(end, start, &end);
        } else {
            end = start;
        }
        if (!inside || end > viewEnd || end > buffer.data.size())
            return fail(std::string(what) + " reads past the end of its buffer (truncated data?)");
        data = buffer.data.data() + start;
        componentType = accessor.componentType;
        return true;
    }

    bool readFloats(int index, int type, const char* what, std::vector<float>& out)
    {
        const unsigned char* data = nullptr;
        size_t stride = 0, count = 0;
        int componentType = 0;
        if (!accessorData(index, type, {TINYGLTF_COMPONENT_TYPE_FLOAT}, what, data, stride, count,
                          componentType))
            return false;
        const size_t components = size_t(tinygltf::GetNumComponentsInType(uint32_t(type)));
        out.resize(count * components);
        if (stride == components * sizeof(float)) {
            if (count)
                std::memcpy(out.data(), data, out.size() * sizeof(float));
        } else {
            for (size_t i = 0; i < count; ++i)
                std::memcpy(&out[i * components], data + i * stride, components * sizeof(float));
        }
        for (float v : out)
            if (!std::isfinite(v))
                return fail(std::string(what) + " holds a value that is not a finite number");
        return true;
    }

    bool readIndices(int index, size_t vertexCount, std::vector<uint32_t>& out)
    {
        const unsigned char* data = nullptr;
        size_t stride = 0, count = 0;
        int type = 0;
        if (!accessorData(index, TINYGLTF_TYPE_SCALAR,
                          {TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE,
                           TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT,
                           TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT},
                          "indices", data, stride, count, type))
            return false;
        out.resize(count);
        for (size_t i = 0; i < count; ++i) {
            const unsigned char* p = data + i * stride;
            uint32_t v = 0;
            if (type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE) {
                v = *p;
            } else if (type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT) {
                uint16_t s;
                std::memcpy(&s, p, 2);
                v = s;
            } else {
                std::memcpy(&v, p, 4);
            }
            if (v >= vertexCount)
                return fail("an index refers to a vertex that doesn't exist");
            out[i] = v;
        }
        return true;
    }

    std::shared_ptr<osg::Material> material(int index)
    {
        if (index >= 0 && size_t(index) < materials.size())
            return materials[size_t(index)];
        if (!fallbackMaterial) {
            auto fallback = std::make_shared<osg::UBRDFMaterialBase>();
            fallback->name = "Default";
            scene.getMaterialPool()->add(fallback);
            fallbackMaterial = fallback;
        }
        return fallbackMaterial;
    }

    // Each number under the extras' overrides switches that override on with its value.
    static void importRaytracingOverrides(const tinygltf::Material& source,
                                          osg::UberMaterialBase& material)
    {
        const tinygltf::Value& overrides =
            member(source.extras, oxSceneIO::kRaytracingOverridesExtra);
        if (!overrides.IsObject())
            return;
        auto attachment = std::make_shared<osg::RaytracingAttachment>();
#define OX_IMPORT_OVERRIDE(Setting, start)                                                         \
    if (member(overrides, #Setting).IsNumber()) {                                                  \
        attachment->setOverride##Setting(true);                                                    \
        attachment->set##Setting(wholeNumber(member(overrides, #Setting)));                        \
    }
        OX_RAYTRACING_OVERRIDES(OX_IMPORT_OVERRIDE)
#undef OX_IMPORT_OVERRIDE
        material.setRaytracingAttachment(std::move(attachment));
    }

    // The glTF extensions for glass and lacquer: transmission, index of refraction and
    // clearcoat factors (their textures are not read).
    static void importExtensionFactors(const tinygltf::Material& source,
                                       osg::UBRDFMaterialBase& material)
    {
        auto factor = [&](const char* extension, const char* key, float& target) {
            const auto found = source.extensions.find(extension);
            if (found != source.extensions.end() && found->second.Has(key) &&
                found->second.Get(key).IsNumber())
                target = float(found->second.Get(key).GetNumberAsDouble());
        };
        factor("KHR_materials_transmission", "transmissionFactor", material.transmission);
        factor("KHR_materials_ior", "ior", material.ior);
        factor("KHR_materials_clearcoat", "clearcoatFactor", material.clearcoat);
        factor("KHR_materials_clearcoat", "clearcoatRoughnessFactor", material.clearcoatRoughness);
    }

    bool importMaterials()
    {
        for (size_t i = 0; i < model.materials.size(); ++i) {
            const tinygltf::Material& source = model.materials[i];
            auto material = std::make_shared<osg::UBRDFMaterialBase>();
            material->name = source.name.empty() ? "Material " + std::to_string(i) : source.name;
            const auto& pbr = source.pbrMetallicRoughness;
            for (size_t c = 0; c < 3 && c < pbr.baseColorFactor.size(); ++c)
                material->diffuseColor[c] = float(pbr.baseColorFactor[c]);
            material->metallic = float(pbr.metallicFactor);
            material->roughness = float(pbr.roughnessFactor);
            importExtensionFactors(source, *material);
            osg::Vec4f incandescence{0, 0, 0, 0};
            for (size_t c = 0; c < 3 && c < source.emissiveFactor.size(); ++c)
                incandescence[c] = float(source.emissiveFactor[c]);
            if (incandescence[0] > 0 || incandescence[1] > 0 || incandescence[2] > 0)
                incandescence[3] = 1.0f;
            material->setIncandescenceColor(incandescence);
            material->setRenderMode(osg::UberMaterial::getRenderingMode());
            importRaytracingOverrides(source, *material);
            materials.push_back(material);
            scene.getMaterialPool()->add(material);
        }
        return true;
    }

    bool importMeshes()
    {
        for (size_t m = 0; m < model.meshes.size(); ++m) {
            std::vector<std::shared_ptr<osg::Geometry>> primitives;
            for (const tinygltf::Primitive& primitive : model.meshes[m].primitives) {
                if (primitive.mode != TINYGLTF_MODE_TRIANGLES)
                    continue; // points and lines don't render in a raytracer
                const auto position = primitive.attributes.find("POSITION");
                if (position == primitive.attributes.end())
                    return fail("mesh " + std::to_string(m) + " has a primitive without positions");
                auto geometry = std::make_shared<osg::Geometry>();
                if (!readFloats(position->second, TINYGLTF_TYPE_VEC3, "POSITION",
                                geometry->positions))
                    return false;
                const size_t vertexCount = geometry->positions.size() / 3;
                const auto normal = primitive.attributes.find("NORMAL");
                if (normal != primitive.attributes.end()) {
                    if (!readFloats(normal->second, TINYGLTF_TYPE_VEC3, "NORMAL",
                                    geometry->normals))
                        return false;
                    if (geometry->normals.size() != geometry->positions.size())
                        geometry->normals.clear();
                }
                if (primitive.indices >= 0) {
                    if (!readIndices(primitive.indices, vertexCount, geometry->indices))
                        return false;
                } else {
                    geometry->indices.resize(vertexCount);
                    for (size_t i = 0; i < vertexCount; ++i)
                        geometry->indices[i] = uint32_t(i);
                }
                geometry->indices.resize(geometry->indices.size() / 3 * 3);
                geometry->defaultMaterial = geometry->material = material(primitive.material);
                const auto variants = primitive.extensions.find("KHR_materials_variants");
                if (variants != primitive.extensions.end() && variants->second.Has("mappings")) {
                    const tinygltf::Value& mappings = member(variants->second, "mappings");
                    for (size_t i = 0; i < mappings.ArrayLen(); ++i) {
                        const tinygltf::Value& mapping = mappings.Get(int(i));
                        const int materialIndex = wholeNumber(member(mapping, "material"));
                        if (materialIndex < 0 || size_t(materialIndex) >= materials.size())
                            return fail("a material variant mapping refers to a missing material");
                        const tinygltf::Value& list = member(mapping, "variants");
                        for (size_t v = 0; v < list.ArrayLen(); ++v)
                            geometry->variantMaterials.emplace_back(
                                wholeNumber(list.Get(int(v))), materials[size_t(materialIndex)]);
                    }
                }
                primitives.push_back(geometry);
            }
            meshes.push_back(std::move(primitives));
        }
        return true;
    }

    std::string nodeName(size_t index) const
    {
        const std::string& name = model.nodes[index].name;
        return name.empty() ? "Node " + std::to_string(index) : name;
    }

    // Values that end up in ray origins and directions: each must be finite and of sane size.
    bool usable(const std::vector<double>& values, const std::string& owner, const char* what)
    {
        const std::string bad = oxSceneValues::firstUnusable(values.data(), values.size());
        return bad.empty() || fail(owner + " has an unusable " + what + " (" + bad + ")");
    }

    bool nodeValuesUsable(const tinygltf::Node& source, int index)
    {
        const std::string owner = "node '" + oxInputLimits::quoted(nodeName(size_t(index))) + "'";
        if (!usable(source.matrix, owner, "matrix") ||
            !usable(source.translation, owner, "translation") ||
            !usable(source.rotation, owner, "rotation") || !usable(source.scale, owner, "scale"))
            return false;
        if (source.camera >= 0 && size_t(source.camera) < model.cameras.size()) {
            const tinygltf::PerspectiveCamera& camera =
                model.cameras[size_t(source.camera)].perspective;
            if (!usable({camera.yfov, camera.znear, camera.zfar}, owner,
                        "camera field of view or clipping distance"))
                return false;
        }
        const auto light = source.extensions.find("KHR_lights_punctual");
        if (light != source.extensions.end()) {
            const int lightIndex = wholeNumber(member(light->second, "light"));
            if (lightIndex >= 0 && size_t(lightIndex) < model.lights.size()) {
                const tinygltf::Light& values = model.lights[size_t(lightIndex)];
                if (!usable(values.color, owner, "light colour") ||
                    !usable({values.intensity, values.spot.outerConeAngle}, owner,
                            "light intensity or cone angle"))
                    return false;
            }
        }
        return true;
    }

    bool importNode(int index, osg::NodePtr parent, const osg::Matrix& parentWorld, int depth)
    {
        if (index < 0 || size_t(index) >= model.nodes.size())
            return fail("a node refers to a child that doesn't exist");
        if (nodes[size_t(index)] || depth > 1000)
            return fail("node " + std::to_string(index) + " is used more than once (a cycle?)");
        const tinygltf::Node& source = model.nodes[size_t(index)];
        if (!nodeValuesUsable(source, index))
            return false;
        std::shared_ptr<osg::NodeCore> core;
        const bool isSwitch = source.extras.Has("switch");
        osg::Matrix world = parentWorld;
        if (isSwitch) {
            auto switchCore = std::make_shared<osg::Switch>();
            switchCore->setChoice(wholeNumber(member(source.extras, "switch")));
            core = switchCore;
        } else {
            auto transform = std::make_shared<osg::Transform>();
            if (source.matrix.size() == 16) {
                osg::Matrix m;
                for (size_t i = 0; i < 16; ++i)
                    m[i] = float(source.matrix[i]);
                osg::decompose(m, transform->translation, transform->rotation, transform->scale);
            }
            for (size_t i = 0; i < 3 && source.translation.size() == 3; ++i)
                transform->translation[i] = float(source.translation[i]);
            for (size_t i = 0; i < 4 && source.rotation.size() == 4; ++i)
                transform->rotation[i] = float(source.rotation[i]);
            for (size_t i = 0; i < 3 && source.scale.size() == 3; ++i)
                transform->scale[i] = float(source.scale[i]);
            world = osg::multiply(parentWorld, transform->getMatrix());
            core = transform;
        }
        osg::NodePtr node =
            parent->addChild(std::make_unique<osg::Node>(core, nodeName(size_t(index))));
        nodes[size_t(index)] = node;

        if (source.mesh >= 0) {
            if (size_t(source.mesh) >= meshes.size())
                return fail("node '" + node->getName() + "' refers to a mesh that doesn't exist");
            const tinygltf::Mesh& mesh = model.meshes[size_t(source.mesh)];
            const std::string name = mesh.name.empty() ? node->getName() + " Mesh" : mesh.name;
            for (const auto& geometry : meshes[size_t(source.mesh)])
                node->addChild(std::make_unique<osg::Node>(geometry, name));
        }
        if (source.camera >= 0) {
            if (size_t(source.camera) >= model.cameras.size())
                return fail("node '" + node->getName() + "' refers to a camera that doesn't exist");
            const tinygltf::Camera& camera = model.cameras[size_t(source.camera)];
            osg::NodePtr viewpoint = scene.addViewpoint(node->getName(), scene.getCameraRoot());
            auto* core = viewpoint->getCoreAs<osg::UberCameraBase>();
            osg::Vec3f scale;
            osg::decompose(world, core->position, core->orientation, scale);
            if (camera.type == "perspective") {
                core->setFov(float(camera.perspective.yfov) * 180.0f / kPi);
                core->setNear(float(camera.perspective.znear));
                if (camera.perspective.zfar > 0)
                    core->setFar(float(camera.perspective.zfar));
            }
        }
        const auto lightExtension = source.extensions.find("KHR_lights_punctual");
        if (lightExtension != source.extensions.end() && lightExtension->second.Has("light")) {
            const int lightIndex = wholeNumber(member(lightExtension->second, "light"));
            if (lightIndex < 0 || size_t(lightIndex) >= model.lights.size())
                return fail("node '" + node->getName() + "' refers to a light that doesn't exist");
            const tinygltf::Light& sourceLight = model.lights[size_t(lightIndex)];
            auto light = std::make_shared<osg::Light>();
            light->type = sourceLight.type == "directional" ? osg::Light::Directional
                          : sourceLight.type == "spot"      ? osg::Light::Spot
                                                            : osg::Light::Point;
            for (size_t c = 0; c < 3 && c < sourceLight.color.size(); ++c)
                light->color[c] = float(sourceLight.color[c]);
            light->value = float(sourceLight.intensity);
            if (light->type == osg::Light::Spot)
                light->spotAngle = float(sourceLight.spot.outerConeAngle) * 180.0f / kPi;
            node->addChild(std::make_unique<osg::Node>(
                light, sourceLight.name.empty() ? node->getName() + " Light" : sourceLight.name));
        }
        for (int child : source.children)
            if (!importNode(child, node, world, depth + 1))
                return false;
        return true;
    }

    bool importAnimations()
    {
        for (size_t a = 0; a < model.animations.size(); ++a) {
            const tinygltf::Animation& animation = model.animations[a];
            auto clip = std::make_shared<oxAnimClip>();
            for (const tinygltf::AnimationChannel& channel : animation.channels) {
                oxAnimChannel out;
                if (channel.target_path == "translation")
                    out.path = oxAnimChannel::Translation;
                else if (channel.target_path == "rotation")
                    out.path = oxAnimChannel::Rotation;
                else if (channel.target_path == "scale")
                    out.path = oxAnimChannel::Scale;
                else
                    continue; // morph weights: no morph targets here
                if (channel.target_node < 0 || size_t(channel.target_node) >= nodes.size() ||
                    !nodes[size_t(channel.target_node)] ||
                    !nodes[size_t(channel.target_node)]->getCoreAs<osg::Transform>())
                    return fail("animation " + std::to_string(a) +
                                " targets a node that doesn't exist");
                if (channel.sampler < 0 || size_t(channel.sampler) >= animation.samplers.size())
                    return fail("animation " + std::to_string(a) + " refers to a missing sampler");
                const tinygltf::AnimationSampler& sampler =
                    animation.samplers[size_t(channel.sampler)];
                out.target = nodes[size_t(channel.target_node)]->getId();
                out.step = sampler.interpolation == "STEP";
                if (!readFloats(sampler.input, TINYGLTF_TYPE_SCALAR, "animation input",
                                out.frames) ||
                    !readFloats(sampler.output,
                                out.path == oxAnimChannel::Rotation ? TINYGLTF_TYPE_VEC4
                                                                    : TINYGLTF_TYPE_VEC3,
                                "animation output", out.values))
                    return false;
                const size_t width = out.path == oxAnimChannel::Rotation ? 4 : 3;
                if (sampler.interpolation == "CUBICSPLINE") {
                    // Keep the values, drop the tangents: in-tangent, value, out-tangent.
                    if (out.values.size() != out.frames.size() * width * 3)
                        return fail("animation " + std::to_string(a) + " has mismatched keys");
                    std::vector<float> values;
                    for (size_t k = 0; k < out.frames.size(); ++k)
                        values.insert(values.end(), out.values.begin() + long((3 * k + 1) * width),
                                      out.values.begin() + long((3 * k + 2) * width));
                    out.values = std::move(values);
                }
                if (out.values.size() != out.frames.size() * width)
                    return fail("animation " + std::to_string(a) + " has mismatched keys");
                for (size_t k = 0; k < out.frames.size(); ++k) {
                    out.frames[k] *= scene.fps;
                    if (k > 0 && out.frames[k] < out.frames[k - 1])
                        return fail("animation " + std::to_string(a) + " has keys out of order");
                }
                clip->channels.push_back(std::move(out));
            }
            const std::string name =
                animation.name.empty() ? "Animation " + std::to_string(a) : animation.name;
            scene.getClipRoot()->addChild(std::make_unique<osg::Node>(clip, name));
        }
        return true;
    }

    bool importVariants()
    {
        const auto extension = model.extensions.find("KHR_materials_variants");
        if (extension == model.extensions.end() || !extension->second.Has("variants"))
            return true;
        const tinygltf::Value& variants = member(extension->second, "variants");
        for (size_t i = 0; i < variants.ArrayLen(); ++i) {
            const tinygltf::Value& variant = variants.Get(int(i));
            const tinygltf::Value& nameValue = member(variant, "name");
            const std::string name = nameValue.IsString() ? nameValue.Get<std::string>()
                                                          : "Variant " + std::to_string(i);
            scene.materialVariantNames.push_back(name);
            auto set = std::make_unique<oxVariantSet>();
            set->name = name;
            set->changes.push_back({oxVariantChange::MaterialVariant, std::string(), int(i)});
            scene.variantSets.push_back(std::move(set));
        }
        return true;
    }

    bool run()
    {
        if (!importMaterials() || !importMeshes())
            return false;
        nodes.assign(model.nodes.size(), nullptr);
        const size_t sceneIndex = model.defaultScene >= 0 ? size_t(model.defaultScene) : 0;
        if (!model.scenes.empty()) {
            if (sceneIndex >= model.scenes.size())
                return fail("the default scene doesn't exist");
            for (int root : model.scenes[sceneIndex].nodes)
                if (!importNode(root, scene.getRoot(), osg::identityMatrix(), 0))
                    return false;
        }
        return importAnimations() && importVariants();
    }
};

bool importModel(tinygltf::Model& model, bool loaded, const std::string& err, oxScene& scene,
                 std::string& error)
{
    if (!loaded) {
        error = err.empty() ? "not a valid glTF 2.0 file" : err;
        while (!error.empty() && (error.back() == '\n' || error.back() == ' '))
            error.pop_back();
        return false;
    }
    Importer importer{model, scene, error, {}, {}, {}, {}};
    return importer.run();
}

} // namespace

namespace {

// The JSON part of a binary glTF: the first chunk, when the header is complete; otherwise
// nothing, and the library reports the broken header.
std::pair<const char*, size_t> binaryJsonChunk(const std::string& data)
{
    constexpr size_t kHeader = 12, kChunkHeader = 8;
    if (data.size() < kHeader + kChunkHeader)
        return {nullptr, 0};
    uint32_t length = 0;
    std::memcpy(&length, data.data() + kHeader, sizeof length);
    return {data.data() + kHeader + kChunkHeader,
            std::min<size_t>(length, data.size() - kHeader - kChunkHeader)};
}

bool loadGltf(const std::string& data, bool binary, const std::string& baseDir, oxScene& scene,
              std::string& error)
{
    const auto json = binary ? binaryJsonChunk(data) : std::make_pair(data.data(), data.size());
    if (!oxInputLimits::jsonDepthWithin(json.first, json.second)) {
        error = "its JSON nests deeper than " + std::to_string(oxInputLimits::kMaxJsonDepth) +
                " levels";
        return false;
    }
    if (data.size() > std::numeric_limits<unsigned>::max()) {
        error = "it is larger than 4 GiB";
        return false;
    }
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(skipImage, nullptr);
    tinygltf::Model model;
    std::string err, warn;
    bool loaded = false;
    try {
        if (binary)
            loaded = loader.LoadBinaryFromMemory(
                &model, &err, &warn, reinterpret_cast<const unsigned char*>(data.data()),
                unsigned(data.size()), baseDir);
        else
            loaded = loader.LoadASCIIFromString(&model, &err, &warn, data.data(),
                                                unsigned(data.size()), baseDir);
    } catch (const std::exception& e) {
        // The JSON parser throws on some malformed numbers; that is just a bad file.
        loaded = false;
        err = e.what();
    }
    return importModel(model, loaded, err, scene, error);
}

} // namespace

bool oxSceneIO::importGltf(const std::string& fileName, oxScene& scene, std::string& error)
{
    const std::string path = oxFile::expandFilename(fileName);
    std::string data;
    if (!oxFile::readAll(path, data)) {
        error = "the file can't be read";
        return false;
    }
    const std::string extension = oxFile::getExtension(path);
    const std::string folder = oxFile::getFilePath(path);
    return loadGltf(data, extension == "glb" || extension == "GLB", folder.empty() ? "." : folder,
                    scene, error);
}

bool oxSceneIO::importGltfText(const std::string& text, oxScene& scene, std::string& error)
{
    return loadGltf(text, false, std::string(), scene, error);
}

bool oxSceneIO::importGltfBinary(const std::string& data, oxScene& scene, std::string& error)
{
    return loadGltf(data, true, std::string(), scene, error);
}
