#include "oxEmbreeScene.h"

#include "oxScene.h"

#include <cstring>
#include <unordered_map>

namespace oxRay {

EmbreeScene::EmbreeScene()
{
    device = rtcNewDevice(nullptr);
    if (device)
        rtcSetDeviceErrorFunction(
            device,
            [](void* self, RTCError, const char* text) {
                std::string& error = static_cast<EmbreeScene*>(self)->deviceError;
                if (error.empty())
                    error = text ? text : "unknown error";
            },
            this);
}

EmbreeScene::~EmbreeScene()
{
    if (scene)
        rtcReleaseScene(scene);
    if (device)
        rtcReleaseDevice(device);
}

RTCGeometry EmbreeScene::makeGeometry(const std::vector<const std::vector<float>*>& poses,
                                      const std::vector<uint32_t>& all,
                                      const std::vector<uint32_t>* list)
{
    const size_t triangleCount = list ? list->size() : all.size() / 3;
    std::vector<uint32_t> vertexOf;  // geometry vertex -> snapshot vertex
    std::vector<uint32_t> triangles; // geometry indices
    std::unordered_map<uint32_t, uint32_t> renumbered;
    triangles.reserve(triangleCount * 3);
    if (!list) {
        triangles = all;
    } else {
        for (uint32_t triangle : *list) {
            for (size_t k = 0; k < 3; ++k) {
                const uint32_t vertex = all[size_t(triangle) * 3 + k];
                auto found = renumbered.emplace(vertex, uint32_t(vertexOf.size()));
                if (found.second)
                    vertexOf.push_back(vertex);
                triangles.push_back(found.first->second);
            }
        }
    }
    const size_t vertexCount = list ? vertexOf.size() : poses.front()->size() / 3;
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    if (poses.size() > 1)
        rtcSetGeometryTimeStepCount(geometry, unsigned(poses.size()));
    for (size_t step = 0; step < poses.size(); ++step) {
        auto* vertices = static_cast<float*>(
            rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, unsigned(step),
                                    RTC_FORMAT_FLOAT3, 3 * sizeof(float), vertexCount));
        const std::vector<float>& source = *poses[step];
        if (!list)
            std::memcpy(vertices, source.data(), vertexCount * 3 * sizeof(float));
        else
            for (size_t v = 0; v < vertexCount; ++v)
                std::memcpy(vertices + v * 3, source.data() + size_t(vertexOf[v]) * 3,
                            3 * sizeof(float));
    }
    auto* target = static_cast<uint32_t*>(rtcSetNewGeometryBuffer(
        geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(uint32_t), triangleCount));
    std::memcpy(target, triangles.data(), triangleCount * 3 * sizeof(uint32_t));
    rtcCommitGeometry(geometry);
    return geometry;
}

void EmbreeScene::attach(RTCGeometry geometry, std::vector<uint32_t> triangles)
{
    const unsigned id = rtcAttachGeometry(scene, geometry);
    rtcReleaseGeometry(geometry);
    if (triangleOf.size() <= id)
        triangleOf.resize(size_t(id) + 1);
    triangleOf[id] = std::move(triangles);
}

bool EmbreeScene::update(const std::vector<oxSceneSnapshot>& poses, std::string& error)
{
    if (!device) {
        error = "the ray tracing device could not be created";
        return false;
    }
    const oxSceneSnapshot& first = poses.front();
    bool same = built && poses.size() == stepPositions.size() && first.indices == indices;
    for (size_t step = 0; same && step < poses.size(); ++step)
        same = poses[step].positions == stepPositions[step];
    if (same)
        return true;
    const size_t vertexCount = first.positions.size() / 3;
    for (uint32_t index : first.indices) {
        if (index >= vertexCount) {
            error = "the scene has a triangle with a vertex index out of range";
            return false;
        }
    }
    for (const oxSceneSnapshot& pose : poses) {
        if (pose.indices != first.indices || pose.positions.size() != first.positions.size()) {
            error = "the scene's geometry changes within the shutter interval";
            return false;
        }
    }
    if (scene)
        rtcReleaseScene(scene);
    scene = rtcNewScene(device);
    triangleOf.clear();
    const size_t triangleCount = first.indices.size() / 3;
    std::vector<const std::vector<float>*> positions;
    for (const oxSceneSnapshot& pose : poses)
        positions.push_back(&pose.positions);
    if (triangleCount > 0 && poses.size() == 1) {
        RTCGeometry geometry = makeGeometry(positions, first.indices, nullptr);
        rtcAttachGeometry(scene, geometry);
        rtcReleaseGeometry(geometry);
    } else if (triangleCount > 0) {
        // Only what moves pays for motion: still triangles keep a plain geometry.
        std::vector<bool> moves(vertexCount, false);
        for (size_t step = 1; step < poses.size(); ++step)
            for (size_t v = 0; v < vertexCount; ++v)
                for (size_t c = 0; c < 3; ++c)
                    if (poses[step].positions[v * 3 + c] != first.positions[v * 3 + c])
                        moves[v] = true;
        std::vector<uint32_t> still, moving;
        for (uint32_t t = 0; t < uint32_t(triangleCount); ++t) {
            const uint32_t* corner = &first.indices[size_t(t) * 3];
            (moves[corner[0]] || moves[corner[1]] || moves[corner[2]] ? moving : still)
                .push_back(t);
        }
        if (!still.empty()) {
            RTCGeometry geometry = makeGeometry({positions.front()}, first.indices, &still);
            attach(geometry, std::move(still));
        }
        if (!moving.empty()) {
            RTCGeometry geometry = makeGeometry(positions, first.indices, &moving);
            attach(geometry, std::move(moving));
        }
    }
    rtcCommitScene(scene);
    if (!deviceError.empty()) {
        error = "the ray tracing library failed: " + deviceError;
        deviceError.clear();
        rtcReleaseScene(scene);
        scene = nullptr;
        built = false;
        return false;
    }
    stepPositions.clear();
    for (const oxSceneSnapshot& pose : poses)
        stepPositions.push_back(pose.positions);
    indices = first.indices;
    built = true;
    ++buildCount;
    return true;
}

} // namespace oxRay
