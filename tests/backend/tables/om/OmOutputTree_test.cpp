#include "backend/tables/om/OmOutputTree.h"

#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmStringCell.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/LoggedPart.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::LoggedDocument;
using omtest::LoggedPart;
using omtest::TitlesOf;

using Node = OmOutputTree::Node;
using Generic = ListTree<OmOutputPart*>;

OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

/// Writes the outline: each part's kind and title, indented by its level.
class OutlineWriter : public OmOutputPart::Visitor {
public:
    using OmOutputPart::Visitor::Visit;

    std::string text;
    int level = 0;

    void Visit(OmInteractive&) override { text += "?"; }
    void Visit(OmModel&) override { text += "?"; }
    void Visit(OmAnswerTree&) override { text += "?"; }
    void Visit(OmChart&) override { text += "?"; }
    void Visit(OmTextBlock& part) override { Line("block", part); }
    void Visit(OmHeading& part) override { Line("heading", part); }
    void Visit(OmPivotTable& part) override { Line("table", part); }

private:
    void Line(char const* kind, OmOutputPart const& part) {
        text += std::string(static_cast<std::size_t>(level), ' ') + kind + " " + part.Title()->AsString() + "\n";
    }
};

std::string OutlineOf(OmOutputTree& tree) {
    OutlineWriter writer;
    for (OmOutputTree::Record const& record : tree.List()) {
        writer.level = record.level;
        record.value->Accept(writer);
    }
    return writer.text;
}

} // namespace

// --- making

TEST(OmOutputTree, NewTreeIsAHeadingTitledOutput) {
    OmOutputTree tree;
    ASSERT_EQ(tree.Size(), 1);
    EXPECT_EQ(tree.Root().Level(), 0);
    ASSERT_NE(tree.Root().Value(), nullptr);
    OmOutputPart& part = *tree.Root().Value();
    EXPECT_EQ(typeid(part), typeid(OmHeading));
    EXPECT_EQ(part.Title()->AsString(), "Output");
}

TEST(OmOutputTree, TheWordOutputIsTheSameInEveryLanguage) {
    OmOutputTree tree;
    auto const* const title = dynamic_cast<OmStringCell const*>(tree.Root().Value()->Title());
    ASSERT_NE(title, nullptr);
    EXPECT_TRUE(title->Flag());
}

TEST(OmOutputTree, IsAListTreeAndAddsNoData) {
    static_assert(std::is_convertible_v<OmOutputTree*, Generic*>);
    static_assert(sizeof(OmOutputTree) == sizeof(Generic));
    static_assert(!std::is_polymorphic_v<OmOutputTree>);
    OmOutputTree tree;
    Generic& generic = tree;
    EXPECT_EQ(generic.Size(), 1);
}

// A program may link the list tree of parts instead of compiling it.
TEST(OmOutputTree, LibraryExportsEveryListTreeOperation) {
    Dl_info library;
    ASSERT_NE(dladdr(reinterpret_cast<void*>(dlsym(RTLD_DEFAULT, "_ZN12OmOutputTreeC1Ev")), &library), 0);
    ASSERT_NE(std::string(library.dli_fname).find("libomtree.so"), std::string::npos) << library.dli_fname;
    std::unique_ptr<void, int (*)(void*)> const handle(dlopen(library.dli_fname, RTLD_NOW | RTLD_NOLOAD), dlclose);
    ASSERT_NE(handle, nullptr);
    for (char const* const operation :
         {"C1ERKS1_", "C1ERS1_", "aSERKS2_", "5PruneERKNS2_4NodeE", "5EraseERNS2_4NodeE", "7FlattenERNS2_4NodeE",
          "4MoveERKNS2_4NodeES5_S5_", "4RootEv", "11AppendChildERKNS2_4NodeES1_"}) {
        std::string const name = std::string("_ZN8ListTreeIP12OmOutputPartE") + operation;
        EXPECT_NE(dlsym(handle.get(), name.c_str()), nullptr) << name;
    }
    for (char const* const operation : {"4SizeEv", "4RootEv", "6IsLeafERKNS2_9ConstNodeE"}) {
        std::string const name = std::string("_ZNK8ListTreeIP12OmOutputPartE") + operation;
        EXPECT_NE(dlsym(handle.get(), name.c_str()), nullptr) << name;
    }
}

// --- copying and destroying

TEST(OmOutputTree, CopySharesTheParts) {
    LoggedDocument document("a0 b1 -2");
    {
        OmOutputTree copy(document.tree);
        ASSERT_EQ(copy.Size(), 3);
        EXPECT_EQ(copy.Root().Value(), document.tree.Root().Value());
        EXPECT_TRUE(copy == document.tree);
        copy.List().clear(); // of the two, the document destroys
    }
    EXPECT_TRUE(document.log.Take({"Clone", "destroy", "part"}).empty());
}

TEST(OmOutputTree, AssignmentSharesThePartsAndDropsTheOldOnesWithoutDestroyingThem) {
    LoggedDocument source("a0 b1");
    LoggedDocument target("x0 y1");
    Generic const dropped(target.tree);
    EXPECT_EQ(&(target.tree = source.tree), &target.tree);
    EXPECT_EQ(target.Destroyed(), "");
    EXPECT_TRUE(source.log.Take({"Clone", "destroy"}).empty());
    EXPECT_TRUE(target.tree == source.tree);

    static_cast<Generic&>(target.tree) = dropped;
}

TEST(OmOutputTree, SelfAssignmentDoesNothing) {
    LoggedDocument document("a0 b1");
    OmOutputTree const& same = document.tree;
    document.tree = same;
    EXPECT_EQ(document.Titles(), "a0 b1");
    EXPECT_EQ(document.Destroyed(), "");
}

// Post-order, as in pruning, would be "c b e d a".
TEST(OmOutputTree, DestructorDestroysFromTheFirstRecordToTheLast) {
    LoggedDocument document("a0 b1 c2 d1 e2");
    auto tree = std::make_unique<OmOutputTree>(document.tree);
    document.tree.List().clear();
    tree.reset();
    EXPECT_EQ(document.Destroyed(), "a b c d e");
}

TEST(OmOutputTree, DestructorPassesOverNullValues) {
    LoggedDocument document("-0 a1 -2 b1 -1");
    auto tree = std::make_unique<OmOutputTree>(document.tree);
    document.tree.List().clear();
    tree.reset();
    EXPECT_EQ(document.Destroyed(), "a b");
}

TEST(OmOutputTree, EachPartIsDestroyedThroughItsVirtualDestructor) {
    LoggedDocument document("a0");
    Node root = document.tree.Root();
    document.tree.Prune(root);
    EXPECT_EQ(document.log.Take({"part", "destroy"}), (std::vector<std::string>{"a: part", "a': destroy"}));
}

// --- Prune

TEST(OmOutputTree, PruneDestroysChildrenBeforeTheirParentFirstChildFirst) {
    LoggedDocument document("a0 b1 c2 d3 e2 f1 g2");
    Node node = document.At("b");
    document.tree.Prune(node);
    EXPECT_EQ(document.Titles(), "a0 f1 g2");
    EXPECT_EQ(document.Destroyed(), "d c e b");
}

TEST(OmOutputTree, PruneOfTheRootDestroysEveryPartAndLeavesAnEmptyList) {
    LoggedDocument document("a0 b1 c2 d1");
    Node root = document.tree.Root();
    document.tree.Prune(root);
    EXPECT_TRUE(document.tree.List().empty());
    EXPECT_EQ(document.Destroyed(), "c b d a");
    EXPECT_EQ(document.log.alive, 0);
}

TEST(OmOutputTree, PruneOfALeafDestroysItAlone) {
    LoggedDocument document("a0 b1 c2 d1");
    Node node = document.At("c");
    document.tree.Prune(node);
    EXPECT_EQ(document.Titles(), "a0 b1 d1");
    EXPECT_EQ(document.Destroyed(), "c");
}

TEST(OmOutputTree, PrunePassesOverNullValues) {
    LoggedDocument document("a0 b1 -2 c3 -2");
    Node node = document.At("b");
    document.tree.Prune(node);
    EXPECT_EQ(document.Titles(), "a0");
    EXPECT_EQ(document.Destroyed(), "c b");
}

TEST(OmOutputTree, PruneKeepsOtherHandlesValid) {
    LoggedDocument document("a0 b1 c2 d1");
    Node const other = document.At("d");
    Node node = document.At("b");
    document.tree.Prune(node);
    EXPECT_EQ(other.Value()->Title()->AsString(), "d");
}

// --- Erase

TEST(OmOutputTree, EraseDestroysThePartAndLiftsItsChildren) {
    LoggedDocument document("a0 b1 c2 d3 e2 f1");
    Node node = document.At("b");
    document.tree.Erase(node);
    EXPECT_EQ(document.Titles(), "a0 c1 d2 e1 f1");
    EXPECT_EQ(document.Destroyed(), "b");
}

TEST(OmOutputTree, EraseOfAProcedureKeepsItsTables) {
    OmOutputTree tree;
    Node procedure =
        tree.AppendChild(tree.Root(), new OmProcedure(Text("Cross tabulation"), "en", "windows-1252", "en_US"));
    OmPivotTable* const first = new OmPivotTable(Text("First"), Text("Table"), false);
    OmPivotTable* const second = new OmPivotTable(Text("Second"), Text("Table"), false);
    tree.AppendChild(procedure, first);
    tree.AppendChild(procedure, second);
    tree.Erase(procedure);
    ASSERT_EQ(tree.Size(), 3);
    auto const place = std::next(tree.List().begin());
    EXPECT_EQ(place->value, first);
    EXPECT_EQ(place->level, 1);
    EXPECT_EQ(std::next(place)->value, second);
    EXPECT_EQ(std::next(place)->level, 1);
}

TEST(OmOutputTree, ErasePassesOverANullValue) {
    LoggedDocument document("a0 b1");
    Node root = document.tree.Root();
    delete std::exchange(root.Value(), nullptr);
    document.tree.Erase(root);
    EXPECT_EQ(document.Titles(), "b0");
    EXPECT_EQ(document.Destroyed(), "a");
}

TEST(OmOutputTree, EraseGoesByTheRecordsLevel) {
    LoggedDocument document("a0 b1 c2 d3 e2");
    Node const stale(document.tree, document.At("b").Position(), 3);
    Node node = stale;
    document.tree.Erase(node);
    EXPECT_EQ(document.Titles(), "a0 c1 d2 e1");
}

// --- what is inherited

TEST(OmOutputTree, InheritedOperationsDestroyNoPart) {
    LoggedDocument document("a0 b1 c2 d1 e1");
    Generic const parts(document.tree);
    Generic& generic = document.tree;
    Node node = document.At("b");
    generic.Flatten(node);
    generic.Erase(node);
    generic.Prune(document.At("d"));
    EXPECT_EQ(document.Titles(), "a0 c1 e1");
    EXPECT_EQ(document.Destroyed(), "");
    generic = parts;
    EXPECT_EQ(document.Titles(), "a0 b1 c2 d1 e1");
}

TEST(OmOutputTree, PartsMoveFromDocumentToDocument) {
    LoggedDocument here("a0 b1");
    {
        LoggedDocument there("x0 y1 z2 w1");
        here.tree.Move(here.At("b"), there.At("y"), there.At("w"));
        EXPECT_EQ(there.Titles(), "x0 w1");
        EXPECT_EQ(here.Titles(), "a0 y1 z2 b1");
        Node moved = here.At("y");
        here.tree.Prune(moved); // they log into the document that they come from
        EXPECT_EQ(there.Destroyed(), "z y");
    }
}

// --- hardened checks

#if OMTREE_HARDENED
TEST(OmOutputTreeEnd, PruneAndEraseReportTheEnd) {
    LoggedDocument document("a0 b1");
    AssertionCatcher const caught(AfterReport::Throw);
    Node end = document.End();
    EXPECT_THROW(document.tree.Prune(end), omtest::FailedAssertion);
    EXPECT_THROW(document.tree.Erase(end), omtest::FailedAssertion);
    ASSERT_EQ(caught.Failures().size(), 2U);
    for (AssertionCatcher::Failure const& failure : caught.Failures()) {
        EXPECT_EQ(failure.condition, "node.position != end");
        EXPECT_EQ(failure.source, "backend/tables/om/OmOutputTree");
    }
}

TEST(OmOutputTreeEnd, PruneAndEraseDoNothingWhenTheHandlerReturns) {
    LoggedDocument document("a0 b1");
    AssertionCatcher const caught(AfterReport::Return);
    Node end = document.End();
    document.tree.Prune(end);
    document.tree.Erase(end);
    EXPECT_EQ(caught.Failures().size(), 2U);
    EXPECT_EQ(document.Titles(), "a0 b1");
    EXPECT_EQ(document.Destroyed(), "");
}
#endif

// --- in use

TEST(OmOutputTree, IsGrownWalkedAndPruned) {
    OmOutputTree tree;
    Node procedure =
        tree.AppendChild(tree.Root(), new OmProcedure(Text("Cross tabulation"), "en", "windows-1252", "en_US"));
    EXPECT_EQ(procedure.Level(), 1);
    Node const table =
        tree.AppendChild(procedure, new OmPivotTable(Text("Age by sex"), Text("Cross tabulation"), false));
    EXPECT_EQ(table.Level(), 2);
    tree.AppendChild(tree.Root(), new OmTextBlock(Text("Log"), ""));
    EXPECT_EQ(OutlineOf(tree), "heading Output\n"
                               " heading Cross tabulation\n"
                               "  table Age by sex\n"
                               " block Log\n");
    tree.Prune(procedure);
    EXPECT_EQ(OutlineOf(tree), "heading Output\n"
                               " block Log\n");
}
