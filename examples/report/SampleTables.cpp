#include "examples/report/SampleTables.h"

#include "omtree.h"

#include <array>
#include <string>

namespace report {

namespace {

OmStringCell text(std::string const& bytes) { return OmStringCell(bytes, nullptr, false); }

/// A dimension with these leaves, numbered from 0.
template <typename Labels>
OmDimension& addDimension(OmPivotTable& table, std::string const& name, Labels const& labels) {
    OmDimension& dimension = table.AddDimension(text(name));
    unsigned long long subscript = 0;
    for (char const* const label : labels) {
        dimension.Child(dimension.Root(), text(label), subscript++, false);
    }
    return dimension;
}

/// A table of one column without a heading of its own: a text beside each label.
template <std::size_t N>
std::unique_ptr<OmPivotTable> listTable(char const* title, char const* kind, std::array<char const*, N> const& labels,
                                        std::array<char const*, N> const& texts) {
    auto table = std::make_unique<OmPivotTable>(text(title), text(kind), false);
    table->SetTableTitle(text(title));
    OmDimension& items = addDimension(*table, "Item", labels);
    items.Root().Value().Hide(true);
    OmDimension& content = addDimension(*table, "Content", std::array<char const*, 1>{"Content"});
    content.Root().Value().Hide(true);
    content.Root().Child(0).Value().Hide(true);
    table->Rows().push_back(0);
    table->Columns().push_back(1);
    for (std::size_t i = 0; i < N; ++i) {
        table->Cell({static_cast<int>(i), 0}, text(texts[i]));
    }
    table->EndTable();
    return table;
}

/// Counts of who died and who survived, by class.
struct ClassCounts {
    int died;
    int survived;
};
constexpr int Classes = 4;
constexpr std::array<std::array<ClassCounts, Classes>, 2> Counts = {
    {{{{118, 62}, {154, 25}, {422, 88}, {670, 192}}}, {{{4, 141}, {13, 93}, {106, 90}, {3, 20}}}}};

} // namespace

std::unique_ptr<OmPivotTable> notesTable() {
    return listTable<3>("Notes", "Notes", {"Data", "Counted", "Asked for"},
                        {"titanic.csv", "All 2,201 people", "Class by survival, for each sex"});
}

std::unique_ptr<OmPivotTable> warningsTable() {
    return listTable<1>("Warnings", "Warnings", {"1"}, {"The crew had no children; the age groups were left out."});
}

std::unique_ptr<OmPivotTable> survivalTable() {
    auto table = std::make_unique<OmPivotTable>(text("Survival by class and sex"), text("Cross tabulation"), false);
    table->SetTableTitle(text("Survival by class and sex"));

    OmDimension& classes = table->AddDimension(text("Class"));
    OmDimension::Node passengers =
        classes.Child(classes.Root(), text("Passengers"), OmDimensionNode::NoSubscript, true);
    for (int i = 0; i + 1 < Classes; ++i) {
        passengers = classes.Root().Child(0);
        classes.Child(passengers, text(std::array<char const*, 3>{"1st", "2nd", "3rd"}[static_cast<std::size_t>(i)]),
                      static_cast<unsigned long long>(i), false);
    }
    classes.Child(classes.Root(), text("Crew"), Classes - 1, false);
    addDimension(*table, "Survived", std::array<char const*, 2>{"No", "Yes"});
    addDimension(*table, "Statistics", std::array<char const*, 2>{"Count", "Share"});
    addDimension(*table, "Sex", std::array<char const*, 3>{"Male", "Female", "Not recorded"});
    // Headings read an axis back to front: Survived stands above Statistics.
    table->Rows().push_back(0);
    table->Columns() = {2, 1};
    table->Layers().push_back(3);

    OmFootnote shares(text("Percentages of the people of that class and sex."));
    OmFootnote few(text("Fewer than 30 people."));
    short const onShares = static_cast<short>(table->Footnote(shares, false));
    short const onFew = static_cast<short>(table->Footnote(few, false));
    OmCellMetaData marked;
    marked.footnotes = {onShares};
    table->Dimension(2).Root().Child(1).Value().Text()->setMeta(&marked);

    OmNumber::Format percent;
    percent.type = OmNumber::PercentFormat;
    percent.decimals = 1;
    OmNumber::Format count;
    count.grouping = U',';
    for (int sex = 0; sex < 2; ++sex) {
        for (int k = 0; k < Classes; ++k) {
            ClassCounts const& counts = Counts[static_cast<std::size_t>(sex)][static_cast<std::size_t>(k)];
            double const all = counts.died + counts.survived;
            table->Cell({k, 0, 0, sex}, OmNumber(counts.died, count));
            table->Cell({k, 1, 0, sex}, OmNumber(counts.survived, count));
            table->Cell({k, 0, 1, sex}, OmNumber(100 * counts.died / all, percent));
            table->Cell({k, 1, 1, sex}, OmNumber(100 * counts.survived / all, percent));
            if (all < 30) {
                OmCellMetaData meta;
                meta.footnotes = {onFew};
                table->Cell({k, 1, 1, sex})->setMeta(&meta);
            }
        }
    }
    table->Cell({0, 0, 0, 2}, OmNumber(OmNumber::MissingValue()));
    OmStringCell const caption("Counts as published by the inquiry.", nullptr, false);
    table->Caption(&caption);
    OmStringCell const corner("Class of travel", nullptr, false);
    table->CornerText(&corner);
    table->EndTable();
    return table;
}

} // namespace report
