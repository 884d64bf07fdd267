#include "tests/misuse/programs/Misuse.h"

#include <cstdio>
#include <map>
#include <vector>

namespace {

std::map<std::string, misuse::Case::Body>& Cases() {
    static std::map<std::string, misuse::Case::Body> cases;
    return cases;
}

std::size_t volatile used;

} // namespace

misuse::Case::Case(char const* name, Body body) { Cases()[name] = body; }

void misuse::Use(OmCellText const& text) { Use(text.AsString().size()); }
void misuse::Use(std::size_t number) { used = used + number; }
char misuse::Read(void const* place) { return *static_cast<char const volatile*>(place); }
void misuse::Write(void* place) { *static_cast<char volatile*>(place) = 1; }

misuse::SmallTable::SmallTable()
    : table(Text("Passengers"), Text("Cross tabulation"), false), rows(table.AddDimension(Text("Class"))),
      columns(table.AddDimension(Text("Sex"))) {
    unsigned long long subscript = 0;
    for (char const* name : {"a", "b", "c"}) {
        rows.Child(rows.Root(), Text(name), subscript++, false);
    }
    columns.Child(columns.Root(), Text("x"), 0, false);
    columns.Child(columns.Root(), Text("y"), 1, false);
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 2; ++column) {
            table.Cell({row, column}, LongText("cell"));
        }
    }
    table.EndTable();
}

// Without a word: the names of all, one a line.
int main(int count, char** words) {
    if (count < 2) {
        for (auto const& each : Cases()) {
            std::puts(each.first.c_str());
        }
        return 0;
    }
    auto const found = Cases().find(words[1]);
    if (found == Cases().end()) {
        std::fprintf(stderr, "no such case: %s\n", words[1]);
        return 2;
    }
    found->second();
    return 0;
}
