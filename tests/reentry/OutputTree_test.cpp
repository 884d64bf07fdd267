// Every pair of operations of an output tree, the inner one called by a part, or its title, that the outer one visits,
// clones or destroys.
#include "backend/tables/om/OmHeading.h"
#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmTextBlock.h"
#include "tests/reentry/Reentry.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::reentry::Changes;
using omtest::reentry::Driver;
using omtest::reentry::ExpectReadable;
using omtest::reentry::IsQuestion;
using omtest::reentry::Member;
using omtest::reentry::Stage;
using omtest::reentry::Tally;
using omtest::reentry::WildPart;
using omtest::reentry::WildText;
using Node = OmOutputTree::Node;

/// Output, and below it a(b(c d(x)) e) f(g) h, and a record without a part below h.
class World {
public:
    explicit World(Stage& itsStage) : stage(itsStage) {
        tree = std::make_unique<OmOutputTree>();
        Add("Output", new WildPart(stage, "a"));
        Add("a", new WildPart(stage, "b"));
        Add("b", new WildPart(stage, "c"));
        Add("b", new WildPart(stage, "d"));
        Add("d", new WildPart(stage, "x"));
        Add("a", new WildPart(stage, "e"));
        Add("Output", new WildPart(stage, "f"));
        Add("f", new WildPart(stage, "g"));
        Add("Output", new WildPart(stage, "h"));
        Add("h", nullptr);
    }

    bool IsOver() const { return tree == nullptr; }

    std::optional<Node> Find(std::string const& title) const {
        for (auto position = tree->List().begin(); position != tree->List().end(); ++position) {
            if (position->value != nullptr && position->value->Title() != nullptr &&
                position->value->Title()->AsString() == title) {
                return Node(*tree, position);
            }
        }
        return std::nullopt;
    }
    bool Has(char const* title) const { return Find(title).has_value(); }

    template <typename Act>
    void With(char const* title, Act act) {
        if (std::optional<Node> node = Find(title)) {
            act(*node);
        }
    }
    void Add(char const* parent, OmOutputPart* part) {
        std::unique_ptr<OmOutputPart> owned(part);
        if (IsOver()) {
            return;
        }
        With(parent, [&](Node& node) { tree->AppendChild(node, owned.release()); });
    }

    void Check() const {
        int before = -1;
        for (OmOutputTree::Record const& record : std::as_const(*tree).List()) {
            EXPECT_LE(record.level, before + 1);
            EXPECT_GE(record.level, 0);
            before = record.level;
            if (auto* const wild = dynamic_cast<WildPart*>(record.value)) {
                ASSERT_TRUE(stage.Knows(wild)) << "held, but destroyed";
            }
            if (record.value != nullptr) {
                ExpectReadable(stage, record.value->Title());
            }
        }
        EXPECT_EQ(tree->Size(), static_cast<int>(tree->List().size()));
    }

    void Use() {
        if (tree->Size() == 0) {
            tree->List().push_back({new WildPart(stage, "root"), 0});
        }
        Node const added = tree->AppendChild(tree->Root(), new WildPart(stage, "used"));
        tree->AppendChild(added, new WildPart(stage, "below"));
        Node node = added;
        tree->Prune(node);
        EXPECT_FALSE(Has("used"));
    }

    /// The parts that an assignment lets go of, but for those whose destructors run.
    void Drop() {
        for (OmOutputTree::Record const& record : tree->List()) {
            if (stage.Knows(record.value)) {
                dropped.emplace_back(record.value);
            } else if (dynamic_cast<OmHeading*>(record.value) != nullptr) {
                dropped.emplace_back(record.value);
            } else if (dynamic_cast<OmTextBlock*>(record.value) != nullptr) {
                dropped.emplace_back(record.value);
            }
        }
    }

    Stage& stage;
    std::unique_ptr<OmOutputTree> tree{};
    std::vector<std::unique_ptr<OmOutputPart>> dropped{};
};

using Row = omtest::reentry::Row<World>;

std::vector<Row> Rows() {
    auto const prune = [](char const* title) {
        return [title](World& w) { w.With(title, [&](Node& node) { w.tree->Prune(node); }); };
    };
    auto const erase = [](char const* title) {
        return [title](World& w) { w.With(title, [&](Node& node) { w.tree->Erase(node); }); };
    };
    return {
        {"append below the root", "records h", [](World& w) { w.Add("Output", new WildPart(w.stage, "last")); },
         [](World& w) { return !w.Has("Output") || w.Has("last"); }},
        {"append below a heading", "records a b", [](World& w) { w.Add("b", new WildPart(w.stage, "below b")); },
         [](World& w) { return !w.Has("b") || w.Has("below b"); }},
        {"append to the list", "records list",
         [](World& w) {
             auto part = std::make_unique<WildPart>(w.stage, "pushed");
             if (!w.IsOver()) {
                 w.tree->List().push_back({part.release(), w.tree->Size() == 0 ? 0 : 1});
             }
         },
         [](World& w) { return w.Has("pushed"); }},
        {"move records in from another tree", "records moved",
         [](World& w) {
             ListTree<OmOutputPart*> source(static_cast<OmOutputPart*>(nullptr));
             auto part = std::make_unique<WildPart>(w.stage, "moved");
             if (w.IsOver() || w.tree->Size() == 0) {
                 return;
             }
             source.AppendChild(source.Root(), part.release());
             Node const begin(source, std::next(source.List().begin()));
             w.tree->Move(Node(*w.tree, w.tree->List().end(), 1), begin, Node(source, source.List().end(), 1));
         },
         [](World& w) { return w.tree->Size() == 0 || w.Has("moved"); }},
        {"prune a branch", "records a", prune("a"), [](World& w) { return !w.Has("a"); }},
        {"prune a branch in it", "records a b", prune("b"), [](World& w) { return !w.Has("b"); }},
        {"prune a leaf in it", "records a b", prune("x"), [](World& w) { return !w.Has("x"); }},
        {"prune another branch", "records f", prune("f"), [](World& w) { return !w.Has("f"); }},
        {"prune the document", "records", prune("Output")},
        {"erase a heading", "records a", erase("a"), [](World& w) { return !w.Has("a"); }},
        {"erase a heading below it", "records a b", erase("b"), [](World& w) { return !w.Has("b"); }},
        {"erase another leaf", "records f", erase("g"), [](World& w) { return !w.Has("g"); }},
        {"flatten a heading", "records a", [](World& w) { w.With("a", [&](Node& node) { w.tree->Flatten(node); }); }},
        {"amputate a heading", "records a b",
         [](World& w) { w.With("b", [](Node& node) { Amputate(node, nullptr, "utf-8"); }); }},
        {"amputate a leaf", "records f",
         [](World& w) { w.With("g", [](Node& node) { Amputate(node, nullptr, ""); }); }},
        {"amputate a section", "records a",
         [](World& w) {
             WildText const text(w.stage, "block");
             w.With("a", [&](Node& node) { Amputate(node, &text, "utf-8"); });
         }},
        {"amputate a section by a string", "records a",
         [](World& w) {
             OmStringCell const text("block");
             w.With("a", [&](Node& node) { Amputate(node, &text, "utf-8"); });
         }},
        {"assign itself", "records", [](World& w) { *w.tree = std::as_const(*w.tree); }},
        {"assign another document", "records",
         [](World& w) {
             auto part = std::make_unique<WildPart>(w.stage, "assigned");
             if (w.IsOver()) {
                 return;
             }
             w.Drop();
             ListTree<OmOutputPart*> records(part.release());
             struct Unowned : OmOutputTree {
                 ~Unowned() { List().clear(); }
             } source;
             delete source.Root().Value();
             source.List() = records.List();
             *w.tree = source;
         }},
        {"compare", "", [](World& w) { static_cast<void>(*w.tree == *w.tree), static_cast<void>(*w.tree < *w.tree); }},
        {"find leaves", "",
         [](World& w) {
             for (auto at = w.tree->List().begin(); at != w.tree->List().end(); ++at) {
                 w.tree->IsLeaf(Node(*w.tree, at));
             }
         }},
        {"walk", "",
         [](World& w) {
             struct NoVisitor final : OmOutputPart::Visitor {
                 using OmOutputPart::Visitor::Visit;
                 void Visit(OmInteractive&) override {}
                 void Visit(OmModel&) override {}
                 void Visit(OmAnswerTree&) override {}
                 void Visit(OmChart&) override {}
                 void Visit(OmTextBlock&) override {}
                 void Visit(OmHeading&) override {}
                 void Visit(OmPivotTable&) override {}
             } visitor;
             for (auto at = w.tree->List().begin(); at != w.tree->List().end(); ++at) {
                 if (w.stage.Knows(at->value)) {
                     at->value->Accept(visitor);
                 }
             }
         }},
        {"read the titles", "",
         [](World& w) {
             for (OmOutputTree::Record const& record : w.tree->List()) {
                 if (w.stage.Knows(record.value)) {
                     record.value->Title()->AsString();
                 }
             }
         }},
        {"destroy the document", "records",
         [](World& w) {
             delete w.tree.get();
             static_cast<void>(w.tree.release());
         }},
    };
}

bool Is(Row const& row, char const* name) { return std::string(row.name) == name; }
bool Starts(Row const& row, char const* with) { return std::string(row.name).find(with) == 0; }

char const* ReasonFor(Row const& outer, Row const& inner, Member member) {
    if (IsQuestion(member) && Changes(inner)) {
        return "a title that is asked changes nothing";
    }
    bool const appends = Starts(inner, "append") || Starts(inner, "move");
    if ((Is(outer, "walk") || Is(outer, "read the titles")) && Changes(inner) && !appends) {
        return "who walks keeps the record that the walk stands at";
    }
    bool const isCloned = member == Member::Clone || member == Member::CloneDone;
    if (isCloned && (Is(outer, "amputate a heading") || Is(outer, "amputate a leaf")) && Changes(inner) && !appends) {
        return "a title that is cloned leaves its part where it is";
    }
    if (Is(outer, "destroy the document") && Is(inner, "destroy the document")) {
        return "a document is not destroyed twice";
    }
    return nullptr;
}

} // namespace

TEST(OutputTreeReentry, EveryPairLeavesADocumentThatIsWhole) {
    Tally const tally = Driver<World>(Rows(), ReasonFor,
                                      {Member::Clone, Member::CloneDone, Member::Compare, Member::TextLength,
                                       Member::AsString, Member::Destroy, Member::PartAccept, Member::PartDestroy})
                            .Run();
    tally.Print("output tree");
    EXPECT_EQ(tally.pairs, 4608);
    EXPECT_GE(tally.Driven(), 1100);
}
