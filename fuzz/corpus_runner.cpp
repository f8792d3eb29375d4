#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "input.h"

// corpus_runner FOLDER...   works on every file of the folders, each of which must hold one at
// least
//
// Stands in for libFuzzer where the corpus is run as a test. A finding ends the process; the name
// that was printed last is its file's.
namespace {

std::vector<std::filesystem::path> FilesIn(const char* folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Run(const std::filesystem::path& path) {
    std::fprintf(stderr, "%s\n", path.c_str());
    std::ifstream file(path, std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(file), {}};
    fuzz::Expect(file.good() || file.eof(), "the file can be read");
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::vector<std::filesystem::path> files = FilesIn(argv[i]);
        if (files.empty()) {
            std::fprintf(stderr, "%s: no files to run\n", argv[i]);
            return 1;
        }
        for (const std::filesystem::path& file : files) {
            Run(file);
        }
        count += files.size();
    }
    std::printf("%zu files were run\n", count);
    return count > 0 ? 0 : 1;
}
