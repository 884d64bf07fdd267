#ifndef OMTREE_EXAMPLES_CROSSTAB_COMMANDLINE_H
#define OMTREE_EXAMPLES_CROSSTAB_COMMANDLINE_H

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace crosstab {

/// The command line asks for help and nothing else.
struct HelpAsked {
    std::string text;
};

/// Gives the words to the options that they are for. Throws HelpAsked, or Failure with one printable line.
void parseWords(CLI::App& app, int count, char const* const* words);

/// Runs a program and returns its exit status: 0, or 2 after one line on standard error that begins with its name.
/// From here on the process ignores the signals of a reader that went away and of a file that grows past its limit:
/// writing fails instead.
int runProgram(char const* name, std::function<void()> const& run);

} // namespace crosstab

#endif
