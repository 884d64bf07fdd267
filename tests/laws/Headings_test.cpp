// Laws that hold for every table whose categories are numbered 0 .. size - 1 and whose dimensions are all on an axis.

#include "backend/tables/om/OmDisplayColumnHeading.h"
#include "backend/tables/om/OmDisplayLayerHeading.h"
#include "backend/tables/om/OmDisplayRowHeading.h"
#include "tests/support/Laws.h"
#include "tests/support/TableSketch.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Index = std::vector<int>;

/// A table as it is said in text, which is what a counterexample shows.
struct Said {
    std::vector<std::string> dimensions{};
    std::vector<short> axes[3]{}; ///< rows, columns, layers
    std::set<Index> cells{};

    friend std::ostream& operator<<(std::ostream& stream, Said const& said) {
        for (std::string const& dimension : said.dimensions) {
            stream << "[" << dimension << "] ";
        }
        for (std::vector<short> const& axis : said.axes) {
            stream << "axis " << rc::toString(axis) << " ";
        }
        return stream << "cells " << rc::toString(said.cells);
    }
};

std::string Flags() { return *rc::gen::element<std::string>("", "", "", "-", "~", "-~"); }

/// Words for `leaves` leaves, some of them in a group.
std::string Categories(int leaves) {
    std::string text;
    for (int leaf = 0; leaf < leaves;) {
        int const inside = *rc::gen::inRange(0, leaves - leaf + 1);
        if (inside > 1) {
            text += " " + Flags() + "g(";
        }
        for (int k = 0; k < std::max(inside, 1); ++k, ++leaf) {
            text += " " + Flags() + "c" + std::to_string(leaf);
        }
        text += inside > 1 ? ")" : "";
    }
    return text;
}

Said AnyTable() {
    Said said;
    int const dimensions = *rc::gen::inRange(1, 5);
    std::vector<int> sizes;
    for (int d = 0; d < dimensions; ++d) {
        sizes.push_back(*rc::gen::inRange(1, 5));
        said.dimensions.push_back(Categories(sizes.back()));
        std::vector<short>& axis = said.axes[*rc::gen::inRange(0, 3)];
        axis.insert(axis.begin() + *rc::gen::inRange(0, static_cast<int>(axis.size()) + 1), static_cast<short>(d));
    }
    for (int k = *rc::gen::inRange(0, 30); k > 0; --k) {
        Index index;
        for (int const size : sizes) {
            index.push_back(*rc::gen::inRange(0, size));
        }
        said.cells.insert(index);
    }
    return said;
}

struct Built {
    Said said = AnyTable();
    omtest::TableSketch sketch{};

    Built() {
        for (std::string const& dimension : said.dimensions) {
            sketch.Dimension("d", dimension);
        }
        sketch.Rows(said.axes[0]).Columns(said.axes[1]).Layers(said.axes[2]);
        for (Index const& index : said.cells) {
            sketch.Put(index);
        }
        RC_LOG() << said;
    }
};

/// Every index that a walk over layers, rows and columns comes to, and how often.
std::map<Index, int> Walked(OmPivotTable& table, bool skip) {
    std::map<Index, int> visits;
    OmDisplayLayerHeading layers(table, skip);
    while (layers.NextLayer()) {
        OmDisplayColumnHeading const columns(layers, skip);
        OmDisplayRowHeading const rows(layers, skip, false);
        for (int r = 0; r < rows.NRows(); ++r) {
            for (int c = 0; c < columns.NColumns(); ++c) {
                Index index;
                layers.Fill(index);
                columns.Fill(index, c);
                rows.Fill(index, r);
                ++visits[index];
            }
        }
    }
    return visits;
}

/// What a reader sees of each place of a heading: its index, and the leaves' labels.
using Places = std::vector<std::pair<Index, std::string>>;

Places PlacesOf(OmDisplayColumnHeading& heading, Index const& layer) {
    Places places;
    for (int c = 0; c < heading.NColumns(); ++c) {
        Index index = layer;
        heading.Fill(index, c);
        places.emplace_back(index, omtest::Labels(heading.ColumnCategories(c)));
    }
    return places;
}
Places PlacesOf(OmDisplayRowHeading& heading, Index const& layer) {
    Places places;
    for (int r = 0; r < heading.NRows(); ++r) {
        Index index = layer;
        heading.Fill(index, r);
        places.emplace_back(index, omtest::Labels(heading.RowCategories(r)));
    }
    return places;
}

/// Without the places that no cell has. A cell counts when it agrees with the place in the layer and along the axis.
Places WithoutEmpty(Places const& places, Said const& said, std::vector<short> const& axis) {
    Places kept;
    for (auto const& place : places) {
        bool const holds = std::any_of(said.cells.begin(), said.cells.end(), [&](Index const& cell) {
            auto const agrees = [&](short d) {
                return cell[static_cast<std::size_t>(d)] == place.first[static_cast<std::size_t>(d)];
            };
            return std::all_of(axis.begin(), axis.end(), agrees) &&
                   std::all_of(said.axes[2].begin(), said.axes[2].end(), agrees);
        });
        if (holds) {
            kept.push_back(place);
        }
    }
    return kept;
}

} // namespace

RC_GTEST_PROP(HeadingLaws, AWalkOverTheBodyVisitsEachCellOnce, ()) {
    Built built;
    std::size_t positions = 1;
    for (int const size : built.sketch.table.SizeVector()) {
        positions *= static_cast<std::size_t>(size);
    }
    std::map<Index, int> const visits = Walked(built.sketch.table, false);
    RC_ASSERT(visits.size() == positions);
    for (auto const& [index, times] : visits) {
        RC_ASSERT(times == 1);
    }
}

RC_GTEST_PROP(HeadingLaws, ASkippingWalkVisitsEachStoredCellOnce, ()) {
    Built built;
    std::map<Index, int> const visits = Walked(built.sketch.table, true);
    for (Index const& cell : built.said.cells) {
        auto const found = visits.find(cell);
        RC_ASSERT(found != visits.end());
        RC_ASSERT(found->second == 1);
    }
}

RC_GTEST_PROP(HeadingLaws, ASkippingLayoutIsTheFullOneWithoutItsEmptyPlaces, ()) {
    Built built;
    OmDisplayLayerHeading all(built.sketch.table, false);
    OmDisplayLayerHeading some(built.sketch.table, true);
    bool more = some.NextLayer();
    while (all.NextLayer()) {
        Index layer(built.said.dimensions.size(), 0);
        all.Fill(layer);
        Places const here{{layer, ""}};
        bool const holds = !WithoutEmpty(here, built.said, {}).empty();
        Index shown(built.said.dimensions.size(), 0);
        some.Fill(shown);
        RC_ASSERT((more && shown == layer) == holds);
        OmDisplayColumnHeading fullColumns(all, false);
        OmDisplayColumnHeading columns(all, true);
        RC_ASSERT(PlacesOf(columns, layer) ==
                  WithoutEmpty(PlacesOf(fullColumns, layer), built.said, built.said.axes[1]));
        OmDisplayRowHeading fullRows(all, false, false);
        OmDisplayRowHeading rows(all, true, false);
        RC_ASSERT(PlacesOf(rows, layer) == WithoutEmpty(PlacesOf(fullRows, layer), built.said, built.said.axes[0]));
        more = holds ? some.NextLayer() : more;
    }
    RC_ASSERT(!more);
}
