#pragma once

#include <embree3/rtcore.h>

#include <cstdint>
#include <string>
#include <vector>

struct oxSceneSnapshot;

namespace oxRay {

/// The Embree device and the BVH over the triangles of the last scene it was given. Without
/// motion blur all triangles form one geometry in snapshot order; with it, still triangles keep
/// a plain geometry and those that move get one with a time step per pose.
struct EmbreeScene {
    RTCDevice device = nullptr;
    RTCScene scene = nullptr;
    // The vertex positions of each pose of the last build (one without motion blur).
    std::vector<std::vector<float>> stepPositions;
    std::vector<uint32_t> indices;
    // The snapshot's triangle behind each primitive, by geometry id; empty when the one
    // geometry holds every triangle in snapshot order.
    std::vector<std::vector<uint32_t>> triangleOf;
    bool built = false;
    int buildCount = 0;
    std::string deviceError; // the first error Embree reported since the last look

    EmbreeScene();
    ~EmbreeScene();
    EmbreeScene(const EmbreeScene&) = delete;
    EmbreeScene& operator=(const EmbreeScene&) = delete;

    /// Builds the BVH when the triangles differ from those of the last build. poses holds one
    /// snapshot, or one per time step of motion blur. False with error set when the scene
    /// can't be built.
    bool update(const std::vector<oxSceneSnapshot>& poses, std::string& error);

private:
    // A triangle geometry of the given triangles (all when list is null), with one time step
    // per pose; vertices are renumbered so that a geometry holds only those it uses.
    RTCGeometry makeGeometry(const std::vector<const std::vector<float>*>& poses,
                             const std::vector<uint32_t>& all, const std::vector<uint32_t>* list);
    void attach(RTCGeometry geometry, std::vector<uint32_t> triangles);
};

} // namespace oxRay
