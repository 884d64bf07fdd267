// The two debug dumps, byte for byte.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmNumber.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::CapturedOutput;
using omtest::RawDump;
using omtest::RawShape;
using omtest::Text;

class Table : public OmPivotTable {
public:
    explicit Table(int dimensions = 0) : OmPivotTable(Text("part title"), Text("template"), false) {
        for (int k = 0; k < dimensions; ++k) {
            AddDimension(Text("d" + std::to_string(k)));
        }
    }
};

std::string PrintOf(OmPivotTable const& table) {
    CapturedOutput const output;
    table.Print();
    return output.Text();
}

std::string AddressOf(void const* place) {
    std::ostringstream text;
    text << place;
    return text.str();
}

// --- the table -------------------------------------------------------------------------------------------------------

TEST(PivotTableDump, EmptyTableNamesItselfTwice) {
    Table table;
    table.SetTableTitle(Text("T"));
    EXPECT_EQ(PrintOf(table), "Starting table T\n"
                              "Cells\n"
                              "Done with table T\n");
}

TEST(PivotTableDump, WritesEverythingInOrder) {
    Table table;
    table.SetTableTitle(Text("T"));
    OmDimension& sex = table.AddDimension(Text("Sex"));
    OmDimension::Node const adults = sex.Child(sex.Root(), Text("Adults"), ~0ULL, true);
    sex.Child(adults, Text("Male"), 0, false);
    sex.Child(adults, Text("Female"), 1, false);
    sex.Child(sex.Root(), Text("Unknown"), 2, false).Value().Hide(true);
    OmDimension& statistic = table.AddDimension(Text("Statistic"));
    statistic.Child(statistic.Root(), Text("Count"), 0, false);
    table.Cell({2, 0}, Text("third"));
    table.Cell({0, 0}, Text("first"));
    OmStringCell const corner("corner");
    OmStringCell const caption("caption");
    OmStringCell const marker("m");
    table.CornerText(&corner);
    table.Caption(&caption);
    table.Footnote(OmFootnote(Text("note a"), &marker, 0), false);
    table.Footnote(OmFootnote(Text("note b"), nullptr, -7), false);
    table.setAreaFormat(new FormatArea(FormatArea::Data));
    EXPECT_EQ(PrintOf(table),
              "Starting table T\n"
              "Subscript: -1, Group: yes, hide: no, hideLabels: no, Children: 0, 1, Text: \"Sex\"\n"
              "  Subscript: -1, Group: yes, hide: no, hideLabels: no, Children: 1, 0, Text: \"Adults\"\n"
              "    Subscript: 0, Group: no, hide: no, hideLabels: no, Text: \"Male\"\n"
              "    Subscript: 1, Group: no, hide: no, hideLabels: no, Text: \"Female\"\n"
              "  Subscript: 2, Group: no, hide: yes, hideLabels: no, Text: \"Unknown\"\n"
              "Subscript: -1, Group: yes, hide: no, hideLabels: no, Children: 0, Text: \"Statistic\"\n"
              "  Subscript: 0, Group: no, hide: no, hideLabels: no, Text: \"Count\"\n"
              "Cells\n"
              "first\n"
              "third\n"
              "  Corner Text: corner\n"
              "  Caption: caption\n"
              "  Footnotes\n"
              "      note a\n"
              "      note b\n"
              "Done with table T\n");
}

TEST(PivotTableDump, EachPartIsLeftOutByItself) {
    Table table;
    table.SetTableTitle(Text("T"));
    OmStringCell const text("x");
    table.Caption(&text);
    EXPECT_EQ(PrintOf(table), "Starting table T\nCells\n  Caption: x\nDone with table T\n");
    table.Caption(nullptr);
    table.CornerText(&text);
    EXPECT_EQ(PrintOf(table), "Starting table T\nCells\n  Corner Text: x\nDone with table T\n");
    table.CornerText(nullptr);
    table.Footnote(OmFootnote(text), true);
    EXPECT_EQ(PrintOf(table), "Starting table T\nCells\n  Footnotes\n      x\nDone with table T\n");
}

// The formatted string would read 1.50, and `Print` of a text puts quotes around it.
TEST(PivotTableDump, TextsAreShownAsTheirPlainString) {
    Table table(1);
    OmNumber::Format format;
    format.type = OmNumber::FixedFormat;
    format.decimals = 2;
    OmNumber const number(1.5, format);
    ASSERT_EQ(number.AsFormattedString(), "1.50");
    table.SetTableTitle(number);
    table.Cell({0}, number);
    table.Caption(&number);
    EXPECT_EQ(PrintOf(table), "Starting table 1.5\n"
                              "Subscript: -1, Group: yes, hide: no, hideLabels: no, Text: \"d0\"\n"
                              "Cells\n"
                              "1.5\n"
                              "  Caption: 1.5\n"
                              "Done with table 1.5\n");
}

TEST(PivotTableDump, ShowsTheTableTitleAndNotThePartsTitle) {
    Table table;
    table.SetTableTitle(Text("T"));
    EXPECT_EQ(PrintOf(table).find("part title"), std::string::npos);
}

TEST(PivotTableDump, FootnoteWithoutTextIsAnEmptyLine) {
    Table table;
    table.SetTableTitle(Text("T"));
    table.Footnote(OmFootnote(), false);
    EXPECT_EQ(PrintOf(table), "Starting table T\nCells\n  Footnotes\n      \nDone with table T\n");
}

// Preconditions that are left to the caller are checked unless the build says otherwise.
#if OMTREE_HARDENED

TEST(PivotTableDump, WithoutATableTitleItIsReportedAndWritesNothing) {
    Table table(1);
    table.Cell({0}, Text("a"));
    AssertionCatcher const caught(AfterReport::Return);
    EXPECT_EQ(PrintOf(table), "");
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/OmPivotTable");
    EXPECT_EQ(caught.Failures()[0].condition, "_my->_tableTitle != 0");
    EXPECT_GT(caught.Failures()[0].line, 0);
}

#endif

// --- the raw store ---------------------------------------------------------------------------------------------------

TEST(PivotTableRawDump, StoreWithoutARootIsOneNullLine) {
    EXPECT_EQ(RawDump(Table(0)), "0\n");
    EXPECT_EQ(RawDump(Table(3)), "0\n");
}

TEST(PivotTableRawDump, ShowsEveryEntryWithItsAddress) {
    Table table(1);
    table.Cell({2}, Text("two"));
    table.Cell({0}, Text("zero"));
    std::string const dump = RawDump(table);
    std::size_t const firstLine = dump.find('\n') + 1;
    EXPECT_EQ(dump.substr(firstLine), "    [0] " + AddressOf(table.Cell({0})) +
                                          " - zero\n"
                                          "    [1] 0\n"
                                          "    [2] " +
                                          AddressOf(table.Cell({2})) + " - two\n");
    EXPECT_EQ(RawShape(table).substr(0, 2), "@\n");
}

// The index is written once for each level, the same number every time.
TEST(PivotTableRawDump, RepeatsTheIndexForEachLevel) {
    Table table(3);
    table.Cell({1, 0, 2}, Text("a"));
    table.Cell({0, 1, 2}, Text("b"));
    EXPECT_EQ(RawShape(table), "@\n"
                               "    [0] 0\n"
                               "    [1] 0\n"
                               "    [2] @\n"
                               "    [0]     [0] @\n"
                               "    [0]     [0]     [0] 0\n"
                               "    [1]     [1]     [1] @ - a\n"
                               "    [1]     [1] @\n"
                               "    [0]     [0]     [0] @ - b\n");
}

TEST(PivotTableRawDump, NodesHaveAddressesOfTheirOwn) {
    Table table(2);
    table.Cell({0, 0}, Text("a"));
    table.Cell({0, 1}, Text("b"));
    std::istringstream dump(RawDump(table));
    std::set<std::string> addresses;
    for (std::string word; dump >> word;) {
        if (word.compare(0, 2, "0x") == 0) {
            EXPECT_TRUE(addresses.insert(word).second) << word;
        }
    }
    EXPECT_EQ(addresses.size(), 5U); // the root, two leaves, two cells
}

TEST(PivotTableRawDump, EmptyTextStillHasItsDash) {
    Table table(1);
    table.Cell({0}, Text(""));
    EXPECT_EQ(RawShape(table), "@\n    [0] @ - \n");
}

} // namespace
