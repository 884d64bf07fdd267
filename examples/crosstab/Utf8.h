#ifndef OMTREE_EXAMPLES_CROSSTAB_UTF8_H
#define OMTREE_EXAMPLES_CROSSTAB_UTF8_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace crosstab {

/// Stands for what cannot be shown.
constexpr char32_t ReplacementCharacter = 0xFFFD;

/// The code point at `position`, which steps behind it; nothing for a byte that begins no well-formed sequence, which
/// is stepped over alone. Overlong forms, surrogates and numbers past U+10FFFF are not well-formed.
/// REQUIRES: position < text.size().
std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position);

bool isUtf8(std::string_view text);

/// Appends the UTF-8 form of a code point below 0x110000.
void appendUtf8(std::string& text, char32_t codePoint);

/// The text as one line that does no harm on a terminal: line breaks and tabs become blanks, other control characters
/// their pictures (U+2400 and following), ill-formed bytes, the controls from U+0080 on, line and paragraph separators
/// and the marks that reorder what follows them U+FFFD.
std::string printable(std::string_view text);

/// The text between double quotes for a message: printable, and cut to 60 code points and "...".
std::string inQuotes(std::string_view text);

} // namespace crosstab

#endif
