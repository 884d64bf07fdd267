#ifndef OMTREE_EXAMPLES_REPORT_SAMPLEDOCUMENT_H
#define OMTREE_EXAMPLES_REPORT_SAMPLEDOCUMENT_H

#include <memory>

class OmOutputTree;

namespace report {

/// A whole output document about the passengers and crew of the Titanic, with every kind of item in it.
std::unique_ptr<OmOutputTree> sampleDocument();

} // namespace report

#endif
