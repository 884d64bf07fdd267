#ifndef OMTREE_EXAMPLES_CROSSTAB_DISPLAYWIDTH_H
#define OMTREE_EXAMPLES_CROSSTAB_DISPLAYWIDTH_H

#include <cstddef>
#include <string_view>

namespace crosstab {

/// Columns that a character takes on a terminal: 0 for marks that combine with the character before them and for
/// invisible format characters, 2 for wide East Asian characters and pictographs, else 1. Independent of the locale.
/// REQUIRES: no control character (see `printable`).
std::size_t displayWidth(char32_t codePoint);

/// The sum over a UTF-8 text. An ill-formed byte counts as the replacement character that is shown for it.
std::size_t displayWidth(std::string_view text);

} // namespace crosstab

#endif
