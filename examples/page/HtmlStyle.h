#ifndef OMTREE_EXAMPLES_PAGE_HTMLSTYLE_H
#define OMTREE_EXAMPLES_PAGE_HTMLSTYLE_H

namespace page {

/// Style sheet and script of every page. Neither holds '<' or '&', so both stand in the document as they are.
extern char const* const StyleSheet;
extern char const* const Script;

} // namespace page

#endif
