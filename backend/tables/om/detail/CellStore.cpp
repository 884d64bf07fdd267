#include "backend/tables/om/detail/CellStore.h"

#include "omcell/OmMemoryRegion.h"

#include <limits>

using Store = OmPivotTable::CellStore;

void Store::AddLevel() {
    _extents.reserve(_extents.size() + 1);
    if (_root != nullptr) {
        void* top = nullptr;
        bool moved = false;
        PointerVector::Make(_region, top, false, 0);
        Place const place = PointerVector::Grow(_region, top, 0, moved);
        *place.entry = _root;
        PointerVector::CountIn(place);
        _root = top;
        ++_changes;
    }
    _extents.push_back(_root != nullptr ? 1 : 0);
}

/// The rest of a look-up, from a node of any form on.
OmCellText* Store::FindBelow(PointerVector const& start, std::size_t level, int const* index) const {
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
    bool moved = false;
    // Also when it fails half way.
    struct Counter {
        std::uint64_t& changes;
        bool const& moved;
        ~Counter() { changes += moved ? 1 : 0; }
    } const counter{_changes, moved};

    if (_root == nullptr) {
        PointerVector::Make(_region, _root, levels == 2, Subscript(index, levels - 1));
    }
    Place place{};
    void** link = &_root;
    for (std::size_t k = levels - 1; place.entry == nullptr; --k) {
        if (static_cast<PointerVector*>(*link)->SpansLeaves()) {
            place = PointerVector::GrowCell(_region, *link, Subscript(index, 1), Subscript(index, 0), moved);
            if (place.entry != nullptr) {
                break;
            }
        }
        place = PointerVector::Grow(_region, *link, Subscript(index, k), moved);
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
        if (Subscript(index, k) >= _extents[k]) {
            _extents[k] = Subscript(index, k) + 1;
        }
    }
    if (place.row != nullptr && !moved) {
        _lastAbove.assign(index + 2, index + levels);
        _lastLink = link;
        _lastChanges = _changes;
    }
    return place;
}

/// Steps to the node below a position, if there is one: `link` becomes its link then.
OmPivotTable::PointerVector* Store::Below(void**& link, std::uint32_t position) {
    if (static_cast<PointerVector*>(*link)->Entry(position) == nullptr) {
        return nullptr;
    }
    bool moved = false; // it does not: the entry is there
    link = PointerVector::Grow(_region, *link, position, moved).entry;
    return static_cast<PointerVector*>(*link);
}

Store::Removal Store::Remove(int const* index, OmCellText*& cell) {
    void** link = &_root;
    PointerVector* node = Root();
    Place place{};
    for (std::size_t k = Levels() - 1; place.entry == nullptr; --k) {
        if (Subscript(index, k) >= node->Length()) {
            return Removal::OutsideOfNode;
        }
        if (node->SpansLeaves()) {
            if (!node->IsBox()) {
                ++_changes;
                PointerVector::GiveUpKeys(_region, *link);
                node = static_cast<PointerVector*>(*link);
            }
            if (node->IsBox()) {
                PointerVector::Row const row = node->RowAt(Subscript(index, 1));
                if (row.length == 0) {
                    return Removal::NothingThere;
                }
                if (Subscript(index, 0) >= row.length) {
                    return Removal::OutsideOfNode;
                }
                place = node->PlaceInBox(Subscript(index, 1), Subscript(index, 0));
                break;
            }
        }
        if (k == 0) {
            bool moved = false;
            place = node->Entry(Subscript(index, 0)) != nullptr
                        ? PointerVector::Grow(_region, *link, Subscript(index, 0), moved)
                        : Place{};
            break;
        }
        node = Below(link, Subscript(index, k));
        if (node == nullptr) {
            return Removal::NothingThere;
        }
    }
    if (place.entry != nullptr) {
        cell = CellAt(place);
        Put(place, nullptr);
    }
    return Removal::Done;
}

void Store::DestroyEmptyNodes(int const* index) {
    std::vector<void**> links{&_root};
    for (std::size_t k = Levels() - 1; k > 0; --k) {
        PointerVector* const node = static_cast<PointerVector*>(*links.back());
        if (node->SpansLeaves()) {
            if (!node->IsBox()) {
                return; // made anew while the cell went
            }
            std::uint32_t const position = Subscript(index, 1);
            if (position < node->Length() && node->RowAt(position).length != 0 && node->RowAt(position).present == 0) {
                node->RemoveRow(position);
            }
            break;
        }
        void** link = links.back();
        if (Below(link, Subscript(index, k)) == nullptr) {
            break;
        }
        links.push_back(link);
    }
    while (links.size() > 1 && static_cast<PointerVector*>(*links.back())->AllNull()) {
        ++_changes;
        PointerVector::Destroy(static_cast<PointerVector*>(*links.back()));
        *links.back() = nullptr;
        links.pop_back();
        PointerVector* const above = static_cast<PointerVector*>(*links.back());
        PointerVector::CountOut(Place{above, nullptr, nullptr});
    }
}
