#ifndef OMTREE_FUZZ_FUZZTARGET_H
#define OMTREE_FUZZ_FUZZTARGET_H

#include <cstddef>
#include <cstdint>

/// One input of any bytes. Returns 0; a broken promise ends the process.
///
/// Each `NAME_fuzz.cpp` defines it once. Linked with the fuzzer it is fed by that, linked with `replay.cpp` by files.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

#endif
