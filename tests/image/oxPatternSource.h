#pragma once

#include "oxCryptomatte.h"
#include "oxImagePasses.h"
#include "oxImageSource.h"

#include <functional>

/// A renderer for tests: every pass is a deterministic pattern of multiples of 1/255 (so
/// that 8-bit formats keep it exactly); Cryptomatte layers hold the ids of two names.
class oxPatternSource : public oxImageSource {
public:
    oxPatternSource() { oxImageSource::setCurrent(this); }
    ~oxPatternSource() override { oxImageSource::setCurrent(nullptr); }

    static float value(int x, int y, int channel, unsigned pass, int frame)
    {
        if (channel == 3)
            return float((x * 11 + y * 5 + frame * 3) % 256) / 255.0f;
        return float((x * 7 + y * 13 + channel * 29 + int(pass) * 3 + frame * 5) % 256) / 255.0f;
    }

    bool render(const oxRenderRequest& request, oxRenderedImage& image, std::string& error) override
    {
        requests.push_back(request);
        if (beforeRender && !beforeRender(request)) {
            error = "test failure";
            return false;
        }
        image.width = request.width;
        image.height = request.height;
        image.cryptoObjectNames = {"/root/car", "/root/wheel"};
        image.cryptoMaterialNames = {"paint"};
        image.cameraData = {{"fov", "45"}};
        for (unsigned id : request.passIds) {
            oxRenderedPass pass;
            pass.passId = id;
            pass.rgba.resize(size_t(request.width) * size_t(request.height) * 4);
            for (int y = 0; y < request.height; ++y)
                for (int x = 0; x < request.width; ++x)
                    for (int c = 0; c < 4; ++c) {
                        float v = value(x, y, c, id, request.frame);
                        if (oxImagePasses::isCryptomatte(id))
                            v = c % 2 == 0
                                    ? oxCryptomatte::idOf(x < request.width / 2 ? "/root/car"
                                                                                : "/root/wheel")
                                    : 0.5f;
                        pass.rgba[(size_t(y) * size_t(request.width) + size_t(x)) * 4 + size_t(c)] =
                            v;
                    }
            image.passes.push_back(std::move(pass));
        }
        return true;
    }

    std::vector<oxRenderRequest> requests;
    /// Called before each render; returning false fails it.
    std::function<bool(const oxRenderRequest&)> beforeRender;
};
