#ifndef OMTREE_EXAMPLES_REPORT_PARTTEXT_H
#define OMTREE_EXAMPLES_REPORT_PARTTEXT_H

#include "omtree.h"

#include <list>
#include <map>
#include <string>

namespace report {

/// A part's title in UTF-8.
std::string titleOf(OmOutputPart const& part);

/// Reads texts in code pages, of one document. What reads a code page is made at its first text and kept, since making
/// it costs more than reading does.
class PartText {
public:
    /// A text in a code page, in UTF-8; as it is when the code page is unknown or the text is not well-formed in it.
    std::string utf8Of(std::string const& text, std::string const& codePage);

    /// The title of a part that converts it into a code page of its own when it is made, in UTF-8. A title that the
    /// code page could not hold was left in UTF-8; it is told from the others by being well-formed.
    std::string titleOf(OmOutputPart const& part, std::string const& codePage);

    /// A block's lines in UTF-8.
    std::list<std::string> linesOf(OmTextBlock const& block);

private:
    std::map<std::string, icuTracker> _trackers; ///< by code page
};

} // namespace report

#endif
