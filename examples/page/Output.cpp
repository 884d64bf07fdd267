#include "examples/page/Output.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace page {

namespace {

[[noreturn]] void fail(std::string const& where, int error) {
    throw crosstab::Failure(crosstab::printable(where) + ": " + std::generic_category().message(error));
}

/// Where the text goes first. A name that is a link stands for what it leads to. What is there and is no plain file (a
/// pipe, a device) is written itself: a file put in its place would be of no use to who reads there.
std::string placeOf(std::string const& name, bool& isBeside) {
    std::error_code none;
    std::filesystem::file_status const status = std::filesystem::status(name, none);
    isBeside = !std::filesystem::exists(status) || std::filesystem::is_regular_file(status);
    // What cannot be followed is left to the opening, which says why.
    std::string const place = isBeside ? std::filesystem::weakly_canonical(name, none).string() : name;
    return place.empty() ? name : place;
}

} // namespace

void writeStandardOutput(std::string const& text) {
    std::signal(SIGPIPE, SIG_IGN);
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        fail("standard output", errno);
    }
}

void writeFile(std::string const& name, std::string const& text) {
    std::signal(SIGPIPE, SIG_IGN);
    bool isBeside = false;
    std::string const place = placeOf(name, isBeside);
    std::string const first = isBeside ? place + ".part" : place;
    std::FILE* const file = std::fopen(first.c_str(), "wb");
    if (file == nullptr) {
        fail(name, errno);
    }
    bool const written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    int const writeError = errno;
    bool const closed = std::fclose(file) == 0;
    if (!written || !closed || (isBeside && std::rename(first.c_str(), place.c_str()) != 0)) {
        int const error = written ? errno : writeError;
        if (isBeside) {
            std::remove(first.c_str());
        }
        fail(name, error);
    }
}

} // namespace page
