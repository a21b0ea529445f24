// The Render Settings form: every object of the form table exists with its class, text,
// items, range, state, tool tip and section, and the form's own links work.

#include "oxFormTable.h"
#include "oxRenderPasses.h"
#include "oxRenderSettings.h" // the generated form Ui_oxRenderSettingsGUI

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

#include <cmath>
#include <map>
#include <memory>
#include <set>

namespace {

class FormTest : public oxTest {
protected:
    void SetUp() override { ui.setupUi(&window); }

    QObject* object(const char* name) const
    {
        return window.findChild<QObject*>(QString::fromLatin1(name));
    }
    template <typename T>
    T* widget(const char* name) const
    {
        return window.findChild<T*>(QString::fromLatin1(name));
    }

    QMainWindow window;
    Ui_oxRenderSettingsGUI ui;
};

QString textOf(QObject* object)
{
    if (auto* multi = qobject_cast<QOXMultiLevelComboBox*>(object))
        return multi->count() > 0 ? multi->itemText(0) : QString();
    if (auto* combo = qobject_cast<QComboBox*>(object)) {
        QStringList items;
        for (int i = 0; i < combo->count(); ++i)
            items << combo->itemText(i);
        return items.join(QLatin1Char('|'));
    }
    if (auto* group = qobject_cast<QGroupBox*>(object))
        return group->title();
    return object->property("text").toString();
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

TEST_F(FormTest, EveryObjectHasItsClassAndText)
{
    EXPECT_EQ(window.objectName(), "oxRenderSettingsGUI");
    EXPECT_EQ(window.windowTitle(), "Render Settings");
    std::set<std::string> names;
    for (const oxform::Object& expected : oxform::kObjects) {
        SCOPED_TRACE(expected.name);
        EXPECT_TRUE(names.insert(expected.name).second) << "listed twice";
        QObject* found = object(expected.name);
        ASSERT_NE(found, nullptr);
        EXPECT_STREQ(found->metaObject()->className(), expected.className);
        if (expected.text) {
            EXPECT_EQ(textOf(found), QString::fromUtf8(expected.text));
        }
    }
}

TEST_F(FormTest, RangesFormValuesAndStates)
{
    auto check = [](QObject* found, const char* property, double expected) {
        if (std::isnan(expected))
            return;
        const QVariant value = found->property(property);
        ASSERT_TRUE(value.isValid()) << property;
        EXPECT_DOUBLE_EQ(value.toDouble(), expected) << property;
    };
    for (const oxform::Range& range : oxform::kRanges) {
        SCOPED_TRACE(range.name);
        QObject* found = object(range.name);
        ASSERT_NE(found, nullptr);
        check(found, "minimum", range.minimum);
        check(found, "maximum", range.maximum);
        check(found, "singleStep", range.singleStep);
        check(found, "pageStep", range.pageStep);
        check(found, "value", range.value);
    }
    for (const oxform::Special& special : oxform::kSpecialValues) {
        SCOPED_TRACE(special.name);
        auto* box = widget<QAbstractSpinBox>(special.name);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->specialValueText(), special.text);
    }
    for (const oxform::State& state : oxform::kStates) {
        SCOPED_TRACE(state.name);
        QObject* found = object(state.name);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->property("checked").toBool(), state.checked);
    }
    // Unit suffixes and decimals of the pair fields.
    EXPECT_EQ(ui._print_size->suffix(), " cm");
    EXPECT_EQ(ui._print_size->decimals(), 2);
    EXPECT_EQ(ui._pixel_size->suffix(), " px");
    EXPECT_EQ(ui._pixel_size->decimals(), 0);
    EXPECT_TRUE(ui._export_renderpasses->isCheckable());
}

TEST_F(FormTest, ToolTips)
{
    for (const oxform::ToolTip& tip : oxform::kToolTips) {
        SCOPED_TRACE(tip.name);
        auto* found = widget<QWidget>(tip.name);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->toolTip(), QString::fromUtf8(tip.text));
    }
    // The rich help texts are there, as rich text.
    const QWidget* helps[] = {ui._aa_threshold_quality,
                              ui._brdf_mode,
                              ui._denoiser_type,
                              ui._spectral_illuminant,
                              ui._use_ray_splitting,
                              ui._enable_cost_visualization,
                              ui._use_automatic_photon_radius,
                              ui._use_final_gather_for_glossy,
                              ui._sim2LuminanceMappingSlider};
    for (const QWidget* help : helps)
        EXPECT_TRUE(help->toolTip().startsWith("<html>")) << help->objectName().toStdString();
}

TEST_F(FormTest, SectionsStandInTheirTabsInOrder)
{
    QTabWidget* tabs = ui.RenderSettingsTabWidget;
    ASSERT_EQ(tabs->count(), 4);
    std::map<std::string, std::vector<std::string>> expectedOrder;
    std::vector<std::string> tabOrder;
    for (const oxform::Section& section : oxform::kSections) {
        if (tabOrder.empty() || tabOrder.back() != section.tab)
            tabOrder.push_back(section.tab);
        expectedOrder[section.tab].push_back(section.name);
        SCOPED_TRACE(section.name);
        auto* frame = widget<QOXCollapsibleFrame>(section.name);
        ASSERT_NE(frame, nullptr);
        EXPECT_EQ(frame->caption(), section.caption);
        EXPECT_EQ(frame->isCollapsed(), section.collapsed);
    }
    ASSERT_EQ(tabOrder.size(), 4u);
    for (int i = 0; i < tabs->count(); ++i) {
        SCOPED_TRACE(tabOrder[i]);
        EXPECT_EQ(tabs->tabText(i).toStdString(), tabOrder[i]);
        // Each tab scrolls vertically only; its sections are the scroll area's, in order.
        auto* area = tabs->widget(i)->findChild<QScrollArea*>();
        ASSERT_NE(area, nullptr);
        EXPECT_EQ(area->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        std::vector<std::string> order;
        QLayout* layout = area->widget()->layout();
        for (int item = 0; item < layout->count(); ++item) {
            if (auto* frame = qobject_cast<QOXCollapsibleFrame*>(layout->itemAt(item)->widget()))
                order.push_back(frame->objectName().toStdString());
        }
        EXPECT_EQ(order, expectedOrder[tabOrder[i]]);
    }
    // Below the tabs: statistics, then the render buttons.
    QLayout* central = ui.centralwidget->layout();
    ASSERT_EQ(central->count(), 3);
    EXPECT_EQ(central->itemAt(0)->widget(), tabs);
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
