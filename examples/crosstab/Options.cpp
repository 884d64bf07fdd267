#include "examples/crosstab/Options.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <string_view>
#include <utility>

namespace crosstab {

namespace {

/// Reads names and values separated by punctuation. One that holds the punctuation itself is written between double
/// quotes, quotes in it doubled, as a field of a CSV file is.
class ListScanner {
public:
    ListScanner(std::string option, std::string_view text, std::string expected)
        : _option(std::move(option)), _text(text), _expected(std::move(expected)) {}

    /// The next part, up to `separator` or to the end.
    std::string part(char separator) {
        std::string result;
        if (_position < _text.size() && _text[_position] == '"') {
            result = quotedPart();
        } else {
            std::size_t const end = std::min(_text.find(separator, _position), _text.size());
            result = _text.substr(_position, end - _position);
            _position = end;
        }
        if (_position < _text.size() && _text[_position] != separator) {
            fail();
        }
        return result;
    }

    void pass() {
        if (atEnd()) {
            fail();
        }
        ++_position;
    }

    bool atEnd() const { return _position == _text.size(); }

    std::vector<std::string> rest() {
        std::vector<std::string> parts{part(',')};
        while (!atEnd()) {
            pass();
            parts.push_back(part(','));
        }
        return parts;
    }

    [[noreturn]] void fail() const { throw Failure(_option + ": " + inQuotes(_text) + ": expected " + _expected); }

private:
    std::string quotedPart() {
        std::string result;
        for (;;) {
            std::size_t const quote = _text.find('"', _position + 1);
            if (quote == std::string_view::npos) {
                fail();
            }
            result += _text.substr(_position + 1, quote - _position - 1);
            _position = quote + 1;
            if (atEnd() || _text[_position] != '"') {
                return result;
            }
            result += '"';
        }
    }

    std::string _option;
    std::string_view _text;
    std::string _expected;
    std::size_t _position = 0;
};

std::vector<std::string> namesOf(std::string const& option, std::string_view text) {
    return ListScanner(option, text, "NAME,NAME").rest();
}

Group groupOf(std::string_view text) {
    ListScanner scanner("--group", text, "COLUMN=NAME:VALUE,VALUE");
    Group group;
    group.column = scanner.part('=');
    scanner.pass();
    group.name = scanner.part(':');
    scanner.pass();
    group.values = scanner.rest();
    if (group.name.empty()) {
        scanner.fail();
    }
    return group;
}

constexpr char const* Description =
    "Cross tabulates a CSV file: counts its lines, or sums one of its columns, for every combination of the values\n"
    "of other columns, and prints one table for each layer.\n";

constexpr char const* Footer =
    "Categories stand in the order in which they first appear in the file; a group stands where its first member\n"
    "would. Names and values that hold a comma (in --group also '=' or ':') are written between double quotes, as in\n"
    "a CSV file: --rows '\"Town, county\",Year'. The word behind an option is its value, whatever it looks like.\n\n"
    "Exit status: 0, or 2 with one line on standard error, nothing on standard output and no page written.\n";

} // namespace

Options parseOptions(int count, char const* const* words) {
    Options options;
    std::string rows;
    std::string columns;
    std::string layers;
    std::vector<std::string> groups;

    CLI::App app(Description, "omtree-crosstab");
    app.footer(Footer);
    app.get_formatter()->column_width(28);
    app.add_option("FILE", options.file, "CSV file with a header line, in UTF-8; - for standard input")
        ->required()
        ->type_name("");
    CLI::Option const* const rowOption =
        app.add_option("--rows", rows, "Columns of the file that make the rows, outermost first")->type_name("NAMES");
    CLI::Option const* const columnOption =
        app.add_option("--columns", columns, "Those that make the columns, outermost first")->type_name("NAMES");
    CLI::Option const* const layerOption =
        app.add_option("--layers", layers, "Those that make the layers; each layer is a table")->type_name("NAMES");
    CLI::Option const* const sumOption =
        app.add_option("--sum", options.sumOf, "Add up the numbers of this column instead of counting lines")
            ->type_name("COLUMN");
    app.add_option("--group", groups, "Put values of a column under a common label; repeatable")
        ->type_name("COLUMN=NAME:VALUE,VALUE")
        ->allow_extra_args(false);
    app.add_flag("--keep-empty", options.keepEmpty, "Show layers, rows and columns that no line falls into");
    CLI::Option* const namesOption = app.add_flag("--names-in-corner", options.namesInCorner,
                                                  "Put the names of the row columns above the rows, into the corner");
    app.add_option("--title", options.title, "Title (default: what the numbers are, by which columns)")
        ->type_name("TEXT");
    app.add_option("--corner", options.corner, "Text above the rows and beside the column heading")
        ->type_name("TEXT")
        ->excludes(namesOption);
    app.add_option("--caption", options.caption, "Text below the table")->type_name("TEXT");
    app.add_option("--footnote", options.footnotes, "Note on the title, shown below the table; repeatable")
        ->type_name("TEXT")
        ->allow_extra_args(false);
    CLI::Option const* const htmlOption =
        app.add_option("--html", options.htmlFile, "Write one self-contained HTML page to FILE instead")
            ->type_name("FILE");

    parseWords(app, count, words);
    if (*rowOption) {
        options.rows = namesOf("--rows", rows);
    }
    if (*columnOption) {
        options.columns = namesOf("--columns", columns);
    }
    if (*layerOption) {
        options.layers = namesOf("--layers", layers);
    }
    if (options.file.empty()) {
        throw Failure("FILE: the name is empty");
    }
    if (*htmlOption && options.htmlFile.empty()) {
        throw Failure("--html: the name is empty");
    }
    options.sums = static_cast<bool>(*sumOption);
    for (std::string const& group : groups) {
        options.groups.push_back(groupOf(group));
    }
    if (options.rows.empty() && options.columns.empty() && options.layers.empty()) {
        throw Failure("name columns of the file in --rows, --columns or --layers");
    }
    if (!options.corner.empty() && options.rows.empty()) {
        throw Failure("--corner requires --rows");
    }
    return options;
}

} // namespace crosstab
