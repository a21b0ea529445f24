#include "oxCallTrace.h"
#include "oxKernelServiceFactory.h"
#include "oxLog.h"

#include "oxTestSupport.h"

#include <cstdio>
#include <fstream>
#include <typeinfo>

namespace {

class SomeService : public oxBaseService {};
class OtherService : public oxBaseService {};
class UnregisteredService : public oxBaseService {};

using ServicesTest = oxTest;
using LogTest = oxTest;

} // namespace

TEST_F(ServicesTest, LookupGivesTheServiceOrSaysWhyNot)
{
    SomeService service;
    oxKernelServiceFactory::the()->registerService<SomeService>(&service);
    EXPECT_EQ(oxKernelServiceFactory::getService<SomeService>(), &service);

    testing::internal::CaptureStderr();
    EXPECT_EQ(oxKernelServiceFactory::getService<UnregisteredService>(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("oxKernelServiceFactory: couldn't find class '") +
                  typeid(UnregisteredService).name() + "'!\n");

    oxKernelServiceFactory::the()->registerService<OtherService>(nullptr);
    testing::internal::CaptureStderr();
    EXPECT_EQ(oxKernelServiceFactory::getService<OtherService>(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string("oxKernelServiceFactory: service '") + typeid(OtherService).name() +
                  "' is NULL!\n");

    // An entry of another class casts to null, silently.
    oxKernelServiceFactory::the()->registerEntry(typeid(OtherService).hash_code(), &service);
    testing::internal::CaptureStderr();
    EXPECT_EQ(oxKernelServiceFactory::getService<OtherService>(), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    oxKernelServiceFactory::the()->unregisterService<SomeService>();
    oxKernelServiceFactory::the()->unregisterService<OtherService>();
}

TEST_F(LogTest, LevelsSinksAndLogFile)
{
    oxTempDir dir;
    const std::string file = dir.file("oxlin.log");
    ASSERT_TRUE(oxLog::setLogFile(file));
    oxLog::setStderrEnabled(false);
    const oxLog::Level level = oxLog::getLevel();
    oxLog::setLevel(oxLog::Info);

    expectLog(oxLog::Warning, "disk 93% full: /tmp");
    oxLog::info("rendered %d of %d", 3, 10);
    oxLog::debug("not in the file");
    oxLog::warning("disk %d%% full: %s", 93, "/tmp");

    oxLog::setLevel(level);
    oxLog::setStderrEnabled(true);
    ASSERT_TRUE(oxLog::setLogFile(""));

    // The sink sees everything, the file only what passes the level.
    EXPECT_TRUE(log().contains(oxLog::Info, "rendered 3 of 10"));
    EXPECT_TRUE(log().contains(oxLog::Debug, "not in the file"));
    std::ifstream in(file);
    std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(content, "[info] rendered 3 of 10\n[warning] disk 93% full: /tmp\n");

    // A long message is not cut.
    const std::string longText(5000, 'x');
    oxLog::debug("%s", longText.c_str());
    EXPECT_TRUE(log().contains(oxLog::Debug, longText));
}

TEST_F(LogTest, CallTraceRecordsOnlyWhenEnabled)
{
    oxCallTrace::clear();
    oxCallTrace::record("a::b", "1");
    EXPECT_TRUE(oxCallTrace::calls().empty());
    oxCallTrace::setEnabled(true);
    oxCallTrace::record("a::b", "1");
    oxCallTrace::record("a::c");
    oxCallTrace::setEnabled(false);
    EXPECT_EQ(oxCallTrace::names(), (std::vector<std::string>{"a::b", "a::c"}));
    EXPECT_EQ(oxCallTrace::calls()[0].arguments, "1");
    oxCallTrace::clear();
}
