// The desktop program.
#include <QApplication>
#include <algorithm>
#include <span>

#include "desktop/desktop_program.h"
#include "k2k/stages.h"

int main(int argc, char** argv) {
    // Qt sees none of the arguments: all words are the compiler's.
    int qtArguments = std::min(argc, 1);
    const QApplication application(qtArguments, argv);
    QApplication::setDesktopFileName("k2k-desktop");
    QApplication::setQuitOnLastWindowClosed(false);
    k2k::UsePlainLocale();
    return k2k::RunDesktop({argv + std::min(argc, 1), argv + argc}, k2k::AllStages);
}
