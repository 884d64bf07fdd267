#include "examples/crosstab/Tally.h"

#include "examples/crosstab/CsvReader.h"
#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <algorithm>
#include <cmath>

namespace crosstab {

namespace {

/// A header in another encoding has names that cannot be asked for, however they look elsewhere.
void failOnIllFormedName(CsvReader const& reader) {
    for (std::string const& name : reader.header()) {
        if (!isUtf8(name)) {
            reader.fail(reader.headerLine(), "column " + inQuotes(name) + ": the name is not UTF-8");
        }
    }
}

/// The one field of the header with this name.
std::size_t fieldNamed(std::string const& name, std::string const& option, CsvReader const& reader) {
    std::vector<std::string> const& header = reader.header();
    auto const found = std::find(header.begin(), header.end(), name);
    if (found == header.end()) {
        failOnIllFormedName(reader);
        reader.fail(reader.headerLine(), "no column is named " + inQuotes(name) + ", as " + option + " asks for");
    }
    if (std::find(found + 1, header.end(), name) != header.end()) {
        reader.fail(reader.headerLine(),
                    "more than one column is named " + inQuotes(name) + ", as " + option + " asks for");
    }
    if (!isUtf8(name)) {
        reader.fail(reader.headerLine(), "column " + inQuotes(name) + ": the name is not UTF-8");
    }
    return static_cast<std::size_t>(found - header.begin());
}

} // namespace

Tally::Tally(Options const& options, CsvReader& reader) : _sums(options.sums) {
    addColumns(options.rows, "--rows", reader);
    addColumns(options.columns, "--columns", reader);
    addColumns(options.layers, "--layers", reader);
    if (_sums) {
        _sumField = fieldNamed(options.sumOf, "--sum", reader);
    }
    for (Group const& group : options.groups) {
        addGroup(group, reader);
    }

    while (reader.next()) {
        addRecord(reader);
    }
    if (_cells.empty()) {
        throw Failure(reader.name() + ": no line follows the header");
    }
    checkGroups(reader);
    checkSums(reader);
}

void Tally::addColumns(std::vector<std::string> const& names, std::string const& option, CsvReader const& reader) {
    for (std::string const& name : names) {
        auto const same = [&name](TalliedColumn const& column) { return column.name == name; };
        auto const earlier = std::find_if(_columns.begin(), _columns.end(), same);
        if (earlier != _columns.end()) {
            std::string const& first = _options[static_cast<std::size_t>(earlier - _columns.begin())];
            std::string places = first;
            if (first != option) {
                places.append(" and in ").append(option);
            }
            throw Failure("column " + inQuotes(name) + " is named twice, in " + places);
        }
        TalliedColumn column;
        column.name = name;
        column.field = fieldNamed(name, option, reader);
        _columns.push_back(std::move(column));
        _options.push_back(option);
    }
}

void Tally::addGroup(Group const& group, CsvReader const& reader) {
    fieldNamed(group.column, "--group", reader);
    auto const named = [&group](TalliedColumn const& column) { return column.name == group.column; };
    auto const column = std::find_if(_columns.begin(), _columns.end(), named);
    if (column == _columns.end()) {
        throw Failure("--group: column " + inQuotes(group.column) + " is not in --rows, --columns or --layers");
    }
    auto const known = std::find(column->groups.begin(), column->groups.end(), group.name);
    auto const number = static_cast<std::size_t>(known - column->groups.begin());
    if (known == column->groups.end()) {
        column->groups.push_back(group.name);
    }
    for (std::string const& value : group.values) {
        if (!column->groupOf.emplace(value, number).second) {
            throw Failure("--group: value " + inQuotes(value) + " of column " + inQuotes(group.column) +
                          " is named twice");
        }
    }
}

// --- records ---------------------------------------------------------------------------------------------------------

void Tally::addRecord(CsvReader const& reader) {
    _place.clear();
    for (TalliedColumn& column : _columns) {
        _place.push_back(placeOf(column, reader));
    }
    Cell& cell = _cells[_place];
    ++cell.count;
    if (!_sums) {
        return;
    }
    std::string const& number = reader.fields()[_sumField];
    switch (cell.sum.add(number)) {
    case DecimalSum::Outcome::Added:
        return;
    case DecimalSum::Outcome::NotANumber:
        reader.failAt(_sumField, inQuotes(number) + " is not a number");
    case DecimalSum::Outcome::OutOfRange:
        reader.failAt(_sumField, inQuotes(number) + " is out of range");
    }
}

int Tally::placeOf(TalliedColumn& column, CsvReader const& reader) {
    std::string const& value = reader.fields()[column.field];
    auto const known = column.places.find(value);
    if (known != column.places.end()) {
        return known->second;
    }
    if (!isUtf8(value)) {
        reader.failAt(column.field, inQuotes(value) + " is not UTF-8");
    }
    int const place = static_cast<int>(column.values.size());
    column.values.push_back(value);
    column.places.emplace(value, place);
    return place;
}

std::size_t Tally::HashOfPlace::operator()(Place const& place) const {
    std::size_t hash = place.size();
    for (int const subscript : place) {
        hash = (hash ^ static_cast<std::size_t>(subscript)) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32U;
    }
    return hash;
}

// --- once all is read ------------------------------------------------------------------------------------------------

// A value that is not there is a slip of the pen more often than not, and would leave the table wrong without a word.
void Tally::checkGroups(CsvReader const& reader) const {
    for (TalliedColumn const& column : _columns) {
        for (auto const& [value, group] : column.groupOf) {
            if (!column.places.contains(value)) {
                throw Failure(reader.name() + ": column " + inQuotes(column.name) + ": no line has the value " +
                              inQuotes(value) + ", as --group asks for");
            }
        }
    }
}

void Tally::checkSums(CsvReader const& reader) const {
    forEachCell([this, &reader](Place const&, double value) {
        if (!std::isfinite(value)) {
            throw Failure(reader.name() + ": column " + inQuotes(reader.header()[_sumField]) +
                          ": a sum is out of range");
        }
    });
}

} // namespace crosstab
