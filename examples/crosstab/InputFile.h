#ifndef OMTREE_EXAMPLES_CROSSTAB_INPUTFILE_H
#define OMTREE_EXAMPLES_CROSSTAB_INPUTFILE_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace crosstab {

/// A file that is read from front to back.
class InputFile {
public:
    /// Opens the file, or standard input when the path is "-". Throws Failure "data.csv: No such file or directory".
    explicit InputFile(std::string const& path);

    /// What messages call it.
    std::string const& name() const { return _name; }

    /// Reads at most `size` bytes and returns how many there were; 0 at the end. Throws Failure
    /// "data: Is a directory".
    std::size_t read(char* bytes, std::size_t size);

private:
    struct Close {
        void operator()(std::FILE* file) const;
    };

    std::string _name;
    std::unique_ptr<std::FILE, Close> _file;
};

} // namespace crosstab

#endif
