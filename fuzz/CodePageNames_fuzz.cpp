// Names of code pages: any bytes are either a known code page, whose converter works, or are refused; how a name is
// spelled makes no difference where it must not, and digits that belong to one number stand together.

#include "FuzzTarget.h"
#include "Require.h"
#include "platform/CodePageConverter.h"
#include "platform/icuTracker.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace {

using omfuzz::Require;

struct Deleter {
    void operator()(QUORMBConverter* converter) const { QUORMBConverterDelete_A(converter); }
};

std::unique_ptr<QUORMBConverter, Deleter> Open(std::string const& name) {
    return std::unique_ptr<QUORMBConverter, Deleter>(QUORMBConverterNew_A(name.c_str()));
}

bool IsKnown(std::string const& name) { return Open(name) != nullptr; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsSeparator(char c) { return c == '-' || c == '_'; }

/// Bytes of a text in the code page, which tell most code pages apart; empty where it is refused.
std::string Sample(std::string const& name) {
    std::string all;
    for (char const* const text : {"[a]", "\xC3\xA9", "\xD0\x96", "\xE2\x82\xAC", "\xE3\x81\x82", "\xE4\xB8\x80",
                                   "\xEA\xB0\x80", "\xC5\x82", "\xCE\xA9", "\xD7\x90", "\xE2\x94\x80"}) {
        std::string out = "-";
        QUORMBU8ToGeneric(Open(name).get(), out, text);
        all += out + "|";
    }
    return all;
}

template <typename Change>
std::string Changed(std::string name, Change const& change) {
    std::transform(name.begin(), name.end(), name.begin(), change);
    return name;
}

std::string Folded(std::string const& part) {
    std::string folded;
    for (char const c : part) {
        if (!IsSeparator(c)) {
            folded += IsLetter(c) ? static_cast<char>(c | 0x20) : c;
        }
    }
    return folded;
}

/// What stands behind a locale's dot and before its modifier. One code page has a dot in its own name.
std::string CodePagePart(std::string const& name) {
    std::string text = name;
    std::size_t const own = Folded(text).find("ansix3.41968");
    if (own == std::string::npos || own > 0) {
        text.erase(0, text.find('.') + 1);
        text.resize(std::min(text.find('@'), text.size()));
    }
    std::replace(text.begin(), text.end(), '.', '-');
    return text;
}

/// Between two digits a separator is only where a part of the standard, or its year, begins.
bool DigitsStandTogether(std::string const& part) {
    std::string const folded = Folded(part);
    for (std::string_view const compound : {"unicode11", "ansix3"}) {
        if (folded.compare(0, compound.size(), compound) == 0) {
            return true;
        }
    }
    std::string run;
    bool separated = false;
    for (char const c : part) {
        if (IsSeparator(c)) {
            separated = true;
        } else if (IsDigit(c)) {
            if (separated && !run.empty() && run != "8859" && run != "5601") {
                return false;
            }
            run = separated ? std::string(1, c) : run + c;
            separated = false;
        } else {
            run.clear();
            separated = false;
        }
    }
    return true;
}

void CheckKnown(std::string const& name) {
    std::unique_ptr<QUORMBConverter, Deleter> const converter = Open(name);
    std::string out;
    std::string again;
    Require(QUORMBU8ToGeneric(converter.get(), out, "abc 123") == 0 && !out.empty(), "a known code page converts");
    Require(QUORMBU8ToGeneric(converter.get(), again, "abc 123") == 0 && out == again, "and again alike");
    Require(QUORMBU8ToGeneric(converter.get(), out, "\xC3") != 0 && out == again, "cut UTF-8 is refused");
    icuTracker const tracker({false, name});
    Require(tracker.ToU8(again, out) && out == "abc 123", "and back");
    std::string const part = CodePagePart(name);
    Require(!part.empty(), "no code page without a name");
    Require(std::all_of(part.begin(), part.end(), [](char c) { return IsLetter(c) || IsDigit(c) || IsSeparator(c); }),
            "letters, digits, '-' and '_' alone");
    Require(DigitsStandTogether(part), "digits of one number stand together");
    Require(!IsKnown(name + "//TRANSLIT") && !IsKnown(name + " ") && !IsKnown(" " + name), "no suffix and no blank");
}

void CheckRefused(std::string const& name) {
    std::string out = "kept";
    Require(QUORMBU8ToGeneric(nullptr, out, "abc") != 0 && out == "kept", "no converter, no conversion");
    icuTracker const tracker({false, name});
    Require(!tracker.ToU8("abc", out) && !tracker.FromU8("abc", out) && out == "kept", "the same for a tracker");
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string name(reinterpret_cast<char const*>(data), size);
    name.resize(std::min(name.find('\0'), name.size()));
    bool const known = IsKnown(name);
    Require(IsKnown(name) == known, "the same answer twice");
    if (known) {
        CheckKnown(name);
    } else {
        CheckRefused(name);
    }
    std::string const sample = Sample(name);
    auto const alike = [&](std::string const& other) { return Sample(other) == sample; };
    Require(alike(Changed(name, [](char c) { return IsLetter(c) ? static_cast<char>(c & ~0x20) : c; })) &&
                alike(Changed(name, [](char c) { return IsLetter(c) ? static_cast<char>(c | 0x20) : c; })),
            "letter case makes no difference");
    Require(alike(Changed(name, [](char c) { return c == '-' ? '_' : c; })) &&
                alike(Changed(name, [](char c) { return c == '_' ? '-' : c; })),
            "'-' and '_' are the same");
    if (name.find('.') == std::string::npos && name.find('@') == std::string::npos) {
        Require(alike("de_DE." + name) && alike("de_DE." + name + "@euro"), "a locale stands for its code page");
    }
    return 0;
}
