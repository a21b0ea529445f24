#include "oxRenderServiceSupport.h"

#include <cstdio>
#include <cstdlib>

std::string oxTraceArgument(bool value) { return value ? "true" : "false"; }
std::string oxTraceArgument(int value) { return std::to_string(value); }
std::string oxTraceArgument(unsigned int value) { return std::to_string(value); }

std::string oxTraceArgument(float value)
{
    // The shortest text that reads back as the same float, so that 0.001 stays "0.001".
    char text[32];
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text, sizeof(text), "%.*g", digits, static_cast<double>(value));
        if (std::strtof(text, nullptr) == value)
            break;
    }
    return text;
}

std::string oxTraceArgument(const std::string& value) { return "'" + value + "'"; }

std::string oxTraceArgument(const std::array<float, 4>& value)
{
    std::string text;
    for (float v : value)
        text += (text.empty() ? "" : " ") + oxTraceArgument(v);
    return "[" + text + "]";
}
