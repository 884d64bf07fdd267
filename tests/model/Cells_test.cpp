// Random scripts over the cell store: the library's table and a map from index vector to text get the same stores,
// deletions and new dimensions, and must agree on every answer, on the count, and on what the iterators visit.
#include "tests/support/CellScript.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

TEST(Cells, RandomScriptsAgreeWithTheModel) {
    omtest::RunScripts(2500, [](omtest::Dice& dice) { omtest::CellScript(dice).Run(); });
}
