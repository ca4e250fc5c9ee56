#include "base/inInitMgr.h"

#include <QApplication>
#include <gtest/gtest.h>

// Runs all tests within one start-up of the framework and one application, without a display.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Ko::InInitScope const scope(argc, argv);
    QApplication const application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
