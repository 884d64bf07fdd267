#include <omtree.h>

#include <iostream>

int Categories(OmDimension const& dimension);

int main() {
    OmPivotTable table(OmStringCell("Passengers"), OmStringCell("Cross tabulation"), false);
    OmDimension& age = table.AddDimension(OmStringCell("Age"));
    age.Child(age.Root(), OmStringCell("Child"), 0, false);
    std::cout << Categories(age) << '\n';
}
