#include "oxMessageRW.h"

#include "oxFile.h"
#include "oxInputLimits.h"
#include "oxLog.h"
#include "oxMessage.h"
#include "oxRenderAutomationVariantSetGroup.h"

#include <QString>
#include <boost/any.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// The XML form of a message:
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <oxMessage xmlns:ox="urn:oxlin:message" ox:format="1" ox:id="42" rendersettings_version="1">
//       <int n="width">1920</int>
//       <floats n="exposure">0.5 1 nan -inf</floats>
//       <strings n="names"><s>key</s><s enc="base64">AAE=</s></strings>
//   </oxMessage>
//
// Root attributes with the "ox:" prefix (and the declaration of that prefix) belong to this
// form; every other root attribute is a record attribute. A record attribute whose name isn't a
// plain XML name ([A-Za-z_][A-Za-z0-9._-]*, not starting with "xml"), or whose value can't be
// carried as text, is written as an <ox:attribute n="name">value</ox:attribute> child instead.
//
// Each value is one child element named after its type (see kTypes below) with its name in "n".
// Strings go into element text. Text that XML 1.0 can't carry unchanged (control characters
// other than tab and line feed, carriage returns, which parsers turn into line feeds, invalid
// UTF-8, U+FFFE/U+FFFF) is written as base64 and marked enc="base64"; a name that needs this
// goes into "n64" (or "k64" for a pair's key) instead of "n" ("k"). Numeric vectors are
// space-separated text, because columns of a thousand numbers are common. Floats use the
// shortest text that reads back to the same bits; a NaN other than the usual quiet one is
// written with its bit pattern, e.g. "nan(0x7fa00001)". A QString holding an unpaired
// surrogate, which UTF-8 can't express, is written as its UTF-16 code units, enc="base64-utf16le".

namespace {

using Group = oxRenderAutomationVariantSetGroup;

const char kRootName[] = "oxMessage";
const char kNamespaceAttr[] = "xmlns:ox";
const char kNamespace[] = "urn:oxlin:message";
const char kFormatAttr[] = "ox:format";
const char kIdAttr[] = "ox:id";
const char kReservedPrefix[] = "ox:";
const char kRecordAttrElement[] = "ox:attribute";

// Fragment mode keeps text outside the root element in the tree, so that junk after a
// document (two writes run together, say) is seen and rejected instead of silently dropped.
const unsigned kParseOptions = pugi::parse_default | pugi::parse_ws_pcdata_single |
                               pugi::parse_embed_pcdata | pugi::parse_fragment;

// ----------------------------------------------------------------------------------------------
// Text safety and base64

// True when the bytes survive a trip through an XML 1.0 document unchanged: valid UTF-8 made of
// characters XML allows, with no carriage return (parsers normalise it to a line feed).
bool isXmlSafe(const char* text, size_t size)
{
    const auto* s = reinterpret_cast<const unsigned char*>(text);
    const auto* end = s + size;
    while (s < end) {
        const unsigned char c = *s;
        if (c < 0x80) {
            if (c < 0x20 && c != '\t' && c != '\n')
                return false;
            ++s;
            continue;
        }
        auto cont = [&](size_t i, unsigned char lo = 0x80, unsigned char hi = 0xBF) {
            return s + i < end && s[i] >= lo && s[i] <= hi;
        };
        if (c >= 0xC2 && c <= 0xDF) {
            if (!cont(1))
                return false;
            s += 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            const unsigned char lo = c == 0xE0 ? 0xA0 : 0x80;
            const unsigned char hi = c == 0xED ? 0x9F : 0xBF; // no UTF-16 surrogates
            if (!cont(1, lo, hi) || !cont(2))
                return false;
            if (c == 0xEF && s[1] == 0xBF && (s[2] == 0xBE || s[2] == 0xBF))
                return false; // U+FFFE, U+FFFF
            s += 3;
        } else if (c >= 0xF0 && c <= 0xF4) {
            const unsigned char lo = c == 0xF0 ? 0x90 : 0x80;
            const unsigned char hi = c == 0xF4 ? 0x8F : 0xBF;
            if (!cont(1, lo, hi) || !cont(2) || !cont(3))
                return false;
            s += 4;
        } else {
            return false;
        }
    }
    return true;
}

bool isXmlSafe(const std::string& text) { return isXmlSafe(text.data(), text.size()); }

const char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void base64Encode(const char* data, size_t size, std::string& out)
{
    out.clear();
    out.reserve((size + 2) / 3 * 4);
    const auto* s = reinterpret_cast<const unsigned char*>(data);
    size_t i = 0;
    for (; i + 3 <= size; i += 3) {
        const uint32_t v = (uint32_t(s[i]) << 16) | (uint32_t(s[i + 1]) << 8) | s[i + 2];
        out += kBase64Alphabet[(v >> 18) & 63];
        out += kBase64Alphabet[(v >> 12) & 63];
        out += kBase64Alphabet[(v >> 6) & 63];
        out += kBase64Alphabet[v & 63];
    }
    if (i < size) {
        uint32_t v = uint32_t(s[i]) << 16;
        if (i + 1 < size)
            v |= uint32_t(s[i + 1]) << 8;
        out += kBase64Alphabet[(v >> 18) & 63];
        out += kBase64Alphabet[(v >> 12) & 63];
        out += i + 1 < size ? kBase64Alphabet[(v >> 6) & 63] : '=';
        out += '=';
    }
}

bool isXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

int base64Value(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

// Strict decoding; white space is skipped so that a hand-wrapped block still reads.
bool base64Decode(const char* text, std::string& out)
{
    out.clear();
    uint32_t bits = 0;
    int count = 0;   // symbols in the current quantum
    int padding = 0; // '=' seen; only more padding and white space may follow
    for (const char* s = text; *s; ++s) {
        const char c = *s;
        if (isXmlSpace(c))
            continue;
        if (c == '=') {
            if (count < 2 || count + padding >= 4)
                return false;
            ++padding;
            continue;
        }
        const int v = base64Value(c);
        if (v < 0 || padding)
            return false;
        bits = (bits << 6) | uint32_t(v);
        if (++count == 4) {
            out += char((bits >> 16) & 0xFF);
            out += char((bits >> 8) & 0xFF);
            out += char(bits & 0xFF);
            bits = 0;
            count = 0;
        }
    }
    if (padding) {
        if (count + padding != 4)
            return false;
    } else if (count != 0) {
        return false;
    }
    if (count == 2)
        out += char((bits >> 4) & 0xFF);
    else if (count == 3) {
        out += char((bits >> 10) & 0xFF);
        out += char((bits >> 2) & 0xFF);
    }
    return true;
}

// ----------------------------------------------------------------------------------------------
// Names and string texts

// Writes a name into attribute plain, or base64 into attribute encoded when it isn't XML-safe.
void writeName(pugi::xml_node node, const char* plain, const char* encoded, const std::string& name,
               std::string& scratch)
{
    if (isXmlSafe(name)) {
        node.append_attribute(plain).set_value(name.data(), name.size());
    } else {
        base64Encode(name.data(), name.size(), scratch);
        node.append_attribute(encoded).set_value(scratch.data(), scratch.size());
    }
}

// Short fixed names are compared inline; a library call per attribute shows up when reading
// thousands of values.
bool equals(const char* a, const char* b)
{
    while (*a && *a == *b)
        ++a, ++b;
    return *a == *b;
}

// Exactly one of the two attributes must be there.
bool readName(pugi::xml_node node, const char* plain, const char* encoded, std::string& name)
{
    const char* plainValue = nullptr;
    const char* encodedValue = nullptr;
    for (pugi::xml_attribute attr = node.first_attribute(); attr; attr = attr.next_attribute()) {
        const char* attrName = attr.name();
        if (equals(attrName, plain)) {
            if (plainValue)
                return false;
            plainValue = attr.value();
        } else if (equals(attrName, encoded)) {
            if (encodedValue)
                return false;
            encodedValue = attr.value();
        }
    }
    if (plainValue && !encodedValue) {
        name = plainValue;
        return true;
    }
    if (encodedValue && !plainValue)
        return base64Decode(encodedValue, name);
    return false;
}

void writeText(pugi::xml_node node, const char* data, size_t size, std::string& scratch)
{
    if (size == 0)
        return;
    if (isXmlSafe(data, size)) {
        node.text().set(data, size);
    } else {
        base64Encode(data, size, scratch);
        node.append_attribute("enc").set_value("base64");
        node.text().set(scratch.data(), scratch.size());
    }
}

void writeText(pugi::xml_node node, const std::string& text, std::string& scratch)
{
    writeText(node, text.data(), text.size(), scratch);
}

const char* encoding(pugi::xml_node node)
{
    for (pugi::xml_attribute attr = node.first_attribute(); attr; attr = attr.next_attribute())
        if (equals(attr.name(), "enc"))
            return attr.value();
    return nullptr;
}

bool readText(pugi::xml_node node, std::string& text)
{
    const char* enc = encoding(node);
    if (!enc) {
        text = node.text().get();
        return true;
    }
    return equals(enc, "base64") && base64Decode(node.text().get(), text);
}

// Element children only, so that comments and stray white space of a hand-edited file are
// tolerated; an element with any other name than expected makes the document malformed.
template <typename F>
bool forEachChild(pugi::xml_node node, const char* name, F&& f)
{
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element)
            continue;
        if (!equals(child.name(), name) || !f(child))
            return false;
    }
    return true;
}

size_t countChildren(pugi::xml_node node)
{
    size_t count = 0;
    for (pugi::xml_node child = node.first_child(); child; child = child.next_sibling())
        count += child.type() == pugi::node_element;
    return count;
}

// ----------------------------------------------------------------------------------------------
// Numbers

void appendNumber(std::string& out, long long value)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    out.append(buffer, result.ptr);
}

void appendNumber(std::string& out, unsigned long long value)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    out.append(buffer, result.ptr);
}

const uint32_t kQuietNan = 0x7FC00000u;
const uint32_t kNegativeQuietNan = 0xFFC00000u;

void appendNumber(std::string& out, float value)
{
    if (std::isnan(value)) {
        uint32_t bits;
        std::memcpy(&bits, &value, sizeof(bits));
        if (bits == kQuietNan) {
            out += "nan";
        } else if (bits == kNegativeQuietNan) {
            out += "-nan";
        } else {
            // Payload and sign of other NaNs are kept by writing the bits themselves.
            out += "nan(0x";
            char buffer[12];
            const auto result = std::to_chars(buffer, buffer + sizeof(buffer), bits, 16);
            out.append(8 - size_t(result.ptr - buffer), '0');
            out.append(buffer, result.ptr);
            out += ')';
        }
        return;
    }
    // The shortest text that reads back to the same float (also "inf", "-inf" and "-0").
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    out.append(buffer, result.ptr);
}

void appendNumber(std::string& out, bool value) { out += value ? '1' : '0'; }

template <typename T>
bool parseInteger(const char* begin, const char* end, T& value)
{
    const auto result = std::from_chars(begin, end, value);
    return result.ec == std::errc() && result.ptr == end;
}

bool parseToken(const char* begin, const char* end, int& value)
{
    return parseInteger(begin, end, value);
}

bool parseToken(const char* begin, const char* end, unsigned int& value)
{
    return parseInteger(begin, end, value);
}

bool parseToken(const char* begin, const char* end, float& value)
{
    const char* s = begin + (begin < end && *begin == '-');
    if (s < end && (*s == 'n' || *s == 'N')) {
        const size_t length = size_t(end - begin);
        uint32_t bits;
        if (length == 3 && std::memcmp(begin, "nan", 3) == 0) {
            bits = kQuietNan;
        } else if (length == 4 && std::memcmp(begin, "-nan", 4) == 0) {
            bits = kNegativeQuietNan;
        } else if (length == 15 && std::memcmp(begin, "nan(0x", 6) == 0 && end[-1] == ')') {
            const auto hex = std::from_chars(begin + 6, end - 1, bits, 16);
            if (hex.ec != std::errc() || hex.ptr != end - 1)
                return false;
            if ((bits & 0x7F800000u) != 0x7F800000u || (bits & 0x007FFFFFu) == 0)
                return false; // not a NaN
        } else {
            return false;
        }
        std::memcpy(&value, &bits, sizeof(value));
        return true;
    }
    const auto result = std::from_chars(begin, end, value);
    return result.ec == std::errc() && result.ptr == end;
}

bool parseToken(const char* begin, const char* end, bool& value)
{
    const size_t length = size_t(end - begin);
    if ((length == 1 && *begin == '1') || (length == 4 && std::memcmp(begin, "true", 4) == 0)) {
        value = true;
        return true;
    }
    if ((length == 1 && *begin == '0') || (length == 5 && std::memcmp(begin, "false", 5) == 0)) {
        value = false;
        return true;
    }
    return false;
}

// Calls f(begin, end) for each white-space separated token; stops at the first false.
template <typename F>
bool forEachToken(const char* s, F&& f)
{
    for (;;) {
        while (isXmlSpace(*s))
            ++s;
        if (!*s)
            return true;
        const char* begin = s;
        while (*s && !isXmlSpace(*s))
            ++s;
        if (!f(begin, s))
            return false;
    }
}

size_t countTokens(const char* s)
{
    size_t count = 0;
    forEachToken(s, [&](const char*, const char*) { return ++count, true; });
    return count;
}

template <typename T>
bool parseScalar(const char* text, T& value)
{
    size_t count = 0;
    return forEachToken(text,
                        [&](const char* b, const char* e) {
                            return ++count == 1 && parseToken(b, e, value);
                        }) &&
           count == 1;
}

template <typename T>
bool parseVector(const char* text, std::vector<T>& values)
{
    values.clear();
    values.reserve(countTokens(text));
    return forEachToken(text, [&](const char* b, const char* e) {
        T value;
        if (!parseToken(b, e, value))
            return false;
        values.push_back(value);
        return true;
    });
}

// ----------------------------------------------------------------------------------------------
// Value types

template <typename T>
const T& stored(const boost::any& value)
{
    return *boost::unsafe_any_cast<T>(&value);
}

// Writers fill an element whose tag and name are already set; readers fill a fresh any.
using Writer = void (*)(pugi::xml_node, const boost::any&, std::string& scratch);
using Reader = bool (*)(pugi::xml_node, boost::any&);

// The type appendNumber takes for T: ints go through the widest integer overloads.
template <typename T>
using Wide =
    std::conditional_t<std::is_same_v<T, int>, long long,
                       std::conditional_t<std::is_same_v<T, unsigned>, unsigned long long, T>>;

template <typename T>
void writeNumber(pugi::xml_node node, const boost::any& value, std::string& s)
{
    s.clear();
    appendNumber(s, Wide<T>(stored<T>(value)));
    node.text().set(s.data(), s.size());
}

void writeBool(pugi::xml_node node, const boost::any& value, std::string&)
{
    node.text().set(stored<bool>(value) ? "true" : "false");
}

template <typename T>
bool readScalar(pugi::xml_node node, boost::any& out)
{
    T value;
    if (!parseScalar(node.text().get(), value))
        return false;
    out = value;
    return true;
}

template <typename T>
void writeNumbers(pugi::xml_node node, const boost::any& value, std::string& s)
{
    const std::vector<T>& values = stored<std::vector<T>>(value);
    if (values.empty())
        return;
    s.clear();
    for (size_t i = 0; i < values.size(); ++i) {
        if (i)
            s += ' ';
        appendNumber(s, Wide<T>(values[i]));
    }
    node.text().set(s.data(), s.size());
}

template <typename T>
bool readNumbers(pugi::xml_node node, boost::any& out)
{
    std::vector<T> values;
    if (!parseVector(node.text().get(), values))
        return false;
    out = std::move(values);
    return true;
}

void writeCString(pugi::xml_node node, const boost::any& value, std::string& s)
{
    const char* text = stored<const char*>(value);
    if (text)
        writeText(node, text, std::strlen(text), s);
}

void writeMutableCString(pugi::xml_node node, const boost::any& value, std::string& s)
{
    const char* text = stored<char*>(value);
    if (text)
        writeText(node, text, std::strlen(text), s);
}

void writeString(pugi::xml_node node, const boost::any& value, std::string& s)
{
    writeText(node, stored<std::string>(value), s);
}

bool readString(pugi::xml_node node, boost::any& out)
{
    std::string text;
    if (!readText(node, text))
        return false;
    out = std::move(text);
    return true;
}

// A QString with an unpaired surrogate can't pass through UTF-8, so its UTF-16 code units are
// written instead (little endian, base64).
bool hasLoneSurrogate(const QString& text)
{
    const int size = text.size();
    for (int i = 0; i < size; ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < size && text.at(i + 1).isLowSurrogate())
            ++i;
        else if (c.isSurrogate())
            return true;
    }
    return false;
}

void writeQString(pugi::xml_node node, const boost::any& value, std::string& s)
{
    const QString& text = stored<QString>(value);
    if (!hasLoneSurrogate(text)) {
        const QByteArray utf8 = text.toUtf8();
        writeText(node, utf8.constData(), size_t(utf8.size()), s);
        return;
    }
    std::string units;
    units.reserve(size_t(text.size()) * 2);
    for (const QChar c : text) {
        units += char(c.unicode() & 0xFF);
        units += char(c.unicode() >> 8);
    }
    base64Encode(units.data(), units.size(), s);
    node.append_attribute("enc").set_value("base64-utf16le");
    node.text().set(s.data(), s.size());
}

bool readQString(pugi::xml_node node, boost::any& out)
{
    const char* enc = encoding(node);
    if (enc && equals(enc, "base64-utf16le")) {
        std::string units;
        if (!base64Decode(node.text().get(), units) || units.size() % 2 != 0)
            return false;
        QString text;
        text.reserve(int(units.size() / 2));
        for (size_t i = 0; i < units.size(); i += 2)
            text += QChar(ushort(uint8_t(units[i]) | (uint8_t(units[i + 1]) << 8)));
        out = text;
        return true;
    }
    std::string utf8;
    if (!readText(node, utf8))
        return false;
    out = QString::fromUtf8(utf8.data(), int(utf8.size()));
    return true;
}

void writeStrings(pugi::xml_node node, const boost::any& value, std::string& s)
{
    for (const std::string& text : stored<std::vector<std::string>>(value))
        writeText(node.append_child("s"), text, s);
}

bool readStringList(pugi::xml_node node, std::vector<std::string>& values)
{
    values.clear();
    values.reserve(countChildren(node));
    return forEachChild(node, "s", [&](pugi::xml_node child) {
        values.emplace_back();
        return readText(child, values.back());
    });
}

bool readStrings(pugi::xml_node node, boost::any& out)
{
    std::vector<std::string> values;
    if (!readStringList(node, values))
        return false;
    out = std::move(values);
    return true;
}

using StringPairs = std::vector<std::pair<std::string, std::string>>;

void writePairs(pugi::xml_node node, const boost::any& value, std::string& s)
{
    for (const auto& entry : stored<StringPairs>(value)) {
        pugi::xml_node pair = node.append_child("pair");
        writeName(pair, "k", "k64", entry.first, s);
        writeText(pair, entry.second, s);
    }
}

bool readPairs(pugi::xml_node node, boost::any& out)
{
    StringPairs values;
    values.reserve(countChildren(node));
    const bool ok = forEachChild(node, "pair", [&](pugi::xml_node child) {
        values.emplace_back();
        return readName(child, "k", "k64", values.back().first) &&
               readText(child, values.back().second);
    });
    if (!ok)
        return false;
    out = std::move(values);
    return true;
}

void writeGroupList(pugi::xml_node node, const std::vector<Group>& groups, std::string& s)
{
    for (const Group& group : groups) {
        pugi::xml_node element = node.append_child("group");
        writeName(element, "n", "n64", group.getGroupName(), s);
        for (const std::string& name : group.getActiveVariantSetNames())
            writeText(element.append_child("s"), name, s);
    }
}

bool readGroupList(pugi::xml_node node, std::vector<Group>& groups)
{
    groups.clear();
    groups.reserve(countChildren(node));
    std::string name;
    std::vector<std::string> setNames;
    return forEachChild(node, "group", [&](pugi::xml_node child) {
        if (!readName(child, "n", "n64", name) || !readStringList(child, setNames))
            return false;
        // Set the names as stored: adding them one by one would drop duplicates and names
        // that a file name can't hold, and the round trip must be exact.
        groups.emplace_back(name);
        groups.back().setActiveVariantSetNames(setNames);
        return true;
    });
}

void writeGroups(pugi::xml_node node, const boost::any& value, std::string& s)
{
    writeGroupList(node, stored<std::vector<Group>>(value), s);
}

bool readGroups(pugi::xml_node node, boost::any& out)
{
    std::vector<Group> groups;
    if (!readGroupList(node, groups))
        return false;
    out = std::move(groups);
    return true;
}

void writeGroupLists(pugi::xml_node node, const boost::any& value, std::string& s)
{
    for (const std::vector<Group>& groups : stored<std::vector<std::vector<Group>>>(value))
        writeGroupList(node.append_child("groups"), groups, s);
}

bool readGroupLists(pugi::xml_node node, boost::any& out)
{
    std::vector<std::vector<Group>> lists;
    lists.reserve(countChildren(node));
    const bool ok = forEachChild(node, "groups", [&](pugi::xml_node child) {
        lists.emplace_back();
        return readGroupList(child, lists.back());
    });
    if (!ok)
        return false;
    out = std::move(lists);
    return true;
}

struct TypeEntry {
    const char* tag;
    const std::type_info& type;
    Writer write;
    Reader read; // null for types that read back as another entry's type
};

// The first entries are the most common ones, since lookups walk the table in order.
const TypeEntry kTypes[] = {
    {"float", typeid(float), writeNumber<float>, readScalar<float>},
    {"int", typeid(int), writeNumber<int>, readScalar<int>},
    {"bool", typeid(bool), writeBool, readScalar<bool>},
    {"string", typeid(std::string), writeString, readString},
    {"uint", typeid(unsigned int), writeNumber<unsigned int>, readScalar<unsigned int>},
    {"floats", typeid(std::vector<float>), writeNumbers<float>, readNumbers<float>},
    {"ints", typeid(std::vector<int>), writeNumbers<int>, readNumbers<int>},
    {"uints", typeid(std::vector<unsigned int>), writeNumbers<unsigned int>,
     readNumbers<unsigned int>},
    {"bools", typeid(std::vector<bool>), writeNumbers<bool>, readNumbers<bool>},
    {"strings", typeid(std::vector<std::string>), writeStrings, readStrings},
    {"qstring", typeid(QString), writeQString, readQString},
    {"pairs", typeid(StringPairs), writePairs, readPairs},
    {"groups", typeid(std::vector<Group>), writeGroups, readGroups},
    {"groupLists", typeid(std::vector<std::vector<Group>>), writeGroupLists, readGroupLists},
    // C strings are stored as pointers but read back as std::string.
    {"string", typeid(const char*), writeCString, nullptr},
    {"string", typeid(char*), writeMutableCString, nullptr},
};

const TypeEntry* entryForType(const std::type_info& type)
{
    for (const TypeEntry& entry : kTypes)
        // The address test is the common fast case; names decide for types whose type_info
        // another library defines.
        if (&entry.type == &type || oxMessage::sameType(entry.type, type))
            return &entry;
    return nullptr;
}

const TypeEntry* entryForTag(const char* tag)
{
    for (const TypeEntry& entry : kTypes)
        if (entry.read && equals(entry.tag, tag))
            return &entry;
    return nullptr;
}

std::string readableTypeName(const std::type_info& type)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
    return status == 0 && name ? std::string(name.get()) : std::string(type.name());
}

// ----------------------------------------------------------------------------------------------
// Documents

// Record attributes with names like this go straight onto the root element. Anything else
// (names with a namespace prefix, names XML reserves, odd characters) takes the element form,
// which can't clash with this form's own root attributes.
bool isPlainAttributeName(const std::string& name)
{
    if (name.empty())
        return false;
    auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    if (!isLetter(name[0]) && name[0] != '_')
        return false;
    for (const char c : name)
        if (!isLetter(c) && !(c >= '0' && c <= '9') && c != '_' && c != '-' && c != '.')
            return false;
    const bool startsWithXml = name.size() >= 3 && (name[0] | 0x20) == 'x' &&
                               (name[1] | 0x20) == 'm' && (name[2] | 0x20) == 'l';
    return !startsWithXml;
}

struct StringWriter : pugi::xml_writer {
    explicit StringWriter(std::string& out) : out(out) {}
    void write(const void* data, size_t size) override
    {
        out.append(static_cast<const char*>(data), size);
    }
    std::string& out;
};

bool serialize(const oxMessage& message, std::string& out)
{
    pugi::xml_document doc;
    pugi::xml_node declaration = doc.append_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("UTF-8");

    std::string scratch;
    pugi::xml_node root = doc.append_child(kRootName);
    root.append_attribute(kNamespaceAttr).set_value(kNamespace);
    root.append_attribute(kFormatAttr).set_value(oxMessageRW::formatVersion);
    appendNumber(scratch, static_cast<unsigned long long>(message.id()));
    root.append_attribute(kIdAttr).set_value(scratch.data(), scratch.size());

    for (const auto& [name, value] : message.getAttributes()) {
        if (isPlainAttributeName(name) && isXmlSafe(value)) {
            root.append_attribute(name.c_str()).set_value(value.data(), value.size());
        } else {
            pugi::xml_node element = root.append_child(kRecordAttrElement);
            writeName(element, "n", "n64", name, scratch);
            writeText(element, value, scratch);
        }
    }

    for (const auto& [name, value] : message.getMap()) {
        const TypeEntry* entry = entryForType(value.type());
        if (!entry) {
            oxLog::error("oxMessageRW::write : attribute '%s' has type '%s', which can't be "
                         "written",
                         name.c_str(), readableTypeName(value.type()).c_str());
            return false;
        }
        pugi::xml_node element = root.append_child(entry->tag);
        writeName(element, "n", "n64", name, scratch);
        entry->write(element, value, scratch);
    }

    out.clear();
    StringWriter writer(out);
    doc.save(writer, "\t", pugi::format_indent, pugi::encoding_utf8);
    return true;
}

thread_local std::string lastReadError;
thread_local int lastReadFormat = 0;

// Builds the message from a parsed document; false (with reason set) when it isn't one this
// host can read. Values are collected first so that message is only touched on success.
bool deserialize(const pugi::xml_document& doc, oxMessage& message, std::string& reason)
{
    pugi::xml_node root;
    for (pugi::xml_node node = doc.first_child(); node; node = node.next_sibling()) {
        if (node.type() == pugi::node_element) {
            if (root) {
                reason = "more than one root element";
                return false;
            }
            root = node;
        } else if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            reason = "text outside the root element";
            return false;
        }
    }
    if (!root) {
        reason = "no root element";
        return false;
    }
    if (std::strcmp(root.name(), kRootName) != 0) {
        reason = std::string("the root element isn't <") + kRootName + ">";
        return false;
    }

    bool haveFormat = false;
    bool haveId = false;
    uint64_t id = 0;
    oxMessage::RecordAttributes recordAttributes;
    for (pugi::xml_attribute attr = root.first_attribute(); attr; attr = attr.next_attribute()) {
        const char* name = attr.name();
        if (std::strcmp(name, kFormatAttr) == 0) {
            int format = 0;
            if (!haveFormat && parseScalar(attr.value(), format))
                lastReadFormat = format;
            if (haveFormat || !parseScalar(attr.value(), format) || format < 1) {
                reason = "bad format version";
                return false;
            }
            if (format > oxMessageRW::formatVersion) {
                reason = "written in format " + std::to_string(format) +
                         ", newer than this host reads (" +
                         std::to_string(oxMessageRW::formatVersion) + ")";
                return false;
            }
            haveFormat = true;
        } else if (std::strcmp(name, kIdAttr) == 0) {
            const char* text = attr.value();
            if (haveId || !parseInteger(text, text + std::strlen(text), id)) {
                reason = "bad id";
                return false;
            }
            haveId = true;
        } else if (std::strcmp(name, kNamespaceAttr) == 0) {
            continue;
        } else if (std::strncmp(name, kReservedPrefix, sizeof(kReservedPrefix) - 1) == 0) {
            reason = std::string("unknown root attribute '") + name + "'";
            return false;
        } else if (!recordAttributes.emplace(name, attr.value()).second) {
            reason = std::string("record attribute '") + name + "' given twice";
            return false;
        }
    }
    if (!haveFormat || !haveId) {
        reason = haveFormat ? "no id" : "no format version";
        return false;
    }

    // Values are staged in a flat list rather than a map: the message takes copies anyway, and
    // a map here would double the allocations of a read. Files written by this host list values
    // sorted by name, so checking for duplicates costs one comparison per value; any other
    // order is sorted first.
    std::vector<std::pair<std::string, boost::any>> values;
    values.reserve(countChildren(root));
    bool ascending = true;
    std::string name;
    for (pugi::xml_node node = root.first_child(); node; node = node.next_sibling()) {
        if (node.type() != pugi::node_element)
            continue;
        const char* tag = node.name();
        if (equals(tag, kRecordAttrElement)) {
            std::string value;
            if (!readName(node, "n", "n64", name) || !readText(node, value)) {
                reason = "bad record attribute element";
                return false;
            }
            if (!recordAttributes.emplace(name, std::move(value)).second) {
                reason = "record attribute '" + name + "' given twice";
                return false;
            }
            continue;
        }
        const TypeEntry* entry = entryForTag(tag);
        if (!entry) {
            reason = std::string("unknown value type <") + tag + ">";
            return false;
        }
        values.emplace_back();
        auto& [valueName, value] = values.back();
        if (!readName(node, "n", "n64", valueName)) {
            reason = std::string("a <") + tag + "> value without a valid name";
            return false;
        }
        if (!entry->read(node, value)) {
            reason = "bad " + std::string(tag) + " value '" + valueName + "'";
            return false;
        }
        if (values.size() > 1 && !(values[values.size() - 2].first < valueName))
            ascending = false;
    }
    if (!ascending) {
        std::vector<const std::string*> names;
        names.reserve(values.size());
        for (const auto& entry : values)
            names.push_back(&entry.first);
        std::sort(names.begin(), names.end(),
                  [](const std::string* a, const std::string* b) { return *a < *b; });
        const auto twice =
            std::adjacent_find(names.begin(), names.end(),
                               [](const std::string* a, const std::string* b) { return *a == *b; });
        if (twice != names.end()) {
            reason = "value '" + **twice + "' given twice";
            return false;
        }
    }

    message = oxMessage(id);
    for (const auto& [valueName, value] : values)
        message.set(valueName, value);
    for (const auto& [attrName, value] : recordAttributes)
        message.addAttribute(attrName, value);
    return true;
}

} // namespace

bool oxMessageRW::write(const oxMessage& message, std::string& text)
{
    std::string out;
    if (!serialize(message, out))
        return false;
    text.swap(out);
    return true;
}

bool oxMessageRW::write(const oxMessage& message, const char* filename)
{
    if (!filename || !*filename) {
        oxLog::error("oxMessageRW::write : no file name given");
        return false;
    }
    std::string text;
    if (!serialize(message, text)) {
        oxLog::error("oxMessageRW::write : '%s' not written", filename);
        return false;
    }
    std::string error;
    if (!oxFile::writeAtomically(filename, text, &error)) {
        oxLog::error("oxMessageRW::write : can't write '%s': %s", filename, error.c_str());
        return false;
    }
    return true;
}

const std::string& oxMessageRW::lastError() { return lastReadError; }

int oxMessageRW::lastFormatVersion() { return lastReadFormat; }

bool oxMessageRW::read(oxMessage& message, const char* filename, const std::string& text)
{
    // Reading stays silent: some callers treat a damaged file as absent, others report it in
    // their own words; lastError() holds the reason for them.
    lastReadError.clear();
    lastReadFormat = 0;
    const bool fromFile = filename && *filename;
    const std::string source = fromFile ? "'" + std::string(filename) + "'" : "text";
    pugi::xml_document doc;
    pugi::xml_parse_result parsed;
    std::string data;
    if (fromFile) {
        if (!oxFile::readAll(filename, data)) {
            lastReadError = "can't read " + source;
            return false;
        }
    }
    const std::string& input = fromFile ? data : text;
    if (!oxInputLimits::xmlDepthWithin(input.data(), input.size())) {
        lastReadError = source + ": elements nested deeper than " +
                        std::to_string(oxInputLimits::kMaxXmlDepth) + " levels";
        return false;
    }
    if (fromFile) {
        // The buffer is ours, so the parser may work in it instead of copying it.
        parsed = doc.load_buffer_inplace(data.data(), data.size(), kParseOptions);
    } else {
        parsed = doc.load_buffer(text.data(), text.size(), kParseOptions);
    }
    if (!parsed) {
        lastReadError =
            source + ": " + parsed.description() + " at offset " + std::to_string(parsed.offset);
        return false;
    }
    std::string reason;
    if (!deserialize(doc, message, reason)) {
        lastReadError = source + ": " + reason;
        return false;
    }
    return true;
}
