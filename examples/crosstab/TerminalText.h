#ifndef OMTREE_EXAMPLES_CROSSTAB_TERMINALTEXT_H
#define OMTREE_EXAMPLES_CROSSTAB_TERMINALTEXT_H

#include "examples/crosstab/Layout.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace crosstab {

/// A text as the lines that show it, without blanks at their ends: broken at its own line breaks, and at blanks where a
/// line would be wider than `width` columns. A word that is wider stays whole. Every line is `printable`; at least one.
std::vector<std::string> linesOf(std::string_view text, std::size_t width);

/// Text and markers as they are shown together: "Total [a,b]".
std::string withMarkers(LaidOutText const& text);

enum class Side { Left, Centre, Right };

/// Appends the text and as many blanks as fill `width` columns; where they go depends on the side it is aligned with.
void appendAligned(std::string& out, std::string_view text, std::size_t width, Side side);

} // namespace crosstab

#endif
