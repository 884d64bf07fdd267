// Random tables laid out by the library's display headings and by a brute-force model: every public member, for every
// layer, column and row of small tables and a random choice of them in larger ones, positions out of range included.
#include "tests/support/HeadingScript.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

TEST(Headings, RandomTablesAgreeWithTheModel) {
    omtest::RunScripts(2500, [](omtest::Dice& dice) { omtest::HeadingScript(dice).Run(); });
}
