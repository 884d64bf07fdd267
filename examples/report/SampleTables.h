#ifndef OMTREE_EXAMPLES_REPORT_SAMPLETABLES_H
#define OMTREE_EXAMPLES_REPORT_SAMPLETABLES_H

#include <memory>

class OmPivotTable;

namespace report {

/// What the procedure was asked to do, as a table of two columns.
std::unique_ptr<OmPivotTable> notesTable();

/// Survivors by class, with a layer for each sex, a group of classes, counts and percentages, a missing value and
/// footnotes with markers.
std::unique_ptr<OmPivotTable> survivalTable();

/// Something that the procedure wants to be known.
std::unique_ptr<OmPivotTable> warningsTable();

} // namespace report

#endif
