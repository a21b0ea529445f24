#include "oxImageOutStream.h"

#include "oxCallTrace.h"
#include "oxLog.h"

#include <algorithm>
#include <cctype>
#include <ostream>

namespace {
struct Redirect {
    oxImageOutStream::ImageWriterFunc writer;
    oxImageOutStream::ImageLayeredWriterFunc layered;
    std::ostream* stream = nullptr;
    std::string streamName;
};

Redirect& redirect()
{
    static Redirect* state = new Redirect();
    return *state;
}

// The format of a composed name: the text after its last dot, and of that the part after a
// slash, so that "diverted.IMAGE/PNG" means PNG.
std::string suffixOf(const std::string& name)
{
    const size_t dot = name.rfind('.');
    std::string suffix = dot == std::string::npos ? name : name.substr(dot + 1);
    const size_t slash = suffix.rfind('/');
    if (slash != std::string::npos)
        suffix = suffix.substr(slash + 1);
    std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return suffix;
}
} // namespace

void oxImageOutStream::setImageWriteFunctions(ImageWriterFunc writer,
                                              ImageLayeredWriterFunc layered)
{
    oxCallTrace::record("oxImageOutStream::setImageWriteFunctions");
    redirect().writer = std::move(writer);
    redirect().layered = std::move(layered);
}

void oxImageOutStream::resetImageWriteFunctions()
{
    oxCallTrace::record("oxImageOutStream::resetImageWriteFunctions");
    redirect().writer = nullptr;
    redirect().layered = nullptr;
}

bool oxImageOutStream::hasImageWriteFunctions() { return bool(redirect().writer); }

void oxImageOutStream::openStream(std::ostream& stream, const std::string& fileName)
{
    oxCallTrace::record("oxImageOutStream::openStream", fileName);
    redirect().stream = &stream;
    redirect().streamName = fileName;
}

void oxImageOutStream::close()
{
    oxCallTrace::record("oxImageOutStream::close");
    redirect().stream = nullptr;
    redirect().streamName.clear();
}

bool oxImageOutStream::isStreamOpen() { return redirect().stream != nullptr; }

bool oxImageOutStream::isActive() { return hasImageWriteFunctions() || isStreamOpen(); }

bool oxImageOutStream::write(const osg::ImagePtr& image, const std::string& fileName,
                             const std::vector<osg::ImagePtr>& layers)
{
    Redirect& state = redirect();
    if (state.writer) {
        if (!layers.empty() && state.layered) {
            osg::ImageFileType* type = osg::ImageFileHandler::the().getFileType(suffixOf(fileName));
            if (!type)
                type = &osg::PNGImageFileType::the();
            return state.layered(type, image, fileName, layers);
        }
        return state.writer(image, fileName);
    }
    if (state.stream) {
        const std::string suffix = suffixOf(state.streamName.empty() ? fileName : state.streamName);
        osg::ImageFileType* type = osg::ImageFileHandler::the().getFileType(suffix);
        if (!type) {
            oxLog::error("Image writer: no image format for '%s', the stream stays empty.",
                         fileName.c_str());
            return false;
        }
        return type->write(image, *state.stream, type->getMimeType(), layers,
                           layers.empty() ? std::string() : layers.front()->getName());
    }
    return false;
}
