// Random scripts run on two list trees and on two naive forests of nested vectors. Records and the order of the trees
// are compared after every step, what the searches find after every fourth.
#include "tests/support/ListTreeScript.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

TEST(ListTreeModel, RandomScriptsAgreeWithNestedVectors) {
    omtest::RunScripts(2000, [](omtest::Dice& dice) { omtest::ListTreeScript(dice).Run(); });
}
