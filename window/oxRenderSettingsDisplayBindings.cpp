// The Display Output tab: the render view's colour space, gamma, luminance, post-processing
// and histogram, and the snapshot overlays. These settings live in the render view.

#include "oxRenderSettingsBindingSupport.h"

#include "QOXWheelPrec.h"
#include "oxController.h"
#include "oxOSGWidget.h"
#include "oxRenderParameter.h"
#include "oxSceneServices.h"

#include <QCheckBox>
#include <QLabel>

#include <array>

using namespace oxBindings;

namespace {

using P = oxRenderSettingsPreset;

// A post-processing check box and its bit in the render view's flags; the host takes all ten
// flags at once, bits 2 and 3 always set.
struct PostFlag {
    QCheckBox* box;
    void (Self::*slot)(bool);
    int bit;
};

std::array<PostFlag, 8> postFlags(Self& w)
{
    return {{
        {w._enable_dithering, &Self::changedDithering, 0},
        {w._dynToneMap, &Self::changedDynamicTonemapping, 1},
        {w._histGroupBox, &Self::changedHistogramEnabled, 4},
        {w._histLogScale, &Self::changedHistogramLogScale, 5},
        {w._histRed, &Self::changedHistogramRedEnabled, 6},
        {w._histGreen, &Self::changedHistogramGreenEnabled, 7},
        {w._histBlue, &Self::changedHistogramBlueEnabled, 8},
        {w._histLum, &Self::changedHistogramLumEnabled, 9},
    }};
}

// The snapshot overlays: each check box shows the render view's switch.
std::vector<Toggle<bool (*)()>> snapshotToggles(Self& w)
{
    return {
        {w._snapshot_frame, &Self::changedSnapshotFrame, &oxOSGWidget::getSnapshotFrame},
        {w._snapshot_rule_of_thirds, &Self::changedSnapshotRuleOfThirds,
         &oxOSGWidget::getSnapshotRuleOfThirds},
        {w._snapshot_inner_frame, &Self::changedSnapshotInnerFrameEnable,
         &oxOSGWidget::getSnapshotInnerFrame},
        {w._snapshot_render_region_frame, &Self::changedSnapshotRenderRegionFrameEnabled,
         &oxOSGWidget::getSnapshotRenderRegionFrame},
    };
}

void sendInnerFrame(const Ui_oxRenderSettingsGUI& ui)
{
    oxOSGWidget::setSnapshotInnerFrame(ui._snapshot_inner_frame->isChecked(), ui._left->value(),
                                       ui._right->value(), ui._bottom->value(), ui._top->value(),
                                       ui._inner_type->currentIndex() == 1);
}

void sendRegionFrame(const Ui_oxRenderSettingsGUI& ui)
{
    oxOSGWidget::setSnapshotRenderRegionFrame(
        ui._snapshot_render_region_frame->isChecked(), ui._region_start_x->value(),
        ui._region_end_x->value(), ui._region_start_y->value(), ui._region_end_y->value());
}

} // namespace

void oxRenderSettings::connectDisplayBindings()
{
    connect(_display_colorspace, QOverload<int>::of(&QComboBox::activated), this,
            &Self::changedDisplayColorspace);
    connect(_gammaSlider, &QOXWheelPrec::valueChanged, this, &Self::changedGamma);
    connect(_displayLuminanceSlider, &QOXWheelPrec::valueChanged, this,
            &Self::changedDisplayLuminance);
    connect(_sim2LuminanceMappingSlider, &QOXWheelPrec::valueChanged, this,
            &Self::changedSim2LuminanceMapping);
    for (const PostFlag& flag : postFlags(*this))
        connect(flag.box, &QAbstractButton::toggled, this, flag.slot);

    connectRows(this, snapshotToggles(*this));
    connect(_inner_type, QOverload<int>::of(&QComboBox::activated), this, &Self::changedInnerFrame);
    for (QSpinBox* box : {_left, _right, _bottom, _top})
        connect(box, QOverload<int>::of(&QSpinBox::valueChanged), this, &Self::changedInnerFrame);
}

// ---------------------------------------------------------------------------------------------
// Display: the render view's store, marking the scene

void oxRenderSettings::changedDisplayColorspace(int index)
{
    oxOSGWidget::setDisplayColorspace(index);
    updateGUI();
}

void oxRenderSettings::changedGamma(double gamma)
{
    const float g = float(gamma);
    oxOSGWidget::setDisplayGamma({{g, g, g}});
    oxController::setModified(true);
}

// The luminance values are photometric settings: ignored while the scene isn't photometric.
void oxRenderSettings::changedDisplayLuminance(double value)
{
    if (!oxRenderParameter::getPBParameters())
        return;
    currentPreset.displayLuminance = float(value);
    oxOSGWidget::setDisplayLuminance(float(value));
    oxRenderParameter::setDisplayLuminance(float(value));
    oxController::setModified(true);
}

void oxRenderSettings::changedSim2LuminanceMapping(double value)
{
    if (!oxRenderParameter::getPBParameters())
        return;
    currentPreset.sim2LuminanceMapping = float(value);
    oxRenderParameter::setSim2LuminanceMapping(float(value));
    oxOSGWidget::setSim2LuminanceMapping(float(value));
    oxController::setModified(true);
}

void oxRenderSettings::sendPostprocessingFlags(QAbstractButton* changed, bool on)
{
    // The one that just changed may not show its new state yet when the slot is called from a
    // script.
    std::array<bool, 10> flags = {};
    flags[2] = flags[3] = true;
    for (const PostFlag& flag : postFlags(*this))
        flags[size_t(flag.bit)] = flag.box == changed ? on : flag.box->isChecked();
    oxOSGWidget::setPostprocessingFlags(flags[0], flags[1], flags[2], flags[3], flags[4], flags[5],
                                        flags[6], flags[7], flags[8], flags[9]);
}

void oxRenderSettings::changedDynamicTonemapping(bool on)
{
    sendPostprocessingFlags(_dynToneMap, on);
    oxController::setModified(true);
}

void oxRenderSettings::changedDithering(bool on)
{
    sendPostprocessingFlags(_enable_dithering, on);
    oxController::setModified(true);
}

void oxRenderSettings::changedHistogramEnabled(bool on)
{
    sendPostprocessingFlags(_histGroupBox, on);
    oxController::setModified(true);
}

// The histogram's display options are no change of the scene.
void oxRenderSettings::changedHistogramLogScale(bool on)
{
    sendPostprocessingFlags(_histLogScale, on);
}

void oxRenderSettings::changedHistogramRedEnabled(bool on)
{
    sendPostprocessingFlags(_histRed, on);
}

void oxRenderSettings::changedHistogramGreenEnabled(bool on)
{
    sendPostprocessingFlags(_histGreen, on);
}

void oxRenderSettings::changedHistogramBlueEnabled(bool on)
{
    sendPostprocessingFlags(_histBlue, on);
}

void oxRenderSettings::changedHistogramLumEnabled(bool on)
{
    sendPostprocessingFlags(_histLum, on);
}

// ---------------------------------------------------------------------------------------------
// Snapshot overlays: sent to the render view at once, no refresh and no scene change

void oxRenderSettings::changedSnapshotFrame(bool on)
{
    sendInnerFrame(*this);
    sendRegionFrame(*this);
    oxOSGWidget::setSnapshotFrame(on, currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedSnapshotRuleOfThirds(bool on)
{
    oxOSGWidget::setSnapshotRuleOfThirds(on);
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedSnapshotInnerFrameEnable(bool)
{
    sendInnerFrame(*this);
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedSnapshotRenderRegionFrameEnabled(bool)
{
    sendRegionFrame(*this);
    oxOSGWidget::setSnapshotFrame(_snapshot_frame->isChecked(), currentPreset.getPixelWidth(),
                                  currentPreset.getPixelHeight());
}

void oxRenderSettings::changedInnerFrame(int)
{
    changedSnapshotFrame(_snapshot_frame->isChecked());
}

// ---------------------------------------------------------------------------------------------
// Refresh

void oxRenderSettings::updateDisplayWidgets()
{
    refreshRows(snapshotToggles(*this), [](bool (*get)()) { return get() ? 1 : 0; });
    // The overlays follow the current image size.
    changedSnapshotFrame(oxOSGWidget::getSnapshotFrame());

    quiet(_gammaSlider,
          [](QOXWheelPrec* wheel) { wheel->setValue(double(oxOSGWidget::getDisplayGamma()[0])); });
    const int post = oxOSGWidget::getPostprocessingFlags();
    for (const PostFlag& flag : postFlags(*this))
        quietChecked(flag.box, (post & (1 << flag.bit)) != 0);
    quiet(_displayLuminanceSlider, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getDisplayLuminance()));
    });
    quiet(_sim2LuminanceMappingSlider, [](QOXWheelPrec* wheel) {
        wheel->setValue(double(oxRenderParameter::getSim2LuminanceMapping()));
    });

    // The photometric display controls show while the scene is photometric.
    const oxSceneData* data = oxSceneDataManager::getSceneData(0);
    const bool photometric = data && data->getPhotometric() != 0;
    for (QWidget* w : std::initializer_list<QWidget*>{_displayLuminanceLabel,
                                                      _displayLuminanceSlider, _sim2CF, _clampUnit})
        quietVisible(w, photometric);

    const int colorspace = oxOSGWidget::getDisplayColorspace();
    for (QWidget* w :
         std::initializer_list<QWidget*>{_display_colorspaceLabel, _display_colorspace})
        quietEnabled(w, !oxOSGWidget::getRGB16F());
    quietIndex(_display_colorspace, colorspace);
    const bool simpleGamma = colorspace < 1 || colorspace > 3;
    for (QWidget* w : std::initializer_list<QWidget*>{_simpleGammaLabel, _gammaSlider})
        quietVisible(w, simpleGamma);
}
