#include "omcell/OmStringCell.h"

#include "omcell/detail/Ordering.h"
#include "platform/icuTracker.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

/// Head of a wide text's block; the bytes of the runs follow it.
struct OmStringCell::WideRuns {
    std::size_t lengths[4];

    char* Bytes() { return reinterpret_cast<char*>(this + 1); }
};

OmStringCell::OmStringCell(std::string text, OmMemoryRegion* region, bool flag)
    : OmCellText(region), _shape{{0, 0, 0}, Form::Inline, flag} {
    static_assert(sizeof(OmStringCell) == 64, "a cache line");
    Assign({text, text, text, {}});
}

OmStringCell::OmStringCell(OmStringCell const& source, OmMemoryRegion* region, char* runs)
    : OmCellText(region), _shape(source._shape) {
    std::size_t const bytes = source.ShortLength();
    if (_shape.form == Form::Inline && bytes <= Room) {
        // As many as there is room for, whatever they hold: three loads and stores instead of a call. With what is said
        // below, a tenth of a dense store.
        std::memcpy(_runs, source._runs, Room);
    } else {
        // Not memcpy: told that there are 765 bytes at most, gcc makes it a repeated string instruction, which takes
        // longer to start than a call.
        std::copy_n(source.Runs(), bytes, runs);
    }
    _shape.form = Form::Inline;
    TakeOver(source);
}

OmStringCell::~OmStringCell() {
    if (_shape.form != Form::Inline) {
        OmMemoryRegion::Release(BlockApart());
    }
}

void OmStringCell::Accept(Visitor& visitor) { visitor.Visit(*this); }

short OmStringCell::OrderCode() const { return Order; }

std::string OmStringCell::AsString() const { return std::string(View(Given)); }

std::string OmStringCell::AsU8String() const {
    std::string converted;
    if (_tracker != nullptr && !_tracker->Unicode() && !_shape.flag && _tracker->ToU8(AsString(), converted)) {
        return converted;
    }
    return std::string(View(U8));
}

std::string OmStringCell::AsEngString() const { return std::string(View(English)); }

std::size_t OmStringCell::TextLength() const { return View(U8).size(); }

short OmStringCell::Compare(OmCellText const& other) const {
    OmStringCell const* const cell = dynamic_cast<OmStringCell const*>(&other);
    return cell != nullptr ? om_detail::OrderBytes(View(U8), cell->View(U8)) : om_detail::OrderKinds(*this, other);
}

OmCellText* OmStringCell::Clone(OmMemoryRegion* region) const {
    if (_shape.form == Form::Wide) {
        auto clone = std::unique_ptr<OmStringCell>(new (region) OmStringCell(std::string(), region, _shape.flag));
        clone->Assign({View(U8), View(Given), View(English), View(Alt)});
        clone->TakeOver(*this);
        return clone.release();
    }
    constexpr std::size_t HeadBytes = sizeof(OmStringCell) - sizeof(_runs);
    void* const block =
        OmMemoryRegion::OrDefault(region)->Allocate(std::max(HeadBytes + ShortLength(), sizeof(OmStringCell)));
    try {
        return ::new (block) OmStringCell(*this, region, static_cast<char*>(block) + HeadBytes);
    } catch (...) {
        OmMemoryRegion::Release(block);
        throw;
    }
}

// --- runs ------------------------------------------------------------------------------------------------------------

std::string_view OmStringCell::WideView(Run run) const {
    WideRuns& wide = *std::launder(reinterpret_cast<WideRuns*>(BlockApart()));
    char const* first = wide.Bytes();
    for (unsigned before = 0; before < run; ++before) {
        first += wide.lengths[before];
    }
    return {first, wide.lengths[run]};
}

void OmStringCell::Assign(std::string_view const (&runs)[4]) {
    std::size_t bytes = 0;
    bool isWide = !runs[Alt].empty();
    for (std::string_view const run : runs) {
        bytes += run.size();
        isWide = isWide || run.size() > LongestShortRun;
    }
    std::size_t const head = isWide ? sizeof(WideRuns) : 0;
    bool const isInline = !isWide && bytes <= Room;
    // The runs may be views of what stands here now.
    char together[Room];
    char* const block = isInline ? together : static_cast<char*>(Home()->Allocate(head + bytes));
    char* end = block + head;
    for (std::string_view const run : runs) {
        if (!run.empty()) {
            std::memcpy(end, run.data(), run.size());
            end += run.size();
        }
    }
    if (isWide) {
        ::new (block) WideRuns{{runs[U8].size(), runs[Given].size(), runs[English].size(), runs[Alt].size()}};
    } else {
        for (Run const run : {U8, Given, English}) {
            _shape.lengths[run] = static_cast<std::uint8_t>(runs[run].size());
        }
    }
    if (_shape.form != Form::Inline) {
        OmMemoryRegion::Release(BlockApart());
    }
    _shape.form = isInline ? Form::Inline : isWide ? Form::Wide : Form::Apart;
    if (isInline) {
        std::memcpy(_runs, together, bytes);
    } else {
        std::memcpy(_runs, &block, sizeof(block));
    }
}

void OmStringCell::Replace(Run run, std::string_view text) {
    std::string_view runs[4] = {View(U8), View(Given), View(English), View(Alt)};
    runs[run] = text;
    Assign(runs);
}

void OmStringCell::SetAltText(std::string text) { Replace(Alt, text); }

std::string OmStringCell::AltText() const { return std::string(View(Alt)); }

void OmStringCell::SetU8String(std::string_view text) {
    if (!_shape.flag) {
        Home()->BeforeEdit();
        Replace(U8, text);
    }
}

void OmStringCell::SetEngString(std::string_view text) {
    if (!_shape.flag) {
        Replace(English, text);
    }
}
