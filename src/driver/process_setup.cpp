#include "driver/process_setup.h"

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <string_view>

namespace k2k {

namespace {

// A program can be started with its standard streams closed. The next files to be opened would take their descriptors,
// and messages would go into a level.
void TakeStandardDescriptors() {
    int file = 0;
    while (file >= 0 && file <= STDERR_FILENO) file = open("/dev/null", O_RDWR);
    if (file > STDERR_FILENO) close(file);
}

// Setting the locale is not safe while other threads run, so only a program that has changed it pays for that.
void UseDecimalPoint() {
    if (std::setlocale(LC_NUMERIC, nullptr) != std::string_view("C")) std::setlocale(LC_NUMERIC, "C");
}

}  // namespace

void SetUpProcess() {
    TakeStandardDescriptors();
    std::signal(SIGXFSZ, SIG_IGN);
    UseDecimalPoint();
}

}  // namespace k2k
