// Tests of the desktop program, on a screen that nobody sees.
#include <gtest/gtest.h>

#include <QApplication>

#include "desktop/desktop_program.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    k2k::UsePlainLocale();
    return RUN_ALL_TESTS();
}
