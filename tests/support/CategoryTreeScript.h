#ifndef OMTREE_TESTS_SUPPORT_CATEGORYTREESCRIPT_H
#define OMTREE_TESTS_SUPPORT_CATEGORYTREESCRIPT_H

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmStringCell.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/SeededScripts.h"
#include "tests/support/TreeModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace omtest {

namespace category_tree {

using Path = TreeModel::Path;
using Node = OmDimension::Node;
using ConstNode = OmDimension::ConstNode;

inline OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

inline Node At(OmDimension& dimension, Path const& path) {
    Node node = dimension.Root();
    for (std::size_t const step : path) {
        node = node.Child(step);
    }
    return node;
}

inline std::string Show(Path const& path) {
    std::string text = "/";
    for (std::size_t const step : path) {
        text += std::to_string(step) + "/";
    }
    return text;
}

inline std::string Dump(OmDimension const& dimension) {
    CapturedOutput const output;
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [](ConstNode const& node) {
        node.Value().Print(node.Depth());
        return true;
    });
    return output.Text();
}

/// Whether a value of the library is what the model says; child indexes are left to the dump.
inline bool Same(OmDimensionNode const& value, TreeModel::Node const& model) {
    return value.Text()->AsString() == model.label && value.Subscript() == model.subscript &&
           value.IsGroup() == model.isGroup && value.Hide() == model.hide && value.HideLabels() == model.hideLabels &&
           static_cast<int>(value.Sort()) == model.sort;
}

/// The first path at which the trees differ, or nothing. Parent pointers are compared where they are promised.
inline std::optional<std::string> Difference(ConstNode const& node, TreeModel::Node const& model, Path const& path) {
    if (!Same(node.Value(), model) || node.ChildCount() != model.children.size() || node.Depth() != path.size()) {
        return Show(path);
    }
    for (std::size_t k = 0; k < model.children.size(); ++k) {
        ConstNode const child = node.Child(k);
        Path below = path;
        below.push_back(k);
        if (model.children[k].parentKnown && child.Parent() != node) {
            return Show(below) + " has a wrong parent";
        }
        if (std::optional<std::string> const found = Difference(child, model.children[k], below)) {
            return found;
        }
    }
    return std::nullopt;
}

/// One script of random operations on a category tree: the library's dimension and the nested-vector model get the same
/// ones, and must agree on every answer, on the tree after every step, and on the child indexes that the dump shows.
///
///     Dice dice(seed);
///     CategoryTreeScript(dice).Run();     // what disagrees is a failure of the test that runs
class CategoryTreeScript {
public:
    explicit CategoryTreeScript(Dice& dice) : _dice(dice), _dimension(_table.AddDimension(Text("root"))) {}

    void Run() {
        int const operations = _dice.Int(60, 80);
        for (int k = 0; k < operations && !_dice.Spent(); ++k) {
            _paths = _model.Paths();
            Step();
            Compare(k % 7 == 0 || k + 1 == operations);
            if (::testing::Test::HasFailure()) {
                FAIL() << "operation " << k << ": " << _operation << "\nbefore it:\n" << _before;
            }
        }
        CompareCopy();
    }

private:
    using Operation = void (CategoryTreeScript::*)();

    void Step() {
        static std::vector<Operation> const growing{
            &CategoryTreeScript::FindOrCreate,         &CategoryTreeScript::FindOrCreate,
            &CategoryTreeScript::FindOrCreateFromNode, &CategoryTreeScript::AddNewChild,
            &CategoryTreeScript::AddNewChild,          &CategoryTreeScript::AddNewChild,
            &CategoryTreeScript::InsertChild,          &CategoryTreeScript::InsertCategory};
        static std::vector<Operation> const shaping{
            &CategoryTreeScript::Find,           &CategoryTreeScript::Find,         &CategoryTreeScript::SetFlags,
            &CategoryTreeScript::SetFlags,       &CategoryTreeScript::Rename,       &CategoryTreeScript::Delete,
            &CategoryTreeScript::Dissolve,       &CategoryTreeScript::Dissolve,     &CategoryTreeScript::MoveUp,
            &CategoryTreeScript::MoveBefore,     &CategoryTreeScript::MoveBefore,   &CategoryTreeScript::Swap,
            &CategoryTreeScript::Swap,           &CategoryTreeScript::SwapSiblings, &CategoryTreeScript::InsertChild,
            &CategoryTreeScript::InsertSiblings, &CategoryTreeScript::Repair};
        _before = _model.Dump();
        bool const small = _paths.size() < 8;
        bool const large = _paths.size() > 40;
        if (large) {
            Delete();
        } else {
            (this->*_dice.Pick(_dice.Percent(small ? 80 : 40) ? growing : shaping))();
        }
    }

    // --- random material: few labels and subscripts, so that equal siblings are common -------------------------------

    std::string Label() {
        static std::vector<std::string> const labels{"", "a", "ab", "b", "b\xC3\xA9", "c"};
        return _dice.Pick(labels);
    }
    unsigned long long Subscript() {
        static std::vector<unsigned long long> const rare{TreeModel::AllOnes, TreeModel::Dissolved, 0x1'0000'0001ULL,
                                                          0x8000'0000ULL, 49};
        return _dice.Percent(3) ? _dice.Pick(rare) : _dice.Below(3);
    }
    Path AnyNode() { return _dice.Pick(_paths); }
    Path AnyGroup() {
        std::vector<Path> groups;
        for (Path const& path : _paths) {
            if (_model.At(path).isGroup) {
                groups.push_back(path);
            }
        }
        if (groups.empty() || _dice.Percent(5)) {
            return AnyNode();
        }
        // Often the deepest, without which trees stay flat.
        auto const isLess = [](Path const& a, Path const& b) { return a.size() < b.size(); };
        return _dice.Percent(20) ? *std::max_element(groups.begin(), groups.end(), isLess) : _dice.Pick(groups);
    }
    Path Sibling(Path path) {
        if (!path.empty()) {
            path.back() = _dice.Below(_model.At(TreeModel::Parent(path)).children.size());
        }
        return path;
    }
    Node Handle(Path const& path) { return At(_dimension, path); }
    void Say(std::string operation) {
        _operation = std::move(operation);
        Trace(_operation);
    }

    // --- operations --------------------------------------------------------------------------------------------------

    void FindOrCreate() {
        Path const parent = AnyGroup();
        std::string const label = Label();
        TreeModel::Node value{label, Subscript(), _dice.Percent(40)};
        bool const plain = _dice.Percent(60);
        if (!plain) {
            value.sort = _dice.Int(0, 2);
            value.hide = _dice.Percent(30);
            value.hideLabels = _dice.Percent(30);
        }
        Say("Child " + Show(parent) + " " + label);
        std::optional<Path> const expected = _model.Child(parent, value);
        ExpectChild(parent, expected, [&](Node const& handle) {
            if (plain) {
                return _dimension.Child(handle, Text(label), value.subscript, value.isGroup);
            }
            OmDimensionNode probe(Text(label), value.subscript, value.isGroup, nullptr);
            probe.Sort(static_cast<OmSort::Order>(value.sort));
            probe.Hide(value.hide);
            probe.HideLabels(value.hideLabels);
            return _dimension.Child(handle, probe);
        });
    }

    /// The value handed in is one of the tree's own, child index and all.
    void FindOrCreateFromNode() {
        Path const parent = AnyGroup();
        Path const source = AnyNode();
        Say("Child " + Show(parent) + " from " + Show(source));
        std::optional<Path> const expected = _model.Child(parent, _model.At(source));
        ExpectChild(parent, expected,
                    [&](Node const& handle) { return _dimension.Child(handle, Handle(source).Value()); });
    }

    template <typename Call>
    void ExpectChild(Path const& parent, std::optional<Path> const& expected, Call&& call) {
        Node const handle = Handle(parent);
        if (expected) {
            Node const made = call(handle);
            EXPECT_TRUE(made == Handle(*expected));
            EXPECT_EQ(made.Depth(), expected->size());
            return;
        }
        try {
            call(handle);
            ADD_FAILURE() << "the parent is no group";
        } catch (OMSException const& exception) {
            EXPECT_EQ(exception.Message(), "OmDimension::Child -- parent is not group");
            EXPECT_EQ(exception.Value1(), 0.0);
            EXPECT_EQ(exception.Value2(), 0.0);
        }
    }

    void AddNewChild() {
        Path const parent = _dice.Percent(10) ? AnyNode() : AnyGroup();
        std::string const label = Label();
        unsigned long long const subscript = Subscript();
        bool const isGroup = _dice.Percent(40);
        Say("AddNewChild " + Show(parent) + " " + label);
        Path const expected = _model.AddNewChild(parent, label, subscript, isGroup);
        Node const made = _dimension.AddNewChild(Handle(parent), Text(label), subscript, isGroup);
        EXPECT_TRUE(made == Handle(expected));
        EXPECT_EQ(made.Depth(), expected.size());
    }

    void Find() {
        Path const parent = AnyGroup();
        std::string const label = Label();
        bool const isGroup = _dice.Percent(40);
        Say("FindChild " + Show(parent) + " " + label);
        EXPECT_EQ(OmDimension::FindChild(Handle(parent), Text(label), isGroup),
                  _model.FindChild(parent, label, isGroup));
    }

    void SetFlags() {
        Path const path = AnyNode();
        Say("flags of " + Show(path));
        TreeModel::Node& model = _model.At(path);
        OmDimensionNode& value = Handle(path).Value();
        model.hide = _dice.Percent(50);
        model.hideLabels = _dice.Percent(50);
        model.sort = _dice.Int(0, 2);
        model.isGroup = _dice.Percent(5) ? !model.isGroup : model.isGroup;
        model.subscript = _dice.Percent(20) ? Subscript() : model.subscript;
        value.Hide(model.hide);
        value.HideLabels(model.hideLabels);
        value.Sort(static_cast<OmSort::Order>(model.sort));
        value.IsGroup(model.isGroup);
        value.Subscript(model.subscript);
    }

    /// Takes the child index of the parent out of step with the labels.
    void Rename() {
        Path const path = AnyNode();
        Say("Text of " + Show(path));
        _model.At(path).label = Label();
        Handle(path).Value().Text(Text(_model.At(path).label));
    }

    void Delete() {
        Path const path = AnyNode();
        if (path.empty()) {
            return;
        }
        Say("Delete " + Show(path));
        _model.Delete(path);
        Node node = Handle(path);
        _dimension.Delete(node);
    }

    void Dissolve() {
        Path const path = AnyNode();
        Say("removeChild " + Show(path));
        _model.RemoveChild(path);
        Node node = Handle(path);
        _dimension.removeChild(node);
    }

    void MoveUp() {
        Path const path = AnyNode();
        bool const swap = _dice.Percent(50);
        Say("moveChild " + Show(path));
        _model.MoveChild(path, std::nullopt, swap);
        Node node = Handle(path);
        _dimension.moveChild(node, nullptr, swap);
    }

    void MoveBefore() { Move(AnyNode(), AnyNode(), false); }
    void Swap() { Move(AnyNode(), AnyNode(), true); }
    void SwapSiblings() {
        Path const path = AnyNode();
        Move(path, Sibling(path), true);
    }
    void Move(Path const& path, Path const& other, bool swap) {
        Say("moveChild " + Show(path) + " " + Show(other) + (swap ? " swap" : ""));
        _model.MoveChild(path, other, swap);
        Node node = Handle(path);
        Node target = Handle(other);
        _dimension.moveChild(node, &target, swap);
    }

    void InsertChild() {
        std::vector<Path> listed;
        for (int k = _dice.Int(0, 3); k > 0; --k) {
            listed.push_back(AnyNode());
        }
        Insert(listed);
    }
    void InsertSiblings() {
        std::vector<Path> listed{AnyNode()};
        for (int k = _dice.Int(0, 3); k > 0; --k) {
            listed.push_back(Sibling(listed.front()));
        }
        Insert(listed);
    }
    void Insert(std::vector<Path> const& listed) {
        std::string const label = Label();
        std::string operation = "insertChild";
        std::vector<Node> handles;
        for (Path const& path : listed) {
            operation.append(" ").append(Show(path));
            handles.push_back(Handle(path));
        }
        std::vector<Node*> nodes;
        for (Node& handle : handles) {
            nodes.push_back(&handle);
        }
        Say(operation);
        _model.InsertChild(label, listed);
        _dimension.insertChild(Text(label), nodes);
    }

    void InsertCategory() {
        Path const reference = AnyNode();
        Path const parent = _dice.Percent(60) && !reference.empty() ? TreeModel::Parent(reference) : AnyNode();
        bool const before = _dice.Percent(50);
        std::string const label = Label();
        Say("insertCategory " + Show(reference) + " under " + Show(parent) + (before ? " before" : " after"));
        TreeModel::Node const expected = _model.InsertCategory(label, reference, parent, before);
        OmDimensionNode const made = _dimension.insertCategory(Text(label), Handle(reference), Handle(parent), before);
        EXPECT_TRUE(Same(made, expected));
    }

    void Repair() {
        Say("Reparent");
        _model.Repair();
        OmDimension::Tree::Reparent(_dimension.Root(), true);
    }

    // --- comparison --------------------------------------------------------------------------------------------------

    void Compare(bool withDump) {
        OmDimension const& dimension = _dimension;
        EXPECT_EQ(Difference(dimension.Root(), _model.Root(), {}), std::nullopt);
        EXPECT_EQ(dimension.NumCategories(), _model.Categories());
        EXPECT_EQ(dimension.getMaximumDepth(), _model.MaximumDepth());
        EXPECT_EQ(dimension.getMaxVisibleGroupCount(), _model.MaxVisibleGroupCount());
        if (withDump) {
            EXPECT_EQ(Dump(dimension), _model.Dump());
        }
    }

    /// A copied dimension has the same tree, child indexes included, and every node finds its counterpart there.
    void CompareCopy() {
        Repair();
        _dimension.DisplayLastCategory(true);
        OmDimension& copy = _table.AddDimension(_dimension);
        EXPECT_FALSE(copy.DisplayLastCategory());
        EXPECT_EQ(copy.NumCategories(), _model.Categories());
        EXPECT_EQ(copy.Index(), 1);
        EXPECT_EQ(Dump(copy), _model.Dump());
        for (Path const& path : _model.Paths()) {
            Node node = Handle(path);
            Node const counterpart = copy.Counterpart(node);
            EXPECT_TRUE(counterpart == At(copy, path)) << Show(path);
            EXPECT_EQ(counterpart.Depth(), path.size());
        }
    }

    Dice& _dice;
    OmPivotTable _table{Text("title"), Text("template"), false};
    OmDimension& _dimension;
    TreeModel _model{"root"};
    std::vector<Path> _paths{};
    std::string _operation{};
    std::string _before{};
};

} // namespace category_tree

using category_tree::CategoryTreeScript;

} // namespace omtest

#endif
