#ifndef OMTREE_EXAMPLES_PAGE_HTMLTEXT_H
#define OMTREE_EXAMPLES_PAGE_HTMLTEXT_H

#include <string>
#include <string_view>

namespace page {

/// The text as a document may hold it: line breaks of every system become line feeds, tabs stay, ill-formed bytes,
/// other control characters and code points that are none become U+FFFD. Escaping is the serializer's affair.
std::string documentText(std::string_view text);

/// Bytes as base64, for a data address.
std::string base64(std::string_view bytes);

} // namespace page

#endif
