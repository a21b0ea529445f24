#pragma once

#include "oxOSGImage.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// Redirection of the image writer's output, process-wide. With write functions set, every
/// image the writer would store goes to them instead (the file name still travels along);
/// with a stream open, the writer encodes each image into that stream by the extension of
/// its composed name. In both cases no file is created.
class oxImageOutStream {
public:
    using ImageWriterFunc =
        std::function<bool(const osg::ImagePtr& image, const std::string& fileName)>;
    using ImageLayeredWriterFunc =
        std::function<bool(osg::ImageFileType* type, const osg::ImagePtr& image,
                           const std::string& fileName, const std::vector<osg::ImagePtr>& layers)>;

    static void setImageWriteFunctions(ImageWriterFunc writer, ImageLayeredWriterFunc layered);
    static void resetImageWriteFunctions();
    static bool hasImageWriteFunctions();

    /// From now on images are encoded into stream. fileName, when not empty, replaces the
    /// composed name's extension as the format choice.
    static void openStream(std::ostream& stream, const std::string& fileName);
    /// Ends what openStream began.
    static void close();
    static bool isStreamOpen();

    /// True while either redirection is on.
    static bool isActive();

    /// Hands one image (with its layers, for a multi-layer file) to the redirection.
    /// False when nothing is redirected or the redirection failed.
    static bool write(const osg::ImagePtr& image, const std::string& fileName,
                      const std::vector<osg::ImagePtr>& layers);
};
