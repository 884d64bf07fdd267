// Every pair of operations of a pivot table, the inner one called by a text that the outer one clones, visits, asks or
// destroys.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "backend/tables/om/OmPivotTable.h"
#include "omcell/OmComposite.h"
#include "platform/BackendSettings.h"
#include "tests/reentry/Reentry.h"
#include "tests/support/CategoryText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::Text;
using omtest::reentry::Changes;
using omtest::reentry::Driver;
using omtest::reentry::ExpectReadable;
using omtest::reentry::IsQuestion;
using omtest::reentry::Member;
using omtest::reentry::Overlap;
using omtest::reentry::Stage;
using omtest::reentry::Tally;
using omtest::reentry::WildText;
using Index = std::vector<int>;

/// Two dimensions with wild labels and wild names, cells on nearly all of 3 by 3 positions, wild texts wherever a table
/// holds one, two footnotes. A second table without dimensions, and a third one to copy from.
class World {
public:
    explicit World(Stage& itsStage) : stage(itsStage) {
        table = std::make_unique<OmPivotTable>(Wild("part title"), Wild("template"), false);
        empty = std::make_unique<OmPivotTable>(Text("empty"), Text("template"), false);
        other = std::make_unique<OmPivotTable>(Text("other"), Text("template"), false);
        OmDimension& foreign = other->AddDimension(Wild("foreign"));
        foreign.Child(foreign.Root(), Wild("f0"), 0, false);
        foreign.Child(foreign.Root(), Wild("f1"), 1, false);
        for (char const* const name : {"d0", "d1"}) {
            OmDimension& dimension = table->AddDimension(Wild(name));
            dimension.Child(dimension.Root(), Wild("a"), 0, false);
            OmDimension::Node const group = dimension.Child(dimension.Root(), Text("g"), 9, true);
            dimension.Child(group, Wild("b"), 1, false);
            dimension.Child(dimension.Root(), Text("c"), 2, false);
        }
        table->Rows().push_back(0);
        table->Columns().push_back(1);
        for (Index const& index : {Index{0, 0}, Index{1, 0}, Index{2, 2}, Index{0, 2}}) {
            table->Cell(index, WildText::ForCell(stage, "cell"));
        }
        table->Cell({2, 1}, Text("plain"));
        table->Cell({0, 1}, Composite().get());
        table->CornerText(Own("corner").get());
        table->Caption(Own("caption").get());
        table->SetTableTitle(Wild("title"));
        table->Footnote(OmFootnote(Wild("note"), Own("marker").get(), 0), false);
        table->Footnote(OmFootnote(Wild("second")), false);
    }

    WildText Wild(char const* text) const { return WildText(stage, text); }
    std::unique_ptr<WildText> Own(char const* text) const { return std::make_unique<WildText>(stage, text); }
    std::unique_ptr<OmComposite> Composite() const {
        auto composite = std::make_unique<OmComposite>();
        composite->Append(Text("of "));
        composite->Append(WildText::ForCell(stage, "part"));
        return composite;
    }

    bool IsOver() const { return table == nullptr; }

    /// The index that the position has now; a table that ends has no dimensions.
    Index At(int first, int second) const {
        Index index{first, second};
        index.resize(table->NDimensions(), 0);
        return index;
    }

    std::string Read(OmCellText const* text) const { return text != nullptr ? text->AsString() : "none"; }
    std::string CellAt(int first, int second) const { return Read(table->Cell(At(first, second))); }

    bool HasNote(char const* text) const {
        return std::any_of(table->Footnotes().begin(), table->Footnotes().end(),
                           [&](OmFootnote const& note) { return Read(note.Text()) == text; });
    }
    bool HasDimension(char const* name) const {
        for (std::size_t k = 0; k < table->NDimensions(); ++k) {
            if (table->Dimension(static_cast<int>(k)).Name().AsString() == name) {
                return true;
            }
        }
        return false;
    }
    bool HasCategory(char const* label) const {
        return omtest::Categories(table->Dimension(0)).find(label) != std::string::npos;
    }

    void Check() const {
        CheckCells();
        for (OmPivotTable const* const each : {table.get(), empty.get(), other.get()}) {
            CheckDimensions(*each);
        }
        for (OmCellText const* const text : {std::as_const(*table).CornerText(), std::as_const(*table).Caption(),
                                             table->GetTableTitle(), std::as_const(*table).TemplateName()}) {
            if (text != nullptr) {
                ExpectReadable(stage, text);
            }
        }
        ExpectReadable(stage, std::as_const(*table).Title());
        for (OmFootnote const& note : table->Footnotes()) {
            ExpectReadable(stage, note.Text());
            if (note.Marker() != nullptr) {
                ExpectReadable(stage, note.Marker());
            }
        }
        table->Print();
        LayOut();
    }

    void LayOut() const {
        OmDisplayLayerHeading layers(*table, true);
        OmDisplayColumnHeading const columns(layers, true);
        OmDisplayRowHeading const rows(layers, true, true);
    }

    void Use() {
        table->Cell(At(4, 4), WildText::ForCell(stage, "used"));
        table->Cell(At(4, 4), Text("used again"));
        EXPECT_EQ(CellAt(4, 4), "used again");
        table->deleteCell(At(4, 4));
        EXPECT_EQ(CellAt(4, 4), "none");
        std::size_t const notes = table->Footnotes().size();
        EXPECT_EQ(table->Footnote(OmFootnote(Wild("used")), true), static_cast<int>(notes));
        table->CornerText(Own("used").get());
        table->Caption(nullptr);
        OmDimension& dimension = table->AddDimension(Wild("used"));
        dimension.Child(dimension.Root(), Wild("used"), 0, false);
        EXPECT_EQ(table->FindDimension(Wild("used")), static_cast<int>(table->NDimensions()) - 1);
        EmptyCells();
        EXPECT_EQ(stage.aliveCells, 0);
    }

    /// Cells of a program's kind are not destroyed with their table.
    void EmptyCells() {
        for (OmPivotTable::Iterator cell = table->FirstCell(); cell.Cell() != nullptr; cell = table->FirstCell()) {
            table->deleteCell(cell.Index());
        }
    }

    Stage& stage;
    bool isEnding = false;
    std::unique_ptr<OmPivotTable> table{};
    std::unique_ptr<OmPivotTable> empty{};
    std::unique_ptr<OmPivotTable> other{};

private:
    void CheckCells() const {
        std::size_t walked = 0;
        Index before;
        for (OmPivotTable::ConstIterator cell = std::as_const(*table).FirstCell(); cell.Cell() != nullptr; ++cell) {
            ExpectReadable(stage, cell.Cell());
            EXPECT_EQ(std::as_const(*table).Cell(cell.Index()), cell.Cell());
            Index index = cell.Index();
            std::reverse(index.begin(), index.end());
            EXPECT_TRUE(walked == 0 || before < index);
            before = index;
            ++walked;
        }
        std::string const shape = omtest::RawShape(*table);
        std::size_t shown = 0;
        for (std::size_t at = shape.find(" - "); at != std::string::npos; at = shape.find(" - ", at + 1)) {
            ++shown;
        }
        EXPECT_EQ(walked, shown) << shape;
    }

    void CheckDimensions(OmPivotTable const& each) const {
        EXPECT_EQ(each.SizeVector().size(), each.NDimensions());
        for (std::size_t k = 0; k < each.NDimensions(); ++k) {
            OmDimension const& dimension = each.Dimension(static_cast<int>(k));
            EXPECT_TRUE(&each == empty.get() || dimension.Index() == static_cast<int>(k));
            int leaves = 0;
            OmDimension::Tree::WalkPreOrder(dimension.Root(), [&](OmDimension::ConstNode const& node) {
                ExpectReadable(stage, node.Value().Text());
                leaves += node.Value().IsGroup() ? 0 : 1;
                for (std::size_t child = 0; child < node.ChildCount(); ++child) {
                    EXPECT_EQ(node.Child(child).Parent(), node);
                }
                return true;
            });
            EXPECT_EQ(dimension.NumCategories(), leaves);
        }
    }
};

using Row = omtest::reentry::Row<World>;

std::vector<Row> CellRows() {
    return {
        {"store over a wild cell", "cell 0 0",
         [](World& w) { w.table->Cell(w.At(0, 0), WildText::ForCell(w.stage, "new")); },
         [](World& w) { return w.CellAt(0, 0) == "new"; }},
        {"store in a new place", "cell 3 3",
         [](World& w) { w.table->Cell(w.At(3, 3), WildText::ForCell(w.stage, "far")); },
         [](World& w) { return w.CellAt(3, 3) == "far"; }},
        {"store a string over a wild cell", "cell 1 0", [](World& w) { w.table->Cell(w.At(1, 0), Text("string")); },
         [](World& w) { return w.CellAt(1, 0) == "string"; }},
        {"store null over a wild cell", "cell 2 2", [](World& w) { w.table->Cell(w.At(2, 2), nullptr); },
         [](World& w) { return w.CellAt(2, 2) == "none"; }},
        {"store a composite over a composite", "cell 0 1",
         [](World& w) { w.table->Cell(w.At(0, 1), w.Composite().get()); },
         [](World& w) { return w.CellAt(0, 1) == "of part"; }},
        {"store a cell into its own place", "cell 0 2",
         [](World& w) { w.table->Cell(w.At(0, 2), w.table->Cell(w.At(0, 2))); },
         [](World& w) { return w.CellAt(0, 2) == "cell"; }},
        {"store many cells far away", "cell far",
         [](World& w) {
             for (int k = 0; k < 20; ++k) {
                 w.table->Cell(w.At(5 + 7 * (k % 5), 5 + 3 * k), Text("scattered"));
             }
         },
         [](World& w) { return w.CellAt(5, 5) == "scattered" && w.CellAt(33, 62) == "scattered"; }},
        {"delete a wild cell", "cell 0 0", [](World& w) { w.table->deleteCell(w.At(0, 0)); },
         [](World& w) { return w.CellAt(0, 0) == "none"; }},
        {"delete the one cell of its leaf", "cell 3 3",
         [](World& w) {
             w.table->Cell(w.At(3, 3), WildText::ForCell(w.stage, "far"));
             w.table->deleteCell(w.At(3, 3));
         },
         [](World& w) { return w.CellAt(3, 3) == "none"; }},
        {"delete a composite", "cell 0 1", [](World& w) { w.table->deleteCell(w.At(0, 1)); },
         [](World& w) { return w.CellAt(0, 1) == "none"; }},
        {"delete every cell", "cell", [](World& w) { w.EmptyCells(); }},
        {"look up", "", [](World& w) { w.table->Cell(w.At(0, 0)), std::as_const(*w.table).Cell(w.At(8, 8)); }},
        {"walk", "",
         [](World& w) {
             OmPivotTable::ConstIterator cell = std::as_const(*w.table).FirstCell();
             for (; cell.Cell() != nullptr; ++cell) {
                 w.Read(cell.Cell());
             }
         }},
        {"scratch", "flag", [](World& w) { w.table->Scratch(true); }, [](World& w) { return w.table->IsScratched(); }},
    };
}

std::vector<Row> DimensionRows() {
    return {
        {"add a dimension", "dimensions", [](World& w) { w.table->AddDimension(w.Wild("added")); },
         [](World& w) { return w.HasDimension("added"); }},
        {"add a copy of an own dimension", "dimensions", [](World& w) { w.table->AddDimension(w.table->Dimension(1)); },
         [](World& w) { return w.table->NDimensions() > 2; }},
        {"add a copy of another table's dimension", "dimensions",
         [](World& w) { w.table->AddDimension(w.other->Dimension(0)); },
         [](World& w) { return w.HasDimension("foreign"); }},
        {"add many dimensions", "dimensions",
         [](World& w) {
             for (int k = 0; k < 5; ++k) {
                 w.table->AddDimension(Text("many"));
             }
         },
         [](World& w) { return w.HasDimension("many"); }},
        {"copy the dimensions into an empty table", "the empty table",
         [](World& w) { w.empty->CopyDimensions(*w.table); }, [](World& w) { return w.empty->NDimensions() >= 2; }},
        {"add a dimension to the empty table", "the empty table",
         [](World& w) { w.empty->AddDimension(w.Wild("first")); },
         [](World& w) { return w.empty->NDimensions() >= 1; }},
        {"copy dimensions into a table that has some", "", [](World& w) { w.table->CopyDimensions(*w.other); }},
        {"find a dimension", "", [](World& w) { w.table->FindDimension(w.Wild("d1")); }},
        {"find no dimension", "", [](World& w) { w.table->FindDimension(w.Wild("dx")); }},
        {"find an own name", "", [](World& w) { w.table->FindDimension(w.table->Dimension(1).Name()); }},
        {"ask for sizes", "", [](World& w) { w.table->SizeVector(), w.table->Size(1); }},
        {"find or create a category", "category",
         [](World& w) {
             OmDimension& dimension = w.table->Dimension(0);
             dimension.Child(dimension.Root(), w.Wild("created"), 3, false);
         },
         [](World& w) { return w.HasCategory("created"); }},
        {"find a category", "",
         [](World& w) {
             OmDimension& dimension = w.table->Dimension(0);
             OmDimension::FindChild(dimension.Root(), w.Wild("a"), false);
         }},
        {"append categories", "category",
         [](World& w) {
             OmDimension& dimension = w.table->Dimension(0);
             for (int k = 0; k < 5; ++k) {
                 dimension.AddNewChild(dimension.Root(), w.Wild("appended"), 4, false);
             }
         },
         [](World& w) { return w.HasCategory("appended"); }},
        {"write axes", "axes",
         [](World& w) {
             w.table->Rows() = w.table->Columns();
             w.table->Layers().push_back(-1);
         },
         [](World& w) { return w.table->Layers().size() == 1; }},
        {"end the table", "axes", [](World& w) { w.table->EndTable(); }},
    };
}

std::vector<Row> FootnoteRows() {
    return {
        {"register a new footnote", "footnote new",
         [](World& w) { w.table->Footnote(OmFootnote(w.Wild("new"), w.Own("new marker").get(), 0), false); },
         [](World& w) { return w.HasNote("new"); }},
        {"register a known footnote", "footnote known",
         [](World& w) { w.table->Footnote(OmFootnote(w.Wild("second"), w.Own("new marker").get(), 0), false); },
         [](World& w) { return w.HasNote("second"); }},
        {"register a footnote anew", "footnote known",
         [](World& w) { w.table->Footnote(OmFootnote(w.Wild("note"), w.Own("new marker").get(), -7), true); },
         [](World& w) { return w.HasNote("note"); }},
        {"register an own footnote", "footnote known",
         [](World& w) {
             if (!w.table->Footnotes().empty()) {
                 w.table->Footnote(w.table->Footnotes()[0], false);
             }
         }},
        {"register an own footnote anew", "footnote known",
         [](World& w) {
             if (!w.table->Footnotes().empty()) {
                 w.table->Footnote(w.table->Footnotes()[0], true);
             }
         }},
        {"register many footnotes", "footnote many",
         [](World& w) {
             for (int k = 0; k < 9; ++k) {
                 w.table->Footnote(OmFootnote(Text("many")), true);
             }
         },
         [](World& w) { return w.HasNote("many"); }},
        {"erase the first footnote", "footnote",
         [](World& w) {
             if (!w.table->Footnotes().empty()) {
                 w.table->Footnotes().erase(0);
             }
         }},
        {"clear the footnotes", "footnote", [](World& w) { w.table->Footnotes().clear(); }},
        {"append a footnote", "footnote pushed",
         [](World& w) { w.table->Footnotes().push_back(OmFootnote(w.Wild("pushed"))); },
         [](World& w) { return w.HasNote("pushed"); }},
    };
}

std::vector<Row> TextRows() {
    return {
        {"set the corner text", "corner", [](World& w) { w.table->CornerText(w.Own("set").get()); },
         [](World& w) { return w.Read(w.table->CornerText()) == "set"; }},
        {"set a string as corner text", "corner",
         [](World& w) {
             OmStringCell const text("string");
             w.table->CornerText(&text);
         },
         [](World& w) { return w.Read(w.table->CornerText()) == "string"; }},
        {"clear the corner text", "corner", [](World& w) { w.table->CornerText(nullptr); },
         [](World& w) { return w.table->CornerText() == nullptr; }},
        {"set the caption", "caption", [](World& w) { w.table->Caption(w.Own("set").get()); },
         [](World& w) { return w.Read(w.table->Caption()) == "set"; }},
        {"clear the caption", "caption", [](World& w) { w.table->Caption(nullptr); },
         [](World& w) { return w.table->Caption() == nullptr; }},
        {"set the table title", "table title", [](World& w) { w.table->SetTableTitle(w.Wild("set")); },
         [](World& w) { return w.Read(w.table->GetTableTitle()) == "set"; }},
        {"set a string as table title", "table title", [](World& w) { w.table->SetTableTitle(Text("string")); },
         [](World& w) { return w.Read(w.table->GetTableTitle()) == "string"; }},
        {"read the texts", "",
         [](World& w) {
             w.Read(w.table->CornerText());
             w.Read(w.table->Caption());
             w.Read(w.table->GetTableTitle());
             w.Read(w.table->TemplateName());
             w.Read(w.table->Title());
         }},
    };
}

std::vector<Row> OtherRows() {
    return {
        {"take fast settings", "settings",
         [](World& w) {
             BackendSettings settings;
             settings.setUnicode(false);
             w.table->setBackendSettings(settings);
         },
         [](World& w) { return w.table->getICUTracker() != nullptr && w.table->getU8Tracker() != nullptr; }},
        {"take slow settings", "settings",
         [](World& w) {
             BackendSettings settings;
             settings.setFastTables(false);
             w.table->setBackendSettings(settings);
         },
         [](World& w) { return !w.table->fastTable(); }},
        {"take its own settings", "settings",
         [](World& w) { w.table->setBackendSettings(w.table->getBackendSettings()); }},
        {"attach the tracker", "",
         [](World& w) {
             w.table->setHelper(*w.table->Title());
             if (w.table->Caption() != nullptr) {
                 w.table->setHelper(*w.table->Caption());
             }
             if (w.table->Cell(w.At(0, 1)) != nullptr) {
                 w.table->setHelper(*w.table->Cell(w.At(0, 1)));
             }
         }},
        {"print", "",
         [](World& w) {
             if (w.table->GetTableTitle() != nullptr) {
                 w.table->Print();
             }
         }},
        {"print the cells", "", [](World& w) { w.table->PrintCells(); }},
        {"lay out", "", [](World& w) { w.LayOut(); }},
        {"set a format", "format", [](World& w) { w.table->setAreaFormat(new FormatArea(FormatArea::Data)); },
         [](World& w) { return w.table->getAreaFormat(FormatArea::Data) != nullptr; }},
        {"set properties", "properties",
         [](World& w) {
             w.table->addMiscProperty("a property that is too long to be kept inside the string");
             w.table->TableLocale(w.table->getMiscProperties());
             w.table->setBorderInfo(w.table->TableLocale());
             w.table->setTableLookInfo("look");
             w.table->setTablePropertiesInfo("properties");
             w.table->setTableCustomWidths({1, 2, 3});
             w.table->setTableCustomHeights(w.table->getTableCustomWidths());
             w.table->emptyCellStyles()[7] = 1;
             w.table->cellStyles().resize(3);
             w.table->RemovedFootnotes(true);
             w.table->setHasMarkers();
         },
         [](World& w) { return w.table->getEmptyCellStyles().at(7) == 1 && w.table->hasMarkers(); }},
        {"make a table",
         "",
         [](World& w) { OmPivotTable const made(w.Wild("made"), w.Wild("template"), true); },
         {},
         true},
        {"destroy the table",
         "the table",
         [](World& w) {
             w.isEnding = true;
             delete w.table.get();
             static_cast<void>(w.table.release());
         },
         {},
         true},
    };
}

std::vector<Row> Rows() {
    std::vector<Row> all;
    for (std::vector<Row> (*const rows)() : {CellRows, DimensionRows, FootnoteRows, TextRows, OtherRows}) {
        for (Row& row : rows()) {
            // The part's title is the last that goes; the table's record has gone then.
            row.run = [run = row.run](World& w) {
                if (!w.isEnding || w.table->Title() != nullptr) {
                    run(w);
                }
            };
            all.push_back(std::move(row));
        }
    }
    return all;
}

bool Says(Row const& row, char const* words) { return std::string(row.name).find(words) != std::string::npos; }

char const* ReasonFor(Row const& outer, Row const& inner, Member member) {
    bool const clones = member == Member::Clone || member == Member::CloneDone;
    if (clones && std::strcmp(outer.place, "category") != 0 && Overlap(inner.place, "category") && Changes(inner) &&
        (Says(outer, "copy the dim") || Says(outer, "add a copy"))) {
        return "a label leaves the dimension that is copied as it is while it is cloned";
    }
    if (IsQuestion(member) && Changes(inner)) {
        return "a text that is asked changes nothing";
    }
    return nullptr;
}

} // namespace

TEST(PivotTableReentry, EveryPairLeavesATableThatIsWhole) {
    Tally const tally =
        Driver<World>(Rows(), ReasonFor,
                      {Member::Clone, Member::CloneDone, Member::Accept, Member::SetTracker, Member::Compare,
                       Member::TextLength, Member::AsString, Member::OrderCode, Member::Destroy})
            .Run();
    tally.Print("pivot table");
    EXPECT_EQ(tally.pairs, 29232);
    EXPECT_GE(tally.Driven(), 6000);
}
