#include "examples/crosstab/Utf8.h"

namespace crosstab {

namespace {

constexpr std::size_t LongestQuote = 60;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Length of the sequence that a byte begins, and the smallest code point that needs that many bytes.
struct SequenceForm {
    std::size_t length;
    char32_t payload;
    char32_t smallest;
};

SequenceForm formOf(unsigned char first) {
    if (first < 0x80U) {
        return {1, first, 0};
    }
    if (first >= 0xC2U && first < 0xE0U) {
        return {2, first & 0x1FU, 0x80};
    }
    if (first >= 0xE0U && first < 0xF0U) {
        return {3, first & 0x0FU, 0x800};
    }
    if (first >= 0xF0U && first < 0xF5U) {
        return {4, first & 0x07U, 0x10000};
    }
    return {0, 0, 0};
}

bool reorders(char32_t c) { return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069); }

char32_t shown(char32_t c) {
    if (c == U'\n' || c == U'\r' || c == U'\t') {
        return U' ';
    }
    if (c < 0x20) {
        return 0x2400 + c;
    }
    if (c == 0x7F) {
        return 0x2421;
    }
    bool const harmful = (c >= 0x80 && c < 0xA0) || c == 0x2028 || c == 0x2029 || reorders(c);
    return harmful ? ReplacementCharacter : c;
}

} // namespace

std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& position) {
    SequenceForm const form = formOf(static_cast<unsigned char>(text[position]));
    std::size_t const start = position++;
    if (form.length == 0 || text.size() - start < form.length) {
        return std::nullopt;
    }
    char32_t codePoint = form.payload;
    for (std::size_t i = start + 1; i < start + form.length; ++i) {
        if (!isContinuation(text[i])) {
            return std::nullopt;
        }
        codePoint = (codePoint << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    if (codePoint < form.smallest || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
        return std::nullopt;
    }
    position = start + form.length;
    return codePoint;
}

bool isUtf8(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        if (!nextCodePoint(text, position)) {
            return false;
        }
    }
    return true;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    auto const last = [codePoint](unsigned int shift) {
        return static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
    };
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += {static_cast<char>(0xC0U | (codePoint >> 6U)), last(0)};
    } else if (codePoint < 0x10000) {
        text += {static_cast<char>(0xE0U | (codePoint >> 12U)), last(6), last(0)};
    } else {
        text += {static_cast<char>(0xF0U | (codePoint >> 18U)), last(12), last(6), last(0)};
    }
}

std::string printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        bool const lineBreak = text[position] == '\r' && position + 1 < text.size() && text[position + 1] == '\n';
        if (lineBreak) {
            ++position;
        }
        appendUtf8(result, shown(nextCodePoint(text, position).value_or(ReplacementCharacter)));
    }
    return result;
}

std::string inQuotes(std::string_view text) {
    std::string const whole = printable(text);
    std::size_t position = 0;
    for (std::size_t count = 0; count < LongestQuote && position < whole.size(); ++count) {
        nextCodePoint(whole, position);
    }
    return '"' + whole.substr(0, position) + (position < whole.size() ? "...\"" : "\"");
}

} // namespace crosstab
