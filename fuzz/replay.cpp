// A fuzz target without a fuzzer: runs it over the files of the folders that are named.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void Replay(const fs::path& path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int replayed = 0;
    for (int i = 1; i < argc; ++i)
        for (const fs::path& file : FilesOf(fs::absolute(argv[i]))) {
            Replay(file);
            ++replayed;
        }
    std::printf("%d files\n", replayed);
    return replayed > 0 ? 0 : 1;
}
