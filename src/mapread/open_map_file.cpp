// Chooses the reader for a file's dialect.
#include "driver/build_log.h"
#include "mapread/file_map71.h"

namespace k2k {

namespace {

bool OpenAs(CFileMap& reader) {
    reader.Reset();
    reader.Open(true);
    return reader.IsSupported();
}

std::unique_ptr<CFileMap> MakeReader(int32_t version, const std::string& path) {
    switch (version) {
        case 50:
            return std::make_unique<CFileMap50>(path);
        case 51:
            return std::make_unique<CFileMap51>(path);
        default:
            FatalError("\nUnrecognized map file format %s !", path.c_str());
    }
}

}  // namespace

std::unique_ptr<CFileMap> OpenMapFile(const std::string& path) {
    std::unique_ptr<CFileMap> reader = std::make_unique<CFileMap71>(path);
    if (OpenAs(*reader)) return reader;
    const int32_t version = reader->GetVersion();
    reader->Close();
    reader = MakeReader(version, path);
    if (OpenAs(*reader)) return reader;
    reader->Close();
    FatalError("\nUnknown file format %s", path.c_str());
}

}  // namespace k2k
