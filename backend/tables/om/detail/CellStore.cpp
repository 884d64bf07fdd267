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
        *PointerVector::Grow(_region, top, 0, moved) = _root;
        static_cast<PointerVector*>(top)->CountIn();
        _root = top;
        ++_changes;
    }
    _extents.push_back(_root != nullptr ? 1 : 0);
}

Store::Place Store::Grow(int const* index) {
    std::size_t const levels = Levels();
    bool moved = false;
    // Raised before anything moves: a growth that fails half way has moved things, too.
    struct Counter {
        std::uint64_t& changes;
        bool const& moved;
        ~Counter() { changes += moved ? 1 : 0; }
    } const counter{_changes, moved};

    Place place{};
    if (_root == nullptr) {
        PointerVector::Make(_region, _root, levels == 2, Subscript(index, levels - 1));
    }
    void** link = &_root;
    for (std::size_t k = levels - 1; k > 0; --k) {
        PointerVector* node = static_cast<PointerVector*>(*link);
        if (node->IsScattered()) {
            place._entry = PointerVector::GrowCell(_region, *link, Subscript(index, 1), Subscript(index, 0), moved);
            if (place._entry != nullptr) {
                break;
            }
        }
        void** const entry = PointerVector::Grow(_region, *link, Subscript(index, k), moved);
        if (*entry == nullptr) {
            PointerVector::Make(_region, *entry, k == 2, Subscript(index, k - 1));
            static_cast<PointerVector*>(*link)->CountIn();
        }
        link = entry;
    }
    if (place._entry == nullptr) {
        place._entry = PointerVector::Grow(_region, *link, Subscript(index, 0), moved);
    }
    place._node = static_cast<PointerVector*>(*link);
    for (std::size_t k = 0; k < levels; ++k) {
        _extents[k] = std::max(_extents[k], Subscript(index, k) + 1);
    }
    return place;
}

/// Collects the links of the nodes from the root to the leaf, which is there afterwards: a scattered node on the way is
/// split. False when the way ends before.
bool Store::PathTo(int const* index, std::vector<void**>& links) {
    links.assign(1, &_root);
    for (std::size_t k = Levels() - 1; k > 0; --k) {
        if (static_cast<PointerVector*>(*links.back())->IsScattered()) {
            ++_changes;
            PointerVector::Split(_region, *links.back());
        }
        PointerVector* const node = static_cast<PointerVector*>(*links.back());
        if (node->Entry(Subscript(index, k)) == nullptr) {
            return false;
        }
        bool moved = false; // it does not: the entry is there
        links.push_back(PointerVector::Grow(_region, *links.back(), Subscript(index, k), moved));
    }
    return true;
}

Store::Removal Store::Remove(int const* index, OmCellText*& cell) {
    std::vector<void**> links;
    bool const whole = PathTo(index, links);
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (Subscript(index, Levels() - 1 - i) >= static_cast<PointerVector*>(*links[i])->Length()) {
            return Removal::OutsideOfNode;
        }
    }
    if (!whole) {
        return Removal::NothingThere;
    }
    PointerVector* const leaf = static_cast<PointerVector*>(*links.back());
    cell = static_cast<OmCellText*>(leaf->Entry(Subscript(index, 0)));
    if (cell != nullptr) {
        bool moved = false;
        *PointerVector::Grow(_region, *links.back(), Subscript(index, 0), moved) = nullptr;
        leaf->CountOut();
        --_present;
    }
    return Removal::Done;
}

void Store::DestroyEmptyNodes(int const* index) {
    std::vector<void**> links;
    PathTo(index, links);
    while (links.size() > 1 && static_cast<PointerVector*>(*links.back())->AllNull()) {
        ++_changes;
        PointerVector::Destroy(static_cast<PointerVector*>(*links.back()));
        *links.back() = nullptr;
        links.pop_back();
        static_cast<PointerVector*>(*links.back())->CountOut();
    }
}
