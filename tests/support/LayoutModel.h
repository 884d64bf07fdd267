#ifndef OMTREE_TESTS_SUPPORT_LAYOUTMODEL_H
#define OMTREE_TESTS_SUPPORT_LAYOUTMODEL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// A naive layout of a pivot table's three headings: plain data in, nested loops and linear searches, nothing kept that
/// could be computed again.
///
///     ModelTable table;                     // category trees, axes, cells
///     LayerModel layers(table, true);       // as OmDisplayLayerHeading(table, true)
///     layers.NextLayer();
///     HeadingModel columns(layers, HeadingModel::Columns, true);
///     HeadingModel rows(layers, HeadingModel::Rows, true, false);
///
/// Nodes are named by their address in the ModelTable, which must not change while a model of it is in use; null stands
/// for a null pointer of the library.
namespace omtest {

/// A category, a group, or (at the top) a dimension.
struct ModelCategory {
    std::string label{};
    unsigned long long subscript = 0;
    bool isGroup = false;
    bool hide = false;
    bool hideLabels = false;
    std::vector<ModelCategory> children{};
};

struct ModelTable {
    std::vector<ModelCategory> dimensions{};
    std::vector<int> sizes{}; ///< number of categories of each dimension, whatever its tree says
    std::vector<short> rows{};
    std::vector<short> columns{};
    std::vector<short> layers{};
    std::map<std::vector<int>, std::string> cells{};
    std::optional<std::string> cornerText{};
    int layerLocation = -1;

    /// Extent along an axis. An entry that names no dimension has one position.
    std::uint32_t Extent(int dimension) const {
        if (!Has(dimension)) {
            return 1;
        }
        return static_cast<std::uint32_t>(std::max(0, sizes[static_cast<std::size_t>(dimension)]));
    }
    bool Has(int dimension) const { return dimension >= 0 && static_cast<std::size_t>(dimension) < dimensions.size(); }
};

using ModelNode = ModelCategory const*;
using ModelNodes = std::vector<ModelNode>;

/// "0", "0.2.1" (dimension, then child positions) or "null"; for messages and hand-written expectations.
inline std::string NameOf(ModelTable const& table, ModelNode node) {
    struct Search {
        ModelNode wanted;
        std::string Below(ModelCategory const& here, std::string const& name) const {
            if (&here == wanted) {
                return name;
            }
            std::string found;
            for (std::size_t k = 0; k < here.children.size() && found.empty(); ++k) {
                found = Below(here.children[k], name + "." + std::to_string(k));
            }
            return found;
        }
    };
    std::string found = node == nullptr ? "null" : "";
    for (std::size_t d = 0; d < table.dimensions.size() && found.empty(); ++d) {
        found = Search{node}.Below(table.dimensions[d], std::to_string(d));
    }
    return found.empty() ? "foreign" : found;
}

inline std::string NamesOf(ModelTable const& table, ModelNodes const& nodes) {
    std::string text;
    for (ModelNode const node : nodes) {
        text.append(text.empty() ? "" : " ").append(NameOf(table, node));
    }
    return text;
}

/// One shown leaf: the nodes from it up to the root, the number that cells know it by, and its label depth.
struct ModelLeaf {
    ModelNodes path{};
    std::uint32_t category = 0;
    int depth = 0;
};

/// The shown leaves of one dimension, in tree order.
struct ModelRecord {
    std::vector<ModelLeaf> shown{};
    int width = 0;

    explicit ModelRecord(ModelCategory const& root) { Visit(root, {}); }

    /// The leaf at a digit, or null.
    ModelLeaf const* At(std::uint64_t digit) const {
        return digit < shown.size() ? &shown[static_cast<std::size_t>(digit)] : nullptr;
    }
    /// The position of a cell's category: that of the last leaf with this number.
    std::optional<std::size_t> Position(int category) const {
        for (std::size_t k = shown.size(); k-- > 0;) {
            if (shown[k].category == static_cast<std::uint32_t>(category)) {
                return k;
            }
        }
        return std::nullopt;
    }

private:
    void Visit(ModelCategory const& node, ModelNodes above) {
        above.insert(above.begin(), &node);
        if (node.isGroup) {
            for (ModelCategory const& child : node.children) {
                Visit(child, above);
            }
            return;
        }
        int depth = 0;
        for (ModelNode const step : above) {
            depth += step->hide ? 0 : 1;
            depth = step->isGroup && step->hideLabels ? 0 : depth;
        }
        shown.push_back({std::move(above), static_cast<std::uint32_t>(node.subscript), depth});
        width = std::max(width, depth);
    }
};

/// The dimensions along an axis and the positions that they span, first dimension most significant.
struct ModelAxis {
    std::vector<int> dimensions{};
    std::vector<std::uint32_t> bases{};
    std::uint64_t count = 1;

    ModelAxis(ModelTable const& table, std::vector<short> const& axis) {
        for (short const dimension : axis) {
            dimensions.push_back(dimension);
            bases.push_back(table.Extent(dimension));
            count *= bases.back();
        }
    }

    /// The digits of a position, the first of which takes whatever the others leave. Nothing where a base of 0 would
    /// have to divide: such a number lies on no position.
    std::optional<std::vector<std::uint64_t>> Digits(std::uint64_t number) const {
        std::vector<std::uint64_t> digits(bases.size(), 0);
        for (std::size_t k = bases.size(); k-- > 1 && number > 0;) {
            if (bases[k] == 0) {
                return std::nullopt;
            }
            digits[k] = number % bases[k];
            number /= bases[k];
        }
        if (!digits.empty()) {
            digits[0] = number;
        }
        return digits;
    }
};

/// What the three headings share: where a cell is, and which positions of an axis hold one.
class ModelLayout {
public:
    explicit ModelLayout(ModelTable const& given) : table(given) {
        std::uint64_t product = 1;
        for (std::size_t d = 0; d < given.dimensions.size(); ++d) {
            records.emplace_back(given.dimensions[d]);
            product *= given.Extent(static_cast<int>(d));
        }
        sparse = given.cells.size() < (product + 50) / 100;
    }

    /// Writes the categories of a position into a cell index vector; a digit that shows none leaves its entry alone.
    void Apply(ModelAxis const& axis, std::uint64_t number, std::vector<int>& index) const {
        index.resize(records.size(), 0);
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            ModelLeaf const* const leaf = LeafAt(axis, number, i);
            if (leaf != nullptr) {
                index[static_cast<std::size_t>(axis.dimensions[i])] = static_cast<int>(leaf->category);
            }
        }
    }

    /// The category of axis dimension i at a position; null when none is shown there.
    ModelLeaf const* LeafAt(ModelAxis const& axis, std::uint64_t number, std::size_t i) const {
        std::optional<std::vector<std::uint64_t>> const digits = axis.Digits(number);
        return digits && table.Has(axis.dimensions[i]) ? Record(axis.dimensions[i]).At((*digits)[i]) : nullptr;
    }
    /// Its label path, leaf first; empty when there is none.
    ModelNodes PathAt(ModelAxis const& axis, std::uint64_t number, std::size_t i) const {
        ModelLeaf const* const leaf = LeafAt(axis, number, i);
        return leaf != nullptr ? leaf->path : ModelNodes();
    }

    /// The dense strategy: which positions of `axis` meet a cell somewhere along `other`, starting from `index`.
    std::vector<std::uint64_t> Probe(ModelAxis const& axis, ModelAxis const& other,
                                     std::vector<int> const& index) const {
        std::vector<std::uint64_t> found;
        for (std::uint64_t number = 0; number < axis.count; ++number) {
            std::vector<int> place = index;
            Apply(axis, number, place);
            if (CanHoldCells(axis, number) && MeetsCell(other, place)) {
                found.push_back(number);
            }
        }
        return found;
    }

    /// The sparse strategy: the positions along `axis` of all cells that `counts` lets through.
    template <typename Counts>
    std::vector<std::uint64_t> Walk(ModelAxis const& axis, Counts&& counts) const {
        std::set<std::uint64_t> found;
        for (auto const& [index, text] : table.cells) {
            std::optional<std::uint64_t> const number = counts(index) ? NumberOf(axis, index) : std::nullopt;
            if (number) {
                found.insert(*number);
            }
        }
        return {found.begin(), found.end()};
    }

    ModelRecord const& Record(int dimension) const { return records[static_cast<std::size_t>(dimension)]; }

    ModelTable const& table;
    std::vector<ModelRecord> records{};
    bool sparse = false;

private:
    /// Whether every digit shows a category that a cell can have. A position where one does not holds no cell, even
    /// where another entry names the same dimension once more.
    bool CanHoldCells(ModelAxis const& axis, std::uint64_t number) const {
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            ModelLeaf const* const leaf = LeafAt(axis, number, i);
            if (table.Has(axis.dimensions[i]) && (leaf == nullptr || static_cast<int>(leaf->category) < 0)) {
                return false;
            }
        }
        return true;
    }

    bool MeetsCell(ModelAxis const& other, std::vector<int> place) const {
        for (std::uint64_t number = 0; number < other.count; ++number) {
            std::vector<std::uint64_t> const digits = *other.Digits(number);
            for (std::size_t i = 0; i < digits.size(); ++i) {
                if (table.Has(other.dimensions[i])) {
                    place[static_cast<std::size_t>(other.dimensions[i])] = static_cast<int>(digits[i]);
                }
            }
            if (table.cells.count(place) != 0) {
                return true;
            }
        }
        return false;
    }

    std::optional<std::uint64_t> NumberOf(ModelAxis const& axis, std::vector<int> const& index) const {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            std::uint64_t digit = 0;
            if (table.Has(axis.dimensions[i])) {
                std::optional<std::size_t> const position =
                    Record(axis.dimensions[i]).Position(index[static_cast<std::size_t>(axis.dimensions[i])]);
                if (!position || *position >= axis.bases[i]) {
                    return std::nullopt;
                }
                digit = *position;
            }
            number = number * axis.bases[i] + digit;
        }
        return number;
    }
};

inline std::vector<short> Reversed(std::vector<short> axis) {
    std::reverse(axis.begin(), axis.end());
    return axis;
}

inline std::vector<short> Joined(std::vector<short> first, std::vector<short> const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

class LayerModel {
public:
    LayerModel(ModelTable const& table, bool skipEmpty)
        : layout(table), axis(table, Reversed(table.layers)), skip(skipEmpty), index(table.dimensions.size(), 0) {
        if (skip) {
            std::vector<int> const zeros = index;
            nonEmpty = layout.sparse ? layout.Walk(axis, [](std::vector<int> const&) { return true; })
                                     : layout.Probe(axis, ModelAxis(table, Joined(table.columns, table.rows)), zeros);
        }
    }

    int NDimensions() const { return static_cast<int>(axis.dimensions.size()); }
    int DimensionIndex(int i) const { return Inside(i) ? axis.dimensions[static_cast<std::size_t>(i)] : -1; }
    int VisibleWidth(int i) const {
        return layout.table.Has(DimensionIndex(i)) ? layout.Record(DimensionIndex(i)).width : 0;
    }
    std::uint64_t Count() const { return skip ? nonEmpty.size() : axis.count; }

    bool SwitchLayer(int n) {
        if (n == -1) {
            current = -1;
            return false;
        }
        if (n < 0 || static_cast<std::uint64_t>(n) >= Count()) {
            return false;
        }
        current = n;
        layout.Apply(axis, *Linear(), index);
        return true;
    }
    bool NextLayer() { return SwitchLayer(current + 1); }
    void LastLayer() { SwitchLayer(static_cast<int>(Count()) - 1); }
    int RestoreLayer() { return current = layout.table.layerLocation; }

    void Fill(std::vector<int>& cell) const {
        if (std::optional<std::uint64_t> const linear = Linear()) {
            layout.Apply(axis, *linear, cell);
        }
    }

    /// The current category's label path, leaf first; empty when there is none.
    ModelNodes Path(int i) const {
        std::optional<std::uint64_t> const linear = Linear();
        return linear && Inside(i) ? layout.PathAt(axis, *linear, static_cast<std::size_t>(i)) : ModelNodes();
    }

    ModelNodes Nodes(int i) const {
        ModelNodes nodes;
        ModelNodes const path = Path(i);
        for (auto node = path.rbegin(); node != path.rend(); ++node) {
            if ((*node)->isGroup && (*node)->hideLabels && !(*node)->hide) {
                break;
            }
            nodes.push_back((*node)->hide ? nullptr : *node);
        }
        return nodes;
    }

    /// Root and leaf, or nothing.
    std::optional<std::pair<ModelNode, ModelNode>> DimCatNodes(int i) const {
        ModelNodes const path = Path(i);
        if (path.size() <= 1) {
            return std::nullopt;
        }
        return std::make_pair(path.back(), path.front());
    }
    ModelNodes DimAllNodes(int i) const {
        ModelNodes const path = Path(i);
        return path.size() > 1 ? ModelNodes(path.rbegin(), path.rend()) : ModelNodes();
    }

    /// The current layer's linear number; nothing before the first and, with skipping, past the last.
    std::optional<std::uint64_t> Linear() const {
        if (current < 0) {
            return std::nullopt;
        }
        std::size_t const place = static_cast<std::size_t>(current);
        if (!skip) {
            return place;
        }
        return place < nonEmpty.size() ? std::optional<std::uint64_t>(nonEmpty[place]) : std::nullopt;
    }

    /// Whether a cell lies in the layer that `index` tells.
    bool IsInCurrentLayer(std::vector<int> const& cell) const {
        return std::all_of(axis.dimensions.begin(), axis.dimensions.end(), [&](int dimension) {
            return !layout.table.Has(dimension) ||
                   cell[static_cast<std::size_t>(dimension)] == index[static_cast<std::size_t>(dimension)];
        });
    }

    ModelLayout const layout;
    ModelAxis const axis;
    bool const skip;
    std::vector<std::uint64_t> nonEmpty{};
    std::vector<int> index; ///< the current cell index
    int current = -1;

private:
    bool Inside(int i) const { return i >= 0 && static_cast<std::size_t>(i) < axis.dimensions.size(); }
};

/// A column or a row heading. A "position" is a column of the one, a row of the other; a "line" runs across.
class HeadingModel {
public:
    enum Axis { Columns, Rows };

    HeadingModel(LayerModel const& layers, Axis which, bool skipEmpty, bool namesInCorner = false)
        : layout(layers.layout),
          axis(layout.table, Reversed(which == Columns ? layout.table.columns : layout.table.rows)), skip(skipEmpty),
          names(namesInCorner) {
        if (skip) {
            ModelAxis const other(layout.table, Reversed(which == Columns ? layout.table.rows : layout.table.columns));
            nonEmpty = layout.sparse
                           ? layout.Walk(axis, [&](auto const& cell) { return layers.IsInCurrentLayer(cell); })
                           : layout.Probe(axis, other, layers.index);
        }
        count = skip ? nonEmpty.size() : axis.count;
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            if (layout.table.Has(axis.dimensions[i])) {
                heightOf[i] = Height(i);
                heights.push_back(heightOf[i]);
                depth += heightOf[i];
            }
        }
        if (which == Rows) {
            BuildCorner();
        }
    }

    int NDimensions() const { return static_cast<int>(axis.dimensions.size()); }
    int DimensionIndex(int i) const {
        return i >= 0 && i < NDimensions() ? axis.dimensions[static_cast<std::size_t>(i)] : -1;
    }
    int VisibleHeight(int i) const {
        return i >= 0 && static_cast<std::size_t>(i) < heights.size() ? heights[static_cast<std::size_t>(i)] : 0;
    }

    /// The shown positions; without skipping all of them.
    std::vector<std::uint64_t> Positions() const {
        std::vector<std::uint64_t> positions = nonEmpty;
        for (std::uint64_t number = 0; !skip && number < count; ++number) {
            positions.push_back(number);
        }
        return positions;
    }

    /// The `depth` heading cells of a shown position.
    ModelNodes Cells(int c) const {
        ModelNodes cells;
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            if (!layout.table.Has(axis.dimensions[i])) {
                continue;
            }
            ModelNodes const path = PathAt(Linear(c), i);
            ModelNodes list;
            for (auto node = path.rbegin(); node != path.rend(); ++node) {
                if ((*node)->isGroup && (*node)->hideLabels) {
                    break;
                }
                bool const isName = names && node == path.rbegin();
                if (!(*node)->hide && !isName) {
                    list.push_back(*node);
                }
            }
            list.resize(static_cast<std::size_t>(heightOf.at(i)), nullptr);
            cells.insert(cells.end(), list.begin(), list.end());
        }
        return cells;
    }

    /// Entry r of every position's cells; empty when r is no line.
    ModelNodes Line(int r) const {
        ModelNodes line;
        for (std::uint64_t c = 0; r >= 0 && r < depth && c < count; ++c) {
            line.push_back(Cells(static_cast<int>(c))[static_cast<std::size_t>(r)]);
        }
        return line;
    }

    /// The leaf of each heading dimension.
    ModelNodes Categories(int c) const {
        ModelNodes leaves;
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            ModelNodes const path = PathAt(Linear(c), i);
            leaves.push_back(path.empty() ? nullptr : path.front());
        }
        return leaves;
    }

    void DimCatNodes(int c, ModelNodes& dimensions, ModelNodes& categories) const {
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            ModelNodes const path = PathAt(LinearOrItself(c), i);
            if (path.size() > 1) {
                dimensions.push_back(path.back());
                categories.push_back(path.front());
            }
        }
    }
    void DimAllNodes(int c, ModelNodes& nodes) const {
        for (std::size_t i = 0; i < axis.dimensions.size(); ++i) {
            ModelNodes const path = PathAt(LinearOrItself(c), i);
            if (path.size() > 1) {
                nodes.insert(nodes.end(), path.rbegin(), path.rend());
            }
        }
    }

    void Fill(std::vector<int>& cell, int c) const {
        if (std::optional<std::uint64_t> const linear = Linear(c)) {
            layout.Apply(axis, *linear, cell);
        } else {
            cell.resize(layout.records.size(), 0);
        }
    }

    /// The linear position of a place in the shown sequence.
    std::optional<std::uint64_t> Linear(int c) const {
        std::size_t const place = static_cast<std::size_t>(c);
        if (!skip) {
            return place;
        }
        return place < nonEmpty.size() ? std::optional<std::uint64_t>(nonEmpty[place]) : std::nullopt;
    }
    /// The same, but a place past the sequence stands for itself.
    std::uint64_t LinearOrItself(int c) const { return Linear(c).value_or(static_cast<std::uint64_t>(c)); }

    ModelLayout const& layout;
    ModelAxis const axis;
    bool const skip;
    bool const names;
    std::vector<std::uint64_t> nonEmpty{};
    std::uint64_t count = 0;
    std::vector<int> heights{}; ///< without an entry for an axis entry that names no dimension
    int depth = 0;
    std::vector<std::optional<std::string>> corner{};

private:
    /// The label path, leaf first, of heading dimension i at a linear position; empty when there is none.
    ModelNodes PathAt(std::optional<std::uint64_t> linear, std::size_t i) const {
        return linear ? layout.PathAt(axis, *linear, i) : ModelNodes();
    }

    int Height(std::size_t i) const {
        ModelRecord const& record = layout.Record(axis.dimensions[i]);
        int height = nonEmpty.empty() ? record.width : 0;
        for (std::uint64_t const number : nonEmpty) {
            height = std::max(height, layout.LeafAt(axis, number, i)->depth);
        }
        bool const givesUpName =
            names && height != 0 && !record.shown.empty() && !record.shown.front().path.back()->hide;
        return givesUpName ? height - 1 : height;
    }

    void BuildCorner() {
        bool placed = false;
        for (std::size_t i = 0; names && i < axis.dimensions.size(); ++i) {
            ModelNodes const path = PathAt(0, i);
            if (path.empty()) {
                continue;
            }
            std::vector<std::optional<std::string>> list;
            if (!path.back()->hide) {
                list.push_back(path.back()->label);
            }
            list.resize(static_cast<std::size_t>(heightOf.at(i)));
            placed = placed || (!list.empty() && list.front().has_value());
            corner.insert(corner.end(), list.begin(), list.end());
        }
        if (count != 0 && !placed) {
            corner.assign(static_cast<std::size_t>(depth), std::nullopt);
            if (depth != 0) {
                corner.front() = layout.table.cornerText;
            }
        }
    }

    std::map<std::size_t, int> heightOf{}; ///< by heading dimension
};

} // namespace omtest

#endif
