#include "backend/tables/om/OmInteractive.h"

#include "omcell/OmStringCell.h"
#include "tests/support/ForeignText.h"
#include "tests/support/PartTitleInCodePage.h"
#include "tests/support/SlotOrder.h"
#include "tests/support/Undestroyed.h"
#include "tests/support/VisitLog.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>
#include <vector>

namespace {

using omtest::SlotOf;
using omtest::Undestroyed;

using Strings = std::vector<std::string>;

class OmInteractiveTest : public ::testing::Test {
protected:
    void Name(std::string const& name) { item.addGeoJSONFileName(name.data(), static_cast<unsigned int>(name.size())); }
    void Content(std::string const& chunk) {
        item.addGeoJSONFileContent(chunk.data(), static_cast<unsigned int>(chunk.size()));
    }

    OmInteractive item{OmStringCell("item"), "", 7};
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OmInteractive, PartTitleInCodePage, ::testing::Types<OmInteractive>);

TEST_F(OmInteractiveTest, NewItemIsEmpty) {
    EXPECT_EQ(item.LocaleCodePage(), "");
    EXPECT_FALSE(item.hasGeoJSONFile());
    EXPECT_TRUE(item.getGeoJSONFileNames().empty());
    EXPECT_TRUE(item.getGeoJSONContent().empty());
    EXPECT_EQ(item.getInteractiveJSON(), "");
    EXPECT_EQ(item.getProcedureName(), "");
    EXPECT_EQ(item.getJSONPath(), "");
    EXPECT_EQ(item.getOptions(), "");
}

TEST(OmInteractive, KeepsCodePageAndIdOfSixtyFourBits) {
    OmInteractive const item(OmStringCell("t"), "ibm-850", std::numeric_limits<long long>::min());
    EXPECT_EQ(item.LocaleCodePage(), "ibm-850");
    EXPECT_EQ(item.getInteractiveId(), std::numeric_limits<long long>::min());
}

TEST_F(OmInteractiveTest, AcceptCallsTheVisitorsOverloadForInteractiveItems) {
    EXPECT_EQ(omtest::VisitsOf<omtest::FullVisitor>(item), (std::vector<omtest::PartVisit>{{"OmInteractive", &item}}));
}

TEST(OmInteractive, AcceptIsTheOnlyVirtualOperationBesidesTheDestructor) {
    EXPECT_EQ(SlotOf(&OmInteractive::Accept), 2U);
    EXPECT_EQ(SlotOf(&OmInteractive::addGeoJSONFileName), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmInteractive::addGeoJSONFileContent), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmInteractive::setInteractiveJSON), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmInteractive::setProcedureName), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmInteractive::setJSONPath), omtest::NoSlot);
    EXPECT_EQ(SlotOf(&OmInteractive::setOptions), omtest::NoSlot);
}

TEST(OmInteractive, HoldsTheBaseAndOnePointer) {
    EXPECT_EQ(sizeof(OmInteractive), sizeof(OmOutputPart) + sizeof(void*));
}

TEST_F(OmInteractiveTest, ChunksOfTheJSONAreJoined) {
    item.setInteractiveJSON("ab", 2);
    item.setInteractiveJSON("cdef", 2);
    EXPECT_EQ(item.getInteractiveJSON(), "abcd");
}

TEST_F(OmInteractiveTest, ZeroBytesAreKept) {
    item.setInteractiveJSON("\0a\0", 3);
    item.setInteractiveJSON("\0", 1);
    EXPECT_EQ(item.getInteractiveJSON(), std::string("\0a\0\0", 4));
    Name(std::string("n\0m", 3));
    Content(std::string("c\0", 2));
    Content(std::string("\0d", 2));
    EXPECT_EQ(item.getGeoJSONFileNames(), Strings{std::string("n\0m", 3)});
    EXPECT_EQ(item.getGeoJSONContent(), Strings{std::string("c\0\0d", 4)});
}

TEST_F(OmInteractiveTest, ChunkOfNoBytesAddsNothingWhateverItsAddress) {
    item.setInteractiveJSON(nullptr, 0);
    EXPECT_EQ(item.getInteractiveJSON(), "");
    item.addGeoJSONFileName(nullptr, 0);
    item.addGeoJSONFileContent(nullptr, 0);
    item.addGeoJSONFileContent("x", 1);
    item.addGeoJSONFileContent(nullptr, 0);
    EXPECT_EQ(item.getGeoJSONFileNames(), Strings{""});
    EXPECT_EQ(item.getGeoJSONContent(), Strings{"x"});
}

TEST_F(OmInteractiveTest, ThreeTextsAreReplacedEachOnItsOwn) {
    item.setProcedureName("old");
    item.setProcedureName("procedure");
    item.setJSONPath("old");
    item.setJSONPath("path");
    item.setOptions("old");
    item.setOptions("options");
    EXPECT_EQ(item.getProcedureName(), "procedure");
    EXPECT_EQ(item.getJSONPath(), "path");
    EXPECT_EQ(item.getOptions(), "options");
    EXPECT_EQ(item.getInteractiveJSON(), "");
}

TEST_F(OmInteractiveTest, ContentsBelongToTheNamesTheyFollow) {
    Name("x");
    Content("1");
    Content("2");
    Name("y");
    Content("3");
    EXPECT_EQ(item.getGeoJSONFileNames(), (Strings{"x", "y"}));
    EXPECT_EQ(item.getGeoJSONContent(), (Strings{"12", "3"}));
}

TEST_F(OmInteractiveTest, ChunksBeforeAnyNameAreContentsOfTheirOwn) {
    Content("1");
    Content("2");
    EXPECT_EQ(item.getGeoJSONContent(), (Strings{"1", "2"}));
}

TEST_F(OmInteractiveTest, HasGeoJSONFileAfterANameAloneButNotAfterContentAlone) {
    Content("1");
    EXPECT_FALSE(item.hasGeoJSONFile());
    Name("x");
    EXPECT_TRUE(item.hasGeoJSONFile());
}

TEST_F(OmInteractiveTest, CopySharesTitleAndRecord) {
    Undestroyed<OmInteractive> copy(item);
    EXPECT_EQ(copy->Title(), item.Title());
    copy->setInteractiveJSON("x", 1);
    copy->setOptions("o");
    EXPECT_EQ(item.getInteractiveJSON(), "x");
    EXPECT_EQ(item.getOptions(), "o");
    EXPECT_EQ(copy->getInteractiveId(), 7);
}

TEST(OmInteractive, AssignmentSharesAndDropsWhatWasThereWithoutDestroyingIt) {
    omtest::ForeignLog log;
    {
        OmInteractive const source(omtest::ForeignText(log, "s"), "", 1);
        OmInteractive const former(omtest::ForeignText(log, "f"), "", 2);
        Undestroyed<OmInteractive> target(former);
        log.Take();
        *target = source;
        EXPECT_TRUE(log.Take().empty());
        EXPECT_EQ(target->Title(), source.Title());
        EXPECT_EQ(target->getInteractiveId(), 1);
        EXPECT_EQ(former.getInteractiveId(), 2);
    }
    EXPECT_EQ(log.alive, 0);
}

TEST(OmInteractive, OneOfTwoCopiesDestroysTitleAndRecord) {
    omtest::ForeignLog log;
    auto* const source = new OmInteractive(omtest::ForeignText(log, "t"), "", 1);
    source->setInteractiveJSON("some bytes that are longer than a short string", 46);
    OmInteractive* const copy = new OmInteractive(*source);
    EXPECT_EQ(copy->getInteractiveJSON().size(), 46U);
    EXPECT_EQ(log.alive, 1);
    delete copy;
    EXPECT_EQ(log.alive, 0);
    ::operator delete(source); // the storage alone
}
