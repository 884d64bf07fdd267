#ifndef OMTREE_EXAMPLES_REPORT_WRITERS_H
#define OMTREE_EXAMPLES_REPORT_WRITERS_H

#include <string>

class OmOutputTree;

namespace report {

/// The document as an outline for a terminal, tables drawn, in UTF-8.
std::string terminalOutline(OmOutputTree const& document);

/// The document as one self-contained HTML page.
std::string htmlPage(OmOutputTree const& document);

} // namespace report

#endif
