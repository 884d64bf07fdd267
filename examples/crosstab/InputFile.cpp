#include "examples/crosstab/InputFile.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <cerrno>
#include <system_error>

namespace crosstab {

namespace {

[[noreturn]] void failWithErrno(std::string const& name) {
    throw Failure(name + ": " + std::generic_category().message(errno));
}

} // namespace

void InputFile::Close::operator()(std::FILE* file) const {
    if (file != stdin) {
        std::fclose(file);
    }
}

InputFile::InputFile(std::string const& path)
    : _name(path == "-" ? "standard input" : printable(path)),
      _file(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
    if (_file == nullptr) {
        failWithErrno(_name);
    }
}

std::size_t InputFile::read(char* bytes, std::size_t size) {
    std::size_t const length = std::fread(bytes, 1, size, _file.get());
    if (length == 0 && std::ferror(_file.get()) != 0) {
        failWithErrno(_name);
    }
    return length;
}

} // namespace crosstab
