#include "benchmarks/Measured.h"

extern "C" void omtree_measured(std::function<void()> const& work) { work(); }
