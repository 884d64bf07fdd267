// Random scripts on a vector tree and on nested standard vectors; every answer is compared after every step.
// Values repeat often, and a mark that equality does not see tells equal siblings apart.

#include "backend/tables/om/VectorTree.h"
#include "omcell/OmMemoryRegion.h"
#include "tests/support/InstanceTracker.h"
#include "tests/support/SeededScripts.h"
#include "tests/support/TreeText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::Dice;
using omtest::InstanceBooks;
using omtest::Tracked;
using Tree = OmVectorTree<Tracked>;
using Node = Tree::Node;
using ConstNode = Tree::ConstNode;
using TreeNode = Tree::TreeNode;
using Path = std::vector<std::size_t>;

constexpr std::uint64_t Scripts = 2000;
constexpr int Values = 4;
constexpr std::size_t MostNodes = 60;

struct Model {
    int value = 0;
    int mark = 0;
    std::vector<Model> children{};

    std::size_t Nodes() const {
        std::size_t nodes = 1;
        for (Model const& child : children) {
            nodes += child.Nodes();
        }
        return nodes;
    }

    Model& At(Path const& path) {
        Model* node = this;
        for (std::size_t const step : path) {
            node = &node->children.at(step);
        }
        return *node;
    }

    std::size_t FirstEqual(int wanted) const {
        auto const equal = [wanted](Model const& child) { return child.value == wanted; };
        return static_cast<std::size_t>(std::find_if(children.begin(), children.end(), equal) - children.begin());
    }

    void Insert(std::size_t position, Model child) {
        children.insert(children.begin() + static_cast<std::ptrdiff_t>(position), std::move(child));
    }
};

void CollectPaths(Model const& node, Path& here, std::vector<Path>& paths) {
    paths.push_back(here);
    for (std::size_t k = 0; k < node.children.size(); ++k) {
        here.push_back(k);
        CollectPaths(node.children[k], here, paths);
        here.pop_back();
    }
}

std::vector<Path> PathsOf(Model const& root) {
    std::vector<Path> paths;
    Path here;
    CollectPaths(root, here, paths);
    return paths;
}

bool Same(TreeNode const& node, Model const& model) {
    if (node.value.value != model.value || node.value.mark != model.mark ||
        node.children.size() != model.children.size()) {
        return false;
    }
    for (std::size_t k = 0; k < model.children.size(); ++k) {
        if (!Same(node.children[k], model.children[k])) {
            return false;
        }
    }
    return true;
}

/// One script: a tree, its model, and the steps that change both.
class Script {
public:
    explicit Script(Dice& dice) : _dice(dice) {}

    void Run() {
        int const steps = 60 + _dice.Int(0, 30);
        for (int step = 0; step < steps && !::testing::Test::HasFatalFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            Change();
            Compare();
            if (step % 8 == 0) {
                CompareCounterparts();
            }
        }
    }

private:
    void Change() {
        if (_model.Nodes() >= MostNodes) {
            Erase();
            return;
        }
        switch (_dice.Below(8)) {
        case 0:
        case 1:
        case 2:
            return Add();
        case 3:
            return InsertBefore();
        case 4:
            return InsertAt();
        case 5:
            return CopyTo();
        case 6:
            return Erase();
        default:
            return AskPosition();
        }
    }

    void Add() {
        Path const path = AnyPath();
        Model const fresh = Fresh();
        Node const added = _tree.AddChild(At(path), Tracked(_books, fresh.value, fresh.mark));
        _model.At(path).children.push_back(fresh);
        EXPECT_EQ(added, At(path).Child(_model.At(path).children.size() - 1));
        EXPECT_EQ(added.Depth(), path.size() + 1);
    }

    void InsertBefore() {
        Path const path = AnyPath();
        Model const fresh = Fresh();
        Model& parent = _model.At(path);
        Tracked const reference(_books, _dice.Int(0, Values), 0);
        bool const given = _dice.Percent(80);
        Tree::InsertBefore(At(path), Loose(fresh, path), given ? &reference : nullptr);
        parent.Insert(given ? parent.FirstEqual(reference.value) : parent.children.size(), fresh);
        Repair(path);
    }

    void InsertAt() {
        Path const path = AnyPath();
        Model const fresh = Fresh();
        std::size_t const position = _dice.Below(_model.At(path).children.size() + 1);
        Tree::InsertAt(At(path), Loose(fresh, path), position);
        _model.At(path).Insert(position, fresh);
        Repair(path);
    }

    // The source may be the parent, one above it or one below.
    void CopyTo() {
        Path const source = AnyPath();
        Path const path = AnyPath();
        Model const copied = _model.At(source);
        if (copied.Nodes() > MostNodes / 2) {
            return;
        }
        Tree::Subtree copy = Tree::CopySubtree(At(source), At(path).Ptr(), &_region);
        ASSERT_TRUE(Same(*copy.Ptr(), copied));
        ASSERT_EQ(copy.Ptr()->parent, At(path).Ptr());
        ASSERT_TRUE(omtest::ParentsHold(copy.Ptr()));
        std::size_t const position = _dice.Below(_model.At(path).children.size() + 1);
        Tree::InsertAt(At(path), std::move(copy), position);
        _model.At(path).Insert(position, copied);
        Repair(path);
    }

    void Erase() {
        Path const path = AnyPath();
        if (path.empty()) {
            return;
        }
        Path const above(path.begin(), path.end() - 1);
        Tree::EraseChild(At(above), path.back());
        std::vector<Model>& siblings = _model.At(above).children;
        siblings.erase(siblings.begin() + static_cast<std::ptrdiff_t>(path.back()));
        Repair(above);
    }

    void AskPosition() {
        Path const path = AnyPath();
        Model const& parent = _model.At(path);
        for (int value = 0; value <= Values; ++value) {
            std::size_t const expected = parent.FirstEqual(value);
            EXPECT_EQ(Tree::ChildPosition(At(path), Tracked(_books, value)),
                      expected == parent.children.size() ? Tree::NoPosition : expected);
        }
    }

    void Compare() {
        ASSERT_TRUE(Same(*_tree.Root().Ptr(), _model)) << omtest::TextBelow(_tree.Root());
        ASSERT_TRUE(omtest::ParentsHold(_tree.Root().Ptr()));
        std::vector<Path> const paths = PathsOf(_model);
        std::size_t visited = 0;
        Tree::WalkPreOrder(_tree.Root(), [&](ConstNode const& node) {
            Model const& expected = _model.At(paths.at(visited));
            EXPECT_EQ(node.Value().mark, expected.mark);
            EXPECT_EQ(node.Depth(), paths[visited].size());
            ++visited;
            return true;
        });
        ASSERT_EQ(visited, paths.size());
        ASSERT_EQ(_books.Alive(), paths.size());
    }

    void CompareCounterparts() {
        Tree::Subtree const copy = Tree::CopySubtree(_tree.Root(), nullptr, nullptr);
        Node const other(copy.Ptr(), 0);
        for (Path const& path : PathsOf(_model)) {
            Node const found = Tree::Counterpart(At(path), other);
            EXPECT_EQ(found, Follow(other, path));
            EXPECT_EQ(found.Depth(), path.size());
        }
    }

    /// Ends every change but AddChild; sometimes from the root, which must do as well.
    void Repair(Path const& path) { Tree::Reparent(_dice.Percent(20) ? _tree.Root() : At(path), true); }

    static Node Follow(Node node, Path const& path) {
        for (std::size_t const step : path) {
            node = node.Child(step);
        }
        return node;
    }
    Node At(Path const& path) { return Follow(_tree.Root(), path); }

    Tree::Subtree Loose(Model const& fresh, Path const& parent) {
        return Tree::Subtree(&_region, At(parent).Ptr(), _books, fresh.value, fresh.mark);
    }

    Path AnyPath() { return _dice.Pick(PathsOf(_model)); }
    Model Fresh() { return Model{_dice.Int(0, Values - 1), ++_lastMark}; }

    Dice& _dice;
    InstanceBooks _books;
    OmMemoryRegion _region{false};
    Tree _tree{&_region, _books, 0};
    Model _model;
    int _lastMark = 0;
};

} // namespace

TEST(VectorTreeModel, RandomScriptsAgreeWithNestedVectors) {
    omtest::RunScripts(Scripts, [](Dice& dice) { Script(dice).Run(); });
}
