// Random scripts over the children of one wide parent: labels of all lengths and kinds, found, created, edited and
// rearranged. The library must answer what a bisection of a list that was kept sorted step by step answers, and show
// the same list, whether or not it kept it.
#include "tests/support/LabelIndexWorld.h"
#include "tests/support/SeededScripts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using omtest::Dice;
using omtest::LabelIndexWorld;
using Kind = LabelIndexWorld::Kind;

/// Lengths around the 8 and 16 bytes of a word and a pair, zeros inside and behind, bytes that a signed comparison gets
/// wrong, prefixes of each other.
std::vector<std::string> const& Labels() {
    static std::vector<std::string> const labels = [] {
        std::vector<std::string> all{"",
                                     std::string(1, '\0'),
                                     std::string(2, '\0'),
                                     std::string("a\0", 2),
                                     std::string("a\0b", 3),
                                     "\x80",
                                     "\x7F",
                                     "a\xFF",
                                     std::string(8, '\xFF'),
                                     std::string(15, '\xFF'),
                                     std::string(16, '\xFF'),
                                     std::string("abcdefgh\0", 9),
                                     std::string("abcdefghijklmno\0", 16)};
        std::string const alphabet = "abcdefghijklmnopqrstuvwxyz0123456789";
        for (std::size_t const length : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 11U, 14U, 15U, 16U, 17U, 23U, 24U, 31U, 36U}) {
            all.push_back(alphabet.substr(0, length));
            all.push_back(alphabet.substr(0, length - 1) + "B");
            all.push_back("B" + alphabet.substr(1, length - 1));
        }
        return all;
    }();
    return labels;
}

class Script {
public:
    explicit Script(Dice& dice) : _dice(dice) {}

    void Run() {
        int const operations = _dice.Int(40, 300);
        // In most scripts somebody meddles now and then, in some hardly ever, so that a hash gets to grow.
        std::size_t const meddling = _dice.Percent(30) ? 1 : 6;
        for (int k = 0; k < operations; ++k) {
            if (_world.Size() != 0 && _dice.Percent(meddling)) {
                Meddle();
            } else {
                Ask();
            }
            Compare(_dice.Percent(10) || k + 1 == operations);
            if (::testing::Test::HasFailure()) {
                FAIL() << "operation " << k << ": " << _operation;
            }
        }
        for (std::string const& label : Labels()) {
            Check(_world.Find(label, false));
            Check(_world.Find(label, true));
        }
    }

private:
    void Say(std::string operation) {
        _operation = std::move(operation);
        omtest::Trace(_operation);
    }
    std::string const& Label() { return _dice.Pick(Labels()); }
    std::size_t Any() { return _dice.Below(_world.Size()); }

    void Ask() {
        std::string const& label = Label();
        bool const isGroup = _dice.Percent(15);
        if (_dice.Percent(15)) {
            Say("FindChild");
            Check(_world.Find(label, isGroup, _dice.Percent(10) ? Kind::Foreign : Kind::Plain));
        } else {
            Say("Child " + label);
            Check(_world.FindOrCreate(label, isGroup, Kind::Plain, _dice.Percent(25)));
        }
    }

    void Meddle() {
        // Often where somebody meddled before, since that is where what was overlooked shows.
        std::size_t const position = _touched < _world.Size() && _dice.Percent(50) ? _touched : Any();
        std::size_t const other = Any();
        std::size_t const kind = _dice.Below(20);
        _touched = position;
        Say("meddling " + std::to_string(kind) + " with " + std::to_string(position) + ", " + std::to_string(other));
        switch (kind) {
        case 0:
            return _world.Append(Label(), _dice.Percent(15));
        case 1:
            return _world.Delete(position);
        case 2:
            return _world.Relabel(position, Label());
        case 3:
            return _world.Regroup(position);
        case 4:
            return _world.SetU8(position, Label());
        case 5:
            return _world.Assign(position, other);
        case 6:
            return _world.AssignParent();
        case 7:
            return _world.EditElsewhere();
        case 8:
            return _world.Erase(position);
        case 9:
            return _world.Insert(position, Label(), _dice.Percent(15), _dice.Percent(50));
        case 10:
            return _world.Carry(position, other);
        case 11:
            return _world.MoveToTheEnd(position);
        case 12:
            return _world.MoveParent();
        case 13:
            return _world.Copy();
        case 14:
            return Check(_world.FindOrCreate(Label(), false, Kind::Foreign, _dice.Percent(50)));
        case 15:
            return Check(_world.FindOrCreate(Label(), false, Kind::Contrary, _dice.Percent(50)));
        case 16:
            return _world.AssignFromElsewhere(position, _dice.Percent(70) ? _world.At(position).u8 : Label());
        case 17:
            return _world.Replace(position);
        case 18:
            return _world.AppendByAnotherTree(Label());
        default:
            return _world.Relabel(position, Label(), _dice.Percent(50) ? Kind::Foreign : Kind::Contrary);
        }
    }

    static void Check(LabelIndexWorld::Answers const& answers) { EXPECT_EQ(answers.library, answers.steps); }

    void Compare(bool withEntries) {
        EXPECT_EQ(_world.Children(), _world.ChildrenByTheSteps());
        if (withEntries) {
            EXPECT_EQ(_world.Entries(), _world.EntriesByTheSteps());
        }
    }

    Dice& _dice;
    LabelIndexWorld _world{};
    std::string _operation{};
    std::size_t _touched = 0;
};

TEST(LabelIndex, RandomScriptsAgreeWithTheBisection) {
    omtest::RunScripts(1500, [](Dice& dice) { Script(dice).Run(); });
}

} // namespace
