// Backend settings, trackers, and the visitor that attaches them.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/ICUHelper.h"
#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using omtest::ForeignLog;
using omtest::ForeignSpec;
using omtest::ForeignText;
using omtest::SlotOf;
using omtest::Text;
using omtest::TrackerOf;
using Log = std::vector<std::string>;

class Table : public OmPivotTable {
public:
    Table() : OmPivotTable(Text("title"), Text("template"), false) {}
};

BackendSettings Settings(bool fast, bool unicode, std::string const& locale = "de_DE.UTF-8") {
    BackendSettings settings;
    settings.setFastTables(fast);
    settings.setUnicode(unicode);
    settings.setLocale(locale);
    return settings;
}

/// The tracker that the table's visitor attaches.
icuTracker* AttachedBy(OmPivotTable& table) {
    icuTracker before({true, "before"});
    OmStringCell text("probe");
    text.SetTracker(&before);
    table.setHelper(text);
    return text.Tracker();
}

/// What a text reads as, and whether it has this tracker: "a+" or "a-".
std::string Marked(OmCellText const* text, icuTracker const* tracker) {
    return text->AsString() + (text->Tracker() == tracker ? "+" : "-");
}

// --- the record ------------------------------------------------------------------------------------------------------

TEST(PivotTableSettings, NewTableHasDefaultSettingsAndNoTrackers) {
    Table const table;
    BackendSettings const defaults;
    EXPECT_EQ(table.getBackendSettings().getMaxCells(), defaults.getMaxCells());
    EXPECT_EQ(table.getBackendSettings().getLocale(), defaults.getLocale());
    EXPECT_EQ(table.getICUTracker(), nullptr);
    EXPECT_EQ(table.getU8Tracker(), nullptr);
    EXPECT_TRUE(table.fastTable());
}

TEST(PivotTableSettings, AreCopiedAndHandedOutForChange) {
    Table table;
    BackendSettings settings = Settings(false, false);
    settings.setMaxCells(12);
    table.setBackendSettings(settings);
    settings.setMaxCells(13);
    EXPECT_EQ(table.getBackendSettings().getMaxCells(), 12);
    EXPECT_EQ(table.getBackendSettings().getLocale(), "de_DE.UTF-8");
    EXPECT_FALSE(table.getBackendSettings().getUnicode());
    table.getBackendSettings().setMaxCells(14);
    EXPECT_EQ(table.getBackendSettings().getMaxCells(), 14);
    table.setBackendSettings(table.getBackendSettings());
    EXPECT_EQ(table.getBackendSettings().getMaxCells(), 14);
}

// --- making the trackers ---------------------------------------------------------------------------------------------

TEST(PivotTableSettings, UnicodeDataHasOneTrackerInTwoRoles) {
    Table table;
    table.setBackendSettings(Settings(true, true));
    ASSERT_NE(table.getICUTracker(), nullptr);
    EXPECT_EQ(table.getU8Tracker(), table.getICUTracker());
    EXPECT_TRUE(table.getICUTracker()->Unicode());
    EXPECT_EQ(table.getICUTracker()->Locale(), "de_DE.UTF-8");
}

TEST(PivotTableSettings, OtherDataHasTwoTrackers) {
    Table table;
    table.setBackendSettings(Settings(true, false, "de_DE.ISO-8859-15"));
    ASSERT_NE(table.getICUTracker(), nullptr);
    ASSERT_NE(table.getU8Tracker(), nullptr);
    EXPECT_NE(table.getU8Tracker(), table.getICUTracker());
    EXPECT_FALSE(table.getICUTracker()->Unicode());
    EXPECT_EQ(table.getICUTracker()->Locale(), "de_DE.ISO-8859-15");
    EXPECT_TRUE(table.getU8Tracker()->Unicode());
    EXPECT_EQ(table.getU8Tracker()->Locale(), "de_DE.ISO-8859-15");
}

// Making a new tracker for a new locale would leave earlier texts with a dead one.
TEST(PivotTableSettings, LaterCallsReplaceNoTracker) {
    for (bool const unicode : {true, false}) {
        Table table;
        table.setBackendSettings(Settings(true, unicode));
        icuTracker* const tracker = table.getICUTracker();
        icuTracker* const u8Tracker = table.getU8Tracker();
        table.setBackendSettings(Settings(true, !unicode, "ja_JP.Shift_JIS"));
        EXPECT_EQ(table.getICUTracker(), tracker);
        EXPECT_EQ(table.getU8Tracker(), u8Tracker);
        EXPECT_EQ(tracker->Locale(), "de_DE.UTF-8");
        EXPECT_EQ(tracker->Unicode(), unicode);
        EXPECT_EQ(table.getBackendSettings().getLocale(), "ja_JP.Shift_JIS");
    }
}

TEST(PivotTableSettings, WithoutFastTablesNoTrackerIsMade) {
    Table table;
    table.setBackendSettings(Settings(false, true));
    table.setBackendSettings(Settings(false, false));
    EXPECT_FALSE(table.fastTable());
    EXPECT_EQ(table.getICUTracker(), nullptr);
    EXPECT_EQ(table.getU8Tracker(), nullptr);
}

TEST(PivotTableSettings, FastFlagIsOverwrittenByTheSettings) {
    Table table;
    table.setFastTable(false);
    table.setBackendSettings(Settings(true, true));
    EXPECT_TRUE(table.fastTable());
    EXPECT_NE(table.getICUTracker(), nullptr);
    table.setBackendSettings(Settings(false, true));
    EXPECT_FALSE(table.fastTable());
    table.setFastTable(true);
    EXPECT_TRUE(table.fastTable());
}

TEST(PivotTableSettings, TrackersAreMadeAtTheFirstCallWithFastTables) {
    Table table;
    table.setBackendSettings(Settings(false, false, "first"));
    table.setBackendSettings(Settings(true, true, "second"));
    ASSERT_NE(table.getICUTracker(), nullptr);
    EXPECT_EQ(table.getICUTracker()->Locale(), "second");
}

TEST(PivotTableSettings, TrackersStayWhenFastTablesGoOff) {
    Table table;
    table.setBackendSettings(Settings(true, false));
    icuTracker* const tracker = table.getICUTracker();
    icuTracker* const u8Tracker = table.getU8Tracker();
    table.setBackendSettings(Settings(false, false));
    EXPECT_EQ(table.getICUTracker(), tracker);
    EXPECT_EQ(table.getU8Tracker(), u8Tracker);
    EXPECT_EQ(AttachedBy(table), tracker);
}

// --- which texts get it ----------------------------------------------------------------------------------------------

TEST(PivotTableSettings, CellStoredBeforeKeepsNoTrackerAndOneStoredAfterGetsIt) {
    Table table;
    table.AddDimension(Text("d"));
    table.Cell({0}, Text("before"));
    table.setBackendSettings(Settings(true, true));
    table.Cell({1}, Text("after"));
    EXPECT_EQ(TrackerOf(table.Cell({0})), nullptr);
    ASSERT_NE(table.getICUTracker(), nullptr);
    EXPECT_EQ(TrackerOf(table.Cell({1})), table.getICUTracker());
}

TEST(PivotTableSettings, CellsGetTheTrackerOfTheDataAndNotTheOther) {
    Table table;
    table.AddDimension(Text("d"));
    table.setBackendSettings(Settings(true, false));
    table.Cell({0}, Text("a"));
    EXPECT_EQ(TrackerOf(table.Cell({0})), table.getICUTracker());
}

// Whatever tracker a text brought along is of another document.
TEST(PivotTableSettings, WithoutTrackersTextsAreDetached) {
    Table table;
    EXPECT_EQ(AttachedBy(table), nullptr);
    table.setBackendSettings(Settings(false, true));
    EXPECT_EQ(AttachedBy(table), nullptr);
    table.setBackendSettings(Settings(true, true));
    EXPECT_EQ(AttachedBy(table), table.getICUTracker());
}

TEST(PivotTableSettings, TitlesAndTemplateNameGetIt) {
    Table table;
    table.SetTableTitle(Text("table title"));
    table.setBackendSettings(Settings(true, true));
    icuTracker* const tracker = table.getICUTracker();
    ASSERT_NE(tracker, nullptr);
    EXPECT_EQ(TrackerOf(table.Title()), tracker);
    EXPECT_EQ(TrackerOf(table.TemplateName()), tracker);
    EXPECT_EQ(TrackerOf(table.GetTableTitle()), tracker);
}

// All texts but these two (and the cells) are visited.
TEST(PivotTableSettings, CornerTextAndCaptionAreLeftOut) {
    ForeignLog log;
    Table table;
    ForeignText const corner(log, "corner");
    ForeignText const caption(log, "caption");
    table.CornerText(&corner);
    table.Caption(&caption);
    log.Take();
    table.setBackendSettings(Settings(true, true));
    EXPECT_EQ(log.Take(), Log());
    EXPECT_EQ(TrackerOf(table.CornerText()), nullptr);
    EXPECT_EQ(TrackerOf(table.Caption()), nullptr);
}

TEST(PivotTableSettings, TextsSetAfterwardsGetIt) {
    Table table;
    table.setBackendSettings(Settings(true, true));
    icuTracker* const tracker = table.getICUTracker();
    OmStringCell const text("a");
    table.CornerText(&text);
    table.Caption(&text);
    table.SetTableTitle(text);
    table.Footnote(OmFootnote(text, &text, 0), false);
    OmDimension& dimension = table.AddDimension(text);
    OmDimension::Node const child = dimension.Child(dimension.Root(), text, 0, false);
    for (OmCellText const* const held : std::vector<OmCellText const*>{
             table.CornerText(), table.Caption(), table.GetTableTitle(), table.Footnotes()[0].Text(),
             table.Footnotes()[0].Marker(), &dimension.Name(), child.Value().Text()}) {
        EXPECT_EQ(TrackerOf(held), tracker);
    }
    EXPECT_NE(tracker, nullptr);
}

TEST(PivotTableSettings, EveryLabelOfEveryDimensionGetsIt) {
    Table table;
    for (char const* const name : {"d", "e"}) {
        OmDimension& dimension = table.AddDimension(Text(name));
        OmDimension::Node group = dimension.Child(dimension.Root(), Text("group"), 9, true);
        group.Value().Hide(true);
        dimension.Child(dimension.Child(group, Text("inner"), 9, true), Text("leaf"), 0, false);
        dimension.Child(dimension.Root(), Text("last"), 1, false);
    }
    table.setBackendSettings(Settings(true, true));
    ASSERT_NE(table.getICUTracker(), nullptr);
    std::string labels;
    for (int k = 0; k < 2; ++k) {
        OmDimension::Tree::WalkPreOrder(table.Dimension(k).Root(), [&](OmDimension::ConstNode const& node) {
            labels += Marked(node.Value().Text(), table.getICUTracker()) + " ";
            return true;
        });
    }
    EXPECT_EQ(labels, "d+ group+ inner+ leaf+ last+ e+ group+ inner+ leaf+ last+ ");
}

TEST(PivotTableSettings, FootnoteTextsAndMarkersGetIt) {
    Table table;
    OmStringCell const marker("m");
    table.Footnote(OmFootnote(Text("a"), &marker, 0), false);
    table.Footnote(OmFootnote(Text("b")), false);
    table.Footnote(OmFootnote(), false);
    table.setBackendSettings(Settings(true, true));
    icuTracker* const tracker = table.getICUTracker();
    ASSERT_NE(tracker, nullptr);
    EXPECT_EQ(TrackerOf(table.Footnotes()[0].Text()), tracker);
    EXPECT_EQ(TrackerOf(table.Footnotes()[0].Marker()), tracker);
    EXPECT_EQ(TrackerOf(table.Footnotes()[1].Text()), tracker);
    EXPECT_EQ(table.Footnotes()[1].Marker(), nullptr);
}

TEST(PivotTableSettings, TextsAreTakenInOrder) {
    ForeignLog log;
    OmPivotTable table(ForeignText(log, "title"), ForeignText(log, "template"), false);
    table.SetTableTitle(ForeignText(log, "table"));
    for (char const* const name : {"d", "e"}) {
        OmDimension& dimension = table.AddDimension(ForeignText(log, name));
        for (char const* const label : {"1", "2"}) {
            dimension.AddNewChild(dimension.Root(), ForeignText(log, label, name + std::string(label)), 0, true);
        }
    }
    ForeignText const marker(log, "marker");
    table.Footnote(OmFootnote(ForeignText(log, "note"), &marker, 0), false);
    table.Footnote(OmFootnote(ForeignText(log, "note 2")), false);
    log.Take();
    table.setBackendSettings(Settings(true, true));
    Log taken = log.Take({"Accept", "SetTracker"});
    for (std::string& entry : taken) {
        entry.erase(entry.find('\''),
                    entry.find(": ") - entry.find('\'')); // how often a label is cloned is its own affair
    }
    EXPECT_EQ(taken,
              (Log{"title: Accept", "template: Accept", "table: Accept", "d: SetTracker(set)", "1: SetTracker(set)",
                   "2: SetTracker(set)", "e: SetTracker(set)", "1: SetTracker(set)", "2: SetTracker(set)",
                   "note: SetTracker(set)", "marker: SetTracker(set)", "note 2: SetTracker(set)"}));
    table.setBackendSettings(Settings(true, true));
    EXPECT_EQ(log.Take(), Log());
}

// What the table's own record says while each text is told: everything but the UTF-8 tracker is in place.
TEST(PivotTableSettings, TextsAreToldBetweenTheTwoTrackers) {
    ForeignLog log;
    OmPivotTable* known = nullptr;
    Log seen;
    ForeignSpec spec{"t", "t"};
    spec.accept = [&](ForeignText& text, OmCellText::Visitor& visitor) {
        if (known == nullptr) {
            return;
        }
        OmStringCell probe("probe");
        probe.Accept(visitor);
        seen.push_back(text.name() + " " + known->getBackendSettings().getLocale() +
                       (known->fastTable() ? " fast" : " slow") +
                       (known->getICUTracker() != nullptr ? " tracker" : " none") +
                       (probe.Tracker() == known->getICUTracker() ? " attached" : " detached") +
                       (known->getU8Tracker() != nullptr ? " both" : " one"));
    };
    OmPivotTable table(ForeignText(log, spec), ForeignText(log, spec), false);
    table.SetTableTitle(ForeignText(log, spec));
    table.setFastTable(false);
    known = &table;
    table.setBackendSettings(Settings(true, true, "here"));
    EXPECT_EQ(seen, Log(3, "t' here fast tracker attached one"));
    EXPECT_NE(table.getU8Tracker(), nullptr);
}

// A dimension's number is there when its name is visited; a copied dimension has another table's until then.
TEST(PivotTableSettings, AddedDimensionKnowsItsNumberBeforeItsNameIsVisited) {
    ForeignLog log;
    Table other;
    Table table;
    std::vector<int> numbers;
    ForeignSpec spec{"d", "d"};
    spec.accept = [&](ForeignText&, OmCellText::Visitor&) {
        if (table.NDimensions() != 0) {
            numbers.push_back(table.Dimension(static_cast<int>(table.NDimensions()) - 1).Index());
        }
    };
    OmDimension const& source = other.AddDimension(ForeignText(log, spec));
    table.AddDimension(ForeignText(log, spec));
    table.AddDimension(ForeignText(log, spec));
    table.AddDimension(source);
    EXPECT_EQ(numbers, (std::vector<int>{0, 1, 2}));
}

TEST(PivotTableSettings, NamesOfCopiedDimensionsGetItOnlyWhenTheyAreAdded) {
    Table source;
    source.AddDimension(Text("d"));
    source.setBackendSettings(Settings(true, true));
    Table table;
    table.setBackendSettings(Settings(true, true));
    table.CopyDimensions(source);
    table.AddDimension(source.Dimension(0));
    EXPECT_EQ(TrackerOf(&table.Dimension(0).Name()), nullptr);
    EXPECT_EQ(TrackerOf(&table.Dimension(1).Name()), table.getICUTracker());
}

// --- the visitor -----------------------------------------------------------------------------------------------------

template <typename Kind>
std::size_t VisitSlot() {
    return SlotOf(static_cast<void (OmPivotTable::ICUHelper::*)(Kind&)>(&OmPivotTable::ICUHelper::Visit));
}

TEST(PivotTableVisitor, HasItsDestructorAndSevenVisitsInOrder) {
    EXPECT_TRUE((std::is_base_of_v<OmCellText::Visitor, OmPivotTable::ICUHelper>));
    EXPECT_TRUE(std::has_virtual_destructor_v<OmPivotTable::ICUHelper>);
    EXPECT_EQ(VisitSlot<OmComposite>(), 2U);
    EXPECT_EQ(VisitSlot<OmStringCell>(), 3U);
    EXPECT_EQ(VisitSlot<OmNumber>(), 4U);
    EXPECT_EQ(VisitSlot<OmVariable>(), 5U);
    EXPECT_EQ(VisitSlot<OmValue>(), 6U);
    EXPECT_EQ(VisitSlot<OmMessage>(), 7U);
    EXPECT_EQ(VisitSlot<OmBlank>(), 8U);
}

TEST(PivotTableVisitor, HoldsOnePointer) {
    EXPECT_EQ(sizeof(OmPivotTable::ICUHelper), sizeof(OmCellText::Visitor) + sizeof(void*));
}

TEST(PivotTableVisitor, AttachesToEveryKindButTheBlank) {
    Table table;
    table.setBackendSettings(Settings(true, true));
    icuTracker* const tracker = table.getICUTracker();
    ASSERT_NE(tracker, nullptr);
    OmStringCell text("a");
    OmNumber number(1.5);
    OmVariable variable("sex", "Sex");
    OmValue value(1.0, "Male");
    OmMessage message("{0} missing");
    OmComposite composite;
    OmBlank blank;
    for (OmCellText* const each :
         std::vector<OmCellText*>{&text, &number, &variable, &value, &message, &composite, &blank}) {
        table.setHelper(*each);
    }
    EXPECT_EQ(text.Tracker(), tracker);
    EXPECT_EQ(number.Tracker(), tracker);
    EXPECT_EQ(variable.Tracker(), tracker);
    EXPECT_EQ(value.Tracker(), tracker);
    EXPECT_EQ(message.Tracker(), tracker);
    EXPECT_EQ(composite.Tracker(), tracker);
    EXPECT_EQ(blank.Tracker(), nullptr);
}

TEST(PivotTableVisitor, LeavesTheTrackerOfABlank) {
    Table table;
    icuTracker tracker({true, "own"});
    OmBlank blank;
    blank.SetTracker(&tracker);
    table.setHelper(blank);
    EXPECT_EQ(blank.Tracker(), &tracker);
}

TEST(PivotTableVisitor, AsksTheTextToAcceptIt) {
    ForeignLog log;
    Table table;
    ForeignText text(log, "a");
    table.setHelper(text);
    EXPECT_EQ(log.Take(), (Log{"a: Accept"}));
}

// "+" behind every text of the composite's tree, to any depth.
std::string PartsOf(OmComposite const& composite, icuTracker const* tracker) {
    std::string parts = composite.Tracker() == tracker ? "composite+" : "composite-";
    OmComposite::Tree::WalkPreOrder(composite.Components().Root(), [&](OmComposite::Tree::ConstNode const& node) {
        if (node.Value() != nullptr) {
            parts += " " + Marked(node.Value(), tracker);
        }
        return true;
    });
    return parts;
}

TEST(PivotTableVisitor, AttachesToEveryPartOfAComposite) {
    Table table;
    table.setBackendSettings(Settings(true, true));
    OmComposite composite;
    OmComposite::Tree::Node const first = composite.Append(Text("a"));
    composite.Append(first, Text("b"));
    composite.Append(OmNumber(2));
    composite.Append(composite.Components().Root().Child(1), Text("c"));
    EXPECT_EQ(PartsOf(composite, table.getICUTracker()), "composite- a- b- 2- c-");
    table.setHelper(composite);
    EXPECT_EQ(PartsOf(composite, table.getICUTracker()), "composite+ a+ b+ 2+ c+");
}

TEST(PivotTableVisitor, TellsEachPartOnceDepthFirst) {
    ForeignLog log;
    Table table;
    table.setBackendSettings(Settings(true, true));
    OmComposite inner;
    inner.Append(ForeignText(log, "c"));
    OmComposite composite;
    OmComposite::Tree::Node const first = composite.Append(ForeignText(log, "a"));
    composite.Append(first, ForeignText(log, "b"));
    composite.Append(inner);
    composite.Append(ForeignText(log, "d"));
    log.Take();
    table.setHelper(composite);
    EXPECT_EQ(log.Take(),
              (Log{"a': SetTracker(set)", "b': SetTracker(set)", "c'': SetTracker(set)", "d': SetTracker(set)"}));
}

TEST(PivotTableVisitor, PartThatIsACompositeHandsTheTrackerOn) {
    Table table;
    table.setBackendSettings(Settings(true, true));
    OmComposite inner;
    inner.Append(Text("a"));
    OmComposite composite;
    composite.Append(inner);
    table.setHelper(composite);
    auto const* const part = dynamic_cast<OmComposite const*>(composite.Components().Root().Child(0).Value());
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(PartsOf(*part, table.getICUTracker()), "composite+ a+");
}

TEST(PivotTableVisitor, DetachesTheWholeCompositeWithoutTrackers) {
    Table table;
    icuTracker tracker({true, "own"});
    OmComposite composite;
    composite.Append(Text("a"));
    composite.SetTracker(&tracker);
    EXPECT_EQ(PartsOf(composite, &tracker), "composite+ a+");
    table.setHelper(composite);
    EXPECT_EQ(PartsOf(composite, nullptr), "composite+ a+");
}

TEST(PivotTableVisitor, StoredCompositeHasTheTrackerInEveryPart) {
    Table table;
    table.AddDimension(Text("d"));
    table.setBackendSettings(Settings(true, true));
    OmComposite composite;
    composite.Append(Text("a"));
    table.Cell({0}, composite);
    auto const* const stored = dynamic_cast<OmComposite const*>(table.Cell({0}));
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(PartsOf(*stored, table.getICUTracker()), "composite+ a+");
}

} // namespace
