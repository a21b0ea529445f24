#include "oxLog.h"
#include "oxMessage.h"
#include "oxMessageRW.h"
#include "oxRenderAutomationVariantSetGroup.h"
#include "oxTestSupport.h"

#include <QString>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Group = oxRenderAutomationVariantSetGroup;
using StringPairs = std::vector<std::pair<std::string, std::string>>;
namespace fs = std::filesystem;

// Bad input is fed on purpose: the one error a failed write logs names what went wrong.
class MessageRWTest : public oxTest {
protected:
    void expectErrorNaming(const std::string& part)
    {
        const std::vector<std::string> errors = log().messages(oxLog::Error);
        ASSERT_FALSE(errors.empty()) << "no error naming " << part;
        EXPECT_NE(errors.back().find(part), std::string::npos) << errors.back();
        expectLog(oxLog::Error, errors.back());
    }
};

uint32_t bitsOf(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

float floatOf(uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

std::string textOf(const oxMessage& message)
{
    std::string text;
    EXPECT_TRUE(oxMessageRW::write(message, text));
    return text;
}

oxMessage roundTrip(const oxMessage& message)
{
    std::string text;
    EXPECT_TRUE(oxMessageRW::write(message, text));
    oxMessage result;
    EXPECT_TRUE(oxMessageRW::read(result, nullptr, text)) << text;
    return result;
}

// The value of name, checked to have exactly type T.
template <typename T>
T valueOf(const oxMessage& message, const std::string& name)
{
    const boost::any& value = message.get(name);
    EXPECT_TRUE(oxMessage::sameType(value.type(), typeid(T)))
        << name << " is " << value.type().name() << ", expected " << typeid(T).name();
    const T* typed = boost::any_cast<T>(&value);
    return typed ? *typed : T();
}

Group makeGroup(const std::string& name, const std::vector<std::string>& sets)
{
    Group group(name);
    group.setActiveVariantSetNames(sets);
    return group;
}

// Strings that trip up text formats: XML markup, every control character, white space that a
// parser might fold, carriage returns it would turn into line feeds, and broken UTF-8.
std::vector<std::string> awkwardStrings()
{
    std::vector<std::string> strings = {
        "",
        " ",
        "\t",
        "\n",
        "  \n\t  ",
        " leading",
        "trailing ",
        "line\r\nend",
        "\r",
        std::string("nul\0inside", 10),
        "<tag attr=\"v\">&amp;</tag>",
        "]]>",
        "'single' \"double\"",
        "caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac \xf0\x9d\x84\x9e", // 2-, 3- and 4-byte UTF-8
        "\xef\xbf\xbe",                                          // U+FFFE
        "\x80 lone continuation",
        "\xc0\x80 overlong",
        "\xed\xa0\x80 surrogate",
        "cut \xf0\x9f",
        "\xff\xfe",
    };
    for (int c = 0; c < 256; ++c)
        if (std::find(strings.begin(), strings.end(), std::string(1, char(c))) == strings.end())
            strings.push_back(std::string(1, char(c)));
    return strings;
}

} // namespace

// Written and read back, a message gives the same text again: every value came back with its
// type. Typed reads confirm the edges, and a C string comes back as a std::string.
TEST_F(MessageRWTest, EveryTypeRoundTripsWithEdgeValuesAndEmptyLists)
{
    std::vector<int> ints = {INT_MIN, -1, 0, 1, INT_MAX};
    std::vector<unsigned int> uints = {0u, 1u, UINT_MAX};
    std::vector<bool> bools;
    for (int i = 0; i < 1001; ++i) {
        ints.push_back(i * 7919 - 3000000);
        uints.push_back(unsigned(i) * 2654435761u);
        bools.push_back(i % 3 == 0);
    }
    const std::vector<QString> qstrings = {
        QString(),
        QString::fromUtf8("Gr\xc3\xbc\xc3\x9f"
                          "e \t\n "),
        QString::fromUtf8("\xf0\x9f\x8e\xa5 Kamera"), // surrogate pair
        QString(QChar(0xD800)) + "lone high",
        "lone low" + QString(QChar(0xDC00)),
        QString(QChar(0xFFFE)),
        QString::fromUtf8("bell\x07 and\r\nCRLF"),
        QString(QChar(0)) + "nul",
    };
    const std::vector<Group> someGroups = {makeGroup("", {}), makeGroup("ungrouped", {"a", "a"}),
                                           makeGroup("Look", {"day", "night"})};
    const std::vector<std::vector<Group>> nested = {{}, someGroups, {}, {makeGroup("", {""})}};

    oxMessage message(5);
    message.set("true", true);
    message.set("false", false);
    message.set("intMin", INT_MIN);
    message.set("uintMax", UINT_MAX);
    message.set("float", 0.1f);
    message.set("string", std::string("text"));
    message.set("cstring", static_cast<const char*>("from a literal"));
    for (size_t i = 0; i < qstrings.size(); ++i)
        message.set("q" + std::to_string(i), qstrings[i]);
    message.set("ints", ints);
    message.set("uints", uints);
    message.set("bools", bools);
    message.set("oneBool", std::vector<bool>{false});
    message.set("noInts", std::vector<int>());
    message.set("noUints", std::vector<unsigned int>());
    message.set("noFloats", std::vector<float>());
    message.set("noBools", std::vector<bool>());
    message.set("noStrings", std::vector<std::string>());
    message.set("oneEmptyString", std::vector<std::string>{""});
    message.set("noPairs", StringPairs());
    message.set("emptyPair", StringPairs{{"", ""}});
    message.set("noGroups", std::vector<Group>());
    message.set("someGroups", someGroups);
    message.set("noGroupLists", std::vector<std::vector<Group>>());
    message.set("emptyGroupLists", std::vector<std::vector<Group>>(3));
    message.set("nested", nested);

    const oxMessage result = roundTrip(message);
    EXPECT_EQ(result.getMap().size(), message.getMap().size());
    EXPECT_EQ(textOf(result), textOf(message));
    EXPECT_EQ(valueOf<bool>(result, "false"), false);
    EXPECT_EQ(valueOf<int>(result, "intMin"), INT_MIN);
    EXPECT_EQ(valueOf<unsigned int>(result, "uintMax"), UINT_MAX);
    EXPECT_EQ(valueOf<float>(result, "float"), 0.1f);
    EXPECT_EQ(valueOf<std::string>(result, "cstring"), "from a literal");
    for (size_t i = 0; i < qstrings.size(); ++i)
        EXPECT_EQ(valueOf<QString>(result, "q" + std::to_string(i)), qstrings[i]) << i;
    EXPECT_EQ(valueOf<std::vector<int>>(result, "ints"), ints);
    EXPECT_EQ(valueOf<std::vector<unsigned int>>(result, "uints"), uints);
    EXPECT_EQ(valueOf<std::vector<bool>>(result, "bools"), bools);
    EXPECT_TRUE(valueOf<std::vector<float>>(result, "noFloats").empty());
    EXPECT_EQ(valueOf<std::vector<std::string>>(result, "oneEmptyString"),
              std::vector<std::string>{""});
    EXPECT_EQ(valueOf<std::vector<std::vector<Group>>>(result, "emptyGroupLists"),
              std::vector<std::vector<Group>>(3));
    EXPECT_EQ(valueOf<std::vector<std::vector<Group>>>(result, "nested"), nested);
}

TEST_F(MessageRWTest, FloatsAreBitExact)
{
    std::vector<float> values = {
        0.0f,
        -0.0f,
        1.0f / 3.0f,
        std::numeric_limits<float>::min(),
        std::numeric_limits<float>::max(),
        std::numeric_limits<float>::lowest(),
        std::numeric_limits<float>::epsilon(),
        std::numeric_limits<float>::denorm_min(),
        -std::numeric_limits<float>::denorm_min(),
        floatOf(0x007FFFFFu), // largest denormal
        std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::infinity(),
        floatOf(0x7FC00000u), // the usual quiet NaN
        floatOf(0xFFC00000u), // the same, negative
        floatOf(0x7F800001u), // signalling NaN
        floatOf(0xFFFFFFFFu), // NaN with every payload bit set
        16777217.0f,
    };
    // Random bit patterns reach every exponent, denormals and NaN payloads alike.
    std::mt19937 random(12345);
    for (int i = 0; i < 20000; ++i)
        values.push_back(floatOf(random()));

    oxMessage message;
    message.set("column", values);
    message.set("signalling", floatOf(0x7F800001u));
    const oxMessage result = roundTrip(message);

    const std::vector<float> back = valueOf<std::vector<float>>(result, "column");
    ASSERT_EQ(back.size(), values.size());
    size_t mismatches = 0;
    for (size_t i = 0; i < values.size(); ++i)
        if (bitsOf(back[i]) != bitsOf(values[i]) && mismatches++ < 10)
            ADD_FAILURE() << "index " << i << ": " << std::hex << bitsOf(values[i])
                          << " came back as " << bitsOf(back[i]);
    EXPECT_EQ(mismatches, 0u);
    EXPECT_EQ(bitsOf(valueOf<float>(result, "signalling")), 0x7F800001u);
}

TEST_F(MessageRWTest, AwkwardStringsComeBackByteExact)
{
    const std::vector<std::string> strings = awkwardStrings();
    oxMessage message;
    StringPairs pairs;
    std::vector<Group> groups;
    for (size_t i = 0; i < strings.size(); ++i) {
        const std::string& s = strings[i];
        message.set("value " + std::to_string(i), s);
        // The same strings as value names and inside every container that holds strings.
        message.set("name:" + s, int(i));
        pairs.emplace_back(s, strings[strings.size() - 1 - i]);
        groups.push_back(makeGroup(s, {s, "plain", s}));
    }
    message.set("list", strings);
    message.set("pairs", pairs);
    message.set("groups", groups);

    const oxMessage result = roundTrip(message);
    ASSERT_EQ(result.getMap().size(), message.getMap().size());
    for (size_t i = 0; i < strings.size(); ++i) {
        EXPECT_EQ(valueOf<std::string>(result, "value " + std::to_string(i)), strings[i])
            << "string " << i;
        EXPECT_EQ(valueOf<int>(result, "name:" + strings[i]), int(i)) << "string " << i;
    }
    EXPECT_EQ(valueOf<std::vector<std::string>>(result, "list"), strings);
    EXPECT_EQ(valueOf<StringPairs>(result, "pairs"), pairs);
    EXPECT_EQ(valueOf<std::vector<Group>>(result, "groups"), groups);
}

TEST_F(MessageRWTest, RecordAttributesAndId)
{
    oxMessage message(std::numeric_limits<uint64_t>::max());
    message.addAttribute("rendersettings_version", "1");
    // Names that clash with the form's own attributes or aren't XML names, and values XML
    // can't carry as they are.
    const StringPairs odd = {
        {"ox:format", "99"},  {"ox:id", "7"},     {"xmlns:ox", "x"},    {"xmlns", "urn:other"},
        {"", "empty name"},   {"1st", "digit"},   {"two words", "a b"}, {"gr\xc3\xbc\xc3\x9f", "u"},
        {"ctrl\x01", "\x02"}, {"crlf", "a\r\nb"}, {"empty", ""},        {"spaces", "  "},
        {"tab", "\t"}};
    for (const auto& [name, value] : odd)
        message.addAttribute(name, value);
    message.set("value", 1);

    const std::string text = textOf(message);
    // Plain record attributes are visible as attributes of the root element.
    const size_t rootStart = text.find("<oxMessage");
    const std::string rootTag = text.substr(rootStart, text.find('>', rootStart) - rootStart);
    EXPECT_NE(rootTag.find(" rendersettings_version=\"1\""), std::string::npos) << rootTag;

    // Reading replaces the whole message: id, attributes and values of other types.
    oxMessage result(99);
    result.set("value", std::string("other type"));
    result.set("stale", 1.0f);
    result.addAttribute("old", "x");
    ASSERT_TRUE(oxMessageRW::read(result, "", text)) << text;
    EXPECT_EQ(result.id(), std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(result.getAttributes(), message.getAttributes());
    EXPECT_EQ(textOf(result), text);

    oxMessage zero(0);
    EXPECT_EQ(roundTrip(zero).id(), 0u);
    EXPECT_TRUE(roundTrip(zero).getAttributes().empty());
}

TEST_F(MessageRWTest, ToleratesHandEditing)
{
    // Comments, CRLF line ends, padding around numbers, base64 wrapped over lines, CDATA.
    const std::string text =
        "\xef\xbb\xbf<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
        "<!-- edited by hand -->\r\n"
        "<oxMessage ox:format=\"1\" ox:id=\"3\" version='2'>\r\n"
        "  <int n=\"a\">  -5\r\n</int>\r\n"
        "  <!-- disabled: <int n=\"b\">6</int> -->\r\n"
        "  <floats n=\"f\">\r\n 1.5\t2\r\n  -inf </floats>\r\n"
        "  <bools n=\"b\">true 0 false 1</bools>\r\n"
        "  <string n=\"s\" enc=\"base64\">YWJj\r\n  ZA==</string>\r\n"
        "  <string n=\"c\"><![CDATA[<raw> & ]]></string>\r\n"
        "  <strings n=\"list\">\r\n    <s>x</s>\r\n    <!-- note -->\r\n    <s>y</s>\r\n"
        "  </strings>\r\n"
        "</oxMessage>\r\n";
    oxMessage expected(3);
    expected.addAttribute("version", "2");
    expected.set("a", -5);
    expected.set("f", std::vector<float>{1.5f, 2.0f, -std::numeric_limits<float>::infinity()});
    expected.set("b", std::vector<bool>{true, false, false, true});
    expected.set("s", std::string("abcd"));
    expected.set("c", std::string("<raw> & "));
    expected.set("list", std::vector<std::string>{"x", "y"});
    oxMessage message;
    ASSERT_TRUE(oxMessageRW::read(message, nullptr, text));
    EXPECT_EQ(textOf(message), textOf(expected)); // and not the commented-out value
}

TEST_F(MessageRWTest, RejectsBadDocumentsAndKeepsTheMessage)
{
    const std::string head = "<?xml version=\"1.0\"?><oxMessage ox:format=\"1\" ox:id=\"1\">";
    const std::string tail = "</oxMessage>";
    auto doc = [&](const std::string& body) { return head + body + tail; };
    // Each document with the complaint that rejects it.
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"no root element", ""},
        {"text outside the root element", "oxMessage"},
        {"Start-end tags mismatch at offset 73", head + "<int n=\"a\">1</int>"},
        {"the root element isn't <oxMessage>", "<message ox:format=\"1\" ox:id=\"1\"/>"},
        {"more than one root element", doc("") + "<oxMessage ox:format=\"1\" ox:id=\"2\"/>"},
        {"text outside the root element", doc("") + "trailing"},
        {"written in format 2, newer than this host reads (1)",
         "<oxMessage ox:format=\"2\" ox:id=\"1\"/>"},
        {"bad format version", "<oxMessage ox:format=\"0\" ox:id=\"1\"/>"},
        {"bad format version", "<oxMessage ox:format=\"one\" ox:id=\"1\"/>"},
        {"no format version", "<oxMessage ox:id=\"1\"/>"},
        {"no id", "<oxMessage ox:format=\"1\"/>"},
        {"bad id", "<oxMessage ox:format=\"1\" ox:id=\"-1\"/>"},
        {"bad id", "<oxMessage ox:format=\"1\" ox:id=\"18446744073709551616\"/>"},
        {"unknown root attribute 'ox:extra'",
         "<oxMessage ox:format=\"1\" ox:id=\"1\" ox:extra=\"\"/>"},
        {"unknown value type <double>", doc("<double n=\"a\">1</double>")},
        {"a <int> value without a valid name", doc("<int>1</int>")},
        {"a <int> value without a valid name", doc("<int n=\"a\" n64=\"YQ==\">1</int>")},
        {"value 'a' given twice", doc("<int n=\"a\">1</int><float n=\"a\">1</float>")},
        {"bad int value 'a'", doc("<int n=\"a\">2147483648</int>")},
        {"bad int value 'a'", doc("<int n=\"a\">1.5</int>")},
        {"bad int value 'a'", doc("<int n=\"a\">+1</int>")},
        {"bad int value 'a'", doc("<int n=\"a\"></int>")},
        {"bad int value 'a'", doc("<int n=\"a\">1 2</int>")},
        {"bad uint value 'a'", doc("<uint n=\"a\">-1</uint>")},
        {"bad uint value 'a'", doc("<uint n=\"a\">4294967296</uint>")},
        {"bad float value 'a'", doc("<float n=\"a\">1e39</float>")},
        {"bad float value 'a'", doc("<float n=\"a\">one</float>")},
        {"bad float value 'a'", doc("<float n=\"a\">nan(0x3f800000)</float>")},
        {"bad float value 'a'", doc("<float n=\"a\">nan(0x7fc0)</float>")},
        {"bad bool value 'a'", doc("<bool n=\"a\">yes</bool>")},
        {"bad ints value 'a'", doc("<ints n=\"a\">1 2 x</ints>")},
        {"bad floats value 'a'", doc("<floats n=\"a\">1,5</floats>")},
        {"bad bools value 'a'", doc("<bools n=\"a\">1 2</bools>")},
        {"bad string value 'a'", doc("<string n=\"a\" enc=\"base64\">@@@@</string>")},
        {"bad string value 'a'", doc("<string n=\"a\" enc=\"base64\">YWJ</string>")},
        {"bad string value 'a'", doc("<string n=\"a\" enc=\"rot13\">nop</string>")},
        {"a <int> value without a valid name", doc("<int n64=\"*\">1</int>")},
        {"bad qstring value 'a'", doc("<qstring n=\"a\" enc=\"base64-utf16le\">YWJj</qstring>")},
        {"bad strings value 'a'", doc("<strings n=\"a\"><s>x</s><t>y</t></strings>")},
        {"bad pairs value 'a'", doc("<pairs n=\"a\"><pair>v</pair></pairs>")},
        {"bad groups value 'a'", doc("<groups n=\"a\"><group><s>x</s></group></groups>")},
        {"bad groupLists value 'a'", doc("<groupLists n=\"a\"><group n=\"x\"/></groupLists>")},
        {"record attribute 'v' given twice",
         "<oxMessage ox:format=\"1\" ox:id=\"1\" v=\"1\"><ox:attribute n=\"v\">2</ox:attribute>"
         "</oxMessage>"},
        {"bad record attribute element", doc("<ox:attribute>2</ox:attribute>")},
    };

    oxMessage original(77);
    original.set("keep", std::string("me"));
    original.addAttribute("record", "attribute");
    const std::string before = textOf(original);

    for (const auto& [complaint, text] : cases) {
        SCOPED_TRACE(text);
        oxMessage message = original;
        EXPECT_FALSE(oxMessageRW::read(message, nullptr, text));
        EXPECT_EQ(textOf(message), before);
        // Every rejection says why, without logging: the caller decides what to report.
        EXPECT_EQ(oxMessageRW::lastError(), std::string("text: ") + complaint);
    }

    oxMessage message;
    ASSERT_TRUE(oxMessageRW::read(message, nullptr, before));
    EXPECT_EQ(oxMessageRW::lastError(), "");
}

class oxMessageRWFile : public MessageRWTest {
protected:
    void SetUp() override { ASSERT_FALSE(m_folder.path().empty()); }

    oxTempDir m_folder;
};

TEST_F(oxMessageRWFile, WritesAndReadsFiles)
{
    oxMessage message(3);
    message.addAttribute("rendersettings_version", "1");
    message.set("exposure", std::vector<float>{0.5f, 1.0f});
    const std::string path = m_folder.file("preset.xml");

    ASSERT_TRUE(oxMessageRW::write(message, path.c_str()));
    std::string text;
    ASSERT_TRUE(oxMessageRW::write(message, text));
    EXPECT_EQ(oxReadFile(path), text);

    // The text argument is ignored when a file name is given.
    oxMessage result;
    ASSERT_TRUE(oxMessageRW::read(result, path.c_str(), "not a document"));
    EXPECT_EQ(textOf(result), text);

    // Overwriting replaces the whole file.
    message.remove("exposure");
    ASSERT_TRUE(oxMessageRW::write(message, path.c_str()));
    ASSERT_TRUE(oxMessageRW::read(result, path.c_str(), ""));
    EXPECT_FALSE(result.has("exposure"));

    const std::string missing = m_folder.file("missing.xml");
    EXPECT_FALSE(oxMessageRW::read(result, missing.c_str(), text));
    EXPECT_NE(oxMessageRW::lastError().find("missing.xml"), std::string::npos);
    EXPECT_FALSE(oxMessageRW::write(message, m_folder.file("no/such/folder.xml").c_str()));
    expectErrorNaming("oxMessageRW::write : can't write '" + m_folder.file("no/such/folder.xml"));
}

TEST_F(oxMessageRWFile, AMessageThatCantBeWrittenLeavesTheOldTextAndFile)
{
    struct Unknown {
        int x = 0;
    };
    oxMessage first(1);
    first.set("value", 1);
    const std::string path = m_folder.file("preset.xml");
    ASSERT_TRUE(oxMessageRW::write(first, path.c_str()));
    const std::string before = oxReadFile(path);

    first.set("strange", Unknown());
    std::string text = "previous";
    EXPECT_FALSE(oxMessageRW::write(first, text));
    EXPECT_EQ(text, "previous");
    expectErrorNaming("attribute 'strange' has type");

    first.remove("strange");
    first.set("bad", 1.0);
    EXPECT_FALSE(oxMessageRW::write(first, path.c_str()));
    EXPECT_EQ(oxReadFile(path), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.path()), fs::directory_iterator()), 1);
    expectLog(oxLog::Error,
              "oxMessageRW::write : attribute 'bad' has type 'double', which can't be written");
    expectLog(oxLog::Error, "oxMessageRW::write : '" + path + "' not written");
}

namespace {

oxMessage everyType()
{
    oxMessage message(123456789);
    message.addAttribute("rendersettings_version", "1");
    message.addAttribute("odd name", "v\x01");
    message.set("bool", true);
    message.set("int", -42);
    message.set("uint", 42u);
    message.set("float", -0.0f);
    message.set("string", std::string("a <b> & c"));
    message.set("encoded", std::string("\x01\x02"));
    message.set("qstring", QString::fromUtf8("\xc3\xa9"));
    message.set("ints", std::vector<int>{1, -2, 3});
    message.set("uints", std::vector<unsigned int>{4, 5});
    message.set("floats", std::vector<float>{1.5f, std::numeric_limits<float>::quiet_NaN()});
    message.set("bools", std::vector<bool>{true, false});
    message.set("strings", std::vector<std::string>{"x", "", " "});
    message.set("pairs", StringPairs{{"k", "v"}});
    message.set("groups", std::vector<Group>{makeGroup("g", {"s"})});
    message.set("groupLists", std::vector<std::vector<Group>>{{makeGroup("h", {})}, {}});
    return message;
}

} // namespace

// Cut, junk and mutated documents: a read fails and leaves the message as it was, or gives a
// message that writes and reads back the same.
TEST_F(MessageRWTest, BrokenDocumentsFailCleanlyOrReadConsistently)
{
    const std::string valid = textOf(everyType());
    oxMessage sentinel(5);
    sentinel.set("sentinel", 1);
    const std::string sentinelText = textOf(sentinel);
    // The text of what was read, or "" when the input was rejected.
    auto readBack = [&](const std::string& input) {
        oxMessage message = sentinel;
        if (!oxMessageRW::read(message, nullptr, input)) {
            EXPECT_EQ(textOf(message), sentinelText) << input;
            return std::string();
        }
        const std::string text = textOf(message);
        oxMessage again;
        EXPECT_TRUE(oxMessageRW::read(again, nullptr, text)) << input;
        EXPECT_EQ(textOf(again), text) << input;
        return text;
    };

    // Only cutting what follows the root element can leave a valid document.
    size_t accepted = 0;
    for (size_t length = 0; length < valid.size(); ++length) {
        const std::string text = readBack(valid.substr(0, length));
        if (!text.empty()) {
            ++accepted;
            EXPECT_EQ(text, valid) << "cut at " << length;
        }
    }
    EXPECT_LE(accepted, 1u);

    std::mt19937 random(2024);
    auto byte = [&] { return char(random() & 0xFF); };
    std::vector<std::string> inputs;
    for (int i = 0; i < 1000; ++i) {
        std::string junk(random() % 300, '\0');
        for (char& c : junk)
            c = byte();
        inputs.push_back(junk);
        // Junk behind a plausible start gets the parser further.
        inputs.push_back("<oxMessage ox:format=\"1\" ox:id=\"1\">" + junk);
    }
    // Small mutations of a valid document reach the value readers.
    const std::string alphabet = "<>/=\"' &;#x0123456789.-+enaf\x01\x80\xff";
    for (int i = 0; i < 4000; ++i) {
        std::string mutated = valid;
        const int edits = 1 + int(random() % 4);
        for (int e = 0; e < edits; ++e) {
            const size_t at = random() % mutated.size();
            const char c = random() % 2 ? alphabet[random() % alphabet.size()] : byte();
            switch (random() % 3) {
            case 0:
                mutated[at] = c;
                break;
            case 1:
                mutated.insert(mutated.begin() + long(at), c);
                break;
            default:
                mutated.erase(at, 1 + random() % 8);
                break;
            }
        }
        inputs.push_back(mutated);
    }

    for (const std::string& input : inputs)
        readBack(input);
}
