// What a table destroys, in which order, and that it leaves nothing behind.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmCellMetaData.h"
#include "platform/BackendSettings.h"
#include "platform/icuTracker.h"
#include "tests/support/FailingHeap.h"
#include "tests/support/ForeignText.h"
#include "tests/support/MuteText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace {

using omtest::ForeignLog;
using omtest::ForeignText;
using omtest::Heap;
using omtest::Text;
using Log = std::vector<std::string>;

BackendSettings Settings(bool unicode) {
    BackendSettings settings;
    settings.setUnicode(unicode);
    settings.setLocale("a locale name too long to lie inside its string");
    return settings;
}

/// A text that writes down, as it is destroyed, whether its region was swept by then and whether its tracker still
/// answers.
class Witness final : public OmCellText {
public:
    Witness(Log& log, std::string name, OmMemoryRegion* region = nullptr)
        : OmCellText(region), _log(log), _name(std::move(name)) {}
    ~Witness() override {
        if (!Home()->IsDefaultHeap()) {
            _log.push_back(_name + (Home()->LiveBlocks() == 0 ? " swept" : " live") +
                           (_tracker != nullptr ? " " + _tracker->Locale() : ""));
        }
    }
    void Accept(Visitor& visitor) override {
        OmStringCell probe("");
        probe.Accept(visitor);
        SetTracker(probe.Tracker());
    }
    short OrderCode() const override { return 99; }
    std::string AsString() const override { return _name; }
    std::string AsU8String() const override { return _name; }
    std::string AsEngString() const override { return _name; }
    short Compare(OmCellText const& other) const override {
        return static_cast<short>(_name == other.AsString() ? 0 : 1);
    }
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) Witness(_log, _name, region); }

private:
    Log& _log;
    std::string _name; ///< one letter: a cell's destructor does not run
};

// --- the order of destruction ----------------------------------------------------------------------------------------

// The sweep takes the cells without asking them; a table that destroyed each would cost as much to end as to build.
TEST(PivotTableEnd, CellsAreNotDestroyedOneByOneButTextsAndLabelsAre) {
    ForeignLog log;
    auto table = std::make_unique<OmPivotTable>(ForeignText(log, "title"), ForeignText(log, "template"), false);
    ForeignText const text(log, "text");
    table->CornerText(&text);
    table->Caption(&text);
    table->SetTableTitle(text);
    table->Footnote(OmFootnote(ForeignText(log, "note"), &text, 0), false);
    OmDimension& dimension = table->AddDimension(ForeignText(log, "d"));
    dimension.Child(dimension.Root(), ForeignText(log, "label"), 0, false);
    for (int k = 0; k < 50; ++k) {
        table->Cell({k}, ForeignText(log, "cell"));
    }
    log.Take();
    int const before = log.alive;
    table.reset();
    Log const destroyed = log.Take();
    EXPECT_EQ(before - log.alive, static_cast<int>(destroyed.size()));
    auto const count = [&](std::string const& name) {
        return std::count_if(destroyed.begin(), destroyed.end(), [&](std::string const& entry) {
            return entry.substr(0, entry.find_first_of("':")) == name;
        });
    };
    EXPECT_EQ(count("cell"), 0);
    EXPECT_EQ(count("text"), 4); // corner text, caption, table title, footnote marker
    EXPECT_EQ(count("template"), 1);
    EXPECT_EQ(count("note"), 1);
    EXPECT_EQ(count("d"), 1);
    EXPECT_EQ(count("label"), 1);
    EXPECT_EQ(count("title"), 1);
    EXPECT_EQ(destroyed.back(), "title': destroy");
}

TEST(PivotTableEnd, DimensionsGoAfterTheTextsInTheirOrder) {
    ForeignLog log;
    auto table = std::make_unique<OmPivotTable>(Text("title"), ForeignText(log, "text"), false);
    for (char const* const name : {"d", "e"}) {
        OmDimension& dimension = table->AddDimension(ForeignText(log, name));
        dimension.AddNewChild(dimension.Root(), ForeignText(log, name), 0, false);
    }
    ForeignText const text(log, "text");
    table->CornerText(&text);
    table->Footnote(OmFootnote(text), false);
    log.Take();
    table.reset();
    std::string order;
    for (std::string const& entry : log.Take()) {
        order += entry[0];
    }
    EXPECT_EQ(order, "tttddee");
}

TEST(PivotTableEnd, RegionIsSweptFirstAndTrackersOutliveTheTexts) {
    for (bool const unicode : {true, false}) {
        Log log;
        auto table = std::make_unique<OmPivotTable>(Text("title"), Witness(log, "t"), false);
        Witness const text(log, "x");
        table->CornerText(&text);
        OmDimension& dimension = table->AddDimension(Witness(log, "d"));
        dimension.AddNewChild(dimension.Root(), Witness(log, "l"), 0, false);
        BackendSettings settings;
        settings.setUnicode(unicode);
        settings.setLocale("here");
        table->setBackendSettings(settings);
        table->Caption(&text);
        table->Cell({0}, text);
        log.clear();
        table.reset();
        EXPECT_EQ(log, (Log{"x swept", "x swept here", "t swept here", "l swept here"}));
    }
}

/// Writes its letter down among the blocks that go.
class Lettered final : public omtest::MuteText {
public:
    explicit Lettered(char letter, OmMemoryRegion* region = nullptr) : MuteText(region), _letter(letter) {}
    ~Lettered() override {
        if (!Home()->IsDefaultHeap()) {
            Heap().Watch(this, _letter);
            Heap().NoteEnd(this);
        }
    }
    OmCellText* Clone(OmMemoryRegion* region) const override { return new (region) Lettered(_letter, region); }

private:
    char _letter;
};

// Texts, dimensions, formats, trackers (a shared one once), and the strings with the settings.
TEST(PivotTableEnd, PartsOfTheRecordGoInTheirOrder) {
    for (bool const unicode : {true, false}) {
        auto table = std::make_unique<OmPivotTable>(Text("title"), Lettered('t'), false);
        for (char const letter : {'d', 'e'}) {
            OmDimension& dimension = table->AddDimension(Text("dimension"));
            dimension.AddNewChild(dimension.Root(), Lettered(letter), 0, false);
        }
        auto* const format = new FormatArea(FormatArea::Caption);
        auto* const hidden = new FormatArea(static_cast<FormatArea::Area>(9));
        table->setAreaFormat(hidden);
        table->setAreaFormat(format);
        table->setBackendSettings(Settings(unicode));
        table->setBorderInfo("a string that is too long to lie inside its object");
        std::fill(std::begin(Heap().gone), std::end(Heap().gone), '\0');
        Heap().Watch(format, 'f');
        Heap().Watch(hidden, 'g');
        Heap().Watch(table->getICUTracker(), 'i');
        if (!unicode) {
            Heap().Watch(table->getU8Tracker(), 'u');
        }
        Heap().Watch(table->getBorderInfo().data(), 's');
        table.reset();
        EXPECT_STREQ(Heap().gone, unicode ? "tdefgis" : "tdefgius");
    }
}

// --- nothing is left -------------------------------------------------------------------------------------------------

OmCellMetaData LongMeta() {
    OmCellMetaData meta;
    meta.footnotes.assign(20, 1);
    meta.markers.assign(5, "a marker too long to lie inside its string");
    return meta;
}

/// Fills the table with everything that lies outside its region.
void FillWithEverything(OmPivotTable& table) {
    OmCellMetaData const meta = LongMeta();
    OmStringCell text("text");
    text.setMeta(&meta);
    text.SetAltText(std::string(5000, 'x'));
    OmDimension& dimension = table.AddDimension(text);
    dimension.Child(dimension.Root(), text, 0, false);
    table.AddDimension(dimension);
    for (int k = 0; k < 100; ++k) {
        table.Cell({k, k % 7}, text);
    }
    table.Cell({1, 1}, text);
    table.Cell({2, 2}, static_cast<OmCellText const*>(nullptr));
    table.deleteCell({3, 3});
    table.CornerText(&text);
    table.Caption(&text);
    table.SetTableTitle(text);
    for (int k = 0; k < 9; ++k) {
        table.Footnote(OmFootnote(text, &text, 0), true);
    }
    for (int area = 0; area < 12; ++area) {
        auto* const format = new FormatArea(static_cast<FormatArea::Area>(area));
        format->setFontName(std::string(100, 'f'));
        table.setAreaFormat(format);
    }
    table.setAreaFormat(new FormatArea(FormatArea::Title));
    table.Rows()[40] = 0;
    table.setTableCustomWidths({1, 2, 3});
    table.emptyCellStyles()[7] = 1;
    table.cellStyles().resize(4);
    for (int k = 0; k < 20; ++k) {
        table.addMiscProperty("property");
    }
}

TEST(PivotTableMemory, NothingIsLeftOfAFullTable) {
    for (bool const unicode : {true, false}) {
        std::ptrdiff_t const before = Heap().live;
        {
            OmPivotTable table(Text("title"), Text("template"), false);
            FillWithEverything(table);
            table.setBackendSettings(Settings(unicode));
            table.setBackendSettings(Settings(!unicode));
        }
        EXPECT_EQ(Heap().live, before);
    }
}

TEST(PivotTableMemory, ReplacedAndDeletedCellsTakeTheirMetadataAlong) {
    OmCellMetaData const meta = LongMeta();
    OmStringCell text("text");
    text.setMeta(&meta);
    OmPivotTable table(Text("title"), Text("template"), false);
    table.AddDimension(Text("d"));
    table.Cell({0}, text);
    std::ptrdiff_t const one = Heap().live;
    for (int k = 0; k < 10; ++k) {
        table.Cell({0}, text);
        table.Cell({0}, *table.Cell({0}));
    }
    EXPECT_EQ(Heap().live, one);
    table.deleteCell({0});
    std::ptrdiff_t const none = Heap().live;
    EXPECT_LT(none, one);
    table.Cell({0}, text);
    EXPECT_EQ(Heap().live, one);
    table.Cell({0}, static_cast<OmCellText const*>(nullptr));
    EXPECT_EQ(Heap().live, none);
}

// A table that keeps its old cells, nodes or texts until its end grows with every change.
TEST(PivotTableMemory, ReplacingForHoursDoesNotGrowTheRegion) {
    OmPivotTable table(Text("title"), Text("template"), false);
    OmMemoryRegion const& region = table.AddDimension(Text("d")).Region();
    table.AddDimension(Text("e"));
    OmStringCell const text("text");
    auto const change = [&] {
        table.Cell({1, 1}, text);
        table.Cell({9, 9}, text);
        table.deleteCell({9, 9});
        table.CornerText(&text);
        table.Caption(&text);
        table.SetTableTitle(text);
        table.Footnote(OmFootnote(text, &text, 0), false);
    };
    change();
    change();
    std::size_t const blocks = region.LiveBlocks();
    std::size_t const reserved = region.ReservedBytes();
    for (int k = 0; k < 2000; ++k) {
        change();
    }
    EXPECT_EQ(region.LiveBlocks(), blocks);
    EXPECT_EQ(region.ReservedBytes(), reserved);
}

TEST(PivotTableMemory, SecondFormatDestroysTheFirst) {
    OmPivotTable table(Text("title"), Text("template"), false);
    table.setAreaFormat(new FormatArea(FormatArea::Data));
    std::ptrdiff_t const one = Heap().live;
    table.setAreaFormat(new FormatArea(FormatArea::Data));
    EXPECT_EQ(Heap().live, one);
    table.setAreaFormat(new FormatArea(FormatArea::Corner));
    EXPECT_GT(Heap().live, one);
}

TEST(PivotTableMemory, FormatForAreaNineGoesWithTheTable) {
    std::ptrdiff_t const before = Heap().live;
    {
        OmPivotTable table(Text("title"), Text("template"), false);
        table.setAreaFormat(new FormatArea(static_cast<FormatArea::Area>(9)));
        EXPECT_GT(Heap().live, before);
    }
    EXPECT_EQ(Heap().live, before);
}

TEST(PivotTableMemory, IteratorsGiveBackTheirRecords) {
    OmPivotTable table(Text("title"), Text("template"), false);
    table.AddDimension(Text("d"));
    table.Cell({0}, Text("a"));
    std::ptrdiff_t const before = Heap().live;
    {
        OmPivotTable::Iterator iterator = table.FirstCell();
        OmPivotTable::Iterator copy(iterator);
        copy = iterator;
        ++copy;
        OmPivotTable::ConstIterator const constIterator(copy);
        EXPECT_GT(Heap().live, before);
    }
    EXPECT_EQ(Heap().live, before);
}

// --- no memory -------------------------------------------------------------------------------------------------------

TEST(PivotTableNoMemory, ConstructorLeavesNothing) {
    OmStringCell title("title");
    OmCellMetaData const meta = LongMeta();
    title.setMeta(&meta);
    std::ptrdiff_t const before = Heap().live;
    EXPECT_GT(omtest::FailEachRequest([&] { OmPivotTable const table(title, title, false); },
                                      [&] { EXPECT_EQ(Heap().live, before); }),
              0);
    EXPECT_EQ(Heap().live, before);
}

TEST(PivotTableNoMemory, FailedDimensionIsNotThere) {
    OmPivotTable other(Text("title"), Text("template"), false);
    OmStringCell name("name");
    OmCellMetaData const meta = LongMeta();
    name.setMeta(&meta);
    OmDimension& source = other.AddDimension(name);
    source.Child(source.Root(), name, 0, false);
    OmPivotTable table(Text("title"), Text("template"), false);
    for (int round = 0; round < 6; ++round) {
        std::size_t const dimensions = table.NDimensions();
        EXPECT_GE(omtest::FailEachRequest([&] { table.AddDimension(name); },
                                          [&] { EXPECT_EQ(table.NDimensions(), dimensions); }),
                  1);
        EXPECT_GE(omtest::FailEachRequest([&] { table.AddDimension(source); },
                                          [&] { EXPECT_EQ(table.NDimensions(), dimensions + 1); }),
                  1);
    }
    for (int k = 0; k < 12; ++k) {
        EXPECT_EQ(table.Dimension(k).Index(), k);
    }
}

// A level that the store has and the table has not would hide every cell.
TEST(PivotTableNoMemory, FailedDimensionLeavesTheCellsWhereTheyAre) {
    OmPivotTable table(Text("title"), Text("template"), false);
    OmStringCell const name("name");
    table.AddDimension(name);
    std::vector<int> index{3};
    table.Cell(index, Text("cell"));
    for (int round = 1; round < 18; ++round) {
        EXPECT_GE(omtest::FailEachRequest([&] { table.AddDimension(name); },
                                          [&] {
                                              ASSERT_EQ(table.NDimensions(), index.size());
                                              ASSERT_NE(table.Cell(index), nullptr)
                                                  << "with " << index.size() << " dimensions";
                                          }),
                  0);
        index.push_back(0);
        ASSERT_NE(table.Cell(index), nullptr);
    }
    EXPECT_EQ(omtest::CellsOf(table), omtest::Show(index) + "=cell");
}

// The old cell must be whole until its metadata is safe.
TEST(PivotTableNoMemory, StoreThatCannotSaveTheMetadataKeepsTheOldCell) {
    OmPivotTable table(Text("title"), Text("template"), false);
    table.AddDimension(Text("d"));
    OmStringCell old("old");
    OmCellMetaData const meta = LongMeta();
    old.setMeta(&meta);
    table.Cell({0}, old);
    OmStringCell const plain("new");
    std::vector<int> const index{0};
    Heap().untilFailure = 0;
    EXPECT_THROW(table.Cell(index, plain), std::bad_alloc);
    Heap().untilFailure = -1;
    ASSERT_NE(table.Cell({0}), nullptr);
    EXPECT_EQ(table.Cell({0})->AsString(), "old");
    EXPECT_EQ(*table.Cell({0})->getMeta(), meta);
    auto const checkWhole = [&] {
        std::string const cells = omtest::CellsOf(table);
        EXPECT_TRUE(cells == "(0)=old" || cells == "(0)=new") << cells;
    };
    EXPECT_GT(omtest::FailEachRequest([&] { table.Cell(index, plain); }, checkWhole), 0);
    EXPECT_EQ(omtest::CellsOf(table), "(0)=new");
}

TEST(PivotTableNoMemory, FailedSettingsCanBeGivenAgain) {
    OmPivotTable table(Text("title"), Text("template"), false);
    OmDimension& dimension = table.AddDimension(Text("d"));
    dimension.Child(dimension.Root(), Text("label"), 0, false);
    BackendSettings const settings = Settings(false);
    EXPECT_GT(omtest::FailEachRequest([&] { table.setBackendSettings(settings); }, [] {}), 0);
    ASSERT_NE(table.getICUTracker(), nullptr);
    ASSERT_NE(table.getU8Tracker(), nullptr);
    EXPECT_NE(table.getICUTracker(), table.getU8Tracker());
    EXPECT_FALSE(table.getICUTracker()->Unicode());
    EXPECT_TRUE(table.getU8Tracker()->Unicode());
}

// The format is its maker's until the table has it.
TEST(PivotTableNoMemory, FailedFormatIsNotTaken) {
    OmPivotTable table(Text("title"), Text("template"), false);
    auto format = std::make_unique<FormatArea>(FormatArea::Data);
    Heap().untilFailure = 0;
    EXPECT_THROW(table.setAreaFormat(format.get()), std::bad_alloc);
    Heap().untilFailure = -1;
    EXPECT_EQ(table.getAreaFormat(FormatArea::Data), nullptr);
    table.setAreaFormat(format.get());
    EXPECT_EQ(table.getAreaFormat(FormatArea::Data), format.get());
    static_cast<void>(format.release());
}

} // namespace
