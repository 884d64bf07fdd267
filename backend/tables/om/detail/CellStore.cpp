#include "backend/tables/om/detail/CellStore.h"

#include "omcell/OmMemoryRegion.h"

#include <algorithm>

using Store = OmPivotTable::CellStore;

void Store::AddLevel() {
    if (_largest.size() == _largest.capacity()) {
        _largest.reserve(2 * _largest.size() + 2);
    }
    if (_root != nullptr) {
        void* top = nullptr;
        PointerVector::Make(_region, top, false, 0);
        Place const place = PointerVector::Grow(_region, top, 0, _changes);
        *place.entry = _root;
        PointerVector::CountIn(place);
        _root = top;
        ++_changes;
    }
    _largest.push_back(_root != nullptr ? 0 : -1);
}

/// The rest of a look-up, from a node of any form on.
OmCellText* Store::FindBelow(PointerVector const& start, std::size_t level, int const* index) {
    PointerVector const* node = &start;
    for (std::size_t k = level; k > 0; --k) {
        if (node->SpansLeaves()) {
            return static_cast<OmCellText*>(node->Cell(Subscript(index, 1), Subscript(index, 0)));
        }
        node = static_cast<PointerVector const*>(node->Entry(Subscript(index, k)));
        if (node == nullptr) {
            return nullptr;
        }
    }
    return static_cast<OmCellText*>(node->Entry(Subscript(index, 0)));
}

Store::Place Store::GrowFromRoot(int const* index) {
    std::size_t const levels = Levels();
    if (_root == nullptr) {
        PointerVector::Make(_region, _root, levels == 2, Subscript(index, levels - 1));
    }
    Place place{};
    void** link = &_root;
    for (std::size_t k = levels - 1; place.entry == nullptr; --k) {
        if (static_cast<PointerVector*>(*link)->SpansLeaves()) {
            place = PointerVector::GrowCell(_region, *link, Subscript(index, 1), Subscript(index, 0), _changes);
            if (place.entry != nullptr) {
                break;
            }
        }
        place = PointerVector::Grow(_region, *link, Subscript(index, k), _changes);
        if (k == 0) {
            break;
        }
        if (*place.entry == nullptr) {
            PointerVector::Make(_region, *place.entry, k == 2, Subscript(index, k - 1));
            PointerVector::CountIn(place);
        }
        link = place.entry;
        place.entry = nullptr;
    }
    for (std::size_t k = 0; k < levels; ++k) {
        _largest[k] = std::max(_largest[k], index[k]);
    }
    return place;
}

/// The node below a position, or null. `link` is its link.
OmPivotTable::PointerVector* Store::Below(PointerVector& node, std::uint32_t position, void**& link) {
    link = node.EntryPlace(position);
    return link != nullptr ? static_cast<PointerVector*>(*link) : nullptr;
}

Store::Removal Store::Remove(int const* index, OmCellText*& cell) {
    void** link = &_root;
    PointerVector* node = Root();
    std::size_t k = Levels() - 1;
    for (; Subscript(index, k) < node->Length(); --k) {
        if (node->SpansLeaves()) {
            PointerVector::SettleIfWorn(_region, *link, _changes);
            node = static_cast<PointerVector*>(*link);
        }
        if (node->SpansLeaves()) {
            Place const place = node->PlaceOfCell(Subscript(index, 1), Subscript(index, 0));
            if (place.entry != nullptr && *place.entry != nullptr) {
                cell = CellAt(place);
                Put(place, nullptr);
                return Removal::Done;
            }
            std::uint32_t const length = node->LeafAt(Subscript(index, 1)).length;
            return length == 0 || Subscript(index, 0) < length ? Removal::Done : Removal::OutsideOfNode;
        }
        if (k == 0) {
            if (node->Entry(Subscript(index, 0)) != nullptr) {
                Place const place = PointerVector::Grow(_region, *link, Subscript(index, 0), _changes);
                cell = CellAt(place);
                Put(place, nullptr);
            }
            return Removal::Done;
        }
        node = Below(*node, Subscript(index, k), link);
        if (node == nullptr) {
            return Removal::Done;
        }
    }
    return Removal::OutsideOfNode;
}

void Store::DestroyEmptyNodes(int const* index) noexcept {
    // The lowest node on the way, and the place of the topmost one that goes when that is empty: all from there on down
    // have the next one on the way alone.
    PointerVector* node = Root();
    Place topmost{};
    std::size_t k = Levels() - 1;
    for (; k > 0 && !node->SpansLeaves(); --k) {
        void** link = nullptr;
        PointerVector* const below = Below(*node, Subscript(index, k), link);
        if (below == nullptr) {
            break;
        }
        if (topmost.entry == nullptr || !node->HasOneEntry()) {
            topmost = Place{node, link, nullptr};
        }
        node = below;
    }
    if (node->SpansLeaves() && node->RemoveLeafIfEmpty(Subscript(index, 1))) {
        ++_changes;
    }
    if (topmost.entry == nullptr || !node->AllNull()) {
        return;
    }
    ++_changes;
    PointerVector* doomed = static_cast<PointerVector*>(*topmost.entry);
    *topmost.entry = nullptr;
    PointerVector::CountOut(topmost);
    while (doomed != nullptr) {
        PointerVector* const next = doomed != node ? doomed->OnlyChild() : nullptr;
        PointerVector::Destroy(doomed);
        doomed = next;
    }
}
