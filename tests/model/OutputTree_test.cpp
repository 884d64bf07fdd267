// Random scripts run on an output tree and on a naive forest of nested vectors. After every step the records are
// compared, and which titles were destroyed since the step before, in their order; at the end the destructor's.
#include "tests/support/OutputTreeScript.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

TEST(OutputTreeModel, RandomScriptsAgreeWithNestedVectorsAndDestroyInOrder) {
    omtest::RunScripts(2000, [](omtest::Dice& dice) { omtest::OutputTreeScript(dice).Run(); });
}
