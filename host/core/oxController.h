#pragma once

#include <QObject>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class oxMessage;
class oxModuleBase;
class QMainWindow;
class QMenu;
class QOXDockWindowManager;

/// The host's controller: named callbacks, the modules and their messages, and the
/// application-wide states (busy, modified, simulation, headless, sound on export).
/// Everything is static; the signals go out through instance().
class oxController : public QObject {
    Q_OBJECT
public:
    using Callback = void (*)(oxMessage&);

    static oxController* instance();

    // Named callbacks. One function may stand under several names, and several functions
    // under one name (they are called in the order they were added).
    static void addCB(const char* name, Callback function);
    /// Removes function from name; removing what was never added does nothing.
    static void subCB(const char* name, Callback function);
    /// Calls every function under name with message; false when none stands there.
    static bool call(const char* name, oxMessage& message, int flags = 0);
    static bool hasCB(const char* name);

    // Modules. A module registers itself at construction and leaves at destruction.
    static void registerModule(oxModuleBase* module);
    static void unregisterModule(oxModuleBase* module);
    static const std::vector<oxModuleBase*>& getModules();
    /// Sends message to every module (except sender when given), in registration order.
    static void broadcastMessage(oxMessage& message, const oxModuleBase* sender = nullptr);

    // Message ids the host broadcasts.
    static constexpr uint64_t MessageNewScene = 16;
    static constexpr uint64_t MessageProjectReadWrite = 8192;
    static constexpr uint64_t MessageRefresh = 32768;

    // Application states.
    static void setBusy(bool busy, bool showCursor = false);
    static bool isBusy();
    static void setModified(bool modified = true);
    static bool isModified();
    /// Asks the render view for a new image.
    static void updateRender();
    static uint64_t getRenderUpdateCount();
    static void enableSimulation(bool enable);
    static bool isSimulationEnable();
    static void setNoGUI(bool noGUI);
    static bool isNoGUI();
    static void setPlaySoundOnExport(bool play);
    static bool playSoundOnExport();

    // The GUI shell. Menus are registered by name by whoever builds them.
    static void registerMenu(const std::string& name, QMenu* menu);
    static QMenu* getMenu(const std::string& name);
    static void setMainWindow(QMainWindow* window);
    static QMainWindow* getMainWindow();
    static void setDockWindowManager(QOXDockWindowManager* manager);
    static QOXDockWindowManager* getDockWindowManager();

signals:
    void busyChanged(bool busy);
    void modifiedChanged(bool modified);
    void renderUpdateRequested();
    void simulationChanged(bool enabled);

private:
    oxController() = default;
};

/// Marks the application busy for the life of the guard (without the wait cursor), whichever
/// way the scope is left.
class oxBusyGuard {
public:
    oxBusyGuard() { oxController::setBusy(true, false); }
    ~oxBusyGuard() { oxController::setBusy(false, false); }
    oxBusyGuard(const oxBusyGuard&) = delete;
    oxBusyGuard& operator=(const oxBusyGuard&) = delete;
};

/// Pauses the simulation for the life of the guard when it runs, and resumes it after.
class oxSimulationPause {
public:
    oxSimulationPause() : m_wasRunning(oxController::isSimulationEnable())
    {
        if (m_wasRunning)
            oxController::enableSimulation(false);
    }
    ~oxSimulationPause()
    {
        if (m_wasRunning)
            oxController::enableSimulation(true);
    }
    oxSimulationPause(const oxSimulationPause&) = delete;
    oxSimulationPause& operator=(const oxSimulationPause&) = delete;

private:
    const bool m_wasRunning;
};
