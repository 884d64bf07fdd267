// Every operation of a category tree against nested vectors, child indexes included.
#include "FuzzTarget.h"
#include "Script.h"
#include "tests/support/CategoryTreeScript.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return omfuzz::RunScript<omtest::CategoryTreeScript>(data, size);
}
