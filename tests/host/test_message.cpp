#include "oxMessage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

std::string wrongTypeComplaint(const char* name, const std::type_info& is,
                               const std::type_info& requested)
{
    char text[512];
    std::snprintf(text, sizeof(text),
                  "oxMessage::get : Attribute '%s' has wrong type (is:'%s' != req:'%s')!\n", name,
                  is.name(), requested.name());
    return text;
}

} // namespace

TEST(oxMessage, MissingNameIsSilentAndGivesEmptyAny)
{
    oxMessage message;
    message.set("present", 1);

    testing::internal::CaptureStderr();
    int value = 42;
    const bool found = message.get("absent", value);
    const std::string err = testing::internal::GetCapturedStderr();

    EXPECT_FALSE(found);
    EXPECT_EQ(value, 42);
    EXPECT_TRUE(err.empty()) << err;
    EXPECT_TRUE(message.get("absent").empty());
    EXPECT_FALSE(message.has("absent"));
    EXPECT_FALSE(message.get("present").empty());
}

TEST(oxMessage, WrongTypeComplainsAndLeavesOutputAlone)
{
    oxMessage message;
    message.set("width", 1920);
    // A literal stores a const char*, which is not a std::string: a classic mistake.
    message.set("title", "beauty");

    auto complaint = [&](auto output, const char* name, const std::type_info& stored) {
        const auto before = output;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(message.get(name, output));
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_EQ(output, before) << name;
        EXPECT_NE(err.find(wrongTypeComplaint(name, stored, typeid(output))), std::string::npos)
            << err;
        return err;
    };
    complaint(-1.0f, "width", typeid(int));
    complaint(5u, "width", typeid(int)); // signedness counts
    const std::string err = complaint(std::string("unchanged"), "title", typeid(const char*));
    // The complaint comes with a stack trace to find the caller.
    EXPECT_NE(err.find("Stack trace"), std::string::npos) << err;
}

TEST(oxMessage, SetReplacesUnlessToldToKeep)
{
    oxMessage message;
    message.set("value", 1);
    message.set("value", 2);
    int number = 0;
    EXPECT_TRUE(message.get("value", number));
    EXPECT_EQ(number, 2);

    // Replacing may change the type as well.
    message.set("value", std::string("two"));
    std::string text;
    EXPECT_TRUE(message.get("value", text));
    EXPECT_EQ(text, "two");

    message.set("value", 3, false);
    EXPECT_TRUE(message.get("value", text));
    EXPECT_EQ(text, "two");
    message.set("fresh", 3, false);
    EXPECT_TRUE(message.get("fresh", number));
    EXPECT_EQ(number, 3);
    EXPECT_EQ(message.getMap().size(), 2u);
}

TEST(oxMessage, RecordAttributesRemoveAndClear)
{
    oxMessage message(9);
    message.addAttribute("rendersettings_version", "1");
    message.addAttribute("rendersettings_version", "2");
    message.set("a", 1);
    message.set("b", 2);

    EXPECT_EQ(message.getAttibute("rendersettings_version"), "2");
    EXPECT_EQ(message.getAttibute("missing"), "");
    EXPECT_EQ(message.getAttributes().size(), 1u);

    message.remove("a");
    message.remove("never there");
    EXPECT_FALSE(message.has("a"));
    EXPECT_TRUE(message.has("b"));

    message.clear();
    EXPECT_TRUE(message.getMap().empty());
    EXPECT_TRUE(message.getAttributes().empty());
}

TEST(oxMessage, SameTypeComparesTypeNames)
{
    EXPECT_TRUE(oxMessage::sameType(typeid(std::vector<float>), typeid(std::vector<float>)));
    EXPECT_FALSE(oxMessage::sameType(typeid(std::vector<float>), typeid(std::vector<int>)));
    EXPECT_FALSE(oxMessage::sameType(typeid(const char*), typeid(char*)));
}
