#pragma once

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
