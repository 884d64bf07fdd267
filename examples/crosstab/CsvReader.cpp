#include "examples/crosstab/CsvReader.h"

#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <algorithm>
#include <new>
#include <utility>

namespace crosstab {

namespace {

constexpr std::size_t BufferSize = std::size_t{1} << 16U;
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

// The parser would strip what counts as a space from the ends of fields.
int isNoSpace(unsigned char /*byte*/) { return 0; }

bool endsLine(char byte) { return byte == '\n' || byte == '\r'; }

} // namespace

CsvReader::CsvReader(std::string name, Source source)
    : _name(std::move(name)), _source(std::move(source)), _buffer(BufferSize) {
    // A source may give few bytes at a time, and the mark has three.
    while (_end < ByteOrderMark.size()) {
        std::size_t const length = _source(_buffer.data() + _end, BufferSize - _end);
        if (length == 0) {
            break;
        }
        _end += length;
    }
    if (std::string_view(_buffer.data(), _end).starts_with(ByteOrderMark)) {
        _begin = ByteOrderMark.size();
    }
    if (!readRecord()) {
        throw Failure(_name + ": the file is empty");
    }
    _header = _fields;
    _headerLine = _lines.front();
}

CsvReader::Parser::Parser() : csv_parser() {
    if (csv_init(this, CSV_STRICT | CSV_STRICT_FINI) != 0) {
        throw std::bad_alloc();
    }
    csv_set_space_func(this, isNoSpace);
}

CsvReader::Parser::~Parser() { csv_free(this); }

bool CsvReader::next() {
    if (!readRecord()) {
        return false;
    }
    if (_fields.size() != _header.size()) {
        auto const counted = [](std::size_t count) {
            return std::to_string(count) + (count == 1 ? " field" : " fields");
        };
        fail(_lines.front(), counted(_fields.size()) + " where the header has " + std::to_string(_header.size()));
    }
    return true;
}

bool CsvReader::readRecord() {
    _complete = false;
    _count = 0;
    for (;;) {
        std::string_view const piece = nextPiece();
        if (piece.empty()) {
            return finish();
        }
        if (parse(piece)) {
            return true;
        }
    }
}

/// Parses a piece of one line; true when a record is complete with it.
bool CsvReader::parse(std::string_view piece) {
    if (!_inRecord && !endsLine(piece.front())) {
        _inRecord = true;
        _fieldLine = _line;
    }
    std::size_t const parsed = csv_parse(&_parser, piece.data(), piece.size(), onField, onRecordEnd, this);
    passError();
    if (parsed != piece.size()) {
        if (csv_error(&_parser) != CSV_EPARSE) {
            throw std::bad_alloc();
        }
        failInField(_line, _parser.quoted != 0 ? "text follows the closing quote"
                                               : "a quote stands inside of a field that is not quoted");
    }
    countLine(piece);
    if (_complete) {
        _inRecord = false;
        _fields.resize(_count);
        _lines.resize(_count);
    }
    return _complete;
}

/// At the end of the file: true when it ended a record.
bool CsvReader::finish() {
    if (!_inRecord) {
        return false;
    }
    if (csv_fini(&_parser, onField, onRecordEnd, this) != 0) {
        failInField(_fieldLine, "the quote that begins the field is never closed");
    }
    passError();
    _inRecord = false;
    _fields.resize(_count);
    _lines.resize(_count);
    return _complete;
}

// --- bytes and lines -------------------------------------------------------------------------------------------------

/// The next bytes up to the end of their line, or of the buffer. Records end only where lines do, so what the parser
/// reports while it reads a piece lies on one line and belongs to one record.
std::string_view CsvReader::nextPiece() {
    if (_begin == _end && !refill()) {
        return {};
    }
    char const* const first = _buffer.data() + _begin;
    char const* const last = _buffer.data() + _end;
    char const* const lineEnd = std::find_if(first, last, endsLine);
    std::string_view const piece(first, static_cast<std::size_t>(lineEnd - first) + (lineEnd != last ? 1 : 0));
    _begin += piece.size();
    return piece;
}

bool CsvReader::refill() {
    _begin = 0;
    _end = _source(_buffer.data(), BufferSize);
    return _end != 0;
}

void CsvReader::countLine(std::string_view piece) {
    bool const restOfLineBreak = _afterCr && piece == "\n";
    if (endsLine(piece.back()) && !restOfLineBreak) {
        ++_line;
    }
    _afterCr = piece.back() == '\r';
}

// --- what the parser reports -----------------------------------------------------------------------------------------

void CsvReader::onField(void* bytes, std::size_t length, void* reader) {
    static_cast<CsvReader*>(reader)->takeField(bytes, length);
}

void CsvReader::onRecordEnd(int /*terminator*/, void* reader) { static_cast<CsvReader*>(reader)->takeRecordEnd(); }

// No exception may pass through the parser's C code.
void CsvReader::takeField(void const* bytes, std::size_t length) noexcept {
    try {
        if (_count == _fields.size()) {
            _fields.emplace_back();
            _lines.emplace_back();
        }
        _fields[_count].assign(length != 0 ? static_cast<char const*>(bytes) : "", length);
        _lines[_count] = _fieldLine;
        ++_count;
        _fieldLine = _line;
    } catch (...) {
        _error = std::current_exception();
    }
}

void CsvReader::passError() {
    if (_error != nullptr) {
        std::rethrow_exception(std::exchange(_error, nullptr));
    }
}

// --- failures --------------------------------------------------------------------------------------------------------

void CsvReader::fail(std::size_t line, std::string const& text) const {
    throw Failure(_name + ':' + std::to_string(line) + ": " + text);
}

void CsvReader::failAt(std::size_t field, std::string const& text) const {
    fail(_lines[field], "column " + inQuotes(_header[field]) + ": " + text);
}

/// For the field that is being read, in a record that may be the header or have too many fields.
void CsvReader::failInField(std::size_t line, std::string const& text) const {
    bool const named = _count < _header.size();
    fail(line, (named ? "column " + inQuotes(_header[_count]) : "field " + std::to_string(_count + 1)) + ": " + text);
}

} // namespace crosstab
