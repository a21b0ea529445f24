#pragma once

// The example scene the rendering benchmarks measure, built once per process.

#include "oxExampleScene.h"
#include "oxScene.h"

#include <stdexcept>
#include <string>

inline oxScene& exampleScene()
{
    static oxScene scene;
    static bool built = false;
    if (!built) {
        std::string error;
        if (!oxExampleScene::build(scene, error))
            throw std::runtime_error(error);
        built = true;
    }
    return scene;
}
