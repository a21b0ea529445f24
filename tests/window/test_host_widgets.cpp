// The host's widget kit: the behaviour the Render Settings window and its dialogs rely on.

#include "QOXCollapsibleFrame.h"
#include "QOXColorManipulator.h"
#include "QOXDockWindowManager.h"
#include "QOXMultiLevelComboBox.h"
#include "QOXScrollableMessageBox.h"
#include "QOXSlider.h"
#include "QOXVec2Control.h"
#include "QOXWheelPrec.h"
#include "oxDialogResponder.h"
#include "oxIconManager.h"
#include "oxPresetGUII.h"

#include "oxQtPrinters.h"
#include "oxTestSupport.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QSlider>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

class HostWidgetTest : public oxTest {
protected:
    void TearDown() override
    {
        EXPECT_EQ(oxDialogResponder::pendingAnswers(), 0);
        oxDialogResponder::clear();
        oxTest::TearDown();
    }
};

// A combo whose menu is a small camera tree: "Current" (0), Front (1) with viewpoint Top (2).
class CameraCombo : public QOXMultiLevelComboBox {
public:
    bool frontExists = true;
    QString frontName = "Front";

protected:
    QOXComboBoxMenu* createMenu() override
    {
        auto* menu = new QOXComboBoxMenu(this);
        menu->addItem("Current", 0u);
        if (frontExists) {
            menu->addSeparator();
            QOXComboBoxMenu* front = menu->addMenu(frontName, 1u);
            front->addItem("Top", 2u);
        }
        return menu;
    }
};

} // namespace

TEST_F(HostWidgetTest, CollapsibleFrameFoldsItsContentsOnly)
{
    QWidget root;
    auto* framePointer = new QOXCollapsibleFrame(&root);
    QOXCollapsibleFrame& frame = *framePointer;
    frame.setCaption("Image");
    QSignalSpy toggled(&frame, &QOXCollapsibleFrame::toggled);
    // As a form builds it: folded first, contents afterwards.
    frame.setCollapsed(true);
    auto* layout = new QVBoxLayout(&frame);
    auto* page = new QLabel("page", &frame);
    auto* hidden = new QLabel("hidden on purpose", &frame);
    hidden->hide();
    layout->addWidget(page);
    layout->addWidget(hidden);
    QOXCollapsibleFrame::fixLayouts(&root, 100);

    EXPECT_EQ(frame.caption(), "Image");
    EXPECT_EQ(frame.captionButton()->text(), "Image");
    EXPECT_TRUE(page->isHidden());
    EXPECT_LE(frame.sizeHint().height(), frame.captionButton()->sizeHint().height() + 12);

    frame.captionButton()->click();
    EXPECT_FALSE(frame.isCollapsed());
    EXPECT_FALSE(page->isHidden());
    EXPECT_TRUE(hidden->isHidden()) << "a child hidden on purpose stays hidden";
    EXPECT_FALSE(frame.captionButton()->isHidden());
    frame.toggle();
    EXPECT_TRUE(page->isHidden());
    EXPECT_FALSE(frame.captionButton()->isHidden());
    ASSERT_EQ(toggled.size(), 3);
    EXPECT_EQ(toggled[1][0].toBool(), false);
    EXPECT_EQ(toggled[2][0].toBool(), true);
    frame.setCollapsed(true); // no change, no signal
    EXPECT_EQ(toggled.size(), 3);
}

TEST_F(HostWidgetTest, NumberWidgets)
{
    QOXVec2Control pair;
    pair.setMinimum(1.0);
    pair.setDecimals(4);
    pair.setDisplayDecimals(2);
    QSignalSpy xs(&pair, &QOXVec2Control::changedX);
    QSignalSpy ys(&pair, &QOXVec2Control::changedY);
    pair.setX(2480.3149);
    pair.setY(5.0);
    pair.setY(0.5); // clamped to the minimum
    EXPECT_DOUBLE_EQ(pair.x(), 2480.3149);
    EXPECT_DOUBLE_EQ(pair.y(), 1.0);
    EXPECT_EQ(pair.xField()->text(), "2480.31");
    pair.setUseExactDisplayDecimals(true);
    pair.setX(21.0);
    EXPECT_EQ(pair.xField()->text(), "21.00");
    pair.setUseExactDisplayDecimals(false);
    EXPECT_EQ(pair.xField()->text(), "21");
    EXPECT_EQ(xs.size(), 2);
    ASSERT_EQ(ys.size(), 2);
    EXPECT_DOUBLE_EQ(ys[1][0].toDouble(), 1.0);
    pair.setMinimumSpinerSize(50, 20);
    EXPECT_EQ(pair.yField()->minimumWidth(), 50);

    QOXSlider slider;
    slider.setRange(0.5, 5.0);
    slider.setSingleStep(0.1);
    slider.setPageStep(0.0);
    QSignalSpy values(&slider, &QOXSlider::valueChanged);
    slider.slider()->setValue(10); // ten notches above 0.5
    EXPECT_NEAR(slider.value(), 1.5, 1e-9);
    slider.setValue(7.0);
    EXPECT_DOUBLE_EQ(slider.value(), 5.0);
    EXPECT_EQ(slider.slider()->value(), slider.slider()->maximum());
    EXPECT_EQ(slider.slider()->pageStep(), 1);
    EXPECT_EQ(values.size(), 2);

    QOXWheelPrec wheel;
    wheel.setRange(0.5, 3.0);
    wheel.setDecimals(2);
    wheel.setSingleStep(0.01);
    wheel.setValue(2.2);
    QSignalSpy turned(&wheel, &QOXWheelPrec::valueChanged);
    wheel.turn(5);
    EXPECT_NEAR(wheel.value(), 2.25, 1e-9);
    wheel.turn(-1000);
    EXPECT_DOUBLE_EQ(wheel.value(), 0.5);
    EXPECT_EQ(turned.size(), 2);
}

TEST_F(HostWidgetTest, ColorManipulatorOpensARealDialog)
{
    QOXColorManipulator color;
    QSignalSpy changed(&color, &QOXColorManipulator::colorChanged);
    color.setColor(0.25f, 2.0f, -1.0f);
    EXPECT_FLOAT_EQ(color.red(), 0.25f);
    EXPECT_FLOAT_EQ(color.green(), 1.0f);
    EXPECT_FLOAT_EQ(color.blue(), 0.0f);
    ASSERT_EQ(changed.size(), 1);
    color.setColor(0.25f, 1.0f, 0.0f);
    EXPECT_EQ(changed.size(), 1);

    // Headless, the colour dialog is answered with its default (OK): the colour stays.
    oxDialogResponder::clear();
    color.chooseColor();
    ASSERT_EQ(oxDialogResponder::history().size(), 1);
    EXPECT_EQ(oxDialogResponder::history()[0].answer, "OK");
    EXPECT_EQ(changed.size(), 1);
    EXPECT_NEAR(color.red(), 0.25f, 1.0f / 255);
}

TEST_F(HostWidgetTest, MultiLevelComboFollowsItsMenu)
{
    CameraCombo combo;
    combo.addItem("Current", 0u);
    QSignalSpy changed(&combo, &QOXMultiLevelComboBox::changed);

    EXPECT_TRUE(combo.change(QVariant(2u)));
    EXPECT_EQ(combo.currentText(), "Top");
    EXPECT_EQ(combo.currentData(Qt::UserRole).toUInt(), 2u);
    EXPECT_FALSE(combo.change(QVariant(7u)));
    EXPECT_EQ(combo.currentText(), "Top");
    EXPECT_TRUE(combo.change(QVariant(1u))); // a submenu's own entry
    EXPECT_EQ(combo.currentText(), "Front");
    EXPECT_EQ(changed.size(), 2);

    // Renamed: update follows. Deleted: update resets; undo brings it back.
    combo.frontName = "Front Left";
    combo.update();
    EXPECT_EQ(combo.currentText(), "Front Left");
    combo.frontExists = false;
    combo.update();
    EXPECT_EQ(combo.currentText(), "Current");
    EXPECT_EQ(combo.currentData().toUInt(), 0u);
    combo.frontExists = true;
    combo.undo();
    EXPECT_EQ(combo.currentText(), "Front Left");
    EXPECT_EQ(combo.currentData().toUInt(), 1u);
    combo.reset();
    EXPECT_EQ(combo.currentText(), "Current");
    EXPECT_EQ(combo.count(), 1);
}

TEST_F(HostWidgetTest, DialogResponderAnswersFromItsQueueOrWithTheDefault)
{
    oxDialogResponder::clear();
    ASSERT_TRUE(oxDialogResponder::isActive());

    oxDialogResponder::queueAnswer("&No");
    EXPECT_EQ(QMessageBox::question(nullptr, "Files", "Overwrite 3 files?",
                                    QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes),
              QMessageBox::No);
    EXPECT_EQ(QMessageBox::question(nullptr, "Files", "Overwrite 3 files?",
                                    QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes),
              QMessageBox::Yes);

    // A custom box with buttons of its own, answered by text.
    QMessageBox box(QMessageBox::Warning, "Render", "2 files exist.", QMessageBox::NoButton);
    QAbstractButton* skip = box.addButton("Skip existing", QMessageBox::AcceptRole);
    box.addButton("Overwrite all", QMessageBox::AcceptRole);
    box.addButton(QMessageBox::Cancel);
    oxDialogResponder::queueAnswer("Skip existing");
    box.exec();
    EXPECT_EQ(box.clickedButton(), skip);

    bool accepted = false;
    oxDialogResponder::queueAnswer("Night");
    EXPECT_EQ(QInputDialog::getText(nullptr, "Preset Name", "Enter the name of the preset:",
                                    QLineEdit::Normal, QString(), &accepted),
              "Night");
    EXPECT_TRUE(accepted);

    // A file dialog takes the queued file; with nothing queued it is cancelled.
    oxTempDir folder;
    oxDialogResponder::queueAnswer(QString::fromStdString(folder.file("shot.png")));
    EXPECT_EQ(
        QFileDialog::getSaveFileName(nullptr, "Save Image", QString::fromStdString(folder.path())),
        QString::fromStdString(folder.file("shot.png")));
    EXPECT_TRUE(QFileDialog::getOpenFileName(nullptr, "Open Scene").isEmpty());

    const auto& history = oxDialogResponder::history();
    ASSERT_EQ(history.size(), 6);
    EXPECT_EQ(history[0].question, "Overwrite 3 files?");
    EXPECT_EQ(history[0].answer, "No");
    EXPECT_EQ(history[1].answer, "Yes");
    EXPECT_EQ(history[2].answer, "Skip existing");
    EXPECT_EQ(history[3].question, "Enter the name of the preset:");
    EXPECT_EQ(history[3].answer, "Night");
    EXPECT_TRUE(
        log().contains(oxLog::Info, "Dialog 'Files' asked 'Overwrite 3 files?'; answered 'No'."));

    // An answer that fits no button is reported and the default answers.
    expectLog(oxLog::Warning, "Dialog 'Files' has no button 'Maybe'; its default button answers.");
    oxDialogResponder::queueAnswer("Maybe");
    EXPECT_EQ(QMessageBox::question(nullptr, "Files", "Again?", QMessageBox::Yes | QMessageBox::No,
                                    QMessageBox::No),
              QMessageBox::No);
}

TEST_F(HostWidgetTest, ScrollableMessageBoxScrollsItsText)
{
    QStringList files;
    for (int i = 0; i < 200; ++i)
        files << QString("/renders/frame%1.png").arg(i, 4, 10, QLatin1Char('0'));
    QOXScrollableMessageBox box(QMessageBox::Warning, "Oxlin", files.join('\n'),
                                QMessageBox::NoButton, nullptr, Qt::WindowFlags(259));
    box.makeScrollable(400, 200);
    ASSERT_TRUE(box.isScrollable());
    auto* area = box.findChild<QScrollArea*>();
    ASSERT_NE(area, nullptr);
    EXPECT_EQ(area->size(), QSize(400, 200));
    auto* label = qobject_cast<QLabel*>(area->widget());
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), files.join('\n'));
    box.addButton("Overwrite", QMessageBox::AcceptRole);
    oxDialogResponder::queueAnswer("Overwrite");
    box.exec();
    EXPECT_EQ(box.clickedButton()->text(), "Overwrite");
}

TEST_F(HostWidgetTest, PresetDialogAnnouncesRenamesAndDeletes)
{
    oxPresetGUII dialog;
    dialog.addPreset("Draft");
    dialog.addPreset("Final");
    dialog.setCurrentPreset("Final");
    EXPECT_EQ(dialog.presets(), QStringList({"Draft", "Final"}));
    EXPECT_EQ(dialog.list()->currentItem()->text(), "Final");
    EXPECT_TRUE(dialog.list()->currentItem()->font().bold());

    QSignalSpy renamed(&dialog, &oxPresetGUII::presetRenamed);
    QSignalSpy deleted(&dialog, &oxPresetGUII::presetsDeleted);
    QSignalSpy activated(&dialog, &oxPresetGUII::presetActivated);

    // Editing an item in the list is a rename request.
    dialog.list()->item(0)->setText("Quick");
    ASSERT_EQ(renamed.size(), 1);
    EXPECT_EQ(renamed[0][0].toString(), "Draft");
    EXPECT_EQ(renamed[0][1].toString(), "Quick");
    EXPECT_EQ(dialog.list()->item(0)->text(), "Draft") << "the owner fills the list anew";
    // Refused names: a taken one, "Default", an empty one; each with a message.
    for (const QString& bad : {QString("Final"), QString("Default"), QString("  ")})
        EXPECT_FALSE(dialog.renamePreset("Draft", bad));
    EXPECT_EQ(renamed.size(), 1);
    EXPECT_EQ(oxDialogResponder::history().size(), 3);

    // Deleting asks first.
    dialog.list()->selectAll();
    oxDialogResponder::queueAnswer("No");
    dialog.deleteSelected();
    EXPECT_EQ(deleted.size(), 0);
    oxDialogResponder::queueAnswer("Yes");
    dialog.deleteSelected();
    ASSERT_EQ(deleted.size(), 1);
    EXPECT_EQ(deleted[0][0].value<QVector<QString>>(), QVector<QString>({"Draft", "Final"}));

    emit dialog.list()->itemActivated(dialog.list()->item(1));
    ASSERT_EQ(activated.size(), 1);
    EXPECT_EQ(activated[0][0].toString(), "Final");

    dialog.clearPresets();
    EXPECT_TRUE(dialog.presets().isEmpty());
}

TEST_F(HostWidgetTest, EveryIconNameHasARealIcon)
{
    for (const QString& name : oxIconManager::names()) {
        const QIcon icon =
            name.contains('/') ? oxIconManager::get(name) : oxIconManager::getIcon(name, QString());
        ASSERT_FALSE(icon.isNull()) << name.toStdString();
        const QImage image = icon.pixmap(24, 24).toImage();
        ASSERT_FALSE(image.isNull()) << name.toStdString();
        // Something is drawn.
        bool painted = false;
        for (int y = 0; y < image.height() && !painted; ++y)
            for (int x = 0; x < image.width() && !painted; ++x)
                painted = qAlpha(image.pixel(x, y)) > 0;
        EXPECT_TRUE(painted) << name.toStdString();
    }
    for (const char* used : {"FileOpen", "CreateImage", "StartRendering"})
        EXPECT_TRUE(oxIconManager::hasIcon(used)) << used;
    EXPECT_TRUE(oxIconManager::hasIcon("scenegraph/FolderClosed.svg"));
    EXPECT_TRUE(oxIconManager::hasIcon("scenegraph/FolderOpen.svg"));

    expectLog(oxLog::Warning, "oxIconManager: there is no icon named 'NoSuchIcon'.");
    EXPECT_TRUE(oxIconManager::getIcon("NoSuchIcon", QString()).isNull());
    EXPECT_TRUE(oxIconManager::getIcon("NoSuchIcon", QString()).isNull()); // warned once
}

TEST_F(HostWidgetTest, DockManagerKeepsDocksByName)
{
    QMainWindow main;
    auto* bar = main.addToolBar("Quick");
    QOXDockWindowManager manager(&main, bar);
    auto* panel = new QWidget();
    QOXDockWidget* dock = manager.add("Panel", "Short", panel, "Toolclip_Panel", "CreateImage",
                                      "Panel", 0, true, nullptr);
    ASSERT_NE(dock, nullptr);
    EXPECT_EQ(manager.getDockWidget("Panel"), dock);
    EXPECT_EQ(manager.getDockWidget("Other"), nullptr);
    EXPECT_FALSE(manager.undock("Other"));
    EXPECT_TRUE(manager.undock("Panel"));
    EXPECT_TRUE(dock->isFloating());

    auto* action = new QAction("Go", &main);
    manager.addQuickAccessAction(action, "Go");
    EXPECT_EQ(manager.getQuickAccessAction("Go"), action);
    delete action;
    EXPECT_EQ(manager.getQuickAccessAction("Go"), nullptr);
    EXPECT_TRUE(bar->actions().isEmpty());

    QPointer<QOXDockWidget> guard = dock;
    delete panel;
    EXPECT_EQ(manager.getDockWidget("Panel"), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(guard.isNull());
}
