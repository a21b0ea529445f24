#include "oxSceneValues.h"

#include <cstdio>

namespace oxSceneValues {

namespace {

template <typename T>
std::string firstUnusableOf(const T* values, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        if (!usable(double(values[i]))) {
            char text[32];
            std::snprintf(text, sizeof text, "%g", double(values[i]));
            return text;
        }
    }
    return std::string();
}

} // namespace

std::string firstUnusable(const float* values, size_t count)
{
    return firstUnusableOf(values, count);
}

std::string firstUnusable(const double* values, size_t count)
{
    return firstUnusableOf(values, count);
}

std::string checkView(const float* view)
{
    struct Part {
        const char* name;
        size_t first, count;
    };
    static const Part parts[] = {{"position", 0, 3},      {"orientation", 3, 4},
                                 {"field of view", 7, 2}, {"near or far distance", 9, 2},
                                 {"whitepoint", 11, 1},   {"glow", 12, 3},
                                 {"glare", 15, 3}};
    for (const Part& part : parts) {
        const std::string bad = firstUnusable(view + part.first, part.count);
        if (!bad.empty())
            return std::string(part.name) + " (" + bad + ")";
    }
    if (view[3] == 0 && view[4] == 0 && view[5] == 0 && view[6] == 0)
        return "orientation (a zero quaternion)";
    return std::string();
}

} // namespace oxSceneValues
