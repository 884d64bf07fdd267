// Reshaping a branch of the document into a text block.

#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmTextBlock.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/LoggedPart.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::ForeignText;
using omtest::LoggedDocument;

using Node = OmOutputTree::Node;
using Calls = std::vector<std::string>;

OmTextBlock const* BlockAt(Node const& node) { return dynamic_cast<OmTextBlock const*>(node.Value()); }

} // namespace

// --- below the top-level headings

TEST(AmputateBelow, HeadingGivesWayToItsChildrenAndABlockWithItsTitle) {
    LoggedDocument document("a0 b1 h2 c3 d3 e2 f1");
    ForeignText const text(document.log, "t");
    Node const node = Amputate(document.At("h"), &text, "windows-1252");
    EXPECT_EQ(document.Titles(), "a0 b1 c2 d2 h2 e2 f1");
    EXPECT_EQ(document.Destroyed(), "h");
    EXPECT_EQ(node.Position(), document.At("c").Position());
    EXPECT_EQ(node.Level(), 2);
    EXPECT_EQ(node.Tree(), &document.tree);
    EXPECT_EQ(BlockAt(node), nullptr);
    OmTextBlock const* const block = BlockAt(document.At("h"));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->LocaleCodePage(), "windows-1252");
    EXPECT_EQ(block->Size(), 0U);
}

TEST(AmputateBelow, GrandchildrenStayBelowTheirParents) {
    LoggedDocument document("a0 b1 h2 c3 d4 e3");
    Amputate(document.At("h"), nullptr, "");
    EXPECT_EQ(document.Titles(), "a0 b1 c2 d3 e2 h2");
}

TEST(AmputateBelow, HeadingWithoutChildrenGivesWayToTheBlock) {
    LoggedDocument document("a0 b1 h2 c2");
    Node const node = Amputate(document.At("h"), nullptr, "");
    EXPECT_EQ(document.Titles(), "a0 b1 h2 c2");
    EXPECT_EQ(document.Destroyed(), "h");
    EXPECT_NE(BlockAt(node), nullptr);
    EXPECT_EQ(node.Level(), 2);
    EXPECT_EQ(node.Position(), std::next(document.tree.List().begin(), 2));
}

TEST(AmputateBelow, DeeperNodesTakeTheSameWay) {
    LoggedDocument document("a0 b1 c2 h3 d4");
    Node const node = Amputate(document.At("h"), nullptr, "");
    EXPECT_EQ(document.Titles(), "a0 b1 c2 d3 h3");
    EXPECT_EQ(node.Level(), 3);
}

// Titled by the argument, as at the top levels, the block would read "t".
TEST(AmputateBelow, TextArgumentIsNotTouched) {
    LoggedDocument document("a0 b1 h2");
    ForeignText const text(document.log, "t");
    Node const node = Amputate(document.At("h"), &text, "");
    Calls const calls = document.log.Take();
    for (std::string const& call : calls) {
        EXPECT_NE(call.substr(0, 2), "t:") << call;
    }
    EXPECT_EQ(node.Value()->Title()->AsString(), "h");
}

// The block takes its title while the part that lends it is still there.
TEST(AmputateBelow, BlockIsMadeBeforeThePartIsDestroyed) {
    LoggedDocument document("a0 b1 h2");
    Amputate(document.At("h"), nullptr, "");
    EXPECT_EQ(document.log.Take({"Clone", "part", "destroy"}), (Calls{"h': Clone", "h: part", "h': destroy"}));
}

TEST(AmputateBelow, ChildrenKeepTheirParts) {
    LoggedDocument document("a0 b1 h2 c3");
    OmOutputPart* const child = document.At("c").Value();
    EXPECT_EQ(Amputate(document.At("h"), nullptr, "").Value(), child);
}

TEST(AmputateBelow, BlockOfAPartTitledLogIsALog) {
    LoggedDocument document("a0 b1");
    omtest::LoggedPart* const part = new omtest::LoggedPart(document.log, "Log");
    Node const node = Amputate(document.tree.AppendChild(document.At("b"), part), nullptr, "");
    ASSERT_NE(BlockAt(node), nullptr);
    EXPECT_TRUE(BlockAt(node)->IsLog());
}

// The handle says 2 and the record 1: the block's place and level go by the handle, the lifting by the record, and the
// level of the handle that comes back is the one that went in.
TEST(AmputateBelow, StaleHandleIsTakenAtItsWord) {
    LoggedDocument document("a0 h1 c2 d3 e1");
    Node const stale(document.tree, document.At("h").Position(), 2);
    Node const node = Amputate(stale, nullptr, "");
    EXPECT_EQ(document.Titles(), "a0 h1 c1 d2 e1");
    EXPECT_NE(BlockAt(node), nullptr);
    EXPECT_EQ(node.Level(), 2);
}

// --- at the top levels

TEST(AmputateTop, HeadingKeepsNothingButABlock) {
    LoggedDocument document("a0 h1 c2 d3 e2 f1");
    ForeignText const text(document.log, "t");
    OmOutputPart* const heading = document.At("h").Value();
    Node const node = Amputate(document.At("h"), &text, "ibm-850");
    EXPECT_EQ(document.Titles(), "a0 h1 t2 f1");
    EXPECT_EQ(document.At("h").Value(), heading);
    EXPECT_EQ(node.Position(), document.At("t").Position());
    EXPECT_EQ(node.Level(), 2);
    ASSERT_NE(BlockAt(node), nullptr);
    EXPECT_EQ(BlockAt(node)->LocaleCodePage(), "ibm-850");
    EXPECT_EQ(BlockAt(node)->Size(), 0U);
}

TEST(AmputateTop, ChildrenAreDestroyedFirstChildFirstDeepestFirst) {
    LoggedDocument document("a0 h1 c2 d3 e3 f2");
    ForeignText const text(document.log, "t");
    Amputate(document.At("h"), &text, "");
    EXPECT_EQ(document.Destroyed(), "d e c f");
}

TEST(AmputateTop, RootKeepsNothingButABlock) {
    LoggedDocument document("a0 b1 c2 d1");
    ForeignText const text(document.log, "t");
    Node const node = Amputate(document.tree.Root(), &text, "");
    EXPECT_EQ(document.Titles(), "a0 t1");
    EXPECT_EQ(node.Level(), 1);
    EXPECT_EQ(document.Destroyed(), "c b d");
}

TEST(AmputateTop, HeadingWithoutChildrenGetsTheBlock) {
    LoggedDocument document("a0 h1 b1");
    ForeignText const text(document.log, "t");
    Node const node = Amputate(document.At("h"), &text, "");
    EXPECT_EQ(document.Titles(), "a0 h1 t2 b1");
    EXPECT_EQ(node.Level(), 2);
    EXPECT_EQ(document.Destroyed(), "");
}

// Titled by the heading, as below the top levels, the block would read "h".
TEST(AmputateTop, BlockIsTitledByACloneOfTheTextMadeAfterThePruning) {
    LoggedDocument document("a0 h1 c2");
    ForeignText const text(document.log, "t");
    Amputate(document.At("h"), &text, "");
    EXPECT_EQ(document.log.Take({"Clone", "part", "destroy"}), (Calls{"c: part", "c': destroy", "t: Clone"}));
}

TEST(AmputateTop, NullValuesAreRemovedLikeOthers) {
    LoggedDocument document("a0 h1 -2 c3 -2");
    ForeignText const text(document.log, "t");
    Amputate(document.At("h"), &text, "");
    EXPECT_EQ(document.Titles(), "a0 h1 t2");
}

TEST(AmputateTop, PartOfTheHeadingMayBeMissing) {
    LoggedDocument document("-0 c1");
    ForeignText const text(document.log, "t");
    Amputate(document.tree.Root(), &text, "");
    EXPECT_EQ(document.Titles(), "-0 t1");
}

// By the record's level, 2, the heading itself would go.
TEST(AmputateTop, CachedLevelChoosesTheWay) {
    LoggedDocument document("a0 b1 h2 c3 d1");
    ForeignText const text(document.log, "t");
    Node const stale(document.tree, document.At("h").Position(), 1);
    Node const node = Amputate(stale, &text, "");
    EXPECT_EQ(document.Titles(), "a0 b1 h2 t2 d1");
    EXPECT_EQ(node.Level(), 2);
    EXPECT_EQ(document.Destroyed(), "c");
}

// Compared as unsigned numbers, -1 would be deep below the top.
TEST(AmputateTop, CachedLevelIsComparedWithItsSign) {
    LoggedDocument document("a0 b1 c1");
    ForeignText const text(document.log, "t");
    Node const stale(document.tree, document.tree.Root().Position(), -1);
    Node const node = Amputate(stale, &text, "");
    EXPECT_EQ(document.Titles(), "a0 t0");
    EXPECT_EQ(node.Level(), 0);
    EXPECT_EQ(document.Destroyed(), "b c");
}

// --- hardened checks

#if OMTREE_HARDENED
namespace {

/// The one condition that the call reports; the document must be as before.
std::string ReportedBy(LoggedDocument& document, Node const& node, OmCellText const* text) {
    std::string const before = document.Titles();
    document.log.Take();
    AssertionCatcher const caught(AfterReport::Return);
    Node const back = Amputate(node, text, "");
    EXPECT_EQ(back, node);
    EXPECT_EQ(back.Level(), node.Level());
    EXPECT_TRUE(document.log.Take({"Clone", "destroy", "part"}).empty());
    EXPECT_EQ(document.Titles(), before);
    EXPECT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures().at(0).source, "backend/tables/om/OmOutputTree");
    return caught.Failures().at(0).condition;
}

} // namespace

TEST(AmputateChecked, EndIsReported) {
    LoggedDocument document("a0 b1");
    ForeignText const text(document.log, "t");
    EXPECT_EQ(ReportedBy(document, document.End(), &text), "node.position != end");
}

TEST(AmputateChecked, MissingPartIsReported) {
    LoggedDocument document("a0 b1 -2 c3");
    ForeignText const text(document.log, "t");
    Node const node(document.tree, std::next(document.tree.List().begin(), 2));
    EXPECT_EQ(ReportedBy(document, node, &text), "part != 0");
}

TEST(AmputateChecked, MissingTextIsReportedBeforeAnythingIsPruned) {
    LoggedDocument document("a0 b1 c2");
    EXPECT_EQ(ReportedBy(document, document.At("b"), nullptr), "text != 0");
}

TEST(AmputateChecked, ReportsReachAThrowingHandler) {
    LoggedDocument document("a0 b1 c2");
    AssertionCatcher const caught(AfterReport::Throw);
    EXPECT_THROW(Amputate(document.End(), nullptr, ""), omtest::FailedAssertion);
    EXPECT_THROW(Amputate(document.At("b"), nullptr, ""), omtest::FailedAssertion);
    EXPECT_EQ(document.Titles(), "a0 b1 c2");
}
#endif

TEST(AmputateChecked, MissingTextIsNoMatterBelowTheTopLevels) {
    LoggedDocument document("a0 b1 h2");
    AssertionCatcher const caught(AfterReport::Return);
    Amputate(document.At("h"), nullptr, "");
    EXPECT_TRUE(caught.Failures().empty());
}
