#include "oxModuleBase.h"

#include "oxController.h"
#include "oxMessage.h"

oxModuleBase::oxModuleBase(const char* name, const char* groupName, uint64_t flags, QPixmap*)
    : m_name(name ? name : ""), m_groupName(groupName ? groupName : ""), m_flags(flags)
{
    setObjectName(QString::fromStdString(m_name));
    oxController::registerModule(this);
}

oxModuleBase::~oxModuleBase() { oxController::unregisterModule(this); }

QWidget* oxModuleBase::getMainWidget() { return nullptr; }

void oxModuleBase::activateModule() {}

void oxModuleBase::update() {}

void oxModuleBase::loop() {}

int oxModuleBase::receivedMessage(oxMessage&) { return 0; }

void oxModuleBase::sendMessage(oxMessage& message)
{
    oxController::broadcastMessage(message, this);
}
