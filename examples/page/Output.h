#ifndef OMTREE_EXAMPLES_PAGE_OUTPUT_H
#define OMTREE_EXAMPLES_PAGE_OUTPUT_H

#include <string>

namespace page {

/// Writes the whole text to standard output. Throws crosstab::Failure ("standard output: ...") when that fails; a
/// reader that went away is such a failure, not a signal.
void writeStandardOutput(std::string const& text);

/// Writes the whole text to a file, which is replaced only once everything has been written beside it, under its name
/// with ".part" behind it. A link stays, and the file that it leads to is replaced; a pipe or a device is written
/// itself. Throws crosstab::Failure that names the file.
void writeFile(std::string const& name, std::string const& text);

} // namespace page

#endif
