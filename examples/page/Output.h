#ifndef OMTREE_EXAMPLES_PAGE_OUTPUT_H
#define OMTREE_EXAMPLES_PAGE_OUTPUT_H

#include <string>

namespace page {

/// Writes the whole text to standard output. Throws crosstab::Failure ("standard output: ...") when that fails. A
/// reader that went away is such a failure where its signal is ignored, as `crosstab::runProgram` sees to.
void writeStandardOutput(std::string const& text);

/// Writes the whole text to a file. Throws crosstab::Failure ("NAME: ..."), also for an empty name.
///
/// A symbolic link stays, and what it leads to is written. Then it depends on what is there:
///  - nothing: the text goes into a temporary file in the same folder, which gets the name once it is complete;
///  - a file of this user's with one name: the same, and the new file takes over the old one's mode and group;
///  - a file with several names (hard links), of another owner, with extended attributes, or where the folder takes no
///    new file: its bytes are replaced in place. Room for all of them is taken first where the file system can do
///    that, so that a full disk leaves the old ones;
///  - a pipe, a device, an open file of a process (/dev/stdout): it is written to, and nothing else is touched.
/// A file that this user may not write is never replaced.
///
/// What is left of a failure: the file as it was, or none. A process that is killed can leave a temporary file beside
/// the other, whose name begins with ".omtree-", or, written in place, a file that is partly old and partly new.
void writeFile(std::string const& name, std::string const& text);

} // namespace page

#endif
