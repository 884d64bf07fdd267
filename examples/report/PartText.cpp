#include "examples/report/PartText.h"

#include "omtree.h"

namespace report {

std::string utf8Of(std::string const& text, std::string const& codePage) {
    std::string converted;
    return icuTracker({false, codePage}).ToU8(text, converted) ? converted : text;
}

std::string titleOf(OmOutputPart const& part) { return part.Title()->AsU8String(); }

std::list<std::string> linesOf(OmTextBlock const& block) {
    std::list<std::string> lines;
    for (std::string const& line : block.TextList()) {
        lines.push_back(utf8Of(line, block.LocaleCodePage()));
    }
    return lines;
}

} // namespace report
