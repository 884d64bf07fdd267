#include <omtree.h>

#include <iostream>
#include <string>
#include <vector>

// The mistake that newcomers make: they keep the handle of a category and go on adding categories beside it.
//
//     newcomer           uses the handle that it kept
//     newcomer again     fetches the handle from the root again first
int main(int count, char** words) {
    bool const fetchesAgain = count > 1 && std::string(words[1]) == "again";
    OmPivotTable table(OmStringCell("Passengers"), OmStringCell("Cross tabulation"), false);
    OmDimension& age = table.AddDimension(OmStringCell("Age"));

    OmDimension::Node first = age.Child(age.Root(), OmStringCell("Child"), 0, true);
    for (char const* name : {"Youth", "Adult", "Middle", "Old"}) {
        age.Child(age.Root(), OmStringCell(name), 0, true);
    }
    if (fetchesAgain) {
        first = age.Root().Child(0);
    }
    std::cout << "five groups" << std::endl;
    age.Child(first, OmStringCell("Under 5"), 0, false);

    // Texts with a tree in them, and exceptions, pass between program and library as well.
    OmComposite range;
    range.Append(OmStringCell("5 to "));
    range.Append(OmNumber(14.0));
    age.Child(age.Root().Child(0), range, 1, false);
    try {
        age.Child(age.Root().Child(0).Child(1), OmStringCell("below a leaf"), 0, false);
    } catch (OMSException const& broken) {
        std::cout << broken.what() << '\n';
    }
    OmDimension::Node const second = age.Root().Child(0).Child(1);
    std::cout << second.Value().Text()->AsString() << ", " << age.NumCategories() << " categories\n";
    return 0;
}
