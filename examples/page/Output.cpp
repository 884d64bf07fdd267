#include "examples/page/Output.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace page {

namespace {

namespace fs = std::filesystem;

constexpr mode_t NewFileMode = 0666; ///< less what the user's mask takes away
constexpr mode_t PrivateMode = 0600;
constexpr mode_t AllModeBits = 07777;
constexpr int MostLinks = 40;
constexpr int MostTemporaries = 1000; ///< left behind by killed processes that had this one's number

/// What an operation ended with: 0, or the number of an error.
using Outcome = int;

[[noreturn]] void fail(std::string const& where, Outcome error) {
    throw crosstab::Failure(crosstab::printable(where) + ": " + std::generic_category().message(error));
}

/// An open file, or the reason why it is not open.
class OpenFile {
public:
    explicit OpenFile(int descriptor) : _descriptor(descriptor), _error(descriptor < 0 ? errno : 0) {}
    ~OpenFile() { close(); }
    OpenFile(OpenFile const&) = delete;
    OpenFile& operator=(OpenFile const&) = delete;

    Outcome error() const { return _error; }
    int descriptor() const { return _descriptor; }

    /// Some file systems only now tell what went wrong.
    Outcome close() {
        int const descriptor = _descriptor;
        _descriptor = -1;
        return descriptor >= 0 && ::close(descriptor) != 0 && errno != EINTR ? errno : 0;
    }

private:
    int _descriptor;
    Outcome _error;
};

Outcome writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        ssize_t const length = ::write(descriptor, text.data(), text.size());
        if (length > 0) {
            text.remove_prefix(static_cast<std::size_t>(length));
        } else if (length < 0 && errno == EAGAIN) {
            pollfd room{descriptor, POLLOUT, 0};
            ::poll(&room, 1, -1);
        } else if (length == 0 || errno != EINTR) {
            return length == 0 ? EIO : errno;
        }
    }
    return 0;
}

// --- where a name leads ----------------------------------------------------------------------------------------------

fs::path folderOf(fs::path const& path) { return path.has_parent_path() ? path.parent_path() : fs::path("."); }

fs::path wholeFolderOf(fs::path const& path) {
    std::error_code none;
    return fs::canonical(folderOf(path), none);
}

/// Open files of processes look like links, but what they lead to need not have a name.
bool isOfAProcess(fs::path const& path) { return (wholeFolderOf(path) / "").string().starts_with("/proc/"); }

/// The number of this process's own open file that a path stands for, or -1. Opened by its path it would be another
/// open file, with a position of its own.
int ownDescriptor(fs::path const& path) {
    std::error_code none;
    fs::path const own = fs::canonical("/proc/self/fd", none);
    std::string const name = path.filename().string();
    int number = -1;
    auto const read = std::from_chars(name.data(), name.data() + name.size(), number);
    bool const isNumber = read.ec == std::errc() && read.ptr == name.data() + name.size();
    return isNumber && !own.empty() && wholeFolderOf(path) == own ? number : -1;
}

/// The path that is reached by following links, as long as they are links by name.
fs::path endOf(fs::path path) {
    for (int links = 0; links < MostLinks; ++links) {
        std::error_code error;
        fs::path const target = fs::read_symlink(path, error);
        if (error || isOfAProcess(path)) {
            break;
        }
        path = folderOf(path) / target;
    }
    return path;
}

// --- replacing a file ------------------------------------------------------------------------------------------------

/// A temporary file in a folder. It is removed, unless it was given a name.
class Temporary {
public:
    Temporary(int folder, mode_t mode) : _folder(folder), _file(create(mode)) {}
    ~Temporary() {
        if (_file.error() == 0 && !_isNamed) {
            ::unlinkat(_folder, _name.c_str(), 0);
        }
    }
    Temporary(Temporary const&) = delete;
    Temporary& operator=(Temporary const&) = delete;

    Outcome error() const { return _file.error(); }

    /// Takes over who may do what with a file. EPERM when that cannot be, as with another owner's file.
    Outcome takeOver(struct stat const& other) {
        struct stat own {};
        if (::fstat(_file.descriptor(), &own) != 0) {
            return errno;
        }
        if (own.st_uid != other.st_uid ||
            (own.st_gid != other.st_gid && ::fchown(_file.descriptor(), own.st_uid, other.st_gid) != 0)) {
            return EPERM;
        }
        return ::fchmod(_file.descriptor(), other.st_mode & AllModeBits) != 0 ? errno : 0;
    }

    /// The text is on the disk before the name stands for it.
    Outcome write(std::string_view text) {
        if (Outcome const error = writeAll(_file.descriptor(), text); error != 0) {
            return error;
        }
        if (::fsync(_file.descriptor()) != 0 && errno != EINVAL) {
            return errno;
        }
        return _file.close();
    }

    Outcome rename(std::string const& name) {
        _isNamed = ::renameat(_folder, _name.c_str(), _folder, name.c_str()) == 0;
        return _isNamed ? 0 : errno;
    }

private:
    int create(mode_t mode) {
        for (int number = 0;; ++number) {
            _name = ".omtree-" + std::to_string(::getpid()) + "-" + std::to_string(number);
            int const descriptor = ::openat(_folder, _name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
            if (descriptor >= 0 || errno != EEXIST || number == MostTemporaries) {
                return descriptor;
            }
        }
    }

    int _folder;
    std::string _name;
    OpenFile _file;
    bool _isNamed = false;
};

/// Whether a file has attributes that a new one would not: an access list is one. The labels of a security module are
/// given to each file anew.
bool hasAttributes(fs::path const& path) {
    ssize_t const size = ::listxattr(path.c_str(), nullptr, 0);
    std::vector<char> names(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    ssize_t const length = names.empty() ? 0 : ::listxattr(path.c_str(), names.data(), names.size());
    if (length < 0) {
        return true;
    }
    std::string_view rest(names.data(), static_cast<std::size_t>(length));
    while (!rest.empty()) {
        std::string_view const name = rest.substr(0, rest.find('\0'));
        if (name != "security.selinux") {
            return true;
        }
        rest.remove_prefix(std::min(rest.size(), name.size() + 1));
    }
    return false;
}

/// Writes beside the file `path` and puts the result in its place. `there` is null when there is no file yet.
Outcome writeBeside(fs::path const& path, struct stat const* there, std::string_view text) {
    if (!path.has_filename()) {
        return EISDIR;
    }
    OpenFile const folder(::open(folderOf(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder.error() != 0) {
        return folder.error();
    }
    Temporary temporary(folder.descriptor(), there != nullptr ? PrivateMode : NewFileMode);
    Outcome error = temporary.error();
    if (error == 0 && there != nullptr) {
        error = temporary.takeOver(*there);
    }
    if (error == 0) {
        error = temporary.write(text);
    }
    return error != 0 ? error : temporary.rename(path.filename().string());
}

/// Takes the room that a file will need. A file system that cannot do so finds out while it is written.
Outcome takeRoom(int descriptor, off_t size, off_t oldSize) {
    if (size == 0 || ::fallocate(descriptor, 0, 0, size) == 0 || errno == EOPNOTSUPP || errno == ENOSYS) {
        return 0;
    }
    Outcome const error = errno;
    return ::ftruncate(descriptor, oldSize) == 0 ? error : errno;
}

Outcome writeInPlace(fs::path const& path, std::string_view text) {
    OpenFile file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (file.error() != 0) {
        return file.error();
    }
    struct stat there {};
    if (::fstat(file.descriptor(), &there) != 0) {
        return errno;
    }
    auto const size = static_cast<off_t>(text.size());
    Outcome error = takeRoom(file.descriptor(), size, there.st_size);
    if (error == 0) {
        error = writeAll(file.descriptor(), text);
    }
    if (error == 0 && ::ftruncate(file.descriptor(), size) != 0) {
        error = errno;
    }
    return error != 0 ? error : file.close();
}

Outcome rewrite(fs::path const& path, struct stat const& there, std::string_view text) {
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        return errno;
    }
    if (there.st_nlink == 1 && !isOfAProcess(path) && !hasAttributes(path)) {
        Outcome const error = writeBeside(path, &there, text);
        // The file is another owner's, the folder takes no file, or this name cannot get another one (something is
        // mounted there).
        bool const isRefused = error == EACCES || error == EPERM || error == EBUSY || error == EXDEV;
        if (!isRefused) {
            return error;
        }
    }
    return writeInPlace(path, text);
}

/// For what is no file. A folder is not either: opening it says so.
Outcome writeThrough(fs::path const& path, std::string_view text) {
    OpenFile file(::open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    Outcome const error = file.error() != 0 ? file.error() : writeAll(file.descriptor(), text);
    return error != 0 ? error : file.close();
}

Outcome write(std::string const& name, std::string_view text) {
    struct stat there {};
    bool const isThere = ::stat(name.c_str(), &there) == 0;
    if (!isThere && errno != ENOENT) {
        return errno;
    }
    fs::path const path = endOf(name);
    if (int const own = ownDescriptor(path); own >= 0) {
        return writeAll(own, text);
    }
    if (!isThere) {
        return writeBeside(path, nullptr, text);
    }
    return S_ISREG(there.st_mode) ? rewrite(path, there, text) : writeThrough(path, text);
}

} // namespace

void writeStandardOutput(std::string const& text) {
    if (Outcome const error = writeAll(STDOUT_FILENO, text); error != 0) {
        fail("standard output", error);
    }
}

void writeFile(std::string const& name, std::string const& text) {
    if (name.empty()) {
        throw crosstab::Failure("the name of the file to be written is empty");
    }
    if (Outcome const error = write(name, text); error != 0) {
        fail(name, error);
    }
}

} // namespace page
