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

/// A block's lines in UTF-8.
std::list<std::string> linesOf(OmTextBlock const& block);

} // namespace report

#endif
