#include "oxRenderSettings.h"

#include "QOXDockWindowManager.h"
#include "QOXMultiLevelComboBox.h"
#include "oxController.h"
#include "oxIconManager.h"
#include "oxIlluminationModeComboBox.h"
#include "oxLog.h"
#include "oxPlatform.h"
#include "oxPresetGUII.h"
#include "oxRenderAutomationVariantSetGroup.h"
#include "oxRenderJobPresets.h"
#include "oxRenderSettingsForm.h"
#include "oxRenderSettingsKeys.h"
#include "oxRenderSettingsPresetFile.h"
#include "oxVariantSetTree.h"

#include <QAction>
#include <QActionGroup>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>

#include <cmath>

const std::array<oxPresetValueName, 3> kDenoiseFilterItems = {{
    {0, QT_TRANSLATE_NOOP("oxRenderSettings", "Off")},
    {2, QT_TRANSLATE_NOOP("oxRenderSettings", "Deep Learning Stillframe")},
    {3, QT_TRANSLATE_NOOP("oxRenderSettings", "Deep Learning Always")},
}};

const std::array<oxFormWheelRange, 5> kWheelRanges = {{
    {"_indirect_radius", 0.0, 0.0, 0.5},
    {"_final_gather_radius", 0.00001, 0.0, 0.5},
    {"_gammaSlider", 0.5, 3.0, 0.01},
    {"_displayLuminanceSlider", 1.0, 10000.0, 1.0},
    {"_sim2LuminanceMappingSlider", 0.01, 100000.0, 0.01},
}};

const std::array<const char*, 11> kSliderSpinBoxes = {{
    "_image_samples_spinbox",
    "_interactive_depth_spinbox",
    "_stillframe_depth_spinbox",
    "_interactiveQualitySpinbox",
    "_stillFrameQualitySpinbox",
    "_environmentInteractiveQualitySpinbox",
    "_environmentStillFrameQualitySpinbox",
    "_photonDispersionQualitySpinbox",
    "_photon_trace_depth_spinbox",
    "_interactive_finalgather_quality_spinbox",
    "_finalgather_quality_spinbox",
}};

namespace {

oxRenderSettings* gRenderSettings = nullptr;

template <size_t N>
void fillCombo(QComboBox* box, const std::array<oxPresetValueName, N>& items)
{
    box->clear();
    for (const oxPresetValueName& item : items)
        box->addItem(QCoreApplication::translate("oxRenderSettings", item.label), item.value);
}

// A request starts its timer only when it isn't running, so that any number of requests
// within one turn of the event loop make one refresh.
void request(QTimer& timer)
{
    if (!timer.isActive())
        timer.start();
}

} // namespace

oxRenderSettings::oxRenderSettings(const QString& title, oxImageWriter* writer,
                                   oxMovieExport* module, QWidget* parent)
    : QMainWindow(parent), movieExport(module), imageWriter(writer)
{
    gRenderSettings = this;

    for (QTimer* timer : {&variantGuiTimer, &statisticsTimer, &variantListTimer}) {
        timer->setSingleShot(true);
        timer->setInterval(0);
    }
    variantGuiTimer.setObjectName(QStringLiteral("variantGuiTimer"));
    statisticsTimer.setObjectName(QStringLiteral("statisticsTimer"));
    variantListTimer.setObjectName(QStringLiteral("variantListTimer"));

    oxRenderAutomationVariantSetGroup::init();
    setupUi(this);

    variantSetTree = new oxVariantSetTree(_variantsCFPage);
    variantSetTree->setObjectName(QStringLiteral("_variantSetTree"));
    _variantTreeLayout->addWidget(variantSetTree);

    presetGUI = new oxPresetGUII(this);
    presetGUI->hide();
    // The dialog only announces what the user did; the window changes its presets and the
    // preset file, then fills the dialog again through the menu rebuild. Queued, so that the
    // list isn't refilled while it is still handling the edit that announced the change.
    connect(presetGUI, &oxPresetGUII::presetRenamed, this, &oxRenderSettings::renamePreset,
            Qt::QueuedConnection);
    connect(presetGUI, &oxPresetGUII::presetsDeleted, this, &oxRenderSettings::deletePresets,
            Qt::QueuedConnection);
    connect(
        presetGUI, &oxPresetGUII::presetActivated, this,
        [this](const QString& name) { applyPresetByName(name.toStdString()); },
        Qt::QueuedConnection);
    presetActionGroup = new QActionGroup(this);
    presetActionGroup->setExclusive(true);

    _time_or_samples_group->setId(_use_time, 0);
    _time_or_samples_group->setId(_use_image_samples, 1);

    RenderSettingsTabWidget->tabBar()->setExpanding(false);

    windowAction =
        new QAction(oxIconManager::getIcon(QStringLiteral("CreateImage"), QString()), title, this);
    windowAction->setObjectName(QStringLiteral("windowAction"));
    connect(windowAction, &QAction::triggered, this, &oxRenderSettings::triggeredWindowAction);

    setupWidgets();
    connectBindings();
    registerRenderSettingsCallbacks();
    registerRenderJobPresetCallbacks();

    // The user's presets, then the default settings of the preferences (which also builds the
    // preset menu).
    presets = readPresetFile();
    loadDefaultSettings(false);
}

oxRenderSettings::~oxRenderSettings()
{
    unregisterRenderJobPresetCallbacks();
    unregisterRenderSettingsCallbacks();
    disconnectBindings();
    // The render queue may still ask for the job presets' names after the window went (it
    // then hears of none), so that one callback stays.
    registerRQPresetNamesCallback();
    if (gRenderSettings == this)
        gRenderSettings = nullptr;
}

oxRenderSettings* oxRenderSettings::instance() { return gRenderSettings; }

void oxRenderSettings::setupWidgets()
{
    for (const oxFormWheelRange& range : kWheelRanges) {
        auto* wheel = findChild<QOXWheelPrec*>(QLatin1String(range.widget));
        if (!wheel) {
            oxLog::error("oxRenderSettings: the form has no wheel '%s'.", range.widget);
            continue;
        }
        if (range.maximum > range.minimum)
            wheel->setRange(range.minimum, range.maximum);
        else
            wheel->setMinimum(range.minimum);
        wheel->setSingleStep(range.singleStep);
    }

    fillCombo(_filtertype, kPixelFilterTypes);
    fillCombo(_denoiser_filter, kDenoiseFilterItems);
    for (QComboBox* box : {_render_mode, _interactiveQualityMode, _stillFrameQualityMode})
        oxIlluminationModeComboBox::initLegacy(box);

    const int width =
        static_cast<int>(std::lround(kSliderSpinBoxWidth * oxPlatform::getDpiScaleX()));
    const int minHeight =
        static_cast<int>(std::lround(kSliderSpinBoxMinHeight * oxPlatform::getDpiScaleY()));
    const int maxHeight =
        static_cast<int>(std::lround(kSliderSpinBoxMaxHeight * oxPlatform::getDpiScaleY()));
    for (const char* name : kSliderSpinBoxes) {
        auto* box = findChild<QSpinBox*>(QLatin1String(name));
        if (!box) {
            oxLog::error("oxRenderSettings: the form has no spin box '%s'.", name);
            continue;
        }
        box->setFixedWidth(width);
        box->setMinimumHeight(minHeight);
        box->setMaximumHeight(maxHeight);
    }

    // The full window uses the detailed quality sections; the basic one is for a reduced UI.
    _basic_trace_depth_settings->hide();
    fitTabsToContents();
}

void oxRenderSettings::fitTabsToContents()
{
    // The tabs scroll vertically only, so the window must be as wide as their contents.
    for (QScrollArea* area : RenderSettingsTabWidget->findChildren<QScrollArea*>()) {
        const int scrollBar = area->verticalScrollBar()->sizeHint().width();
        area->setMinimumWidth(area->widget()->minimumSizeHint().width() + scrollBar +
                              2 * area->frameWidth());
    }
}

void oxRenderSettings::showEvent(QShowEvent* event)
{
    // Section layouts are fixed by the module after construction; measure again.
    fitTabsToContents();
    if (isVisible())
        _view->update();
    updateGUI();
    QMainWindow::showEvent(event);
}

void oxRenderSettings::triggeredWindowAction()
{
    if (QOXDockWindowManager* manager = oxController::getDockWindowManager())
        manager->undock(windowAction->text());
}

void oxRenderSettings::updateVariantSetGUI() { request(variantGuiTimer); }

void oxRenderSettings::updateRenderStatistics() { request(statisticsTimer); }

void oxRenderSettings::updateVariantSetList() { request(variantListTimer); }
