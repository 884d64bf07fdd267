// Messages: patterns with slots, filled by numbers, strings and other messages, against an expander that reads a
// pattern byte by byte.

#include "FuzzTarget.h"
#include "Require.h"
#include "Script.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace {

using omfuzz::ByteDice;
using omfuzz::Require;
using omfuzz::RequireSame;

constexpr int DeepestNesting = 3;
constexpr std::size_t LongestText = 20000;

/// The forms in which a text can be asked for.
struct Forms {
    std::string given;
    std::string english;
    std::string formatted;
};

/// A slot at a place of the pattern: its number, as written without the zeros in front, and the place behind it.
struct Slot {
    std::string number;
    std::size_t end = 0;
};

Slot SlotAt(std::string const& pattern, std::size_t at) {
    std::size_t const first = at + 1;
    std::size_t end = first;
    while (end < pattern.size() && pattern[end] >= '0' && pattern[end] <= '9') {
        ++end;
    }
    if (end == first || end == pattern.size() || pattern[end] != '}') {
        return {};
    }
    std::size_t start = first;
    while (start + 1 < end && pattern[start] == '0') {
        ++start;
    }
    return {pattern.substr(start, end - start), end + 1};
}

using Fillers = std::map<std::string, Forms>;

std::string Expanded(std::string const& pattern, Fillers const& fillers, std::string Forms::*form) {
    std::string text;
    for (std::size_t at = 0; at < pattern.size();) {
        char const byte = pattern[at];
        bool const brace = byte == '{' || byte == '}';
        if (brace && at + 1 < pattern.size() && pattern[at + 1] == byte) {
            text += byte;
            at += 2;
            continue;
        }
        Slot const slot = byte == '{' ? SlotAt(pattern, at) : Slot();
        if (slot.end == 0) {
            text += byte;
            ++at;
            continue;
        }
        auto const filler = fillers.find(slot.number);
        text += filler != fillers.end() ? filler->second.*form : pattern.substr(at, slot.end - at);
        at = slot.end;
    }
    return text;
}

/// Words, braces, digits and slots, so that most patterns have something in them.
std::string AnyPattern(ByteDice& dice) {
    static char const* const pieces[] = {"{0}",  "{1}", "{2}", "{01}", "{", "}",     "{{",
                                         "}}",   "{}",  "7",   "0",    " ", "cases", "{18446744073709551616}",
                                         "{7}}", "{-1}"};
    std::string pattern;
    for (std::size_t k = dice.Below(8); k > 0; --k) {
        std::size_t const choice = dice.Below(std::size(pieces) + 2);
        pattern += choice < std::size(pieces) ? std::string(pieces[choice]) : dice.Text(2);
    }
    return pattern;
}

struct Made {
    std::unique_ptr<OmCellText> text;
    Forms forms;
};

Made AnyMessage(ByteDice& dice, int depth);

Made AnyFiller(ByteDice& dice, int depth) {
    std::size_t const choice = dice.Below(depth > 0 ? 4 : 2);
    if (choice == 0) {
        std::string const text = dice.Percent(50) ? "{0}" : dice.Text(4);
        return {std::make_unique<OmStringCell>(text), {text, text, text}};
    }
    if (choice == 1) {
        int const value = dice.Int(-9, 99);
        OmNumber::Format format;
        format.type = OmNumber::FixedFormat;
        format.decimals = 1;
        std::string const plain = std::to_string(value);
        return {std::make_unique<OmNumber>(value, format), {plain, plain, plain + ".0"}};
    }
    return AnyMessage(dice, depth - 1);
}

void Compare(OmCellText const& text, Forms const& forms) {
    RequireSame(text.AsString(), forms.given, "the given form");
    RequireSame(text.AsU8String(), forms.given, "the UTF-8 form");
    RequireSame(text.AsEngString(), forms.english, "the English form");
    RequireSame(text.AsFormattedString(), forms.formatted, "the formatted form");
}

/// Fills slots in any order, some of them anew, and some that the pattern does not have.
Made AnyMessage(ByteDice& dice, int depth) {
    std::string const pattern = AnyPattern(dice);
    std::string const english = dice.Percent(50) ? AnyPattern(dice) : "";
    auto message = std::make_unique<OmMessage>(pattern, english);
    Fillers fillers;
    for (std::size_t k = dice.Below(5); k > 0; --k) {
        static std::size_t const slots[] = {0, 1, 2, 7, 10, ~std::size_t(0)};
        std::size_t const slot = slots[dice.Below(std::size(slots))];
        Made const filler = AnyFiller(dice, depth);
        if (filler.forms.formatted.size() + filler.forms.english.size() > LongestText) {
            continue;
        }
        message->Fill(slot, *filler.text);
        fillers[std::to_string(slot)] = filler.forms;
        Require(message->Filler(slot) != nullptr && message->Filler(slot)->Compare(*filler.text) == 0, "what fills");
    }
    Require(message->Pattern() == pattern && message->EnglishPattern() == english, "the patterns are kept");
    Forms const forms{Expanded(pattern, fillers, &Forms::given),
                      Expanded(english.empty() ? pattern : english, fillers, &Forms::english),
                      Expanded(pattern, fillers, &Forms::formatted)};
    Compare(*message, forms);
    return {std::move(message), forms};
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    ByteDice dice(data, size);
    Made const first = AnyMessage(dice, DeepestNesting);
    std::unique_ptr<OmCellText> const copy(first.text->Clone(nullptr));
    Compare(*copy, first.forms);
    Require(copy->Compare(*first.text) == 0 && copy->TextLength() == first.text->TextLength(), "a copy is equal");
    Made const second = AnyMessage(dice, 1);
    Require((first.text->Compare(*second.text) > 0) == (second.text->Compare(*first.text) < 0), "one order both ways");
    Require(first.text->Compare(*second.text) != 0 || first.forms.given == second.forms.given,
            "equal messages read alike");
    return 0;
}
