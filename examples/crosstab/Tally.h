#ifndef OMTREE_EXAMPLES_CROSSTAB_TALLY_H
#define OMTREE_EXAMPLES_CROSSTAB_TALLY_H

#include "examples/crosstab/DecimalSum.h"
#include "examples/crosstab/Options.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace crosstab {

class CsvReader;

/// A column of the file on one of the table's axes, with the values that were met in it.
struct TalliedColumn {
    static constexpr std::size_t NoGroup = static_cast<std::size_t>(-1);

    std::string name;
    std::size_t field = 0;           ///< its place in the file's records
    std::vector<std::string> values; ///< in the order of their first appearance
    std::unordered_map<std::string, int> places;
    std::vector<std::string> groups;
    std::unordered_map<std::string, std::size_t> groupOf; ///< number of the group of each value that has one
};

/// Counts or sums the records of a file by the values of some of its columns.
///
/// The columns are numbered through: first those of the rows, then those of the columns, then those of the layers, each
/// as the options list them.
class Tally {
public:
    /// A place for each column, by position in `TalliedColumn::values`.
    using Place = std::vector<int>;

    /// Reads the whole file. Throws Failure for options that do not fit its header and for values that cannot be used.
    Tally(Options const& options, CsvReader& reader);

    std::vector<TalliedColumn> const& columns() const { return _columns; }

    /// Calls `take(Place const&, double)` for each place that some record fell into, in no particular order.
    template <typename Take>
    void forEachCell(Take&& take) const {
        for (auto const& [place, cell] : _cells) {
            take(place, _sums ? cell.sum.value() : static_cast<double>(cell.count));
        }
    }

private:
    struct Cell {
        std::uint64_t count = 0;
        DecimalSum sum;
    };
    struct HashOfPlace {
        std::size_t operator()(Place const& place) const;
    };

    void addColumns(std::vector<std::string> const& names, std::string const& option, CsvReader const& reader);
    void addGroup(Group const& group, CsvReader const& reader);
    void addRecord(CsvReader const& reader);
    static int placeOf(TalliedColumn& column, CsvReader const& reader);
    void checkGroups(CsvReader const& reader) const;
    void checkSums(CsvReader const& reader) const;

    bool _sums;
    std::size_t _sumField = 0;
    std::vector<TalliedColumn> _columns;
    std::vector<std::string> _options; ///< for each column, the option that names it
    std::unordered_map<Place, Cell, HashOfPlace> _cells;
    Place _place; ///< of the record being added; kept for its storage
};

} // namespace crosstab

#endif
