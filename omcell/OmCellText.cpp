#include "omcell/OmCellText.h"

#include <iostream>

namespace {

/// A metadata record with the link by which an arena finds it when it is swept without the text's destructor running.
struct AttachedMeta final : OmCellMetaData, OmMemoryRegion::Dependent {
    AttachedMeta(OmCellMetaData const& meta, std::uintptr_t& place, std::uintptr_t itsHome)
        : OmCellMetaData(meta), holder(place), home(itsHome) {
        drop = DropSwept;
    }

    static void DropSwept(OmMemoryRegion::Dependent& self) {
        AttachedMeta& record = static_cast<AttachedMeta&>(self);
        record.holder = record.home;
        delete &record;
    }

    std::uintptr_t& holder; ///< the text's word that holds this record's address
    std::uintptr_t home;    ///< what stood in that word before
};

AttachedMeta& RecordOf(OmCellText const& text) { return static_cast<AttachedMeta&>(*text.getMeta()); }

void Destroy(AttachedMeta& record) {
    OmMemoryRegion::Detach(record);
    delete &record;
}

std::string const& Shown(std::string const& entry) { return entry; }
std::string Shown(short entry) { return std::to_string(entry); }

template <typename List>
void AppendList(std::string& line, char const* title, List const& list) {
    char const* before = title;
    for (auto const& entry : list) {
        line += before;
        line += Shown(entry);
        before = ", ";
    }
}

} // namespace

OmCellText::OmCellText(OmCellText const& other) : OmRegionManaged() { setMeta(other.getMeta()); }

OmCellText::~OmCellText() {
    if (hasMeta()) {
        Destroy(RecordOf(*this));
    }
}

std::string OmCellText::AsFormattedString() const { return AsString(); }

double OmCellText::NumericValue() const { return 0.0; }

std::size_t OmCellText::TextLength() const { return 0; }

icuTracker* OmCellText::SetTracker(icuTracker* tracker) {
    _tracker = tracker;
    return _tracker;
}

void OmCellText::Print(unsigned int indent) const {
    // Written in one unformatted piece: what the program has set on the stream (base, width, locale) is not for this.
    std::string line(std::size_t{2} * indent, ' ');
    line += '"';
    line += AsString();
    line += '"';
    AppendList(line, ", Footnotes = ", Footnotes());
    AppendList(line, ", Markers = ", getMarkers());
    std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
}

bool OmCellText::IsBlank() const { return false; }

std::vector<short> OmCellText::Footnotes() const { return hasMeta() ? getMeta()->footnotes : std::vector<short>(); }

std::vector<std::string> OmCellText::getMarkers() const {
    return hasMeta() ? getMeta()->markers : std::vector<std::string>();
}

void OmCellText::setMeta(OmCellMetaData const* meta) {
    AttachedMeta* const old = hasMeta() ? &RecordOf(*this) : nullptr;
    if (meta == old) {
        return;
    }
    std::uintptr_t const home = old != nullptr ? old->home : _meta;
    if (meta != nullptr) {
        AttachedMeta* const record = new AttachedMeta(*meta, _meta, home);
        Home()->Attach(*record);
        _meta = reinterpret_cast<std::uintptr_t>(static_cast<OmCellMetaData*>(record));
    } else {
        _meta = home;
    }
    if (old != nullptr) {
        Destroy(*old);
    }
}

OmMemoryRegion* OmCellText::HomeOfRecord() const {
    std::uintptr_t const home = RecordOf(*this).home;
    return home != 0 ? reinterpret_cast<OmMemoryRegion*>(home - HomeTag) : OmMemoryRegion::DefaultHeap();
}

void OmCellText::TakeOverRecord(OmCellText const& source) {
    setMeta(source.getMeta());
    _tracker = Home() == source.Home() && !Home()->IsDefaultHeap() ? source._tracker : nullptr;
}

OmCellText::Visitor::~Visitor() = default;
