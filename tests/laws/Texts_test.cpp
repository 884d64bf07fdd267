#include "omcell/OmBlank.h"
#include "omcell/OmComposite.h"
#include "omcell/OmMessage.h"
#include "omcell/OmNumber.h"
#include "omcell/OmStringCell.h"
#include "platform/icuTracker.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/Laws.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

std::unique_ptr<OmCellText> AnyText(int depth) {
    switch (*rc::gen::inRange(0, depth > 0 ? 5 : 3)) {
    case 0:
        return std::make_unique<OmStringCell>(*rc::gen::arbitrary<std::string>());
    case 1:
        return std::make_unique<OmNumber>(*rc::gen::arbitrary<double>());
    case 2:
        return std::make_unique<OmBlank>();
    case 3: {
        auto message = std::make_unique<OmMessage>(*rc::gen::element<std::string>("{0} of {1}", "{1}{0}{1}", "{0}"));
        for (std::size_t slot = *rc::gen::inRange<std::size_t>(0, 3); slot > 0; --slot) {
            message->Fill(slot - 1, *AnyText(depth - 1));
        }
        return message;
    }
    default: {
        auto composite = std::make_unique<OmComposite>();
        for (int k = *rc::gen::inRange(0, 4); k > 0; --k) {
            composite->Append(composite->Components().Root(), *AnyText(depth - 1));
        }
        return composite;
    }
    }
}

std::string Bytes(std::vector<char> const& bytes) { return {bytes.begin(), bytes.end()}; }

char const* AnyPage() {
    return *rc::gen::element("windows-1252", "windows-1251", "ISO-8859-15", "koi8-r", "ibm-850", "latin2", "cp037");
}

void AppendU8(std::string& text, char32_t point) {
    if (point < 0x80) {
        text += static_cast<char>(point);
        return;
    }
    int const more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    constexpr char32_t Lead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(Lead[more] | point >> 6 * more);
    for (int k = more - 1; k >= 0; --k) {
        text += static_cast<char>(0x80 | (point >> 6 * k & 0x3F));
    }
}

} // namespace

RC_GTEST_PROP(TextLaws, ACopyDumpsLikeItsSourceAndIsEqual, ()) {
    std::unique_ptr<OmCellText> const source = AnyText(3);
    std::unique_ptr<OmCellText> const copy(source->Clone(nullptr));
    RC_ASSERT(omtest::PrintedBy(*copy, 2) == omtest::PrintedBy(*source, 2));
    RC_ASSERT(copy->AsFormattedString() == source->AsFormattedString());
    RC_ASSERT(copy->TextLength() == source->TextLength());
    RC_ASSERT(copy->Compare(*source) == 0);
    RC_ASSERT(source->Compare(*copy) == 0);
}

RC_GTEST_PROP(TextLaws, TwoTextsCompareOneWayAndTheOtherWayRound, ()) {
    std::unique_ptr<OmCellText> const one = AnyText(2);
    std::unique_ptr<OmCellText> const other = AnyText(2);
    int const forth = one->Compare(*other);
    int const back = other->Compare(*one);
    RC_ASSERT((forth > 0) == (back < 0));
    RC_ASSERT((forth == 0) == (back == 0));
}

RC_GTEST_PROP(TextLaws, ANumbersPlainFormReadsBack, ()) {
    double const value = std::ldexp(*rc::gen::arbitrary<double>(), *rc::gen::inRange(-300, 300));
    RC_PRE(std::isfinite(value));
    RC_ASSERT(std::strtod(OmNumber(value).AsString().c_str(), nullptr) == value);
}

// Out of a code page of single bytes and back into it.
RC_GTEST_PROP(ConversionLaws, BytesComeBackAsTheyWere, ()) {
    icuTracker const page({false, AnyPage()});
    std::string const bytes = Bytes(*rc::gen::arbitrary<std::vector<char>>());
    std::string text;
    RC_PRE(page.ToU8(bytes, text));
    std::string back;
    RC_ASSERT(page.FromU8(text, back));
    RC_ASSERT(back == bytes);
}

RC_GTEST_PROP(ConversionLaws, TextsComeBackAsTheyWere, ()) {
    icuTracker const page({false, AnyPage()});
    std::string text;
    for (char32_t const point : *rc::gen::container<std::u32string>(rc::gen::weightedOneOf<char32_t>(
             {{3, rc::gen::inRange<char32_t>(0, 0x80)}, {1, rc::gen::inRange<char32_t>(0x80, 0x460)}}))) {
        AppendU8(text, point);
    }
    std::string bytes;
    RC_PRE(page.FromU8(text, bytes));
    std::string back;
    RC_ASSERT(page.ToU8(bytes, back));
    RC_ASSERT(back == text);
}

// A code page with a place for every character, but for some that are nobody's but their users'.
RC_GTEST_PROP(ConversionLaws, EveryTextGoesThroughAUnicodePageAndBack, ()) {
    icuTracker const page({false, *rc::gen::element("GB18030", "utf-8")});
    std::string text;
    for (char32_t const point : *rc::gen::container<std::u32string>(rc::gen::inRange<char32_t>(0, 0x110000))) {
        bool const surrogateOrPrivate = point >= 0xD800 && point < 0xF900;
        AppendU8(text, surrogateOrPrivate ? U'x' : point);
    }
    std::string bytes;
    RC_ASSERT(page.FromU8(text, bytes));
    std::string back;
    RC_ASSERT(page.ToU8(bytes, back));
    RC_ASSERT(back == text);
}
