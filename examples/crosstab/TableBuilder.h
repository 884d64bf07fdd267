#ifndef OMTREE_EXAMPLES_CROSSTAB_TABLEBUILDER_H
#define OMTREE_EXAMPLES_CROSSTAB_TABLEBUILDER_H

#include "examples/crosstab/Options.h"

#include <memory>

class OmPivotTable;

namespace crosstab {

class Tally;

/// Makes the pivot table of a tally: one dimension for each of its columns, numbered alike, whose categories and groups
/// stand in the order of their first appearance; a number in every cell that some record fell into; and the title,
/// caption, corner text and footnotes of the options.
///
/// When no column of the file makes the table's columns, one more dimension does: its only category says what the
/// numbers are, and its name is hidden.
///
/// Throws Failure when the table has more combinations of categories than positions can be numbered, or more cells
/// than tables hold.
std::unique_ptr<OmPivotTable> buildTable(Tally const& tally, Options const& options);

} // namespace crosstab

#endif
