#include "platform/detail/CodePageNames.h"

#include <algorithm>
#include <array>

namespace om_detail {

namespace {

/// A code page that goes by a number, and the C library's names for it.
struct Numbered {
    std::string_view number;
    char const* name;
    char const* ibm; ///< of the table that "ibm" in front of the number means; null when the C library has none
};

constexpr Numbered NumberedPages[] = {
    {"37", "CP037", "CP037"},          {"037", "CP037", "CP037"},         {"273", "CP273", "CP273"},
    {"278", "CP278", "CP278"},         {"280", "CP280", "CP280"},         {"284", "CP284", "CP284"},
    {"285", "CP285", "CP285"},         {"297", "CP297", "CP297"},         {"437", "CP437", "CP437"},
    {"500", "CP500", "CP500"},         {"737", "CP737", "CP737"},         {"775", "CP775", "CP775"},
    {"850", "CP850", "CP850"},         {"852", "CP852", "CP852"},         {"855", "CP855", "CP855"},
    {"857", "CP857", "CP857"},         {"858", "CP858", "CP858"},         {"860", "CP860", "CP860"},
    {"861", "CP861", "CP861"},         {"862", "CP862", "CP862"},         {"863", "CP863", "CP863"},
    {"864", "CP864", "CP864"},         {"865", "CP865", "CP865"},         {"866", "CP866", "CP866"},
    {"869", "CP869", "CP869"},         {"870", "CP870", "CP870"},         {"874", "CP874", "CP874"},
    {"932", "CP932", "IBM932"},        {"936", "CP936", nullptr},         {"949", "CP949", nullptr},
    {"950", "CP950", nullptr},         {"1026", "CP1026", "CP1026"},      {"1047", "CP1047", "CP1047"},
    {"1125", "CP1125", "CP1125"},      {"1140", "CP1140", "CP1140"},      {"1250", "CP1250", "CP1250"},
    {"1251", "CP1251", "CP1251"},      {"1252", "CP1252", "CP1252"},      {"1253", "CP1253", "CP1253"},
    {"1254", "CP1254", "CP1254"},      {"1255", "CP1255", "CP1255"},      {"1256", "CP1256", "CP1256"},
    {"1257", "CP1257", "CP1257"},      {"1258", "CP1258", "CP1258"},      {"1361", "JOHAB", nullptr},
    {"10000", "MACINTOSH", nullptr},   {"20127", "US-ASCII", nullptr},    {"20866", "KOI8-R", nullptr},
    {"21866", "KOI8-U", nullptr},      {"28591", "ISO-8859-1", nullptr},  {"28592", "ISO-8859-2", nullptr},
    {"28593", "ISO-8859-3", nullptr},  {"28594", "ISO-8859-4", nullptr},  {"28595", "ISO-8859-5", nullptr},
    {"28596", "ISO-8859-6", nullptr},  {"28597", "ISO-8859-7", nullptr},  {"28598", "ISO-8859-8", nullptr},
    {"28599", "ISO-8859-9", nullptr},  {"28603", "ISO-8859-13", nullptr}, {"28605", "ISO-8859-15", nullptr},
    {"50220", "ISO-2022-JP", nullptr}, {"51932", "EUC-JP", nullptr},      {"51949", "EUC-KR", nullptr},
    {"54936", "GB18030", nullptr},     {"65001", "UTF-8", nullptr}};

/// A code page that goes by a name, spelt as `Spells` wants it.
struct Named {
    std::string_view spelling;
    char const* name;
};

constexpr Named NamedPages[] = {{"ascii", "US-ASCII"},
                                {"us-ascii", "US-ASCII"},
                                {"ansi-x3.4-1968", "US-ASCII"},
                                {"utf-8", "UTF-8"},
                                {"unicode-1-1-utf-8", "UTF-8"},
                                {"latin-1", "ISO-8859-1"},
                                {"l1", "ISO-8859-1"},
                                {"latin-2", "ISO-8859-2"},
                                {"l2", "ISO-8859-2"},
                                {"latin-3", "ISO-8859-3"},
                                {"l3", "ISO-8859-3"},
                                {"latin-4", "ISO-8859-4"},
                                {"l4", "ISO-8859-4"},
                                {"cyrillic", "ISO-8859-5"},
                                {"arabic", "ISO-8859-6"},
                                {"greek", "ISO-8859-7"},
                                {"hebrew", "ISO-8859-8"},
                                {"latin-5", "ISO-8859-9"},
                                {"l5", "ISO-8859-9"},
                                {"latin-6", "ISO-8859-10"},
                                {"l6", "ISO-8859-10"},
                                {"latin-7", "ISO-8859-13"},
                                {"l7", "ISO-8859-13"},
                                {"latin-8", "ISO-8859-14"},
                                {"l8", "ISO-8859-14"},
                                {"latin-9", "ISO-8859-15"},
                                {"l9", "ISO-8859-15"},
                                {"latin-10", "ISO-8859-16"},
                                {"l10", "ISO-8859-16"},
                                {"tis-620", "TIS-620"},
                                {"thai", "TIS-620"},
                                {"koi-8-r", "KOI8-R"},
                                {"koi-8-u", "KOI8-U"},
                                {"koi-8-t", "KOI8-T"},
                                {"shift-jis", "SHIFT_JIS"},
                                {"s-jis", "SHIFT_JIS"},
                                {"windows-31j", "CP932"},
                                {"euc-jp", "EUC-JP"},
                                {"ujis", "EUC-JP"},
                                {"euc-kr", "EUC-KR"},
                                {"ks-c-5601-1987", "EUC-KR"},
                                {"uhc", "CP949"},
                                {"johab", "JOHAB"},
                                {"gb-2312", "GB2312"},
                                {"euc-cn", "GB2312"},
                                {"gbk", "GBK"},
                                {"gb-18030", "GB18030"},
                                {"big-5", "BIG5"},
                                {"big-5-hkscs", "BIG5-HKSCS"},
                                {"euc-tw", "EUC-TW"},
                                {"iso-2022-jp", "ISO-2022-JP"},
                                {"iso-2022-kr", "ISO-2022-KR"},
                                {"macintosh", "MACINTOSH"},
                                {"mac-roman", "MACINTOSH"},
                                {"mac-cyrillic", "MAC-CYRILLIC"},
                                {"mac-central-europe", "MAC-CENTRALEUROPE"},
                                {"tcvn", "TCVN"},
                                {"viscii", "VISCII"},
                                {"armscii-8", "ARMSCII-8"},
                                {"georgian-ps", "GEORGIAN-PS"},
                                {"georgian-academy", "GEORGIAN-ACADEMY"},
                                {"pt-154", "PT154"},
                                {"rk-1048", "RK1048"},
                                {"hp-roman-8", "HP-ROMAN8"}};

constexpr std::array<char const*, 17> IsoPages = {
    nullptr,      "ISO-8859-1",  "ISO-8859-2",  "ISO-8859-3",  "ISO-8859-4",  "ISO-8859-5",
    "ISO-8859-6", "ISO-8859-7",  "ISO-8859-8",  "ISO-8859-9",  "ISO-8859-10", "ISO-8859-11",
    nullptr,      "ISO-8859-13", "ISO-8859-14", "ISO-8859-15", "ISO-8859-16"};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsLetter(char c) { return Lower(c) >= 'a' && Lower(c) <= 'z'; }

/// Takes from the front of `name` what `spelling` spells: letters in either case, and for each '-' a '-', a '_' or
/// nothing. Whether it stands there; `name` is unchanged when not.
bool TakeSpelling(std::string_view& name, std::string_view spelling) {
    std::string_view rest = name;
    for (char const wanted : spelling) {
        bool const isThere =
            !rest.empty() && (wanted == '-' ? rest[0] == '-' || rest[0] == '_' : Lower(rest[0]) == wanted);
        if (!isThere && wanted != '-') {
            return false;
        }
        rest.remove_prefix(isThere ? 1 : 0);
    }
    name = rest;
    return true;
}

bool Spells(std::string_view name, std::string_view spelling) { return TakeSpelling(name, spelling) && name.empty(); }

bool IsWord(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return IsLetter(c) || IsDigit(c); });
}

/// Words with one '-' or '_' between them, the first of which starts with a letter: "C", "en_US", "zh-Hans-CN".
bool IsLocale(std::string_view name) {
    if (name.empty() || !IsLetter(name[0])) {
        return false;
    }
    for (;;) {
        std::size_t const end = std::min(name.find_first_of("-_"), name.size());
        if (!IsWord(name.substr(0, end))) {
            return false;
        }
        if (end == name.size()) {
            return true;
        }
        name.remove_prefix(end + 1);
    }
}

/// What stands behind a locale's dot, without a modifier ("@euro"); empty when the name is no locale with a dot.
std::string_view BehindLocale(std::string_view name) {
    std::size_t const dot = name.find('.');
    if (dot == std::string_view::npos || !IsLocale(name.substr(0, dot))) {
        return {};
    }
    std::string_view const behind = name.substr(dot + 1);
    std::size_t const at = behind.find('@');
    bool const isWhole = at == std::string_view::npos || IsWord(behind.substr(at + 1));
    return isWhole ? behind.substr(0, at) : std::string_view();
}

char const* NamedPage(std::string_view name) {
    for (Named const& page : NamedPages) {
        if (Spells(name, page.spelling)) {
            return page.name;
        }
    }
    return nullptr;
}

char const* NumberedPage(std::string_view name) {
    bool const isIbm = TakeSpelling(name, "ibm-");
    for (std::string_view const prefix : {"windows-", "win-", "code-page-", "cp-", "ms-"}) {
        if (!isIbm && TakeSpelling(name, prefix)) {
            break;
        }
    }
    for (Numbered const& page : NumberedPages) {
        if (page.number == name) {
            return isIbm ? page.ibm : page.name;
        }
    }
    return nullptr;
}

char const* IsoPage(std::string_view name) {
    if (!TakeSpelling(name, "iso-8859-") && !TakeSpelling(name, "iso-iec-8859-")) {
        return nullptr;
    }
    for (std::size_t part = 1; part < IsoPages.size(); ++part) {
        if (name == std::to_string(part)) {
            return IsoPages[part];
        }
    }
    return nullptr;
}

/// Of a name without a locale.
char const* PageNamed(std::string_view name) {
    char const* const page = NamedPage(name);
    if (page != nullptr) {
        return page;
    }
    char const* const numbered = NumberedPage(name);
    return numbered != nullptr ? numbered : IsoPage(name);
}

} // namespace

char const* CodePageNamed(std::string_view name) {
    char const* const page = PageNamed(name);
    return page != nullptr ? page : PageNamed(BehindLocale(name));
}

} // namespace om_detail
