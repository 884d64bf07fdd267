// Every operation given what its receiver owns already: itself, a part of it, a part of a part. With texts of the
// library's own kinds nobody can see the order, and the call means what it means with a copy; where a text of a
// program's kind could, it is reported and nothing changes.
#include "backend/tables/ListTree.h"
#include "backend/tables/PuppetVector.h"
#include "backend/tables/om/FormatArea.h"
#include "backend/tables/om/OmAnswerTree.h"
#include "backend/tables/om/OmChart.h"
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmInteractive.h"
#include "backend/tables/om/OmModel.h"
#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmValue.h"
#include "platform/BackendSettings.h"
#include "tests/reentry/Reentry.h"
#include "tests/support/CategoryText.h"
#include "tests/support/TableProbe.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::AfterReport;
using omtest::AssertionCatcher;
using omtest::Text;
using omtest::reentry::ExpectReadable;
using omtest::reentry::Stage;
using omtest::reentry::WildText;

/// A composite of a string, a composite of a string and a message whose slot a string fills; with `wild`, a wild text
/// beside the innermost one.
std::unique_ptr<OmComposite> Nested(Stage* wild) {
    OmMessage message("{0}!");
    message.Fill(0, Text("c"));
    OmComposite inside;
    inside.Append(Text("b"));
    inside.Append(message);
    if (wild != nullptr) {
        inside.Append(WildText(*wild, "w", nullptr, true));
    }
    auto nested = std::make_unique<OmComposite>();
    nested->Append(Text("a"));
    nested->Append(inside);
    return nested;
}

// --- places that hold a text -----------------------------------------------------------------------------------------

/// A table and a procedure that hold nested texts everywhere.
struct Holder {
    explicit Holder(Stage& itsStage, bool isWild) : stage(itsStage) {
        std::unique_ptr<OmComposite> const text = Nested(isWild ? &stage : nullptr);
        table = std::make_unique<OmPivotTable>(*text, *text, false);
        table->CornerText(text.get());
        table->Caption(text.get());
        table->SetTableTitle(*text);
        OmDimension& dimension = table->AddDimension(*text);
        OmDimension::Node const group = dimension.Child(dimension.Root(), *text, 8, true);
        dimension.Child(group, *text, 0, false);
        dimension.Child(dimension.Root(), *text, 1, false);
        table->Footnote(OmFootnote(*text, text.get(), 0), false);
        table->Cell({0}, text.get());
        table->Cell({1}, text.get());
        procedure = std::make_unique<OmProcedure>(*text, "", "", "");
        procedure->Footnotes().emplace_back(*text, text.get(), 0);
        procedure->Footnotes().emplace_back(*text, text.get(), 0);
    }
    /// Cells of a program's kind are not destroyed with their table.
    ~Holder() {
        for (OmPivotTable::Iterator cell = table->FirstCell(); cell.Cell() != nullptr; cell = table->FirstCell()) {
            table->deleteCell(cell.Index());
        }
    }

    OmDimension& Dimension() const { return table->Dimension(0); }
    OmFootnote& Note() const { return table->Footnotes()[0]; }

    Stage& stage;
    std::unique_ptr<OmPivotTable> table{};
    std::unique_ptr<OmProcedure> procedure{};
};

/// One text that a holder owns.
struct Owned {
    char const* name;
    std::function<OmCellText const*(Holder&)> text;
};

std::vector<Owned> OwnedTexts() {
    return {
        {"part title", [](Holder& h) { return h.table->Title(); }},
        {"template name", [](Holder& h) { return h.table->TemplateName(); }},
        {"corner text", [](Holder& h) { return h.table->CornerText(); }},
        {"caption", [](Holder& h) { return h.table->Caption(); }},
        {"table title", [](Holder& h) { return &h.table->TableTitle(); }},
        {"dimension name", [](Holder& h) { return &h.Dimension().Name(); }},
        {"group label", [](Holder& h) { return h.Dimension().Root().Child(0).Value().Text(); }},
        {"inner label", [](Holder& h) { return h.Dimension().Root().Child(0).Child(0).Value().Text(); }},
        {"leaf label", [](Holder& h) { return h.Dimension().Root().Child(1).Value().Text(); }},
        {"footnote", [](Holder& h) { return h.Note().Text(); }},
        {"marker", [](Holder& h) { return h.Note().Marker(); }},
        {"cell", [](Holder& h) { return h.table->Cell({0}); }},
        {"other cell", [](Holder& h) { return h.table->Cell({1}); }},
        {"procedure title", [](Holder& h) { return h.procedure->Title(); }},
        {"heading's footnote", [](Holder& h) { return h.procedure->Footnotes()[0].Text(); }},
        {"heading's marker", [](Holder& h) { return h.procedure->Footnotes()[0].Marker(); }},
    };
}

/// A setter, and the text that it replaces where it destroys that before it clones: then it reports its own text.
struct Setter {
    char const* name;
    std::function<void(Holder&, OmCellText const&)> set;
    std::function<OmCellText const*(Holder&)> result;
    char const* destroysFirst = nullptr;
};

std::vector<Setter> Setters() {
    using Given = OmCellText const&;
    return {
        {"corner text", [](Holder& h, Given t) { h.table->CornerText(&t); },
         [](Holder& h) { return h.table->CornerText(); }, "corner text"},
        {"caption", [](Holder& h, Given t) { h.table->Caption(&t); }, [](Holder& h) { return h.table->Caption(); },
         "caption"},
        {"table title", [](Holder& h, Given t) { h.table->SetTableTitle(t); },
         [](Holder& h) { return h.table->GetTableTitle(); }, "table title"},
        {"cell", [](Holder& h, Given t) { h.table->Cell({0}, t); }, [](Holder& h) { return h.table->Cell({0}); },
         "cell"},
        {"footnote", [](Holder& h, Given t) { h.Note().Text(t); }, [](Holder& h) { return h.Note().Text(); }},
        {"marker", [](Holder& h, Given t) { h.Note().Marker(&t); }, [](Holder& h) { return h.Note().Marker(); }},
        {"registered footnote", [](Holder& h, Given t) { h.table->Footnote(OmFootnote(t, &t, 0), true); },
         [](Holder& h) { return h.table->Footnotes().back().Text(); }},
        {"known footnote's marker",
         [](Holder& h, Given t) { h.table->Footnote(OmFootnote(*h.Note().Text(), &t, 0), false); },
         [](Holder& h) { return h.Note().Marker(); }},
        {"added dimension", [](Holder& h, Given t) { h.table->AddDimension(t); },
         [](Holder& h) { return h.table->NDimensions() > 1 ? &h.table->Dimension(1).Name() : nullptr; }},
        {"dimension name", [](Holder& h, Given t) { h.Dimension().Root().Value().Text(t); },
         [](Holder& h) { return &h.Dimension().Name(); }},
        {"group label", [](Holder& h, Given t) { h.Dimension().Root().Child(0).Value().Text(t); },
         [](Holder& h) { return h.Dimension().Root().Child(0).Value().Text(); }},
        {"category", [](Holder& h, Given t) { h.Dimension().Child(h.Dimension().Root(), t, 5, false); },
         [](Holder& h) {
             OmDimension::Node const root = h.Dimension().Root();
             return root.Child(root.ChildCount() - 1).Value().Text();
         }},
        {"appended category", [](Holder& h, Given t) { h.Dimension().AddNewChild(h.Dimension().Root(), t, 5, false); },
         [](Holder& h) {
             OmDimension::Node const root = h.Dimension().Root();
             return root.Child(root.ChildCount() - 1).Value().Text();
         }},
        {"inserted category",
         [](Holder& h, Given t) {
             OmDimension::Node const root = h.Dimension().Root();
             h.Dimension().insertCategory(t, root.Child(0), root, true);
         },
         [](Holder& h) { return h.Dimension().Root().Child(0).Value().Text(); }},
        {"inserted group",
         [](Holder& h, Given t) {
             OmDimension::Node first = h.Dimension().Root().Child(0);
             OmDimension::Node second = h.Dimension().Root().Child(1);
             h.Dimension().insertChild(t, {&first, &second});
         },
         [](Holder& h) { return h.Dimension().Root().Child(0).Value().Text(); }},
        {"outline text", [](Holder& h, Given t) { h.procedure->setOutlineText(t); },
         [](Holder& h) { return h.procedure->Title(); }, "procedure title"},
        {"heading's footnote", [](Holder& h, Given t) { h.procedure->Footnotes()[0].Text(t); },
         [](Holder& h) { return h.procedure->Footnotes()[0].Text(); }},
        {"heading's marker", [](Holder& h, Given t) { h.procedure->Footnotes()[0].Marker(&t); },
         [](Holder& h) { return h.procedure->Footnotes()[0].Marker(); }},
        {"heading's new footnote", [](Holder& h, Given t) { h.procedure->Footnotes().emplace_back(t, &t, 0); },
         [](Holder& h) { return h.procedure->Footnotes().back().Marker(); }},
    };
}

/// The text, and every part of it at every depth.
std::vector<OmCellText const*> WithParts(OmCellText const* text) {
    std::vector<OmCellText const*> all{text};
    for (std::size_t k = 0; k < all.size(); ++k) {
        if (auto const* const composite = dynamic_cast<OmComposite const*>(all[k])) {
            OmComposite::Tree::WalkPreOrder(composite->Components().Root(),
                                            [&](OmComposite::Tree::ConstNode const& node) {
                                                if (node.Depth() > 0) {
                                                    all.push_back(node.Value());
                                                }
                                                return true;
                                            });
        } else if (auto const* const message = dynamic_cast<OmMessage const*>(all[k])) {
            all.push_back(message->Filler(0));
        }
    }
    return all;
}

} // namespace

TEST(OwnTexts, MayBeGivenToEverySetterOrAreReportedAndChangeNothing) {
    int pairs = 0;
    int reported = 0;
    for (bool const isWild : {false, true}) {
        for (Setter const& setter : Setters()) {
            for (Owned const& owned : OwnedTexts()) {
                std::size_t const parts = isWild ? 7 : 6;
                for (std::size_t part = 0; part < parts; ++part) {
                    SCOPED_TRACE(std::string(setter.name) + " given " + owned.name + ", part " + std::to_string(part));
                    AssertionCatcher const caught(AfterReport::Return);
                    Stage stage;
                    {
                        Holder holder(stage, isWild);
                        std::vector<OmCellText const*> const texts = WithParts(owned.text(holder));
                        ASSERT_EQ(texts.size(), parts);
                        OmCellText const* const before = setter.result(holder);
                        std::string const given = texts[part]->AsString();
                        setter.set(holder, *texts[part]);
                        // A wild part makes the order seen; a cell in its own place is cloned first all the same.
                        bool const isOwn =
                            setter.destroysFirst != nullptr && std::string(setter.destroysFirst) == owned.name;
                        bool const isCellItself = std::string(setter.name) == "cell" && part == 0;
                        bool const isReported = OMTREE_HARDENED && isWild && isOwn && !isCellItself;
                        EXPECT_EQ(caught.Failures().size(), isReported ? 1U : 0U);
                        OmCellText const* const after = setter.result(holder);
                        if (isReported) {
                            EXPECT_EQ(after, before);
                        } else if (after != nullptr) {
                            EXPECT_EQ(after->AsString(), given);
                        }
                        reported += isReported ? 1 : 0;
                        ++pairs;
                    }
                    EXPECT_EQ(stage.alive, 0);
                    EXPECT_EQ(stage.aliveCells, 0);
                }
            }
        }
    }
    std::cout << "own texts: " << pairs << " pairs, " << reported << " reported\n";
    EXPECT_EQ(pairs, 3952);
    EXPECT_EQ(reported, OMTREE_HARDENED ? 34 : 0);
}

// --- strings and streams ---------------------------------------------------------------------------------------------

namespace {

/// What a receiver is given, and all that it holds: each setter is given each of the strings, once as it lies there and
/// once as a copy, which must come to the same.
template <typename Receiver>
struct Strings {
    std::function<std::unique_ptr<Receiver>()> make;
    std::vector<std::function<void(Receiver&, std::string const&)>> setters;
    std::vector<std::function<std::string const*(Receiver const&)>> getters; ///< null: the receiver has none

    std::string Shown(Receiver const& receiver) const {
        std::string shown;
        for (auto const& get : getters) {
            std::string const* const string = get(receiver);
            shown += (string != nullptr ? *string : "none") + "|";
        }
        return shown;
    }

    int Run() const {
        int pairs = 0;
        for (std::size_t k = 0; k < setters.size(); ++k) {
            for (std::size_t j = 0; j < getters.size(); ++j) {
                SCOPED_TRACE("setter " + std::to_string(k) + " given string " + std::to_string(j));
                std::unique_ptr<Receiver> const own = Filled();
                std::unique_ptr<Receiver> const copied = Filled();
                EXPECT_EQ(Shown(*own), Shown(*copied));
                for (int times = 0; times < 3; ++times) {
                    std::string const* const string = getters[j](*own);
                    if (string == nullptr) {
                        continue;
                    }
                    std::string const copy(*string);
                    setters[k](*own, *string);
                    setters[k](*copied, copy);
                    EXPECT_EQ(Shown(*own), Shown(*copied));
                }
                ++pairs;
            }
        }
        return pairs;
    }

    std::unique_ptr<Receiver> Filled() const {
        std::unique_ptr<Receiver> receiver = make();
        int number = 0;
        for (auto const& set : setters) {
            set(*receiver, std::to_string(number++) + " a string that is too long to be kept inside a std::string");
        }
        return receiver;
    }
};

/// A member that takes bytes and their length.
template <typename Receiver, typename Class>
auto Bytes(void (Class::*set)(char const*, unsigned int)) {
    return [set](Receiver& receiver, std::string const& string) {
        (receiver.*set)(string.data(), static_cast<unsigned int>(string.size()));
    };
}
template <typename Receiver, typename Class>
auto String(void (Class::*set)(std::string const&)) {
    return [set](Receiver& receiver, std::string const& string) { (receiver.*set)(string); };
}
template <typename Receiver, typename Class>
auto Get(std::string const& (Class::*get)() const) {
    return [get](Receiver const& receiver) { return &(receiver.*get)(); };
}
template <typename Receiver, typename Class>
auto Last(std::vector<std::string> const& (Class::*get)() const) {
    return [get](Receiver const& receiver) {
        std::vector<std::string> const& strings = (receiver.*get)();
        return strings.empty() ? nullptr : &strings.back();
    };
}

} // namespace

TEST(OwnStrings, MayBeGivenToEverySetterOfATable) {
    using Table = OmPivotTable;
    Strings<Table> const strings{
        [] { return std::make_unique<Table>(Text("title"), Text("template"), false); },
        {String<Table>(&Table::TableLocale), String<Table>(&Table::setBorderInfo),
         String<Table>(&Table::setTableLookInfo), String<Table>(&Table::setTablePropertiesInfo),
         String<Table>(&Table::addMiscProperty)},
        {Get<Table>(&Table::TableLocale), Get<Table>(&Table::getBorderInfo), Get<Table>(&Table::getTableLookInfo),
         Get<Table>(&Table::getTablePropertiesInfo), Get<Table>(&Table::getMiscProperties)}};
    EXPECT_EQ(strings.Run(), 25);
}

TEST(OwnStrings, MayBeGivenToEverySetterOfAProcedure) {
    using Part = OmProcedure;
    Strings<Part> const strings{
        [] { return std::make_unique<Part>(Text("title"), std::string(99, 'e'), std::string(99, 'f'), "name"); },
        {String<Part>(&Part::SetCommand), String<Part>(&Part::SetTransCommand)},
        {Get<Part>(&Part::Command), Get<Part>(&Part::TransCommand), Get<Part>(&Part::LanguageCode),
         Get<Part>(&Part::LocaleCodePage), Get<Part>(&Part::LocaleName)}};
    EXPECT_EQ(strings.Run(), 10);
}

TEST(OwnStreams, MayBeGivenToEverySetterOfAChart) {
    using Part = OmChart;
    Strings<Part> const strings{
        [] { return std::make_unique<Part>(Text("title"), "utf-8", 1); },
        {Bytes<Part>(&Part::SetXmlDescription), Bytes<Part>(&Part::SetBinaryDataStream),
         Bytes<Part>(&Part::SetImageStream), Bytes<Part>(&Part::SetViZJSON), Bytes<Part>(&Part::addCSVFileName),
         Bytes<Part>(&Part::addCSVFileContent), Bytes<Part>(&Part::addGeoJSONFileName),
         Bytes<Part>(&Part::addGeoJSONFileContent), Bytes<Part>(&Part::setVizJSONTemplate),
         String<Part>(&Part::setOptions)},
        {Get<Part>(&Part::GetXmlDescription), Get<Part>(&Part::GetXmlData), Get<Part>(&Part::GetImageData),
         Get<Part>(&Part::GetViZJSONData), Last<Part>(&Part::getCSVFileNames), Last<Part>(&Part::getCSVFiles),
         Last<Part>(&Part::getGeoJSONFileNames), Last<Part>(&Part::getGeoJSONContent),
         Get<Part>(&Part::getVizJSONTemplate), Get<Part>(&Part::getOptions), Get<Part>(&Part::LocaleCodePage)}};
    EXPECT_EQ(strings.Run(), 110);
}

TEST(OwnStreams, MayBeGivenToEverySetterOfAModelAnInteractiveItemAndAnAnswerTree) {
    using Model = OmModel;
    Strings<Model> const ofModel{[] { return std::make_unique<Model>(Text("title")); },
                                 {Bytes<Model>(&Model::SetPMML), Bytes<Model>(&Model::SetBinaryDataStream),
                                  Bytes<Model>(&Model::SetPMMLContainer), Bytes<Model>(&Model::SetStatXMLContainer)},
                                 {Get<Model>(&Model::GetPMML), Get<Model>(&Model::GetBinaryDataStream),
                                  Get<Model>(&Model::GetPMMLContainer), Get<Model>(&Model::GetStatXMLContainer)}};
    using Item = OmInteractive;
    Strings<Item> const ofItem{[] { return std::make_unique<Item>(Text("title"), "utf-8", 1); },
                               {Bytes<Item>(&Item::addGeoJSONFileName), Bytes<Item>(&Item::addGeoJSONFileContent),
                                Bytes<Item>(&Item::setInteractiveJSON), String<Item>(&Item::setProcedureName),
                                String<Item>(&Item::setJSONPath), String<Item>(&Item::setOptions)},
                               {Last<Item>(&Item::getGeoJSONFileNames), Last<Item>(&Item::getGeoJSONContent),
                                Get<Item>(&Item::getInteractiveJSON), Get<Item>(&Item::getProcedureName),
                                Get<Item>(&Item::getJSONPath), Get<Item>(&Item::getOptions),
                                Get<Item>(&Item::LocaleCodePage)}};
    using Tree = OmAnswerTree;
    Strings<Tree> const ofTree{[] { return std::make_unique<Tree>(Text("title"), "kept"); },
                               {Bytes<Tree>(&Tree::SetPath),
                                [](Tree& tree, std::string const& string) {
                                    tree.SetCompressedXML(string.data(), static_cast<unsigned int>(string.size()), 5);
                                },
                                Bytes<Tree>(&Tree::SetUncompressedXML), Bytes<Tree>(&Tree::SetUncompressedDisplayXML)},
                               {Get<Tree>(&Tree::GetPath), Get<Tree>(&Tree::GetCompressedXml),
                                Get<Tree>(&Tree::GetUncompressedXml), Get<Tree>(&Tree::GetUncompressedDisplayXML)}};
    EXPECT_EQ(ofModel.Run(), 16);
    EXPECT_EQ(ofItem.Run(), 42);
    EXPECT_EQ(ofTree.Run(), 16);
}

// --- everything else -------------------------------------------------------------------------------------------------

namespace {

struct World : Holder {
    explicit World(Stage& itsStage) : Holder(itsStage, false) {
        table->Rows() = {0, 1};
        table->Columns() = {2};
        for (char const* const title : {"one", "two"}) {
            OmOutputTree::Node const section = tree.AppendChild(tree.Root(), new OmProcedure(Text(title), "", "", ""));
            tree.AppendChild(tree.AppendChild(section, new OmTextBlock(Text("block"), "a code page that is long")),
                             new OmTextBlock(Text("below"), ""));
        }
        other.AddDimension(Text("o"));
    }

    std::string Axes() const {
        std::string axes;
        for (PuppetVector<short> const* const axis : {&table->Rows(), &table->Columns(), &table->Layers()}) {
            for (short const number : *axis) {
                axes += std::to_string(number);
            }
            axes += "|";
        }
        return axes;
    }
    OmOutputTree::Node At(int position) { return {tree, std::next(tree.List().begin(), position)}; }
    std::string Titles() const {
        std::string titles;
        for (OmOutputTree::Record const& record : tree.List()) {
            titles += record.value->Title()->AsString() + std::to_string(record.level) + " ";
        }
        return titles;
    }

    OmOutputTree tree{};
    OmPivotTable other{Text("other"), Text("template"), false};
};

constexpr char Whole[] = "Output0 one1 block2 below3 two1 block2 below3 ";

struct Call {
    char const* name;
    std::function<void(World&)> run;
    char const* report = nullptr; ///< the condition that the call fails
};

std::vector<Call> CallsOfATable() {
    return {
        {"an axis assigned to another",
         [](World& w) {
             w.table->Columns() = w.table->Rows();
             EXPECT_EQ(w.Axes(), "01|01||");
         }},
        {"an axis assigned to itself",
         [](World& w) {
             w.table->Rows() = std::as_const(w.table->Rows());
             EXPECT_EQ(w.Axes(), "01|2||");
         }},
        {"an axis exchanged with itself and another",
         [](World& w) {
             w.table->Rows().swap(w.table->Rows());
             w.table->Rows().swap(w.table->Layers());
             EXPECT_EQ(w.Axes(), "|2|01|");
         }},
        {"an axis given its own entries",
         [](World& w) {
             for (int k = 0; k < 9; ++k) {
                 w.table->Rows().push_back(w.table->Rows()[1]);
                 w.table->Rows().insert(w.table->Rows().begin(), w.table->Rows().back());
             }
             EXPECT_EQ(w.table->Rows().size(), 20U);
         }},
        {"its own dimension",
         [](World& w) {
             for (int k = 0; k < 6; ++k) {
                 w.table->AddDimension(w.table->Dimension(k));
                 EXPECT_EQ(w.table->Dimension(k + 1).Index(), k + 1);
                 EXPECT_EQ(omtest::Categories(w.table->Dimension(k + 1)), omtest::Categories(w.table->Dimension(0)));
             }
         }},
        {"its own dimensions",
         [](World& w) {
             EXPECT_THROW(w.table->CopyDimensions(*w.table), OMSException);
             OmPivotTable empty(Text("e"), Text("t"), false);
             empty.CopyDimensions(empty);
             EXPECT_EQ(empty.NDimensions(), 0U);
         }},
        {"its own settings",
         [](World& w) {
             w.table->getBackendSettings().setLocale("a locale that is too long to be kept inside a string");
             w.table->setBackendSettings(w.table->getBackendSettings());
             EXPECT_EQ(w.table->getBackendSettings().getLocale(),
                       "a locale that is too long to be kept inside a string");
         }},
        {"its own format",
         [](World& w) {
             auto* const format = new FormatArea(FormatArea::Data);
             w.table->setAreaFormat(format);
             if (OMTREE_HARDENED) {
                 w.table->setAreaFormat(w.table->getAreaFormat(FormatArea::Data));
             }
             EXPECT_EQ(w.table->getAreaFormat(FormatArea::Data), format);
         },
         "format != getAreaFormat(format->getArea())"},
        {"a format's own strings",
         [](World&) {
             FormatArea format(FormatArea::Data);
             format.setFontName("a name that is too long to be kept inside a string");
             format.setFontName(format.getFontName());
             format.setTextColor(format.getFontName());
             EXPECT_EQ(format.getTextColor(), format.getFontName());
         }},
        {"its own widths and styles",
         [](World& w) {
             w.table->setTableCustomWidths({1, 2});
             w.table->setTableCustomWidths(w.table->getTableCustomWidths());
             w.table->setTableCustomHeights(w.table->getTableCustomWidths());
             w.table->emptyCellStyles()[1] = 2;
             w.table->emptyCellStyles() = std::as_const(w.table->getEmptyCellStyles());
             w.table->cellStyles().resize(2);
             w.table->cellStyles() = std::as_const(w.table->getCellStyles());
             EXPECT_EQ(w.table->getTableCustomHeights().size() + w.table->cellStyles().size(), 4U);
         }},
        {"its own footnotes",
         [](World& w) {
             for (int k = 0; k < 9; ++k) {
                 w.table->Footnotes().push_back(w.table->Footnotes()[0]);
                 w.table->Footnotes().insert(0, w.table->Footnotes().back());
                 w.table->Footnote(w.table->Footnotes()[2], true);
                 w.table->Footnote(w.table->Footnotes()[1], false);
             }
             w.table->Footnotes() = std::as_const(w.table->Footnotes());
             w.table->Footnotes()[3] = w.table->Footnotes()[4];
             w.table->Footnotes()[3] = std::as_const(w.table->Footnotes()[3]);
             ASSERT_EQ(w.table->Footnotes().size(), 28U);
             for (OmFootnote const& note : w.table->Footnotes()) {
                 EXPECT_EQ(note.Text()->AsString() + note.Marker()->AsString(), "abc!abc!");
             }
         }},
        {"its own texts to its trackers",
         [](World& w) {
             w.table->setBackendSettings(BackendSettings());
             w.table->setHelper(*w.table->Title());
             w.table->setHelper(*w.table->Cell({0}));
             EXPECT_EQ(w.table->Cell({0})->Tracker(), w.table->getICUTracker());
         }},
        {"an iterator's own",
         [](World& w) {
             OmPivotTable::Iterator cell = w.table->FirstCell();
             cell = std::as_const(cell);
             ++cell;
             EXPECT_EQ(cell.Index(), (std::vector<int>{1}));
         }},
    };
}

std::vector<Call> CallsOfADimension() {
    return {
        {"its own root's and children's values",
         [](World& w) {
             OmDimension& dimension = w.Dimension();
             dimension.Child(dimension.Root(), dimension.Root().Value());
             dimension.Child(dimension.Root(), dimension.Root().Child(1).Value());
             dimension.Child(dimension.Root(), dimension.Root().Child(0).Child(0).Value());
             EXPECT_EQ(omtest::Categories(dimension), "abc!(abc!) abc!");
         }},
        {"a node's own value",
         [](World& w) {
             OmDimension::Node const group = w.Dimension().Root().Child(0);
             group.Value() = std::as_const(group.Value());
             EXPECT_EQ(group.Value().Text()->AsString(), "abc!");
             group.Value() = group.Child(0).Value();
             EXPECT_EQ(group.Value().Text()->AsString(), "abc!");
             EXPECT_EQ(group.Child(0).Value().Text(), nullptr);
         }},
        {"a node beside itself",
         [](World& w) {
             OmDimension::Node node = w.Dimension().Root().Child(0);
             OmDimension::Node same = node;
             w.Dimension().moveChild(node, &node, true);
             w.Dimension().moveChild(node, &same, true);
             w.Dimension().moveChild(node, &same, false); // no child equals it when it is gone: to the end
             EXPECT_EQ(omtest::Categories(w.Dimension()), "abc! abc!(abc!)");
         }},
        {"a node below itself",
         [](World& w) {
             OmDimension::Node node = w.Dimension().Root().Child(0);
             OmDimension::Node below = node.Child(0);
             w.Dimension().moveChild(node, &below, false);
             w.Dimension().moveChild(node, &below, true);
             EXPECT_EQ(omtest::Categories(w.Dimension()), "abc!(abc!) abc!");
         }},
        {"a list with one node twice",
         [](World& w) {
             OmDimension::Node node = w.Dimension().Root().Child(1);
             w.Dimension().insertChild(Text("g"), {&node, &node});
             EXPECT_EQ(omtest::Categories(w.Dimension()), "abc!(abc!) g(abc! abc!)");
         }},
        {"a list with a node and one below it",
         [](World& w) {
             OmDimension::Node node = w.Dimension().Root().Child(0);
             OmDimension::Node below = node.Child(0);
             w.Dimension().insertChild(Text("g"), {&node, &below});
             EXPECT_EQ(omtest::Categories(w.Dimension()), "g(abc!(abc!) abc!) abc!");
         }},
        {"its own counterpart",
         [](World& w) {
             OmDimension::Node below = w.Dimension().Root().Child(0).Child(0);
             EXPECT_EQ(w.Dimension().Counterpart(below), below);
         }},
        {"a category beside its own parent",
         [](World& w) {
             OmDimension::Node const root = w.Dimension().Root();
             w.Dimension().insertCategory(Text("x"), root, root, true);
             w.Dimension().insertCategory(Text("y"), root, root, false);
             EXPECT_EQ(omtest::Categories(w.Dimension()), "abc!(abc!) abc! x y");
         }},
    };
}

std::vector<Call> CallsOfADocument() {
    return {
        {"a document assigned to itself",
         [](World& w) {
             w.tree = std::as_const(w.tree);
             EXPECT_EQ(w.Titles(), Whole);
             EXPECT_TRUE(w.tree == w.tree);
             EXPECT_FALSE(w.tree < w.tree);
         }},
        {"a list tree's own records",
         [](World& w) {
             OmOutputTree::Node const begin = w.At(4);
             AssertionCatcher const caught(AfterReport::Throw);
             EXPECT_THROW(w.tree.Move(w.At(1), begin, w.At(4)), omtest::FailedAssertion);
             EXPECT_EQ(w.Titles(), Whole);
         }},
        {"a section its own title",
         [](World& w) {
             OmOutputTree::Node const block = Amputate(w.At(1), w.At(1).Value()->Title(), "");
             EXPECT_EQ(block.Value()->Title()->AsString(), "one");
             EXPECT_EQ(w.Titles(), "Output0 one1 one2 two1 block2 below3 ");
         }},
        {"a section a title and a code page below it",
         [](World& w) {
             auto const& below = dynamic_cast<OmTextBlock const&>(*w.At(2).Value());
             OmOutputTree::Node const block = Amputate(w.At(1), below.Title(), below.LocaleCodePage());
             EXPECT_EQ(dynamic_cast<OmTextBlock&>(*block.Value()).LocaleCodePage(), "a code page that is long");
             EXPECT_EQ(w.Titles(), "Output0 one1 block2 two1 block2 below3 ");
         }},
        {"a block its own code page",
         [](World& w) {
             auto const& part = dynamic_cast<OmTextBlock const&>(*w.At(2).Value());
             Amputate(w.At(2), nullptr, part.LocaleCodePage());
             EXPECT_EQ(w.Titles(), "Output0 one1 below2 block2 two1 block2 below3 ");
         }},
        {"a part's own fields",
         [](World& w) {
             OmTextBlock block(Text("t"), "page");
             block = std::as_const(block);
             block.TextList().push_back("line");
             block.TextList() = std::as_const(block.TextList());
             EXPECT_EQ(block.Size(), 1U);
             *w.procedure = std::as_const(*w.procedure);
             EXPECT_EQ(w.procedure->Title()->AsString(), "abc!");
         }},
    };
}

std::vector<Call> CallsOfTexts() {
    return {
        {"a composite and its parts appended to it",
         [](World& w) {
             std::unique_ptr<OmComposite> const text = Nested(nullptr);
             std::string expected = "abc!";
             for (int k = 0; k < 4; ++k) {
                 text->Append(*text);
                 expected += expected;
                 OmComposite::Tree::Node const first = text->Components().Root().Child(0);
                 text->Append(*first.Value());
                 expected += "a";
                 EXPECT_EQ(text->AsString(), expected);
             }
             text->Append(text->Components().Root().Child(0), *text);
             EXPECT_EQ(text->AsString(), "a" + expected + expected.substr(1));
             static_cast<void>(w);
         }},
        {"a message and what fills it filled into it",
         [](World&) {
             OmMessage message("{0}{1}");
             message.Fill(0, Text("x"));
             message.Fill(1, message);
             message.Fill(0, *message.Filler(1));
             message.Fill(1, *message.Filler(1));
             EXPECT_EQ(message.AsString(), "x{1}x{1}");
         }},
        {"metadata and alternative text of its own",
         [](World&) {
             OmStringCell cell("cell");
             OmCellMetaData meta;
             meta.markers = {"a"};
             cell.setMeta(&meta);
             cell.setMeta(cell.getMeta());
             cell.SetAltText("an alternative text that is too long for a string");
             cell.SetAltText(cell.AltText());
             EXPECT_EQ(cell.getMarkers(), meta.markers);
             EXPECT_EQ(cell.AltText(), "an alternative text that is too long for a string");
         }},
        {"every text compared with itself",
         [](World&) {
             std::unique_ptr<OmComposite> const text = Nested(nullptr);
             for (OmCellText const* const part : WithParts(text.get())) {
                 EXPECT_EQ(part->Compare(*part), 0);
             }
         }},
    };
}

} // namespace

TEST(OwnObjects, MayBeGivenToTheirOwner) {
    int calls = 0;
    for (std::vector<Call> (*const some)() : {CallsOfATable, CallsOfADimension, CallsOfADocument, CallsOfTexts}) {
        for (Call const& call : some()) {
            SCOPED_TRACE(call.name);
            AssertionCatcher* caught = std::string(call.name) == "a list tree's own records"
                                           ? nullptr
                                           : new AssertionCatcher(AfterReport::Return);
            std::unique_ptr<AssertionCatcher> const owned(caught);
            Stage stage;
            {
                World world(stage);
                call.run(world);
            }
            EXPECT_EQ(stage.alive, 0);
            bool const isReported = OMTREE_HARDENED && call.report != nullptr;
            EXPECT_EQ(caught != nullptr ? caught->Failures().size() : 0U, isReported ? 1U : 0U);
            ++calls;
        }
    }
    EXPECT_EQ(calls, 31);
}
