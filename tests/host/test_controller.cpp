#include "oxController.h"
#include "oxMessage.h"
#include "oxModuleBase.h"

#include "oxTestSupport.h"

#include <string>
#include <vector>

namespace {

std::vector<std::string> g_calls;

void first(oxMessage& message)
{
    g_calls.push_back("first");
    message.set("result", 1);
}
void second(oxMessage&) { g_calls.push_back("second"); }
void removesItself(oxMessage&)
{
    g_calls.push_back("removesItself");
    oxController::subCB("test.self", removesItself);
}

class RecordingModule : public oxModuleBase {
public:
    explicit RecordingModule(const char* name) : oxModuleBase(name, "TEST", 0, nullptr) {}
    int receivedMessage(oxMessage& message) override
    {
        received.push_back(message.id());
        return 0;
    }
    std::vector<uint64_t> received;
};

class ControllerTest : public oxTest {
protected:
    void SetUp() override { g_calls.clear(); }
};

} // namespace

TEST_F(ControllerTest, CallbacksByNameAndResultsInTheMessage)
{
    oxController::addCB("test.a", first);
    oxController::addCB("test.b", first); // one function under two names
    oxController::addCB("test.a", second);

    oxMessage message;
    EXPECT_TRUE(oxController::call("test.a", message, 0));
    EXPECT_EQ(g_calls, (std::vector<std::string>{"first", "second"}));
    int result = 0;
    EXPECT_TRUE(message.get("result", result));
    EXPECT_EQ(result, 1);

    g_calls.clear();
    oxController::subCB("test.a", first);
    oxController::call("test.a", message, 0);
    oxController::call("test.b", message, 0);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"second", "first"}));

    // Removing what was never added, under a known or an unknown name, changes nothing.
    oxController::subCB("test.a", removesItself);
    oxController::subCB("test.never", first);
    EXPECT_TRUE(oxController::hasCB("test.a"));

    oxController::subCB("test.a", second);
    oxController::subCB("test.b", first);
    EXPECT_FALSE(oxController::hasCB("test.a"));
    EXPECT_FALSE(oxController::call("test.a", message, 0));
}

TEST_F(ControllerTest, ACallbackMayRemoveItselfWhileCalled)
{
    oxController::addCB("test.self", removesItself);
    oxController::addCB("test.self", second);
    oxMessage message;
    oxController::call("test.self", message, 0);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"removesItself", "second"}));
    g_calls.clear();
    oxController::call("test.self", message, 0);
    EXPECT_EQ(g_calls, (std::vector<std::string>{"second"}));
    oxController::subCB("test.self", second);
}

TEST_F(ControllerTest, MessagesReachEveryModuleButTheSender)
{
    RecordingModule a("A");
    {
        RecordingModule b("B");
        oxMessage refresh(oxController::MessageRefresh);
        oxController::broadcastMessage(refresh);
        oxMessage fromA(0x2000000);
        a.sendMessage(fromA);
        EXPECT_EQ(a.received, (std::vector<uint64_t>{32768}));
        EXPECT_EQ(b.received, (std::vector<uint64_t>{32768, 0x2000000}));
    }
    // A destroyed module leaves the list.
    for (oxModuleBase* module : oxController::getModules())
        EXPECT_NE(module->getName(), "B");
    oxMessage newScene(oxController::MessageNewScene);
    oxController::broadcastMessage(newScene);
    EXPECT_EQ(a.received.back(), 16u);
}

TEST_F(ControllerTest, ApplicationStates)
{
    int busySignals = 0;
    auto connection = QObject::connect(oxController::instance(), &oxController::busyChanged,
                                       [&](bool) { ++busySignals; });
    oxController::setBusy(true, false);
    oxController::setBusy(true, false);
    EXPECT_TRUE(oxController::isBusy());
    oxController::setBusy(false, false);
    EXPECT_FALSE(oxController::isBusy());
    EXPECT_EQ(busySignals, 2);
    QObject::disconnect(connection);

    const uint64_t renders = oxController::getRenderUpdateCount();
    oxController::updateRender();
    EXPECT_EQ(oxController::getRenderUpdateCount(), renders + 1);

    oxController::setModified(true);
    EXPECT_TRUE(oxController::isModified());
    oxController::setModified(false);

    const bool simulation = oxController::isSimulationEnable();
    oxController::enableSimulation(!simulation);
    EXPECT_EQ(oxController::isSimulationEnable(), !simulation);
    oxController::enableSimulation(simulation);

    const bool sound = oxController::playSoundOnExport();
    oxController::setPlaySoundOnExport(!sound);
    EXPECT_EQ(oxController::playSoundOnExport(), !sound);
    oxController::setPlaySoundOnExport(sound);
}
