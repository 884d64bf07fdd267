#ifndef OMTREE_TESTS_REENTRY_REENTRY_H
#define OMTREE_TESTS_REENTRY_REENTRY_H

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/OmOutputPart.h"
#include "omcell/OmCellText.h"
#include "omcell/OmStringCell.h"
#include "tests/support/AssertionCatcher.h"
#include "tests/support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// All pairs of an operation of a holder and another one that a text or part of a program's own calls from within it.
///
/// A holder's test says its operations as rows of a table, and a world: the holder in a known state, full of texts and
/// parts that call back. For every pair of rows and every virtual member, a world is made; the first row is run on it;
/// when the member is called for the nth time, the second row is run from there; then the world is checked, used
/// further, checked again and destroyed, and no text may be left. So each pair is run as often as the first row calls
/// the member, up to a limit.
///
/// What is left out is said in one place for each holder, with the reason. With REENTRY_SHOW in the environment each
/// run is named on standard error before it begins.
namespace omtest::reentry {

/// Where the call back comes from.
enum class Member {
    Clone,     ///< of a text, before its copy is made
    CloneDone, ///< when the copy is there and not given away yet
    Accept,
    SetTracker,
    Compare,
    TextLength,
    AsString,
    OrderCode,
    Destroy,
    PartAccept,
    PartDestroy
};
constexpr std::size_t Members = 11;

inline char const* NameOf(Member member) {
    static constexpr std::array<char const*, Members> Names{
        "Clone",    "Clone's end", "Accept",     "SetTracker",    "Compare",          "TextLength",
        "AsString", "OrderCode",   "destructor", "Accept (part)", "destructor (part)"};
    return Names[static_cast<std::size_t>(member)];
}

/// Whether a text is asked something by it; the others are moments at which a holder changes.
inline bool IsQuestion(Member member) {
    return member == Member::Compare || member == Member::TextLength || member == Member::AsString ||
           member == Member::OrderCode;
}

/// What the texts and parts of one world share. Outlives them.
class Stage {
public:
    /// Texts and parts that are alive; cells, which a table that ends does not destroy, apart.
    int alive = 0;
    int aliveCells = 0;

    /// Runs the act at the call of the member that has `before` of them before it, once.
    void Arm(Member member, int before, std::function<void()> act) {
        _member = member;
        _before = before;
        _act = std::move(act);
    }
    void Disarm() { _act = nullptr; }
    bool IsArmed() const { return static_cast<bool>(_act); }

    void Called(Member member) {
        ++_calls[static_cast<std::size_t>(member)];
        if (_act && member == _member && _before-- == 0) {
            std::exchange(_act, nullptr)();
        }
    }

    int Calls(Member member) const { return _calls[static_cast<std::size_t>(member)]; }
    void ForgetCalls() { _calls.fill(0); }

    bool Knows(void const* object) const { return _living.count(object) == 1; }
    void Born(void const* object) { _living.insert(object); }
    void Dead(void const* object) { EXPECT_EQ(_living.erase(object), 1U) << "destroyed twice"; }

private:
    Member _member = Member::Clone;
    int _before = 0;
    std::function<void()> _act{};
    std::array<int, Members> _calls{};
    std::set<void const*> _living;
};

/// Owns nothing outside its storage, for a cell's destructor need not run.
class WildText final : public OmCellText {
public:
    WildText(Stage& stage, char const* text, OmMemoryRegion* region = nullptr, bool isCell = false)
        : OmCellText(region), _stage(stage), _text(text), _isCell(isCell) {
        ++Alive();
        _stage.Born(this);
    }
    WildText(WildText const&) = delete;
    WildText& operator=(WildText const&) = delete;
    ~WildText() override {
        --Alive();
        _stage.Dead(this);
        _stage.Called(Member::Destroy);
    }

    static WildText ForCell(Stage& stage, char const* text) { return WildText(stage, text, nullptr, true); }

    void Accept(Visitor&) override { _stage.Called(Member::Accept); }
    short OrderCode() const override {
        _stage.Called(Member::OrderCode);
        return 300;
    }
    std::string AsString() const override {
        std::string const text = _text;
        _stage.Called(Member::AsString);
        return text;
    }
    std::string AsU8String() const override { return AsString(); }
    std::string AsEngString() const override { return AsString(); }
    std::size_t TextLength() const override {
        std::size_t const length = std::strlen(_text);
        _stage.Called(Member::TextLength);
        return length;
    }
    short Compare(OmCellText const& other) const override {
        auto const* const wild = dynamic_cast<WildText const*>(&other);
        int const order = wild != nullptr ? std::strcmp(_text, wild->_text) : 1;
        _stage.Called(Member::Compare);
        return static_cast<short>((order > 0) - (order < 0));
    }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        // The call back may destroy this text.
        Stage& stage = _stage;
        char const* const text = _text;
        bool const isCell = _isCell;
        stage.Called(Member::Clone);
        auto* const copy = new (region) WildText(stage, text, region, isCell);
        stage.Called(Member::CloneDone);
        return copy;
    }
    icuTracker* SetTracker(icuTracker* tracker) override {
        OmCellText::SetTracker(tracker);
        _stage.Called(Member::SetTracker);
        return tracker;
    }

private:
    int& Alive() { return _isCell ? _stage.aliveCells : _stage.alive; }

    Stage& _stage;
    char const* _text;
    bool _isCell;
};

class WildPart final : public OmOutputPart {
public:
    WildPart(Stage& stage, char const* title) : OmOutputPart(WildText(stage, title)), _stage(stage) {
        ++_stage.alive;
        _stage.Born(this);
    }
    WildPart(WildPart const&) = delete;
    WildPart& operator=(WildPart const&) = delete;
    ~WildPart() override {
        --_stage.alive;
        _stage.Dead(this);
        _stage.Called(Member::PartDestroy);
    }
    void Accept(Visitor&) override { _stage.Called(Member::PartAccept); }

private:
    Stage& _stage;
};

/// Reads a text that must be there.
inline void ExpectReadable(Stage const& stage, OmCellText const* text) {
    ASSERT_NE(text, nullptr);
    if (auto const* const wild = dynamic_cast<WildText const*>(text)) {
        ASSERT_TRUE(stage.Knows(wild)) << "held, but destroyed";
    }
    text->AsString();
}

// --- the table of operations -----------------------------------------------------------------------------------------

template <typename World>
struct Row {
    char const* name;
    /// What it changes; of two rows that change different things, what both did holds afterwards. Empty: nothing.
    char const* place;
    std::function<void(World&)> run;
    /// Whether what the row did is there.
    std::function<bool(World&)> holds{};
    /// Runs as the outer operation alone: it is no operation of the holder, or ends it.
    bool isOuterOnly = false;
};

/// Of two places one may be a part of the other: "cell" and "cell 0 0".
inline bool Overlap(char const* place, char const* other) {
    std::size_t const shorter = std::min(std::strlen(place), std::strlen(other));
    return std::strncmp(place, other, shorter) == 0;
}

template <typename World>
bool Changes(Row<World> const& row) {
    return *row.place != '\0';
}

/// What became of the pairs of one holder.
struct Tally {
    int pairs = 0;     ///< rows x rows x members
    int leftOut = 0;   ///< of them, with a reason
    int notCalled = 0; ///< of them: the outer row does not call that member
    int runs = 0;      ///< worlds in which the call back came
    std::map<std::string, int> reasons;

    int Driven() const { return pairs - leftOut - notCalled; }

    void Print(char const* holder) const {
        std::cout << holder << ": " << pairs << " pairs, " << Driven() << " driven in " << runs << " runs, "
                  << notCalled << " without a call, " << leftOut << " left out\n";
        for (auto const& [reason, count] : reasons) {
            std::cout << "    left out: " << count << " " << reason << "\n";
        }
    }
};

/// Why a pair is left out; null when it is not.
template <typename World>
using LeftOut = std::function<char const*(Row<World> const& outer, Row<World> const& inner, Member member)>;

/// The world has: a constructor from a Stage; `Check()`; `Use()`, which goes on with the holder; `IsOver()`, whether
/// the holder has ended.
template <typename World>
class Driver {
public:
    /// Later calls of a member within one operation are like the ones before.
    static constexpr int MostOccasions = 24;

    Driver(std::vector<Row<World>> rows, LeftOut<World> leftOut, std::vector<Member> members)
        : _rows(std::move(rows)), _leftOut(std::move(leftOut)), _members(std::move(members)) {}

    Tally Run() {
        for (Row<World> const& outer : _rows) {
            Stage counted = CallsOf(outer);
            for (Member const member : _members) {
                for (Row<World> const& inner : _rows) {
                    Consider(outer, inner, member, std::min(counted.Calls(member), MostOccasions));
                }
            }
        }
        return _tally;
    }

private:
    /// Whether each run is named before it begins, for those that end the program.
    static bool Shows() {
        static bool const shows = std::getenv("REENTRY_SHOW") != nullptr;
        return shows;
    }

    static void RunRow(Row<World> const& row, World& world) {
        try {
            row.run(world);
        } catch (OMSException const&) {
            // A broken argument, or a table that the other operation has changed.
        }
    }

    Stage CallsOf(Row<World> const& outer) {
        AssertionCatcher const caught(AfterReport::Return);
        CapturedOutput const output;
        Stage counts;
        Stage stage;
        {
            World world(stage);
            stage.ForgetCalls();
            RunRow(outer, world);
            counts = stage;
            EXPECT_TRUE(world.IsOver() || !outer.holds || outer.holds(world)) << outer.name;
            Finish(world);
        }
        EXPECT_EQ(stage.alive, 0) << outer.name;
        EXPECT_TRUE(caught.Failures().empty()) << outer.name << ": " << caught.Reports().front();
        return counts;
    }

    void Consider(Row<World> const& outer, Row<World> const& inner, Member member, int occasions) {
        if (inner.isOuterOnly) {
            return;
        }
        ++_tally.pairs;
        if (occasions == 0) {
            ++_tally.notCalled;
            return;
        }
        char const* const reason = _leftOut(outer, inner, member);
        if (reason != nullptr) {
            ++_tally.leftOut;
            ++_tally.reasons[reason];
            return;
        }
        for (int before = 0; before < occasions && !::testing::Test::HasFatalFailure(); ++before) {
            RunPair(outer, inner, member, before);
        }
    }

    void RunPair(Row<World> const& outer, Row<World> const& inner, Member member, int before) {
        std::string const name = std::string(outer.name) + " / " + inner.name + " / from " + NameOf(member) + " no. " +
                                 std::to_string(before);
        if (Shows()) {
            std::cerr << name << std::endl;
        }
        SCOPED_TRACE(name);
        AssertionCatcher const caught(AfterReport::Return);
        CapturedOutput const output;
        Stage stage;
        {
            World world(stage);
            stage.Arm(member, before, [&] { RunRow(inner, world); });
            RunRow(outer, world);
            EXPECT_FALSE(stage.IsArmed());
            stage.Disarm();
            ++_tally.runs;
            if (!world.IsOver()) {
                world.Check();
                bool const apart = !Changes(outer) || !Changes(inner) || !Overlap(outer.place, inner.place);
                EXPECT_TRUE(!apart || !outer.holds || outer.holds(world)) << "of the outer operation";
                EXPECT_TRUE(!apart || !inner.holds || inner.holds(world)) << "of the inner operation";
            }
            Finish(world);
        }
        EXPECT_EQ(stage.alive, 0) << "texts and parts left";
        EXPECT_TRUE(caught.Failures().empty()) << caught.Reports().front();
    }

    static void Finish(World& world) {
        if (!world.IsOver()) {
            world.Check();
            world.Use();
            world.Check();
        }
    }

    std::vector<Row<World>> _rows;
    LeftOut<World> _leftOut;
    std::vector<Member> _members;
    Tally _tally;
};

} // namespace omtest::reentry

#endif
