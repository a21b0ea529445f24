#include "oxCallTrace.h"
#include "oxController.h"
#include "oxFileIO.h"
#include "oxImageWriter.h"
#include "oxMessage.h"
#include "oxMessageHelpers.h"
#include "oxMovieExport.h"

#include "oxTestSupport.h"

#include <dlfcn.h>

#include <QString>
#include <typeinfo>

#include <algorithm>

extern "C" const char* getPluginVersion();
extern "C" void initPlugin();

namespace {

class ModuleTest : public oxTest {
protected:
    void SetUp() override
    {
        initPlugin();
        oxFileIO::clearProject();
        oxCallTrace::clear();
        oxCallTrace::setEnabled(true);
    }
    void TearDown() override
    {
        oxCallTrace::setEnabled(false);
        oxCallTrace::clear();
        oxFileIO::clearProject();
        oxTest::TearDown();
    }

    static int moduleCount()
    {
        int count = 0;
        for (oxModuleBase* module : oxController::getModules())
            count += module->getName() == "MovieExport" ? 1 : 0;
        return count;
    }
};

} // namespace

TEST(PluginEntryTest, VersionIsAnsweredBeforeInit)
{
    // Looked up the way the host's loader does, without starting the plug-in.
    void* self = ::dlopen(nullptr, RTLD_NOW);
    ASSERT_NE(self, nullptr);
    auto version = reinterpret_cast<const char* (*)()>(::dlsym(self, "getPluginVersion"));
    ASSERT_NE(version, nullptr);
    EXPECT_STREQ(version(), "15.3");
    EXPECT_EQ(theMovieExport, nullptr);
    ::dlclose(self);
}

TEST_F(ModuleTest, SecondInitCreatesNothing)
{
    oxMovieExport* first = theMovieExport;
    ASSERT_NE(first, nullptr);
    initPlugin();
    EXPECT_EQ(theMovieExport, first);
    EXPECT_EQ(moduleCount(), 1);
    EXPECT_EQ(first->getName(), "MovieExport");
    EXPECT_EQ(first->getGroupName(), "IGNORE");
    EXPECT_EQ(first->getFlags(), 0xA010u);
    EXPECT_STREQ(first->metaObject()->className(), "oxMovieExport");
}

TEST_F(ModuleTest, NewSceneResetsTheWritersExportSwitches)
{
    oxImageWriter* writer = theMovieExport->getImageWriter();
    writer->setExportMultiLayer(true);
    writer->setExportExrHalf(false);
    oxCallTrace::clear();

    oxMessage newScene(oxController::MessageNewScene);
    EXPECT_EQ(theMovieExport->receivedMessage(newScene), 0);
    // The window first goes back to the default settings, then the writer is reset, last.
    const std::vector<std::string> calls = oxCallTrace::names();
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.back(), "oxImageWriter::resetExportSettings");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "oxImageWriter::resetExportSettings"), 1);
    EXPECT_FALSE(writer->getExportMultiLayer());
    EXPECT_TRUE(writer->getExportExrHalf());
}

TEST_F(ModuleTest, ProjectMessageWithoutABoolLoadingFlagChangesNothing)
{
    oxMessage project(oxController::MessageProjectReadWrite);

    // No "_loading" at all: silent, nothing happens.
    testing::internal::CaptureStderr();
    theMovieExport->receivedMessage(project);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    // "_loading" of another type: the type complaint, then nothing.
    oxFileIO::getProject().set("_loading", 1);
    testing::internal::CaptureStderr();
    theMovieExport->receivedMessage(project);
    const std::string complaint = testing::internal::GetCapturedStderr();
    const std::string expected = std::string("getFromMessage : Attribute '_loading' has wrong type "
                                             "(is:'") +
                                 typeid(int).name() + "' != req:'" + typeid(bool).name() + "')!\n";
    EXPECT_EQ(complaint.substr(0, expected.size()), expected);
    EXPECT_NE(complaint.find("Stack trace:"), std::string::npos);
    EXPECT_TRUE(oxCallTrace::calls().empty());

    // Unknown ids are ignored.
    oxMessage other(12345);
    EXPECT_EQ(theMovieExport->receivedMessage(other), 0);
    EXPECT_TRUE(oxCallTrace::calls().empty());
}

TEST(MessageReaderTest, TypedReadsLeaveTheOutputUnlessTheTypeMatches)
{
    oxMessage message;
    message.set("width", 640);
    message.set("name", std::string("front"));
    message.set("title", QString("Ünïcode"));

    int width = 0;
    EXPECT_TRUE(getFromMessage(message, "width", width));
    EXPECT_EQ(width, 640);

    unsigned int unsignedWidth = 7;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(getFromMessage(message, "width", unsignedWidth));
    const std::string complaint = testing::internal::GetCapturedStderr();
    EXPECT_EQ(unsignedWidth, 7u);
    EXPECT_EQ(complaint.rfind("getFromMessage : Attribute 'width' has wrong type (is:'", 0), 0u);

    int height = 240;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(getFromMessage(message, "height", height)); // missing: silent
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(height, 240);

    QString title;
    EXPECT_TRUE(getFromMessage(message, "title", title));
    EXPECT_EQ(title, QString("Ünïcode"));
    std::string name;
    EXPECT_TRUE(getFromMessage(message, "name", name));
    EXPECT_EQ(name, "front");
}
