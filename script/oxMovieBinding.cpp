#include "oxMovieBinding.h"

#include "oxScriptBinding.h"

#include "oxMovieCommands.h"
#include "oxMovieExportDocs.h"

using namespace boost::python;
using oxScriptBinding::keywordsOf;

namespace {

// Argument names of the createMovie forms without an animation name; each takes a prefix.
const char* const kMovieArgs[] = {"filename",          "width",      "height",     "fps",
                                  "startFrame",        "stopFrame",  "ssf",        "alpha",
                                  "alphaRed",          "alphaGreen", "alphaBlue",  "overwrite",
                                  "alpha_premultiply", "step",       "tonemap_hdr"};
// The forms that name an animation, without and with tonemapping.
const char* const kNamedMovieArgs[] = {"movie", "filename",       "width",      "height",
                                       "fps",   "startFrame",     "stopFrame",  "ssf",
                                       "alpha", "alphaRGB",       "overwrite",  "alpha_premultiply",
                                       "step",  "use_clip_range", "export_type"};
const char* const kNamedTonemapMovieArgs[] = {
    "movie",     "filename",    "width",          "height",     "fps",       "startFrame",
    "stopFrame", "ssf",         "alpha",          "alphaRGB",   "overwrite", "alpha_premultiply",
    "step",      "tonemap_hdr", "use_clip_range", "export_type"};
// renderAnimation; renderStepAnimation takes its first 14 and then "step".
const char* const kAnimationArgs[] = {"animation", "filename",          "width",      "height",
                                      "fps",       "startFrame",        "stopFrame",  "ssf",
                                      "alpha",     "alphaRed",          "alphaGreen", "alphaBlue",
                                      "overwrite", "alpha_premultiply", "tonemap_hdr"};

using NamedMovie = void (*)(const char*, const char*, int, int, int, int, int, int, bool,
                            const char*, bool, bool, int, bool, int);
using NamedFloatMovie = void (*)(const char*, const char*, float, float, int, int, int, int, bool,
                                 const char*, bool, bool, int, bool, int);
using NamedTonemapMovie = void (*)(const char*, const char*, int, int, int, int, int, int, bool,
                                   const char*, bool, bool, int, bool, bool, int);
using NamedTonemapFloatMovie = void (*)(const char*, const char*, float, float, int, int, int, int,
                                        bool, const char*, bool, bool, int, bool, bool, int);

} // namespace

void bindMovie()
{
    const char* const movie = "createMovie";
    def(movie,
        static_cast<void (*)(const char*, int, int, int, int, int, int, bool, float, float, float,
                             bool)>(&createMovie),
        keywordsOf<12>(kMovieArgs));
    def(movie,
        static_cast<void (*)(const char*, int, int, int, int, int, int, bool, float, float, float,
                             bool, bool)>(&createMovie),
        keywordsOf<13>(kMovieArgs));
    def(movie,
        static_cast<void (*)(const char*, int, int, int, int, int, int, bool, float, float, float,
                             bool, bool, int)>(&createMovie),
        keywordsOf<14>(kMovieArgs));
    def(movie, static_cast<NamedMovie>(&createMovie), keywordsOf<15>(kNamedMovieArgs));
    def(movie, static_cast<NamedFloatMovie>(&createMovie), keywordsOf<15>(kNamedMovieArgs));
    def(movie, static_cast<NamedTonemapMovie>(&createMovie),
        keywordsOf<16>(kNamedTonemapMovieArgs));
    def(movie, static_cast<NamedTonemapFloatMovie>(&createMovie),
        keywordsOf<16>(kNamedTonemapMovieArgs));
    def(movie,
        static_cast<void (*)(const char*, int, int, int, int, int, int, bool, float, float, float,
                             bool, bool, int, bool)>(&createMovie),
        keywordsOf<15>(kMovieArgs), oxMovieExportDoc(movie));

    const char* const animation = "renderAnimation";
    def(animation,
        static_cast<void (*)(const char*, const char*, int, int, int, int, int, int, bool, float,
                             float, float, bool, bool)>(&renderAnimation),
        keywordsOf<14>(kAnimationArgs));
    def(animation,
        static_cast<void (*)(const char*, const char*, int, int, int, int, int, int, bool, float,
                             float, float, bool, bool, bool)>(&renderAnimation),
        keywordsOf<15>(kAnimationArgs), oxMovieExportDoc(animation));

    def("renderStepAnimation", &renderStepAnimation, (keywordsOf<14>(kAnimationArgs), arg("step")),
        oxMovieExportDoc("renderStepAnimation"));
}
