// oxscreenshots: renders the Render Settings window offscreen into PNG files for review:
// the main window with the docked window, each tab of the window with every section open,
// the render pass section on each of its tabs, the Variant Sets section with the statistics,
// the host's Script Editor after a run, the preferences dialog on the Render Settings page, the
// Render Queue dock after a run of its jobs, the view chooser's menu, the photometric switch's
// question and the preset edit dialog.
// the main window's render view on the example scene (plain, and with a render region drawn),
// the host's Script Editor after a run, and the preferences dialog on the Render Settings page.
//
// Usage: oxscreenshots [OUTPUT_DIR]   (default: screenshots)

#include "QOXCollapsibleFrame.h"
#include "QOXDockWindowManager.h"
#include "oxImageSource.h"
#include "oxOSGWidget.h"
#include "oxController.h"
#include "oxMainWindow.h"
#include "oxMenuComboBox.h"
#include "oxPlatform.h"
#include "oxPreferencesDialog.h"
#include "oxPresetGUII.h"
#include "oxRaytracerSource.h"
#include "oxRenderQueue.h"
#include "oxRenderSettings.h"
#include "oxRenderView.h"
#include "oxSceneIO.h"
#include "oxScript.h"
#include "oxScriptEditor.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPainter>
#include <QMouseEvent>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QTabWidget>

#include <algorithm>
#include <cstdio>

extern "C" void initPlugin();
extern "C" void initPreferencesPlugin();

namespace {

bool save(QWidget* widget, const QDir& dir, const QString& name)
{
    QCoreApplication::processEvents();
    const QString path = dir.filePath(name + QStringLiteral(".png"));
    if (!widget->grab().save(path)) {
        std::fprintf(stderr, "oxscreenshots: can't write '%s'\n", qPrintable(path));
        return false;
    }
    std::printf("%s\n", qPrintable(path));
    return true;
}

// The whole contents of a tab, as if its scroll area were tall enough.
bool saveTab(QScrollArea* area, const QDir& dir, const QString& name)
{
    QWidget* contents = area->widget();
    QCoreApplication::processEvents();
    contents->resize(area->viewport()->width(), contents->sizeHint().height());
    return save(contents, dir, name);
}

QString fileName(const QString& text)
{
    QString name = text.toLower();
    name.replace(QRegExp(QStringLiteral("[^a-z0-9]+")), QStringLiteral("_"));
    return name;
}

// A short script that shows every kind of highlighting, and its output.
const char kSampleScript[] = R"("""Prints a few square roots,
then fails on purpose."""
import math


class Sample:
    def __init__(self, index):
        self.index = index

    @property
    def label(self):
        return f"sample {self.index}"  # an f-string


for i in range(3):
    print(Sample(i).label, round(math.sqrt(i * 2.5), 3))
raise ValueError("no fourth sample")  # red in the output
)";

// The Script Editor docked under the main window, after running kSampleScript.
bool saveScriptEditor(oxMainWindow& mainWindow, const QDir& dir)
{
    QOXDockWidget* dock =
        mainWindow.dockWindowManager()->getDockWidget(QStringLiteral("ScriptEditor"));
    oxScriptEditor* editor = mainWindow.scriptEditor();
    if (!dock || !editor || !oxScript::start()) {
        std::fprintf(stderr, "oxscreenshots: no Script Editor or no Python\n");
        return false;
    }
    // Tall enough for the whole script and its output.
    mainWindow.resize(1400, 1150);
    dock->show();
    mainWindow.resizeDocks({dock}, {780}, Qt::Vertical);
    editor->editor()->setPlainText(QString::fromUtf8(kSampleScript));
    editor->runScript();
    return save(dock, dir, QStringLiteral("script_editor"));
}

// The Variant Sets section on the example scene with the Paint group and one Rims set
// chosen, beside the host's Variant Sets dock, and the statistics they give.
bool saveVariantSets(oxMainWindow& mainWindow, oxRenderSettings& window, const QDir& dir)
{
    QOXDockWidget* dock =
        mainWindow.dockWindowManager()->getDockWidget(QStringLiteral("VariantSets"));
    if (!dock) {
        std::fprintf(stderr, "oxscreenshots: no Variant Sets dock\n");
        return false;
    }
    oxSceneIO::newScene();
    dock->show();
    window.clearVariantSetGroups();
    window.addVariantSetGroup("Paint");
    window.setActiveVariantSets("Paint", {"Paint Red", "Paint Blue", "Paint Silver"});
    window.setActiveVariantSets("Rims", {"Rims Sport"});
    window._variantSetsUsed->setChecked(true);
    window._variantsCF->setCollapsed(false);
    QCoreApplication::processEvents();
    bool ok = save(dock, dir, QStringLiteral("variant_sets_dock"));
    ok = save(window._variantsCF, dir, QStringLiteral("variant_sets")) && ok;
    return save(window._statistics_frame, dir, QStringLiteral("render_statistics")) && ok;
}

// The Render Queue dock after a run: two jobs done, one failed (a file where its folder should
// be), one still waiting.
bool saveRenderQueue(oxMainWindow& mainWindow, oxRenderSettings& window, const QDir& dir)
{
    oxRenderQueue queue;
    QOXDockWidget* dock = queue.dockWidget();
    QDir out(dir.filePath(QStringLiteral("render_queue_output")));
    out.removeRecursively();
    if (!dock || !QDir().mkpath(out.path())) {
        std::fprintf(stderr, "oxscreenshots: no Render Queue dock\n");
        return false;
    }
    QFile blocker(out.filePath(QStringLiteral("blocked")));
    blocker.open(QIODevice::WriteOnly);
    blocker.close();
    oxSceneIO::newScene();
    window.clearVariantSetGroups();
    window._variantSetsUsed->setChecked(false);
    for (const char* name : {"front.png", "blocked/side.png", "top.png", "back.png"}) {
        oxRenderSettingsPreset& preset = window.getCurrentPreset();
        preset.filename = out.filePath(QString::fromLatin1(name)).toStdString();
        preset.pixel_width = 64.0f;
        preset.pixel_height = 36.0f;
        window.buildRenderJobMessage();
    }
    // The jobs render with the host's raytracer, as in oxlin.
    oxImageSource* previous = oxImageSource::current();
    oxImageSource::setCurrent(&oxRaytracerSource::the());
    queue.renderAll(true);
    oxImageSource::setCurrent(previous);
    queue.requeueJob(3);
    dock->show();
    mainWindow.resize(1400, 1100);
    mainWindow.resizeDocks({dock}, {560}, Qt::Vertical);
    QCoreApplication::processEvents();
    const bool ok = save(dock, dir, QStringLiteral("render_queue"));
    out.removeRecursively();
    return ok;
}

// The preferences dialog with the Render Settings page, on its first two tabs.
bool savePreferences(oxMainWindow& mainWindow, const QDir& dir)
{
    oxPreferencesDialog dialog(&mainWindow);
    if (!dialog.selectPage(QStringLiteral("Render Settings"))) {
        std::fprintf(stderr, "oxscreenshots: the plug-in made no Render Settings preferences\n");
        return false;
    }
    dialog.show();
    auto* tabs = dialog.findChild<QTabWidget*>(QStringLiteral("Render_Settings"));
    bool ok = tabs != nullptr;
    for (int i = 0; tabs && i < 2; ++i) {
        tabs->setCurrentIndex(i);
        const QString name = QStringLiteral("preferences_%1").arg(fileName(tabs->tabText(i)));
        ok = save(&dialog, dir, name) && ok;
    }
    return ok;
}

// The view chooser's menu with the camera's submenu open beside it, the photometric switch's
// question, and the preset edit dialog with two presets.
bool saveViewAndDialogs(oxRenderSettings& window, const QDir& dir)
{
    oxSceneIO::newScene();
    window.setViewByName("Side");
    oxComboboxMenu menu(oxMenuComboBox::kCurrentText, window._view->currentId());
    QMenu* cameras = nullptr;
    for (QAction* action : menu.actions())
        cameras = action->menu() ? action->menu() : cameras;
    menu.adjustSize();
    const QPixmap top = menu.grab();
    if (cameras)
        cameras->adjustSize();
    const QPixmap sub = cameras ? cameras->grab() : QPixmap();
    QPixmap both(top.width() + sub.width(), std::max(top.height(), sub.height()));
    both.fill(Qt::transparent);
    QPainter painter(&both);
    painter.drawPixmap(0, 0, top);
    painter.drawPixmap(top.width(), 0, sub);
    painter.end();
    const QString menuPath = dir.filePath(QStringLiteral("view_menu.png"));
    bool ok = both.save(menuPath);
    std::printf("%s\n", qPrintable(menuPath));

    for (bool enable : {true, false}) {
        const std::unique_ptr<QMessageBox> box = window.createPhotometricQuestion(enable);
        box->show();
        ok = save(box.get(), dir,
                  enable ? QStringLiteral("photometric_enable")
                         : QStringLiteral("photometric_disable")) &&
             ok;
    }

    oxPresetGUII* presets = window.getPresetGUI();
    presets->clearPresets();
    presets->addPreset(QStringLiteral("Draft"));
    presets->addPreset(QStringLiteral("Final"));
    presets->setCurrentPreset(QStringLiteral("Final"));
    presets->show();
    ok = save(presets, dir, QStringLiteral("preset_edit_dialog")) && ok;
    presets->hide();
    return ok;
}

// The main window's render view on the example scene once refined, then with the region tool
// on, a region drawn and the rule of thirds over it.
bool saveRenderView(oxMainWindow& mainWindow, const QDir& dir)
{
    oxSceneIO::newScene();
    oxOSGWidget::setImageSamples(16);
    oxRenderView* view = mainWindow.renderView();
    auto settle = [view] {
        QElapsedTimer clock;
        clock.start();
        while ((view->isRefining() || view->isTransitioning()) && clock.elapsed() < 120000) {
            QEventLoop loop;
            QTimer::singleShot(20, &loop, &QEventLoop::quit);
            loop.exec();
        }
    };
    settle();
    bool ok = save(&mainWindow, dir, QStringLiteral("main_window_render_view"));
    view->setRegionToolActive(true);
    const QSize size = view->renderSize();
    const QPoint from(size.width() / 4, size.height() / 4);
    const QPoint to(size.width() * 3 / 4, size.height() * 3 / 4);
    QMouseEvent press(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QMouseEvent move(QEvent::MouseMove, to, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(view, &press);
    QApplication::sendEvent(view, &move);
    QApplication::sendEvent(view, &release);
    oxOSGWidget::setSnapshotRuleOfThirds(true);
    settle();
    ok = save(view, dir, QStringLiteral("render_view_region")) && ok;
    view->setRegionToolActive(false);
    oxOSGWidget::setSnapshotRuleOfThirds(false);
    oxOSGWidget::invalidateRenderRegion(oxOSGWidget::getMGLW(-1));
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    oxPlatform::prepareHeadless();
    QApplication application(argc, argv);

    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots"));
    if (!QDir().mkpath(dir.path())) {
        std::fprintf(stderr, "oxscreenshots: can't create '%s'\n", qPrintable(dir.path()));
        return 1;
    }

    oxMainWindow mainWindow;
    initPlugin();
    initPreferencesPlugin();
    oxRenderSettings* window = oxRenderSettings::instance();
    if (!window) {
        std::fprintf(stderr, "oxscreenshots: the plug-in made no Render Settings window\n");
        return 1;
    }
    mainWindow.resize(1400, 900);
    mainWindow.show();
    bool ok = save(&mainWindow, dir, QStringLiteral("main_window"));

    for (QOXCollapsibleFrame* frame : window->findChildren<QOXCollapsibleFrame*>())
        frame->setCollapsed(false);
    QTabWidget* tabs = window->RenderSettingsTabWidget;
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        auto* area = tabs->widget(i)->findChild<QScrollArea*>();
        if (area)
            ok = saveTab(area, dir,
                         QStringLiteral("tab_%1_%2").arg(i + 1).arg(fileName(tabs->tabText(i)))) &&
                 ok;
    }
    tabs->setCurrentIndex(0);
    for (int i = 0; i < window->RenderpassesTab->count(); ++i) {
        window->RenderpassesTab->setCurrentIndex(i);
        ok = save(window->_renderpassesCF, dir,
                  QStringLiteral("renderpasses_%1")
                      .arg(fileName(window->RenderpassesTab->tabText(i)))) &&
             ok;
    }
    ok = saveVariantSets(mainWindow, *window, dir) && ok;
    ok = saveViewAndDialogs(*window, dir) && ok;
    ok = saveRenderView(mainWindow, dir) && ok;
    ok = saveScriptEditor(mainWindow, dir) && ok;
    ok = savePreferences(mainWindow, dir) && ok;
    ok = saveRenderQueue(mainWindow, *window, dir) && ok;
    oxScript::stop();
    return ok ? 0 : 1;
}
