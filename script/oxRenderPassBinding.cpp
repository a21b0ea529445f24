#include "oxRenderPassBinding.h"

#include "oxScriptBinding.h"

#include "oxActiveRenderPasses.h"
#include "oxMovieExportDocs.h"

#include <cstddef>

using namespace boost::python;
using oxScriptBinding::keywordsOf;

namespace {

// The forms of setActiveSnapshotMovieRenderPasses differ in which passes they take, not only
// in how many: older scripts pass 12, 13 or 14 arguments and the newest form 15. Each row is
// an argument, in the order of the full command, with the forms that take it.
enum ActiveForm { Form12, Form13, Form14, Form15, FormCount };
struct ActivePassArg {
    const char* keyword;
    bool inForm[FormCount];
};
const ActivePassArg kActivePassArgs[] = {
    {"beauty_pass", {true, true, true, true}},
    {"diffuse_ibl_pass", {true, true, true, true}},
    {"diffuse_light_pass", {true, true, true, true}},
    {"glossy_ibl_pass", {true, true, true, true}},
    {"glossy_light_pass", {true, true, true, true}},
    {"specular_reflection_pass", {true, true, true, true}},
    {"specular_light_pass", {true, true, true, true}},
    {"translucency_pass", {false, false, false, true}},
    {"incandescence_pass", {false, true, true, true}},
    {"diffuse_indirect_pass", {true, true, true, true}},
    {"glossy_indirect_pass", {true, true, true, true}},
    {"occlusion_pass", {true, true, true, true}},
    {"normal_pass", {true, true, true, true}},
    {"depth_pass", {true, true, true, true}},
    {"material_id_pass", {false, false, true, true}},
};

// The keywords of one form, in argument order.
template <std::size_t count>
detail::keywords<count> activePassKeywords(ActiveForm form)
{
    const char* names[count] = {};
    std::size_t used = 0;
    for (const ActivePassArg& argument : kActivePassArgs) {
        if (argument.inForm[form] && used < count)
            names[used++] = argument.keyword;
    }
    return oxScriptBinding::keywordsFrom<count>(names);
}

// Passes a form doesn't take are off.
void setActive12(bool beauty, bool diffuseIBL, bool diffuseLight, bool glossyIBL, bool glossyLight,
                 bool specularReflection, bool specularLight, bool diffuseIndirect,
                 bool glossyIndirect, bool occlusion, bool normal, bool depth)
{
    setActiveSnapshotMovieRenderPasses(
        beauty, diffuseIBL, diffuseLight, glossyIBL, glossyLight, specularReflection, specularLight,
        false, false, diffuseIndirect, glossyIndirect, occlusion, normal, depth, false);
}

void setActive13(bool beauty, bool diffuseIBL, bool diffuseLight, bool glossyIBL, bool glossyLight,
                 bool specularReflection, bool specularLight, bool incandescence,
                 bool diffuseIndirect, bool glossyIndirect, bool occlusion, bool normal, bool depth)
{
    setActiveSnapshotMovieRenderPasses(
        beauty, diffuseIBL, diffuseLight, glossyIBL, glossyLight, specularReflection, specularLight,
        false, incandescence, diffuseIndirect, glossyIndirect, occlusion, normal, depth, false);
}

void setActive14(bool beauty, bool diffuseIBL, bool diffuseLight, bool glossyIBL, bool glossyLight,
                 bool specularReflection, bool specularLight, bool incandescence,
                 bool diffuseIndirect, bool glossyIndirect, bool occlusion, bool normal, bool depth,
                 bool materialID)
{
    setActiveSnapshotMovieRenderPasses(beauty, diffuseIBL, diffuseLight, glossyIBL, glossyLight,
                                       specularReflection, specularLight, false, incandescence,
                                       diffuseIndirect, glossyIndirect, occlusion, normal, depth,
                                       materialID);
}

void setActive15(bool beauty, bool diffuseIBL, bool diffuseLight, bool glossyIBL, bool glossyLight,
                 bool specularReflection, bool specularLight, bool translucency, bool incandescence,
                 bool diffuseIndirect, bool glossyIndirect, bool occlusion, bool normal, bool depth,
                 bool materialID)
{
    setActiveSnapshotMovieRenderPasses(beauty, diffuseIBL, diffuseLight, glossyIBL, glossyLight,
                                       specularReflection, specularLight, translucency,
                                       incandescence, diffuseIndirect, glossyIndirect, occlusion,
                                       normal, depth, materialID);
}

const char* const kCombinedArgs[] = {
    "beauty_pass",           "diffuse_ibl_pass",         "diffuse_light_pass", "glossy_ibl_pass",
    "glossy_light_pass",     "specular_reflection_pass", "translucency_pass",  "incandescence_pass",
    "diffuse_indirect_pass", "glossy_indirect_pass",     "transparency_pass",  "background_pass"};

// The short form turns transparency and background on, unlike the other short forms.
void setCombined10(bool beauty, bool diffuseIBL, bool diffuseLight, bool glossyIBL,
                   bool glossyLight, bool specularReflection, bool translucency, bool incandescence,
                   bool diffuseIndirect, bool glossyIndirect)
{
    setCombinedChannelsRenderPasses(beauty, diffuseIBL, diffuseLight, glossyIBL, glossyLight,
                                    specularReflection, translucency, incandescence,
                                    diffuseIndirect, glossyIndirect, true, true);
}

const char* const kMaterialArgs[] = {"diffuse_material_pass",      "glossy_material_pass",
                                     "specular_material_pass",     "translucency_material_pass",
                                     "transparency_material_pass", "background_pass",
                                     "incandescence_pass"};

void setMaterial5(bool diffuse, bool glossy, bool specular, bool translucency, bool transparency)
{
    setMaterialChannelsRenderPasses(diffuse, glossy, specular, translucency, transparency, false,
                                    false);
}

void setMaterial6(bool diffuse, bool glossy, bool specular, bool translucency, bool transparency,
                  bool background)
{
    setMaterialChannelsRenderPasses(diffuse, glossy, specular, translucency, transparency,
                                    background, false);
}

// Every keyword but the first starts with a blank and the first holds a type word, so none of
// them can be written as a keyword argument: scripts pass these by position.
const char* const kIlluminationArgs[] = {"bool diffuse_ibl_pass",   " glossy_ibl_pass",
                                         " translucency_ibl_pass",  " diffuse_light_pass",
                                         " glossy_light_pass",      " translucency_light_pass",
                                         " diffuse_indirect_pass",  " glossy_indirect_pass",
                                         " specular_indirect_pass", " translucency_indirect_pass"};

const char* const kAuxiliaryArgs[] = {"occlusion_pass",
                                      "normal_pass",
                                      "depth_pass",
                                      "material_id_pass",
                                      "mask_pass",
                                      "position_pass",
                                      "view_vector_pass",
                                      "cryptomatte_object_pass",
                                      "cryptomatte_material_pass"};

void setAuxiliary7(bool occlusion, bool normal, bool depth, bool materialID, bool mask,
                   bool position, bool viewVector)
{
    setAuxiliaryChannelsRenderPasses(occlusion, normal, depth, materialID, mask, position,
                                     viewVector, false, false);
}

void setAuxiliary8(bool occlusion, bool normal, bool depth, bool materialID, bool mask,
                   bool position, bool viewVector, bool cryptoObject)
{
    setAuxiliaryChannelsRenderPasses(occlusion, normal, depth, materialID, mask, position,
                                     viewVector, cryptoObject, false);
}

// Four passes but two names: Boost.Python gives them to the last two arguments, so fog and
// lens flare are set by position only, and "fog_pass" names the backplate. Scripts rely on it.
const char* const kImageProcessingArgs[] = {"fog_pass", "lens_flare_pass"};

} // namespace

void bindRenderPass()
{
    const char* const active = "setActiveSnapshotMovieRenderPasses";
    def(active, &setActive12, activePassKeywords<12>(Form12));
    def(active, &setActive13, activePassKeywords<13>(Form13));
    def(active, &setActive14, activePassKeywords<14>(Form14));
    def(active, &setActive15, activePassKeywords<15>(Form15), oxMovieExportDoc(active));

    const char* const combined = "setCombinedChannelsRenderPasses";
    def(combined, &setCombined10, keywordsOf<10>(kCombinedArgs));
    def(combined, &setCombinedChannelsRenderPasses, keywordsOf<12>(kCombinedArgs),
        oxMovieExportDoc(combined));

    const char* const material = "setMaterialChannelsRenderPasses";
    def(material, &setMaterial5, keywordsOf<5>(kMaterialArgs));
    def(material, &setMaterial6, keywordsOf<6>(kMaterialArgs));
    def(material, &setMaterialChannelsRenderPasses, keywordsOf<7>(kMaterialArgs),
        oxMovieExportDoc(material));

    def("setIlluminationChannelsRenderPasses", &setIlluminationChannelsRenderPasses,
        keywordsOf<10>(kIlluminationArgs), oxMovieExportDoc("setIlluminationChannelsRenderPasses"));

    // Longest first, unlike the other commands; the docstring stays on the last one.
    const char* const auxiliary = "setAuxiliaryChannelsRenderPasses";
    def(auxiliary, &setAuxiliaryChannelsRenderPasses, keywordsOf<9>(kAuxiliaryArgs));
    def(auxiliary, &setAuxiliary8, keywordsOf<8>(kAuxiliaryArgs));
    def(auxiliary, &setAuxiliary7, keywordsOf<7>(kAuxiliaryArgs), oxMovieExportDoc(auxiliary));

    def("setImageProcessingRenderPasses", &setImageProcessingRenderPasses,
        oxScriptBinding::trailingKeywords<4>(kImageProcessingArgs),
        oxMovieExportDoc("setImageProcessingRenderPasses"));

    def("resetActiveSnapshotMovieRenderPasses", &resetActiveSnapshotMovieRenderPasses,
        oxMovieExportDoc("resetActiveSnapshotMovieRenderPasses"));
}
