#include "oxImageSource.h"

namespace {
oxImageSource*& currentSource()
{
    static oxImageSource* source = nullptr;
    return source;
}
} // namespace

void oxImageSource::setCurrent(oxImageSource* source) { currentSource() = source; }

oxImageSource* oxImageSource::current() { return currentSource(); }
