#include "omcell/OmMessage.h"

#include "omcell/detail/Ordering.h"
#include "platform/icuTracker.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

/// A slot at the start of some text.
struct SlotMark {
    std::size_t number;
    std::size_t length; ///< bytes, with its braces
};

// A number that no size_t holds can be no filled slot, so such a mark stays text.
std::optional<SlotMark> SlotAt(std::string_view text) {
    std::size_t number = 0;
    char const* const digits = text.data() + 1;
    char const* const end = text.data() + text.size();
    std::from_chars_result const read = std::from_chars(digits, end, number);
    if (text.front() != '{' || read.ec != std::errc() || read.ptr == end || *read.ptr != '}') {
        return std::nullopt;
    }
    return SlotMark{number, static_cast<std::size_t>(read.ptr - text.data()) + 1};
}

/// Bytes of the slot, as it is written, at the start of some text; 0 when there is none.
std::size_t WrittenSlot(std::string_view text) {
    std::size_t const end = text.find_first_not_of("0123456789", 1);
    bool const isSlot = text.front() == '{' && end != std::string_view::npos && end > 1 && text[end] == '}';
    return isSlot ? end + 1 : 0;
}

bool IsDoubledBrace(std::string_view text) { return text.size() > 1 && text[0] == text[1]; }

} // namespace

OmMessage::OmMessage(std::string const& pattern, OmMemoryRegion* region) : OmMessage(pattern, std::string(), region) {}

OmMessage::OmMessage(std::string const& pattern, std::string const& english, OmMemoryRegion* region)
    : OmPartedText(region), _pattern(pattern, region), _english(english, region), _slots(region) {}

OmMessage::OmMessage(OmMessage const& source, OmMemoryRegion* region)
    : OmPartedText(region), _pattern(source._pattern.View(), region), _english(source._english.View(), region),
      _slots(region) {
    TakeOver(source);
    _slots.reserve(source._slots.size());
    for (Slot const& slot : source._slots) {
        _slots.push_back({nullptr, slot.number});
    }
}

OmMessage::~OmMessage() { DestroyParts(); }

void OmMessage::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmMessage::OrderCode() const { return Order; }

std::string OmMessage::Pattern() const { return _pattern.String(); }

std::string OmMessage::EnglishPattern() const { return _english.String(); }

std::size_t OmMessage::PositionOf(std::size_t slot) const {
    Slot const* const place =
        std::lower_bound(_slots.begin(), _slots.end(), slot,
                         [](Slot const& entry, std::size_t number) { return entry.number < number; });
    return static_cast<std::size_t>(place - _slots.begin());
}

void OmMessage::Fill(std::size_t slot, OmCellText const& text) {
    std::unique_ptr<OmCellText> clone(text.Clone(Home()));
    std::size_t const position = PositionOf(slot);
    if (position == _slots.size() || _slots[position].number != slot) {
        _slots.insert(position, {nullptr, slot});
    }
    NoteEdit();
    OmCellText*& held = _slots[position].text;
    if (clone.get() == held) {
        static_cast<void>(clone.release());
        return;
    }
    std::unique_ptr<OmCellText> const before(held);
    held = clone.release();
}

std::size_t OmMessage::FilledPosition(std::size_t slot) const {
    std::size_t const position = PositionOf(slot);
    bool const isFilled =
        position < _slots.size() && _slots[position].number == slot && _slots[position].text != nullptr;
    return isFilled ? position : _slots.size();
}

OmCellText const* OmMessage::Filler(std::size_t slot) const {
    std::size_t const position = FilledPosition(slot);
    return position < _slots.size() ? _slots[position].text : nullptr;
}

OmPartedText* OmMessage::Shell(OmMemoryRegion* region) const { return new (region) OmMessage(*this, region); }

void OmMessage::ListParts(std::vector<Part>& parts) const {
    for (Slot const& slot : _slots) {
        parts.push_back({&slot.text, slot.number});
    }
}

void OmMessage::GiveUpParts(Bin& bin) {
    std::size_t edits = 0;
    do {
        edits = Edits();
        std::size_t k = 0;
        while (k < _slots.size()) { // which a part that goes may change
            bin.Take(_slots[k++].text);
        }
    } while (Edits() != edits);
}

void OmMessage::Expand(Form form, Pieces& pieces) const {
    std::string_view rest = form == Form::English && !_english.empty() ? _english.View() : _pattern.View();
    std::string converted;
    // Converted before it is read for slots: in some code pages a brace is the second byte of another character.
    if (form == Form::U8 && _tracker != nullptr && !_tracker->Unicode() &&
        _tracker->ToU8(_pattern.String(), converted)) {
        rest = pieces.Keep(std::move(converted));
    }
    constexpr std::size_t NotYet = static_cast<std::size_t>(-1);
    std::vector<std::size_t> shown(_slots.size(), NotYet);
    auto const show = [&](std::size_t position) {
        if (shown[position] == NotYet) {
            shown[position] = pieces.AddFirst(*_slots[position].text);
        } else {
            pieces.AddAgain(shown[position]);
        }
    };
    while (!rest.empty()) {
        std::size_t const plain = std::min(rest.find_first_of("{}"), rest.size());
        if (plain > 0) {
            pieces.Add(rest.substr(0, plain));
            rest.remove_prefix(plain);
            continue;
        }
        std::size_t length = IsDoubledBrace(rest) ? 2 : 1;
        std::optional<SlotMark> const mark = SlotAt(rest);
        std::size_t const position = mark ? FilledPosition(mark->number) : _slots.size();
        if (position < _slots.size()) {
            show(position);
            length = mark->length;
        } else {
            std::size_t const unfilled = WrittenSlot(rest);
            length = std::max(length, unfilled);
            pieces.Add(rest.substr(0, std::max<std::size_t>(unfilled, 1)));
        }
        rest.remove_prefix(length);
    }
}

std::size_t OmMessage::OwnLength() const { return _pattern.size(); }

short OmMessage::CompareOwn(OmPartedText const& sameKind) const {
    OmMessage const& other = static_cast<OmMessage const&>(sameKind);
    short const order = om_detail::OrderBytes(_pattern.View(), other._pattern.View());
    return order != 0 ? order : om_detail::OrderBytes(_english.View(), other._english.View());
}
