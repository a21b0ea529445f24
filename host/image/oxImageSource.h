#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// What the image writer asks of a renderer for one image.
struct oxRenderRequest {
    int width = 0;
    int height = 0;
    /// The frame to evaluate the scene at; only meaningful when animation is true.
    int frame = 0;
    bool animation = false;
    /// Pass ids of the host's naming table (oxImagePasses); never empty: beauty alone is {0}.
    std::vector<unsigned> passIds;
    /// 0 one sample per pixel, 3 the full sample count.
    int supersampling = 0;
    bool alpha = false;
    float alphaColor[3] = {1.0f, 1.0f, 1.0f};
    bool tonemapHDR = false;
    /// The animation (clip node id) whose motion blurs, or -1.
    int64_t motionBlurObjectId = -1;
    /// For renderers that refine in rounds: called after each round with the rounds done and
    /// planned. Returning false asks the renderer to stop before the next round; the render
    /// then fails and the image is not complete.
    std::function<bool(int done, int rounds)> onRound;
};

/// One rendered pass: width * height RGBA floats, top row first.
struct oxRenderedPass {
    unsigned passId = 0;
    std::vector<float> rgba;
};

/// The pixels of one image with every requested pass, and the data that its metadata needs.
struct oxRenderedImage {
    int width = 0;
    int height = 0;
    std::vector<oxRenderedPass> passes;
    /// The names whose Cryptomatte ids the object and material layers hold (the manifest).
    std::vector<std::string> cryptoObjectNames;
    std::vector<std::string> cryptoMaterialNames;
    /// Camera properties (name, value) embedded in the metadata when its camera bit is set.
    std::vector<std::pair<std::string, std::string>> cameraData;

    /// The pass of that id, or nullptr.
    const oxRenderedPass* find(unsigned passId) const
    {
        for (const oxRenderedPass& pass : passes)
            if (pass.passId == passId)
                return &pass;
        return nullptr;
    }
};

/// The renderer behind the image writer. Exactly one source is current at a time; without
/// one the writer can't export and says so.
class oxImageSource {
public:
    virtual ~oxImageSource() = default;

    /// Renders one image. On success every requested pass is in image, sized as requested.
    /// On failure error says why.
    virtual bool render(const oxRenderRequest& request, oxRenderedImage& image,
                        std::string& error) = 0;

    /// Makes source current (nullptr: none). The writer doesn't own it.
    static void setCurrent(oxImageSource* source);
    static oxImageSource* current();
};
