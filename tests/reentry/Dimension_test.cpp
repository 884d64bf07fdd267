// Every pair of operations of a dimension, the inner one called by a label that the outer one clones, hands a tracker,
// asks or destroys.
#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "platform/BackendSettings.h"
#include "tests/reentry/Reentry.h"
#include "tests/support/CategoryText.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::Label;
using omtest::reentry::Changes;
using omtest::reentry::Driver;
using omtest::reentry::ExpectReadable;
using omtest::reentry::IsQuestion;
using omtest::reentry::Member;
using omtest::reentry::Stage;
using omtest::reentry::Tally;
using omtest::reentry::WildText;
using Node = OmDimension::Node;

/// a A(p q) ~B(r(s)) c d e, where a, A, p, r, c and e are wild. A second group, H, has twelve children with string
/// labels, enough for a hash.
class World {
public:
    explicit World(Stage& itsStage) : stage(itsStage) {
        table = std::make_unique<OmPivotTable>(Label("title"), Label("template"), false);
        other = std::make_unique<OmPivotTable>(Label("other"), Label("template"), false);
        dimension = &table->AddDimension(Wild("D"));
        Node const root = dimension->Root();
        dimension->Child(root, Wild("a"), 0, false);
        dimension->Child(root, Wild("A"), 90, true);
        dimension->Child(*Find("A"), Wild("p"), 1, false);
        dimension->Child(*Find("A"), Label("q"), 2, false);
        dimension->Child(root, Label("B"), 91, true);
        dimension->Child(*Find("B"), Wild("r"), 92, true);
        dimension->Child(*Find("r"), Wild("s"), 3, false);
        Find("B")->Value().Hide(true);
        dimension->Child(root, Wild("c"), 4, false);
        dimension->Child(root, Label("d"), 5, false);
        dimension->Child(root, Wild("e"), 6, false);
        dimension->Child(root, Label("H"), 93, true);
        for (int k = 0; k < 12; ++k) {
            dimension->Child(*Find("H"), Label("h" + std::to_string(k)), static_cast<unsigned>(10 + k), false);
        }
        for (int k = 0; k < 12; ++k) {
            dimension->Child(*Find("H"), Label("h" + std::to_string(k)), 0, false);
        }
    }

    WildText Wild(char const* text) const { return WildText(stage, text); }
    bool IsOver() const { return table == nullptr; }

    std::optional<Node> Find(std::string const& label) const {
        std::vector<Node> waiting{dimension->Root()};
        while (!waiting.empty()) {
            Node const node = waiting.back();
            waiting.pop_back();
            OmCellText const* const text = node.Value().Text();
            if (node.Depth() != 0 && text != nullptr && text->AsString() == label) {
                return node;
            }
            for (std::size_t k = node.ChildCount(); k > 0; --k) {
                waiting.push_back(node.Child(k - 1));
            }
        }
        return std::nullopt;
    }
    bool Has(std::string const& label) const { return Find(label).has_value(); }

    /// Does it with the node where there is one.
    template <typename Act>
    void With(char const* label, Act act) {
        if (std::optional<Node> node = Find(label)) {
            act(*node);
        }
    }

    void Check() const {
        Check(*dimension);
        for (std::size_t k = 0; k < other->NDimensions(); ++k) {
            Check(other->Dimension(static_cast<int>(k)));
        }
        table->SetTableTitle(Label("title"));
        table->Print();
        other->SetTableTitle(Label("title"));
        other->Print();
    }

    void Use() {
        dimension->Child(dimension->Root(), Wild("used"), 77, false);
        EXPECT_TRUE(Has("used"));
        dimension->AddNewChild(dimension->Root(), Wild("appended"), 78, false);
        std::vector<std::string> labels;
        OmDimension::Tree::WalkPreOrder(std::as_const(*dimension).Root(), [&](OmDimension::ConstNode const& node) {
            if (node.Value().Text() != nullptr && node.Depth() > 0) {
                labels.push_back(node.Value().Text()->AsString());
            }
            return true;
        });
        for (std::string const& label : labels) {
            With(label.c_str(), [&](Node& node) { dimension->Delete(node); });
            OmDimension::Tree::Reparent(dimension->Root(), true);
        }
        EXPECT_EQ(dimension->Root().ChildCount(), nameless);
        EXPECT_GE(dimension->NumCategories(), 1);
        dimension->Child(dimension->Root(), Wild("last"), 0, false);
        EXPECT_TRUE(Has("last"));
    }

    Stage& stage;
    std::unique_ptr<OmPivotTable> table{};
    std::unique_ptr<OmPivotTable> other{};
    OmDimension* dimension{};
    std::size_t nameless = 0; ///< nodes of whose labels an assignment took hold

private:
    void Check(OmDimension const& checked) const {
        std::size_t nodes = 0;
        OmDimension::Tree::WalkPreOrder(checked.Root(), [&](OmDimension::ConstNode const& node) {
            if (node.Value().Text() != nullptr) {
                ExpectReadable(stage, node.Value().Text());
            }
            OmDimension::FindChild(node, Label("q"), false);
            OmDimension::FindChild(node, Wild("p"), false);
            std::string const line = omtest::PrintedBy(node.Value(), 0);
            EXPECT_NE(line.find("Subscript: "), std::string::npos);
            ++nodes;
            return nodes < 1000;
        });
        EXPECT_LT(nodes, 1000U);
        EXPECT_GE(checked.getMaximumDepth(), 1U);
        checked.getMaxVisibleGroupCount();
        OmDimension::Tree::Reparent(const_cast<OmDimension&>(checked).Root(), true);
        EXPECT_TRUE(omtest::ParentPointersHold(checked));
    }
};

using Row = omtest::reentry::Row<World>;

/// What rows with these places do moves children of the root.
std::vector<Row> GrowingRows() {
    return {
        {"find or create a wild leaf", "root leaf",
         [](World& w) { w.dimension->Child(w.dimension->Root(), w.Wild("made"), 30, false); },
         [](World& w) { return w.Has("made"); }},
        {"find or create a leaf", "root string",
         [](World& w) { w.dimension->Child(w.dimension->Root(), Label("string"), 31, false); },
         [](World& w) { return w.Has("string"); }},
        {"find or create by a value", "root value",
         [](World& w) {
             w.dimension->Child(w.dimension->Root(), OmDimensionNode(w.Wild("valued"), 32, true, nullptr));
         },
         [](World& w) { return w.Has("valued"); }},
        {"find or create what is there", "",
         [](World& w) { w.dimension->Child(w.dimension->Root(), w.Wild("e"), 33, false); }},
        {"find or create in a group", "group",
         [](World& w) { w.With("A", [&](Node& group) { w.dimension->Child(group, w.Wild("in A"), 34, false); }); },
         [](World& w) { return !w.Has("A") || w.Has("in A"); }},
        {"find or create among hashed labels", "hashed",
         [](World& w) { w.With("H", [&](Node& group) { w.dimension->Child(group, w.Wild("in H"), 35, false); }); },
         [](World& w) { return !w.Has("H") || w.Has("in H"); }},
        {"find or create strings among hashed labels", "hashed strings",
         [](World& w) {
             for (int k = 0; k < 12; ++k) {
                 w.With("H",
                        [&](Node& group) { w.dimension->Child(group, Label("i" + std::to_string(k)), 40, false); });
             }
         },
         [](World& w) { return !w.Has("H") || w.Has("i11"); }},
        {"append a wild leaf", "root appended",
         [](World& w) { w.dimension->AddNewChild(w.dimension->Root(), w.Wild("appended"), 36, false); },
         [](World& w) { return w.Has("appended"); }},
        {"append many leaves", "root many",
         [](World& w) {
             for (int k = 0; k < 9; ++k) {
                 w.dimension->AddNewChild(w.dimension->Root(), Label("many"), 37, false);
             }
         },
         [](World& w) { return w.Has("many"); }},
        {"find a wild child", "", [](World& w) { OmDimension::FindChild(w.dimension->Root(), w.Wild("e"), false); }},
        {"find a child by a string", "",
         [](World& w) { OmDimension::FindChild(w.dimension->Root(), Label("d"), false); }},
        {"find a wild child among hashed labels", "",
         [](World& w) { w.With("H", [&](Node& group) { OmDimension::FindChild(group, w.Wild("h4"), false); }); }},
    };
}

std::vector<Row> ChangingRows() {
    return {
        {"delete a wild leaf", "root c", [](World& w) { w.With("c", [&](Node& node) { w.dimension->Delete(node); }); },
         [](World& w) { return !w.Has("c"); }},
        {"delete a group", "root A", [](World& w) { w.With("A", [&](Node& node) { w.dimension->Delete(node); }); },
         [](World& w) { return !w.Has("A"); }},
        {"delete every child", "root",
         [](World& w) {
             while (w.dimension->Root().ChildCount() != 0) {
                 Node last = w.dimension->Root().Child(w.dimension->Root().ChildCount() - 1);
                 w.dimension->Delete(last);
             }
         }},
        {"dissolve a group", "root A",
         [](World& w) { w.With("A", [&](Node& node) { w.dimension->removeChild(node); }); },
         [](World& w) { return !w.Has("A"); }},
        {"swap siblings", "root swap",
         [](World& w) {
             w.With("a", [&](Node& node) {
                 w.With("c", [&](Node& target) { w.dimension->moveChild(node, &target, true); });
             });
         }},
        {"swap with the next sibling", "root swap",
         [](World& w) {
             w.With("c", [&](Node& node) {
                 w.With("d", [&](Node& target) { w.dimension->moveChild(node, &target, true); });
             });
         }},
        {"move before a node elsewhere", "root move",
         [](World& w) {
             w.With("e", [&](Node& node) {
                 w.With("p", [&](Node& target) { w.dimension->moveChild(node, &target, false); });
             });
         }},
        {"move to a visible ancestor", "root visible",
         [](World& w) { w.With("r", [&](Node& node) { w.dimension->moveChild(node, nullptr, false); }); }},
        {"gather nodes", "root gathered",
         [](World& w) {
             w.With("c", [&](Node& c) {
                 w.With("p", [&](Node& p) {
                     w.With("s", [&](Node& s) { w.dimension->insertChild(w.Wild("gathered"), {&c, &p, &s}); });
                 });
             });
         }},
        {"insert a category", "root inserted",
         [](World& w) {
             w.With("c", [&](Node& node) {
                 w.dimension->insertCategory(w.Wild("inserted"), node, w.dimension->Root(), false);
             });
         }},
    };
}

std::vector<Row> OtherRows() {
    return {
        {"copy into another table", "the other table", [](World& w) { w.other->AddDimension(*w.dimension); },
         [](World& w) { return w.other->NDimensions() > 0; }},
        {"copy into its own table", "the table", [](World& w) { w.table->AddDimension(*w.dimension); },
         [](World& w) { return w.table->NDimensions() > 1; }},
        {"copy all into another table", "the other table", [](World& w) { w.other->CopyDimensions(*w.table); },
         [](World& w) { return w.other->NDimensions() > 0; }},
        {"replace the name", "name", [](World& w) { w.dimension->Root().Value().Text(w.Wild("N")); },
         [](World& w) { return w.dimension->Name().AsString() == "N"; }},
        {"replace a label", "root label",
         [](World& w) { w.With("a", [&](Node& node) { node.Value().Text(w.Wild("b")); }); }},
        {"replace a label by itself", "root label",
         [](World& w) { w.With("a", [&](Node& node) { node.Value().Text(*node.Value().Text()); }); }},
        {"assign a value", "root assigned",
         [](World& w) {
             OmDimensionNode const value(w.Wild("assigned"), 50, false, nullptr);
             w.With("e", [&](Node& node) { node.Value() = value; });
         }},
        {"find the counterpart", "",
         [](World& w) {
             w.With("A", [&](Node& node) {
                 if (node.Parent().ChildCount() != 0) {
                     w.dimension->Counterpart(node);
                 }
             });
         }},
        {"print", "",
         [](World& w) {
             w.dimension->Root().Value().Print(0);
             w.With("p", [](Node& node) { node.Value().Print(1); });
         }},
        {"ask for depths", "",
         [](World& w) { w.dimension->getMaximumDepth(), w.dimension->getMaxVisibleGroupCount(); }},
        {"take settings", "settings", [](World& w) { w.table->setBackendSettings(BackendSettings()); },
         [](World& w) { return w.table->getICUTracker() != nullptr; }},
        {"destroy the tables",
         "the tables",
         [](World& w) {
             delete w.table.get();
             static_cast<void>(w.table.release());
         },
         {},
         true},
    };
}

std::vector<Row> Rows() {
    std::vector<Row> all;
    for (std::vector<Row> (*const rows)() : {GrowingRows, ChangingRows, OtherRows}) {
        for (Row& row : rows()) {
            all.push_back(std::move(row));
        }
    }
    return all;
}

bool Starts(char const* text, char const* with) { return std::string(text).find(with) == 0; }

/// Whether the row's operands, but for the root, stand in the dimension, or it copies the dimension.
bool HasOperands(Row const& row) {
    for (Row const& changing : ChangingRows()) {
        if (std::string(changing.name) == row.name) {
            return true;
        }
    }
    for (char const* const start : {"find or create in a", "find or create among", "find or create strings",
                                    "find a wild child among", "copy", "replace a label", "assign", "print"}) {
        if (Starts(row.name, start)) {
            return true;
        }
    }
    return false;
}

char const* ReasonFor(Row const& outer, Row const& inner, Member member) {
    if (IsQuestion(member) && Changes(inner)) {
        return "a label that is asked changes nothing";
    }
    if (Starts(outer.name, "destroy the tables") && !Starts(inner.name, "take settings")) {
        return "a dimension that is destroyed is used no more";
    }
    bool const isCloned = member == Member::Clone || member == Member::CloneDone || member == Member::SetTracker;
    bool const changesTree = Starts(inner.place, "root") || Starts(inner.place, "group") ||
                             Starts(inner.place, "hashed") || Starts(inner.place, "name");
    if (isCloned && HasOperands(outer) && changesTree) {
        return "a label that is cloned or visited leaves the operands, and what is copied, where they are";
    }
    return nullptr;
}

} // namespace

TEST(DimensionReentry, EveryPairLeavesADimensionThatIsWhole) {
    Tally const tally =
        Driver<World>(Rows(), ReasonFor,
                      {Member::Clone, Member::CloneDone, Member::Accept, Member::SetTracker, Member::Compare,
                       Member::TextLength, Member::AsString, Member::OrderCode, Member::Destroy})
            .Run();
    tally.Print("dimension");
    EXPECT_EQ(tally.pairs, 10098);
    EXPECT_GE(tally.Driven(), 2000);
}
