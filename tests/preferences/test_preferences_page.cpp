// The Render Settings preferences page in the host's preferences dialog: what a confirmed
// change does to the open scene, a new scene and the files written, the preference file
// across a restart, defaults, and the page's own widgets.

#include "oxModuleTest.h"

#include "oxController.h"
#include "oxDialogResponder.h"
#include "oxFile.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxOSGImage.h"
#include "oxPreferences.h"
#include "oxPreferencesDialog.h"
#include "oxRenderParameter.h"
#include "oxRenderSettingsPreferenceDefaults.h"
#include "oxRenderSettingsPreferenceWidgets.h"
#include "oxRenderSettingsPreferencesGUII.h"
#include "oxRenderSettingsPreferencesGUIW.h"
#include "oxSnapshots.h"

#include <QDialogButtonBox>
#include <QPushButton>

#include <memory>
#include <string>

namespace {

using P = oxRenderSettingsPreset;

class PreferencesPageTest : public oxModuleTest {
protected:
    void SetUp() override
    {
        oxModuleTest::SetUp();
        m_oldDir = oxPreferences::getPreferencesDir();
        m_oldData = oxPreferences::getData();
        oxPreferences::setPreferencesDir(m_dir.path());
        oxPreferences::getData().clear();
        oxRenderParameter::setImageSamples(2); // renders of milliseconds
        load(true);
        m_page = std::make_unique<oxRenderSettingsPreferencesGUII>();
    }
    void TearDown() override
    {
        m_page.reset();
        osg::ImageFileHandler::the().setOptions("image/tiff", "");
        oxPreferences::getData() = m_oldData;
        oxPreferences::setPreferencesDir(m_oldDir);
        oxModuleTest::TearDown();
    }

    oxRenderSettingsPreferencesGUIW& form() { return *m_page->widget(); }
    oxRenderSettingsPreset& current() { return oxRenderSettings::instance()->getCurrentPreset(); }
    static oxMessage& data() { return oxPreferences::getData(); }
    void newScene()
    {
        oxMessage message(oxController::MessageNewScene);
        module->receivedMessage(message);
    }
    /// The page as the user leaves it with OK.
    static void pressOK(oxPreferencesDialog& dialog)
    {
        dialog.buttons()->button(QDialogButtonBox::Ok)->click();
    }
    template <typename T>
    static T stored(const char* key)
    {
        T value{};
        EXPECT_TRUE(data().get(key, value)) << key;
        return value;
    }

    oxTempDir m_dir;
    std::unique_ptr<oxRenderSettingsPreferencesGUII> m_page;

private:
    std::string m_oldDir;
    oxMessage m_oldData;
};

TEST_F(PreferencesPageTest, ConfirmedValuesReachANewSceneAndTheFilesWritten)
{
    const std::string snapshots = m_dir.path() + "/shots";
    {
        oxPreferencesDialog dialog;
        ASSERT_TRUE(dialog.selectPage(QStringLiteral("Render Settings")));
        ASSERT_EQ(dialog.currentPage(), m_page.get());
        form()._snapshot_path->setText(QString::fromStdString(snapshots));
        form()._default_format->setCurrentText(QStringLiteral("jpg"));
        form()._iwidth->setValue(320);
        form()._iheight->setValue(200);
        form()._image_quality->setValue(5);
        form()._image_samples_spinbox->setValue(64);
        pressOK(dialog);
    }

    // Samples have an effect at once; the output values wait for a new scene.
    EXPECT_EQ(oxRenderParameter::getImageSamples(), 64);
    EXPECT_NE(current().filename, snapshots + "\\image.jpg");
    newScene();
    EXPECT_EQ(current().filename, snapshots + "\\image.jpg");
    EXPECT_FLOAT_EQ(current().pixel_width, 320.0f);
    EXPECT_FLOAT_EQ(current().pixel_height, 200.0f);

    // The quality decides the bytes of a JPEG; setSnapshotQuality(-1) is the format's own.
    oxRenderParameter::setImageSamples(2);
    ASSERT_TRUE(createSnapshot(m_dir.file("low.jpg").c_str(), 64, 48));
    setSnapshotQuality(-1);
    EXPECT_EQ(form()._image_quality->value(), -1) << "the page shows the command's value";
    ASSERT_TRUE(createSnapshot(m_dir.file("usual.jpg").c_str(), 64, 48));
    EXPECT_LT(oxReadFile(m_dir.file("low.jpg")).size(), oxReadFile(m_dir.file("usual.jpg")).size());

    // PNG: quality 0 is the strongest compression, 100 none.
    setSnapshotQuality(100);
    ASSERT_TRUE(createSnapshot(m_dir.file("loose.png").c_str(), 64, 48));
    setSnapshotQuality(0);
    ASSERT_TRUE(createSnapshot(m_dir.file("tight.png").c_str(), 64, 48));
    EXPECT_LT(oxReadFile(m_dir.file("tight.png")).size(),
              oxReadFile(m_dir.file("loose.png")).size());
}

TEST_F(PreferencesPageTest, ConfirmedValuesSurviveARestart)
{
    form()._iwidth->setValue(1234);
    form()._comment->setText(QStringLiteral("Studio \u00e9"));
    form()._scolor->setColor(1.0f, 0.5f, 0.0f);
    form()._time_hours->setValue(1);
    form()._time_minutes->setValue(2);
    form()._time_seconds->setValue(3);
    ASSERT_TRUE(oxPreferences::confirm());

    // The plug-in goes with the host, the file stays; the next run reads it.
    m_page.reset();
    data().clear();
    ASSERT_TRUE(oxPreferences::load());
    m_page = std::make_unique<oxRenderSettingsPreferencesGUII>();
    m_page->preferencesToWidgets();
    EXPECT_EQ(form()._iwidth->value(), 1234);
    EXPECT_EQ(form()._comment->text(), QStringLiteral("Studio \u00e9"));
    EXPECT_EQ(stored<std::vector<int>>("ImageExport sig color"), (std::vector<int>{255, 128, 0}));
    EXPECT_EQ(stored<unsigned int>("Maximum Rendering Time"), 3723u);
    EXPECT_EQ(form()._time_minutes->value(), 2);
    // Keys the user never touched came back with their defaults.
    EXPECT_EQ(stored<int>("Maximum Antialiasing Samples"), 256);
}

// A value of the wrong type in the file is one line naming it and the file; it takes its
// default and the rest of the file is read.
TEST_F(PreferencesPageTest, WronglyTypedValueInTheFileTakesItsDefault)
{
    const std::string file = oxPreferences::getPreferencesFile();
    oxMessage written;
    written.set("Maximum Antialiasing Samples", std::string("many"));
    written.set("Maximum Rendering Time", 77u);
    ASSERT_TRUE(oxMessageRW::write(written, file.c_str()));
    data().clear();
    ASSERT_TRUE(oxPreferences::load());
    expectLog(oxLog::Warning, "Preferences: '" + file +
                                  "': the entry 'Maximum Antialiasing Samples' has the wrong "
                                  "type; its default is used");
    EXPECT_EQ(stored<int>("Maximum Antialiasing Samples"), 256);
    EXPECT_EQ(stored<unsigned int>("Maximum Rendering Time"), 77u);
}

TEST_F(PreferencesPageTest, EveryKeyHasItsWidgetAndRestoreDefaultsBringsTheTableBack)
{
    for (const oxPreferenceDefault& row : preferenceDefaults()) {
        if (row.widget) {
            EXPECT_TRUE(form().findChild<QWidget*>(row.widget)) << row.widget;
        }
    }

    // Every widget away from its default, confirmed.
    form()._iwidth->setValue(999);
    form()._play_sound->setChecked(false);
    form()._default_format->setCurrentText(QStringLiteral("exr"));
    form()._stillFrameQualityMode->setCurrentIndex(0);
    ASSERT_TRUE(oxPreferences::confirm());

    oxPreferencesDialog dialog;
    dialog.restoreDefaults();
    EXPECT_EQ(form()._iwidth->value(), 800);
    EXPECT_EQ(stored<int>("ImageExport width"), 999) << "only the widgets show the defaults";
    dialog.buttons()->button(QDialogButtonBox::Cancel)->click();
    EXPECT_EQ(stored<int>("ImageExport width"), 999);

    oxPreferencesDialog again;
    EXPECT_EQ(form()._iwidth->value(), 999) << "the dialog shows the store again";
    again.restoreDefaults();
    pressOK(again);
    // What the widgets give back is the table's default, for every key with a widget.
    for (const oxPreferenceDefault& row : preferenceDefaults()) {
        if (!row.widget || !row.hasDefault)
            continue;
        const oxPreferenceDefault::Value shown = readPreference(m_page->widget(), row);
        if (row.field == oxSettingField(&P::ssFactor)) {
            EXPECT_EQ(std::get<int>(shown), 1) << "supersampling shows as On";
        } else if (row.field != oxSettingField(&P::filterWidth)) { // one widget for X and Y
            EXPECT_TRUE(shown == row.value) << row.keyName();
        }
    }
    EXPECT_EQ(stored<int>("ImageExport width"), 800);
    EXPECT_EQ(stored<std::string>("ImageExport default format"), "png");
}

TEST_F(PreferencesPageTest, OnlyChangedKeysTakeEffectAndTiffIsWrittenWithLzw)
{
    m_page->preferencesToWidgets();
    oxRenderParameter::setStillFrameQuality(4); // changed behind the page's back
    ASSERT_TRUE(oxPreferences::confirm());
    EXPECT_EQ(oxRenderParameter::getStillFrameQuality(), 4) << "an unchanged key does nothing";
    EXPECT_EQ(osg::ImageFileHandler::the().getOptions("image/tiff"), "compressionType=LZW");

    // A change of one filter size sets type and both sizes; the photometric switch waits for a
    // new scene.
    form().Image_Filter_Width->setValue(2.5);
    form().Image_Filter_Type->setCurrentIndex(form().Image_Filter_Type->findData(2));
    form()._stillFrameQuality->setValue(2);
    form()._enable_PBParameters->blockSignals(true);
    form()._enable_PBParameters->setChecked(true);
    form()._enable_PBParameters->blockSignals(false);
    ASSERT_TRUE(oxPreferences::confirm());
    EXPECT_EQ(current().filterType, 2);
    EXPECT_FLOAT_EQ(current().filterWidth, 2.5f);
    EXPECT_FLOAT_EQ(current().filterHeight, 2.5f);
    EXPECT_EQ(oxRenderParameter::getStillFrameQuality(), 2);
    EXPECT_EQ(form()._basic_stillFrameQuality->value(), 2) << "the basic quality follows";
    EXPECT_FALSE(oxRenderParameter::getPBParameters());
    EXPECT_TRUE(stored<bool>("Physically-based Parameters"));
}

TEST_F(PreferencesPageTest, PrintSizeNamesPortraitASheets)
{
    struct Case {
        int width, height, dpi;
        const char* label;
    };
    const Case cases[] = {
        {2480, 3508, 300, "210 mm x 297 mm (A4)"},
        {3508, 2480, 300, "297 mm x 210 mm "},
        {9933, 14043, 300, "841 mm x 1189 mm (A0)"},
        {800, 600, 72, "282 mm x 212 mm "},
    };
    for (const Case& c : cases)
        EXPECT_EQ(oxPrintSizeLabel(c.width, c.height, c.dpi).toStdString(), c.label);

    form()._dpi->setValue(300);
    form()._iwidth->setValue(2480);
    form()._iheight->setValue(3508);
    EXPECT_EQ(form()._image_size->text(), QStringLiteral("210 mm x 297 mm (A4)"));
}

TEST_F(PreferencesPageTest, PhotometricWarningCancelTakesTheTickBack)
{
    oxDialogResponder::queueAnswer(QStringLiteral("Cancel"));
    form()._enable_PBParameters->setChecked(true);
    EXPECT_FALSE(form()._enable_PBParameters->isChecked());
    ASSERT_EQ(oxDialogResponder::history().size(), 1) << "one warning, no second";
    EXPECT_EQ(oxDialogResponder::history()[0].title, QStringLiteral("Render Settings Preferences"));

    oxDialogResponder::queueAnswer(QStringLiteral("Ok"));
    form()._enable_PBParameters->setChecked(true);
    EXPECT_TRUE(form()._enable_PBParameters->isChecked());
    form()._enable_PBParameters->setChecked(false);
    EXPECT_EQ(oxDialogResponder::history().size(), 2) << "unticking asks nothing";
}

TEST_F(PreferencesPageTest, LinkedSlidersAndSpinBoxesFollowEachOther)
{
    form()._finalgather_quality_slider->setValue(3);
    EXPECT_EQ(form()._finalgather_quality_spinbox->value(), 3);
    // The slider stops at 32; the spin box keeps the value, which is what is stored.
    form()._photon_trace_depth_spinbox->setValue(100);
    EXPECT_EQ(form()._photon_trace_depth_slider->value(), 32);
    form()._interactive_depth_spinbox->setValue(100);
    m_page->widgetsToPreferences();
    EXPECT_EQ(stored<int>("Photon Trace Depth"), 100);
    EXPECT_EQ(stored<int>("Max Reflection Depth"), 100);
}

TEST_F(PreferencesPageTest, EditPreferencesOpensTheDialogAndUnloadTakesTheKeys)
{
    QAction* action = mainWindow->findChild<QAction*>(QStringLiteral("Preferences"));
    ASSERT_TRUE(action);
    EXPECT_TRUE(mainWindow->editMenu()->actions().contains(action));
    oxDialogResponder::queueAnswer(QStringLiteral("OK"));
    EXPECT_EQ(mainWindow->showPreferences(QStringLiteral("Render Settings")), QDialog::Accepted);
    EXPECT_TRUE(oxFile::exists(oxPreferences::getPreferencesFile(), true)) << "OK saves";
    EXPECT_EQ(m_page->widget()->parent(), nullptr) << "the page has its widget back";

    m_page.reset();
    EXPECT_TRUE(data().get("Maximum Antialiasing Samples").empty());
    EXPECT_EQ(oxPreferences::findPage(QStringLiteral("Render Settings")), nullptr);
}

} // namespace
