#include "oxController.h"

#include "oxCallTrace.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxModuleBase.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenu>

#include <algorithm>

namespace {

struct ControllerState {
    // Name -> functions in the order they were added.
    std::map<std::string, std::vector<oxController::Callback>> callbacks;
    std::vector<oxModuleBase*> modules;
    std::map<std::string, QMenu*> menus;
    QMainWindow* mainWindow = nullptr;
    QOXDockWindowManager* dockWindowManager = nullptr;
    bool busy = false;
    bool modified = false;
    bool simulation = true;
    bool noGUI = false;
    bool playSound = true;
    uint64_t renderUpdates = 0;
};

ControllerState& state()
{
    static ControllerState s;
    return s;
}

} // namespace

oxController* oxController::instance()
{
    static oxController* controller = new oxController();
    return controller;
}

void oxController::addCB(const char* name, Callback function)
{
    if (!name || !function)
        return;
    oxCallTrace::record("oxController::addCB", name);
    state().callbacks[name].push_back(function);
}

void oxController::subCB(const char* name, Callback function)
{
    if (!name)
        return;
    oxCallTrace::record("oxController::subCB", name);
    auto it = state().callbacks.find(name);
    if (it == state().callbacks.end())
        return;
    auto& functions = it->second;
    functions.erase(std::remove(functions.begin(), functions.end(), function), functions.end());
    if (functions.empty())
        state().callbacks.erase(it);
}

bool oxController::call(const char* name, oxMessage& message, int)
{
    if (!name)
        return false;
    const auto it = state().callbacks.find(name);
    if (it == state().callbacks.end())
        return false;
    // A callback may add or remove callbacks; call a copy of the list.
    const std::vector<Callback> functions = it->second;
    for (Callback function : functions)
        function(message);
    return true;
}

bool oxController::hasCB(const char* name)
{
    if (!name)
        return false;
    auto it = state().callbacks.find(name);
    return it != state().callbacks.end() && !it->second.empty();
}

void oxController::registerModule(oxModuleBase* module)
{
    auto& modules = state().modules;
    if (module && std::find(modules.begin(), modules.end(), module) == modules.end())
        modules.push_back(module);
}

void oxController::unregisterModule(oxModuleBase* module)
{
    auto& modules = state().modules;
    modules.erase(std::remove(modules.begin(), modules.end(), module), modules.end());
}

const std::vector<oxModuleBase*>& oxController::getModules() { return state().modules; }

void oxController::broadcastMessage(oxMessage& message, const oxModuleBase* sender)
{
    // A module may unload others while handling a message; walk a copy and skip the gone.
    const std::vector<oxModuleBase*> modules = state().modules;
    for (oxModuleBase* module : modules) {
        if (module == sender)
            continue;
        const auto& live = state().modules;
        if (std::find(live.begin(), live.end(), module) == live.end())
            continue;
        module->receivedMessage(message);
    }
}

void oxController::setBusy(bool busy, bool showCursor)
{
    if (state().busy == busy)
        return;
    state().busy = busy;
    if (showCursor && !state().noGUI && qobject_cast<QApplication*>(QCoreApplication::instance())) {
        if (busy)
            QApplication::setOverrideCursor(Qt::WaitCursor);
        else
            QApplication::restoreOverrideCursor();
    }
    emit instance()->busyChanged(busy);
}

bool oxController::isBusy() { return state().busy; }

void oxController::setModified(bool modified)
{
    const bool changed = state().modified != modified;
    state().modified = modified;
    if (changed)
        emit instance()->modifiedChanged(modified);
}

bool oxController::isModified() { return state().modified; }

void oxController::updateRender()
{
    ++state().renderUpdates;
    emit instance()->renderUpdateRequested();
}

uint64_t oxController::getRenderUpdateCount() { return state().renderUpdates; }

void oxController::enableSimulation(bool enable)
{
    if (state().simulation == enable)
        return;
    state().simulation = enable;
    emit instance()->simulationChanged(enable);
}

bool oxController::isSimulationEnable() { return state().simulation; }

void oxController::setNoGUI(bool noGUI) { state().noGUI = noGUI; }
bool oxController::isNoGUI() { return state().noGUI; }

void oxController::setPlaySoundOnExport(bool play) { state().playSound = play; }
bool oxController::playSoundOnExport() { return state().playSound; }

void oxController::registerMenu(const std::string& name, QMenu* menu)
{
    if (menu)
        state().menus[name] = menu;
    else
        state().menus.erase(name);
}

QMenu* oxController::getMenu(const std::string& name)
{
    const auto it = state().menus.find(name);
    return it == state().menus.end() ? nullptr : it->second;
}

void oxController::setMainWindow(QMainWindow* window) { state().mainWindow = window; }
QMainWindow* oxController::getMainWindow() { return state().mainWindow; }

void oxController::setDockWindowManager(QOXDockWindowManager* manager)
{
    state().dockWindowManager = manager;
}

QOXDockWindowManager* oxController::getDockWindowManager() { return state().dockWindowManager; }
