#pragma once

// Commands that change the host's active render pass list directly, leaving the settings
// record alone. Each copies the host's list, pads it with false up to all pass ids, writes
// its ids and hands the list back.

/// Ids 0 to 9, then 14 and 15. The short form sets transparency and background on.
void setCombinedChannelsRenderPasses(bool beauty, bool diffuseIBL, bool diffuseLight,
                                     bool glossyIBL, bool glossyLight, bool specularReflection,
                                     bool translucency, bool incandescence, bool diffuseIndirect,
                                     bool glossyIndirect, bool transparency = true,
                                     bool background = true);

/// Ids 10 to 15, then 7 (written last).
void setMaterialChannelsRenderPasses(bool diffuse, bool glossy, bool specular, bool translucency,
                                     bool transparency, bool background = false,
                                     bool incandescence = false);

/// Ids 16 to 25 in order.
void setIlluminationChannelsRenderPasses(bool diffuseIBL, bool glossyIBL, bool translucencyIBL,
                                         bool diffuseLight, bool glossyLight,
                                         bool translucencyLight, bool diffuseIndirect,
                                         bool glossyIndirect, bool specularIndirect,
                                         bool translucencyIndirect);

/// Ids 30, 32, 33, 40, 41, 42, 43, then 34 to 36 and 37 to 39 together. Albedo (31) is always
/// cleared: it can't be chosen here.
void setAuxiliaryChannelsRenderPasses(bool occlusion, bool normal, bool depth, bool materialID,
                                      bool mask, bool position, bool viewVector,
                                      bool cryptoObject = false, bool cryptoMaterial = false);

/// Ids 26, 27, 28, 29: fog, lens flare, backplate, frontplate.
void setImageProcessingRenderPasses(bool fog, bool lensFlare, bool backplate, bool frontplate);

/// Replaces ids 0 to 43 at once (ids no argument reaches are cleared; 44 to 46 keep their
/// value). specularLight is accepted and ignored: that pass no longer exists. When none of the
/// color, occlusion, normal, depth, material id, fog and lens flare arguments is set, the
/// override ends instead (beauty only) and, with a GUI, a warning says so.
void setActiveSnapshotMovieRenderPasses(bool beauty, bool diffuseIBL, bool diffuseLight,
                                        bool glossyIBL, bool glossyLight, bool specularReflection,
                                        bool specularLight, bool translucency, bool incandescence,
                                        bool diffuseIndirect, bool glossyIndirect, bool occlusion,
                                        bool normal, bool depth, bool materialID, bool fog = false,
                                        bool lensFlare = false, bool frontplate = false,
                                        bool backplate = false, bool cryptoObject = false,
                                        bool cryptoMaterial = false);

/// Ends the override: the next export renders the passes of its settings.
void resetActiveSnapshotMovieRenderPasses();
