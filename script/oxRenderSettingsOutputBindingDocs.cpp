#include "oxRenderSettingsOutputBindingDocs.h"

#include <cstring>

namespace {

struct CommandDoc {
    const char* command;
    const char* text;
};

// Texts follow the epydoc layout that script editors show: a description, then @param/@type
// per argument and @return/@rtype, blocks separated by an empty line. Some descriptions are
// old and relied upon by users' tooling, slips included, so they are kept as they are.
const CommandDoc kCommandDocs[] = {
    {"getRenderView", "Returns the name of the view used for rendering.\n\n"
                      "@return: Name of the camera, viewpoint or camera track, \"Current\" for "
                      "the current position.\n\n"
                      "@rtype: string"},
    {"setRenderCurrentView", "Sets the view to use the current position."},
    {"setRenderView", "Sets the view used for rendering. A name that no camera, viewpoint or "
                      "camera track bears selects the current position.\n\n"
                      "@param viewName: Name of a camera, viewpoint or camera track.\n\n"
                      "@type viewName: string"},
    {"getRenderOutputFilenames",
     "Returns all filenames that will be created when rendering is started, i.e. when using "
     "multiple viewpoints, animation frames or variant sets.\n\n"
     "@return: All names of files to be created.\n\n"
     "@rtype: vector<string>"},
    {"setRenderVariantSets",
     "Sets the variant sets of a group to render. The group is added when it is missing. Both "
     "parameters are given by position.\n\n"
     "@param groupName: Name of the variant set group.\n\n"
     "@type groupName: string\n\n"
     "@param variantSetNames: Names of the variant sets of the group to render.\n\n"
     "@type variantSetNames: vector<string>"},
    {"getRenderVariantSets", "Returns the variant sets of a group to render.\n\n"
                             "@param groupName: Name of the variant set group.\n\n"
                             "@type groupName: string\n\n"
                             "@return: Names of the variant sets, empty for an unknown group.\n\n"
                             "@rtype: vector<string>"},
    {"clearRenderVariantSetGroups", "Removes all variant set groups from the render settings."},
    {"removeRenderVariantSetGroup", "Removes a variant set group from the render settings.\n\n"
                                    "@param groupName: Name of the variant set group.\n\n"
                                    "@type groupName: string"},
    {"getRenderVariantSetGroups", "Returns the variant set groups of the render settings.\n\n"
                                  "@return: Names of the groups, in their order.\n\n"
                                  "@rtype: vector<string>"},
    {"setUseRenderViewFromVariantSets",
     "Enables using of views in variant sets, i.e. applying a variant set may also change the "
     "view\n\n"
     "@param state: True to use the views of variant sets.\n\n"
     "@type state: bool"},
    {"getUseRenderViewFromVariantSets",
     "Returns if the views of variant sets are used.\n\n"
     "@return: True if applying a variant set may change the view.\n\n"
     "@rtype: bool"},
    {"setUseRenderVariantSets", "Enables rendering of the chosen variant sets.\n\n"
                                "@param state: True to render each combination of the chosen "
                                "variant sets.\n\n"
                                "@type state: bool"},
    {"getUseRenderVariantSets", "Returns if the chosen variant sets are rendered.\n\n"
                                "@return: True if variant sets are rendered.\n\n"
                                "@rtype: bool"},
    {"setRenderPrintResolution",
     "Sets the image size by its print size. The size in pixels follows. All parameters are "
     "given by position.\n\n"
     "@param printWidth: Width of the print in centimeters.\n\n"
     "@type printWidth: float\n\n"
     "@param printHeight: Height of the print in centimeters.\n\n"
     "@type printHeight: float\n\n"
     "@param pixelsPerInch: Print resolution in pixels per inch.\n\n"
     "@type pixelsPerInch: float"},
    {"getRenderPrintWidth", "Returns the width of the print.\n\n"
                            "@return: Width in centimeters.\n\n"
                            "@rtype: float"},
    {"getRenderPrintHeight", "Returns the height of the print.\n\n"
                             "@return: Height in centimeters.\n\n"
                             "@rtype: float"},
    {"getRenderPixelPerInch", "Returns the print resolution.\n\n"
                              "@return: Pixels per inch.\n\n"
                              "@rtype: float"},
    {"setRenderPixelResolution",
     "Sets the image size in pixels and the print resolution. The print size follows. All "
     "parameters are given by position.\n\n"
     "@param pixelWidth: Width of the image in pixels.\n\n"
     "@type pixelWidth: float\n\n"
     "@param pixelHeight: Height of the image in pixels.\n\n"
     "@type pixelHeight: float\n\n"
     "@param pixelsPerInch: Print resolution in pixels per inch.\n\n"
     "@type pixelsPerInch: float"},
    {"getRenderPixelWidth", "Returns the width of the image in pixels. Note that these are "
                            "floating point values due to the print width used.\n\n"
                            "@return: Width in pixels.\n\n"
                            "@rtype: float"},
    {"getRenderPixelHeight", "Returns the height of the image in pixels. Note that these are "
                             "floating point values due to the print width used.\n\n"
                             "@return: Height in pixels.\n\n"
                             "@rtype: float"},
    {"setRenderFilename", "Sets the name of the file to render to. Its extension selects the "
                          "image format.\n\n"
                          "@param filename: Name of the file.\n\n"
                          "@type filename: string"},
    {"getRenderFilename", "Returns the name of the file to render to.\n\n"
                          "@return: Name of the file.\n\n"
                          "@rtype: string"},
    {"setUseRenderRegion", "Enables rendering of a region of the image only.\n\n"
                           "@param state: True to render the region only.\n\n"
                           "@type state: bool"},
    {"getUseRenderRegion", "Returns if a region of the image is rendered only.\n\n"
                           "@return: True if the region is rendered only.\n\n"
                           "@rtype: bool"},
    {"setRenderRegionStartX", "Sets the left x-coordinate of the render region.\n\n"
                              "@param startX: Left x-coordinate in pixels.\n\n"
                              "@type startX: integer"},
    {"getRenderRegionStartX", "Returns the left x-coordinate of the render region.\n\n"
                              "@return: Left x-coordinate in pixels.\n\n"
                              "@rtype: integer"},
    {"setRenderRegionStartY", "Sets the upper y-coordinate of the render region.\n\n"
                              "@param startX: Upper y-coordinate in pixels.\n\n"
                              "@type startX: integer"},
    {"getRenderRegionStartY", "Returns the upper y-coordinate of the render region.\n\n"
                              "@return: Upper y-coordinate in pixels.\n\n"
                              "@rtype: integer"},
    {"setRenderRegionEndX", "Sets the right x-coordinate of the render region.\n\n"
                            "@param endX: Right x-coordinate in pixels.\n\n"
                            "@type endX: integer"},
    {"getRenderRegionEndX", "Returns the right x-coordinate of the render region.\n\n"
                            "@return: Right x-coordinate in pixels.\n\n"
                            "@rtype: integer"},
    {"setRenderRegionEndY", "Sets the lower y-coordinate of the render region.\n\n"
                            "@param endY: Lower y-coordinate in pixels.\n\n"
                            "@type endY: integer"},
    {"getRenderRegionEndY", "Returns the lower y-coordinate of the render region.\n\n"
                            "@return: Lower y-coordinate in pixels.\n\n"
                            "@rtype: integer"},
    {"setRenderSupersampling", "Enables antialiasing.\n\n"
                               "@param state: 0 is off, any other value on.\n\n"
                               "@type state: integer"},
    {"getRenderSupersampling", "Returns if antialiasing is enabled.\n\n"
                               "@return: 0 if off, another value if on.\n\n"
                               "@rtype: integer"},
    {"setRenderTonemapHDR", "Enables tonemapping of high dynamic range images.\n\n"
                            "@param state: True to tonemap.\n\n"
                            "@type state: bool"},
    {"getRenderTonemapHDR", "Returns if high dynamic range images are tonemapped.\n\n"
                            "@return: True if tonemapped.\n\n"
                            "@rtype: bool"},
    {"setRenderPremultiply", "Enables premultiplication of the colors with alpha.\n\n"
                             "@param state: True to premultiply.\n\n"
                             "@type state: bool"},
    {"getRenderPremultiply", "Returns if the colors are premultiplied with alpha.\n\n"
                             "@return: True if premultiplied.\n\n"
                             "@rtype: bool"},
    {"setRenderAlpha", "Enables the alpha channel of the images.\n\n"
                       "@param state: True for an alpha channel.\n\n"
                       "@type state: bool"},
    {"getRenderAlpha", "Returns if the images get an alpha channel.\n\n"
                       "@return: True for an alpha channel.\n\n"
                       "@rtype: bool"},
    {"setRenderICCProfile",
     "Sets the color profile of the images.\n\n"
     "@param state: 0 = current scene settings, 1 = sRGB, 2 = AdobeRGB, 3 = Specified Monitor "
     "ICC Profile, 4 = Specified Image ICC Profile.\n\n"
     "@type state: integer"},
    {"getRenderICCProfile",
     "Returns the color profile of the images.\n\n"
     "@return: 0 = current scene settings, 1 = sRGB, 2 = AdobeRGB, 3 = Specified Monitor ICC "
     "Profile, 4 = Specified Image ICC Profile.\n\n"
     "@rtype: integer"},
    {"setRenderBackgroundColor", "Sets the color behind transparent pixels.\n\n"
                                 "@param r: Red component.\n\n"
                                 "@type r: float\n\n"
                                 "@param g: Green component.\n\n"
                                 "@type g: float\n\n"
                                 "@param b: Blue component.\n\n"
                                 "@type b: float"},
    {"getRenderBackgroundColor", "Returns the color behind transparent pixels.\n\n"
                                 "@return: Red, green and blue component.\n\n"
                                 "@rtype: Vec3f"},
    {"setUseRenderPasses", "Enables rendering of render passes.\n\n"
                           "@param state: True to render the chosen render passes.\n\n"
                           "@type state: bool"},
    {"getUseRenderPasses", "Returns if render passes are rendered.\n\n"
                           "@return: True if the chosen render passes are rendered.\n\n"
                           "@rtype: bool"},
    {"setRenderPasses",
     "Chooses the render passes to render; all others are turned off. Unknown names are "
     "ignored.\n\n"
     "@param passes: Names of the render passes: beauty, diffuse_ibl, diffuse_light, "
     "glossy_ibl, glossy_light, specular_reflection, translucency, incandescence, "
     "diffuse_indirect, glossy_indirect, diffuse_color, glossy_color, specular_color, "
     "translucency_color, transparency_color, background_color, diffuse_ibl_illumination, "
     "glossy_ibl_illumination, translucency_ibl_illumination, diffuse_light_illumination, "
     "glossy_light_illumination, translucency_light_illumination, "
     "diffuse_indirect_illumination, glossy_indirect_illumination, "
     "specular_indirect_illumination, translucency_indirect_illumination, fog, lens_flare, "
     "occlusion, albedo, normal, camera_normal, depth, materialID, mask, position, view, "
     "cryptoObjectMatte, cryptoMaterialMatte, frontplates, backplates.\n\n"
     "@type passes: vector<string>"},
    {"getRenderPasses", "Returns the chosen render passes.\n\n"
                        "@return: Names of the render passes.\n\n"
                        "@rtype: vector<string>"},
    {"setRenderMetaDataFlags",
     "Sets the meta data embedded into the images.\n\n"
     "@param flags: Sum of CAMERA_DATA = 1, SCENEGRAPH_VISIBILITY_STATE = 1 << 1, "
     "SCENEGRAPH_SWITCH_CHOICE_STATE = 1 << 2, FILEOUTPUT_IMAGE_SETTINGS = 1 << 3, "
     "FILEOUTPUT_ANIMATION_SETTINGS = 1 << 4, FILEOUTPUT_RENDERPASSES_SETTINGS = 1 << 5, "
     "RAYTRACING_SETTINGS = 1 << 6, SWITCH_MATERIAL_CHOICE_STATE = 1 << 7.\n\n"
     "@type flags: integer"},
    {"getRenderMetaDataFlags", "Returns the meta data embedded into the images.\n\n"
                               "@return: Sum of the meta data flags.\n\n"
                               "@rtype: integer"},
    {"setRenderAnimation", "Enables rendering of an animation instead of a single image.\n\n"
                           "@param enable: True to render an animation.\n\n"
                           "@type enable: bool"},
    {"getRenderAnimation", "Returns if an animation is rendered.\n\n"
                           "@return: True if an animation is rendered.\n\n"
                           "@rtype: bool"},
    {"setRenderAnimationFormat", "Sets the output format of an animation.\n\n"
                                 "@param format: 0 = Images, 1 = Movie.\n\n"
                                 "@type format: integer"},
    {"getRenderAnimationFormat", "Returns the output format of an animation.\n\n"
                                 "@return: 0 = Images, 1 = Movie.\n\n"
                                 "@rtype: integer"},
    {"setRenderAnimationType", "Sets what drives an animation.\n\n"
                               "@param type: 0 = Clip, 1 = Timeline.\n\n"
                               "@type type: integer"},
    {"getRenderAnimationType", "Returns what drives an animation.\n\n"
                               "@return: 0 = Clip, 1 = Timeline.\n\n"
                               "@rtype: integer"},
    {"setRenderAnimationClip", "Sets the clip to render.\n\n"
                               "@param clipname: Name of the clip.\n\n"
                               "@type clipname: string"},
    {"getRenderAnimationClip", "Returns the clip to render.\n\n"
                               "@return: Name of the clip.\n\n"
                               "@rtype: string"},
    {"getRenderAnimationClips", "Returns the clips of the scene.\n\n"
                                "@return: Names of the clips.\n\n"
                                "@rtype: vector<string>"},
    {"setRenderUseClipRange",
     "Uses the range of the chosen clip instead the start and stop frame range.\n\n"
     "@param enable: True to use the range of the clip.\n\n"
     "@type enable: bool"},
    {"getRenderUseClipRange", "Returns if the range of the chosen clip is used.\n\n"
                              "@return: True if the range of the clip is used.\n\n"
                              "@rtype: bool"},
    {"setRenderStartFrame", "Sets the first frame of an animation.\n\n"
                            "@param frame: Frame number.\n\n"
                            "@type frame: integer"},
    {"setRenderStopFrame", "Sets the last frame of an animation.\n\n"
                           "@param frame: Frame number.\n\n"
                           "@type frame: integer"},
    {"getRenderStartFrame", "Returns the first frame of an animation.\n\n"
                            "@return: Frame number.\n\n"
                            "@rtype: integer"},
    {"getRenderStopFrame", "Returns the last frame of an animation.\n\n"
                           "@return: Frame number.\n\n"
                           "@rtype: integer"},
    {"setRenderFrameStep", "Sets the step between the rendered frames of an animation.\n\n"
                           "@param step: Number of frames.\n\n"
                           "@type step: integer"},
    {"getRenderFrameStep", "Returns the step between the rendered frames of an animation.\n\n"
                           "@return: Number of frames.\n\n"
                           "@rtype: integer"},
    {"setRenderFps", "Sets the frames per second of a movie.\n\n"
                     "@param fps: Frames per second.\n\n"
                     "@type fps: integer"},
    {"getRenderFps", "Returns the frames per second of a movie.\n\n"
                     "@return: Frames per second.\n\n"
                     "@rtype: integer"},
    {"startRenderToFile",
     "Starts rendering to file using the current render settings.\n\n"
     "@param alwaysOverride: True to overwrite existing files without a warning. If False and "
     "a file exists, nothing is rendered.\n\n"
     "@type alwaysOverride: bool"},
};

} // namespace

const char* oxRenderSettingsOutputDoc(const char* command)
{
    for (const CommandDoc& doc : kCommandDocs) {
        if (std::strcmp(doc.command, command) == 0)
            return doc.text;
    }
    return nullptr;
}
