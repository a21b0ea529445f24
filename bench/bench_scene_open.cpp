// Opening a large glTF model: 1,000 nodes of 1,000 triangles each (1,000,000 triangles).

#include "oxFile.h"
#include "oxScene.h"
#include "oxSceneIO.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <QDir>
#include <QTemporaryDir>

namespace {

constexpr int kNodes = 1000;
constexpr int kTrianglesPerNode = 1000;

// Writes the model once per process; returns its path.
const std::string& largeModel()
{
    static QTemporaryDir dir;
    static std::string path;
    if (!path.empty())
        return path;
    nlohmann::json doc;
    doc["asset"] = {{"version", "2.0"}};
    doc["materials"] = nlohmann::json::array({{{"name", "Grey"}}});
    std::string bin;
    auto view = [&](const void* data, size_t bytes) {
        doc["bufferViews"].push_back(
            {{"buffer", 0}, {"byteOffset", bin.size()}, {"byteLength", bytes}});
        bin.append(static_cast<const char*>(data), bytes);
        return doc["bufferViews"].size() - 1;
    };
    nlohmann::json roots = nlohmann::json::array();
    for (int n = 0; n < kNodes; ++n) {
        // A strip of quads: two triangles per quad, its own vertices per node.
        const int quads = kTrianglesPerNode / 2;
        std::vector<float> positions;
        std::vector<uint32_t> indices;
        for (int i = 0; i <= quads; ++i)
            for (int j = 0; j < 2; ++j)
                positions.insert(positions.end(),
                                 {float(i) * 0.01f, float(j) * 0.01f, float(n % 7) * 0.01f});
        for (uint32_t i = 0; i < uint32_t(quads); ++i)
            indices.insert(indices.end(),
                           {2 * i, 2 * i + 2, 2 * i + 1, 2 * i + 1, 2 * i + 2, 2 * i + 3});
        doc["accessors"].push_back({{"bufferView", view(positions.data(), positions.size() * 4)},
                                    {"componentType", 5126},
                                    {"count", positions.size() / 3},
                                    {"type", "VEC3"}});
        doc["accessors"].push_back({{"bufferView", view(indices.data(), indices.size() * 4)},
                                    {"componentType", 5125},
                                    {"count", indices.size()},
                                    {"type", "SCALAR"}});
        const size_t a = doc["accessors"].size();
        nlohmann::json primitive = {
            {"attributes", {{"POSITION", a - 2}}}, {"indices", a - 1}, {"material", 0}};
        nlohmann::json mesh;
        mesh["primitives"] = nlohmann::json::array({primitive});
        doc["meshes"].push_back(mesh);
        doc["nodes"].push_back(
            {{"name", "Part " + std::to_string(n)},
             {"mesh", n},
             {"translation", {float(n % 10), float(n / 100), float(n / 10 % 10)}}});
        roots.push_back(n);
    }
    doc["buffers"] = nlohmann::json::array({{{"byteLength", bin.size()}, {"uri", "large.bin"}}});
    doc["scenes"] = nlohmann::json::array({{{"nodes", roots}}});
    doc["scene"] = 0;
    const std::string folder = dir.path().toStdString();
    if (!oxFile::writeAtomically(folder + "/large.bin", bin) ||
        !oxFile::writeAtomically(folder + "/large.gltf", doc.dump()))
        return path;
    path = folder + "/large.gltf";
    return path;
}

void BM_OpenMillionTriangleGltf(benchmark::State& state)
{
    const std::string& path = largeModel();
    if (path.empty()) {
        state.SkipWithError("couldn't write the model");
        return;
    }
    size_t triangles = 0;
    for (auto _ : state) {
        std::unique_ptr<oxScene> scene = oxSceneIO::load(path);
        if (!scene) {
            state.SkipWithError("couldn't open the model");
            return;
        }
        triangles = scene->getTriangleCount();
        benchmark::DoNotOptimize(scene.get());
    }
    state.counters["triangles"] = double(triangles);
}
BENCHMARK(BM_OpenMillionTriangleGltf)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
