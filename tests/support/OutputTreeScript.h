#ifndef OMTREE_TESTS_SUPPORT_OUTPUTTREESCRIPT_H
#define OMTREE_TESTS_SUPPORT_OUTPUTTREESCRIPT_H

#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmTextBlock.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/ForestModel.h"
#include "tests/support/LoggedPart.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace omtest {

namespace output_tree {

/// A part by the name of its title; empty for no part.
using Model = ForestModel<std::string>;
using Node = OmOutputTree::Node;
using Names = std::vector<std::string>;

constexpr std::size_t MostNodes = 30;

inline std::string NameOf(OmOutputPart const* part) {
    return part != nullptr ? dynamic_cast<ForeignText const&>(*part->Title()).name() : std::string();
}

/// One script of random operations on an output tree and on a naive forest of nested vectors. After every step the
/// records are compared, and which titles were destroyed since the step before, in their order; at the end the
/// destructor's.
///
///     Dice dice(seed);
///     OutputTreeScript(dice).Run();     // what disagrees is a failure of the test that runs
class OutputTreeScript {
public:
    explicit OutputTreeScript(Dice& dice) : _dice(dice) {
        Node root = _tree->Root();
        _tree->Erase(root);
    }

    void Run() {
        int const steps = 60 + _dice.Int(0, 20);
        for (int step = 0; step < steps && !_dice.Spent() && !::testing::Test::HasFatalFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            _log.Take();
            Change();
            ASSERT_NO_FATAL_FAILURE(Compare());
        }
        for (Model::Line const& line : _model.Lines()) {
            Expect(line.first);
        }
        _tree.reset();
        ExpectDestroyed();
        _loose.clear();
        _text.reset();
        ASSERT_EQ(_log.alive, 0);
    }

private:
    // --- steps

    void Change() {
        std::vector<Path> const paths = _model.Paths();
        if (paths.empty()) {
            std::string name = NextName();
            _tree->List().push_back({NewPart(name), 0});
            _model.trees.push_back(Model::Tree{name});
            _log.Take();
            return;
        }
        std::size_t const number = _dice.Below(paths.size());
        Path const& path = paths[number];
        Node node = At(number);
        std::size_t const choice = paths.size() >= MostNodes ? 0 : _dice.Below(16);
        switch (choice) {
        case 0:
        case 1:
            Prune(node, path);
            break;
        case 2:
        case 3:
            Expect(_model.At(path).value);
            _tree->Erase(node);
            _model.Erase(path);
            break;
        case 4:
        case 5:
        case 6:
            Amputate(node, path);
            break;
        case 7:
            _tree->Flatten(node);
            _model.Flatten(path);
            break;
        case 8:
            PruneGenerically(node, path);
            break;
        case 9:
            _loose.emplace_back(node.Value());
            _tree->ListTree::Erase(node);
            _model.Erase(path);
            break;
        case 10:
            Copy();
            break;
        default:
            Append(node, path);
            break;
        }
    }

    void Append(Node const& parent, Path const& path) {
        std::string name = _dice.Percent(85) ? NextName() : std::string();
        Node const added = _tree->AppendChild(parent, NewPart(name));
        EXPECT_EQ(added.Level(), LevelOf(path) + 1);
        _model.Append(path, name);
        _log.Take();
    }

    void Prune(Node& node, Path const& path) {
        ExpectPostOrder(_model.At(path));
        _tree->Prune(node);
        _model.Prune(path, LevelOf(path));
    }

    /// Records go, their parts stay with whoever has them.
    void PruneGenerically(Node const& node, Path const& path) {
        std::vector<Model::Line> subtree;
        Model::CollectLines({_model.At(path)}, 0, subtree);
        auto position = node.Position();
        for (std::size_t k = 0; k < subtree.size(); ++k) {
            _loose.emplace_back((position++)->value);
        }
        _tree->ListTree::Prune(node);
        _model.Prune(path, LevelOf(path));
    }

    /// A copy takes the place of the tree, which gives up its records and with them its parts.
    void Copy() {
        auto copy = std::make_unique<OmOutputTree>(*_tree);
        if (_dice.Percent(50)) {
            *copy = *_tree;
        }
        EXPECT_TRUE(*copy == *_tree);
        _tree->List().clear();
        _tree = std::move(copy);
    }

    void Amputate(Node const& node, Path const& path) {
        Model::Tree& model = _model.At(path);
        if (node.Level() > 1 && model.value.empty()) {
            RefuseAmputation(node);
            return;
        }
        _text = std::make_unique<ForeignText>(_log, NextName());
        _log.Take();
        if (node.Level() > 1) {
            std::string const title = model.value + "'";
            Expect(model.value);
            std::size_t const children = model.children.size();
            Node const back = ::Amputate(node, _text.get(), "page");
            _model.Append(path, title);
            _model.Erase(path);
            EXPECT_EQ(NameOf(back.Value()), _model.At(path).value);
            EXPECT_EQ(back.Level(), LevelOf(path));
            Path block = path;
            block.back() += children;
            ExpectBlock(block);
        } else {
            for (Model::Tree const& child : model.children) {
                ExpectPostOrder(child);
            }
            Node const back = ::Amputate(node, _text.get(), "page");
            model.children.assign(1, Model::Tree{_text->name() + "'"});
            EXPECT_EQ(NameOf(back.Value()), model.children[0].value);
            EXPECT_EQ(back.Level(), LevelOf(path) + 1);
            Path block = path;
            block.push_back(0);
            ExpectBlock(block);
        }
    }

    /// Without a part there is no title for the block. Unchecked, such a call must not be made.
    static void RefuseAmputation([[maybe_unused]] Node const& node) {
#if OMTREE_HARDENED
        AssertionCatcher const caught(AfterReport::Return);
        EXPECT_EQ(::Amputate(node, nullptr, ""), node);
        EXPECT_EQ(caught.Failures().size(), 1U);
#endif
    }

    // --- comparing

    void Expect(std::string const& name) {
        if (!name.empty()) {
            _expected.push_back(name + ": destroy");
        }
    }

    void ExpectPostOrder(Model::Tree const& tree) {
        for (Model::Tree const& child : tree.children) {
            ExpectPostOrder(child);
        }
        Expect(tree.value);
    }

    void ExpectBlock(Path const& path) {
        std::vector<Path> const paths = _model.Paths();
        auto const number = static_cast<std::size_t>(std::find(paths.begin(), paths.end(), path) - paths.begin());
        auto const* const block = dynamic_cast<OmTextBlock const*>(At(number).Value());
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(block->LocaleCodePage(), "page");
        EXPECT_EQ(NameOf(block), _model.At(path).value);
    }

    void ExpectDestroyed() {
        EXPECT_EQ(_log.Take({"destroy"}), _expected);
        _expected.clear();
    }

    void Compare() {
        ExpectDestroyed();
        std::vector<Model::Line> lines;
        for (OmOutputTree::Record const& record : _tree->List()) {
            lines.emplace_back(NameOf(record.value), record.level);
        }
        ASSERT_EQ(lines, _model.Lines());
    }

    Node At(std::size_t number) {
        return {*_tree, std::next(_tree->List().begin(), static_cast<std::ptrdiff_t>(number))};
    }

    std::string NextName() { return std::to_string(++_lastName); }

    /// A part, and in the model the name of its title, which is a clone.
    OmOutputPart* NewPart(std::string& name) {
        if (name.empty()) {
            return nullptr;
        }
        OmOutputPart* const part = new LoggedPart(_log, name);
        name += "'";
        return part;
    }

    Dice& _dice;
    ForeignLog _log;
    std::unique_ptr<OmOutputTree> _tree = std::make_unique<OmOutputTree>();
    Model _model;
    std::vector<std::unique_ptr<OmOutputPart>> _loose; ///< parts whose records went without them
    std::unique_ptr<ForeignText> _text;                ///< the last one given to an amputation
    Names _expected;
    int _lastName = 0;
};

} // namespace output_tree

using output_tree::OutputTreeScript;

} // namespace omtest

#endif
