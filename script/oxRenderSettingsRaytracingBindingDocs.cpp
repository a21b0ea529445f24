#include "oxRenderSettingsRaytracingBindingDocs.h"

#include <cstring>

namespace {

struct CommandDoc {
    const char* command;
    const char* text;
};

// Texts follow the epydoc layout that script editors show: a description, then @param/@type
// per argument and @return/@rtype, blocks separated by an empty line. Several wordings are
// old and relied upon by users' tooling, slips included, so they are kept as they are.
const CommandDoc kCommandDocs[] = {
    {"setRaytracingCores", "Sets the maximum number of CPU cores used for raytracing.\n\n"
                           "@param numCores: The number of cores in [0, 1024]. Values below 1 "
                           "remove the limit.\n\n"
                           "@type numCores: integer"},
    {"getRaytracingCores", "Returns the maximum number of CPU cores used for raytracing.\n\n"
                           "@return: The number of cores; 9999999 when there is no limit.\n\n"
                           "@rtype: integer"},
    {"setRaytracingImageSamples", "Sets the number of samples per pixel an image is refined to.\n\n"
                                  "@param samples: The number of image samples.\n\n"
                                  "@type samples: integer"},
    {"getRaytracingImageSamples", "Returns the number of samples per pixel an image is refined "
                                  "to.\n\n"
                                  "@return: The number of image samples.\n\n"
                                  "@rtype: integer"},
    {"setRaytracingSamplesThreshold",
     "Sets the sample from which the rendering in the viewport is shown.\n\n"
     "@param samples: With this sample number the rendering gets updated.\n\n"
     "@type samples: integer"},
    {"getRaytracingSamplesThreshold",
     "Returns the sample from which the rendering in the viewport is shown.\n\n"
     "@return: The sample number.\n\n"
     "@rtype: integer"},
    {"setRaytracingAAInitialSamples", "This function is deprecated.\n\n"
                                      "@param samples: Ignored.\n\n"
                                      "@type samples: integer"},
    {"setRaytracingAAAdaptiveSamples", "This function is deprecated.\n\n"
                                       "@param samples: Ignored.\n\n"
                                       "@type samples: integer"},
    {"setRenderTimeInSeconds", "Sets the maximum render time of an image.\n\n"
                               "@param timeInSeconds: The render time in seconds.\n\n"
                               "@type timeInSeconds: integer"},
    {"getRenderTimeInSeconds", "Returns the maximum render time of an image.\n\n"
                               "@return: The render time in seconds.\n\n"
                               "@rtype: integer"},
    {"setUseRenderTimeLimit", "Chooses what ends the rendering of an image.\n\n"
                              "@param state: If true, the render time limit is used. Otherwise "
                              "the number of image samples is used.\n\n"
                              "@type state: bool"},
    {"getUseRenderTimeLimit", "If true, the render time limit is used. Otherwise the number of "
                              "image samples is used.\n\n"
                              "@return: True when the render time limit is used.\n\n"
                              "@rtype: bool"},
    {"setUseInfiniteRenderInViewport",
     "Enables rendering in the viewport without an end.\n\n"
     "@param state: If true, the viewport keeps refining the image.\n\n"
     "@type state: bool"},
    {"getUseInfiniteRenderInViewport",
     "Returns if the viewport renders without an end.\n\n"
     "@return: True when the viewport keeps refining the image.\n\n"
     "@rtype: bool"},
    {"setRaytracingAAThreshold", "This function is deprecated.\n\n"
                                 "@param threshold: Ignored.\n\n"
                                 "@type threshold: float"},
    {"setRaytracingAAThresholdQuality",
     "Sets the quality of adaptive antialiasing.\n\n"
     "@param threshold: The threshold quality level in [0,5].\n\n"
     "@type threshold: integer"},
    {"getRaytracingAAThresholdQuality", "Returns the quality of adaptive antialiasing.\n\n"
                                        "@return: The threshold quality level in [0,5].\n\n"
                                        "@rtype: integer"},
    {"setRaytracingAAImageFilter",
     "Sets the pixel filter of antialiasing.\n\n"
     "@param id: The filter in [0,9]: 0 = Box, 1 = Triangle, 2 = Gaussian, 3 = Mitchell, "
     "4 = Lanczos, 5 = BSpline, 6 = Catmull-Rom, 7 = Sharp Triangle, 8 = Sharp Gaussian, "
     "9 = Sharp BSpline.\n\n"
     "@type id: integer\n\n"
     "@param width: The filter width in pixels, in [0.5,5.0].\n\n"
     "@type width: float\n\n"
     "@param height: The filter height in pixels, in [0.5,5.0].\n\n"
     "@type height: float"},
    {"getRaytracingAAImageFilterType", "Returns the pixel filter of antialiasing.\n\n"
                                       "@return: The filter in [0,9].\n\n"
                                       "@rtype: integer"},
    {"getRaytracingAAImageFilterWidth", "Returns the width of the pixel filter.\n\n"
                                        "@return: The width in pixels.\n\n"
                                        "@rtype: float"},
    {"getRaytracingAAImageFilterHeight", "Returns the height of the pixel filter.\n\n"
                                         "@return: The height in pixels.\n\n"
                                         "@rtype: float"},
    {"setRaytracingClampingEnable",
     "Enables clamping of bright reflections, which removes fireflies.\n\n"
     "@param state: True to clamp.\n\n"
     "@type state: bool"},
    {"getRaytracingClampingEnable", "Returns if bright reflections are clamped.\n\n"
                                    "@return: True when clamping is on.\n\n"
                                    "@rtype: bool"},
    {"setRaytracingClampValue", "Sets the brightness at which reflections are clamped.\n\n"
                                "@param value: The clamp value.\n\n"
                                "@type value: float"},
    {"getRaytracingClampValue", "Returns the brightness at which reflections are clamped.\n\n"
                                "@return: The clamp value.\n\n"
                                "@rtype: float"},
    {"setRaytracingMotionBlurEnable", "Deprecated, Motion Blur is always on on a global level.\n\n"
                                      "@param state: Ignored.\n\n"
                                      "@type state: bool"},
    {"setRaytracingDOFEnable", "Deprecated, Depth of Field is always on on a global level.\n\n"
                               "@param state: Ignored.\n\n"
                               "@type state: bool"},
    {"setRaytracingInteractiveQualityMode",
     "Sets the illumination mode of interactive rendering.\n\n"
     "@param mode: The mode in [-1,3]: Precomputed = -1, Precomputed + Reflections = 0, "
     "Precomputed + Shadows = 1, Precomputed + IBL = 2, Full Global Illumination = 3.\n\n"
     "@type mode: integer"},
    {"getRaytracingInteractiveQualityMode",
     "Returns the illumination mode of interactive rendering.\n\n"
     "@return: The mode in [-1,3].\n\n"
     "@rtype: integer"},
    {"setRaytracingInteractiveQuality", "Sets the quality of interactive rendering.\n\n"
                                        "@param quality: The quality in [0,4].\n\n"
                                        "@type quality: integer"},
    {"getRaytracingInteractiveQuality", "Returns the quality of interactive rendering.\n\n"
                                        "@return: The quality in [0,4].\n\n"
                                        "@rtype: integer"},
    {"setRaytracingStillFrameQualityMode",
     "Sets the illumination mode of still frames.\n\n"
     "@param mode: The mode in [-1,3]: Precomputed = -1, Precomputed + Reflections = 0, "
     "Precomputed + Shadows = 1, Precomputed + IBL = 2, Full Global Illumination = 3.\n\n"
     "@type mode: integer"},
    {"getRaytracingStillFrameQualityMode", "Returns the illumination mode of still frames.\n\n"
                                           "@return: The mode in [-1,3].\n\n"
                                           "@rtype: integer"},
    {"setRaytracingStillFrameQuality", "Sets the quality of still frames.\n\n"
                                       "@param quality: The quality in [0,4].\n\n"
                                       "@type quality: integer"},
    {"getRaytracingStillFrameQuality", "Returns the quality of still frames.\n\n"
                                       "@return: The quality in [0,4].\n\n"
                                       "@rtype: integer"},
    {"setRaytracingInteractiveIBLQuality",
     "Sets the quality of image based lighting in interactive rendering.\n\n"
     "@param quality: The quality in [0,4].\n\n"
     "@type quality: integer"},
    {"getRaytracingInteractiveIBLQuality",
     "Returns the quality of image based lighting in interactive rendering.\n\n"
     "@return: The quality in [0,4].\n\n"
     "@rtype: integer"},
    {"setRaytracingStillFrameIBLQuality",
     "Sets the quality of image based lighting in still frames.\n\n"
     "@param quality: The quality in [0,4].\n\n"
     "@type quality: integer"},
    {"getRaytracingStillFrameIBLQuality",
     "Returns the quality of image based lighting in still frames.\n\n"
     "@return: The quality in [0,4].\n\n"
     "@rtype: integer"},
    {"setRaytracingInteractiveTraceDepth",
     "Sets the number of reflections traced in interactive rendering.\n\n"
     "@param depth: The trace depth.\n\n"
     "@type depth: integer"},
    {"getRaytracingInteractiveTraceDepth",
     "Returns the number of reflections traced in interactive rendering.\n\n"
     "@return: The trace depth.\n\n"
     "@rtype: integer"},
    {"setRaytracingStillFrameTraceDepth",
     "Sets the number of reflections traced in still frames.\n\n"
     "@param depth: The trace depth.\n\n"
     "@type depth: integer"},
    {"getRaytracingStillFrameTraceDepth",
     "Returns the number of reflections traced in still frames.\n\n"
     "@return: The trace depth.\n\n"
     "@rtype: integer"},
    {"setRaytracingPhotonMode",
     "Sets the photon mapping mode.\n\n"
     "@param mode: 0 = off, 1 = indirect only, 2 = indirect + caustics.\n\n"
     "@type mode: integer"},
    {"getRaytracingPhotonMode", "Returns the photon mapping mode.\n\n"
                                "@return: 0 = off, 1 = indirect only, 2 = indirect + caustics.\n\n"
                                "@rtype: integer"},
    {"setRaytracingInteractivePhotonCount",
     "Sets the number of photons traced in interactive rendering.\n\n"
     "@param count: The number of photons.\n\n"
     "@type count: integer"},
    {"getRaytracingInteractivePhotonCount",
     "Returns the number of photons traced in interactive rendering.\n\n"
     "@return: The number of photons.\n\n"
     "@rtype: integer"},
    {"setRaytracingStillFramePhotonCount", "Sets the number of photons traced in still frames.\n\n"
                                           "@param count: The number of photons.\n\n"
                                           "@type count: integer"},
    {"getRaytracingStillFramePhotonCount",
     "Returns the number of photons traced in still frames.\n\n"
     "@return: The number of photons.\n\n"
     "@rtype: integer"},
    {"setRaytracingPhotonLookupCount", "Sets the minimum number of photons that need to be "
                                       "collected during a photon lookup.\n\n"
                                       "@param count: The number of photons. Default is 16.\n\n"
                                       "@type count: integer"},
    {"getRaytracingPhotonLookupCount", "Returns the minimum number of photons that need to be "
                                       "collected during a photon lookup.\n\n"
                                       "@return: The number of photons.\n\n"
                                       "@rtype: integer"},
    {"setRaytracingFinalGathering",
     "Obsolete: sets the final gather quality of interactive rendering and still frames at "
     "once. Use setRaytracingInteractiveFinalGatherQuality and "
     "setRaytracingStillFrameFinalGatherQuality instead.\n\n"
     "@param quality: 0 = off, 1 = 1, 2 = 4, 3 = 8, 4 = 16 Final Gather rays per sample.\n\n"
     "@type quality: integer"},
    {"setRaytracingInteractiveFinalGatherQuality",
     "Sets the final gather quality of interactive rendering.\n\n"
     "@param quality: 0 = off, 1 = 1, 2 = 4, 3 = 8, 4 = 16 Final Gather rays per sample.\n\n"
     "@type quality: integer"},
    {"getRaytracingInteractiveFinalGatherQuality",
     "Returns the final gather quality of interactive rendering.\n\n"
     "@return: 0 = off, 1 = 1, 2 = 4, 3 = 8, 4 = 16 Final Gather rays per sample.\n\n"
     "@rtype: integer"},
    {"setRaytracingStillFrameFinalGatherQuality",
     "Sets the final gather quality of still frames.\n\n"
     "@param quality: 0 = off, 1 = 1, 2 = 4, 3 = 8, 4 = 16 Final Gather rays per sample.\n\n"
     "@type quality: integer"},
    {"getRaytracingStillFrameFinalGatherQuality",
     "Returns the final gather quality of still frames.\n\n"
     "@return: 0 = off, 1 = 1, 2 = 4, 3 = 8, 4 = 16 Final Gather rays per sample.\n\n"
     "@rtype: integer"},
    {"setRaytracingFinalGatherRadius", "Sets the radius of final gathering.\n\n"
                                       "@param radius: The radius.\n\n"
                                       "@type radius: float"},
    {"getRaytracingFinalGatherRadius", "Returns the radius of final gathering.\n\n"
                                       "@return: The radius.\n\n"
                                       "@rtype: float"},
    {"setRaytracingUseFinalGatherForGlossy",
     "Enables final gathering for glossy materials.\n\n"
     "@param state: True to gather for glossy materials too.\n\n"
     "@type state: bool"},
    {"getRaytracingUseFinalGatherForGlossy",
     "Returns if final gathering is used for glossy materials.\n\n"
     "@return: True when glossy materials are gathered too.\n\n"
     "@rtype: bool"},
    {"setRaytracingPhotonMapRefreshMode",
     "Sets when the photon map is computed again.\n\n"
     "@param mode: 0 = refresh photon map on each image sample, 1 = refresh only when "
     "necessary.\n\n"
     "@type mode: integer"},
    {"getRaytracingPhotonMapRefreshMode",
     "Returns when the photon map is computed again.\n\n"
     "@return: 0 = refresh photon map on each image sample, 1 = refresh only when "
     "necessary.\n\n"
     "@rtype: integer"},
    {"setRaytracingPhotonMapFreezeMode", "Freezes the photon map.\n\n"
                                         "@param mode: 0 = update as normal, 1 = freeze.\n\n"
                                         "@type mode: integer"},
    {"getRaytracingPhotonMapFreezeMode", "Returns if the photon map is frozen.\n\n"
                                         "@return: 0 = update as normal, 1 = freeze.\n\n"
                                         "@rtype: integer"},
    {"setRaytracingCausticPhotonRadius", "Deprecated! Sets the photon radius.\n\n"
                                         "@param radius: The photon radius.\n\n"
                                         "@type radius: float"},
    {"setRaytracingIndirectPhotonRadius", "Deprecated! Sets the photon radius.\n\n"
                                          "@param radius: The photon radius.\n\n"
                                          "@type radius: float"},
    {"setRaytracingPhotonRadius", "Sets the radius in which photons are collected.\n\n"
                                  "@param radius: The photon radius.\n\n"
                                  "@type radius: float"},
    {"getRaytracingPhotonRadius", "Returns the radius in which photons are collected.\n\n"
                                  "@return: The photon radius.\n\n"
                                  "@rtype: float"},
    {"setRaytracingNURBSEpsilon", "Sets the precision of NURBS raytracing.\n\n"
                                  "@param epsilon: The epsilon.\n\n"
                                  "@type epsilon: float"},
    {"setRaytracingNURBSNewtonEpsilon",
     "Sets the precision of the Newton iteration of NURBS raytracing.\n\n"
     "@param epsilon: The epsilon.\n\n"
     "@type epsilon: float"},
    {"setRaytracingNURBSUsePreclassification",
     "Deprecated: Enables trimming curve pre-classification.\n\n"
     "@param enable: True to pre-classify.\n\n"
     "@type enable: bool"},
    {"setRaytracingNURBSMinDepthSurface",
     "Sets the minimum subdivision depth of NURBS surfaces.\n\n"
     "@param depth: The depth.\n\n"
     "@type depth: integer"},
    {"setRaytracingNURBSMaxDepthSurface",
     "Sets the maximum subdivision depth of NURBS surfaces.\n\n"
     "@param depth: The depth.\n\n"
     "@type depth: integer"},
    {"setRaytracingNURBSThresholdSurface",
     "Sets the flatness threshold of the subdivision of NURBS surfaces.\n\n"
     "@param threshold: The threshold.\n\n"
     "@type threshold: float"},
    {"setRaytracingNURBSMinDepthCurve", "Sets the minimum subdivision depth of trimming curves.\n\n"
                                        "@param depth: The depth.\n\n"
                                        "@type depth: integer"},
    {"setRaytracingNURBSMaxDepthCurve", "Sets the maximum subdivision depth of trimming curves.\n\n"
                                        "@param depth: The depth.\n\n"
                                        "@type depth: integer"},
    {"setRaytracingNURBSThresholdCurve",
     "Sets the flatness threshold of the subdivision of trimming curves.\n\n"
     "@param threshold: The threshold.\n\n"
     "@type threshold: float"},
    {"setRaytracingSampleOffset",
     "Sets the sample the computation starts with. This allows to use some sort of manual "
     "image refinement be offsetting the starting sample of the computation and merging the "
     "final image with a previous render.\n\n"
     "@param samplingOffset: The first sample.\n\n"
     "@type samplingOffset: integer"},
    {"getRaytracingSampleOffset", "Returns the sample the computation starts with.\n\n"
                                  "@return: The first sample.\n\n"
                                  "@rtype: integer"},
    {"setRaytracingInteractiveTextureSharpness",
     "Sets the texture sharpness of interactive rendering. WARNING: Changing this settings may "
     "lead to rendering artifacts!\n\n"
     "@param sharpness: The sharpness.\n\n"
     "@type sharpness: float"},
    {"getRaytracingInteractiveTextureSharpness",
     "Returns the texture sharpness of interactive rendering.\n\n"
     "@return: The sharpness.\n\n"
     "@rtype: float"},
    {"setRaytracingStillFrameTextureSharpness",
     "Sets the texture sharpness of still frames. WARNING: Changing this settings may lead to "
     "rendering artifacts!\n\n"
     "@param sharpness: The sharpness.\n\n"
     "@type sharpness: float"},
    {"getRaytracingStillFrameTextureSharpness", "Returns the texture sharpness of still frames.\n\n"
                                                "@return: The sharpness.\n\n"
                                                "@rtype: float"},
    {"setRaytracingLightEvaluationThreshold",
     "Sets the threshold below which a light's contribution isn't evaluated. Lower values are "
     "more accurate, higher values increase performance.\n\n"
     "@param threshold: The threshold in [0.0,1.0].\n\n"
     "@type threshold: float"},
    {"getRaytracingLightEvaluationThreshold",
     "Returns the threshold below which a light's contribution isn't evaluated.\n\n"
     "@return: The threshold in [0.0,1.0].\n\n"
     "@rtype: float"},
    {"setRaytracingRenderer", "Internal function.\n\n"
                              "@param mode: The renderer.\n\n"
                              "@type mode: integer"},
    {"setSpectralRaytracing", "Enables spectral raytracing.\n\n"
                              "@param on: True for spectral, False for RGB raytracing.\n\n"
                              "@type on: bool"},
    {"getSpectralRaytracing", "Returns if raytracing is spectral.\n\n"
                              "@return: True for spectral, False for RGB raytracing.\n\n"
                              "@rtype: bool"},
    {"setRaytracingMode", "Chooses the processor of raytracing.\n\n"
                          "@param mode: 0 = CPU, 1 = GPU. Any other value means GPU too.\n\n"
                          "@type mode: integer"},
    {"getRaytracingMode", "Returns the processor of raytracing.\n\n"
                          "@return: 0 = CPU, 1 = GPU.\n\n"
                          "@rtype: integer"},
    {"setActiveGPUMask", "Sets the GPUs used for gpu raytracing. This must be set before gpu "
                         "raytracing is activated.\n\n"
                         "@param mask: One bit per GPU, bit 0 for the first.\n\n"
                         "@type mask: integer"},
    {"setUseRaySplitting", "Enables raysplitting for glass and carpaint materials.\n\n"
                           "@param on: True to split rays.\n\n"
                           "@type on: bool"},
    {"setDenoiserInput", "Sets the images the denoiser uses.\n\n"
                         "@param type: 0 = color only, 1 = color and albedo, 2 = color, albedo "
                         "and normal.\n\n"
                         "@type type: integer"},
    {"setUseTwoSampleImportanceSampling", "Enables importance sampling with two samples.\n\n"
                                          "@param on: True to use two samples.\n\n"
                                          "@type on: bool"},
    {"setMaxClusterTileSize", "Sets the largest tile into which an image is split for "
                              "rendering.\n\n"
                              "@param tilesize: The tile size in pixels; must be between 32 and "
                              "256.\n\n"
                              "@type tilesize: integer"},
    {"setIlluminant", "Sets the illuminant of spectral raytracing. The XYZ-Illuminant does not "
                      "convert the rendered image to RGB but outputs the XYZ values instead.\n\n"
                      "@param illuminant: 0 = Equal Energy, 1 = D65, 2 = XYZ.\n\n"
                      "@type illuminant: integer"},
    {"getIlluminant", "Returns the illuminant of spectral raytracing.\n\n"
                      "@return: 0 = Equal Energy, 1 = D65, 2 = XYZ.\n\n"
                      "@rtype: integer"},
    {"setRaytracingUseHighQualityTextureFiltering",
     "Enables high quality texture filtering. This can slow down rendering performance quite a "
     "bit..\n\n"
     "@param enable: True for high quality filtering.\n\n"
     "@type enable: bool"},
    {"getRaytracingUseHighQualityTextureFiltering",
     "Returns if textures are filtered in high quality.\n\n"
     "@return: True for high quality filtering.\n\n"
     "@rtype: bool"},
    {"setRaytracingStillFrameSupersampling",
     "Sets the supersampling of still frames; requires factor * factor times more memory for "
     "the framebuffer.\n\n"
     "@param factor: The supersampling factor; 1 is off.\n\n"
     "@type factor: integer"},
    {"getRaytracingStillFrameSupersampling", "Returns the supersampling of still frames.\n\n"
                                             "@return: The supersampling factor; 1 is off.\n\n"
                                             "@rtype: integer"},
    {"setNURBSRaytracing", "If off, the tessellated meshes will be used during raytracing. If "
                           "on, the NURBS surfaces will be traced directly.\n\n"
                           "@param on: True to trace NURBS surfaces directly.\n\n"
                           "@type on: bool"},
    {"getNURBSRaytracing", "Returns if NURBS surfaces are traced directly.\n\n"
                           "@return: True when NURBS surfaces are traced directly.\n\n"
                           "@rtype: bool"},
    {"setBrdfMode", "Sets the BRDF behaviour of all materials.\n\n"
                    "@param mode: 0 = Ver. 6.0x and below, 1 = Ver. 2014 and above, 2 = Energy "
                    "Preserving GGX.\n\n"
                    "@type mode: integer"},
    {"getBrdfMode", "Returns the BRDF behaviour of all materials.\n\n"
                    "@return: 0 = Ver. 6.0x and below, 1 = Ver. 2014 and above, 2 = Energy "
                    "Preserving GGX.\n\n"
                    "@rtype: integer"},
    {"disableRaytracingOverrides", "Disables the raytracing override settings in all "
                                   "materials."},
    {"setRaytracingRenderRegion",
     "Sets the region of the image that is rendered, relative to the image size. The full "
     "image turns the region off. The corners may be given in any order.\n\n"
     "setRaytracingRenderRegion(xBegin, yBegin, xEnd, yEnd)\n\n"
     "@param xBegin: The x-coordinate of one corner, in [0,1].\n\n"
     "@type xBegin: float\n\n"
     "@param yBegin: The y-coordinate of one corner, in [0,1], from the bottom.\n\n"
     "@type yBegin: float\n\n"
     "@param xEnd: The x-coordinate of the other corner, in [0,1].\n\n"
     "@type xEnd: float\n\n"
     "@param yEnd: The y-coordinate of the other corner, in [0,1], from the bottom.\n\n"
     "@type yEnd: float"},
    {"setRenderPNGQuality", "Sets the compression level of PNG images. Valid values range from "
                            "0 to 9. Default is 1.\n\n"
                            "@param quality: The compression level.\n\n"
                            "@type quality: integer"},
    {"getRenderPNGQuality", "Returns the compression level of PNG images.\n\n"
                            "@return: The compression level.\n\n"
                            "@rtype: integer"},
    {"generateRayFile",
     "Generates a rayfile in ASCII format. Usage: Apply a diffuse black material to every "
     "object that is not supposed to reflect any light. Rays are stored on each diffuse hit at "
     "the moment.\n\n"
     "@param filename: Name of the ray file.\n\n"
     "@type filename: string\n\n"
     "@param numPhotons: The number of photons traced from the lights.\n\n"
     "@type numPhotons: integer\n\n"
     "@param maxDepth: The number of surface hits followed per photon.\n\n"
     "@type maxDepth: integer\n\n"
     "@return: True if the file was written, False otherwise.\n\n"
     "@rtype: bool"},
    {"addPreset", "Add preset to Render Queue.\n\n"
                  "@param name: Name of the preset.\n\n"
                  "@type name: string"},
    {"applyPreset", "Apply preset in Render Queue .\n\n"
                    "@param name: Name of the preset.\n\n"
                    "@type name: string"},
    {"setDenoiseFilter", "Sets when images are denoised.\n\n"
                         "@param filterType: 0 = Off, 2 = AI Denoiser stillframe only, 3 = AI "
                         "Denoiser Always.\n\n"
                         "@type filterType: integer"},
    {"getDenoiseFilter", "Returns when images are denoised.\n\n"
                         "@return: 0 = Off, 2 = AI Denoiser stillframe only, 3 = AI Denoiser "
                         "Always.\n\n"
                         "@rtype: integer"},
    {"setDenoiserType", "Sets the processor of the denoiser.\n\n"
                        "@param denoiserType: 0 = GPU/Auto, 1 = CPUs.\n\n"
                        "@type denoiserType: integer"},
    {"getDenoiserType", "Returns the processor of the denoiser.\n\n"
                        "@return: 0 = GPU/Auto, 1 = CPUs.\n\n"
                        "@rtype: integer"},
    {"setDenoiserModel", "Sets the model of the denoiser.\n\n"
                         "@param model: 0 = Default model, 1 = Lightmap model if available, "
                         "2 = AOV model if available.\n\n"
                         "@type model: integer"},
    {"getDenoiserModel", "Returns the model of the denoiser.\n\n"
                         "@return: 0 = Default model, 1 = Lightmap model if available, 2 = AOV "
                         "model if available.\n\n"
                         "@rtype: integer"},
    {"setDenoiseAlpha", "Chooses what the denoiser does with the alpha channel.\n\n"
                        "@param model: True: denoise the alpha channel, false: just copy it.\n\n"
                        "@type model: bool"},
    {"getDenoiseAlpha", "Returns what the denoiser does with the alpha channel.\n\n"
                        "@return: True: denoise the alpha channel, false: just copy it.\n\n"
                        "@rtype: bool"},
    {"setEnableDenoiseFilter", "Deprecated: use setDenoiseFilter. Enables the denoiser for "
                               "still frames.\n\n"
                               "@param on: True to denoise still frames.\n\n"
                               "@type on: bool"},
    {"getEnableDenoiseFilter", "Deprecated: use getDenoiseFilter.\n\n"
                               "@return: Always False.\n\n"
                               "@rtype: bool"},
    {"setDenoiseFilterThreshold", "This function is deprecated.\n\n"
                                  "@param value: Ignored.\n\n"
                                  "@type value: float"},
    {"getDenoiseFilterThreshold", "This function is deprecated.\n\n"
                                  "@return: Always 0.0.\n\n"
                                  "@rtype: float"},
};

} // namespace

const char* renderSettingsRaytracingDoc(const char* command)
{
    for (const CommandDoc& doc : kCommandDocs) {
        if (std::strcmp(doc.command, command) == 0)
            return doc.text;
    }
    return nullptr;
}
