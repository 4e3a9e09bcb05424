// Opening a map, its entities, and the passes over it.
#include "mapread/file_map.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "mapread/read_map.h"
#include "mapread/syntax.h"

namespace k2k {

namespace {

[[noreturn]] void FailToOpen(const std::string& path) {
    FatalError("Can't open %s - %s", path.c_str(), std::strerror(errno));
}

std::string ReadWholeFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) FailToOpen(path);
    std::string text;
    std::array<char, 1U << 16U> piece{};
    while (const size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) text.append(piece.data(), count);
    if (std::ferror(file.get()) != 0) FailToOpen(path);
    return text;
}

}  // namespace

bool CFileMap::Open(bool mustExist) {
    if (!mustExist || name().empty()) return false;
    text_ = ReadWholeFile(name());
    ClearEntities();
    scanner_.Start(text_.data(), text_.size());
    version_ = ReadVersion();
    return true;
}

bool CFileMap::Close() {
    text_ = {};
    scanner_.Start(text_.data(), 0);
    return true;
}

void CFileMap::Reset() {
    extended_ = false;
    currentEntity_ = nullptr;
    FreeBlocks();
    reread_.clear();
    rereading_ = false;
}

int32_t CFileMap::ReadVersion() {
    constexpr int32_t withoutVersionLine = 50;
    constexpr int32_t alwaysExtended = 600;
    extended_ = false;
    if (!scanner_.NextToken(true)) return withoutVersionLine;
    if (token() != "version") {
        scanner_.Unread();
        return withoutVersionLine;
    }
    if (!scanner_.NextToken(false)) FatalError("Version number missing\n");
    const int32_t number = ToInt(token());
    extended_ = number % 10 == 1 || number >= alwaysExtended;
    return number / 10;
}

void CFileMap::ReadAll(bool entitiesOnly) {
    meshFound_ = false;
    rereading_ = false;
    DetailCount = 0;
    WarnCount = 0;
    const size_t entitiesBefore = Entities().size();
    ReadEntities(entitiesOnly);
    if (!KeepMarksWorthReading() || Options().hiprec) return;
    ReadMarkedAgain(entitiesOnly, entitiesBefore);
}

void CFileMap::ReadEntities(bool entitiesOnly) {
    while (ReadEntity(entitiesOnly)) {
    }
}

// Precise planes cannot help a mesh block: it has them already.
bool CFileMap::KeepMarksWorthReading() {
    std::erase_if(reread_, [this](int32_t number) {
        const auto index = static_cast<size_t>(number - 1);
        return index >= blocks_.size() || (blocks_[index]->flags & BlockMesh) != 0;
    });
    return !reread_.empty();
}

void CFileMap::ReadMarkedAgain(bool entitiesOnly, size_t entitiesBefore) {
    std::vector<CEntity>& entities = Entities();
    entities.erase(entities.begin() + static_cast<std::ptrdiff_t>(entitiesBefore), entities.end());
    const std::vector<int32_t> marks = std::move(reread_);
    Close();
    FreeBlocks();
    Reset();
    Open(true);
    reread_ = marks;
    rereading_ = true;
    if (!Options().quiet) BuildLog("\n--Invalid blocks detected- recompiling with HiPrec--\n");
    ReadEntities(entitiesOnly);
}

bool CFileMap::IsMarkedForRereading(int32_t blockNumber) {
    return rereading_ && std::binary_search(reread_.begin(), reread_.end(), blockNumber);
}

bool CFileMap::MarkForRereading(int32_t blockNumber) {
    if (Options().hiprec || rereading_) return false;
    if (reread_.empty() || reread_.back() != blockNumber) reread_.push_back(blockNumber);
    return true;
}

void CFileMap::FreeBlocks() {
    blocks_.clear();
    duplicates_.Clear();
}

bool CFileMap::ReadEntity(bool entitiesOnly) {
    if (!scanner_.NextToken(true)) return false;
    if (token() != "{") FatalError(" \nE714");
    if (Entities().size() >= MaxEntities) FatalError(" \nE604: Map size - too many entities");
    currentEntity_ = &NewEntity();
    RequireToken();
    while (token() != "}") {
        if (token() != "{") {
            ReadEntityPair();
        } else if (entitiesOnly) {
            SkipBlock();
        } else {
            ReadBlock();
        }
        RequireToken();
    }
    currentEntity_->origin = GetKeyVector(currentEntity_->keys, "origin");
    return true;
}

// Counts on the one group of braces that every block has.
void CFileMap::SkipBlock() {
    for (int braces = 0; braces < 2; ++braces) {
        do RequireToken();
        while (token() != "}");
    }
}

void CFileMap::ReadEntityPair() {
    const std::unique_ptr<CEntityPair> pair = NewEntityPair(ToInt(token()));
    if (pair == nullptr) FatalError("E02A: Unknown entity type");
    pair->Read(scanner_, *currentEntity_);
}

std::string_view CFileMap::NextOnLine() {
    scanner_.NextToken(false);
    return token();
}

void CFileMap::RequireToken() {
    k2k::RequireToken(scanner_);
}

}  // namespace k2k
