#ifndef OMTREE_EXAMPLES_REPORT_PARTTEXT_H
#define OMTREE_EXAMPLES_REPORT_PARTTEXT_H

#include <list>
#include <string>

class OmOutputPart;
class OmTextBlock;

namespace report {

/// A text in a code page, in UTF-8; as it is when the code page is unknown or the text is not well-formed in it.
std::string utf8Of(std::string const& text, std::string const& codePage);

/// A part's title in UTF-8.
std::string titleOf(OmOutputPart const& part);

/// The title of a part that converts it into a code page of its own when it is made, in UTF-8. A title that the code
/// page could not hold was left in UTF-8; it is told from the others by being well-formed.
std::string titleOf(OmOutputPart const& part, std::string const& codePage);

/// A block's lines in UTF-8.
std::list<std::string> linesOf(OmTextBlock const& block);

} // namespace report

#endif
