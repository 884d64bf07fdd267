// Feeds a fuzz target with files, without a fuzzer:
//
//     NAME_replay PATH...
//
// Each path is a file, or a folder whose files are taken in the order of their names. Prints how many there were and
// ends with status 1 when a path does not exist, holds no file, or cannot be read.

#include "FuzzTarget.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <vector>

namespace {

using Path = std::filesystem::path;

std::vector<Path> FilesOf(Path const& path) {
    if (!std::filesystem::is_directory(path)) {
        return {path};
    }
    std::vector<Path> files;
    for (std::filesystem::directory_entry const& entry : std::filesystem::directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// False when the file cannot be read.
bool Replay(Path const& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> const bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (!stream) {
        return false;
    }
    // A block of just the file's size, so that the sanitizers see one byte too many.
    auto const block = std::make_unique<std::uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), block.get());
    LLVMFuzzerTestOneInput(block.get(), bytes.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::size_t replayed = 0;
    for (int k = 1; k < argc; ++k) {
        std::vector<Path> const files = FilesOf(argv[k]);
        if (files.empty()) {
            std::cerr << argv[k] << ": no file in it\n";
            return 1;
        }
        for (Path const& file : files) {
            if (!Replay(file)) {
                std::cerr << file.string() << ": cannot be read\n";
                return 1;
            }
            ++replayed;
        }
    }
    std::cout << replayed << " inputs replayed\n";
    return replayed != 0 ? 0 : 1;
}
