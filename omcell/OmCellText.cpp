#include "omcell/OmCellText.h"

#include <iostream>

namespace {

/// A metadata record with the link by which an arena finds it when it is swept without the text's destructor running.
struct AttachedMeta final : OmCellMetaData, OmMemoryRegion::Dependent {
    AttachedMeta(OmCellMetaData const& meta, OmCellMetaData*& place) : OmCellMetaData(meta), holder(place) {
        drop = DropSwept;
    }

    static void DropSwept(OmMemoryRegion::Dependent& self) {
        AttachedMeta& record = static_cast<AttachedMeta&>(self);
        record.holder = nullptr;
        delete &record;
    }

    OmCellMetaData*& holder; ///< the text's pointer to this record
};

void Destroy(OmCellMetaData* meta) {
    AttachedMeta* const record = static_cast<AttachedMeta*>(meta);
    OmMemoryRegion::Detach(*record);
    delete record;
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

OmCellText::OmCellText(OmCellText const& other) : OmRegionManaged() { setMeta(other._meta); }

OmCellText::~OmCellText() {
    if (_meta != nullptr) {
        Destroy(_meta);
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

std::vector<short> OmCellText::Footnotes() const { return _meta != nullptr ? _meta->footnotes : std::vector<short>(); }

std::vector<std::string> OmCellText::getMarkers() const {
    return _meta != nullptr ? _meta->markers : std::vector<std::string>();
}

void OmCellText::setMeta(OmCellMetaData const* meta) {
    if (meta == _meta) {
        return;
    }
    AttachedMeta* record = nullptr;
    if (meta != nullptr) {
        record = new AttachedMeta(*meta, _meta);
        Home()->Attach(*record);
    }
    if (_meta != nullptr) {
        Destroy(_meta);
    }
    _meta = record;
}

void OmCellText::TakeOver(OmCellText const& source) {
    setMeta(source._meta);
    _tracker = Home() == source.Home() && !Home()->IsDefaultHeap() ? source._tracker : nullptr;
}

OmCellText::Visitor::~Visitor() = default;
