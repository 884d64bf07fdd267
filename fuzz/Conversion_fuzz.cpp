// Conversion of any bytes into and out of some code pages, against one call of the C library over the whole text; and
// there and back.

#include "FuzzTarget.h"
#include "Require.h"
#include "Script.h"
#include "platform/CodePageConverter.h"
#include "platform/icuTracker.h"

#include <cstdint>
#include <iconv.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using omfuzz::Require;

struct Page {
    char const* spelled;
    char const* library; ///< the C library's name
    bool exact;          ///< no two characters in one place, and every byte string is a text's only form
    bool holdsAll;       ///< has a place for every character
    bool switches;       ///< between tables within a text, with three control characters that it cannot hold then
};

std::vector<Page> const Pages{{"windows-1252", "CP1252", true, false, false},
                              {"1251", "CP1251", true, false, false},
                              {"ISO-8859-15", "ISO-8859-15", true, false, false},
                              {"koi8-r", "KOI8-R", true, false, false},
                              {"ibm-850", "CP850", true, false, false},
                              {"cp037", "CP037", true, false, false},
                              {"latin1", "ISO-8859-1", true, false, false},
                              {"ascii", "US-ASCII", true, false, false},
                              {"utf8", "UTF-8", true, true, false},
                              {"GB18030", "GB18030", false, true, false},
                              {"windows-1258", "CP1258", false, false, false},
                              {"tcvn", "TCVN", false, false, false},
                              {"Shift_JIS", "SHIFT_JIS", false, false, false},
                              {"windows-932", "CP932", false, false, false},
                              {"EUC_KR", "EUC-KR", false, false, false},
                              {"euc-jp", "EUC-JP", false, false, false},
                              {"gbk", "GBK", false, false, false},
                              {"big5-hkscs", "BIG5-HKSCS", false, false, false},
                              {"euc-tw", "EUC-TW", false, false, false},
                              {"iso-2022-jp", "ISO-2022-JP", false, false, true},
                              {"iso-2022-kr", "ISO-2022-KR", false, false, true},
                              {"windows-949", "CP949", false, false, false}};

/// The code points of well-formed UTF-8; nothing for other bytes. Decodes first and then asks whether the number was
/// written in the shortest way.
std::optional<std::vector<std::uint32_t>> CodePoints(std::string const& text) {
    std::vector<std::uint32_t> points;
    for (std::size_t at = 0; at < text.size();) {
        auto const byte = static_cast<unsigned char>(text[at++]);
        int more = 0;
        while (more < 6 && (byte << more & 0x80) != 0) {
            ++more;
        }
        if (more == 1 || more > 4) {
            return std::nullopt;
        }
        std::uint32_t point = more == 0 ? byte : byte & (0x7FU >> more);
        for (int k = 1; k < more; ++k, ++at) {
            if (at == text.size() || (static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80) {
                return std::nullopt;
            }
            point = point << 6 | (static_cast<unsigned char>(text[at]) & 0x3FU);
        }
        std::uint32_t const least = more < 2 ? 0 : more == 2 ? 0x80 : more == 3 ? 0x800 : 0x10000;
        if (point < least || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) {
            return std::nullopt;
        }
        points.push_back(point);
    }
    return points;
}

/// One call over the whole text with room for any result, and one to end it.
std::optional<std::string> WithLibrary(char const* to, char const* from, std::string text) {
    iconv_t const handle = iconv_open(to, from);
    Require(handle != reinterpret_cast<iconv_t>(-1), "the C library knows the code page");
    std::string out(text.size() * 12 + 64, '\0');
    char* source = text.data();
    std::size_t left = text.size();
    char* target = out.data();
    std::size_t room = out.size();
    bool const good =
        iconv(handle, &source, &left, &target, &room) == 0 && iconv(handle, nullptr, nullptr, &target, &room) == 0;
    iconv_close(handle);
    out.resize(out.size() - room);
    return good ? std::optional<std::string>(out) : std::nullopt;
}

bool HasTag(std::vector<std::uint32_t> const& points) {
    for (std::uint32_t const point : points) {
        if (point >= 0xE0000 && point <= 0xE007F) {
            return true;
        }
    }
    return false;
}

/// Nothing where the conversion must fail.
std::optional<std::string> Expected(Page const& page, std::string const& text) {
    std::optional<std::vector<std::uint32_t>> const points = CodePoints(text);
    bool const switching = page.switches && text.find_first_of("\x0E\x0F\x1B") != std::string::npos;
    if (!points || switching || (!page.holdsAll && HasTag(*points))) {
        return std::nullopt;
    }
    return WithLibrary(page.library, "UTF-8", text);
}

void CheckInto(Page const& page, std::string const& text, icuTracker const& tracker) {
    std::unique_ptr<QUORMBConverter, void (*)(QUORMBConverter*)> const converter(QUORMBConverterNew_A(page.spelled),
                                                                                 QUORMBConverterDelete_A);
    Require(converter != nullptr, "the code page is known");
    std::optional<std::string> const expected = Expected(page, text);
    // The second time, what the first left behind in the converter must not show.
    for (int time = 0; time < 2; ++time) {
        std::string out = "kept";
        Require((QUORMBU8ToGeneric(converter.get(), out, text) == 0) == expected.has_value(), "what can be converted");
        Require(out == expected.value_or("kept"), "into the code page");
        std::string tracked = "kept";
        Require(tracker.FromU8(text, tracked) == expected.has_value() && tracked == out, "the tracker agrees");
    }
    std::string same = text;
    Require((QUORMBU8ToGeneric(converter.get(), same, same) == 0) == expected.has_value() &&
                same == expected.value_or(text),
            "in place");
    if (expected && page.exact) {
        std::string back;
        Require(tracker.ToU8(*expected, back) && back == text, "there and back");
    }
}

void CheckOutOf(Page const& page, std::string const& bytes, icuTracker const& tracker) {
    std::optional<std::string> const expected =
        page.holdsAll && page.exact ? Expected(page, bytes) : WithLibrary("UTF-8", page.library, bytes);
    for (int time = 0; time < 2; ++time) {
        std::string out = "kept";
        Require(tracker.ToU8(bytes, out) == expected.has_value(), "what can be converted back");
        Require(out == expected.value_or("kept"), "out of the code page");
    }
    if (expected) {
        Require(CodePoints(*expected).has_value(), "what comes out is UTF-8");
    }
    if (expected && page.exact) {
        std::string back;
        Require(tracker.FromU8(*expected, back) && back == bytes, "back and there");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    Page const& page = Pages[data[0] % Pages.size()];
    // Often enough a text that does not fit the converter's buffer in one piece.
    std::string const piece(reinterpret_cast<char const*>(data) + 1, size - 1);
    std::string text = piece;
    for (int times = data[0] / 128 * 40; times > 0 && text.size() < 2000; --times) {
        text += piece;
    }
    icuTracker const tracker({false, page.spelled});
    CheckInto(page, text, tracker);
    CheckOutOf(page, text, tracker);
    CheckInto(page, text, tracker);
    return 0;
}
