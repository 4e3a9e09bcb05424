#include "desktop/start_command.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <string_view>
#include <vector>

#include "driver/command_string.h"

namespace k2k {

namespace {

// A token of the command string has at most 127 characters.
constexpr size_t MaxToken = 127;

// The name in pieces that the parser joins again. A piece that began with "-" would be taken for an option.
std::vector<std::string> Pieces(std::string_view name) {
    std::vector<std::string> pieces;
    while (!name.empty()) {
        size_t length = std::min(name.size(), MaxToken);
        while (length > 1 && length < name.size() && name[length] == '-') --length;
        pieces.emplace_back(name.substr(0, length));
        name.remove_prefix(length);
    }
    return pieces;
}

// The shortest name of a file from the working directory that is no option.
std::string NameFromHere(const QString& file) {
    const QString relative = QDir::current().relativeFilePath(file);
    const std::string name =
        QFile::encodeName(relative.startsWith("..") ? QFileInfo(file).absoluteFilePath() : relative).toStdString();
    return name.starts_with('-') ? "./" + name : name;
}

}  // namespace

bool LeavesFilesOpen(std::span<const char* const> arguments) {
    return arguments.empty() || (arguments.size() == 1 && arguments[0][0] != '-');
}

std::string CommandOfFiles(const BuildFiles& files) {
    const QString map = QFileInfo(files.map).absoluteFilePath();
    const QString palette = QFileInfo(files.palette).absoluteFilePath();
    QDir::setCurrent(QFileInfo(map).path());
    std::vector<std::string> words{NameFromHere(map), "-pal"};
    for (std::string& piece : Pieces(NameFromHere(palette))) words.push_back(std::move(piece));
    words.emplace_back("-dialog");
    std::vector<const char*> arguments(words.size());
    std::ranges::transform(words, arguments.begin(), [](const std::string& word) { return word.c_str(); });
    return CommandString(arguments);
}

}  // namespace k2k
