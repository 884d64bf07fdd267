// Comma-separated values: any bytes, handed over in chunks of any size, against a reader that looks at the whole text.

#include "FuzzTarget.h"
#include "Require.h"
#include "examples/crosstab/CsvReader.h"
#include "examples/crosstab/Failure.h"
#include "examples/crosstab/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using omfuzz::RequireSame;

/// The number of the line at each byte of a text, and at its end: one more behind each LF, each CR and each pair of
/// both.
class Lines {
public:
    explicit Lines(std::string const& text) : _at{1} {
        for (std::size_t at = 0; at < text.size(); ++at) {
            bool const restOfPair = text[at] == '\n' && at > 0 && text[at - 1] == '\r';
            bool const breaks = text[at] == '\r' || (text[at] == '\n' && !restOfPair);
            _at.push_back(_at.back() + (breaks ? 1 : 0));
        }
    }
    std::size_t At(std::size_t at) const { return _at[at]; }

private:
    std::vector<std::size_t> _at;
};

struct Field {
    std::string text;
    std::size_t line;
};
using Record = std::vector<Field>;

std::string Shown(Record const& record) {
    std::string text;
    for (Field const& field : record) {
        text += std::to_string(field.line) + ":" + std::to_string(field.text.size()) + ":" + field.text + ";";
    }
    return text + "\n";
}

/// What a complete reading of the text gives: its records, one in a line, and the failure that ends them.
class Expected {
public:
    explicit Expected(std::string text) : _text(std::move(text)), _lines(_text) {
        _at = _text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    }

    std::string Read() {
        bool isHeader = true;
        while (SkipBreaks()) {
            std::size_t const line = _lines.At(_at);
            Record record;
            while (ReadField(record)) {
            }
            if (!_failure.empty()) {
                return _shown + _failure;
            }
            if (isHeader) {
                for (Field& field : record) {
                    _names.push_back(field.text);
                    field.line = 0; // not asked for
                }
                _shown += std::to_string(line) + " ";
            } else if (record.size() != _names.size()) {
                return _shown + "data.csv:" + std::to_string(line) + ": " + std::to_string(record.size()) +
                       (record.size() == 1 ? " field" : " fields") + " where the header has " +
                       std::to_string(_names.size());
            }
            isHeader = false;
            _shown += Shown(record);
        }
        return isHeader ? "data.csv: the file is empty" : _shown;
    }

private:
    bool AtEnd() const { return _at == _text.size(); }
    bool AtBreak() const { return _text[_at] == '\n' || _text[_at] == '\r'; }

    /// Blank lines, and what ended the record before.
    bool SkipBreaks() {
        while (!AtEnd() && AtBreak()) {
            ++_at;
        }
        return !AtEnd();
    }

    /// One field and the comma behind it; false when the record ends with it.
    bool ReadField(Record& record) {
        Field field{"", _lines.At(_at)};
        bool const good =
            !AtEnd() && _text[_at] == '"' ? ReadQuoted(field, record.size()) : ReadBare(field, record.size());
        if (!good) {
            return false;
        }
        record.push_back(field);
        bool const more = !AtEnd() && _text[_at] == ',';
        _at += more ? 1 : 0;
        return more;
    }

    bool ReadBare(Field& field, std::size_t number) {
        while (!AtEnd() && !AtBreak() && _text[_at] != ',') {
            if (_text[_at] == '"') {
                return Fail(_lines.At(_at), number, "a quote stands inside of a field that is not quoted");
            }
            field.text += _text[_at++];
        }
        return true;
    }

    bool ReadQuoted(Field& field, std::size_t number) {
        for (++_at; !AtEnd(); field.text += _text[_at++]) {
            bool const quote = _text[_at] == '"';
            bool const doubled = quote && _at + 1 < _text.size() && _text[_at + 1] == '"';
            if (quote && !doubled) {
                ++_at;
                return AtEnd() || AtBreak() || _text[_at] == ',' ||
                       Fail(_lines.At(_at), number, "text follows the closing quote");
            }
            _at += doubled ? 1 : 0;
        }
        return Fail(field.line, number, "the quote that begins the field is never closed");
    }

    bool Fail(std::size_t line, std::size_t number, std::string const& what) {
        std::string const where = number < _names.size() ? "column " + crosstab::inQuotes(_names[number])
                                                         : "field " + std::to_string(number + 1);
        _failure = "data.csv:" + std::to_string(line) + ": " + where + ": " + what;
        return false;
    }

    std::string _text;
    Lines _lines;
    std::size_t _at = 0;
    std::vector<std::string> _names{};
    std::string _shown{};
    std::string _failure{};
};

/// The same from the reader, which gets chunks of at most so many bytes.
std::string ReadInChunks(std::string const& text, std::size_t most) {
    std::size_t position = 0;
    std::string shown;
    try {
        crosstab::CsvReader reader("data.csv", [&](char* bytes, std::size_t size) {
            std::size_t const length = std::min({most, size, text.size() - position});
            std::memcpy(bytes, text.data() + position, length);
            position += length;
            return length;
        });
        Record header;
        for (std::string const& name : reader.header()) {
            header.push_back({name, 0});
        }
        shown = std::to_string(reader.headerLine()) + " " + Shown(header);
        while (reader.next()) {
            Record record;
            for (std::size_t k = 0; k < reader.fields().size(); ++k) {
                record.push_back({reader.fields()[k], reader.lineOf(k)});
            }
            shown += Shown(record);
        }
    } catch (crosstab::Failure const& failure) {
        shown += failure.what();
    }
    return shown;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    std::string const text(reinterpret_cast<char const*>(data) + 1, size - 1);
    std::string const expected = Expected(text).Read();
    RequireSame(ReadInChunks(text, text.size() + 1), expected, "records, lines and failures");
    RequireSame(ReadInChunks(text, 1), expected, "the same byte by byte");
    RequireSame(ReadInChunks(text, 1 + data[0] % 16), expected, "the same in chunks");
    return 0;
}
