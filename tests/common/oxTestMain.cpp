// Test main: every test binary runs inside an offscreen Qt application, as the host does.

#include "oxController.h"
#include "oxPlatform.h"
#include "oxScript.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv)
{
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    oxPlatform::ensureRuntimeDir();
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    // No modal dialog may wait for a person during a test run.
    oxController::setNoGUI(true);
    const int result = RUN_ALL_TESTS();
    // A suite that started the interpreter stops it while the code its modules use is loaded.
    oxScript::stop();
    return result;
}
