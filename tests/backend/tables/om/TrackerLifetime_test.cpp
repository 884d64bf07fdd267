// A tracker dies with its table. No text that goes on without the table may point at it: texts are kept here beyond the
// end of the table whose trackers they had, and then asked for their UTF-8 form, which would read the tracker.
#include "backend/tables/om/OmChart.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmFootnote.h"
#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmModel.h"
#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using omtest::Heap;
using omtest::Text;
using Table = std::unique_ptr<OmPivotTable>;

constexpr char const* Given = "caf\xE9";
constexpr char const* Utf8 = "caf\xC3\xA9";

BackendSettings Latin9() {
    BackendSettings settings;
    settings.setUnicode(false);
    settings.setLocale("de_DE.ISO-8859-15");
    return settings;
}

/// The text inside `depth` composites, each a part of the next, and a part of every other kind on each level.
std::unique_ptr<OmComposite> Nested(int depth) {
    auto composite = std::make_unique<OmComposite>();
    composite->Append(Text(Given));
    for (int i = 1; i < depth; ++i) {
        auto outer = std::make_unique<OmComposite>();
        OmMessage message("{0}");
        message.Fill(0, *composite);
        outer->Append(message);
        outer->Append(outer->Components().Root().Child(0), OmVariable("v", "l"));
        outer->Append(OmValue(1.0, "one"));
        outer->Append(*composite);
        composite = std::move(outer);
    }
    return composite;
}

/// Trackers of the composite and of everything in the composites inside it, outermost first.
std::vector<icuTracker*> TrackersOf(OmCellText const& text) {
    std::vector<icuTracker*> trackers;
    std::vector<OmCellText const*> pending{&text};
    while (!pending.empty()) {
        OmCellText const* const one = pending.back();
        pending.pop_back();
        trackers.push_back(one->Tracker());
        if (auto const* const message = dynamic_cast<OmMessage const*>(one)) {
            pending.push_back(message->Filler(0));
        }
        if (auto const* const composite = dynamic_cast<OmComposite const*>(one)) {
            OmComposite::Tree::WalkPreOrder(composite->Components().Root(),
                                            [&](OmComposite::Tree::ConstNode const& node) {
                                                if (node.Value() != nullptr) {
                                                    pending.push_back(node.Value());
                                                }
                                                return true;
                                            });
        }
    }
    return trackers;
}

/// Whether the text is there and everything in it has this one tracker; then its UTF-8 form is read as well.
bool EverywhereHas(OmCellText const* text, icuTracker* tracker) {
    if (text == nullptr) {
        return false;
    }
    text->AsU8String();
    for (icuTracker* const each : TrackersOf(*text)) {
        if (each != tracker) {
            return false;
        }
    }
    return true;
}

/// A table in a code page, with a text of some depth in every place that gets the tracker.
Table MakeTable(OmCellText const& text) {
    auto table = std::make_unique<OmPivotTable>(text, text, false);
    table->setBackendSettings(Latin9());
    table->SetTableTitle(text);
    table->Caption(&text);
    table->CornerText(&text);
    table->Footnote(OmFootnote(text, &text, 0), false);
    OmDimension& dimension = table->AddDimension(text);
    OmDimension::Node const group = dimension.Child(dimension.Root(), text, 0, true);
    dimension.Child(group, text, 0, false);
    table->Cell({0}, text);
    return table;
}

/// Every text of the table that its end destroys, in no order that matters.
std::vector<OmCellText const*> TextsOf(OmPivotTable const& table) {
    std::vector<OmCellText const*> texts{
        table.GetTableTitle(),       table.TemplateName(),          table.Caption(), table.CornerText(),
        table.Footnotes()[0].Text(), table.Footnotes()[0].Marker(), table.Cell({0}), table.Title()};
    OmDimension::Tree::WalkPreOrder(table.Dimension(0).Root(), [&](OmDimension::ConstNode const& node) {
        texts.push_back(node.Value().Text());
        return true;
    });
    return texts;
}

// --- composites ------------------------------------------------------------------------------------------------------

TEST(TrackerDepth, EveryTextOfATableHasTheTrackerAtEveryDepth) {
    for (int const depth : {1, 2, 3, 5}) {
        SCOPED_TRACE(depth);
        Table const table = MakeTable(*Nested(depth));
        ASSERT_NE(table->getICUTracker(), nullptr);
        for (OmCellText const* const text : TextsOf(*table)) {
            EXPECT_TRUE(EverywhereHas(text, table->getICUTracker()));
        }
    }
}

TEST(TrackerDepth, TextsAtEveryDepthAreCounted) {
    EXPECT_EQ(TrackersOf(*Nested(1)).size(), 2U);
    EXPECT_EQ(TrackersOf(*Nested(2)).size(), 8U);
    EXPECT_EQ(TrackersOf(*Nested(3)).size(), 20U);
}

TEST(TrackerDepth, InnermostTextIsConvertedByIt) {
    Table const table = MakeTable(*Nested(3));
    std::string const converted = table->Cell({0})->AsU8String();
    EXPECT_NE(converted.find(Utf8), std::string::npos) << converted;
    EXPECT_EQ(converted.find('\xE9'), std::string::npos);
}

// Labels, titles and notes are visited late, cells are not.
TEST(TrackerDepth, SettingsReachEveryDepthOfEarlierTextsAndNoEarlierCell) {
    auto const text = Nested(4);
    OmPivotTable table(*text, *text, false);
    table.SetTableTitle(*text);
    table.Footnote(OmFootnote(*text, text.get(), 0), false);
    OmDimension& dimension = table.AddDimension(*text);
    dimension.Child(dimension.Root(), *text, 0, false);
    table.Caption(text.get());
    table.CornerText(text.get());
    table.Cell({0}, *text);
    table.setBackendSettings(Latin9());
    table.Cell({1}, *text);
    icuTracker* const tracker = table.getICUTracker();
    ASSERT_NE(tracker, nullptr);
    OmPivotTable const& read = table;
    for (OmCellText const* const earlier :
         std::vector<OmCellText const*>{read.Title(), read.TemplateName(), read.GetTableTitle(),
                                        read.Footnotes()[0].Text(), read.Footnotes()[0].Marker(), &dimension.Name(),
                                        dimension.Root().Child(0).Value().Text(), read.Cell({1})}) {
        EXPECT_TRUE(EverywhereHas(earlier, tracker));
    }
    for (OmCellText const* const leftOut :
         std::vector<OmCellText const*>{read.Cell({0}), read.Caption(), read.CornerText()}) {
        EXPECT_TRUE(EverywhereHas(leftOut, nullptr));
    }
}

// --- texts that go on without the table ------------------------------------------------------------------------------

TEST(TrackerLifetime, AmputatedTablesTitleTitlesABlockWithoutIt) {
    for (int const depth : {0, 1, 3}) {
        SCOPED_TRACE(depth);
        OmOutputTree tree;
        OmOutputTree::Node const procedure = tree.AppendChild(tree.Root(), new OmHeading(Text("h")));
        Table table = depth == 0 ? MakeTable(Text(Given)) : MakeTable(*Nested(depth));
        EXPECT_NE(table->Title()->Tracker(), nullptr);
        std::string const title = table->Title()->AsString();
        OmOutputTree::Node const node = tree.AppendChild(procedure, table.get());
        table.release();
        Amputate(node, nullptr, "ISO-8859-15");
        OmOutputTree::Node const block(tree, std::prev(tree.List().end()));
        ASSERT_NE(dynamic_cast<OmTextBlock*>(block.Value()), nullptr);
        EXPECT_TRUE(EverywhereHas(block.Value()->Title(), nullptr));
        EXPECT_EQ(block.Value()->Title()->AsU8String(), title);
    }
}

TEST(TrackerLifetime, BlockTitledByATablesTextIsWithoutIt) {
    Table table = MakeTable(*Nested(3));
    OmOutputTree tree;
    OmOutputTree::Node const heading = tree.AppendChild(tree.Root(), new OmHeading(Text("h")));
    OmOutputTree::Node const block = Amputate(heading, table->GetTableTitle(), "");
    table.reset();
    EXPECT_TRUE(EverywhereHas(block.Value()->Title(), nullptr));
}

TEST(TrackerLifetime, PartsTitledByATablesTextsAreWithoutIt) {
    for (int const depth : {1, 3}) {
        Table table = MakeTable(*Nested(depth));
        OmHeading const heading(*table->Title());
        OmModel const model(*table->GetTableTitle());
        OmChart const chart(*table->Cell({0}), "", 1);
        OmTextBlock const block(table->Dimension(0).Name(), "ISO-8859-15");
        OmPivotTable const other(*table->Title(), *table->Caption(), false);
        table.reset();
        EXPECT_TRUE(EverywhereHas(heading.Title(), nullptr));
        EXPECT_TRUE(EverywhereHas(model.Title(), nullptr));
        EXPECT_TRUE(EverywhereHas(chart.Title(), nullptr));
        EXPECT_TRUE(EverywhereHas(block.Title(), nullptr));
        EXPECT_TRUE(EverywhereHas(other.Title(), nullptr));
        EXPECT_TRUE(EverywhereHas(other.TemplateName(), nullptr));
    }
}

/// Every label's tracker but the name's must be null.
void ExpectNoTrackerBelow(OmDimension const& dimension) {
    int labels = 0;
    OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](OmDimension::ConstNode const& node) {
        if (node.Depth() > 0) {
            ++labels;
            EXPECT_TRUE(EverywhereHas(node.Value().Text(), nullptr));
        }
        return true;
    });
    EXPECT_EQ(labels, 2);
}

TEST(TrackerLifetime, CopiedDimensionOfATableThatDiesIsWithoutItsTracker) {
    for (int const depth : {1, 3}) {
        for (bool const tracked : {false, true}) {
            SCOPED_TRACE(tracked);
            OmPivotTable added(Text("t"), Text("t"), false);
            OmPivotTable copied(Text("t"), Text("t"), false);
            if (tracked) {
                added.setBackendSettings(Latin9());
                copied.setBackendSettings(Latin9());
            }
            Table source = MakeTable(*Nested(depth));
            added.AddDimension(source->Dimension(0));
            copied.CopyDimensions(*source);
            source.reset();
            EXPECT_TRUE(EverywhereHas(&added.Dimension(0).Name(), added.getICUTracker()));
            EXPECT_TRUE(EverywhereHas(&copied.Dimension(0).Name(), nullptr));
            ExpectNoTrackerBelow(added.Dimension(0));
            ExpectNoTrackerBelow(copied.Dimension(0));
        }
    }
}

TEST(TrackerLifetime, TextsThatAnotherTableTakesHaveThatTablesTracker) {
    for (bool const tracked : {false, true}) {
        SCOPED_TRACE(tracked);
        OmPivotTable table(Text("t"), Text("t"), false);
        if (tracked) {
            table.setBackendSettings(Latin9());
        }
        table.AddDimension(Text("d"));
        Table source = MakeTable(*Nested(3));
        table.Cell({0}, *source->Cell({0}));
        table.SetTableTitle(*source->GetTableTitle());
        table.Caption(source->Caption());
        table.CornerText(source->CornerText());
        table.Footnote(source->Footnotes()[0], false);
        OmDimension& dimension = table.Dimension(0);
        dimension.Child(dimension.Root(), source->Dimension(0).Root().Child(0).Value());
        source.reset();
        for (OmCellText const* const text :
             std::vector<OmCellText const*>{table.Cell({0}), table.GetTableTitle(), table.Caption(), table.CornerText(),
                                            table.Footnotes()[0].Text(), table.Footnotes()[0].Marker(),
                                            dimension.Root().Child(0).Value().Text()}) {
            EXPECT_TRUE(EverywhereHas(text, table.getICUTracker()));
        }
    }
}

TEST(TrackerLifetime, CopiesOnTheHeapAreWithoutIt) {
    Table table = MakeTable(*Nested(3));
    OmFootnote const footnote(table->Footnotes()[0], nullptr);
    OmDimensionNode const node(table->Dimension(0).Root().Child(0).Value(), nullptr);
    std::unique_ptr<OmCellText> const cell(table->Cell({0})->Clone(nullptr));
    table.reset();
    EXPECT_TRUE(EverywhereHas(footnote.Text(), nullptr));
    EXPECT_TRUE(EverywhereHas(footnote.Marker(), nullptr));
    EXPECT_TRUE(EverywhereHas(node.Text(), nullptr));
    EXPECT_TRUE(EverywhereHas(cell.get(), nullptr));
    EXPECT_NE(cell->AsU8String().find(Given), std::string::npos);
}

// --- the trackers themselves -----------------------------------------------------------------------------------------

// A tracker in two roles deleted in both would leave fewer blocks than before; one that nobody deletes, more.
TEST(TrackerLifetime, EachTrackerIsDeletedOnce) {
    for (bool const unicode : {true, false}) {
        SCOPED_TRACE(unicode);
        BackendSettings settings = Latin9();
        settings.setUnicode(unicode);
        std::ptrdiff_t const before = Heap().live;
        {
            OmPivotTable table(Text("t"), Text("t"), false);
            table.setBackendSettings(settings);
            EXPECT_EQ(table.getICUTracker() == table.getU8Tracker(), unicode);
            table.AddDimension(Text(Given));
            table.Cell({0}, Text(Given));
            EXPECT_EQ(table.Cell({0})->AsU8String(), unicode ? Given : Utf8);
            table.setBackendSettings(settings);
        }
        EXPECT_EQ(Heap().live, before);
    }
}

} // namespace
