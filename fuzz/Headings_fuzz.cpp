// Tables of any shape laid out by the display headings and by brute force.
#include "FuzzTarget.h"
#include "Script.h"
#include "tests/support/HeadingScript.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return omfuzz::RunScript<omtest::HeadingScript>(data, size);
}
