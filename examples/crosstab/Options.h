#ifndef OMTREE_EXAMPLES_CROSSTAB_OPTIONS_H
#define OMTREE_EXAMPLES_CROSSTAB_OPTIONS_H

#include "examples/crosstab/CommandLine.h"

#include <string>
#include <vector>

namespace crosstab {

/// Some values of a column, gathered under one label.
struct Group {
    std::string column;
    std::string name;
    std::vector<std::string> values;
};

/// What the command line asks for.
struct Options {
    std::string file;
    std::vector<std::string> rows; ///< column names, outermost first; so are the next two
    std::vector<std::string> columns;
    std::vector<std::string> layers;
    std::string sumOf; ///< column whose numbers are added
    bool sums = false; ///< whether `sumOf` is asked for; else lines are counted
    bool keepEmpty = false;
    bool namesInCorner = false;
    std::vector<Group> groups;
    std::string title; ///< empty: what the numbers are, by which columns
    std::string caption;
    std::string corner;
    std::vector<std::string> footnotes;
    std::string htmlFile; ///< where an HTML page goes; empty: a table for the terminal
};

/// Reads the command line. Throws HelpAsked, or Failure when it makes no sense.
Options parseOptions(int count, char const* const* words);

} // namespace crosstab

#endif
