// Every script of four operations on a parent that is wide enough for a hash over its labels.
#include "tests/support/LabelIndexWorld.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using omtest::LabelIndexWorld;
using Kind = LabelIndexWorld::Kind;

void Check(LabelIndexWorld::Answers const& answers) { EXPECT_EQ(answers.library, answers.steps); }

struct Operation {
    char const* name;
    std::function<void(LabelIndexWorld&)> run;
};

std::vector<Operation> const& Operations() {
    static std::vector<Operation> const operations{
        {"Child e", [](LabelIndexWorld& world) { Check(world.FindOrCreate("e", false)); }},
        {"Child zz", [](LabelIndexWorld& world) { Check(world.FindOrCreate("zz", false)); }},
        {"Child a", [](LabelIndexWorld& world) { Check(world.FindOrCreate("a", false)); }},
        {"foreign Child b", [](LabelIndexWorld& world) { Check(world.FindOrCreate("b", false, Kind::Foreign)); }},
        {"AddNewChild a", [](LabelIndexWorld& world) { world.Append("a", false); }},
        {"AddNewChild zzz", [](LabelIndexWorld& world) { world.Append("zzz", false); }},
        {"Delete first", [](LabelIndexWorld& world) { world.Delete(0); }},
        {"Delete last", [](LabelIndexWorld& world) { world.Delete(world.Size() - 1); }},
        {"Text", [](LabelIndexWorld& world) { world.Relabel(1, "x"); }},
        {"SetU8String", [](LabelIndexWorld& world) { world.SetU8(2, "a long label, really"); }},
        {"IsGroup", [](LabelIndexWorld& world) { world.Regroup(3); }},
        {"assignment", [](LabelIndexWorld& world) { world.Assign(5 % world.Size(), 6 % world.Size()); }},
        {"edit elsewhere", [](LabelIndexWorld& world) { world.EditElsewhere(); }},
        {"carry", [](LabelIndexWorld& world) { world.Carry(4, 0); }},
    };
    return operations;
}

/// Nine children, not in the order of their labels, and as many questions as it takes to have a hash made.
void Grow(LabelIndexWorld& world) {
    for (char const* const label : {"k", "c", "s", "g", "o", "b", "q", "i", "m"}) {
        Check(world.FindOrCreate(label, false));
    }
    for (int k = 0; k < 4; ++k) {
        Check(world.FindOrCreate("g", false));
    }
}

void CheckAll(LabelIndexWorld& world) {
    EXPECT_EQ(world.Entries(), world.EntriesByTheSteps());
    for (char const* const label :
         {"a", "b", "c", "e", "g", "i", "m", "q", "s", "x", "zz", "zzz", "a long label, really"}) {
        Check(world.Find(label, false));
    }
    Check(world.Find("g", true));
    Check(world.FindOrCreate("d", false));
    EXPECT_EQ(world.Entries(), world.EntriesByTheSteps());
    EXPECT_EQ(world.Children(), world.ChildrenByTheSteps());
}

TEST(LabelIndexExhaustive, EveryScriptOfFourOperationsAgreesWithTheBisection) {
    std::vector<Operation> const& operations = Operations();
    std::size_t const count = operations.size();
    for (std::size_t script = 0; script < count * count * count * count; ++script) {
        LabelIndexWorld world;
        Grow(world);
        std::string said;
        for (std::size_t rest = script, k = 0; k < 4; ++k, rest /= count) {
            said += std::string(operations[rest % count].name) + "; ";
            operations[rest % count].run(world);
        }
        CheckAll(world);
        ASSERT_FALSE(HasFailure()) << said;
    }
}

} // namespace
