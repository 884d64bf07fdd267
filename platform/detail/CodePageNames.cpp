#include "platform/detail/CodePageNames.h"

#include <algorithm>
#include <array>

namespace om_detail {

namespace {

/// A code page that goes by a number, and the C library's name for it.
struct Numbered {
    std::string_view number;
    char const* name;
};

constexpr Numbered NumberedPages[] = {
    {"37", "CP037"},          {"037", "CP037"},        {"273", "CP273"},         {"278", "CP278"},
    {"280", "CP280"},         {"284", "CP284"},        {"285", "CP285"},         {"297", "CP297"},
    {"437", "CP437"},         {"500", "CP500"},        {"737", "CP737"},         {"775", "CP775"},
    {"850", "CP850"},         {"852", "CP852"},        {"855", "CP855"},         {"857", "CP857"},
    {"858", "CP858"},         {"860", "CP860"},        {"861", "CP861"},         {"862", "CP862"},
    {"863", "CP863"},         {"864", "CP864"},        {"865", "CP865"},         {"866", "CP866"},
    {"869", "CP869"},         {"870", "CP870"},        {"874", "CP874"},         {"932", "CP932"},
    {"936", "CP936"},         {"949", "CP949"},        {"950", "CP950"},         {"1026", "CP1026"},
    {"1047", "CP1047"},       {"1125", "CP1125"},      {"1140", "CP1140"},       {"1250", "CP1250"},
    {"1251", "CP1251"},       {"1252", "CP1252"},      {"1253", "CP1253"},       {"1254", "CP1254"},
    {"1255", "CP1255"},       {"1256", "CP1256"},      {"1257", "CP1257"},       {"1258", "CP1258"},
    {"1361", "JOHAB"},        {"10000", "MACINTOSH"},  {"20127", "US-ASCII"},    {"20866", "KOI8-R"},
    {"21866", "KOI8-U"},      {"28591", "ISO-8859-1"}, {"28592", "ISO-8859-2"},  {"28593", "ISO-8859-3"},
    {"28594", "ISO-8859-4"},  {"28595", "ISO-8859-5"}, {"28596", "ISO-8859-6"},  {"28597", "ISO-8859-7"},
    {"28598", "ISO-8859-8"},  {"28599", "ISO-8859-9"}, {"28603", "ISO-8859-13"}, {"28605", "ISO-8859-15"},
    {"50220", "ISO-2022-JP"}, {"51932", "EUC-JP"},     {"51949", "EUC-KR"},      {"54936", "GB18030"},
    {"65001", "UTF-8"}};

/// A code page that goes by a name, folded to lower-case letters and digits.
struct Named {
    std::string_view folded;
    char const* name;
};

constexpr Named NamedPages[] = {{"ascii", "US-ASCII"},
                                {"usascii", "US-ASCII"},
                                {"ansix341968", "US-ASCII"},
                                {"utf8", "UTF-8"},
                                {"unicode11utf8", "UTF-8"},
                                {"latin1", "ISO-8859-1"},
                                {"l1", "ISO-8859-1"},
                                {"latin2", "ISO-8859-2"},
                                {"l2", "ISO-8859-2"},
                                {"latin3", "ISO-8859-3"},
                                {"l3", "ISO-8859-3"},
                                {"latin4", "ISO-8859-4"},
                                {"l4", "ISO-8859-4"},
                                {"cyrillic", "ISO-8859-5"},
                                {"arabic", "ISO-8859-6"},
                                {"greek", "ISO-8859-7"},
                                {"hebrew", "ISO-8859-8"},
                                {"latin5", "ISO-8859-9"},
                                {"l5", "ISO-8859-9"},
                                {"latin6", "ISO-8859-10"},
                                {"l6", "ISO-8859-10"},
                                {"latin7", "ISO-8859-13"},
                                {"l7", "ISO-8859-13"},
                                {"latin8", "ISO-8859-14"},
                                {"l8", "ISO-8859-14"},
                                {"latin9", "ISO-8859-15"},
                                {"l9", "ISO-8859-15"},
                                {"latin10", "ISO-8859-16"},
                                {"l10", "ISO-8859-16"},
                                {"tis620", "TIS-620"},
                                {"thai", "TIS-620"},
                                {"koi8r", "KOI8-R"},
                                {"koi8u", "KOI8-U"},
                                {"koi8t", "KOI8-T"},
                                {"shiftjis", "SHIFT_JIS"},
                                {"sjis", "SHIFT_JIS"},
                                {"windows31j", "CP932"},
                                {"eucjp", "EUC-JP"},
                                {"ujis", "EUC-JP"},
                                {"euckr", "EUC-KR"},
                                {"ksc56011987", "EUC-KR"},
                                {"uhc", "CP949"},
                                {"johab", "JOHAB"},
                                {"gb2312", "GB2312"},
                                {"euccn", "GB2312"},
                                {"gbk", "GBK"},
                                {"gb18030", "GB18030"},
                                {"big5", "BIG5"},
                                {"big5hkscs", "BIG5-HKSCS"},
                                {"euctw", "EUC-TW"},
                                {"iso2022jp", "ISO-2022-JP"},
                                {"iso2022kr", "ISO-2022-KR"},
                                {"macintosh", "MACINTOSH"},
                                {"macroman", "MACINTOSH"},
                                {"maccyrillic", "MAC-CYRILLIC"},
                                {"maccentraleurope", "MAC-CENTRALEUROPE"},
                                {"tcvn", "TCVN"},
                                {"viscii", "VISCII"},
                                {"armscii8", "ARMSCII-8"},
                                {"georgianps", "GEORGIAN-PS"},
                                {"georgianacademy", "GEORGIAN-ACADEMY"},
                                {"pt154", "PT154"},
                                {"rk1048", "RK1048"},
                                {"hproman8", "HP-ROMAN8"}};

constexpr std::array<char const*, 17> IsoPages = {
    nullptr,      "ISO-8859-1",  "ISO-8859-2",  "ISO-8859-3",  "ISO-8859-4",  "ISO-8859-5",
    "ISO-8859-6", "ISO-8859-7",  "ISO-8859-8",  "ISO-8859-9",  "ISO-8859-10", "ISO-8859-11",
    nullptr,      "ISO-8859-13", "ISO-8859-14", "ISO-8859-15", "ISO-8859-16"};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsLetter(char c) { return Lower(c) >= 'a' && Lower(c) <= 'z'; }

/// Letters and digits in lower case; '-' and '_' fall away. Empty when any other byte is in the name.
std::string Fold(std::string_view name) {
    std::string folded;
    for (char const c : name) {
        if (IsLetter(c) || IsDigit(c)) {
            folded += Lower(c);
        } else if (c != '-' && c != '_') {
            return {};
        }
    }
    return folded;
}

/// What stands behind a locale's dot, without a modifier ("@euro"); the whole name when there is no dot.
std::string_view BehindLocale(std::string_view name) {
    std::size_t const dot = name.find('.');
    if (dot == std::string_view::npos) {
        return name;
    }
    std::string_view const locale = name.substr(0, dot);
    bool const isLocale = !locale.empty() && std::all_of(locale.begin(), locale.end(), [](char c) {
        return IsLetter(c) || IsDigit(c) || c == '_' || c == '-';
    });
    if (!isLocale) {
        return {};
    }
    std::string_view const behind = name.substr(dot + 1);
    return behind.substr(0, behind.find('@'));
}

std::string_view WithoutPrefix(std::string_view folded) {
    for (std::string_view const prefix : {"windows", "codepage", "win", "ibm", "cp", "ms"}) {
        if (folded.substr(0, prefix.size()) == prefix) {
            return folded.substr(prefix.size());
        }
    }
    return folded;
}

char const* IsoPage(std::string_view folded) {
    for (std::string_view const prefix : {"iso8859", "isoiec8859"}) {
        if (folded.substr(0, prefix.size()) == prefix) {
            std::string_view const part = folded.substr(prefix.size());
            bool const isNumber =
                !part.empty() && part.size() <= 2 && part[0] != '0' && std::all_of(part.begin(), part.end(), IsDigit);
            std::size_t const number = isNumber ? static_cast<std::size_t>(std::stoi(std::string(part))) : 0;
            return number < IsoPages.size() ? IsoPages[number] : nullptr;
        }
    }
    return nullptr;
}

} // namespace

char const* CodePageNamed(std::string_view name) {
    std::string const folded = Fold(BehindLocale(name));
    if (folded.empty()) {
        return nullptr;
    }
    for (Named const& page : NamedPages) {
        if (page.folded == folded) {
            return page.name;
        }
    }
    std::string_view const number = WithoutPrefix(folded);
    for (Numbered const& page : NumberedPages) {
        if (page.number == number) {
            return page.name;
        }
    }
    return IsoPage(folded);
}

} // namespace om_detail
