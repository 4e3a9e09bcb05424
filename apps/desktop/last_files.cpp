#include "desktop/last_files.h"

#include <QSettings>

namespace k2k {

namespace {

constexpr const char* Map = "files/map";
constexpr const char* Palette = "files/palette";

QSettings OwnSettings() {
    return {QSettings::IniFormat, QSettings::UserScope, "k2k", "k2k-desktop"};
}

}  // namespace

BuildFiles LoadLastFiles() {
    const QSettings settings = OwnSettings();
    return {settings.value(Map).toString(), settings.value(Palette).toString()};
}

void SaveLastFiles(const BuildFiles& files) {
    QSettings settings = OwnSettings();
    settings.setValue(Map, files.map);
    settings.setValue(Palette, files.palette);
}

}  // namespace k2k
