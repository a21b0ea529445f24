#include "oxRenderSettingsOutputBinding.h"

#include "oxScriptBinding.h"

#include "oxMovieExport.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsOutputBindingDocs.h"

#include <QStringList>

#include <algorithm>
#include <string>
#include <vector>

using namespace boost::python;
using oxScriptBinding::trailingKeywords;

namespace {

using P = oxRenderSettingsPreset;
using Names = std::vector<std::string>;

// Several commands have one keyword for several arguments: the name, commas and blanks
// included, names the last argument and the others get none a script can type, so scripts
// pass them all by position. The names are what scripts have always met and are kept.
const char* const kVariantSetsKeyword[] = {"groupName, variantSetNames"};
const char* const kPrintResolutionKeyword[] = {"printWidth, printHeight, pixelsPerInch"};
const char* const kPixelResolutionKeyword[] = {"pixelWidth, pixelHeight, pixelsPerInch"};

// Every command acts on the one window; before the plug-in made it, or after it went, setters
// do nothing and getters give the value of a new record.
oxRenderSettings* window() { return oxRenderSettings::instance(); }

template <typename T, T P::*field>
void setField(T value)
{
    if (oxRenderSettings* w = window())
        w->setOutputSetting(field, value);
}

template <typename T, T P::*field>
T getField()
{
    oxRenderSettings* w = window();
    return w ? w->getCurrentPreset().*field : P().*field;
}

// A setter whose values outside 0 to 1 are clamped into it.
template <int P::*field>
void setClampedSwitch(int value)
{
    setField<int, field>(std::clamp(value, 0, 1));
}

// Any value but 0 switches antialiasing on, at the one factor the window offers.
void setSupersampling(int state)
{
    if (oxRenderSettings* w = window()) {
        w->changedSSFactor(state);
        w->updateGUI();
    }
}

void setBackgroundColor(float r, float g, float b)
{
    if (oxRenderSettings* w = window()) {
        w->changedBackgroundColor(r, g, b);
        w->updateGUI();
    }
}

osg::Vec3f getBackgroundColor()
{
    return {getField<float, &P::backgroundColorR>(), getField<float, &P::backgroundColorG>(),
            getField<float, &P::backgroundColorB>()};
}

std::string getRenderView()
{
    const oxRenderSettings* w = window();
    return w ? w->getViewName() : std::string();
}

void setRenderCurrentView()
{
    if (oxRenderSettings* w = window())
        w->setView(nullptr);
}

void setRenderView(const std::string& viewName)
{
    if (oxRenderSettings* w = window())
        w->setViewByName(viewName);
}

Names toNames(const QStringList& list)
{
    Names names;
    for (const QString& entry : list)
        names.push_back(entry.toStdString());
    return names;
}

Names getRenderOutputFilenames()
{
    return theMovieExport ? toNames(theMovieExport->getRenderOutputFilenames()) : Names();
}

void startRenderToFile(bool alwaysOverride)
{
    if (theMovieExport)
        theMovieExport->startRenderToFile(alwaysOverride);
}

void setRenderVariantSets(const std::string& groupName, const Names& variantSetNames)
{
    if (oxRenderSettings* w = window())
        w->setActiveVariantSets(groupName, variantSetNames);
}

Names getRenderVariantSets(const std::string& groupName)
{
    const oxRenderSettings* w = window();
    return w ? w->getActiveVariantSets(groupName) : Names();
}

void clearRenderVariantSetGroups()
{
    if (oxRenderSettings* w = window())
        w->clearVariantSetGroups();
}

void removeRenderVariantSetGroup(const std::string& groupName)
{
    if (oxRenderSettings* w = window())
        w->removeVariantSetGroup(groupName);
}

Names getRenderVariantSetGroups()
{
    const oxRenderSettings* w = window();
    return w ? w->getVariantSetGroupNames() : Names();
}

void setRenderPrintResolution(float printWidth, float printHeight, float pixelsPerInch)
{
    if (oxRenderSettings* w = window())
        w->setPrintResolution(printWidth, printHeight, pixelsPerInch);
}

void setRenderPixelResolution(float pixelWidth, float pixelHeight, float pixelsPerInch)
{
    if (oxRenderSettings* w = window())
        w->setPixelResolution(pixelWidth, pixelHeight, pixelsPerInch);
}

void setRenderPasses(const Names& passes)
{
    if (oxRenderSettings* w = window())
        w->setRenderPasses(passes);
}

Names getRenderPasses()
{
    const oxRenderSettings* w = window();
    return w ? w->getRenderPasses() : Names();
}

Names getRenderAnimationClips() { return oxRenderSettings::getClipNames(); }

// Registers command with its docstring.
template <typename F, typename... Keywords>
void command(const char* name, F function, const Keywords&... keywords)
{
    def(name, function, keywords..., oxRenderSettingsOutputDoc(name));
}

} // namespace

void bindRenderSettingsOutput()
{
    command("getRenderView", &getRenderView);
    command("setRenderCurrentView", &setRenderCurrentView);
    command("setRenderView", &setRenderView, arg("viewName"));
    command("getRenderOutputFilenames", &getRenderOutputFilenames);

    command("setRenderVariantSets", &setRenderVariantSets,
            trailingKeywords<2>(kVariantSetsKeyword));
    command("getRenderVariantSets", &getRenderVariantSets, arg("groupName"));
    command("clearRenderVariantSetGroups", &clearRenderVariantSetGroups);
    command("removeRenderVariantSetGroup", &removeRenderVariantSetGroup, arg("groupName"));
    command("getRenderVariantSetGroups", &getRenderVariantSetGroups);
    command("setUseRenderViewFromVariantSets", &setField<bool, &P::variantSetViewpointsUsed>,
            arg("state"));
    command("getUseRenderViewFromVariantSets", &getField<bool, &P::variantSetViewpointsUsed>);
    command("setUseRenderVariantSets", &setField<bool, &P::variantSetsUsed>, arg("state"));
    command("getUseRenderVariantSets", &getField<bool, &P::variantSetsUsed>);

    command("setRenderPrintResolution", &setRenderPrintResolution,
            trailingKeywords<3>(kPrintResolutionKeyword));
    command("getRenderPrintWidth", &getField<float, &P::printWidth>);
    command("getRenderPrintHeight", &getField<float, &P::printHeight>);
    command("getRenderPixelPerInch", &getField<float, &P::ppi>);
    command("setRenderPixelResolution", &setRenderPixelResolution,
            trailingKeywords<3>(kPixelResolutionKeyword));
    command("getRenderPixelWidth", &getField<float, &P::pixel_width>);
    command("getRenderPixelHeight", &getField<float, &P::pixel_height>);
    command("setRenderFilename", &setField<std::string, &P::filename>, arg("filename"));
    command("getRenderFilename", &getField<std::string, &P::filename>);

    command("setUseRenderRegion", &setField<bool, &P::use_render_region>, arg("state"));
    command("getUseRenderRegion", &getField<bool, &P::use_render_region>);
    command("setRenderRegionStartX", &setField<int, &P::region_start_x>, arg("startX"));
    command("getRenderRegionStartX", &getField<int, &P::region_start_x>);
    command("setRenderRegionStartY", &setField<int, &P::region_start_y>, arg("startX"));
    command("getRenderRegionStartY", &getField<int, &P::region_start_y>);
    command("setRenderRegionEndX", &setField<int, &P::region_end_x>, arg("endX"));
    command("getRenderRegionEndX", &getField<int, &P::region_end_x>);
    command("setRenderRegionEndY", &setField<int, &P::region_end_y>, arg("endY"));
    command("getRenderRegionEndY", &getField<int, &P::region_end_y>);

    command("setRenderSupersampling", &setSupersampling, arg("state"));
    command("getRenderSupersampling", &getField<int, &P::ssFactor>);
    command("setRenderTonemapHDR", &setField<bool, &P::tonemap_hdr>, arg("state"));
    command("getRenderTonemapHDR", &getField<bool, &P::tonemap_hdr>);
    command("setRenderPremultiply", &setField<bool, &P::premultiply>, arg("state"));
    command("getRenderPremultiply", &getField<bool, &P::premultiply>);
    command("setRenderAlpha", &setField<bool, &P::alpha>, arg("state"));
    command("getRenderAlpha", &getField<bool, &P::alpha>);
    command("setRenderICCProfile", &setField<int, &P::iccProfileID>, arg("state"));
    command("getRenderICCProfile", &getField<int, &P::iccProfileID>);
    command("setRenderBackgroundColor", &setBackgroundColor);
    command("getRenderBackgroundColor", &getBackgroundColor);

    command("setUseRenderPasses", &setField<bool, &P::renderpasses>, arg("state"));
    command("getUseRenderPasses", &getField<bool, &P::renderpasses>);
    command("setRenderPasses", &setRenderPasses, arg("passes"));
    command("getRenderPasses", &getRenderPasses);
    command("setRenderMetaDataFlags", &setField<int, &P::metaDataFlags>, arg("flags"));
    command("getRenderMetaDataFlags", &getField<int, &P::metaDataFlags>);

    command("setRenderAnimation", &setField<bool, &P::renderAnimation>, arg("frame"));
    command("getRenderAnimation", &getField<bool, &P::renderAnimation>);
    command("setRenderAnimationFormat", &setClampedSwitch<&P::exportType>, arg("format"));
    command("getRenderAnimationFormat", &getField<int, &P::exportType>);
    command("setRenderAnimationType", &setClampedSwitch<&P::animationType>, arg("type"));
    command("getRenderAnimationType", &getField<int, &P::animationType>);
    command("setRenderAnimationClip", &setField<std::string, &P::clip>, arg("clipname"));
    command("getRenderAnimationClip", &getField<std::string, &P::clip>);
    command("getRenderAnimationClips", &getRenderAnimationClips);
    command("setRenderUseClipRange", &setField<bool, &P::useClipRange>, arg("enable"));
    command("getRenderUseClipRange", &getField<bool, &P::useClipRange>);
    command("setRenderStartFrame", &setField<int, &P::startFrame>, arg("frame"));
    command("setRenderStopFrame", &setField<int, &P::stopFrame>, arg("frame"));
    command("getRenderStartFrame", &getField<int, &P::startFrame>);
    command("getRenderStopFrame", &getField<int, &P::stopFrame>);
    command("setRenderFrameStep", &setField<int, &P::stepFrame>, arg("step"));
    command("getRenderFrameStep", &getField<int, &P::stepFrame>);
    command("setRenderFps", &setField<int, &P::fps>, arg("fps"));
    command("getRenderFps", &getField<int, &P::fps>);

    command("startRenderToFile", &startRenderToFile, arg("alwaysOverride"));
}
