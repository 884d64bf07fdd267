// Small fixed workloads whose instructions are counted (tools/instructions.py): counts do not depend on how busy the
// machine is, so they show a change for the worse that no clock would.
//
//     omtree-instructions WORKLOAD      runs one; what is counted happens inside omtree_measured
//     omtree-instructions --list        names them
//     omtree-instructions --versions    compiler and C library, which the counts depend on

#include "backend/tables/om/OmDimension.h"
#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "backend/tables/om/OmOutputTree.h"
#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/OmProcedure.h"
#include "backend/tables/om/OmTextBlock.h"
#include "benchmarks/Inputs.h"
#include "benchmarks/Measured.h"

#include <gnu/libc-version.h>

#include <cstdio>
#include <map>
#include <stdexcept>

namespace {

using om_bench::CellInputs;
using om_bench::MakeCells;
using om_bench::Order;
using om_bench::Positions;
using om_bench::Random;

void Require(bool holds, char const* what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

class Table {
public:
    explicit Table(std::size_t dimensions) : _table(OmStringCell("title"), OmStringCell("template"), false) {
        for (std::size_t k = 0; k < dimensions; ++k) {
            _table.AddDimension(OmStringCell("dimension"));
        }
    }

    OmPivotTable* operator->() { return &_table; }
    OmPivotTable& operator*() { return _table; }

    void Store(Positions const& positions) {
        OmStringCell const text("a text cell");
        std::vector<int> index(positions.Dimensions());
        for (std::size_t i = 0; i < positions.Size(); ++i) {
            positions.Read(i, index);
            _table.Cell(index, text);
        }
    }

    std::size_t CountPresent(Positions const& positions) const {
        std::size_t found = 0;
        std::vector<int> index(positions.Dimensions());
        for (std::size_t i = 0; i < positions.Size(); ++i) {
            positions.Read(i, index);
            found += _table.Cell(index) != nullptr ? 1U : 0U;
        }
        return found;
    }

private:
    OmPivotTable _table;
};

/// Store 50,000 cells in order and destroy the table.
void StoreDense() {
    CellInputs const inputs = MakeCells(Order::Ordered, 50'000);
    std::size_t found = 0;
    omtree_measured([&] {
        Table table(3);
        table.Store(inputs.stored);
        found = table.CountPresent(inputs.present);
    });
    Require(found == 50'000, "cells are missing");
}

/// Look up 20,000 present and as many absent positions of a sparse table, and walk it.
void LookUpSparse() {
    std::size_t const count = 20'000;
    CellInputs const inputs = MakeCells(Order::Sparse, count);
    Table table(4);
    table.Store(inputs.stored);
    std::size_t found = 0;
    std::size_t walked = 0;
    omtree_measured([&] {
        found = table.CountPresent(inputs.present) + table.CountPresent(inputs.absent);
        for (OmPivotTable::Iterator cell = table->FirstCell(); cell.Cell() != nullptr; ++cell) {
            ++walked;
        }
    });
    Require(found == count && walked == count, "cells are missing, or there are more");
}

/// Find-or-create of 2,000 labels in 20,000 calls.
void Labels() {
    std::size_t const count = 2'000;
    std::deque<OmStringCell> const labels = om_bench::OurTexts(om_bench::Words(count, 2));
    Random random(21);
    Table table(1);
    OmDimension& dimension = table->Dimension(0);
    omtree_measured([&] {
        for (std::size_t i = 0; i < 10 * count; ++i) {
            auto const next = static_cast<unsigned long long>(dimension.NumCategories());
            dimension.Child(dimension.Root(), labels[i < count ? i : random.Below(count)], next, false);
        }
    });
    Require(dimension.Root().ChildCount() == count, "another number of labels");
}

void AddCategories(OmDimension& dimension, int count) {
    int const inGroup = 10;
    for (int i = 0; i < count; ++i) {
        OmDimension::Node const group = dimension.Child(
            dimension.Root(), OmStringCell("group " + std::to_string(i / inGroup)), OmDimensionNode::NoSubscript, true);
        dimension.AddNewChild(group, OmStringCell("leaf " + std::to_string(i)), static_cast<unsigned long long>(i),
                              false);
    }
}

std::size_t Draw(OmPivotTable& table) {
    std::size_t seen = 0;
    OmDisplayLayerHeading layers(table, true);
    while (layers.NextLayer()) {
        OmDisplayColumnHeading columns(layers, true);
        OmDisplayRowHeading rows(layers, true, false);
        for (int column = 0; column < columns.NColumns(); ++column) {
            seen += columns.Column(column).size();
        }
        std::vector<int> index;
        layers.Fill(index);
        for (int row = 0; row < rows.NRows(); ++row) {
            seen += rows.Row(row).size();
            rows.Fill(index, row);
            for (int column = 0; column < columns.NColumns(); ++column) {
                columns.Fill(index, column);
                seen += table.Cell(index) != nullptr ? 1U : 0U;
            }
        }
    }
    return seen;
}

/// Lay out and draw two layers of 100 rows and 100 columns.
void Body() {
    int const side = 100;
    Table table(3);
    AddCategories(table->Dimension(0), side);
    AddCategories(table->Dimension(1), side);
    AddCategories(table->Dimension(2), 2);
    table->Columns().push_back(0);
    table->Rows().push_back(1);
    table->Layers().push_back(2);
    table.Store(MakeCells(Order::Ordered, 20'000).stored);
    std::size_t seen = 0;
    omtree_measured([&] { seen = Draw(*table); });
    // Every row and column stands under the dimension's name, its group and its leaf.
    Require(seen == 2 * (side * side + 2 * side * 3), "other cells or labels");
}

/// Append 100 parts under each of 20 procedures, walk the document, prune the procedures.
void Document() {
    OmStringCell const title("a part title");
    std::string const codePage = "UTF-8";
    OmOutputTree tree;
    std::vector<OmOutputTree::Node> procedures;
    for (int i = 0; i < 20; ++i) {
        procedures.push_back(tree.AppendChild(tree.Root(), new OmProcedure(title, "en", codePage, "English")));
    }
    std::size_t visible = 0;
    omtree_measured([&] {
        for (OmOutputTree::Node const& procedure : procedures) {
            for (int i = 0; i < 100; ++i) {
                tree.AppendChild(procedure, new OmTextBlock(title, codePage));
            }
        }
        for (OmOutputTree::Record const& record : tree.List()) {
            visible += record.value->Visible() ? 1U : 0U;
        }
        for (OmOutputTree::Node& procedure : procedures) {
            tree.Prune(procedure);
        }
    });
    Require(visible == 1 + 20 + 2000 && tree.Size() == 1, "another number of parts");
}

std::map<std::string, void (*)()> const workloads = {
    {"body", Body},
    {"document", Document},
    {"labels", Labels},
    {"store-dense", StoreDense},
    {"look-up-sparse", LookUpSparse},
};

} // namespace

int main(int argumentCount, char** arguments) {
    std::string const name = argumentCount == 2 ? arguments[1] : "";
    if (name == "--list") {
        for (auto const& workload : workloads) {
            std::puts(workload.first.c_str());
        }
        return 0;
    }
    if (name == "--versions") {
        std::printf("compiler\t" __VERSION__ "\nlibc\tglibc %s\n", gnu_get_libc_version());
        return 0;
    }
    auto const found = workloads.find(name);
    if (found == workloads.end()) {
        std::fprintf(stderr, "omtree-instructions: no workload \"%s\"; see --list\n", name.c_str());
        return 2;
    }
    try {
        found->second();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "omtree-instructions: %s: %s\n", name.c_str(), error.what());
        return 1;
    }
    return 0;
}
