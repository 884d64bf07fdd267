// Random scripts over category trees: the library's dimension and the nested-vector model get the same operations, and
// must agree on every answer, on the tree after every step, and on the child indexes that the dump shows.
#include "tests/support/CategoryTreeScript.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

TEST(CategoryTrees, RandomScriptsAgreeWithTheModel) {
    omtest::RunScripts(2000, [](omtest::Dice& dice) { omtest::CategoryTreeScript(dice).Run(); });
}
