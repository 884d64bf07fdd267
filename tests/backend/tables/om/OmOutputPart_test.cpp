#include "backend/tables/om/OmOutputPart.h"

#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmPageTitle.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"
#include "tests/support/VisitLog.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::FullVisitor;
using omtest::NoSlot;
using omtest::PartVisit;
using omtest::PlainVisitor;
using omtest::SlotOf;
using omtest::Undestroyed;
using omtest::VisitsOf;

namespace {

using Visitor = OmOutputPart::Visitor;
using Calls = std::vector<std::string>;

/// The least that a part needs.
class Part : public OmOutputPart {
public:
    explicit Part(OmCellText const& title) : OmOutputPart(title) {}
    void Accept(Visitor&) override {}
};

/// Writes its end into a log of foreign texts.
class LoggedPart : public Part {
public:
    LoggedPart(ForeignLog& log, OmCellText const& title) : Part(title), _log(log) {}
    ~LoggedPart() override { _log.Add("part", "destroy"); }

private:
    ForeignLog& _log;
};

template <typename Kind>
std::size_t VisitSlot() {
    return SlotOf(static_cast<void (Visitor::*)(Kind&)>(&Visitor::Visit));
}

template <typename Value>
Value Read(OmOutputPart const& part, std::size_t offset) {
    Value value;
    std::memcpy(&value, reinterpret_cast<unsigned char const*>(&part) + offset, sizeof(value));
    return value;
}

} // namespace

// --- order of virtual operations and fields --------------------------------------------------------------------------

TEST(OmOutputPart, DestructorAndAcceptStandInTheirDocumentedOrder) {
    EXPECT_TRUE(std::has_virtual_destructor_v<OmOutputPart>);
    EXPECT_EQ(SlotOf(&OmOutputPart::Accept), 2U); // the destructor has the first two
    EXPECT_TRUE(std::is_abstract_v<OmOutputPart>);
}

TEST(OmOutputPart, AccessorsAreNotVirtual) {
    EXPECT_EQ(SlotOf(static_cast<OmCellText* (OmOutputPart::*)()>(&OmOutputPart::Title)), NoSlot);
    EXPECT_EQ(SlotOf(static_cast<void* (OmOutputPart::*)() const>(&OmOutputPart::UserData)), NoSlot);
}

TEST(OmOutputPart, FieldsStandInTheirDocumentedOrder) {
    Part part(OmStringCell("a"));
    int data = 0;
    part.UserData(&data);
    EXPECT_EQ(Read<OmCellText*>(part, sizeof(void*)), part.Title());
    EXPECT_EQ(Read<void*>(part, 2 * sizeof(void*)), &data);
    part.Visible(false);
    EXPECT_FALSE(Read<bool>(part, 3 * sizeof(void*)));
    EXPECT_TRUE(Read<bool>(part, 3 * sizeof(void*) + 1));
}

TEST(OmOutputPartVisitor, NineOverloadsStandInTheirDocumentedOrder) {
    EXPECT_EQ(VisitSlot<OmInteractive>(), 0U); // no destructor in front
    EXPECT_EQ(VisitSlot<OmModel>(), 1U);
    EXPECT_EQ(VisitSlot<OmAnswerTree>(), 2U);
    EXPECT_EQ(VisitSlot<OmChart>(), 3U);
    EXPECT_EQ(VisitSlot<OmPageTitle>(), 4U);
    EXPECT_EQ(VisitSlot<OmTextBlock>(), 5U);
    EXPECT_EQ(VisitSlot<OmHeading>(), 6U);
    EXPECT_EQ(VisitSlot<OmProcedure>(), 7U);
    EXPECT_EQ(VisitSlot<OmPivotTable>(), 8U);
}

TEST(OmOutputPartVisitor, IsAnInterfaceWithoutAVirtualDestructor) {
    EXPECT_FALSE(std::has_virtual_destructor_v<Visitor>);
    EXPECT_TRUE(std::is_abstract_v<Visitor>);
    EXPECT_EQ(sizeof(Visitor), sizeof(void*));
}

// --- the title -------------------------------------------------------------------------------------------------------

TEST(OmOutputPart, TitleIsACloneInTheDefaultHeap) {
    ForeignLog log;
    ForeignText const title(log, "t");
    Part const part(title);
    EXPECT_EQ(log.cloneRegions, std::vector<OmMemoryRegion*>{nullptr});
    EXPECT_EQ(log.Take(), Calls{"t: Clone"});
    EXPECT_NE(part.Title(), &title);
    EXPECT_EQ(static_cast<ForeignText const*>(part.Title())->name(), "t'");
}

TEST(OmOutputPart, TitleOutlivesTheTextItWasMadeFrom) {
    auto title = std::make_unique<OmStringCell>("Cross tabulation");
    Part const part(*title);
    title.reset();
    EXPECT_EQ(part.Title()->AsString(), "Cross tabulation");
}

TEST(OmOutputPart, TitleIsHandedOutForReadingAndWriting) {
    Part part(OmStringCell("a"));
    Part const& readOnly = part;
    static_assert(std::is_same_v<decltype(readOnly.Title()), OmCellText const*>);
    static_assert(std::is_same_v<decltype(part.Title()), OmCellText*>);
    EXPECT_EQ(part.Title(), readOnly.Title());
}

TEST(OmOutputPart, NothingIsMadeWhenTheTitleCannotBeCloned) {
    ForeignLog log;
    ForeignText const title(log, "t");
    log.clonesUntilFailure = 0;
    EXPECT_THROW(Part part(title), std::bad_alloc);
    EXPECT_EQ(log.alive, 1);
}

// --- the fields for the program --------------------------------------------------------------------------------------

TEST(OmOutputPart, StartsWithoutUserDataVisibleAndExpanded) {
    Part const part(OmStringCell("a"));
    EXPECT_EQ(part.UserData(), nullptr);
    EXPECT_TRUE(part.Visible());
    EXPECT_TRUE(part.Expanded());
}

TEST(OmOutputPart, FieldsForTheProgramAreReadAndWrittenOneByOne) {
    Part part(OmStringCell("a"));
    int data = 0;
    part.UserData(&data);
    EXPECT_EQ(part.UserData(), &data);
    part.Visible(false);
    EXPECT_FALSE(part.Visible());
    EXPECT_TRUE(part.Expanded());
    part.Visible(true);
    part.Expanded(false);
    EXPECT_TRUE(part.Visible());
    EXPECT_FALSE(part.Expanded());
}

// --- destruction -----------------------------------------------------------------------------------------------------

TEST(OmOutputPart, IsDestroyedThroughItsBaseWithTheTitleLast) {
    ForeignLog log;
    ForeignText const title(log, "t");
    OmOutputPart* const part = new LoggedPart(log, title);
    log.Take();
    delete part;
    EXPECT_EQ(log.Take(), (Calls{"part: destroy", "t': destroy"}));
    EXPECT_EQ(log.alive, 1);
}

// --- shallow copies --------------------------------------------------------------------------------------------------

TEST(OmOutputPartCopy, SharesTheTitleAndTakesTheOtherFields) {
    ForeignLog log;
    Part part(ForeignText(log, "t"));
    int data = 0;
    part.UserData(&data);
    part.Expanded(false);
    log.Take();
    Undestroyed<Part> copy(part);
    EXPECT_EQ(copy->Title(), part.Title());
    EXPECT_EQ(copy->UserData(), &data);
    EXPECT_TRUE(copy->Visible());
    EXPECT_FALSE(copy->Expanded());
    EXPECT_EQ(log.Take(), Calls{});
}

TEST(OmOutputPartCopy, DestroyingOneOfTheTwoDestroysTheTitle) {
    ForeignLog log;
    Undestroyed<Part> part(ForeignText(log, "t"));
    {
        Part const copy(*part);
        log.Take();
    }
    EXPECT_EQ(log.Take(), Calls{"t': destroy"});
    EXPECT_EQ(log.alive, 0);
}

// A usual assignment would destroy the title that it replaces.
TEST(OmOutputPartCopy, AssignmentSharesAndFreesNothing) {
    ForeignLog log;
    Part part(ForeignText(log, "a"));
    Undestroyed<Part> target(ForeignText(log, "b"));
    std::unique_ptr<OmCellText> const before(target->Title());
    part.Visible(false);
    log.Take();
    *target = part;
    EXPECT_EQ(log.Take(), Calls{});
    EXPECT_EQ(before->AsString(), "b");
    EXPECT_EQ(target->Title(), part.Title());
    EXPECT_FALSE(target->Visible());
}

TEST(OmOutputPartCopy, AssignmentToItselfChangesNothing) {
    ForeignLog log;
    Part part(ForeignText(log, "a"));
    Part const& same = part;
    log.Take();
    part = same;
    EXPECT_EQ(log.Take(), Calls{});
    EXPECT_EQ(part.Title()->AsString(), "a");
}

TEST(OmOutputPartCopy, EveryPartClassCanBeCopiedAndAssigned) {
    EXPECT_TRUE(std::is_copy_constructible_v<OmHeading> && std::is_copy_assignable_v<OmHeading>);
    EXPECT_TRUE(std::is_copy_constructible_v<OmProcedure> && std::is_copy_assignable_v<OmProcedure>);
    EXPECT_TRUE(std::is_copy_constructible_v<OmTextBlock> && std::is_copy_assignable_v<OmTextBlock>);
    EXPECT_TRUE(std::is_copy_constructible_v<OmPageTitle> && std::is_copy_assignable_v<OmPageTitle>);
    EXPECT_TRUE(std::is_copy_constructible_v<OmPivotTable> && std::is_copy_assignable_v<OmPivotTable>);
}

// --- dispatch --------------------------------------------------------------------------------------------------------

TEST(OmOutputPartVisitor, EveryPartCallsTheOverloadOfItsOwnClass) {
    OmHeading heading(OmStringCell("a"));
    OmProcedure procedure(OmStringCell("a"), "en", "1252", "en_US");
    OmTextBlock block(OmStringCell("a"), "1252");
    OmPageTitle pageTitle("1252");
    OmPivotTable table(OmStringCell("a"), OmStringCell("b"), false);
    EXPECT_EQ(VisitsOf<FullVisitor>(heading), (std::vector<PartVisit>{{"OmHeading", &heading}}));
    EXPECT_EQ(VisitsOf<FullVisitor>(procedure), (std::vector<PartVisit>{{"OmProcedure", &procedure}}));
    EXPECT_EQ(VisitsOf<FullVisitor>(block), (std::vector<PartVisit>{{"OmTextBlock", &block}}));
    EXPECT_EQ(VisitsOf<FullVisitor>(pageTitle), (std::vector<PartVisit>{{"OmPageTitle", &pageTitle}}));
    EXPECT_EQ(VisitsOf<FullVisitor>(table), (std::vector<PartVisit>{{"OmPivotTable", &table}}));
}

TEST(OmOutputPartVisitor, ProceduresGoToTheOverloadForHeadingsByDefault) {
    OmProcedure procedure(OmStringCell("a"), "en", "1252", "en_US");
    EXPECT_EQ(VisitsOf<PlainVisitor>(procedure), (std::vector<PartVisit>{{"OmHeading", &procedure}}));
}

TEST(OmOutputPartVisitor, PageTitlesGoToTheOverloadForTextBlocksByDefault) {
    OmPageTitle pageTitle("1252");
    EXPECT_EQ(VisitsOf<PlainVisitor>(pageTitle), (std::vector<PartVisit>{{"OmTextBlock", &pageTitle}}));
}
