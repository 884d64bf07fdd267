#include <omtree.h>

#include <iostream>
#include <string>
#include <utility>
#include <vector>

#if __cplusplus >= 202002L
#error "this consumer stands for those that still compile as C++17"
#endif

namespace {

int failures = 0;

void Expect(bool holds, char const* what) {
    if (!holds) {
        std::cerr << "does not hold: " << what << '\n';
        ++failures;
    }
}

OmStringCell Text(std::string text) { return OmStringCell(std::move(text), nullptr, false); }

void CellsComeBack() {
    OmPivotTable table(Text("Passengers"), Text("Cross tabulation"), false);
    OmDimension& sex = table.AddDimension(Text("Sex"));
    sex.Child(sex.Root(), Text("Male"), 0, false);
    sex.Child(sex.Root(), Text("Female"), 1, false);
    table.Rows().push_back(0);

    std::vector<int> const female{1};
    Expect(table.Cell(female, Text("470")), "the cell is stored");
    table.EndTable();

    OmCellText const* cell = table.Cell(female);
    Expect(cell != nullptr && cell->AsString() == "470", "the stored cell is read back");
    Expect(table.Cell(std::vector<int>{0}) == nullptr, "an empty position reads as null");
    Expect(sex.NumCategories() == 2, "both categories are counted");
}

// The exception's type information has to be the same on both sides of the library's border.
void ExceptionsCrossTheBorder() {
    OmPivotTable table(Text("Passengers"), Text("Cross tabulation"), false);
    std::string what;
    try {
        table.Dimension(7);
    } catch (OMSException const& broken) {
        what = broken.what();
    }
    Expect(what == "OmPivotTable::Dimension() -- which < NDimensions(), value 1 == 7, value 2 == 0",
           "a broken argument is reported with its values");
}

} // namespace

int main() {
    CellsComeBack();
    ExceptionsCrossTheBorder();
    if (failures == 0) {
        std::cout << "the installed package works\n";
    }
    return failures;
}
