#pragma once

#include "oxRayMath.h"

#include <cstdint>
#include <string>
#include <vector>

class oxScene;

namespace osg {
class Node;
}

// Ray files: the light of a scene as the rays that land on its surfaces, traced from its
// lights by photon tracing, for tools that carry the light on (lighting simulations, light
// baking).
//
// The file is ASCII, one record per line, numbers separated by one blank:
//
//     oxlin-rays 1 RAYS PHOTONS DEPTH
//     X Y Z DX DY DZ R G B
//     ...
//
// The header names the format and its version (1), the number of ray lines that follow, the
// photons traced and the bounces allowed per photon. Each ray line is one photon arriving at a
// surface: the point it hit (world space), the unit direction it travelled in, and the power it
// carried (red, green, blue; the lights' units times square metres for the sun and the sky).
// The powers of all photons that leave the lights add up to the lights' total power, so a file
// of more photons has more, weaker rays. There are never more ray lines than PHOTONS * DEPTH.
namespace oxRay {

struct RayFileRay {
    Vec3 origin;
    Vec3 direction;
    Vec3 power;
};

struct RayFileRequest {
    uint32_t photons = 0;
    /// Surface hits followed per photon, the first one included.
    uint32_t maxDepth = 1;
    /// The light nodes to trace from; empty for every light of the scene and its environment.
    std::vector<const osg::Node*> lights;
    /// false: a ray is kept where a photon hits a surface with a diffuse part (a diffuse black
    /// material neither keeps nor reflects light); true: at every hit.
    bool everyHit = false;
};

/// Traces the photons of request through scene. The same scene and request give the same rays
/// in the same order, whatever the number of threads. False with error set when the scene
/// can't be traced.
bool traceRayFile(const oxScene& scene, const RayFileRequest& request,
                  std::vector<RayFileRay>& rays, std::string& error);

/// The text of a ray file (format above).
std::string formatRayFile(const RayFileRequest& request, const std::vector<RayFileRay>& rays);

} // namespace oxRay
