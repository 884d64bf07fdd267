// Documents of their own on threads of their own: nothing is shared behind their backs. Run by every suite, and under
// the thread sanitizer by `make tsan`.
#include <omtree.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int Groups = 20;
constexpr int Categories = 30;

OmStringCell Text(std::string const& bytes) { return OmStringCell(bytes, nullptr, false); }

/// A table with every kind of content: groups, composites, footnotes, formats, trackers of another code page.
std::unique_ptr<OmPivotTable> MadeTable(int seed) {
    auto table = std::make_unique<OmPivotTable>(Text("Survivors"), Text("Cross tabulation"), false);
    BackendSettings settings;
    settings.setUnicode(seed % 2 == 0);
    settings.setLocale("de_DE.ISO-8859-1");
    table->setBackendSettings(settings);
    table->SetTableTitle(Text("Who survived"));
    OmDimension& classes = table->AddDimension(Text("Class"));
    OmDimension& ages = table->AddDimension(Text("Age"));
    for (int category = 0; category < Categories; ++category) {
        OmDimension::Node const group =
            classes.Child(classes.Root(), Text("group " + std::to_string(category % Groups)), 0, true);
        classes.Child(group, Text("class " + std::to_string(category)), static_cast<unsigned>(category), false);
        ages.Child(ages.Root(), Text("age " + std::to_string(category)), static_cast<unsigned>(category), false);
    }
    table->Rows().push_back(0);
    table->Columns().push_back(1);
    for (int i = 0; i < Categories; ++i) {
        for (int j = 0; j < Categories; j += 1 + (i + seed) % 3) {
            table->Cell({i, j}, OmNumber(seed + i * j));
        }
    }
    OmComposite caption;
    caption.Append(caption.Components().Root(), Text("of"));
    caption.Append(caption.Components().Root(), OmNumber(seed));
    table->Caption(&caption);
    table->setAreaFormat(new FormatArea(FormatArea::Title));
    table->EndTable();
    return table;
}

/// The sum of what a renderer would show, with every other cell deleted on the way.
double LaidOut(OmPivotTable& table) {
    double sum = 0;
    OmDisplayLayerHeading layers(table, true);
    while (layers.NextLayer()) {
        OmDisplayColumnHeading columns(layers, true);
        OmDisplayRowHeading rows(layers, true, true);
        for (int r = 0; r < rows.NRows(); ++r) {
            for (int c = 0; c < columns.NColumns(); ++c) {
                std::vector<int> index;
                layers.Fill(index);
                columns.Fill(index, c);
                rows.Fill(index, r);
                OmCellText const* const cell = table.Cell(index);
                sum += cell != nullptr ? cell->NumericValue() : 0;
                if (cell != nullptr && (r + c) % 2 == 0) {
                    table.deleteCell(index);
                }
            }
        }
    }
    return sum;
}

/// What one thread does: a document with tables and charts, built, walked, pruned and destroyed.
double WorkOf(int seed) {
    double sum = 0;
    for (int round = 0; round < 3; ++round) {
        OmOutputTree document;
        OmOutputTree::Node const heading =
            document.AppendChild(document.Root(), new OmProcedure(Text("Counts"), "en", "ISO-8859-1", "en_US"));
        std::unique_ptr<OmPivotTable> table = MadeTable(seed);
        sum += LaidOut(*table);
        sum += static_cast<double>(table->Caption()->AsU8String().size());
        document.AppendChild(heading, table.release());
        document.AppendChild(heading, new OmChart(Text("Gr\xC3\xB6\xC3\x9F"
                                                       "e"),
                                                  "ISO-8859-1", seed));
        for (ListTreeData<OmOutputPart*> const& record : document.List()) {
            sum += static_cast<double>(record.value->Title()->AsU8String().size());
        }
        OmOutputTree::Node first = document.Root();
        document.Prune(first);
    }
    return sum;
}

} // namespace

TEST(Threads, DocumentsOnThreadsOfTheirOwnDoWhatTheyDoAlone) {
    constexpr std::size_t Number = 4;
    std::vector<double> alone;
    for (std::size_t t = 0; t < Number; ++t) {
        alone.push_back(WorkOf(static_cast<int>(t)));
    }
    std::vector<double> together(Number);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < Number; ++t) {
        threads.emplace_back([t, &together] { together[t] = WorkOf(static_cast<int>(t)); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(together, alone);
    EXPECT_GT(alone[0], 0);
}
