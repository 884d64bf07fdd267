// Builds a table of counts and walks it in reading order.
#include <omtree.h>

#include <iostream>

int main() {
    auto const text = [](char const* bytes) { return OmStringCell(bytes, nullptr, false); };
    OmPivotTable table(text("Survivors"), text("Cross tabulation"), false);

    OmDimension& sex = table.AddDimension(text("Sex"));
    OmDimension& age = table.AddDimension(text("Age"));
    sex.Child(sex.Root(), text("Male"), 0, false);
    sex.Child(sex.Root(), text("Female"), 1, false);
    age.Child(age.Root(), text("Adult"), 0, false);
    age.Child(age.Root(), text("Child"), 1, false);
    table.Rows().push_back(0);
    table.Columns().push_back(1);
    table.Cell({0, 0}, OmNumber(338)); // a subscript for each dimension, in the order they were added
    table.Cell({1, 0}, OmNumber(316));
    table.Cell({0, 1}, OmNumber(29));
    table.Cell({1, 1}, OmNumber(28));
    table.EndTable();

    OmDisplayLayerHeading layers(table, true);
    while (layers.NextLayer()) {
        OmDisplayColumnHeading columns(layers, true);
        OmDisplayRowHeading rows(layers, true, false);
        for (int r = 0; r < rows.NRows(); ++r) {
            for (int c = 0; c < columns.NColumns(); ++c) {
                std::vector<int> index;
                layers.Fill(index);
                columns.Fill(index, c);
                rows.Fill(index, r);
                std::cout << rows.RowCategories(r)[0]->Value().Text()->AsString() << ", "
                          << columns.ColumnCategories(c)[0]->Value().Text()->AsString() << ": "
                          << table.Cell(index)->AsFormattedString() << '\n';
            }
        }
    }
}
