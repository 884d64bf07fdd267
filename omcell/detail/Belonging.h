#ifndef OMTREE_OMCELL_DETAIL_BELONGING_H
#define OMTREE_OMCELL_DETAIL_BELONGING_H

#include "omcell/OmBlank.h"
#include "omcell/OmNumber.h"
#include "omcell/OmPartedText.h"
#include "omcell/OmStringCell.h"

#include <memory>
#include <typeinfo>
#include <utility>

/// What holders of a text ask before they replace it.
///
/// A holder that destroys the old text before it clones the new one must not be given the old text, or a part of it.
/// Two questions settle what it does:
///
///     held text and new one                        order             belongs to the held one
///     both of our own kinds, to the last part      clone first       fine
///     some text in them is a program's             the holder's own  a caller's fault, reported
///
/// A program sees the order only through texts of its own. Where there is none, cloning first costs nothing and leaves
/// the held text in place when there is no memory for the new one.
namespace om_detail {

struct Belonging {
    /// Whether the text is just of one of the library's kinds that have no parts.
    static bool IsPlain(OmCellText const& text) {
        std::type_info const* const kind = &typeid(text);
        return kind == &typeid(OmStringCell) || kind == &typeid(OmNumber) || kind == &typeid(OmBlank);
    }

    /// Whether the text is just of one of the library's kinds, and so are its parts at every depth. O(1) for a kind
    /// without parts, else O(parts).
    static bool IsOurs(OmCellText const& text) {
        if (IsPlain(text)) {
            return true;
        }
        OmPartedText const* const parted = dynamic_cast<OmPartedText const*>(&text);
        return parted != nullptr && parted->IsOurs();
    }

    /// Whether `text` is `held` or a part of it, at any depth. What a program's own kind is made of is not known here.
    /// O(parts of `held`).
    static bool BelongsTo(OmCellText const& text, OmCellText const& held) {
        if (&text == &held) {
            return true;
        }
        OmPartedText const* const parted = dynamic_cast<OmPartedText const*>(&held);
        return parted != nullptr && parted->HasPart(text);
    }

    /// Whether a clone of `text` is made before `held` goes, of which either may be null.
    static bool IsClonedFirst(OmCellText const* text, OmCellText const* held) {
        return text != nullptr && held != nullptr && IsOurs(*held) && IsOurs(*text);
    }
};

/// Where a holder that destroys first keeps a text. Such a holder cannot ask the text that it holds for a clone; so
/// whether that text is its own clone, which must not be destroyed for its own sake, is known from when it came.
struct HeldPlace {
    OmCellText*& text;
    bool& isItsOwnClone;

    /// Whether putting the text there changes nothing.
    bool Keeps(OmCellText const* next) const { return next != nullptr && next == text && isItsOwnClone; }

    /// Whether the next text may be put there.
    bool Takes(OmCellText const* next) const {
        return next == nullptr || text == nullptr || Keeps(next) || Belonging::IsClonedFirst(next, text) ||
               !Belonging::BelongsTo(*next, *text);
    }

    /// Destroys the text and puts a clone of the next one (nothing when null) there. The place is empty meanwhile. A
    /// program's texts may put others there while they go or are cloned: what stands there when the clone comes goes
    /// too, and what is put there after it stays. Gives the clone, or null when there is no new one or it does
    /// not stand there at the end.
    ///
    /// `ready(OmCellText&)` is called with the clone before it is put there, and may throw; the place is then as a
    /// failing clone leaves it.
    /// REQUIRES: `Takes(next)`.
    template <typename Ready>
    OmCellText* Put(OmCellText const* next, OmMemoryRegion* region, Ready&& ready) const {
        if (Keeps(next)) {
            return nullptr;
        }
        if (!Belonging::IsClonedFirst(next, text)) {
            delete std::exchange(text, nullptr);
        }
        if (next == nullptr) {
            return nullptr;
        }
        std::unique_ptr<OmCellText> made(next->Clone(region));
        ready(*made);
        OmCellText* const clone = made.release();
        OmCellText* const before = std::exchange(text, clone);
        isItsOwnClone = clone == next;
        if (before != clone) {
            delete before;
        }
        return text == clone ? clone : nullptr;
    }
};

} // namespace om_detail

#endif
