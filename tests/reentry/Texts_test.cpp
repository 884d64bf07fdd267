// Every pair of operations of the texts that are put together from others, the inner one called by a part that the
// outer one clones, hands a tracker, asks or destroys.
#include "omcell/OmComposite.h"
#include "omcell/OmMemoryRegion.h"
#include "omcell/OmMessage.h"
#include "omcell/OmValue.h"
#include "omcell/OmVariable.h"
#include "platform/icuTracker.h"
#include "tests/reentry/Reentry.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using omtest::reentry::Changes;
using omtest::reentry::Driver;
using omtest::reentry::IsQuestion;
using omtest::reentry::Member;
using omtest::reentry::Stage;
using omtest::reentry::Tally;
using omtest::reentry::WildText;

/// A composite of wild parts, a composite inside it and a message inside that; a message whose slots hold a wild text
/// and a composite; a value of wild texts.
class World {
public:
    explicit World(Stage& itsStage) : stage(itsStage) {
        composite = std::make_unique<OmComposite>();
        composite->Append(Wild("one"));
        OmComposite inside;
        inside.Append(Wild("two"));
        OmMessage said("{0} {1}");
        said.Fill(0, Wild("three"));
        said.Fill(1, OmStringCell("four"));
        inside.Append(said);
        inside.Append(Wild("five"));
        composite->Append(inside);
        composite->Append(composite->Components().Root().Child(0), Wild("below"));
        message = std::make_unique<OmMessage>("{0}, {1}, {0}");
        message->Fill(0, Wild("zero"));
        message->Fill(1, inside);
        std::unique_ptr<WildText> const label = std::make_unique<WildText>(stage, "label");
        value = std::make_unique<OmValue>(Wild("value"), label.get());
    }

    WildText Wild(char const* text) const { return WildText(stage, text); }
    bool IsOver() const { return composite == nullptr || message == nullptr || value == nullptr; }

    OmComposite& Inside() const { return dynamic_cast<OmComposite&>(*composite->Components().Root().Child(1).Value()); }
    OmMessage& Said() const { return dynamic_cast<OmMessage&>(*Inside().Components().Root().Child(1).Value()); }
    bool HasInside() const { return composite->Components().Root().ChildCount() > 1; }

    static bool Has(OmCellText const& text, char const* words) {
        return text.AsString().find(words) != std::string::npos;
    }

    void Check() const {
        for (OmCellText const* const text :
             std::vector<OmCellText const*>{composite.get(), message.get(), value.get()}) {
            std::string const string = text->AsString();
            EXPECT_EQ(text->Compare(*text), 0);
            OmMemoryRegion region(false);
            std::unique_ptr<OmCellText> const clone(text->Clone(&region));
            EXPECT_EQ(clone->AsString(), string);
            EXPECT_EQ(clone->TextLength(), text->TextLength());
            EXPECT_EQ(clone->Compare(*text), 0);
        }
    }

    void Use() {
        composite->Append(Wild("used"));
        EXPECT_TRUE(Has(*composite, "used"));
        message->Fill(0, Wild("used"));
        EXPECT_TRUE(Has(*message, "used, "));
    }

    Stage& stage;
    icuTracker tracker{{true, "en_US.UTF-8"}};
    std::unique_ptr<OmComposite> composite{};
    std::unique_ptr<OmMessage> message{};
    std::unique_ptr<OmValue> value{};
};

using Row = omtest::reentry::Row<World>;

std::vector<Row> Rows() {
    auto const question = [](auto ask) {
        return [ask](World& w) {
            for (OmCellText const* const text :
                 std::vector<OmCellText const*>{w.composite.get(), w.message.get(), w.value.get()}) {
                ask(*text, w);
            }
        };
    };
    return {
        {"append", "composite last", [](World& w) { w.composite->Append(w.Wild("appended")); },
         [](World& w) { return World::Has(*w.composite, "appended"); }},
        {"append many", "composite many",
         [](World& w) {
             for (int k = 0; k < 9; ++k) {
                 w.composite->Append(OmStringCell("many"));
             }
         },
         [](World& w) { return World::Has(*w.composite, "many"); }},
        {"append below a component", "composite below",
         [](World& w) {
             OmComposite::Tree::Node const root = w.composite->Components().Root();
             if (root.ChildCount() != 0) {
                 w.composite->Append(root.Child(0), w.Wild("deeper"));
             }
         },
         [](World& w) { return World::Has(*w.composite, "deeper"); }},
        {"append itself", "composite itself", [](World& w) { w.composite->Append(*w.composite); }},
        {"append a part of its own", "composite own part",
         [](World& w) {
             OmComposite::Tree::Node const root = w.composite->Components().Root();
             if (root.ChildCount() != 0) {
                 w.composite->Append(*root.Child(0).Value());
             }
         }},
        {"append to the composite inside", "composite inside",
         [](World& w) {
             if (w.HasInside()) {
                 w.Inside().Append(w.Wild("inner"));
             }
         },
         [](World& w) { return !w.HasInside() || World::Has(*w.composite, "inner"); }},
        {"fill a slot of the message inside", "composite said",
         [](World& w) {
             if (w.HasInside()) {
                 w.Said().Fill(0, w.Wild("said"));
             }
         },
         [](World& w) { return !w.HasInside() || World::Has(*w.composite, "said"); }},
        {"take the first component out", "composite",
         [](World& w) {
             OmComposite::Tree::Node const root = w.composite->Components().Root();
             if (root.ChildCount() == 0) {
                 return;
             }
             std::vector<std::unique_ptr<OmCellText>> taken;
             OmComposite::Tree::WalkPreOrder(root.Child(0), [&](OmComposite::Tree::ConstNode const& node) {
                 taken.emplace_back(node.Value());
                 return true;
             });
             OmComposite::Tree::EraseChild(root, 0);
         }},
        {"fill a slot", "message 0", [](World& w) { w.message->Fill(0, w.Wild("filled")); },
         [](World& w) { return World::Has(*w.message, "filled"); }},
        {"fill the other slot", "message 1", [](World& w) { w.message->Fill(1, OmStringCell("string")); },
         [](World& w) { return World::Has(*w.message, "string"); }},
        {"fill new slots", "message new",
         [](World& w) {
             for (std::size_t slot = 20; slot > 2; slot -= 3) {
                 w.message->Fill(slot, w.Wild("further"));
             }
         },
         [](World& w) { return w.message->Filler(20) != nullptr; }},
        {"fill a slot with itself", "message 2", [](World& w) { w.message->Fill(2, *w.message); },
         [](World& w) { return w.message->Filler(2) != nullptr; }},
        {"fill a slot with what fills it", "message 0",
         [](World& w) {
             if (w.message->Filler(0) != nullptr) {
                 w.message->Fill(0, *w.message->Filler(0));
             }
         }},
        {"change the mode", "value", [](World& w) { w.value->Mode(OmCellText::BothMode); },
         [](World& w) { return w.value->Mode() == OmCellText::BothMode; }},
        {"clone", "", question([](OmCellText const& text, World&) {
             std::unique_ptr<OmCellText> const clone(text.Clone(nullptr));
         })},
        {"hand on a tracker", "trackers",
         [](World& w) {
             w.composite->SetTracker(&w.tracker);
             w.message->SetTracker(&w.tracker);
             w.value->SetTracker(&w.tracker);
         }},
        {"read", "", question([](OmCellText const& text, World&) {
             text.AsString(), text.AsU8String(), text.AsEngString(), text.AsFormattedString(), text.NumericValue();
         })},
        {"measure", "", question([](OmCellText const& text, World&) { text.TextLength(); })},
        {"compare", "", question([](OmCellText const& text, World& w) {
             std::unique_ptr<OmCellText> const clone(text.Clone(nullptr));
             text.Compare(*clone);
             text.Compare(*w.message);
         })},
        {"print", "", question([](OmCellText const& text, World&) { text.Print(1); })},
        {"destroy the composite",
         "composite",
         [](World& w) {
             delete w.composite.get();
             static_cast<void>(w.composite.release());
         },
         {},
         true},
        {"destroy the message",
         "message",
         [](World& w) {
             delete w.message.get();
             static_cast<void>(w.message.release());
         },
         {},
         true},
        {"destroy the value",
         "value",
         [](World& w) {
             delete w.value.get();
             static_cast<void>(w.value.release());
         },
         {},
         true},
    };
}

bool Says(Row const& row, char const* words) { return std::string(row.name).find(words) != std::string::npos; }

char const* ReasonFor(Row const& outer, Row const& inner, Member member) {
    if (IsQuestion(member) && Changes(inner)) {
        return "a part that is asked changes nothing";
    }
    bool const isWalked = member == Member::Clone || member == Member::CloneDone || member == Member::SetTracker;
    bool const walksTheMessage =
        Says(outer, "with itself") || Says(outer, "clone") || Says(outer, "compare") || Says(outer, "tracker");
    if (isWalked && walksTheMessage && Says(inner, "fill the other slot")) {
        return "a part does not destroy a text that it lies in";
    }
    return nullptr;
}

} // namespace

TEST(TextReentry, EveryPairLeavesTextsThatAreWhole) {
    Tally const tally = Driver<World>(Rows(), ReasonFor,
                                      {Member::Clone, Member::CloneDone, Member::SetTracker, Member::Compare,
                                       Member::TextLength, Member::AsString, Member::OrderCode, Member::Destroy})
                            .Run();
    tally.Print("texts");
    EXPECT_EQ(tally.pairs, 3680);
    EXPECT_GE(tally.Driven(), 780);
}
