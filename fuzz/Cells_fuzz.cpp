// Stores, deletions, settings and metadata of a table's cells, wrong indexes included, against a map.
#include "FuzzTarget.h"
#include "Script.h"
#include "tests/support/CellScript.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return omfuzz::RunScript<omtest::CellScript>(data, size);
}
