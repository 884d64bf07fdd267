#ifndef OMTREE_TESTS_SUPPORT_ACTINGTEXT_H
#define OMTREE_TESTS_SUPPORT_ACTINGTEXT_H

#include "tests/support/MuteText.h"

#include <functional>
#include <string>
#include <utility>

namespace omtest {

/// What acting texts do, each action once. Shared by a text and its clones, which must not outlive it.
struct Acts {
    std::function<void()> cloned;  ///< by the first `Clone`, when the clone is made
    std::function<void()> visited; ///< by the first `Accept` or `SetTracker` of a clone
    std::function<void()> gone;    ///< by the first destructor of a clone
    int alive = 0;                 ///< texts constructed and not destroyed
};

/// A program's text that does something with its holder while it is cloned, visited or destroyed.
class ActingText final : public MuteText {
public:
    explicit ActingText(Acts& acts, std::string text = "acting", OmMemoryRegion* region = nullptr, bool isClone = false)
        : MuteText(region), _acts(acts), _text(std::move(text)), _isClone(isClone) {
        ++_acts.alive;
    }
    ActingText(ActingText const&) = delete;
    ActingText& operator=(ActingText const&) = delete;
    ~ActingText() override {
        --_acts.alive;
        if (_isClone) {
            Do(_acts.gone);
        }
    }

    std::string AsString() const override { return _text; }
    void Accept(Visitor&) override { SetTracker(nullptr); }
    icuTracker* SetTracker(icuTracker* tracker) override {
        OmCellText::SetTracker(tracker);
        if (_isClone) {
            Do(_acts.visited);
        }
        return tracker;
    }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        auto* const clone = new (region) ActingText(_acts, _text, region, true);
        try {
            Do(_acts.cloned);
        } catch (...) {
            delete clone;
            throw;
        }
        return clone;
    }

private:
    static void Do(std::function<void()>& action) {
        if (action) {
            std::exchange(action, nullptr)();
        }
    }

    Acts& _acts;
    std::string _text; ///< short, for a cell's destructor does not run
    bool _isClone;
};

} // namespace omtest

#endif
