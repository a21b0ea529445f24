// Test main: every test binary runs inside an offscreen Qt application, as the host does.

#include "oxPlatform.h"
#include "oxScript.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // No modal dialog may wait for a person during a test run.
    oxPlatform::prepareHeadless(true);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    // A suite that started the interpreter stops it while the code its modules use is loaded.
    oxScript::stop();
    return result;
}
