#ifndef OMTREE_OMCELL_OMPARTEDTEXT_H
#define OMTREE_OMCELL_OMPARTEDTEXT_H

#include "omcell/Export.h"
#include "omcell/OmCellText.h"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace om_detail {
struct Belonging;
}

/// Base of the kinds that are put together from other texts: OmComposite, OmVariable, OmValue and OmMessage.
///
/// A parted text owns its parts: clones in its own region, destroyed with it. Parts may be parted texts again, to any
/// depth, so everything that goes through the parts stands here, once, with a stack of its own in place of recursion:
/// the string forms, length, order, cloning, handing on a tracker, and destruction. Parts of other kinds are asked
/// through their virtual operations.
///
/// Cost. A string form costs O(parts, with theirs and so on, and their own bytes) plus O(bytes of the result): a part
/// is put together once, also where a message shows it several times. Everything else costs O(parts).
///
/// Parts of foreign kinds may call any operation of the texts that hold them while they are cloned, handed a tracker or
/// destroyed, except one that destroys a text that the part lies in. What such a call does stands. A clone that is
/// being made meanwhile gets the parts that were there at its beginning, without those that were taken away before
/// their turn. What they add to a text that is being destroyed is destroyed with it.
/// REQUIRES: a part that is asked something (its string, length, order, comparison) changes none of the texts that the
/// question goes through.
///
/// Null parts (a label that was not given) are allowed everywhere and stand for nothing.
///
/// The kinds are final: a program's own kind derives from OmCellText.
class OMCELL_API OmPartedText : public OmCellText {
public:
    /// Copies are made by `Clone`, so that each has parts of its own.
    OmPartedText(OmPartedText const&) = delete;
    OmPartedText& operator=(OmPartedText const&) = delete;
    ~OmPartedText() override;

    /// The parts' `AsString` texts, put together as the kind says.
    std::string AsString() const final;
    /// The parts' `AsU8String` texts, put together the same way.
    std::string AsU8String() const final;
    /// The parts' `AsEngString` texts, put together the same way.
    std::string AsEngString() const final;
    /// The parts' `AsFormattedString` texts, put together the same way.
    std::string AsFormattedString() const final;

    /// The sum of the parts' lengths, and of what text the kind has itself. Depends on the parts alone, not on how they
    /// are shown, so two texts that compare as equal have one length.
    std::size_t TextLength() const final;

    /// Two texts of one kind by the text that they have themselves, then by their parts in order, a missing part first,
    /// fewer parts before more; against another kind by order code.
    short Compare(OmCellText const& other) const final;

    /// A copy whose parts are clones in `region`.
    OmCellText* Clone(OmMemoryRegion* region) const final;

    /// Stores the tracker, and hands it to every part, first to last, each before its own parts.
    icuTracker* SetTracker(icuTracker* tracker) final;

protected:
    /// The string form that is asked for.
    enum class Form { Given, U8, English, Formatted };

    /// One part in its place. Texts of one kind are compared by key, then by text, for one part after the other.
    struct Part {
        OmCellText* const* slot;
        std::size_t key;
    };

    /// Receives what a text is made of, in the order in which it is read.
    class Pieces {
    public:
        /// A part, shown in the form that was asked for. It must not be null and is borrowed.
        void Add(OmCellText const& text) { _pieces.push_back({Piece::Part, &text, {}, 0}); }
        /// Bytes, which stay where they are until the text was put together.
        void Add(std::string_view bytes) { _pieces.push_back({Piece::Bytes, nullptr, bytes, 0}); }
        /// Keeps bytes until the text was put together, so that parts of them can be added.
        std::string_view Keep(std::string bytes) { return _kept.emplace_back(std::move(bytes)); }
        /// A part that the same text may show again. Gives what `AddAgain` takes.
        std::size_t AddFirst(OmCellText const& text);
        /// What `AddFirst` showed, once more, without asking the part again.
        void AddAgain(std::size_t shown) { _pieces.push_back({Piece::Again, nullptr, {}, shown}); }

    private:
        friend class OmPartedText;
        struct Piece {
            enum Kind : unsigned char {
                Part,
                Bytes,
                First, ///< a part whose run of the result is kept
                End,   ///< of that run
                Again
            };
            Kind kind;
            OmCellText const* text;
            std::string_view bytes;
            std::size_t shown;
        };
        /// Where the result holds what a part showed.
        struct Run {
            std::size_t first;
            std::size_t length;
        };
        std::vector<Piece> _pieces;
        std::deque<std::string> _kept;
        std::vector<Run> _runs;
    };

    /// Destroys parts: others at once; parted texts once the one that gave them up is through with the rest, and before
    /// that one itself. Takes no memory.
    class Bin {
    public:
        /// Takes the part out of its slot, which is null afterwards.
        void Take(OmCellText*& slot);

    private:
        friend class OmPartedText;
        OmPartedText* _next = nullptr;
    };

    explicit OmPartedText(OmMemoryRegion* home);

    /// For the destructor of each kind, where the text still is of its kind for the parts that go.
    void DestroyParts() noexcept;

    /// For each operation that adds parts, or may take some away or move their slots.
    void NoteEdit() { ++_edits; }
    /// Changes with every edit.
    std::size_t Edits() const { return _edits; }

    /// A copy in `region` of everything but the parts, whose slots are all there and null. Metadata and tracker are
    /// copied as for a clone. The caller owns it.
    virtual OmPartedText* Shell(OmMemoryRegion* region) const = 0;
    /// Appends the places of all parts, in order, the empty ones too. They stay valid until the text changes.
    virtual void ListParts(std::vector<Part>& parts) const = 0;
    /// Gives every part to the bin, those too that the destructors of others put in meanwhile.
    virtual void GiveUpParts(Bin& bin) = 0;
    /// Says what the text is made of in `form`.
    virtual void Expand(Form form, Pieces& pieces) const = 0;
    /// Bytes of text that the kind has itself. The base gives 0.
    virtual std::size_t OwnLength() const;
    /// Order of the text that the kind has itself; `sameKind` is of this text's class. The base gives 0.
    virtual short CompareOwn(OmPartedText const& sameKind) const;

private:
    friend struct om_detail::Belonging;
    struct Step;
    class Walk;

    /// Calls `see(OmCellText const&)` for every part at every depth, until it says no. Whether it never did.
    template <typename See>
    bool AllParts(See see) const;
    /// Whether neither the text nor a part at any depth is of a program's own kind.
    bool IsOurs() const;
    /// Whether the text is one of the parts, at any depth.
    bool HasPart(OmCellText const& text) const;

    std::string PutTogether(Form form) const;
    void AddSteps(OmPartedText const& sameKind, std::vector<Step>& steps) const;

    OmPartedText* _doomed = nullptr; ///< in a bin: the next one in it
    std::size_t _edits = 0;
};

#endif
