// The Render Settings preferences page: its construction, its slots, and the exchange between
// the preference data and the page's widgets, all driven by the preference table.

#include "oxRenderSettingsPreferencesGUII.h"

#include "QOXCollapsibleFrame.h"
#include "QOXColorManipulator.h"
#include "oxFile.h"
#include "oxIconManager.h"
#include "oxIlluminationModeComboBox.h"
#include "oxMessage.h"
#include "oxOSGImage.h"
#include "oxRenderSettings.h"
#include "oxRenderSettingsForm.h"
#include "oxRenderSettingsImageSize.h"
#include "oxRenderSettingsPreferenceDefaults.h"
#include "oxRenderSettingsPreferenceWidgets.h"
#include "oxRenderSettingsPreferencesGUIW.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QSignalBlocker>

#include <boost/any.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <list>
#include <string>

namespace {

oxRenderSettingsPreferencesGUII* g_page = nullptr;

constexpr int kLabelColumnWidth = 180;

// Pseudo formats of the image file handler that write no picture.
const std::array<const char*, 4> kHiddenFormats = {{"mtd", "opensg", "opensgimage", "dat"}};

// These keep their slider and spin box equal through slots of the page's own; the other
// linked widgets follow each other directly.
const char* const kOwnLinks[] = {"_finalgather_quality_spinbox", "_photon_trace_depth_spinbox"};

template <size_t N>
void fillCombo(QComboBox* box, const std::array<oxPresetValueName, N>& items, const char* context)
{
    box->clear();
    for (const oxPresetValueName& item : items)
        box->addItem(QCoreApplication::translate(context, item.label), item.value);
}

// Half away from zero, as print sizes have always been rounded.
int millimetres(int pixels, int dpi)
{
    return static_cast<int>(
        std::round(static_cast<float>(pixels) / static_cast<float>(dpi) * 25.4f));
}

// The stored value equals value: same type and same content.
template <typename T>
bool storedEquals(const oxMessage& data, const std::string& key, const T& value)
{
    const boost::any& stored = data.get(key);
    return !stored.empty() && oxMessage::sameType(stored.type(), typeid(T)) &&
           boost::any_cast<T>(stored) == value;
}

} // namespace

QString oxPrintSizeLabel(int width, int height, int dpi)
{
    const int mmWidth = dpi > 0 ? millimetres(width, dpi) : 0;
    const int mmHeight = dpi > 0 ? millimetres(height, dpi) : 0;
    QString suffix;
    // The portrait A sheets of the size list; a landscape sheet gets no name.
    for (const oxImageSizeEntry& entry : kImageSizes) {
        if (entry.paper && entry.left < entry.top && entry.left == mmWidth &&
            entry.top == mmHeight) {
            const QString name = QString::fromUtf8(entry.text);
            suffix =
                QLatin1Char('(') + name.left(name.indexOf(QLatin1Char(' '))) + QLatin1Char(')');
        }
    }
    return QString::asprintf("%d mm x %d mm %s", mmWidth, mmHeight, suffix.toUtf8().constData());
}

oxRenderSettingsPreferencesGUII::oxRenderSettingsPreferencesGUII()
    : oxPreferences(QString::fromUtf8(kPreferencesPage),
                    tr("The values new scenes start with, and how images are written"))
{
    m_widget = new oxRenderSettingsPreferencesGUIW();
    g_page = this;
    oxRenderSettingsPreferencesGUIW& w = *m_widget;

    std::list<std::string> suffixes;
    osg::ImageFileHandler::the().getSuffixList(suffixes, true);
    for (const std::string& suffix : suffixes) {
        if (std::find(kHiddenFormats.begin(), kHiddenFormats.end(), suffix) == kHiddenFormats.end())
            w._default_format->addItem(QString::fromStdString(suffix));
    }

    w._aa_threshold_quality->setCurrentIndex(1);
    w._basic_trace_depth_settings->hide();
    oxIlluminationModeComboBox::initLegacy(w._interactiveQualityMode);
    oxIlluminationModeComboBox::initLegacy(w._stillFrameQualityMode);
    w.Image_Filter_Width->setRange(0.5, 5.0);
    w.Image_Filter_Width->setSingleStep(0.1);
    w.Image_Filter_Width->setValue(1.0);

    connect(w._scolor, &QOXColorManipulator::colorChanged, this,
            &oxRenderSettingsPreferencesGUII::changedSelectionColor);
    connect(w._snapshot_path_button, &QAbstractButton::clicked, this,
            &oxRenderSettingsPreferencesGUII::clickedSetSnapshotPath);
    connect(w._more, &QAbstractButton::clicked, this,
            &oxRenderSettingsPreferencesGUII::clickedMore);
    const auto spinChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    connect(w._iwidth, spinChanged, this, &oxRenderSettingsPreferencesGUII::changedImageWidth);
    connect(w._iheight, spinChanged, this, &oxRenderSettingsPreferencesGUII::changedImageHeight);
    connect(w._dpi, spinChanged, this, &oxRenderSettingsPreferencesGUII::changedDpi);
    connect(w._enable_PBParameters, &QAbstractButton::toggled, this,
            &oxRenderSettingsPreferencesGUII::confirmChangedPBParameters);
    connect(w._finalgather_quality_spinbox, spinChanged, this,
            &oxRenderSettingsPreferencesGUII::changedFinalGatherQuality);
    connect(w._finalgather_quality_slider, &QSlider::valueChanged, this,
            &oxRenderSettingsPreferencesGUII::changedFinalGatherQuality);
    connect(w._photon_trace_depth_spinbox, spinChanged, this,
            &oxRenderSettingsPreferencesGUII::changedPhotonTraceDepth);
    connect(w._photon_trace_depth_slider, &QSlider::valueChanged, this,
            &oxRenderSettingsPreferencesGUII::changedPhotonTraceDepth);
    linkPreferenceWidgets(m_widget, kOwnLinks, static_cast<int>(std::size(kOwnLinks)));
    fillCombo(w.Image_Filter_Type, kPixelFilterTypes, "oxRenderSettings");
    fillCombo(w._denoiser_filter, kDenoiseFilterItems, "oxRenderSettings");

    w._snapshot_path_button->setIcon(oxIconManager::getIcon(QStringLiteral("FileOpen"), QString()));
    w._more->setArrowType(Qt::DownArrow);
    // One label column across all sections of a tab, so that the fields line up.
    QOXCollapsibleFrame::fixLayouts(m_widget, kLabelColumnWidth);
    updateImageSize();

    addPreferencesGUI(m_widget);
}

oxRenderSettingsPreferencesGUII::~oxRenderSettingsPreferencesGUII()
{
    removePreferenceDefaults(getData());
    subPreferencesGUI(m_widget);
    // At process exit after the application object is gone, no widget can be destroyed.
    if (QCoreApplication::instance())
        delete m_widget;
    if (g_page == this)
        g_page = nullptr;
}

oxRenderSettingsPreferencesGUII* oxRenderSettingsPreferencesGUII::instance() { return g_page; }

void oxRenderSettingsPreferencesGUII::setPreferenceDefaults(oxMessage& data, bool overwrite)
{
    ::setPreferenceDefaults(data, overwrite);
}

void oxRenderSettingsPreferencesGUII::preferencesToWidgets()
{
    const oxMessage& data = getData();
    for (const oxPreferenceDefault& row : preferenceDefaults())
        showPreference(m_widget, row, data);
    // The size fields were set quietly; the print size follows them here.
    updateImageSize();
}

void oxRenderSettingsPreferencesGUII::widgetsToPreferences()
{
    oxMessage& data = getData();
    for (const oxPreferenceDefault& row : preferenceDefaults()) {
        if (!row.widget)
            continue;
        const std::string key = row.keyName();
        std::visit(
            [&](const auto& value) {
                if (storedEquals(data, key, value))
                    addUnchanged(key.c_str());
                else
                    data.set(key, value, true);
            },
            readPreference(m_widget, row));
    }
}

void oxRenderSettingsPreferencesGUII::clickedSetSnapshotPath()
{
    const QString folder = QFileDialog::getExistingDirectory(m_widget, tr("Set Snapshot Path"),
                                                             m_widget->_snapshot_path->text(),
                                                             QFileDialog::ShowDirsOnly);
    if (folder.isEmpty())
        return;
    m_widget->_snapshot_path->setText(
        QString::fromStdString(oxFile::convertSeparators(folder.toStdString())));
}

void oxRenderSettingsPreferencesGUII::changedSelectionColor(float r, float g, float b)
{
    m_widget->_scolor->setColor(r, g, b);
}

void oxRenderSettingsPreferencesGUII::clickedMore()
{
    int width = 0;
    int height = 0;
    double dpi = 0.0;
    const QPoint position = m_widget->_more->mapToGlobal(QPoint(0, m_widget->_more->height()));
    if (!oxRenderSettings::showImageSizeMenu(m_widget, position, width, height, dpi))
        return;
    m_widget->_iwidth->setValue(width);
    m_widget->_iheight->setValue(height);
    m_widget->_dpi->setValue(static_cast<int>(dpi));
}

void oxRenderSettingsPreferencesGUII::changedImageWidth(int) { updateImageSize(); }

void oxRenderSettingsPreferencesGUII::changedImageHeight(int) { updateImageSize(); }

void oxRenderSettingsPreferencesGUII::changedDpi(int) { updateImageSize(); }

void oxRenderSettingsPreferencesGUII::updateImageSize()
{
    m_widget->_image_size->setText(oxPrintSizeLabel(
        m_widget->_iwidth->value(), m_widget->_iheight->value(), m_widget->_dpi->value()));
}

void oxRenderSettingsPreferencesGUII::confirmChangedPBParameters(bool checked)
{
    if (!checked)
        return;
    QMessageBox box(
        QMessageBox::Warning, tr("Render Settings Preferences"),
        tr("Enabling photometric parameters as preferred setting activates photometric "
           "parameters for all newly created scenes and leaves the current scene unchanged.\n\n"
           "To enable photometric parameters for existing scenes, please toggle the photometric "
           "parameter setting in the Render Settings module for the respective scene.\n\n"
           "When enabling photometric parameters as preferred setting you are strongly "
           "encouraged to set up the display luminance value and to disable clamping or set "
           "clamping to a value of about sixteen times your display luminance.\n\n"),
        QMessageBox::NoButton, m_widget);
    box.addButton(tr("Ok"), QMessageBox::AcceptRole);
    QPushButton* cancel = box.addButton(tr("Cancel"), QMessageBox::RejectRole);
    box.exec();
    if (box.clickedButton() == cancel) {
        // Quietly, so that taking the tick back asks nothing.
        const QSignalBlocker blocker(m_widget->_enable_PBParameters);
        m_widget->_enable_PBParameters->setChecked(false);
    }
}

void oxRenderSettingsPreferencesGUII::changedFinalGatherQuality(int value)
{
    followLinkedWidget(m_widget, qobject_cast<QWidget*>(sender()), value);
}

void oxRenderSettingsPreferencesGUII::changedPhotonTraceDepth(int value)
{
    followLinkedWidget(m_widget, qobject_cast<QWidget*>(sender()), value);
}
