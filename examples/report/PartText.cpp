#include "examples/report/PartText.h"

#include "examples/crosstab/Utf8.h"

#include <algorithm>
#include <utility>

namespace report {

std::string titleOf(OmOutputPart const& part) { return part.Title()->AsU8String(); }

std::string PartText::utf8Of(std::string const& text, std::string const& codePage) {
    icuTracker const& tracker = _trackers.try_emplace(codePage, std::pair(false, codePage)).first->second;
    std::string converted;
    return tracker.ToU8(text, converted) ? converted : text;
}

std::string PartText::titleOf(OmOutputPart const& part, std::string const& codePage) {
    std::string const title = report::titleOf(part);
    // Seven-bit texts are well-formed as well, and shift sequences are made of nothing else.
    bool const isSevenBit = std::all_of(title.begin(), title.end(), [](char c) { return (c & 0x80) == 0; });
    return !isSevenBit && crosstab::isUtf8(title) ? title : utf8Of(title, codePage);
}

std::list<std::string> PartText::linesOf(OmTextBlock const& block) {
    std::list<std::string> lines;
    for (std::string const& line : block.TextList()) {
        lines.push_back(utf8Of(line, block.LocaleCodePage()));
    }
    return lines;
}

} // namespace report
