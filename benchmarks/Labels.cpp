// Find-or-create of categories by label: a dimension beside a map from strings to numbers with the labels in a vector.

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmPivotTable.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Inputs.h"

#include <absl/container/btree_map.h>
#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>

namespace om_bench {

namespace {

constexpr std::size_t UsualCalls = 1'000'000;
constexpr std::size_t FewLabels = 200;

/// Many: a tenth of the calls create a label each, in random order; the others repeat them at random. Few: 200 labels,
/// each call one of them at random.
enum class Kind { Many, Few };

struct Calls {
    std::vector<std::string> labels;
    std::vector<std::uint32_t> sequence; ///< which label each call asks for
    std::size_t sum = 0;                 ///< of what the calls give: each label's place in order of first use
    std::size_t created = 0;
};

Calls MakeCalls(Kind kind, std::size_t count) {
    Random random(21);
    Calls calls;
    std::size_t const labels = kind == Kind::Many ? std::max<std::size_t>(count / 10, 1) : FewLabels;
    calls.labels = Words(labels, 2);
    calls.sequence.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        bool const isFirst = kind == Kind::Many && i < labels;
        calls.sequence.push_back(static_cast<std::uint32_t>(isFirst ? i : random.Below(labels)));
    }
    std::vector<std::size_t> place(labels, labels);
    for (std::uint32_t const label : calls.sequence) {
        if (place[label] == labels) {
            place[label] = calls.created++;
        }
        calls.sum += place[label];
    }
    return calls;
}

template <Kind kind>
void Ours(benchmark::State& state) {
    Calls const calls = MakeCalls(kind, Count(UsualCalls));
    std::deque<OmStringCell> const labels = OurTexts(calls.labels);
    OmPivotTable table(OmStringCell("title"), OmStringCell("template"), false);
    OmDimension& dimension = table.AddDimension(OmStringCell("dimension"));

    Phases phases(state);
    TrimHeap();
    std::size_t sum = 0;
    phases.Time("time", calls.sequence.size(), [&] {
        for (std::uint32_t const label : calls.sequence) {
            auto const next = static_cast<unsigned long long>(dimension.NumCategories());
            sum += dimension.Child(dimension.Root(), labels[label], next, false).Value().Subscript();
        }
    });
    ExpectEqual(state, "sum of subscripts", sum, calls.sum);
    ExpectEqual(state, "categories", dimension.Root().ChildCount(), calls.created);
    phases.Finish();
}

/// The label's text is cloned when it is new, as the dimension does.
template <typename Map, Kind kind>
void Rival(benchmark::State& state) {
    Calls const calls = MakeCalls(kind, Count(UsualCalls));
    std::deque<RivalString> const labels = RivalTexts(calls.labels);
    Map places;
    std::vector<std::unique_ptr<RivalText>> texts;

    Phases phases(state);
    TrimHeap();
    std::size_t sum = 0;
    phases.Time("time", calls.sequence.size(), [&] {
        for (std::uint32_t const label : calls.sequence) {
            auto const [place, isNew] = places.try_emplace(calls.labels[label], static_cast<int>(texts.size()));
            if (isNew) {
                texts.push_back(labels[label].Clone());
            }
            sum += static_cast<std::size_t>(place->second);
        }
    });
    ExpectEqual(state, "sum of places", sum, calls.sum);
    ExpectEqual(state, "labels", texts.size(), calls.created);
    phases.Finish();
}

using FlatMap = boost::unordered_flat_map<std::string, int>;
using BtreeMap = absl::btree_map<std::string, int>;

template <Kind kind>
void RegisterSides(std::string const& workload) {
    Register(workload, "ours", Ours<kind>);
    Register(workload, "boost", Rival<FlatMap, kind>);
    Register(workload, "btree", Rival<BtreeMap, kind>);
}

[[maybe_unused]] bool const registered = [] {
    RegisterSides<Kind::Many>("labels");
    RegisterSides<Kind::Few>("labels-few");
    return true;
}();

} // namespace

} // namespace om_bench
