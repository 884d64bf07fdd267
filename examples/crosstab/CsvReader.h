#ifndef OMTREE_EXAMPLES_CROSSTAB_CSVREADER_H
#define OMTREE_EXAMPLES_CROSSTAB_CSVREADER_H

#include <csv.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace crosstab {

/// Reads comma-separated values record by record. The first record is the header; every other one must have as many
/// fields.
///
///  - Records end with LF, CR LF or CR; the last one may end with the file. Blank lines are passed over.
///  - A field in double quotes may hold commas, line breaks and (doubled) quotes. A quote anywhere else is malformed.
///    Blanks belong to their field.
///  - A byte order mark at the beginning is not part of the first field. Bytes are handed on as they are.
///
/// Every failure is a Failure that begins with file and line: "data.csv:17: 3 fields where the header has 4". Lines are
/// counted from 1, line breaks inside of fields included; a record's line is the one that it begins on.
class CsvReader {
public:
    /// Gives at most so many bytes and says how many; 0 at the end.
    using Source = std::function<std::size_t(char* bytes, std::size_t size)>;

    /// Reads the header. `name` is what messages call the file.
    CsvReader(std::string name, Source source);

    CsvReader(CsvReader const&) = delete;
    CsvReader& operator=(CsvReader const&) = delete;

    std::string const& name() const { return _name; }
    std::vector<std::string> const& header() const { return _header; }
    std::size_t headerLine() const { return _headerLine; }

    /// Reads the next record; false at the end of the file.
    bool next();

    /// The record's fields. Valid until the next call of `next`.
    std::vector<std::string> const& fields() const { return _fields; }
    /// The line on which a field of the record begins.
    std::size_t lineOf(std::size_t field) const { return _lines[field]; }

    /// Throws Failure "NAME:LINE: TEXT".
    [[noreturn]] void fail(std::size_t line, std::string const& text) const;
    /// Throws Failure `NAME:LINE: column "COLUMN": TEXT` for a field of the current record.
    [[noreturn]] void failAt(std::size_t field, std::string const& text) const;

private:
    bool readRecord();
    bool parse(std::string_view piece);
    bool finish();
    std::string_view nextPiece();
    bool refill();
    void countLine(std::string_view piece);
    void passError();
    [[noreturn]] void failInField(std::size_t line, std::string const& text) const;

    void takeField(void const* bytes, std::size_t length) noexcept;
    void takeRecordEnd() noexcept { _complete = true; }
    static void onField(void* bytes, std::size_t length, void* reader);
    static void onRecordEnd(int terminator, void* reader);

    /// Frees the parser's buffer even when the header already makes the constructor throw.
    struct Parser : csv_parser {
        Parser();
        ~Parser();
        Parser(Parser const&) = delete;
        Parser& operator=(Parser const&) = delete;
    };

    std::string _name;
    Source _source;
    Parser _parser;

    std::vector<char> _buffer;
    std::size_t _begin = 0; ///< the bytes from here to `_end` are read but not parsed
    std::size_t _end = 0;

    std::size_t _line = 1;
    bool _afterCr = false;  ///< the last byte parsed was a CR, so an LF now belongs to the same line break
    bool _inRecord = false; ///< some byte of a record has been parsed, and not its end
    bool _complete = false;
    std::exception_ptr _error; ///< thrown while the parser's C code was on the stack

    std::vector<std::string> _header;
    std::size_t _headerLine = 0;
    std::vector<std::string> _fields;
    std::vector<std::size_t> _lines;
    std::size_t _count = 0;     ///< fields taken of the record being read
    std::size_t _fieldLine = 1; ///< where the field being read begins
};

} // namespace crosstab

#endif
