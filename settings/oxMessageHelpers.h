#pragma once

#include "oxController.h"
#include "oxMessage.h"

#include <boost/any.hpp>

#include <cstdio>
#include <string>
#include <typeinfo>

/// Typed read of a message attribute. Leaves value untouched unless it returns true. A missing
/// attribute returns false silently; one of another type prints a complaint and a stack trace
/// on standard error. Types are compared by their names, so that a type from another library
/// matches.
template <typename T>
bool getFromMessage(const oxMessage& message, const std::string& name, T& value)
{
    const boost::any& stored = message.get(name);
    if (stored.empty())
        return false;
    if (!oxMessage::sameType(stored.type(), typeid(T))) {
        std::fprintf(stderr,
                     "getFromMessage : Attribute '%s' has wrong type (is:'%s' != req:'%s')!\n",
                     name.c_str(), stored.type().name(), typeid(T).name());
        oxMessage::printBT();
        return false;
    }
    value = boost::any_cast<T>(stored);
    return true;
}

/// A named callback of the host's controller, as the plug-in's callback tables list them.
struct oxNamedCallback {
    const char* name;
    oxController::Callback function;
};

/// Adds every callback of table, in table order.
template <typename Table>
void addCallbacks(const Table& table)
{
    for (const oxNamedCallback& callback : table)
        oxController::addCB(callback.name, callback.function);
}

/// Adds every callback of table once: each is removed first, so that a second registration
/// doesn't make the host call it twice.
template <typename Table>
void addCallbacksOnce(const Table& table)
{
    for (const oxNamedCallback& callback : table) {
        oxController::subCB(callback.name, callback.function);
        oxController::addCB(callback.name, callback.function);
    }
}

/// Removes every callback of table, in table order.
template <typename Table>
void removeCallbacks(const Table& table)
{
    for (const oxNamedCallback& callback : table)
        oxController::subCB(callback.name, callback.function);
}
