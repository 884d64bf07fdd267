// Every operation of the generic list tree, on two of them, against forests of nested vectors.
#include "FuzzTarget.h"
#include "Script.h"
#include "tests/support/ListTreeScript.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return omfuzz::RunScript<omtest::ListTreeScript>(data, size);
}
