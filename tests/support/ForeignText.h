#ifndef OMTREE_TESTS_SUPPORT_FOREIGNTEXT_H
#define OMTREE_TESTS_SUPPORT_FOREIGNTEXT_H

#include "omcell/OmCellText.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <functional>
#include <initializer_list>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A cell text from outside the cell library that writes down every virtual call it gets, so that a test can observe
/// which steps a class takes with a text, and their order.
///
///     ForeignLog log;
///     ForeignText text(log, "a");               // named "a", reads "a"
///     holder.SetTitle(text);
///     EXPECT_EQ(log.Take({"Clone", "destroy"}), (std::vector<std::string>{"a: Clone", "old': destroy"}));
///
/// A clone is named after its source with a prime behind: a, a', a''. One log serves any number of texts and must
/// outlive them all; it keeps what they hold (`Spec`), so a text owns nothing outside its own storage and an arena that
/// is swept without running its destructor leaks nothing.
namespace omtest {

class ForeignText;

/// What one foreign text is and how it answers. Change it before or during the test through `ForeignText::spec()`.
struct ForeignSpec {
    std::string name;                    ///< in the log
    std::string text;                    ///< what the string operations return
    std::optional<std::size_t> length{}; ///< `TextLength`; the text's bytes when not given
    std::optional<short> compare{};      ///< `Compare`; by the texts' bytes when not given
    short orderCode = 100;
    double number = 0.0;
    bool blank = false;
    /// Run by `Accept` after the call was logged; a foreign text can be no visitor's argument, so it acts here.
    std::function<void(ForeignText&, OmCellText::Visitor&)> accept{};
};

/// The shared log of a test's foreign texts.
class ForeignLog {
public:
    /// One entry per call, "name: Operation", in the order of the calls. `Compare` has the other text's name (or its
    /// string, when it is no foreign text) in brackets, `SetTracker` has "null" or "set" there, `Print` the indent.
    std::vector<std::string> calls;
    /// The region of each logged `Clone`, in order; null where null was passed.
    std::vector<OmMemoryRegion*> cloneRegions;
    int alive = 0; ///< texts constructed and not destroyed
    /// How many more clones succeed; the next one throws std::bad_alloc. Negative: never fails.
    int clonesUntilFailure = -1;

    /// The entries so far; the log is empty afterwards.
    std::vector<std::string> Take() {
        cloneRegions.clear();
        return std::exchange(calls, {});
    }

    /// Only the entries of the named operations, for instance {"Clone", "destroy"}; the log is empty afterwards.
    std::vector<std::string> Take(std::initializer_list<char const*> operations) {
        std::vector<std::string> kept = Take();
        kept.erase(std::remove_if(kept.begin(), kept.end(),
                                  [&](std::string const& entry) { return !IsOneOf(entry, operations); }),
                   kept.end());
        return kept;
    }

    void Add(std::string const& name, std::string const& operation) { calls.push_back(name + ": " + operation); }

    ForeignSpec& Keep(ForeignSpec spec) { return _specs.emplace_back(std::move(spec)); }

private:
    static bool IsOneOf(std::string const& entry, std::initializer_list<char const*> operations) {
        std::size_t const start = entry.find(": ") + 2;
        std::string const operation = entry.substr(start, entry.find('(', start) - start);
        return std::find(operations.begin(), operations.end(), operation) != operations.end();
    }

    std::deque<ForeignSpec> _specs; ///< stable addresses
};

class ForeignText final : public OmCellText {
public:
    /// A text for `region` (the default heap when null) named `name`, which is also what it reads.
    ForeignText(ForeignLog& log, std::string const& name, OmMemoryRegion* region = nullptr)
        : ForeignText(log, SpecOf(name, name), region) {}

    ForeignText(ForeignLog& log, std::string const& name, std::string const& text, OmMemoryRegion* region = nullptr)
        : ForeignText(log, SpecOf(name, text), region) {}

    ForeignText(ForeignLog& log, ForeignSpec spec, OmMemoryRegion* region = nullptr)
        : OmCellText(region), _log(log), _spec(log.Keep(std::move(spec))) {
        ++_log.alive;
    }

    ForeignText(ForeignText const&) = delete;
    ForeignText& operator=(ForeignText const&) = delete;

    ~ForeignText() override {
        _log.Add(_spec.name, "destroy");
        --_log.alive;
    }

    ForeignSpec& spec() const { return _spec; }
    std::string const& name() const { return _spec.name; }
    OmMemoryRegion* region() const { return Home(); }

    void Accept(Visitor& visitor) override {
        Log("Accept");
        if (_spec.accept) {
            _spec.accept(*this, visitor);
        }
    }
    short OrderCode() const override { return Log("OrderCode"), _spec.orderCode; }
    std::string AsString() const override { return Log("AsString"), _spec.text; }
    std::string AsU8String() const override { return Log("AsU8String"), _spec.text; }
    std::string AsEngString() const override { return Log("AsEngString"), _spec.text; }
    std::string AsFormattedString() const override { return Log("AsFormattedString"), _spec.text; }
    double NumericValue() const override { return Log("NumericValue"), _spec.number; }
    std::size_t TextLength() const override { return Log("TextLength"), _spec.length.value_or(_spec.text.size()); }
    short Compare(OmCellText const& other) const override {
        ForeignText const* const foreign = dynamic_cast<ForeignText const*>(&other);
        std::string const text = foreign != nullptr ? foreign->_spec.text : other.AsString();
        Log("Compare(" + (foreign != nullptr ? foreign->_spec.name : text) + ")");
        int const order = _spec.text.compare(text);
        return _spec.compare.value_or(static_cast<short>((order > 0) - (order < 0)));
    }
    OmCellText* Clone(OmMemoryRegion* region) const override {
        Log("Clone");
        _log.cloneRegions.push_back(region);
        if (_log.clonesUntilFailure == 0) {
            throw std::bad_alloc();
        }
        _log.clonesUntilFailure -= _log.clonesUntilFailure > 0 ? 1 : 0;
        ForeignSpec spec = _spec;
        spec.name += "'";
        ForeignText* const copy = new (region) ForeignText(_log, std::move(spec), region);
        copy->TakeOver(*this);
        return copy;
    }
    icuTracker* SetTracker(icuTracker* tracker) override {
        Log(tracker != nullptr ? "SetTracker(set)" : "SetTracker(null)");
        return OmCellText::SetTracker(tracker);
    }
    void Print(unsigned int indent) const override {
        Log("Print(" + std::to_string(indent) + ")");
        OmCellText::Print(indent);
    }
    bool IsBlank() const override { return Log("IsBlank"), _spec.blank; }

private:
    static ForeignSpec SpecOf(std::string const& name, std::string const& text) {
        ForeignSpec spec;
        spec.name = name;
        spec.text = text;
        return spec;
    }

    void Log(std::string const& operation) const { _log.Add(_spec.name, operation); }

    ForeignLog& _log;
    ForeignSpec& _spec;
};

} // namespace omtest

#endif
