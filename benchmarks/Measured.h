#ifndef OMTREE_BENCHMARKS_MEASURED_H
#define OMTREE_BENCHMARKS_MEASURED_H

#include <functional>

/// Runs the work. Callgrind counts while this runs and knows it by its name, so it stands in a source of its own, where
/// the optimiser can neither inline it nor clone it under another name.
extern "C" void omtree_measured(std::function<void()> const& work);

#endif
