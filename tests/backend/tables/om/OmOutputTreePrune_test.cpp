// The order in which a pruned branch is destroyed, against the recursion that defines it, and at any depth.

#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmStringCell.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::Dice;

using Node = OmOutputTree::Node;
using Numbers = std::vector<int>;

/// A part that leaves its number behind.
class NumberedPart : public OmOutputPart {
public:
    NumberedPart(Numbers& destroyed, int number)
        : OmOutputPart(OmStringCell(std::string(), nullptr, false)), _destroyed(destroyed), _number(number) {}
    ~NumberedPart() override { _destroyed.push_back(_number); }
    NumberedPart(NumberedPart const&) = delete;
    NumberedPart& operator=(NumberedPart const&) = delete;
    void Accept(Visitor&) override {}

private:
    Numbers& _destroyed;
    int _number;
};

/// The recursion, word for word, on records whose values are numbers; a negative one stands for no part.
class Reference {
public:
    using Records = std::list<ListTreeData<int>>;
    using Position = Records::iterator;

    Records records;
    Numbers destroyed;

    void Prune(Position position, int level) {
        Position const end = Forward(position, level);
        Position child = std::next(position);
        if (child != end) {
            int const childLevel = child->level;
            while (child != end) {
                Position const next = Forward(child, childLevel);
                Prune(child, childLevel);
                child = next;
            }
        }
        if (position->value >= 0) {
            destroyed.push_back(position->value);
        }
        records.erase(position, end);
    }

private:
    Position Forward(Position position, int level) {
        if (position == records.end()) {
            return records.end();
        }
        for (++position; position != records.end() && position->level > level; ++position) {
        }
        return position;
    }
};

/// A document and its reference, grown alike.
struct Pair {
    Numbers destroyed;
    OmOutputTree tree;
    Reference reference;

    Pair() {
        delete tree.Root().Value();
        tree.List().clear();
    }

    void Add(int level, bool hasPart) {
        int const number = static_cast<int>(reference.records.size());
        tree.List().push_back({hasPart ? new NumberedPart(destroyed, number) : nullptr, level});
        reference.records.push_back({hasPart ? number : -1, level});
    }

    void Prune(std::ptrdiff_t place, int level) {
        Node node(tree, std::next(tree.List().begin(), place), level);
        tree.Prune(node);
        reference.Prune(std::next(reference.records.begin(), place), level);
    }

    std::string Levels() const {
        std::string text;
        for (OmOutputTree::Record const& record : tree.List()) {
            text += std::to_string(record.level) + " ";
        }
        return text;
    }

    void Compare() const {
        ASSERT_EQ(destroyed, reference.destroyed);
        ASSERT_EQ(static_cast<std::size_t>(tree.Size()), reference.records.size());
        auto expected = reference.records.begin();
        for (OmOutputTree::Record const& record : tree.List()) {
            ASSERT_EQ(record.level, expected->level);
            ASSERT_EQ(record.value != nullptr, expected->value >= 0);
            ++expected;
        }
    }
};

constexpr int Million = 1000000;

} // namespace

TEST(OmOutputTreePruneOrder, FreshHandlesFollowTheRecursion) {
    omtest::RunScripts(3000, [](Dice& dice) {
        Pair pair;
        pair.Add(0, true);
        int level = 0;
        for (int records = dice.Int(0, 24); records > 0; --records) {
            level = dice.Int(1, level + 1);
            pair.Add(level, dice.Percent(85));
        }
        while (pair.tree.Size() > 1) {
            SCOPED_TRACE(pair.Levels());
            int const place = dice.Int(1, pair.tree.Size() - 1);
            pair.Prune(place, std::next(pair.tree.List().begin(), place)->level);
            ASSERT_NO_FATAL_FAILURE(pair.Compare());
        }
        pair.Prune(0, 0);
        ASSERT_NO_FATAL_FAILURE(pair.Compare());
        ASSERT_EQ(pair.tree.Size(), 0);
    });
}

// A handle made before its record was lifted bounds more or less than the node's subtree, and then later siblings go as
// children, bounded by the level of the first.
TEST(OmOutputTreePruneOrder, StaleHandlesFollowTheRecursion) {
    omtest::RunScripts(6000, [](Dice& dice) {
        Pair pair;
        pair.Add(0, true);
        int level = 0;
        for (int records = dice.Int(1, 24); records > 0; --records) {
            level = dice.Int(1, level + 1);
            pair.Add(level, dice.Percent(85));
        }
        while (pair.tree.Size() > 0) {
            SCOPED_TRACE(pair.Levels());
            int const place = dice.Int(0, pair.tree.Size() - 1);
            pair.Prune(place, std::next(pair.tree.List().begin(), place)->level + dice.Int(-3, 2));
            ASSERT_NO_FATAL_FAILURE(pair.Compare());
        }
    });
}

// Records whose levels a program wrote as it liked.
TEST(OmOutputTreePruneOrder, AnyLevelsFollowTheRecursion) {
    omtest::RunScripts(6000, [](Dice& dice) {
        Pair pair;
        for (int records = dice.Int(1, 16); records > 0; --records) {
            pair.Add(dice.Int(-1, 5), dice.Percent(85));
        }
        while (pair.tree.Size() > 0) {
            SCOPED_TRACE(pair.Levels());
            pair.Prune(dice.Int(0, pair.tree.Size() - 1), dice.Int(-2, 5));
            ASSERT_NO_FATAL_FAILURE(pair.Compare());
        }
    });
}

TEST(OmOutputTreePruneOrder, LaterSiblingsOfAStaleHandleGoAsItsChildren) {
    Pair pair;
    for (int const level : {0, 1, 2, 3, 2, 1}) {
        pair.Add(level, true);
    }
    Node stale(pair.tree, std::next(pair.tree.List().begin(), 2), 1);
    pair.tree.Prune(stale);
    EXPECT_EQ(pair.Levels(), "0 1 1 ");
    EXPECT_EQ(pair.destroyed, (Numbers{3, 4, 2}));
}

// --- parts that take others with them

namespace {

/// A part that prunes another node when it goes.
class TakingPart : public NumberedPart {
public:
    TakingPart(Numbers& destroyed, int number, Node other) : NumberedPart(destroyed, number), _other(other) {}
    ~TakingPart() override { static_cast<OmOutputTree&>(*_other.Tree()).Prune(_other); }

private:
    Node _other;
};

} // namespace

// A prune that reads records in front of itself would read one that is gone.
TEST(OmOutputTreePruneOrder, APartMayPruneALaterSiblingsSubtree) {
    for (int place = 2; place < 20; ++place) {
        SCOPED_TRACE(place);
        Numbers destroyed;
        OmOutputTree tree;
        Node heading = tree.AppendChild(tree.Root(), nullptr);
        Node const first = tree.AppendChild(heading, nullptr);
        Numbers expected;
        for (int k = 1; k < 20; ++k) {
            Node const child = tree.AppendChild(heading, new NumberedPart(destroyed, k));
            if (k == place) {
                first.Value() = new TakingPart(destroyed, 0, child);
                tree.AppendChild(child, new NumberedPart(destroyed, 100));
                expected.insert(expected.begin(), {100, k, 0});
            } else {
                expected.push_back(k);
            }
        }
        tree.Prune(heading);
        ASSERT_EQ(destroyed, expected);
        ASSERT_EQ(tree.Size(), 1);
    }
}

TEST(OmOutputTreePruneOrder, RecordsBehindThePrunedBranchAreLeftAlone) {
    Numbers destroyed;
    OmOutputTree tree;
    Node heading = tree.AppendChild(tree.Root(), new NumberedPart(destroyed, 1));
    tree.AppendChild(heading, new NumberedPart(destroyed, 2));
    Node const behind = tree.AppendChild(tree.Root(), nullptr);
    Node const below = tree.AppendChild(behind, reinterpret_cast<OmOutputPart*>(std::uintptr_t{8})); // no part at all
    tree.Prune(heading);
    EXPECT_EQ(destroyed, (Numbers{2, 1}));
    EXPECT_EQ(tree.Size(), 3);
    below.Value() = nullptr;
}

// --- a million levels

namespace {

/// A chain below the root, every tenth record with a part.
Node Deepen(OmOutputTree& tree, Numbers& destroyed) {
    Node const first = tree.AppendChild(tree.Root(), nullptr);
    Node node = first;
    for (int k = 1; k <= Million; ++k) {
        node = tree.AppendChild(node, k % 10 == 0 ? new NumberedPart(destroyed, k) : nullptr);
    }
    return first;
}

/// Whether these are the numbers of a chain's parts, counted in the given direction.
bool IsCount(Numbers const& numbers, bool upwards) {
    int expected = upwards ? 10 : Million;
    for (int const number : numbers) {
        if (number != expected) {
            return false;
        }
        expected += upwards ? 10 : -10;
    }
    return numbers.size() == Million / 10;
}

} // namespace

// A recursion would end the stack, a search for each node's end the patience.
TEST(OmOutputTreeScale, AMillionLevelsArePrunedDeepestFirst) {
    Numbers destroyed;
    OmOutputTree tree;
    Node first = Deepen(tree, destroyed);
    tree.Prune(first);
    EXPECT_EQ(tree.Size(), 1);
    EXPECT_TRUE(IsCount(destroyed, false));
}

TEST(OmOutputTreeScale, AMillionLevelsAreDestroyedFromTheTop) {
    Numbers destroyed;
    {
        OmOutputTree tree;
        Deepen(tree, destroyed);
    }
    EXPECT_TRUE(IsCount(destroyed, true));
}

TEST(OmOutputTreeScale, AMillionChildrenArePrunedInTheirOrder) {
    Numbers destroyed;
    OmOutputTree tree;
    Node heading = tree.AppendChild(tree.Root(), nullptr);
    for (int k = 1; k <= Million; ++k) {
        tree.List().push_back({k % 10 == 0 ? new NumberedPart(destroyed, k) : nullptr, 2});
    }
    tree.Prune(heading);
    EXPECT_EQ(tree.Size(), 1);
    EXPECT_TRUE(IsCount(destroyed, true));
}

TEST(OmOutputTreeScale, AMillionLevelsAreErasedFromAbove) {
    Numbers destroyed;
    OmOutputTree tree;
    Node first = Deepen(tree, destroyed);
    tree.Erase(first);
    EXPECT_EQ(tree.Size(), Million + 1);
    EXPECT_EQ(std::prev(tree.List().end())->level, Million);
    EXPECT_TRUE(destroyed.empty());
}

TEST(OmOutputTreeScale, AMillionLevelsAreAmputatedFromATopLevelHeading) {
    Numbers destroyed;
    OmOutputTree tree;
    Node const first = Deepen(tree, destroyed);
    Amputate(first, tree.Root().Value()->Title(), "");
    EXPECT_EQ(tree.Size(), 3);
    EXPECT_TRUE(IsCount(destroyed, false));
}

TEST(OmOutputTreeScale, AMillionLevelsAreLiftedByAnAmputationBelow) {
    Numbers destroyed;
    OmOutputTree tree;
    Node const first = Deepen(tree, destroyed);
    Node const second(tree, std::next(first.Position()));
    second.Value() = new NumberedPart(destroyed, 7);
    Node const node = Amputate(second, nullptr, "");
    EXPECT_EQ(tree.Size(), Million + 2);
    EXPECT_EQ(destroyed, Numbers{7});
    EXPECT_EQ(node.Level(), 2);
    EXPECT_EQ(node.Position()->level, 2);
    EXPECT_NE(dynamic_cast<OmTextBlock*>(std::prev(tree.List().end())->value), nullptr);
    EXPECT_EQ(std::prev(tree.List().end(), 2)->level, Million);
}
