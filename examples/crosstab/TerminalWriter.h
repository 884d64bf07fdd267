#ifndef OMTREE_EXAMPLES_CROSSTAB_TERMINALWRITER_H
#define OMTREE_EXAMPLES_CROSSTAB_TERMINALWRITER_H

#include "examples/crosstab/Layout.h"

#include <string>

namespace crosstab {

/// The whole table as text for a terminal, in UTF-8: the title; each layer, its labels above its grid; caption and
/// footnotes. Blank lines stand between these, and no line ends with a blank.
std::string terminalText(LaidOutTable const& table);

} // namespace crosstab

#endif
