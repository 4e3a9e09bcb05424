#include "texture/find_file.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "driver/text.h"

namespace k2k {

namespace {

namespace fs = std::filesystem;

bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error) && !fs::is_directory(path, error);
}

// The folder's entries that are called name but for case, in a fixed order.
std::vector<fs::path> EntriesNamed(const fs::path& folder, const std::string& name) {
    std::vector<fs::path> entries;
    std::error_code error;
    const fs::path listed = folder.empty() ? fs::path(".") : folder;
    for (fs::directory_iterator entry(listed, error), end; !error && entry != end; entry.increment(error)) {
        const std::string entryName = entry->path().filename().string();
        if (EqualNoCase(entryName, name)) entries.push_back(folder / entryName);
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

// Follows the components from `next` on below `folder`; a component that exists as it is named is preferred.
fs::path FollowNoCase(const fs::path& folder, fs::path::const_iterator next, fs::path::const_iterator end) {
    if (next == end) return IsFile(folder) ? folder : fs::path();
    const fs::path exact = folder / *next;
    std::error_code error;
    if (fs::exists(exact, error)) {
        fs::path found = FollowNoCase(exact, std::next(next), end);
        if (!found.empty()) return found;
    }
    for (const fs::path& entry : EntriesNamed(folder, next->string())) {
        fs::path found = entry == exact ? fs::path() : FollowNoCase(entry, std::next(next), end);
        if (!found.empty()) return found;
    }
    return {};
}

std::string FindFile(const std::string& name) {
    if (IsFile(name)) return name;
    const fs::path path(name);
    return FollowNoCase({}, path.begin(), path.end()).string();
}

}  // namespace

std::string FindMapFile(const std::string& name, const std::string& mapPath) {
    std::string slashed = name;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    const fs::path besideMap = fs::path(mapPath).parent_path() / fs::path(slashed).filename();
    for (const std::string& candidate : {name, slashed, besideMap.string()}) {
        std::string found = FindFile(candidate);
        if (!found.empty()) return found;
    }
    return {};
}

}  // namespace k2k
