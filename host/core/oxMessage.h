#pragma once

#include <boost/any.hpp>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <typeinfo>

/// The host's record: an id and an ordered map from attribute names to typed values, plus
/// string attributes of the record itself that travel as XML attributes when it is written.
class oxMessage {
public:
    using AttributeMap = std::map<std::string, boost::any>;
    using RecordAttributes = std::map<std::string, std::string>;

    oxMessage() = default;
    explicit oxMessage(uint64_t id);
    ~oxMessage() = default;

    uint64_t id() const { return m_id; }

    /// Stores a copy of value under name. With overwrite false an existing value is kept.
    void set(const std::string& name, const boost::any& value, bool overwrite = true);

    /// The value of that name, or an empty any when there is none.
    const boost::any& get(const std::string& name) const;

    /// Typed read: true and value set when name exists with exactly type T. A missing name
    /// returns false silently; a wrong type prints a complaint and a stack trace on stderr.
    template <typename T>
    bool get(const std::string& name, T& value) const;

    bool has(const std::string& name) const { return m_attributes.count(name) != 0; }
    const AttributeMap& getMap() const { return m_attributes; }
    void remove(const std::string& name) { m_attributes.erase(name); }
    void clear();

    /// String attributes of the record itself.
    void addAttribute(const std::string& name, const std::string& value);
    /// The record attribute of that name, or "" when absent.
    std::string getAttibute(const std::string& name) const;
    const RecordAttributes& getAttributes() const { return m_recordAttributes; }

    /// Prints a stack trace of the caller on standard error.
    static void printBT();

    /// True when the two type names are the same text (types from other libraries compare
    /// equal although their type_info objects differ).
    static bool sameType(const std::type_info& a, const std::type_info& b)
    {
        return std::strcmp(a.name(), b.name()) == 0;
    }

private:
    uint64_t m_id = 0;
    AttributeMap m_attributes;
    RecordAttributes m_recordAttributes;
};

template <typename T>
bool oxMessage::get(const std::string& name, T& value) const
{
    const auto it = m_attributes.find(name);
    if (it == m_attributes.end())
        return false;
    const boost::any& stored = it->second;
    if (!sameType(stored.type(), typeid(T))) {
        std::fprintf(stderr,
                     "oxMessage::get : Attribute '%s' has wrong type (is:'%s' != req:'%s')!\n",
                     name.c_str(), stored.type().name(), typeid(T).name());
        printBT();
        return false;
    }
    value = boost::any_cast<T>(stored);
    return true;
}
