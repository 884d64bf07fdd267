#ifndef OMTREE_OMCELL_OMMESSAGE_H
#define OMTREE_OMCELL_OMMESSAGE_H

#include "backend/tables/om/OmVector.h"
#include "omcell/Export.h"
#include "omcell/OmPartedText.h"
#include "omcell/RegionBytes.h"

#include <cstddef>
#include <string>
#include <vector>

/// A translated sentence with numbered slots that other texts fill.
///
///     pattern                        slots           reads
///     {0} of {1} cases               0: 12  1: 30    12 of 30 cases
///     von {1} Fällen {0}             0: 12  1: 30    von 30 Fällen 12
///     {0}, {0}!                      0: no           no, no!
///     {0} and {7}                    0: yes          yes and {7}
///     {{0}} is {0}                   0: x            {0} is x
///
/// How a pattern is read, from the left:
///  1. "{{" and "}}" stand for one brace.
///  2. A slot is '{', one or more decimal digits and '}'. Zeros in front do not count. It shows the text that fills it;
///     one that nothing fills stays as it is written.
///  3. Every other byte stands for itself, a brace that belongs to neither included.
///
/// Texts that fill a slot are not read for slots again. They are shown in the form that is asked for; `AsEngString`
/// puts them into the English pattern where there is one. `AsU8String` of a message whose tracker says that the data is
/// not Unicode converts the pattern from the tracker's code page, as a string cell does with its bytes; otherwise
/// patterns are UTF-8.
///
/// Cost. A text that fills a slot is put together once for each string that is asked for, however often the slot occurs
/// in the pattern; where it occurs again its bytes are copied. So the string forms cost O(bytes of the patterns and
/// parts) plus O(bytes of the result). The result may still be long: of messages inside each other that show their slot
/// twice, each doubles it.
///
/// Two messages are compared by pattern, by English pattern, and then by their filled slots in the order of the
/// numbers.
class OMCELL_API OmMessage final : public OmPartedText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 5;

    /// A message without an English pattern, in `region` (the default heap when null): `new (region) OmMessage(p,
    /// region)`.
    explicit OmMessage(std::string const& pattern, OmMemoryRegion* region = nullptr);
    /// With the pattern that `AsEngString` uses; an empty one is none.
    OmMessage(std::string const& pattern, std::string const& english, OmMemoryRegion* region = nullptr);

    ~OmMessage() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    std::string Pattern() const;
    /// Empty when there is none.
    std::string EnglishPattern() const;

    /// Fills the slot with a clone of `text`, in place of what filled it before; that is destroyed once the clone is
    /// made. The slot need not occur in the pattern. O(log filled) to find it, O(filled) for a new one.
    void Fill(std::size_t slot, OmCellText const& text);

    /// The text that fills the slot, or null. Valid until the slot is filled anew or the message ends.
    OmCellText const* Filler(std::size_t slot) const;

private:
    struct Slot {
        OmCellText* text;
        std::size_t number;
    };

    OmMessage(OmMessage const& source, OmMemoryRegion* region);

    OmPartedText* Shell(OmMemoryRegion* region) const override;
    void ListParts(std::vector<Part>& parts) const override;
    void GiveUpParts(Bin& bin) override;
    void Expand(Form form, Pieces& pieces) const override;
    std::size_t OwnLength() const override;
    short CompareOwn(OmPartedText const& sameKind) const override;

    /// Where the slot stands, or would.
    std::size_t PositionOf(std::size_t slot) const;
    /// Where the slot stands when it is filled, else the number of slots.
    std::size_t FilledPosition(std::size_t slot) const;

    om_detail::RegionBytes _pattern;
    om_detail::RegionBytes _english;
    OmVector<Slot> _slots; ///< ascending numbers
};

#endif
