#include "oxMovieExportDocs.h"

#include <cstring>

// The arguments that renderAnimation and renderStepAnimation share, written once.
#define OX_ANIMATION_ARGUMENT_DOCS                                                                 \
    "@param animation: Name of the animation to render.\n\n"                                       \
    "@type animation: string\n\n"                                                                  \
    "@param filename: Name of the images. Each image gets its frame number before the "            \
    "extension.\n\n"                                                                               \
    "@type filename: string\n\n"                                                                   \
    "@param width: Width of the images in pixels.\n\n"                                             \
    "@type width: integer\n\n"                                                                     \
    "@param height: Height of the images in pixels.\n\n"                                           \
    "@type height: integer\n\n"                                                                    \
    "@param fps: Frames per second.\n\n"                                                           \
    "@type fps: integer\n\n"                                                                       \
    "@param startFrame: First frame to render.\n\n"                                                \
    "@type startFrame: integer\n\n"                                                                \
    "@param stopFrame: Last frame to render.\n\n"                                                  \
    "@type stopFrame: integer\n\n"                                                                 \
    "@param ssf: Supersampling factor. Any value greater than 0 enables supersampling.\n\n"        \
    "@type ssf: integer\n\n"                                                                       \
    "@param alpha: If true the images get an alpha channel.\n\n"                                   \
    "@type alpha: bool\n\n"                                                                        \
    "@param alphaRed: Red component of the color behind transparent pixels.\n\n"                   \
    "@type alphaRed: float\n\n"                                                                    \
    "@param alphaGreen: Green component of the color behind transparent pixels.\n\n"               \
    "@type alphaGreen: float\n\n"                                                                  \
    "@param alphaBlue: Blue component of the color behind transparent pixels.\n\n"                 \
    "@type alphaBlue: float\n\n"                                                                   \
    "@param overwrite: If true existing files are overwritten without asking.\n\n"                 \
    "@type overwrite: bool\n\n"                                                                    \
    "@param alpha_premultiply: If true the colors are premultiplied with alpha.\n\n"               \
    "@type alpha_premultiply: bool\n\n"

namespace {

struct CommandDoc {
    const char* command;
    const char* text;
};

// Texts follow the epydoc layout that script editors show: a description, then @param/@type
// per argument and @return/@rtype, blocks separated by an empty line. Several wordings are
// old and relied upon by users' tooling, slips included, so they are kept as they are.
const CommandDoc kCommandDocs[] = {
    {"createSnapshot",
     "Creates a snapshot of the current view and saves it as an image file.\n\n"
     "Eleven sets of parameters are valid:\n"
     "createSnapshot(width, height)\n"
     "createSnapshot(width, height, ssf)\n"
     "createSnapshot(width, height, ssf, alpha)\n"
     "createSnapshot(width, height, ssf, alpha, dpi)\n"
     "createSnapshot(filename, width, height)\n"
     "createSnapshot(filename, width, height, ssf)\n"
     "createSnapshot(filename, width, height, ssf, alpha)\n"
     "createSnapshot(filename, width, height, ssf, alpha, dpi)\n"
     "createSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi, "
     "overwrite, showImage)\n"
     "createSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi, "
     "overwrite, showImage, alpha_premultiply)\n"
     "createSnapshot(filename, width, height, ssf, alpha, alphaRed, alphaGreen, alphaBlue, dpi, "
     "overwrite, showImage, alpha_premultiply, tonemap_hdr)\n\n"
     "Without a filename a file dialog asks for the name of the image.\n\n"
     "@param filename: Name of the image file. Its extension selects the image format.\n\n"
     "@type filename: string\n\n"
     "@param width: Width of the image in pixels.\n\n"
     "@type width: integer\n\n"
     "@param height: Height of the image in pixels.\n\n"
     "@type height: integer\n\n"
     "@param ssf: Supersampling factor. Any value greater than 0 enables supersampling.\n\n"
     "@type ssf: integer\n\n"
     "@param alpha: If true the image gets an alpha channel.\n\n"
     "@type alpha: bool\n\n"
     "@param alphaRed: Red component of the color behind transparent pixels.\n\n"
     "@type alphaRed: float\n\n"
     "@param alphaGreen: Green component of the color behind transparent pixels.\n\n"
     "@type alphaGreen: float\n\n"
     "@param alphaBlue: Blue component of the color behind transparent pixels.\n\n"
     "@type alphaBlue: float\n\n"
     "@param dpi: Print resolution stored in the image, in dots per inch.\n\n"
     "@type dpi: float\n\n"
     "@param overwrite: If true an existing file is overwritten without asking.\n\n"
     "@type overwrite: bool\n\n"
     "@param showImage: If true the rendered image is shown.\n\n"
     "@type showImage: bool\n\n"
     "@param alpha_premultiply: If true the colors are premultiplied with alpha.\n\n"
     "@type alpha_premultiply: bool\n\n"
     "@param tonemap_hdr: If true high dynamic range images are tonemapped.\n\n"
     "@type tonemap_hdr: bool\n\n"
     "@return: True if the image was written, False otherwise. The forms without filename "
     "return nothing.\n\n"
     "@rtype: bool"},
    {"createSnapshotStream", nullptr},
    {"imageStream",
     "Redirects image write operations of function into a string which is returned. "
     "imageStream makes sense only with pythoneval calls on the webinterface. When a function "
     "produces multiple images, there is no way to keep them apart other when searching for "
     "image headers.Images will be held in memory during processing\n\n"
     "Example:\n"
     "binaryimage = imageStream(lambda: createSnapshot('D:/oxlin-snapshots/image.png', "
     "100,100,50))"},
    {"imageStreamBase64",
     "Redirects image write operations of function into a string which is returned\n\n"
     "When a function produces multiple images, there is no way to keep them apart other when "
     "searching for image headers.Images will be held in memory during processing\n\n"
     "Example:\n"
     "b64image = imageStreamBase64(lambda: createSnapshot('D:/oxlin-snapshots/image.png', "
     "100,100,50))"},
    {"createSnapshotFastInit",
     "Initializes the fast snapshot method setting the image resolution to width times height. "
     "Optionally, a supersampling factor can be specified."},
    {"createSnapshotFast", "Create a fast snapshot with the provided file name."},
    {"createSnapshotFastTerminate", "Terminates the creation of a fast snapshot."},
    {"setSnapshotQuality",
     "Sets the quality of the image to be exported. Only useful for file formats that define a "
     "compression quality like jpeg or png. -1 is the default value for reasonable "
     "compression."},
    {"setSnapshotNoShowImage",
     "Sets whether a rendered snapshot is shown.\n\n"
     "@param state: If state is set to true the rendered image is shown.\n\n"
     "@type state: bool"},
    {"setSnapshotICCProfile",
     "Sets the ICC profile of exported images.\n\n"
     "@param profileID: 0 uses the current settings from the render settings module, 1 sRGB, "
     "2 Adobe RGB 98, 3 the specified monitor ICC profile, 4 the specified image ICC "
     "profile.\n\n"
     "@type profileID: int"},
    {"setSnapshotEmbedMetaData",
     "Sets which meta data is embedded into exported images. Formats with meta data are png, "
     "jpg, tif and exr.\n\n"
     "@param embedRenderSettings: If true the render settings are embedded.\n\n"
     "@type embedRenderSettings: bool\n\n"
     "@param embedCameraSettings: If true the camera settings are embedded.\n\n"
     "@type embedCameraSettings: bool\n\n"
     "@param embedNodeVisibilities: If true the visibilities of the nodes are embedded.\n\n"
     "@type embedNodeVisibilities: bool\n\n"
     "@param embedSwitchNodeStates: If true the states of the switch nodes are embedded.\n\n"
     "@type embedSwitchNodeStates: bool\n\n"
     "@param embedSwitchMaterialStates: If true the states of the switch materials are "
     "embedded.\n\n"
     "@type embedSwitchMaterialStates: bool"},
    {"createMovie",
     "Renders a range of animation frames into images or a movie file.\n\n"
     "Four sets of parameters are valid:\n"
     "createMovie(filename, width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed, "
     "alphaGreen, alphaBlue, overwrite)\n"
     "createMovie(filename, width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed, "
     "alphaGreen, alphaBlue, overwrite, alpha_premultiply)\n"
     "createMovie(filename, width, height, fps, startFrame, stopFrame, ssf, alpha, alphaRed, "
     "alphaGreen, alphaBlue, overwrite, alpha_premultiply, step)\n"
     "createMovie(movie, filename, width, height, fps, startFrame, stopFrame, ssf, alpha, "
     "alphaRed, alphaGreen, alphaBlue, overwrite, alpha_premultiply, step, use_clip_range, "
     "export_type)\n"
     "createMovie(movie, filename, width, height, fps, startFrame, stopFrame, ssf, alpha, "
     "alphaRGB, overwrite, alpha_premultiply, step, tonemap_hdr, use_clip_range, export_type)\n\n"
     "@param movie: Name of the animation to render.\n\n"
     "@type movie: string\n\n"
     "@param filename: Name of the output file. Images get the frame number before the "
     "extension.\n\n"
     "@type filename: string\n\n"
     "@param width: Width of the images in pixels.\n\n"
     "@type width: integer\n\n"
     "@param height: Height of the images in pixels.\n\n"
     "@type height: integer\n\n"
     "@param fps: Frames per second.\n\n"
     "@type fps: integer\n\n"
     "@param startFrame: First frame to render.\n\n"
     "@type startFrame: integer\n\n"
     "@param stopFrame: Last frame to render.\n\n"
     "@type stopFrame: integer\n\n"
     "@param ssf: Supersampling factor. Any value greater than 0 enables supersampling.\n\n"
     "@type ssf: integer\n\n"
     "@param alpha: If true the images get an alpha channel.\n\n"
     "@type alpha: bool\n\n"
     "@param alphaRed: Red component of the color behind transparent pixels.\n\n"
     "@type alphaRed: float\n\n"
     "@param alphaGreen: Green component of the color behind transparent pixels.\n\n"
     "@type alphaGreen: float\n\n"
     "@param alphaBlue: Blue component of the color behind transparent pixels.\n\n"
     "@type alphaBlue: float\n\n"
     "@param alphaRGB: The color behind transparent pixels as three numbers separated by "
     "commas.\n\n"
     "@type alphaRGB: string\n\n"
     "@param overwrite: If true existing files are overwritten without asking.\n\n"
     "@type overwrite: bool\n\n"
     "@param alpha_premultiply: If true the colors are premultiplied with alpha.\n\n"
     "@type alpha_premultiply: bool\n\n"
     "@param step: Number of frames to advance after each rendered frame.\n\n"
     "@type step: integer\n\n"
     "@param tonemap_hdr: If true high dynamic range images are tonemapped.\n\n"
     "@type tonemap_hdr: bool\n\n"
     "@param use_clip_range: If true the frame range of the animation is rendered instead of "
     "startFrame to stopFrame.\n\n"
     "@type use_clip_range: bool\n\n"
     "@param export_type: export type is 0 if images are to be generated and 1 if exporting to "
     "AVI.\n\n"
     "@type export_type: integer"},
    {"renderAnimation",
     "Renders a range of frames of an animation into images.\n\n" OX_ANIMATION_ARGUMENT_DOCS
     "@param tonemap_hdr: Optional. If true high dynamic range images are tonemapped.\n\n"
     "@type tonemap_hdr: bool"},
    {"renderStepAnimation",
     "Renders every step-th frame of a range of frames of an animation into "
     "images.\n\n" OX_ANIMATION_ARGUMENT_DOCS
     "@param step: Number of frames to advance after each rendered frame.\n\n"
     "@type step: integer"},
    {"setActiveSnapshotMovieRenderPasses",
     "Sets the active renderpasses for rendering a snapshot using the createSnapshot or "
     "renderAnimation commands. This command does not change the scene settings. Renderpasses "
     "without a parameter are disabled. If no renderpass is enabled, only the beauty image is "
     "rendered.\n\n"
     "translucency_pass, incandescence_pass and material_id_pass are optional.\n\n"
     "@param beauty_pass: Enables the beauty pass.\n\n"
     "@type beauty_pass: bool\n\n"
     "@param diffuse_ibl_pass: Enables the diffuse IBL pass.\n\n"
     "@type diffuse_ibl_pass: bool\n\n"
     "@param diffuse_light_pass: Enables the diffuse light pass.\n\n"
     "@type diffuse_light_pass: bool\n\n"
     "@param glossy_ibl_pass: Enables the glossy IBL pass.\n\n"
     "@type glossy_ibl_pass: bool\n\n"
     "@param glossy_light_pass: Enables the glossy light pass.\n\n"
     "@type glossy_light_pass: bool\n\n"
     "@param specular_reflection_pass: Enables the specular reflection pass.\n\n"
     "@type specular_reflection_pass: bool\n\n"
     "@param specular_light_pass: This parameter is deprecated, the specular light pass no "
     "longer exists, therefore the parameter will be ignored.\n\n"
     "@type specular_light_pass: bool\n\n"
     "@param translucency_pass: Enables the translucency pass.\n\n"
     "@type translucency_pass: bool\n\n"
     "@param incandescence_pass: Enables the incandescence pass.\n\n"
     "@type incandescence_pass: bool\n\n"
     "@param diffuse_indirect_pass: Enables the diffuse indirect pass.\n\n"
     "@type diffuse_indirect_pass: bool\n\n"
     "@param glossy_indirect_pass: Enables the glossy indirect pass.\n\n"
     "@type glossy_indirect_pass: bool\n\n"
     "@param occlusion_pass: Enables the occlusion pass.\n\n"
     "@type occlusion_pass: bool\n\n"
     "@param normal_pass: Enables the normal pass.\n\n"
     "@type normal_pass: bool\n\n"
     "@param depth_pass: Enables the depth pass.\n\n"
     "@type depth_pass: bool\n\n"
     "@param material_id_pass: Enables the material id pass.\n\n"
     "@type material_id_pass: bool"},
    {"setCombinedChannelsRenderPasses",
     "Sets the active combined channels renderpasses for rendering a snapshot using the "
     "createSnapshot or renderAnimation commands. This command does not change the scene "
     "settings.\n\n"
     "@param beauty_pass: Enables the beauty pass.\n\n"
     "@type beauty_pass: bool\n\n"
     "@param diffuse_ibl_pass: Enables the diffuse IBL pass.\n\n"
     "@type diffuse_ibl_pass: bool\n\n"
     "@param diffuse_light_pass: Enables the diffuse light pass.\n\n"
     "@type diffuse_light_pass: bool\n\n"
     "@param glossy_ibl_pass: Enables the glossy IBL pass.\n\n"
     "@type glossy_ibl_pass: bool\n\n"
     "@param glossy_light_pass: Enables the glossy light pass.\n\n"
     "@type glossy_light_pass: bool\n\n"
     "@param specular_reflection_pass: Enables the specular reflection pass.\n\n"
     "@type specular_reflection_pass: bool\n\n"
     "@param translucency_pass: Enables the translucency pass.\n\n"
     "@type translucency_pass: bool\n\n"
     "@param incandescence_pass: Enables the incandescence pass.\n\n"
     "@type incandescence_pass: bool\n\n"
     "@param diffuse_indirect_pass: Enables the diffuse indirect pass.\n\n"
     "@type diffuse_indirect_pass: bool\n\n"
     "@param glossy_indirect_pass: Enables the glossy indirect pass.\n\n"
     "@type glossy_indirect_pass: bool\n\n"
     "@param transparency_pass: Optional. Enables the transparency pass; enabled if left "
     "out.\n\n"
     "@type transparency_pass: bool\n\n"
     "@param background_pass: Optional. Enables the background pass; enabled if left out.\n\n"
     "@type background_pass: bool"},
    {"setMaterialChannelsRenderPasses",
     "Sets the active material channels renderpasses for rendering a snapshot using the "
     "createSnapshot or renderAnimation commands. This command does not change the scene "
     "settings.\n\n"
     "@param diffuse_material_pass: Enables the diffuse color pass.\n\n"
     "@type diffuse_material_pass: bool\n\n"
     "@param glossy_material_pass: Enables the glossy color pass.\n\n"
     "@type glossy_material_pass: bool\n\n"
     "@param specular_material_pass: Enables the specular color pass.\n\n"
     "@type specular_material_pass: bool\n\n"
     "@param translucency_material_pass: Enables the translucency color pass.\n\n"
     "@type translucency_material_pass: bool\n\n"
     "@param transparency_material_pass: Enables the transparency color pass.\n\n"
     "@type transparency_material_pass: bool\n\n"
     "@param background_pass: Optional. Enables the background color pass.\n\n"
     "@type background_pass: bool\n\n"
     "@param incandescence_pass: Optional. Enables the incandescence pass.\n\n"
     "@type incandescence_pass: bool"},
    {"setIlluminationChannelsRenderPasses",
     "Sets the active illumination channels renderpasses for rendering a snapshot using the "
     "createSnapshot or renderAnimation commands. This command does not change the scene "
     "settings.\n\n"
     "@param diffuse_ibl_pass: Enables the diffuse IBL illumination pass.\n\n"
     "@type diffuse_ibl_pass: bool\n\n"
     "@param glossy_ibl_pass: Enables the glossy IBL illumination pass.\n\n"
     "@type glossy_ibl_pass: bool\n\n"
     "@param translucency_ibl_pass: Enables the translucency IBL illumination pass.\n\n"
     "@type translucency_ibl_pass: bool\n\n"
     "@param diffuse_light_pass: Enables the diffuse light illumination pass.\n\n"
     "@type diffuse_light_pass: bool\n\n"
     "@param glossy_light_pass: Enables the glossy light illumination pass.\n\n"
     "@type glossy_light_pass: bool\n\n"
     "@param translucency_light_pass: Enables the translucency light illumination pass.\n\n"
     "@type translucency_light_pass: bool\n\n"
     "@param diffuse_indirect_pass: Enables the diffuse indirect illumination pass.\n\n"
     "@type diffuse_indirect_pass: bool\n\n"
     "@param glossy_indirect_pass: Enables the glossy indirect illumination pass.\n\n"
     "@type glossy_indirect_pass: bool\n\n"
     "@param specular_indirect_pass: Enables the specular indirect illumination pass.\n\n"
     "@type specular_indirect_pass: bool\n\n"
     "@param translucency_indirect_pass: Enables the translucency indirect illumination "
     "pass.\n\n"
     "@type translucency_indirect_pass: bool"},
    {"setAuxiliaryChannelsRenderPasses",
     "Sets the active combined channels renderpasses for rendering a snapshot using the "
     "createSnapshot or renderAnimation commands. This command does not change the scene "
     "settings.\n\n"
     "@param occlusion_pass: Enables the occlusion pass.\n\n"
     "@type occlusion_pass: bool\n\n"
     "@param normal_pass: Enables the normal pass.\n\n"
     "@type normal_pass: bool\n\n"
     "@param depth_pass: Enables the depth pass.\n\n"
     "@type depth_pass: bool\n\n"
     "@param material_id_pass: Enables the material id pass.\n\n"
     "@type material_id_pass: bool\n\n"
     "@param mask_pass: Enables the mask pass.\n\n"
     "@type mask_pass: bool\n\n"
     "@param position_pass: Enables the position pass.\n\n"
     "@type position_pass: bool\n\n"
     "@param view_vector_pass: Enables the view vector pass.\n\n"
     "@type view_vector_pass: bool\n\n"
     "@param crypto_object_pass: Optional. Enables the object cryptomatte passes.\n\n"
     "@type crypto_object_pass: bool\n\n"
     "@param crypto_object_pass: Optional. Enables the material cryptomatte passes.\n\n"
     "@type crypto_object_pass: bool"},
    {"setImageProcessingRenderPasses",
     "Sets the active image processing renderpasses for rendering a snapshot using the "
     "createSnapshot or renderAnimation commands. This command does not change the scene "
     "settings.\n\n"
     "@param fog_pass: Enables the fog pass.\n\n"
     "@type fog_pass: bool\n\n"
     "@param lens_flare_pass: Enables the lens flare pass.\n\n"
     "@type lens_flare_pass: bool\n\n"
     "@param backplate_pass: Enables the backplate pass.\n\n"
     "@type backplate_pass: bool\n\n"
     "@param frontplate_pass: Enables the frontplate pass.\n\n"
     "@type frontplate_pass: bool"},
    {"resetActiveSnapshotMovieRenderPasses",
     "Resets the active renderpasses for rendering a snapshot using the createSnapshot or "
     "renderAnimation commands. This command does not change the scene settings."},
    {"getLastRenderTime", "Returns the duration in seconds of the last image render."},
    {"setExportTiffHDR", "Enables/Disables export of TIFF/PSD in HDR format."},
    {"getExportTiffHDR", "Return if TIFF/PSD is exported in HDR format."},
    {"setExportExrHalf", "Enables/Disables export of EXR format in 16 bit float."},
    {"getExportExrHalf", "Return if EXR is exported in 16 bit float format.\n\n"
                         "@return: True for 16 fit export, False otherwise."},
    {"setExportMultiLayer", "Enables/Disables export of TIFF/PSD as layers for render passes."},
    {"getExportMultiLayer", "Return if TIFF/PSD is exported as layers for render passes."},
};

} // namespace

const char* oxMovieExportDoc(const char* command)
{
    for (const CommandDoc& doc : kCommandDocs) {
        if (std::strcmp(doc.command, command) == 0)
            return doc.text;
    }
    return nullptr;
}

#undef OX_ANIMATION_ARGUMENT_DOCS
