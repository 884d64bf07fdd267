// Every operation of a document against a forest of nested vectors, and which parts it destroys in which order.
#include "FuzzTarget.h"
#include "Script.h"
#include "tests/support/OutputTreeScript.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return omfuzz::RunScript<omtest::OutputTreeScript>(data, size);
}
