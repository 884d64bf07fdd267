#include "examples/crosstab/TerminalText.h"

#include "examples/crosstab/DisplayWidth.h"
#include "examples/crosstab/Utf8.h"

#include <algorithm>

namespace crosstab {

namespace {

void trimEnd(std::string& line) { line.erase(line.find_last_not_of(' ') + 1); }

/// The text up to its next line break, which is taken from it too.
std::string_view takeLine(std::string_view& text, bool& last) {
    std::size_t const end = text.find_first_of("\r\n");
    last = end == std::string_view::npos;
    std::string_view const line = text.substr(0, end);
    bool const twoBytes = text.substr(last ? text.size() : end).starts_with("\r\n");
    text.remove_prefix(last ? text.size() : end + (twoBytes ? 2 : 1));
    return line;
}

/// Breaks one line at blanks. Those where it is broken are dropped.
void wrap(std::string_view line, std::size_t width, std::vector<std::string>& lines) {
    std::string current;
    for (std::size_t position = 0; position < line.size();) {
        std::size_t const wordBegin = std::min(line.find_first_not_of(' ', position), line.size());
        std::size_t const wordEnd = std::min(line.find(' ', wordBegin), line.size());
        std::string_view const word = line.substr(wordBegin, wordEnd - wordBegin);
        bool const fits = displayWidth(current) + (wordEnd - position - word.size()) + displayWidth(word) <= width;
        if (fits || current.find_first_not_of(' ') == std::string::npos) {
            current += line.substr(position, wordEnd - position);
        } else if (!word.empty()) {
            trimEnd(current);
            lines.push_back(current);
            current = word;
        }
        position = wordEnd;
    }
    trimEnd(current);
    lines.push_back(current);
}

} // namespace

std::vector<std::string> linesOf(std::string_view text, std::size_t width) {
    std::vector<std::string> lines;
    for (bool last = false; !last;) {
        wrap(printable(takeLine(text, last)), width, lines);
    }
    return lines;
}

std::string withMarkers(LaidOutText const& text) {
    std::string result = text.text;
    for (std::size_t i = 0; i < text.markers.size(); ++i) {
        result += (i == 0 ? result.empty() ? "[" : " [" : ",") + text.markers[i];
    }
    return text.markers.empty() ? result : result + ']';
}

void appendAligned(std::string& out, std::string_view text, std::size_t width, Side side) {
    std::size_t const blanks = width - std::min(width, displayWidth(text));
    std::size_t const before = side == Side::Left ? 0 : side == Side::Right ? blanks : blanks / 2;
    out.append(before, ' ').append(text).append(blanks - before, ' ');
}

} // namespace crosstab
