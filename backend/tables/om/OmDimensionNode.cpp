#include "backend/tables/om/OmDimensionNode.h"

#include "backend/tables/om/detail/ChildIndex.h"
#include "backend/tables/om/detail/Dump.h"
#include "omcell/OmCellText.h"

#include <cstdint>
#include <iostream>
#include <string>
#include <utility>

using om_detail::ChildIndex;

OmDimensionNode::OmDimensionNode(OmMemoryRegion* region) : _region(OmMemoryRegion::OrDefault(region)) {}

OmDimensionNode::OmDimensionNode(OmCellText const& text, unsigned long long subscript, bool isGroup,
                                 OmMemoryRegion* region)
    : _text(text.Clone(region)), _subscript(subscript), _region(OmMemoryRegion::OrDefault(region)), _isGroup(isGroup) {}

// Delegates first, so that the destructor cleans up when the copy fails half way.
OmDimensionNode::OmDimensionNode(OmDimensionNode const& other, OmMemoryRegion* region) : OmDimensionNode(region) {
    if (other._text != nullptr) {
        _text = other._text->Clone(region);
    }
    _childIndex = ChildIndex::Make(ChildIndex::EntriesOf(other._childIndex), _region);
    CopyPlainFields(other);
}

OmDimensionNode::OmDimensionNode(OmDimensionNode const& other) : OmDimensionNode(other, other.Region()) {}

// What can fail comes first. The old label goes last: whatever its destructor does meets a node that is complete, and
// may move this one.
OmDimensionNode& OmDimensionNode::operator=(OmDimensionNode const& other) {
    if (this == &other) {
        return *this;
    }
    _region->BeforeEdit();
    other._region->BeforeEdit();
    ChildIndex* const index = ChildIndex::Make(ChildIndex::EntriesOf(other._childIndex), _region);
    ChildIndex::Destroy(std::exchange(_childIndex, index));
    CopyPlainFields(other);
    if (_text != other._text) {
        OmCellText* const old = std::exchange(_text, std::exchange(other._text, nullptr));
        delete old;
    }
    return *this;
}

OmDimensionNode::~OmDimensionNode() {
    ChildIndex::Destroy(_childIndex);
    delete _text;
}

void OmDimensionNode::CopyPlainFields(OmDimensionNode const& other) {
    _subscript = other._subscript;
    _sort = other._sort;
    _isGroup = other._isGroup;
    _hide = other._hide;
    _hideLabels = other._hideLabels;
}

void OmDimensionNode::Text(OmCellText const& text) {
    OmCellText* const clone = text.Clone(Region());
    if (clone != _text) {
        _region->BeforeEdit();
        OmCellText* const old = std::exchange(_text, clone);
        delete old;
    }
}

void OmDimensionNode::ChildrenRearranged() { ChildIndex::Settle(_childIndex); }

bool operator<(OmDimensionNode const& a, OmDimensionNode const& b) {
    if (a._isGroup != b._isGroup) {
        return a._isGroup;
    }
    if (a._text == nullptr || b._text == nullptr) {
        return a._text == nullptr && b._text != nullptr;
    }
    return a._text->Compare(*b._text) < 0;
}

bool operator==(OmDimensionNode const& a, OmDimensionNode const& b) {
    if (a._isGroup != b._isGroup || a._subscript != b._subscript) {
        return false;
    }
    if (a._text == nullptr || b._text == nullptr) {
        return a._text == b._text;
    }
    return OmCellText::Equal(*a._text, *b._text);
}

void OmDimensionNode::Print(unsigned int indent) const {
    ChildIndex::Entries const entries = ChildIndex::EntriesOf(_childIndex);
    auto const yesOrNo = [](bool flag) { return flag ? "yes" : "no"; };
    std::string line = "Subscript: " + std::to_string(static_cast<std::int32_t>(_subscript));
    line.append(", Group: ").append(yesOrNo(_isGroup));
    line.append(", hide: ").append(yesOrNo(_hide));
    line.append(", hideLabels: ").append(yesOrNo(_hideLabels));
    if (_sort == OmSort::Up) {
        line += ", Sort: up";
    } else if (_sort == OmSort::Down) {
        line += ", Sort: down";
    }
    char const* before = ", Children: ";
    for (int const entry : entries) {
        line.append(before).append(std::to_string(entry));
        before = ", ";
    }
    om_detail::WriteIndent(indent);
    om_detail::Write(line);
    if (_text != nullptr) {
        om_detail::Write(", Text: ");
        _text->Print(0);
    }
    om_detail::Write("\n");
    std::cout.flush();
}
