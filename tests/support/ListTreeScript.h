#ifndef OMTREE_TESTS_SUPPORT_LISTTREESCRIPT_H
#define OMTREE_TESTS_SUPPORT_LISTTREESCRIPT_H

#include "backend/tables/ListTree.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/ForestModel.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace omtest {

namespace list_tree {

using Model = ForestModel<int>;
using Line = Model::Line;

constexpr std::size_t MostNodes = 40;
constexpr int Values = 3; // few, so that trees are often equal and orders are often decided late

/// A list tree whose searches can be called.
class Tree : public ListTree<int> {
public:
    using ListTree::ConstPosition;
    using ListTree::ListTree;
    using ListTree::Position;
    using ListTree::SearchBackward;
    using ListTree::SearchForward;
};

using Node = ListTree<int>::Node;

inline std::vector<Line> LinesOf(Tree const& tree) {
    std::vector<Line> lines;
    for (ListTreeData<int> const& record : tree.List()) {
        lines.emplace_back(record.value, record.level);
    }
    return lines;
}

/// By level before value; that the pairs hold them the other way round is why this is spelled out.
inline bool LineLess(Line const& a, Line const& b) {
    return std::pair(a.second, a.first) < std::pair(b.second, b.first);
}

/// A tree and its model, and the steps that change both.
struct Pair {
    Tree tree;
    Model model;

    Node At(std::vector<Path> const& paths, std::size_t number) {
        return {tree, std::next(tree.List().begin(), static_cast<std::ptrdiff_t>(std::min(number, paths.size())))};
    }

    /// A handle on the node at the path.
    Node At(Path const& path) {
        std::vector<Path> const paths = model.Paths();
        return At(paths, static_cast<std::size_t>(std::find(paths.begin(), paths.end(), path) - paths.begin()));
    }

    void CompareRecords() const { ASSERT_EQ(LinesOf(tree), model.Lines()); }

    void CompareRelations() {
        std::vector<Path> const paths = model.Paths();
        ASSERT_EQ(static_cast<std::size_t>(tree.Size()), paths.size());
        ASSERT_EQ(tree.Root(), At(paths, 0));
        for (std::size_t number = 0; number < paths.size(); ++number) {
            CompareNode(paths, number);
        }
    }

private:
    void CompareNode(std::vector<Path> const& paths, std::size_t number) {
        Path const& path = paths[number];
        Node const node = At(paths, number);
        ASSERT_EQ(node.Level(), LevelOf(path));
        Model::Tree const& expected = model.At(path);
        ASSERT_EQ(tree.IsLeaf(node), expected.children.empty());

        std::vector<Line> subtree;
        Model::CollectLines({expected}, node.Level(), subtree);
        ASSERT_EQ(tree.SearchForward(node.Position(), node.Level()), At(paths, number + subtree.size()).Position());
        Tree const& fixed = tree;
        ASSERT_EQ(fixed.SearchForward(Tree::ConstPosition(node.Position()), node.Level()),
                  Tree::ConstPosition(tree.SearchForward(node.Position(), node.Level())));

        if (path.size() > 1) {
            Path const parent(path.begin(), path.end() - 1);
            ASSERT_EQ(tree.SearchBackward(node.Position(), node.Level() - 1), At(parent).Position());
            Path previous = path;
            if (path.back() > 0) {
                --previous.back();
            } else {
                previous = parent;
            }
            ASSERT_EQ(tree.SearchBackward(node.Position(), node.Level()), At(previous).Position());
        }
    }
};

/// One script of random operations on two list trees and on two naive forests of nested vectors. Records and the order
/// of the trees are compared after every step, what the searches find after every fourth.
///
///     Dice dice(seed);
///     ListTreeScript(dice).Run();     // what disagrees is a failure of the test that runs
class ListTreeScript {
public:
    explicit ListTreeScript(Dice& dice) : _dice(dice) {}

    void Run() {
        int const steps = 60 + _dice.Int(0, 20);
        for (int step = 0; step < steps && !_dice.Spent() && !::testing::Test::HasFatalFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            Change(_pairs[_dice.Below(2)]);
            for (Pair& pair : _pairs) {
                ASSERT_NO_FATAL_FAILURE(pair.CompareRecords());
                if (step % 4 == 0) {
                    ASSERT_NO_FATAL_FAILURE(pair.CompareRelations());
                }
            }
            CompareTrees();
        }
    }

private:
    void Change(Pair& pair) {
        std::vector<Path> const paths = pair.model.Paths();
        if (paths.empty()) {
            int const value = AnyValue();
            pair.tree = Tree(value);
            pair.model.trees.assign(1, Model::Tree{value});
            return;
        }
        std::size_t const number = _dice.Below(paths.size());
        Path const& path = paths[number];
        Node node = pair.At(paths, number);
        std::size_t const choice = paths.size() >= MostNodes ? 6 : _dice.Below(16);
        switch (choice) {
        case 0:
            pair.tree.Erase(node);
            pair.model.Erase(path);
            break;
        case 1:
            pair.tree.Flatten(node);
            pair.model.Flatten(path);
            break;
        case 2: {
            Node end(pair.tree, pair.tree.List().end());
            pair.tree.Erase(end);
            pair.tree.Flatten(end);
            break;
        }
        case 3:
        case 4:
        case 5:
            Move(pair, Other(pair));
            break;
        case 6:
        case 7:
            Prune(pair, node, path);
            break;
        case 8:
            Assign(pair);
            break;
        case 9: {
            int const value = AnyValue();
            node.Value() = value;
            pair.model.At(path).value = value;
            break;
        }
        default: {
            int const value = AnyValue();
            Node const added = pair.tree.AppendChild(node, value);
            EXPECT_EQ(added.Level(), node.Level() + 1);
            EXPECT_EQ(added.Value(), value);
            pair.model.Append(path, value);
            break;
        }
        }
    }

    /// With the own level, or with one that is stale: a handle made before the node was appended to deeper ones.
    void Prune(Pair& pair, Node const& node, Path const& path) {
        int const level = _dice.Percent(70) ? node.Level() : _dice.Int(0, node.Level());
        pair.tree.ListTree<int>::Prune(Node(pair.tree, node.Position(), level));
        pair.model.Prune(path, level);
    }

    void Assign(Pair& pair) {
        if (_dice.Percent(30)) {
            Tree const& same = pair.tree;
            pair.tree = same;
        } else if (_dice.Percent(50)) {
            pair.tree = Other(pair).tree;
            pair.model = Other(pair).model;
        } else {
            Tree copy(Other(pair).tree);
            copy.List().swap(pair.tree.List());
            pair.model = Other(pair).model;
        }
    }

    /// Whole siblings of the other tree go before a node of the same level, or, at level 0, before the end.
    void Move(Pair& here, Pair& there) {
        std::vector<Path> const sources = there.model.Paths();
        std::vector<Path> targets = here.model.Paths();
        targets.push_back({here.model.trees.size()});
        if (sources.empty()) {
            return;
        }
        Path const source = _dice.Pick(sources);
        targets.erase(std::remove_if(targets.begin(), targets.end(),
                                     [&](Path const& path) { return path.size() != source.size(); }),
                      targets.end());
        if (targets.empty()) {
            return;
        }
        Path const target = _dice.Pick(targets);
        std::size_t const siblings = there.model.Siblings(source).size() - source.back();
        std::size_t const count = _dice.Below(siblings + 1);
        Node const begin = there.At(source);
        Node end = begin;
        for (std::size_t k = 0; k < count; ++k) {
            end = Node(there.tree, there.tree.SearchForward(end.Position(), begin.Level()));
        }
        AssertionCatcher const caught(AfterReport::Return);
        here.tree.Move(here.At(target), begin, end);
        EXPECT_TRUE(caught.Failures().empty());
        here.model.Move(target, there.model, source, count);
    }

    void CompareTrees() {
        Tree const& a = _pairs[0].tree;
        Tree const& b = _pairs[1].tree;
        std::vector<Line> const linesOfA = _pairs[0].model.Lines();
        std::vector<Line> const linesOfB = _pairs[1].model.Lines();
        bool const aIsLess =
            std::lexicographical_compare(linesOfA.begin(), linesOfA.end(), linesOfB.begin(), linesOfB.end(), LineLess);
        bool const bIsLess =
            std::lexicographical_compare(linesOfB.begin(), linesOfB.end(), linesOfA.begin(), linesOfA.end(), LineLess);
        ASSERT_EQ(a < b, aIsLess);
        ASSERT_EQ(b < a, bIsLess);
        ASSERT_EQ(a == b, _pairs[0].model == _pairs[1].model);
        ASSERT_EQ(a != b, aIsLess || bIsLess);
    }

    Pair& Other(Pair& pair) { return &pair == &_pairs[0] ? _pairs[1] : _pairs[0]; }
    int AnyValue() { return _dice.Int(0, Values - 1); }

    Dice& _dice;
    Pair _pairs[2];
};

} // namespace list_tree

using list_tree::ListTreeScript;

} // namespace omtest

#endif
