// The Render Settings form: the widgets the code names exist with their class, a few texts and
// ranges a user relies on, the sections in their tabs, and the form's own links.

#include "oxRenderPasses.h"
#include "oxRenderSettings.h" // the generated form Ui_oxRenderSettingsGUI
#include "oxRenderSettingsForm.h"

#include "oxQtPrinters.h"
#include "oxTestSupport.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabWidget>

#include <map>
#include <set>

namespace {

class FormTest : public oxTest {
protected:
    void SetUp() override { ui.setupUi(&window); }

    template <typename T>
    T* widget(const char* name) const
    {
        return window.findChild<T*>(QString::fromLatin1(name));
    }

    QMainWindow window;
    Ui_oxRenderSettingsGUI ui;
};

QString itemsOf(const QComboBox* combo)
{
    QStringList items;
    for (int i = 0; i < combo->count(); ++i)
        items << combo->itemText(i);
    return items.join(QLatin1Char('|'));
}

// The widget's section: the nearest collapsible frame above it.
QOXCollapsibleFrame* sectionOf(QWidget* widget)
{
    for (QWidget* w = widget->parentWidget(); w; w = w->parentWidget()) {
        if (auto* frame = qobject_cast<QOXCollapsibleFrame*>(w))
            return frame;
    }
    return nullptr;
}

} // namespace

TEST_F(FormTest, TextsRangesAndStatesAUserReliesOn)
{
    const std::pair<QComboBox*, const char*> combos[] = {
        {ui._quality_preset, "Draft|Preview|Production|Production Interior|Custom"},
        {ui._icc_profile,
         "Current Settings|sRGB IEC 61966-21|Adobe RGB 98|Monitor ICC Profile|Image ICC Profile"},
        {ui._ssfactor, "Off|On"},
        {ui._animFormatCB, "Images|Movie"},
        {ui._animType, "Clip|Timeline"},
        {ui._photon_mode, "Off|Indirect Only|Caustics + Indirect"},
    };
    for (const auto& [combo, items] : combos)
        EXPECT_EQ(itemsOf(combo), items) << combo->objectName().toStdString();
    EXPECT_EQ(ui._alpha->text(), "Export Alpha Channel");
    EXPECT_EQ(ui._use_multi_layer->text(), "Export Multi Layer EXR/PSD for Render Passes");
    EXPECT_EQ(ui._export_renderpasses->title(), "Export Renderpasses");
    EXPECT_TRUE(ui._export_renderpasses->isCheckable());
    EXPECT_TRUE(ui._export_renderpasses->isChecked());
    EXPECT_EQ(ui._alpha->toolTip(), "Enables export of an alpha channel.");
    // The help texts that need formatting are rich text.
    for (const QWidget* help :
         {static_cast<QWidget*>(ui._aa_threshold_quality), static_cast<QWidget*>(ui._denoiser_type),
          static_cast<QWidget*>(ui._use_ray_splitting)})
        EXPECT_TRUE(help->toolTip().startsWith("<html>")) << help->objectName().toStdString();

    struct Range {
        QSpinBox* box;
        int minimum, maximum, value;
    };
    for (const Range& r :
         {Range{ui._dpi, 0, 1200, 300}, Range{ui._time_minutes, 0, 59, 1},
          Range{ui._time_seconds, 0, 59, 30}, Range{ui._image_samples_spinbox, 1, 9999999, 256},
          Range{ui._samples_threshold, 1, 32768, ui._samples_threshold->value()},
          Range{ui._stillframe_depth_spinbox, 0, 1024, 32}}) {
        SCOPED_TRACE(r.box->objectName().toStdString());
        EXPECT_EQ(r.box->minimum(), r.minimum);
        EXPECT_EQ(r.box->maximum(), r.maximum);
        EXPECT_EQ(r.box->value(), r.value);
    }
    // The pass boxes and wheels are checked with their tables; the slider spin boxes here.
    for (const char* name : kSliderSpinBoxes)
        EXPECT_NE(widget<QSpinBox>(name), nullptr) << name;
    EXPECT_EQ(ui._raytracing_cores_limit->specialValueText(), "All Available");
    EXPECT_EQ(ui._stillFrameQualitySpinbox->specialValueText(), "Off");
    EXPECT_EQ(ui._print_size->suffix(), " cm");
    EXPECT_EQ(ui._pixel_size->suffix(), " px");
    EXPECT_EQ(ui._pixel_size->decimals(), 0);

    // The form starts with the beauty pass only, and with image samples rather than time.
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (info.widget) {
            EXPECT_EQ(widget<QCheckBox>(info.widget)->isChecked(), info.flag == PassFlag::Beauty)
                << info.widget;
        }
    }
    EXPECT_TRUE(ui._use_image_samples->isChecked());
}

TEST_F(FormTest, SectionsStandInTheirTabsInOrder)
{
    const std::vector<std::pair<QString, QStringList>> tabs = {
        {"File Output",
         {"Variant Sets", "Image", "Renderpasses", "Cluster", "Animation", "Metadata"}},
        {"General Settings", {"Antialiasing", "Pixel Filter", "Options"}},
        {"Raytracing Quality",
         {"Illumination Mode", "Photon Tracing", "IBL Sampling Quality",
          "Reflection/Refraction Sampling Quality", "Trace Depth", "Quality Settings",
          "Material Overrides"}},
        {"Display Output", {"Color", "Sim2 HDR", "Histogram", "Visual Support"}},
    };
    EXPECT_EQ(window.windowTitle(), "Render Settings");
    QTabWidget* tabWidget = ui.RenderSettingsTabWidget;
    ASSERT_EQ(tabWidget->count(), int(tabs.size()));
    for (int i = 0; i < tabWidget->count(); ++i) {
        EXPECT_EQ(tabWidget->tabText(i), tabs[size_t(i)].first);
        // Each tab scrolls vertically only; its sections are the scroll area's, in order.
        auto* area = tabWidget->widget(i)->findChild<QScrollArea*>();
        ASSERT_NE(area, nullptr);
        EXPECT_EQ(area->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QStringList captions;
        QLayout* layout = area->widget()->layout();
        for (int item = 0; item < layout->count(); ++item) {
            if (auto* frame = qobject_cast<QOXCollapsibleFrame*>(layout->itemAt(item)->widget()))
                captions << frame->caption();
        }
        EXPECT_EQ(captions, tabs[size_t(i)].second);
    }
    EXPECT_FALSE(ui._imageCF->isCollapsed());
    EXPECT_TRUE(ui._renderpassesCF->isCollapsed());
    // Below the tabs: statistics, then the render buttons.
    QLayout* central = ui.centralwidget->layout();
    ASSERT_EQ(central->count(), 3);
    EXPECT_EQ(central->itemAt(0)->widget(), tabWidget);
    EXPECT_EQ(central->itemAt(1)->widget(), ui._statistics_frame);
    EXPECT_EQ(central->itemAt(2)->widget(), ui._render_button_frame);
    // The menu bar holds the preset menu only.
    ASSERT_EQ(ui.menubar->actions().size(), 1);
    EXPECT_EQ(ui.menubar->actions().front()->menu(), ui._presetsMenu);
    EXPECT_EQ(ui._presetsMenu->title(), "&Presets");
    // The view chooser stands in the image section, beside its label "View".
    EXPECT_EQ(sectionOf(ui._view), ui._imageCF);
    EXPECT_EQ(sectionOf(ui._image_sizes_label_simpleUI_3), ui._imageCF);
    EXPECT_EQ(ui._variantTreeLayout->parent()->parent(), ui._variantsCFPage);
}

TEST_F(FormTest, RenderPassCheckBoxesFollowThePassTables)
{
    // Every flag with a check box has it (and its twin) with the flag's label, in the
    // renderpasses section.
    std::set<QString> passBoxes;
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (!info.widget)
            continue;
        SCOPED_TRACE(info.widget);
        for (const char* name : {info.widget, info.twinWidget}) {
            if (!name)
                continue;
            auto* box = widget<QCheckBox>(name);
            ASSERT_NE(box, nullptr) << name;
            EXPECT_EQ(box->text(), info.label);
            EXPECT_EQ(sectionOf(box), ui._renderpassesCF);
            passBoxes.insert(box->objectName());
        }
    }
    // The groups: each tab holds, in table order, its groups' labels each followed by the
    // group's check boxes; a flag shown on both tabs uses its twin on the second.
    ASSERT_EQ(ui.RenderpassesTab->count(), 2);
    std::set<PassFlag> onFirstTab;
    std::map<std::string, std::vector<QString>> expected;
    for (const oxRenderPassGroup& group : kPassGroups) {
        auto* tab = widget<QWidget>(group.tabObjectName);
        ASSERT_NE(tab, nullptr) << group.tabObjectName;
        EXPECT_EQ(ui.RenderpassesTab->tabText(ui.RenderpassesTab->indexOf(tab)), group.tabTitle);
        const bool firstTab = ui.RenderpassesTab->indexOf(tab) == 0;
        std::vector<QString>& order = expected[group.tabObjectName];
        order.push_back(QString("label:") + group.groupLabel);
        for (PassFlag flag : group.flags) {
            const oxRenderPassFlagInfo& info = passFlagInfo(flag);
            const bool twin = !firstTab && onFirstTab.count(flag);
            ASSERT_TRUE(!twin || info.twinWidget) << info.widget;
            order.push_back(twin ? info.twinWidget : info.widget);
            if (firstTab)
                onFirstTab.insert(flag);
        }
    }
    for (const auto& [tabName, order] : expected) {
        SCOPED_TRACE(tabName);
        auto* grid = qobject_cast<QGridLayout*>(widget<QWidget>(tabName.c_str())->layout());
        ASSERT_NE(grid, nullptr);
        std::vector<QString> shown;
        for (int row = 0; row < grid->rowCount(); ++row) {
            QLayoutItem* previous = nullptr;
            for (int column = 0; column < grid->columnCount(); ++column) {
                QLayoutItem* item = grid->itemAtPosition(row, column);
                if (!item || !item->widget() || item == previous)
                    continue;
                previous = item;
                if (auto* label = qobject_cast<QLabel*>(item->widget()))
                    shown.push_back("label:" + label->text());
                else
                    shown.push_back(item->widget()->objectName());
            }
        }
        EXPECT_EQ(shown, order);
    }
    // No pass check box stands outside the tables.
    for (QCheckBox* box : ui.RenderpassesTab->findChildren<QCheckBox*>())
        EXPECT_TRUE(passBoxes.count(box->objectName())) << box->objectName().toStdString();
}

TEST_F(FormTest, TwinsFollowEachOther)
{
    int twins = 0;
    for (const oxRenderPassFlagInfo& info : kPassFlags) {
        if (!info.twinWidget)
            continue;
        ++twins;
        SCOPED_TRACE(info.widget);
        auto* first = widget<QCheckBox>(info.widget);
        auto* second = widget<QCheckBox>(info.twinWidget);
        ASSERT_TRUE(first && second);
        first->setChecked(true);
        EXPECT_TRUE(second->isChecked());
        second->setChecked(false);
        EXPECT_FALSE(first->isChecked());
    }
    EXPECT_EQ(twins, 7);
}

TEST_F(FormTest, ToggledLinks)
{
    struct Link {
        const char* sender;
        std::vector<const char*> receivers;
        bool disables;
    };
    const Link links[] = {
        {"_alpha", {"_premultiply"}, false},
        {"_cluster", {"label_10", "_cluster_hosts"}, false},
        {"_use_region_region",
         {"_region_start_label", "_region_start_x", "_region_start_y", "_region_end_x",
          "_region_end_label", "_region_end_y", "_use_viewport_region"},
         false},
        {"_snapshot_frame",
         {"_snapshot_rule_of_thirds", "_snapshot_inner_frame", "_inner_type", "_unit_label",
          "_leftright_label", "_left", "_right", "_topbottom_label", "_top", "_bottom",
          "_snapshot_render_region_frame"},
         false},
        {"_use_automatic_photon_radius", {"_indirect_radius", "_indirect_radius_label"}, true},
        {"_use_image_samples", {"_image_samples_slider", "_image_samples_spinbox"}, false},
    };
    for (const Link& link : links) {
        SCOPED_TRACE(link.sender);
        auto* sender = widget<QAbstractButton>(link.sender);
        ASSERT_NE(sender, nullptr);
        for (bool on : {true, false, true}) {
            // Radio buttons only turn off through their group.
            if (!on && qobject_cast<QRadioButton*>(sender))
                ui._use_time->setChecked(true);
            else
                sender->setChecked(on);
            for (const char* name : link.receivers) {
                auto* receiver = widget<QWidget>(name);
                ASSERT_NE(receiver, nullptr) << name;
                EXPECT_EQ(receiver->isEnabledTo(&window), link.disables ? !on : on) << name;
            }
        }
    }

    // The master of the material overrides checks and enables its four switches.
    const std::vector<QCheckBox*> overrides = {
        ui._allowOverrideIlluminationMode, ui._allowOverrideIBLQuality,
        ui._allowOverrideReflectionQuality, ui._allowOverrideTraceDepth};
    ui._allowMaterialOverrides->setChecked(false);
    for (QCheckBox* box : overrides) {
        EXPECT_FALSE(box->isEnabled());
        EXPECT_FALSE(box->isChecked());
    }
    ui._allowMaterialOverrides->setChecked(true);
    for (QCheckBox* box : overrides) {
        EXPECT_TRUE(box->isEnabled());
        EXPECT_TRUE(box->isChecked());
    }
}

TEST_F(FormTest, TimeOrSamplesIsOneChoice)
{
    QButtonGroup* group = ui._time_or_samples_group;
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->buttons().size(), 2);
    EXPECT_TRUE(group->exclusive());
    ui._use_time->setChecked(true);
    EXPECT_FALSE(ui._use_image_samples->isChecked());
}
