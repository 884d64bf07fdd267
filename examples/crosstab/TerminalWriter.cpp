#include "examples/crosstab/TerminalWriter.h"

#include "examples/crosstab/TerminalGrid.h"
#include "examples/crosstab/TerminalText.h"
#include "examples/crosstab/Utf8.h"

#include <cstddef>
#include <limits>

namespace crosstab {

namespace {

void appendLines(std::string& out, std::string const& text) {
    for (std::string const& line : linesOf(text, std::numeric_limits<std::size_t>::max())) {
        out += line + '\n';
    }
}

} // namespace

std::string terminalText(LaidOutTable const& table) {
    std::string out;
    appendLines(out, withMarkers(table.title));
    for (LaidOutLayer const& layer : table.layers) {
        out += '\n';
        for (LaidOutText const& label : layer.labels) {
            appendLines(out, printable(withMarkers(label)));
        }
        TerminalGrid(layer).draw(out);
    }
    if (!table.caption.empty() || !table.footnotes.empty()) {
        out += '\n';
    }
    if (!table.caption.empty()) {
        appendLines(out, withMarkers(table.caption));
    }
    for (LaidOutFootnote const& footnote : table.footnotes) {
        appendLines(out, '[' + footnote.marker + "] " + footnote.text);
    }
    return out;
}

} // namespace crosstab
