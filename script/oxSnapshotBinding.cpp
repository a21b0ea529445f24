#include "oxSnapshotBinding.h"

#include "oxScriptBinding.h"

#include "oxMovieExportDocs.h"
#include "oxSnapshots.h"

using namespace boost::python;
using oxScriptBinding::keywordsOf;

namespace {

// Argument names of the forms without a file name; each form takes a prefix.
const char* const kDialogArgs[] = {"width", "height", "ssf", "alpha", "dpi"};
// The short forms with a file name.
const char* const kFileArgs[] = {"filename", "width", "height", "ssf", "alpha", "dpi"};
// The long forms with a file name.
const char* const kLongFileArgs[] = {
    "filename",    "width",       "height", "ssf",       "alpha",     "alphaRed",
    "alphaGreen",  "alphaBlue",   "dpi",    "overwrite", "showImage", "alpha_premultiply",
    "tonemap_hdr", "cluster_host"};
const char* const kEmbedMetaDataArgs[] = {"embedRenderSettings", "embedCameraSettings",
                                          "embedNodeVisibilities", "embedSwitchNodeStates",
                                          "embedSwitchMaterialStates"};

} // namespace

void bindSnapshot()
{
    const char* const name = "createSnapshot";
    def(name, static_cast<void (*)(int, int)>(&createSnapshot), keywordsOf<2>(kDialogArgs));
    def(name, static_cast<void (*)(int, int, int)>(&createSnapshot), keywordsOf<3>(kDialogArgs));
    def(name, static_cast<void (*)(int, int, int, bool)>(&createSnapshot),
        keywordsOf<4>(kDialogArgs));
    def(name, static_cast<void (*)(int, int, int, bool, float)>(&createSnapshot),
        keywordsOf<5>(kDialogArgs));

    def(name, static_cast<bool (*)(const char*, int, int)>(&createSnapshot),
        keywordsOf<3>(kFileArgs));
    def(name, static_cast<bool (*)(const char*, int, int, int)>(&createSnapshot),
        keywordsOf<4>(kFileArgs));
    def(name, static_cast<bool (*)(const char*, int, int, int, bool)>(&createSnapshot),
        keywordsOf<5>(kFileArgs));
    def(name, static_cast<bool (*)(const char*, int, int, int, bool, float)>(&createSnapshot),
        keywordsOf<6>(kFileArgs));

    def(name,
        static_cast<bool (*)(const char*, int, int, int, bool, float, float, float, float, bool,
                             bool)>(&createSnapshot),
        keywordsOf<11>(kLongFileArgs));
    def(name,
        static_cast<bool (*)(const char*, int, int, int, bool, float, float, float, float, bool,
                             bool, bool)>(&createSnapshot),
        keywordsOf<12>(kLongFileArgs));
    def(name,
        static_cast<bool (*)(const char*, int, int, int, bool, float, float, float, float, bool,
                             bool, bool, bool)>(&createSnapshot),
        keywordsOf<13>(kLongFileArgs));
    // The float-size form has 14 arguments but only the 13 names of the form before it.
    // They name the last arguments, so here "filename" names the width and so on; existing
    // scripts call it that way, so the short list stays. The first argument has no name.
    def(name,
        static_cast<bool (*)(const char*, float, float, int, bool, float, float, float, float, bool,
                             bool, bool, bool, const char*)>(&createSnapshot),
        oxScriptBinding::trailingKeywordsOf<14, 13>(kLongFileArgs));
    def(name,
        static_cast<bool (*)(const char*, int, int, int, bool, float, float, float, float, bool,
                             bool, bool, bool, const char*)>(&createSnapshot),
        keywordsOf<14>(kLongFileArgs), oxMovieExportDoc(name));
}

void bindSnapshotSettings()
{
    const char* const fastInit = "createSnapshotFastInit";
    def(fastInit, static_cast<void (*)(int, int)>(&createSnapshotFastInit),
        (arg("width"), arg("height")));
    def(fastInit, static_cast<void (*)(int, int, int)>(&createSnapshotFastInit),
        (arg("width"), arg("height"), arg("ssf")), oxMovieExportDoc(fastInit));
    def("createSnapshotFast", &createSnapshotFast, arg("filename"),
        oxMovieExportDoc("createSnapshotFast"));
    def("createSnapshotFastTerminate", &createSnapshotFastTerminate,
        oxMovieExportDoc("createSnapshotFastTerminate"));

    def("setSnapshotQuality", &setSnapshotQuality, arg("quality"),
        oxMovieExportDoc("setSnapshotQuality"));
    def("setSnapshotNoShowImage", &setSnapshotNoShowImage, arg("state"),
        oxMovieExportDoc("setSnapshotNoShowImage"));
    def("setSnapshotICCProfile", &setSnapshotICCProfile, arg("profileID"),
        oxMovieExportDoc("setSnapshotICCProfile"));
    def("setSnapshotEmbedMetaData", &setSnapshotEmbedMetaData, keywordsOf<5>(kEmbedMetaDataArgs),
        oxMovieExportDoc("setSnapshotEmbedMetaData"));
}
