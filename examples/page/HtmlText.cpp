#include "examples/page/HtmlText.h"

#include "examples/crosstab/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace page {

namespace {

bool isShown(char32_t c) {
    bool const isControl = (c < 0x20 && c != '\n' && c != '\t') || (c >= 0x7F && c < 0xA0);
    bool const isNoCharacter = (c >= 0xFDD0 && c <= 0xFDEF) || (c & 0xFFFE) == 0xFFFE;
    return !isControl && !isNoCharacter;
}

} // namespace

std::string documentText(std::string_view text) {
    std::string shown;
    for (std::size_t position = 0; position < text.size();) {
        std::optional<char32_t> c = crosstab::nextCodePoint(text, position);
        if (c == U'\r') {
            position += text.substr(position, 1) == "\n" ? 1 : 0;
            c = U'\n';
        }
        crosstab::appendUtf8(shown, c && isShown(*c) ? *c : crosstab::ReplacementCharacter);
    }
    return shown;
}

std::string base64(std::string_view bytes) {
    constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += i + k <= bytes.size() ? Digits[group >> (18 - 6 * k) & 63U] : '=';
        }
    }
    return text;
}

} // namespace page
