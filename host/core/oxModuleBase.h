#pragma once

#include <QObject>

#include <cstdint>
#include <string>

class oxMessage;
class QPixmap;
class QWidget;

/// Base of every host module. A module has two names and flags, registers with the
/// controller for its whole life, and receives the messages the host broadcasts.
class oxModuleBase : public QObject {
    Q_OBJECT
public:
    oxModuleBase(const char* name, const char* groupName, uint64_t flags, QPixmap* pixmap);
    ~oxModuleBase() override;

    const std::string& getName() const { return m_name; }
    const std::string& getGroupName() const { return m_groupName; }
    uint64_t getFlags() const { return m_flags; }

    /// The module's main widget, if it has one.
    virtual QWidget* getMainWidget();
    /// Called when the user brings the module to the front.
    virtual void activateModule();
    /// Called by the host when the application state should be refreshed.
    virtual void update();
    /// Called once per turn of the host's main loop.
    virtual void loop();
    /// A message the host broadcasts; the result is reserved and 0.
    virtual int receivedMessage(oxMessage& message);

    /// Sends message to every other module.
    void sendMessage(oxMessage& message);

private:
    std::string m_name;
    std::string m_groupName;
    uint64_t m_flags;
};
