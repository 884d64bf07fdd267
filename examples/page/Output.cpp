#include "examples/page/Output.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

namespace page {

namespace {

[[noreturn]] void fail(std::string const& where, int error) {
    throw crosstab::Failure(crosstab::printable(where) + ": " + std::generic_category().message(error));
}

} // namespace

void writeStandardOutput(std::string const& text) {
    std::signal(SIGPIPE, SIG_IGN);
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        fail("standard output", errno);
    }
}

void writeFile(std::string const& name, std::string const& text) {
    std::string const beside = name + ".part";
    std::FILE* const file = std::fopen(beside.c_str(), "wb");
    if (file == nullptr) {
        fail(name, errno);
    }
    bool const written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    int const writeError = errno;
    bool const closed = std::fclose(file) == 0;
    if (!written || !closed || std::rename(beside.c_str(), name.c_str()) != 0) {
        int const error = written ? errno : writeError;
        std::remove(beside.c_str());
        fail(name, error);
    }
}

} // namespace page
