// Documents and their parts: defects that were found, each by a test named for it.

#include "backend/tables/om/OmAnswerTree.h"
#include "backend/tables/om/OmChart.h"
#include "backend/tables/om/OmInteractive.h"
#include "backend/tables/om/OmModel.h"
#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "backend/tables/om/OmUtility.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMemoryRegion.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "platform/CodePageConverter.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/ForeignText.h"
#include "tests/support/ListTreeText.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::Dice;
using omtest::ForeignLog;
using omtest::ForeignText;

using Generic = ListTree<OmOutputPart*>;
using Node = OmOutputTree::Node;
using Calls = std::vector<std::string>;

// --- documents whose parts act when they go --------------------------------------------------------------------------

/// A part with a letter; its destructor notes the letter and then does what the test says.
class ActingPart : public OmOutputPart {
public:
    ActingPart(std::string& destroyed, char letter)
        : OmOutputPart(OmStringCell(std::string(1, letter))), name(letter), _destroyed(destroyed) {}
    ~ActingPart() override {
        _destroyed += name;
        if (act) {
            act();
        }
    }
    ActingPart(ActingPart const&) = delete;
    ActingPart& operator=(ActingPart const&) = delete;
    void Accept(Visitor&) override {}

    char name;
    std::function<void()> act{};

private:
    std::string& _destroyed;
};

/// "a0 b1 -2": each record's letter and level; "-" for null, "+" for a text block.
std::string RecordsOf(Generic const& tree) {
    std::string text;
    for (Generic::Record const& record : tree.List()) {
        text += text.empty() ? "" : " ";
        auto const* const part = dynamic_cast<ActingPart const*>(record.value);
        text += part != nullptr ? part->name : record.value != nullptr ? '+' : '-';
        text += std::to_string(record.level);
    }
    return text;
}

/// A document grown from such a text, with a tree that may be destroyed before its time.
class Document {
public:
    explicit Document(std::string const& text) {
        Node root = tree->Root();
        tree->Prune(root);
        for (std::size_t at = 0; at < text.size(); at = std::min(text.find(' ', at), text.size() - 1) + 1) {
            tree->List().push_back({new ActingPart(destroyed, text[at]), std::stoi(text.substr(at + 1))});
        }
    }

    Generic::Records::iterator Place(char letter) {
        return std::find_if(tree->List().begin(), tree->List().end(), [letter](Generic::Record const& record) {
            auto const* const part = dynamic_cast<ActingPart const*>(record.value);
            return part != nullptr && part->name == letter;
        });
    }
    Node At(char letter) { return {*tree, Place(letter)}; }
    ActingPart& Part(char letter) { return *static_cast<ActingPart*>(Place(letter)->value); }

    void Prune(char letter) {
        Node node = At(letter);
        tree->Prune(node);
    }
    void Erase(char letter) {
        Node node = At(letter);
        tree->Erase(node);
    }
    /// A new part below the one with that letter.
    void Append(char parent, char letter) { tree->AppendChild(At(parent), new ActingPart(destroyed, letter)); }

    /// The letter's part does this when it goes.
    void When(char letter, std::function<void()> act) { Part(letter).act = std::move(act); }

    std::string Records() const { return RecordsOf(*tree); }

    std::string destroyed; ///< letters, in the order of destruction
    std::unique_ptr<OmOutputTree> tree = std::make_unique<OmOutputTree>();
};

} // namespace

// --- handles that are not the tree's ---------------------------------------------------------------------------------

#if OMTREE_HARDENED
namespace {

using Letters = ListTree<char>;

/// What each call reports of a handle, in their order; none may change anything.
Calls ReportsOf(Letters& tree, Letters::Node node) {
    std::string const before = omtest::RecordsOf(tree);
    int const size = tree.Size();
    AssertionCatcher const caught(AfterReport::Return);
    tree.Prune(node);
    EXPECT_EQ(tree.AppendChild(node, 'n'), node);
    EXPECT_TRUE(tree.IsLeaf(node));
    tree.Flatten(node);
    tree.Erase(node);
    EXPECT_EQ(omtest::RecordsOf(tree), before);
    EXPECT_EQ(tree.Size(), size);
    Calls conditions;
    for (AssertionCatcher::Failure const& failure : caught.Failures()) {
        EXPECT_EQ(failure.source, "backend/tables/ListTree");
        conditions.push_back(failure.condition);
    }
    return conditions;
}

} // namespace

// Unnoticed, the wrong tree's size goes down, or a search runs past the end of the right one's list.
TEST(HandleOfAnotherTree, IsReportedByEveryCallOfAListTree) {
    Letters here = omtest::ListTreeOf("a0 b1 c2");
    Letters there = omtest::ListTreeOf("x0 y1 z2");
    EXPECT_EQ(ReportsOf(here, omtest::NodeOf(there, 'y')), Calls(5, "node._tree == this"));
    EXPECT_EQ(ReportsOf(here, omtest::EndOf(there)), Calls(5, "node._tree == this"));
    EXPECT_EQ(ReportsOf(here, Letters::Node()), Calls(5, "node._tree == this"));
    EXPECT_EQ(omtest::RecordsOf(there), "x0 y1 z2");
    EXPECT_EQ(there.Size(), 3);
}

TEST(HandleOfAnotherTree, IsReportedByADocument) {
    Document here("a0 b1 c2");
    Document there("x0 y1 z2");
    AssertionCatcher const caught(AfterReport::Return);
    Node foreign = there.At('y');
    here.tree->Prune(foreign);
    here.tree->Erase(foreign);
    Node nowhere;
    here.tree->Prune(nowhere);
    here.tree->Erase(nowhere);
    EXPECT_EQ(Amputate(nowhere, nullptr, "1252"), nowhere);
    ASSERT_EQ(caught.Failures().size(), 5U);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_EQ(caught.Failures()[k].condition, "node._tree == this");
    }
    EXPECT_EQ(caught.Failures()[4].condition, "node._tree != 0");
    EXPECT_EQ(here.Records(), "a0 b1 c2");
    EXPECT_EQ(there.Records(), "x0 y1 z2");
}

TEST(HandleOfNoTree, MovesNothing) {
    Letters here = omtest::ListTreeOf("a0 b1");
    AssertionCatcher const caught(AfterReport::Return);
    Letters::Node const root(here, here.List().begin());
    here.Move(root, Letters::Node(), Letters::Node());
    here.Move(Letters::Node(), root, root);
    ASSERT_EQ(caught.Failures().size(), 2U);
    EXPECT_EQ(caught.Failures()[0].condition, "begin._tree != 0");
    EXPECT_EQ(caught.Failures()[1].condition, "target._tree == this");
    EXPECT_EQ(omtest::RecordsOf(here), "a0 b1");
}

// One more than the largest level is no level.
TEST(LargestLevel, HasNoneBelowIt) {
    Letters here = omtest::ListTreeOf("a0 b1");
    Letters::Node const deepest(here, here.List().begin(), INT_MAX);
    Document document("a0 b1 c2");
    AssertionCatcher const caught(AfterReport::Return);
    EXPECT_EQ(here.AppendChild(deepest, 'n'), deepest);
    EXPECT_EQ(omtest::RecordsOf(here), "a0 b1");
    OmStringCell const text("t");
    Node const node(*document.tree, document.Place('c'), INT_MAX);
    EXPECT_EQ(Amputate(node, &text, ""), node);
    EXPECT_EQ(document.Records(), "a0 b1 c2");
    ASSERT_EQ(caught.Failures().size(), 2U);
    EXPECT_EQ(caught.Failures()[0].condition, "parent.Level() < max");
    EXPECT_EQ(caught.Failures()[1].condition, "node.Level() < max");
}
#endif

TEST(LargestLevel, IsOneThatARecordMayHave) {
    ListTree<char> here = omtest::ListTreeOf("a0 b1");
    ListTree<char>::Node const parent(here, here.List().begin(), INT_MAX - 1);
    EXPECT_EQ(here.AppendChild(parent, 'n').Level(), INT_MAX);
    EXPECT_TRUE(here.IsLeaf(ListTree<char>::Node(here, std::next(here.List().begin()), INT_MAX)));
}

// --- parts whose destructors change the document ---------------------------------------------------------------------

// A prune that remembers records in front of itself remembers one that is gone; the size says nothing, because another
// one came.
TEST(PartThatChangesAPrunedBranch, MayRemoveALaterSiblingAndAddAnother) {
    for (char taken = 'd'; taken <= 'z'; ++taken) {
        SCOPED_TRACE(taken);
        Document document("a0 b1");
        for (char letter = 'c'; letter <= 'z'; ++letter) {
            document.Append('b', letter);
        }
        document.When('c', [&] {
            document.Prune(taken);
            document.Append('b', 'N');
        });
        document.Prune('b');
        EXPECT_EQ(document.Records(), "a0");
        std::string expected = std::string("c") + taken;
        for (char letter = 'd'; letter <= 'z'; ++letter) {
            expected += letter != taken ? std::string(1, letter) : "";
        }
        EXPECT_EQ(document.destroyed, expected + "Nb");
    }
}

TEST(PartThatChangesAPrunedBranch, TakesWhatItAddsBelowThePrunedNodeAlong) {
    Document document("a0 b1 c2 d1");
    document.When('b', [&] { document.Append('b', 'N'); });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 d1");
    EXPECT_EQ(document.destroyed, "cbN");
}

TEST(PartThatChangesAPrunedBranch, TakesWhatItAddsBelowItselfAndItsParentAlong) {
    Document document("a0 b1 c2 d2 e1");
    document.When('c', [&] {
        document.Append('c', 'N');
        document.Append('N', 'M');
        document.Append('b', 'O');
        document.Append('e', 'P');
    });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 e1 P2");
    EXPECT_EQ(document.destroyed, "cMNdOb");
}

TEST(PartThatChangesAPrunedBranch, MayPruneThePrunedNode) {
    Document document("a0 b1 c2 d3 e2 f1");
    document.When('d', [&] { document.Prune('b'); });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 f1");
    EXPECT_EQ(document.destroyed, "dceb");
}

TEST(PartThatChangesAPrunedBranch, MayPruneItsParent) {
    Document document("a0 b1 c2 d3 e3 f2 g1");
    document.When('d', [&] { document.Prune('c'); });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 g1");
    EXPECT_EQ(document.destroyed, "decfb");
}

TEST(PartThatChangesAPrunedBranch, MayPruneWhatThePrunedNodeStandsBelow) {
    Document document("a0 b1 c2 d3 e2 f1");
    document.When('d', [&] { document.Prune('b'); });
    document.Prune('c');
    EXPECT_EQ(document.Records(), "a0 f1");
    EXPECT_EQ(document.destroyed, "dceb");
}

TEST(PartThatChangesAPrunedBranch, MayEraseOrPruneItsOwnRecord) {
    for (bool const prunes : {false, true}) {
        Document document("a0 b1 c2 d3 e2 f1");
        document.When('c', [&] { prunes ? document.Prune('c') : document.Erase('c'); });
        document.Prune('b');
        EXPECT_EQ(document.Records(), "a0 f1");
        EXPECT_EQ(document.destroyed, "dceb");
    }
}

// What stood below the parent is below the pruned node then, and goes with it.
TEST(PartThatChangesAPrunedBranch, MayEraseItsParent) {
    Document document("a0 b1 c2 d3 g4 h4 e3 f2 i1");
    document.When('g', [&] { document.Erase('d'); });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 i1");
    EXPECT_EQ(document.destroyed, "gdhecfb");
}

// The children were lifted into the node's place, where they stay; there is no node left to prune.
TEST(PartThatChangesAPrunedBranch, EndsThePruneByErasingThePrunedNode) {
    Document document("a0 b1 c2 d3 e3 f2 g1");
    document.When('d', [&] { document.Erase('b'); });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 c1 e2 f1 g1");
    EXPECT_EQ(document.destroyed, "db");
}

TEST(PartThatChangesAPrunedBranch, MayFlattenItsParentUnseen) {
    Document document("a0 b1 c2 d3 g4 h4 e3 f2 i1");
    document.When('g', [&] {
        Node node = document.At('d');
        document.tree->Flatten(node);
    });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0 i1");
    EXPECT_EQ(document.destroyed, "gdhecfb");
}

// The pruned node is lifted with what is below it, and still bounds as much.
TEST(PartThatChangesAPrunedBranch, MayFlattenWhatThePrunedNodeStandsBelow) {
    for (bool const isStale : {false, true}) {
        Document document("a0 b1 c2 d3 e3 f2 g1");
        document.When('d', [&] {
            Node node = document.At('b');
            document.tree->Flatten(node);
        });
        Node node(*document.tree, document.Place('c'), isStale ? 1 : 2);
        document.tree->Prune(node);
        EXPECT_EQ(document.Records(), "a0 b1 f1 g1");
    }
}

TEST(PartThatChangesAPrunedBranch, MayAmputateThePrunedNodeAndItself) {
    OmStringCell const text("t");
    for (char const letter : {'b', 'd'}) {
        Document document("a0 b1 c2 d3 e3 f2 g1");
        document.When('d', [&] { Amputate(document.At(letter), &text, "1252"); });
        document.Prune('b');
        EXPECT_EQ(document.Records(), "a0 g1");
        EXPECT_EQ(std::multiset<char>(document.destroyed.begin(), document.destroyed.end()),
                  (std::multiset<char>{'b', 'c', 'd', 'e', 'f'}));
    }
}

TEST(PartThatChangesAPrunedBranch, MayPutAnotherPartIntoItsRecord) {
    Document document("a0 b1 c2");
    document.When('c', [&] { document.At('c').Value() = new ActingPart(document.destroyed, 'N'); });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "a0");
    EXPECT_EQ(document.destroyed, "cNb");
}

TEST(PartThatEndsTheDocument, EndsThePruneTheEraseAndTheAmputation) {
    OmStringCell const text("t");
    std::vector<std::function<void(Document&)>> const calls{
        [](Document& document) { document.Prune('b'); },
        [](Document& document) { document.Erase('c'); },
        [&](Document& document) { EXPECT_EQ(Amputate(document.At('c'), &text, "").Tree(), nullptr); },
        [&](Document& document) { EXPECT_EQ(Amputate(document.At('b'), &text, "").Tree(), nullptr); },
    };
    for (auto const& call : calls) {
        Document document("a0 b1 c2 d2");
        document.When('c', [&] { document.tree.reset(); });
        call(document);
        EXPECT_EQ(document.tree, nullptr);
        EXPECT_EQ(document.destroyed, "cabd");
    }
}

TEST(PartThatEmptiesTheDocument, EndsThePruneByAssigningAnother) {
    Document other("x0 y1");
    Document document("a0 b1 c2 d2");
    OmOutputTree dropped(*document.tree);
    document.When('c', [&] { *document.tree = *other.tree; });
    document.Prune('b');
    EXPECT_EQ(document.Records(), "x0 y1");
    EXPECT_EQ(document.destroyed, "c");
    document.tree->List().clear();                              // of the two, the other one destroys
    dropped.List().erase(std::next(dropped.List().begin(), 2)); // c is gone
}

TEST(PartThatIsErased, MayPruneItselfItsParentAndAddBelowItself) {
    Document document("a0 b1 c2 d3 e1");
    document.When('c', [&] { document.Prune('c'); });
    document.Erase('c');
    EXPECT_EQ(document.Records(), "a0 b1 e1");
    EXPECT_EQ(document.destroyed, "cd");

    Document second("a0 b1 c2 d3 e1");
    second.When('c', [&] { second.Prune('b'); });
    second.Erase('c');
    EXPECT_EQ(second.Records(), "a0 e1");
    EXPECT_EQ(second.destroyed, "cdb");

    Document third("a0 b1 c2 d3 e1");
    third.When('c', [&] { third.Append('c', 'N'); });
    third.Erase('c');
    EXPECT_EQ(third.Records(), "a0 b1 d2 N2 e1");
}

namespace {

/// A part that keeps a handle on its own record.
class PartWithHandle : public ActingPart {
public:
    using ActingPart::ActingPart;
    Node self{};
};

} // namespace

// The handle goes with the part; what is read of it afterwards is gone.
TEST(HandleInThePartThatGoes, IsReadBeforeThePartIsDestroyed) {
    Document document("a0 b1 c2");
    auto* const erased = new PartWithHandle(document.destroyed, 'E');
    erased->self = document.tree->AppendChild(document.At('b'), erased);
    document.Append('E', 'M');
    auto* const pruned = new PartWithHandle(document.destroyed, 'P');
    pruned->self = document.tree->AppendChild(document.At('b'), pruned);
    document.Append('P', 'N');
    document.tree->Erase(erased->self);
    EXPECT_EQ(document.Records(), "a0 b1 c2 M2 P2 N3");
    document.tree->Prune(pruned->self);
    EXPECT_EQ(document.Records(), "a0 b1 c2 M2");
    EXPECT_EQ(document.destroyed, "ENP");
}

// --- and while the document is destroyed

TEST(PartThatChangesADyingDocument, MayRemoveAnyRecord) {
    for (char const letter : {'a', 'b', 'c', 'd', 'e', 'f'}) {
        SCOPED_TRACE(letter);
        for (int way = 0; way < 2; ++way) {
            Document document("a0 b1 c2 d3 e2 f1");
            document.When('c', [&] {
                if (document.Place(letter) != document.tree->List().end()) {
                    way == 0 ? document.Prune(letter) : document.Erase(letter);
                }
            });
            OmOutputTree* const tree = document.tree.get();
            tree->~OmOutputTree(); // the pointer to it stays for the destructors
            std::string destroyed = document.destroyed;
            std::sort(destroyed.begin(), destroyed.end());
            EXPECT_EQ(destroyed, "abcdef");
            new (tree) OmOutputTree();
        }
    }
}

TEST(PartThatChangesADyingDocument, FindsNullWhereAPartIsGone) {
    Document document("a0 b1 c2");
    std::string seen;
    document.When('c', [&] { seen = document.Records(); });
    OmOutputTree* const tree = document.tree.get();
    tree->~OmOutputTree();
    new (tree) OmOutputTree();
    EXPECT_EQ(seen, "-0 -1 c2");
}

TEST(PartThatChangesADyingDocument, TakesWhatItAddsAlongWhereverItIs) {
    Document document("a0 b1 c2 d1");
    Node const passed = document.At('b');
    document.When('d', [&] {
        document.tree->AppendChild(passed, new ActingPart(document.destroyed, 'N'));
        document.Append('d', 'M');
    });
    OmOutputTree* const tree = document.tree.get();
    tree->~OmOutputTree();
    new (tree) OmOutputTree();
    EXPECT_EQ(document.destroyed, "abcdMN");
}

// --- anything at all

namespace {

/// Parts that do something at random to their document when they go, until there was enough of it.
class Wild {
public:
    explicit Wild(Dice& dice) : _dice(dice) { Grow(); }
    ~Wild() { _isOver = true; }
    Wild(Wild const&) = delete;
    Wild& operator=(Wild const&) = delete;

    void Run() {
        for (int step = 0; step < 12; ++step) {
            _budget = 6;
            Act();
            ASSERT_NO_FATAL_FAILURE(Check());
            if (_tree->Size() < 2) {
                Grow();
            }
        }
        _budget = 6;
        _tree->~OmOutputTree();
        ASSERT_TRUE(_alive.empty());
        new (_tree.get()) OmOutputTree();
    }

private:
    class WildPart : public OmOutputPart {
    public:
        explicit WildPart(Wild& owner) : OmOutputPart(OmStringCell("wild")), _owner(owner) {
            _owner._alive.insert(this);
        }
        ~WildPart() override {
            EXPECT_EQ(_owner._alive.erase(this), 1U);
            if (!_owner._isOver && _owner._budget > 0 && _owner._dice.Percent(40)) {
                --_owner._budget;
                _owner.Act();
            }
        }
        WildPart(WildPart const&) = delete;
        WildPart& operator=(WildPart const&) = delete;
        void Accept(Visitor&) override {}

    private:
        Wild& _owner;
    };

    void Grow() {
        if (_tree->Size() == 0) {
            _tree->List().push_back({new WildPart(*this), 0});
        }
        int level = 0;
        for (int records = _dice.Int(3, 24); records > 0; --records) {
            level = _dice.Int(1, level + 1);
            _tree->List().push_back({_dice.Percent(90) ? new WildPart(*this) : nullptr, level});
        }
    }

    Node Any() {
        int const place = _dice.Int(0, _tree->Size() - 1);
        return {*_tree, std::next(_tree->List().begin(), place)};
    }

    void Act() {
        if (_tree->Size() == 0) {
            return;
        }
        Node node = Any();
        switch (_dice.Int(0, 4)) {
        case 0:
            _tree->Prune(node);
            break;
        case 1:
            if (node.Position() != _tree->List().begin()) { // the root's children would be roots
                _tree->Erase(node);
            }
            break;
        case 2:
            _tree->AppendChild(node, new WildPart(*this));
            break;
        case 3:
            if (node.Value() != nullptr) {
                Amputate(node, &_text, "1252");
            }
            break;
        default:
            if (node.Position() != _tree->List().begin()) {
                _tree->Flatten(node);
            }
        }
    }

    void Check() {
        std::size_t parts = 0;
        int before = -1;
        for (Generic::Record const& record : _tree->List()) {
            ASSERT_LE(record.level, before + 1);
            before = record.level;
            auto* const part = dynamic_cast<WildPart*>(record.value);
            parts += part != nullptr ? 1U : 0U;
            ASSERT_TRUE(part == nullptr || _alive.count(part) == 1);
        }
        ASSERT_EQ(parts, _alive.size());
    }

    Dice& _dice;
    std::set<OmOutputPart const*> _alive;
    OmStringCell _text{"t"};
    int _budget = 0;
    bool _isOver = false;
    std::unique_ptr<OmOutputTree> _tree = [] {
        auto tree = std::make_unique<OmOutputTree>();
        Node root = tree->Root();
        tree->Prune(root);
        return tree;
    }();
};

} // namespace

TEST(PartsThatDoAnythingWhenTheyGo, AreDestroyedOnceEachAndLeaveATree) {
    omtest::RunScripts(4000, [](Dice& dice) { Wild(dice).Run(); });
}

// --- what an amputation is given -------------------------------------------------------------------------------------

namespace {

constexpr char LongPage[] = "a name of a code page that no string keeps inside itself";

} // namespace

TEST(AmputationGivenTheCodePageOfAPartThatGoes, ReadsItBefore) {
    OmOutputTree tree;
    OmStringCell const text("t");
    auto* const procedure = new OmProcedure(OmStringCell("p"), "en", LongPage, "en_US");
    tree.AppendChild(tree.Root(), procedure);
    Node const node = Amputate(tree.Root(), &text, procedure->LocaleCodePage());
    auto const* const block = dynamic_cast<OmTextBlock const*>(node.Value());
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->LocaleCodePage(), LongPage);
    EXPECT_EQ(tree.Size(), 2);
}

TEST(AmputationGivenTheCodePageOfItsOwnPart, ReadsItBefore) {
    OmOutputTree tree;
    Node const heading = tree.AppendChild(tree.Root(), nullptr);
    auto* const procedure = new OmProcedure(OmStringCell("p"), "en", LongPage, "en_US");
    Node const node = tree.AppendChild(heading, procedure);
    Node const back = Amputate(node, nullptr, procedure->LocaleCodePage());
    EXPECT_EQ(static_cast<OmTextBlock const*>(back.Value())->LocaleCodePage(), LongPage);
}

TEST(AmputationGivenATitleThatGoes, TakesItBefore) {
    OmOutputTree tree;
    OmComposite whole;
    whole.Append(OmStringCell("a part of a title, longer than a string keeps inside itself"));
    auto* const first = new OmTextBlock(OmStringCell("a title, longer than a string keeps inside itself"), "");
    Node const heading = tree.AppendChild(tree.Root(), nullptr);
    tree.AppendChild(heading, first);
    Node const node = Amputate(heading, first->Title(), "");
    EXPECT_EQ(node.Value()->Title()->AsString(), "a title, longer than a string keeps inside itself");

    Node const second = tree.AppendChild(tree.Root(), new OmTextBlock(whole, ""));
    auto const& components = static_cast<OmComposite const*>(second.Value()->Title())->Components();
    Node const last = Amputate(tree.Root(), components.Root().Child(0).Value(), "");
    EXPECT_EQ(last.Value()->Title()->AsString(), "a part of a title, longer than a string keeps inside itself");
    EXPECT_EQ(tree.Size(), 2);
}

#if OMTREE_HARDENED
// Another program's text can see when it is cloned, so it is cloned where it always was, after the pruning.
TEST(AmputationGivenAForeignTitleThatGoes, IsReportedAndChangesNothing) {
    ForeignLog log;
    OmOutputTree tree;
    Node const heading = tree.AppendChild(tree.Root(), nullptr);
    tree.AppendChild(heading, new OmTextBlock(ForeignText(log, "t"), ""));
    OmComposite whole;
    whole.Append(ForeignText(log, "u"));
    tree.AppendChild(heading, new OmTextBlock(whole, ""));
    OmCellText const* const title = std::next(heading.Position())->value->Title();
    OmCellText const* const holder = std::next(heading.Position(), 2)->value->Title();
    OmCellText const* const piece = static_cast<OmComposite const*>(holder)->Components().Root().Child(0).Value();
    log.Take();
    AssertionCatcher const caught(AfterReport::Return);
    for (OmCellText const* const text : {title, piece, holder}) {
        EXPECT_EQ(Amputate(heading, text, ""), heading);
    }
    ASSERT_EQ(caught.Failures().size(), 3U);
    EXPECT_EQ(caught.Failures()[0].condition, "text != held");
    EXPECT_EQ(tree.Size(), 4);
    EXPECT_TRUE(log.Take().empty());
}
#endif

TEST(AmputationGivenAForeignText, ClonesItAfterThePruning) {
    ForeignLog log;
    Document document("a0 b1 c2");
    document.When('c', [&] { log.Add("c", "destroy"); });
    OmComposite whole;
    whole.Append(ForeignText(log, "u"));
    log.Take();
    Amputate(document.At('b'), &whole, "");
    EXPECT_EQ(log.Take({"Clone", "destroy"}).at(0), "c: destroy");
}

TEST(AmputationWhoseNodeGoes, GivesTheEndAndNoBlock) {
    OmStringCell const text("t");
    ForeignLog log;
    ForeignText const foreign(log, "f");
    for (OmCellText const* const title :
         {static_cast<OmCellText const*>(&text), static_cast<OmCellText const*>(&foreign)}) {
        Document document("a0 b1 c2 d2 e1");
        document.When('c', [&] { document.Prune('b'); });
        Node const node = Amputate(document.At('b'), title, "");
        EXPECT_EQ(node.Tree(), document.tree.get());
        EXPECT_EQ(node.Position(), document.tree->List().end());
        EXPECT_EQ(document.Records(), "a0 e1");
        EXPECT_EQ(document.destroyed, "cdb");
    }
    Document document("a0 b1 c2 d3 e1");
    document.When('c', [&] { document.Erase('c'); });
    Node const node = Amputate(document.At('c'), &text, "");
    EXPECT_EQ(node.Position(), document.tree->List().end());
    EXPECT_EQ(document.Records(), "a0 b1 d2 e1");
}

// Nothing tells a document from the tree that it is made of; taken for one on trust, it would be read as another class.
TEST(AmputationInAPlainListTree, TreatsItsPartsAsADocumentsAre) {
    std::string destroyed;
    Generic tree(static_cast<OmOutputPart*>(nullptr));
    Generic::Node const heading = tree.AppendChild(tree.Root(), new ActingPart(destroyed, 'b'));
    Generic::Node const inner = tree.AppendChild(heading, new ActingPart(destroyed, 'c'));
    tree.AppendChild(inner, new ActingPart(destroyed, 'd'));
    OmStringCell const text("t");
    Generic::Node const first = Amputate(inner, nullptr, "");
    EXPECT_EQ(RecordsOf(tree), "-0 b1 d2 +2");
    EXPECT_EQ(first.Value(), std::next(tree.List().begin(), 2)->value);
    Generic::Node const block = Amputate(heading, &text, "");
    EXPECT_EQ(RecordsOf(tree), "-0 b1 +2");
    EXPECT_EQ(destroyed, "cd");
    delete block.Value();
    delete heading.Value();
}

// --- order of steps, seen from a part that goes ----------------------------------------------------------------------

TEST(StepsSeenByAPartThatGoes, PruneRemovesARecordAfterItsPartAndBeforeTheNext) {
    Document document("a0 b1 c2 d3 e2 f1");
    std::string seen;
    for (char const letter : {'b', 'c', 'd', 'e'}) {
        document.When(letter, [&] { seen += document.Records() + "; "; });
    }
    document.Prune('b');
    EXPECT_EQ(seen, "a0 b1 c2 d3 e2 f1; a0 b1 c2 e2 f1; a0 b1 e2 f1; a0 b1 f1; ");
}

TEST(StepsSeenByAPartThatGoes, EraseLiftsAfterThePartIsDestroyed) {
    Document document("a0 b1 c2 d1");
    std::string seen;
    document.When('b', [&] { seen = document.Records(); });
    document.Erase('b');
    EXPECT_EQ(seen, "a0 b1 c2 d1");
}

TEST(StepsSeenByAPartThatGoes, AmputateAppendsTheBlockAndLiftsAfterThePartIsDestroyed) {
    Document document("a0 b1 c2 d3 e1");
    std::string seen;
    document.When('c', [&] { seen = document.Records(); });
    Amputate(document.At('c'), nullptr, "");
    EXPECT_EQ(seen, "a0 b1 c2 d3 e1");
    EXPECT_EQ(document.Records(), "a0 b1 d2 +2 e1");
}

// Between the destruction and the append: where that finds no memory, the record must not point at what is gone.
TEST(StepsSeenWithoutMemory, AmputateLeavesNullInThePlaceOfThePart) {
    int nulls = 0;
    for (long allowed = 0;; ++allowed) {
        Document document("a0 b1 c2 d3 e1");
        Node const node = document.At('c');
        omtest::Heap().untilFailure = allowed;
        bool thrown = false;
        try {
            Amputate(node, nullptr, "");
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
        omtest::Heap().untilFailure = -1;
        if (!thrown) {
            break;
        }
        bool const isNull = node.Value() == nullptr;
        EXPECT_EQ(document.Records(), isNull ? "a0 b1 -2 d3 e1" : "a0 b1 c2 d3 e1");
        EXPECT_EQ(document.destroyed, isNull ? "c" : "");
        nulls += isNull ? 1 : 0;
    }
    EXPECT_EQ(nulls, 1);
}

// --- requests for memory ---------------------------------------------------------------------------------------------

namespace {

template <typename Action>
long RequestsOf(Action&& action) {
    constexpr long Plenty = 1000000000;
    omtest::Heap().untilFailure = Plenty;
    action();
    return Plenty - std::exchange(omtest::Heap().untilFailure, -1);
}

} // namespace

TEST(MillionRecords, ArePrunedErasedAndAmputatedWithFewRequestsForMemory) {
    constexpr int Million = 1000000;
    std::string destroyed;
    OmStringCell const text("t");
    for (bool const isDeep : {false, true}) {
        auto const fill = [&](OmOutputTree& tree) {
            Node const heading = tree.AppendChild(tree.Root(), nullptr);
            for (int k = 0; k < Million; ++k) {
                tree.List().push_back({nullptr, isDeep ? k + 2 : 2});
            }
            return heading;
        };
        OmOutputTree tree;
        Node heading = fill(tree);
        // A number for each level of a vector that doubles.
        EXPECT_LE(RequestsOf([&] { tree.Prune(heading); }), isDeep ? 22 : 2);
        EXPECT_EQ(tree.Size(), 1);
        heading = fill(tree);
        EXPECT_EQ(RequestsOf([&] { tree.Erase(heading); }), 0);
        EXPECT_EQ(tree.Size(), Million + 1);
        Node const root = tree.Root();
        EXPECT_LE(RequestsOf([&] { Amputate(root, &text, ""); }), isDeep ? 40 : Million + 20);
        EXPECT_EQ(tree.Size(), 2);
    }
}

// --- fields in their documented order --------------------------------------------------------------------------------

namespace {

unsigned char const* Address(void const* field) { return static_cast<unsigned char const*>(field); }

template <typename Value>
Value Behind(void const* field, std::size_t offset) {
    Value value;
    std::memcpy(&value, Address(field) + offset, sizeof(value));
    return value;
}

/// Whether each string or list stands right behind the one before it.
template <typename Field>
void ExpectSideBySide(std::initializer_list<Field const*> fields) {
    Field const* before = nullptr;
    for (Field const* const field : fields) {
        EXPECT_TRUE(before == nullptr || Address(field) == Address(before) + sizeof(Field));
        before = field;
    }
}

constexpr std::size_t OneString = sizeof(std::string);
using Names = std::vector<std::string>;

} // namespace

TEST(FieldsInOrder, OfATextBlock) {
    OmTextBlock const log(OmStringCell("Log"), "1252");
    OmTextBlock const other(OmStringCell("other"), "1252");
    EXPECT_EQ(Address(&log.TextList()), Address(&log) + sizeof(OmOutputPart));
    EXPECT_EQ(Behind<unsigned char>(&log.TextList(), sizeof(log.TextList())), 1U);
    EXPECT_EQ(Behind<unsigned char>(&other.TextList(), sizeof(other.TextList())), 0U);
    EXPECT_EQ(Address(&log.LocaleCodePage()), Address(&log.TextList()) + sizeof(log.TextList()) + sizeof(void*));
}

TEST(FieldsInOrder, OfAProcedure) {
    OmProcedure part(OmStringCell("p"), "en", "1252", "en_US");
    ExpectSideBySide(
        {&part.Command(), &part.LanguageCode(), &part.LocaleCodePage(), &part.LocaleName(), &part.TransCommand()});
    part.OutlineVarDisplay(static_cast<OmCellText::ModeType>(10));
    part.OutlineValueDisplay(static_cast<OmCellText::ModeType>(11));
    part.TableVarDisplay(static_cast<OmCellText::ModeType>(12));
    part.TableValueDisplay(static_cast<OmCellText::ModeType>(13));
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_EQ(Behind<std::int32_t>(&part.TransCommand(), OneString + 4 * k), static_cast<std::int32_t>(10 + k));
    }
}

TEST(FieldsInOrder, OfAChart) {
    OmChart chart(OmStringCell("c"), "", 0x1122334455667788);
    chart.SetMapInfo("m", 1);
    ExpectSideBySide({&chart.GetXmlDescription(), &chart.GetXmlData(), &chart.GetImageData(), &chart.GetViZJSONData(),
                      &chart.LocaleCodePage()});
    // The map record is handed out in parts alone: a string between the code page and the names.
    ExpectSideBySide<Names>(
        {&chart.getCSVFileNames(), &chart.getCSVFiles(), &chart.getGeoJSONFileNames(), &chart.getGeoJSONContent()});
    EXPECT_EQ(Address(&chart.getCSVFileNames()), Address(&chart.LocaleCodePage()) + 2 * OneString);
    EXPECT_EQ(Behind<std::size_t>(&chart.LocaleCodePage(), OneString + sizeof(char*)), 1U);
    EXPECT_EQ(Address(&chart.getVizJSONTemplate()), Address(&chart.getGeoJSONContent()) + sizeof(Names));
    ExpectSideBySide({&chart.getVizJSONTemplate(), &chart.getOptions()});
    std::int32_t const states[] = {21, 22};
    chart.Done(reinterpret_cast<char const*>(states));
    chart.SetImageSubType(static_cast<ChartXMLContentSubType>(23));
    chart.SetXmlUncompressedLength(24);
    EXPECT_EQ(Behind<std::int32_t>(&chart.getOptions(), OneString), 21);
    EXPECT_EQ(Behind<std::int32_t>(&chart.getOptions(), OneString + 4), 22);
    EXPECT_EQ(Behind<std::int32_t>(&chart.getOptions(), OneString + 8), 23);
    EXPECT_EQ(Behind<std::int64_t>(&chart.getOptions(), OneString + 16), 0x1122334455667788);
    EXPECT_EQ(Behind<std::uint32_t>(&chart.getOptions(), OneString + 24), 24U);
}

TEST(FieldsInOrder, OfAModel) {
    OmModel model(OmStringCell("m"));
    model.SetModelType(static_cast<OmModel::MODEL_TYPE>(7));
    ExpectSideBySide(
        {&model.GetPMML(), &model.GetBinaryDataStream(), &model.GetPMMLContainer(), &model.GetStatXMLContainer()});
    std::int32_t type = 0;
    std::memcpy(&type, Address(&model.GetPMML()) - sizeof(void*), sizeof(type));
    EXPECT_EQ(type, 7);
}

TEST(FieldsInOrder, OfAnInteractiveItem) {
    OmInteractive const item(OmStringCell("i"), "", 0x1122334455667788);
    EXPECT_EQ(Address(&item.getGeoJSONFileNames()), Address(&item.LocaleCodePage()) + OneString);
    ExpectSideBySide<Names>({&item.getGeoJSONFileNames(), &item.getGeoJSONContent()});
    EXPECT_EQ(Address(&item.getInteractiveJSON()), Address(&item.getGeoJSONContent()) + sizeof(Names));
    ExpectSideBySide({&item.getInteractiveJSON(), &item.getProcedureName(), &item.getJSONPath(), &item.getOptions()});
    EXPECT_EQ(Behind<std::int64_t>(&item.getOptions(), OneString), 0x1122334455667788);
}

TEST(FieldsInOrder, OfAnAnswerTree) {
    std::string const kept = "kept";
    OmAnswerTree tree(OmStringCell("a"), kept);
    tree.SetTreeType(5);
    tree.SetCompressedXML("x", 1, 6);
    std::int32_t type = 0;
    std::memcpy(&type, Address(&tree.GetPath()) - sizeof(void*), sizeof(type));
    EXPECT_EQ(type, 5);
    ExpectSideBySide({&tree.GetPath(), &tree.GetCompressedXml()});
    EXPECT_EQ(Behind<std::uint32_t>(&tree.GetCompressedXml(), OneString), 6U);
    EXPECT_EQ(Address(&tree.GetUncompressedXml()), Address(&tree.GetCompressedXml()) + OneString + sizeof(void*));
    ExpectSideBySide({&tree.GetUncompressedXml(), &tree.GetUncompressedDisplayXML()});
    EXPECT_EQ(Behind<std::string const*>(&tree.GetUncompressedDisplayXML(), OneString), &kept);
}

// --- the conversion of titles ----------------------------------------------------------------------------------------

namespace {

/// Takes the converter functions' place in this program.
struct ConverterBooks {
    Calls calls;
    bool isKnown = true;
    int result = 0;
    std::string out = "converted";
};

ConverterBooks& Converters() {
    static ConverterBooks books;
    return books;
}

std::string Name(QUORMBConverter const* converter) { return converter != nullptr ? "converter" : "null"; }

} // namespace

QUORMBConverter* QUORMBConverterNew_A(char const* codePage) {
    Converters().calls.push_back(std::string("new ") + codePage);
    static int place = 0;
    return Converters().isKnown ? reinterpret_cast<QUORMBConverter*>(&place) : nullptr;
}

int QUORMBU8ToGeneric(QUORMBConverter* converter, std::string& out, std::string const& text) {
    Converters().calls.push_back("convert " + Name(converter) + " " + text + (out.empty() ? "" : " into " + out));
    out = Converters().out;
    return converter != nullptr ? Converters().result : 1;
}

void QUORMBConverterDelete_A(QUORMBConverter* converter) { Converters().calls.push_back("delete " + Name(converter)); }

namespace {

/// The title of a part made with a code page, and what the converter functions were called with.
template <typename Part>
std::pair<std::string, Calls> Converted(bool isKnown, int result) {
    Converters() = ConverterBooks{{}, isKnown, result};
    Part const part(OmStringCell("title"), "page", 1);
    return {part.Title()->AsString(), Converters().calls};
}

template <typename Part>
void ExpectEveryStepOfTheConversion() {
    EXPECT_EQ(
        Converted<Part>(true, 0),
        std::make_pair(std::string("converted"), Calls{"new page", "convert converter title", "delete converter"}));
    for (int const result : {1, 2, -1, INT_MAX, INT_MIN}) {
        EXPECT_EQ(
            Converted<Part>(true, result),
            std::make_pair(std::string("title"), Calls{"new page", "convert converter title", "delete converter"}));
    }
    EXPECT_EQ(Converted<Part>(false, 0),
              std::make_pair(std::string("title"), Calls{"new page", "convert null title", "delete null"}));
}

} // namespace

// The delete function was not called for a name that nobody knows.
TEST(TitleConversion, CallsTheThreeFunctionsInOrderWhateverTheyGive) {
    ExpectEveryStepOfTheConversion<OmChart>();
    ExpectEveryStepOfTheConversion<OmInteractive>();
}

// --- the first number ------------------------------------------------------------------------------------------------

// The pages that hold what stands behind the number cannot be read while it is searched.
TEST(FirstNumberOfAMillionComponents, IsFoundWithoutLookingBehindIt) {
    constexpr std::size_t Million = 1000000;
    OmComposite composite;
    auto const root = composite.Components().Root();
    composite.Append(OmNumber(7));
    for (std::size_t k = 1; k < Million; ++k) {
        composite.Components().AddChild(root, nullptr);
    }
    auto const page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    auto const first = (reinterpret_cast<std::uintptr_t>(&root.Child(100).Value()) + page - 1) / page * page;
    auto const last = reinterpret_cast<std::uintptr_t>(&root.Child(Million - 1).Value()) / page * page;
    ASSERT_LT(first, last);
    OmComposite const& searched = composite;
    ASSERT_EQ(mprotect(reinterpret_cast<void*>(first), last - first, PROT_NONE), 0);
    OmNumber const* const number = OmUtility::GetFirstNumber(searched);
    ASSERT_EQ(mprotect(reinterpret_cast<void*>(first), last - first, PROT_READ | PROT_WRITE), 0);
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->NumericValue(), 7);
}

// --- a part's own contents given back to it --------------------------------------------------------------------------

// The zero behind the bytes is the string's too, and moves with it.
TEST(StreamGivenItsOwnTerminatingZero, ReadsItBeforeItMoves) {
    OmChart chart(OmStringCell("c"), "", 1);
    OmModel model(OmStringCell("m"));
    std::string const bytes(100, 'a');
    chart.SetBinaryDataStream(bytes.data(), 100);
    chart.SetImageStream(bytes.data(), 100);
    chart.SetViZJSON(bytes.data(), 100);
    model.SetBinaryDataStream(bytes.data(), 100);
    chart.SetBinaryDataStream(chart.GetXmlData().data() + 100, 1);
    chart.SetImageStream(chart.GetImageData().data() + 100, 1);
    chart.SetViZJSON(chart.GetViZJSONData().data() + 100, 1);
    model.SetBinaryDataStream(model.GetBinaryDataStream().data() + 100, 1);
    for (std::string const* const stream :
         {&chart.GetXmlData(), &chart.GetImageData(), &chart.GetViZJSONData(), &model.GetBinaryDataStream()}) {
        EXPECT_EQ(*stream, bytes + std::string(1, '\0'));
    }
}

TEST(PartGivenItsOwnContents, TakesThemAsTheyWere) {
    OmChart chart(OmStringCell("c"), "", 1);
    std::string const bytes = "some bytes that are longer than a string keeps inside itself";
    auto const length = static_cast<unsigned int>(bytes.size());
    chart.addCSVFileName(bytes.data(), length);
    chart.addCSVFileContent(bytes.data(), length);
    chart.addCSVFileContent(chart.getCSVFiles().back().data() + 5, length - 5);
    EXPECT_EQ(chart.getCSVFiles(), Names{bytes + bytes.substr(5)});
    chart.addCSVFileName(chart.getCSVFileNames().front().data(), length);
    chart.addCSVFileContent(chart.getCSVFiles().front().data(), length);
    EXPECT_EQ(chart.getCSVFileNames(), (Names{bytes, bytes}));
    EXPECT_EQ(chart.getCSVFiles(), (Names{bytes + bytes.substr(5), bytes}));
    chart.setOptions(bytes);
    chart.setOptions(chart.getOptions());
    EXPECT_EQ(chart.getOptions(), bytes);
    OmInteractive item(OmStringCell("i"), "", 1);
    item.setOptions(bytes);
    item.setOptions(item.getOptions());
    item.setJSONPath(item.getOptions());
    item.setProcedureName(item.getJSONPath());
    EXPECT_EQ(item.getOptions() + item.getProcedureName(), bytes + bytes);
    OmProcedure procedure(OmStringCell("p"), bytes, bytes, bytes);
    procedure.SetCommand(procedure.LocaleName());
    procedure.SetCommand(procedure.Command());
    procedure.SetTransCommand(procedure.Command());
    EXPECT_EQ(procedure.Command() + procedure.TransCommand(), bytes + bytes);
    OmTextBlock block(OmStringCell("t"), "");
    block.TextList() = {"one", "two"};
    block.TextList().splice(block.TextList().begin(), block.TextList(), std::next(block.TextList().begin()));
    EXPECT_EQ(block.TextList(), (std::list<std::string>{"two", "one"}));
}

TEST(MapInfo, IsReadIntoAsManyStringsAsAreGiven) {
    OmChart chart(OmStringCell("c"), "", 1);
    std::string const record("\1\0\1\0\0\0A\1\0B\1\0\0\0C\1\0D", 18);
    chart.SetMapInfo(record.data(), static_cast<unsigned int>(record.size()));
    std::string first;
    std::string second;
    chart.getMapInfo(first, first, second, second);
    EXPECT_EQ(first + second, "BD");
}

// --- chunks for which there is no memory -----------------------------------------------------------------------------

// The largest length, and of a chunk that is never read, because there is no room for it.
TEST(ContainerWithoutMemory, HasSetTheTypeOfTheModelFirst) {
    for (auto const set : {&OmModel::SetPMMLContainer, &OmModel::SetStatXMLContainer}) {
        OmModel model(OmStringCell("m"));
        omtest::Heap().untilFailure = 0;
        EXPECT_THROW((model.*set)("x", UINT_MAX), std::bad_alloc);
        omtest::Heap().untilFailure = -1;
        EXPECT_EQ(model.GetModelType(), 1);
        EXPECT_EQ(model.GetPMMLContainer() + model.GetStatXMLContainer(), "");
    }
}

TEST(StreamWithoutMemory, IsAsBeforeTheLargestChunk) {
    std::string const kept(100, 'a');
    OmChart chart(OmStringCell("c"), "", 1);
    chart.SetXmlDescription(kept.data(), 100);
    chart.SetBinaryDataStream(kept.data(), 100);
    chart.addCSVFileContent("y", 1);
    omtest::Heap().untilFailure = 0;
    EXPECT_THROW(chart.SetXmlDescription("x", UINT_MAX), std::bad_alloc);
    EXPECT_THROW(chart.SetBinaryDataStream("x", UINT_MAX), std::bad_alloc);
    EXPECT_THROW(chart.SetXmlCompressedLength(UINT_MAX), std::bad_alloc);
    EXPECT_THROW(chart.addCSVFileContent("x", UINT_MAX), std::bad_alloc);
    EXPECT_THROW(chart.SetMapInfo("x", UINT_MAX), std::bad_alloc);
    omtest::Heap().untilFailure = -1;
    EXPECT_EQ(chart.GetXmlDescription(), kept);
    EXPECT_EQ(chart.GetXmlData(), kept);
    EXPECT_EQ(chart.getCSVFiles(), Names{"y"});
    EXPECT_FALSE(chart.hasMap());
}

// --- room for chunks -------------------------------------------------------------------------------------------------

TEST(DescriptionsRoom, IsJustWhatTheCompressedLengthSays) {
    for (unsigned int const length : {100U, 4095U, 100000U}) {
        OmChart chart(OmStringCell("c"), "", 1);
        chart.SetXmlCompressedLength(length);
        EXPECT_EQ(chart.GetXmlDescription().capacity(), length);
    }
}

// Room for just the whole each time would be a request for every chunk.
TEST(StreamsThatJustAppend, GrowInFewSteps) {
    constexpr int Chunks = 100000;
    OmChart chart(OmStringCell("c"), "", 1);
    OmModel model(OmStringCell("m"));
    OmInteractive item(OmStringCell("i"), "", 1);
    std::string const kept;
    OmAnswerTree tree(OmStringCell("a"), kept);
    std::vector<std::function<void()>> const appends{
        [&] { chart.SetXmlDescription("x", 1); },
        [&] { chart.setVizJSONTemplate("x", 1); },
        [&] { chart.SetMapInfo("x", 1); },
        [&] { chart.addCSVFileContent("x", 1); },
        [&] { chart.addGeoJSONFileContent("x", 1); },
        [&] { model.SetPMML("x", 1); },
        [&] { model.SetPMMLContainer("x", 1); },
        [&] { model.SetStatXMLContainer("x", 1); },
        [&] { item.setInteractiveJSON("x", 1); },
        [&] { item.addGeoJSONFileContent("x", 1); },
        [&] { tree.SetPath("x", 1); },
        [&] { tree.SetCompressedXML("x", 1, 1); },
        [&] { tree.SetUncompressedXML("x", 1); },
        [&] { tree.SetUncompressedDisplayXML("x", 1); },
    };
    chart.addCSVFileName("n", 1);
    chart.addGeoJSONFileName("n", 1);
    item.addGeoJSONFileName("n", 1);
    for (auto const& append : appends) {
        EXPECT_LE(RequestsOf([&] {
                      for (int k = 0; k < Chunks; ++k) {
                          append();
                      }
                  }),
                  20);
    }
    EXPECT_EQ(chart.getCSVFiles().front().size(), static_cast<std::size_t>(Chunks));
}
