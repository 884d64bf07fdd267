// Display properties, style tables and format areas of a table: stored as given.
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmCellProperties.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::Text;

class Table : public OmPivotTable {
public:
    Table() : OmPivotTable(Text("title"), Text("template"), false) {}
};

/// A getter and its setter, what the getter gives first, and values that must come back.
template <typename Value, typename Get, typename Set>
void ExpectPair(Get get, Set set, Value const& initial, std::vector<Value> const& values) {
    Table table;
    EXPECT_EQ((std::as_const(table).*get)(), initial);
    for (Value const& value : values) {
        (table.*set)(value);
        EXPECT_EQ((std::as_const(table).*get)(), value);
    }
}

using BoolGet = bool (OmPivotTable::*)() const;
using BoolSet = void (OmPivotTable::*)(bool);
using IntGet = int (OmPivotTable::*)() const;
using IntSet = void (OmPivotTable::*)(int);
using LongGet = long (OmPivotTable::*)() const;
using LongSet = void (OmPivotTable::*)(long);
using StringGet = std::string const& (OmPivotTable::*)() const;
using StringSet = void (OmPivotTable::*)(std::string const&);
using WidthsGet = std::vector<unsigned int> const& (OmPivotTable::*)() const;
using WidthsSet = void (OmPivotTable::*)(std::vector<unsigned int> const&);

void ExpectBool(BoolGet get, BoolSet set, bool initial) {
    ExpectPair<bool>(get, set, initial, {!initial, initial, !initial});
}

constexpr int Smallest = std::numeric_limits<int>::min();
constexpr int Largest = std::numeric_limits<int>::max();

void ExpectInt(IntGet get, IntSet set, int initial) {
    ExpectPair<int>(get, set, initial, {0, 7, -1, -300, Smallest, Largest});
}

void ExpectColor(LongGet get, LongSet set) {
    ExpectPair<long>(
        get, set, -1,
        {0, 255, 0xFFFFFF, -2, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()});
}

void ExpectString(StringGet get, StringSet set) {
    ExpectPair<std::string>(get, set, "", {"a", "<border width=\"2\"/>", std::string("a\0b", 3), ""});
}

void ExpectWidths(WidthsGet get, WidthsSet set) {
    ExpectPair<std::vector<unsigned int>>(get, set, {}, {{1, 2, 3}, {4294967295U}, {}});
}

// --- plain pairs -----------------------------------------------------------------------------------------------------

TEST(PivotTableProperties, FlagsThatStartTrue) {
    ExpectBool(&OmPivotTable::Show, &OmPivotTable::Show, true);
    ExpectBool(&OmPivotTable::showCaption, &OmPivotTable::showCaption, true);
    ExpectBool(&OmPivotTable::fastTable, &OmPivotTable::setFastTable, true);
    ExpectBool(&OmPivotTable::backendOwns, &OmPivotTable::setBackendOwns, true);
}

TEST(PivotTableProperties, FlagsThatStartFalse) {
    ExpectBool(&OmPivotTable::RotateRowLabels, &OmPivotTable::RotateRowLabels, false);
    ExpectBool(&OmPivotTable::RotateColumnLabels, &OmPivotTable::RotateColumnLabels, false);
    ExpectBool(&OmPivotTable::getImputed, &OmPivotTable::setImputed, false);
    ExpectBool(&OmPivotTable::getLabelsOnly, &OmPivotTable::setLabelsOnly, false);
}

TEST(PivotTableProperties, NumbersThatStartAtMinusOne) {
    ExpectInt(&OmPivotTable::OptionNumber, &OmPivotTable::OptionNumber, -1);
    ExpectInt(&OmPivotTable::MinColumnWidth, &OmPivotTable::MinColumnWidth, -1);
    ExpectInt(&OmPivotTable::MaxColumnWidth, &OmPivotTable::MaxColumnWidth, -1);
    ExpectInt(&OmPivotTable::MinRowWidth, &OmPivotTable::MinRowWidth, -1);
    ExpectInt(&OmPivotTable::MaxRowWidth, &OmPivotTable::MaxRowWidth, -1);
    ExpectInt(&OmPivotTable::getLayerLoc, &OmPivotTable::setLayerLoc, -1);
}

TEST(PivotTableProperties, NumbersThatStartAtZero) {
    ExpectInt(&OmPivotTable::getLang, &OmPivotTable::setLang, 0);
    ExpectInt(&OmPivotTable::getVariableMode, &OmPivotTable::setVariableMode, 0);
    ExpectInt(&OmPivotTable::getValueMode, &OmPivotTable::setValueMode, 0);
}

TEST(PivotTableProperties, TableIdHasSixtyFourBits) {
    using Get = long long (OmPivotTable::*)() const;
    using Set = void (OmPivotTable::*)(long long);
    Get const get = &OmPivotTable::TableId;
    Set const set = &OmPivotTable::TableId;
    ExpectPair<long long>(
        get, set, -1, {0, 1LL << 40, std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max(), -1});
}

TEST(PivotTableProperties, ColorsStartAtMinusOne) {
    ExpectColor(&OmPivotTable::getStartColor, &OmPivotTable::setStartColor);
    ExpectColor(&OmPivotTable::getEndColor, &OmPivotTable::setEndColor);
}

TEST(PivotTableProperties, StringsStartEmpty) {
    ExpectString(&OmPivotTable::TableLocale, &OmPivotTable::TableLocale);
    ExpectString(&OmPivotTable::getBorderInfo, &OmPivotTable::setBorderInfo);
    ExpectString(&OmPivotTable::getTableLookInfo, &OmPivotTable::setTableLookInfo);
    ExpectString(&OmPivotTable::getTablePropertiesInfo, &OmPivotTable::setTablePropertiesInfo);
}

TEST(PivotTableProperties, WidthsAndHeightsAreReplacedWhole) {
    ExpectWidths(&OmPivotTable::getTableCustomWidths, &OmPivotTable::setTableCustomWidths);
    ExpectWidths(&OmPivotTable::getTableCustomHeights, &OmPivotTable::setTableCustomHeights);
}

// A setter that wrote its neighbour's field would pass every test of one pair.
TEST(PivotTableProperties, EachHasAPlaceOfItsOwn) {
    Table table;
    table.OptionNumber(1);
    table.MinColumnWidth(2);
    table.MaxColumnWidth(3);
    table.MinRowWidth(4);
    table.MaxRowWidth(5);
    table.setLayerLoc(6);
    table.TableId(7);
    table.setLang(8);
    table.setVariableMode(9);
    table.setValueMode(10);
    table.setStartColor(11);
    table.setEndColor(12);
    EXPECT_EQ((std::vector<long long>{table.OptionNumber(), table.MinColumnWidth(), table.MaxColumnWidth(),
                                      table.MinRowWidth(), table.MaxRowWidth(), table.getLayerLoc(), table.TableId(),
                                      table.getLang(), table.getVariableMode(), table.getValueMode(),
                                      table.getStartColor(), table.getEndColor()}),
              (std::vector<long long>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));

    table.TableLocale("l");
    table.setBorderInfo("b");
    table.setTableLookInfo("t");
    table.setTablePropertiesInfo("p");
    table.addMiscProperty("m");
    EXPECT_EQ(table.TableLocale() + table.getBorderInfo() + table.getTableLookInfo() + table.getTablePropertiesInfo() +
                  table.getMiscProperties(),
              "lbtpm");
    table.setTableCustomWidths({1});
    table.setTableCustomHeights({2});
    EXPECT_EQ(table.getTableCustomWidths(), (std::vector<unsigned int>{1}));
}

TEST(PivotTableProperties, EachFlagHasAPlaceOfItsOwn) {
    std::vector<std::pair<BoolGet, BoolSet>> const flags{
        {&OmPivotTable::Show, &OmPivotTable::Show},
        {&OmPivotTable::RotateRowLabels, &OmPivotTable::RotateRowLabels},
        {&OmPivotTable::RotateColumnLabels, &OmPivotTable::RotateColumnLabels},
        {&OmPivotTable::showCaption, &OmPivotTable::showCaption},
        {&OmPivotTable::getImputed, &OmPivotTable::setImputed},
        {&OmPivotTable::getLabelsOnly, &OmPivotTable::setLabelsOnly},
        {&OmPivotTable::fastTable, &OmPivotTable::setFastTable},
        {&OmPivotTable::backendOwns, &OmPivotTable::setBackendOwns},
        {&OmPivotTable::HasRemovedFootnotes, &OmPivotTable::RemovedFootnotes},
        {&OmPivotTable::IsScratched, &OmPivotTable::Scratch}};
    Table table;
    for (auto const& flag : flags) {
        (table.*flag.second)(false);
    }
    for (auto const& raised : flags) {
        (table.*raised.second)(true);
        for (auto const& flag : flags) {
            EXPECT_EQ((table.*flag.first)(), &flag == &raised);
        }
        (table.*raised.second)(false);
    }
}

// --- misc properties -------------------------------------------------------------------------------------------------

TEST(PivotTableProperties, MiscPropertiesAreJoinedByOneComma) {
    Table table;
    EXPECT_EQ(table.getMiscProperties(), "");
    table.addMiscProperty("a");
    EXPECT_EQ(table.getMiscProperties(), "a");
    table.addMiscProperty("b");
    EXPECT_EQ(table.getMiscProperties(), "a,b");
}

TEST(PivotTableProperties, EmptyMiscPropertyStillAddsAComma) {
    Table table;
    table.addMiscProperty("");
    EXPECT_EQ(table.getMiscProperties(), "");
    table.addMiscProperty("a");
    table.addMiscProperty("");
    EXPECT_EQ(table.getMiscProperties(), "a,");
    table.addMiscProperty("");
    EXPECT_EQ(table.getMiscProperties(), "a,,");
}

TEST(PivotTableProperties, MiscPropertiesAreNotEscaped) {
    Table table;
    table.addMiscProperty("a,b");
    table.addMiscProperty("\"c\"");
    EXPECT_EQ(table.getMiscProperties(), "a,b,\"c\"");
}

TEST(PivotTableProperties, StoredMiscPropertiesCanBeAddedToThemselves) {
    Table table;
    table.addMiscProperty("a");
    table.addMiscProperty(table.getMiscProperties());
    EXPECT_EQ(table.getMiscProperties(), "a,a");
}

// --- style tables ----------------------------------------------------------------------------------------------------

TEST(PivotTableProperties, StyleTablesAreHandedOutForChange) {
    Table table;
    OmPivotTable const& constTable = table;
    EXPECT_TRUE(table.emptyCellStyles().empty());
    EXPECT_TRUE(table.cellStyles().empty());
    EXPECT_EQ(&constTable.getEmptyCellStyles(), &table.emptyCellStyles());
    EXPECT_EQ(&constTable.getCellStyles(), &table.cellStyles());

    constTable.getEmptyCellStyles()[~std::uint64_t{0}] = 65535;
    constTable.getCellStyles().push_back(OmCellProperties{"#102030", "", "Sans", 2});
    EXPECT_EQ(table.emptyCellStyles().at(~std::uint64_t{0}), 65535);
    EXPECT_EQ(table.cellStyles().at(0).font, "Sans");
    EXPECT_TRUE((std::is_same_v<decltype(table.emptyCellStyles()), std::map<std::uint64_t, std::uint16_t>&>));
    EXPECT_TRUE((std::is_same_v<decltype(table.cellStyles()), std::vector<OmCellProperties>&>));
}

// --- format areas ----------------------------------------------------------------------------------------------------

FormatArea::Area Beyond(int area) { return static_cast<FormatArea::Area>(area); }

TEST(PivotTableFormats, AreNullUntilSet) {
    Table const table;
    for (int area = -1; area < 12; ++area) {
        EXPECT_EQ(table.getAreaFormat(Beyond(area)), nullptr);
    }
}

TEST(PivotTableFormats, NineAreasAreKeptApart) {
    Table table;
    std::vector<FormatArea*> formats;
    for (int area = 0; area < 9; ++area) {
        formats.push_back(new FormatArea(Beyond(area)));
        table.setAreaFormat(formats.back());
    }
    for (int area = 0; area < 9; ++area) {
        EXPECT_EQ(table.getAreaFormat(Beyond(area)), formats[static_cast<std::size_t>(area)]);
    }
}

TEST(PivotTableFormats, NullIsIgnored) {
    Table table;
    auto* const format = new FormatArea(FormatArea::Title);
    table.setAreaFormat(format);
    table.setAreaFormat(nullptr);
    EXPECT_EQ(table.getAreaFormat(FormatArea::Title), format);
}

TEST(PivotTableFormats, SecondFormatTakesThePlaceOfTheFirst) {
    Table table;
    table.setAreaFormat(new FormatArea(FormatArea::Data));
    auto* const second = new FormatArea(FormatArea::Data);
    table.setAreaFormat(second);
    EXPECT_EQ(table.getAreaFormat(FormatArea::Data), second);
}

TEST(PivotTableFormats, AreaNineIsStoredButNeverRead) {
    Table table;
    table.setAreaFormat(new FormatArea(Beyond(9)));
    EXPECT_EQ(table.getAreaFormat(Beyond(9)), nullptr);
    EXPECT_EQ(table.getAreaFormat(FormatArea::Table), nullptr);
}

// Past the ninth area the first format is dropped, not destroyed: it is still its maker's. The table destroys the one
// that it holds at the end.
TEST(PivotTableFormats, SecondFormatForAreaNineLeavesTheFirstAlive) {
    Table table;
    auto const first = std::make_unique<FormatArea>(Beyond(9));
    first->setFontName("first");
    table.setAreaFormat(first.get());
    table.setAreaFormat(new FormatArea(Beyond(9)));
    EXPECT_EQ(first->getFontName(), "first");
}

// The bound is on one side: an unsigned comparison would refuse what is below zero.
TEST(PivotTableFormats, AreaBelowZeroIsReadBack) {
    Table table;
    auto* const format = new FormatArea(Beyond(-1));
    table.setAreaFormat(format);
    EXPECT_EQ(table.getAreaFormat(Beyond(-1)), format);
}

// Preconditions that are left to the caller are checked unless the build says otherwise.
#if OMTREE_HARDENED

TEST(PivotTableFormats, StoredObjectIsReportedAndStays) {
    Table table;
    auto* const format = new FormatArea(FormatArea::Corner);
    format->setFontName("kept");
    table.setAreaFormat(format);
    AssertionCatcher const caught(AfterReport::Return);
    table.setAreaFormat(format);
    ASSERT_EQ(caught.Failures().size(), 1U);
    EXPECT_EQ(caught.Failures()[0].source, "backend/tables/om/OmPivotTable");
    EXPECT_EQ(caught.Failures()[0].condition, "format != getAreaFormat(format->getArea())");
    EXPECT_GT(caught.Failures()[0].line, 0);
    EXPECT_EQ(table.getAreaFormat(FormatArea::Corner), format);
    EXPECT_EQ(format->getFontName(), "kept");
}

#endif

TEST(PivotTableFormats, StoredFormatCanBeChangedThroughAConstTable) {
    Table table;
    table.setAreaFormat(new FormatArea(FormatArea::Layers));
    std::as_const(table).getAreaFormat(FormatArea::Layers)->setFontSize(9.5F);
    EXPECT_EQ(table.getAreaFormat(FormatArea::Layers)->getFontSize(), 9.5F);
}

} // namespace
