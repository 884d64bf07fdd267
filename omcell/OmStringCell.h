#ifndef OMTREE_OMCELL_OMSTRINGCELL_H
#define OMTREE_OMCELL_OMSTRINGCELL_H

#include "omcell/Export.h"
#include "omcell/OmCellText.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace om_detail {
struct PlainText;
}

/// The plain text: titles, category labels, cells that hold words.
///
/// Three copies of the text's bytes are kept, behind each other:
///
///     given     `AsString`: the bytes handed to the constructor, in the program's own encoding
///     UTF-8     `AsU8String`; also the copy that `Compare` and `TextLength` go by
///     English   `AsEngString`: the text before translation
///
/// All three start as the given bytes. A program that knows better sets the second and the third; the flag says that
/// there is nothing to know, because the text is the same in every language and code page.
///
/// Short copies, up to 36 bytes together, lie in the object. So do those of a clone, as long as none is longer than 255
/// bytes and there is no alternative text: such a clone is one block, which is longer than the object if need be. Each
/// of a million clones of up to twelve bytes is one cache line.
///
///     +--------+-----------+---------+------------------------+-------+-------+---------+
///     | vtable | meta/home | tracker | 3 lengths, form, flag  | UTF-8 | given | English |               form: Inline
///     +--------+-----------+---------+------------------------+-------+-------+---------+
///      8        8           8         4 x 8 bits               36, or more in a clone
///
/// Other texts of up to 255 bytes a copy, made by the constructor or changed later, keep the copies in a block apart:
///
///     +-- base part, 24 bytes --+------------------------+---------+      +-------+-------+---------+
///     |          ...            | 3 lengths, form, flag  | address | ---> | UTF-8 | given | English |    form: Apart
///     +-------------------------+------------------------+---------+      +-------+-------+---------+
///
/// and so does a text with an alternative text, or with a longer copy, whose lengths stand there too:
///
///     +-- base part, 24 bytes --+-----------------------+---------+      +-----------+-------+-------+---------+-----+
///     |          ...            | (unused), form, flag  | address | ---> | 4 lengths | UTF-8 | given | English | alt |
///     +-------------------------+-----------------------+---------+      +-----------+-------+-------+---------+-----+
///                                                                         64 bits each                   form: Wide
///
/// What one block saves against an object with three blocks of its own: of 209 bytes of region that each of many clones
/// of ten bytes takes, 64 are left.
///
/// Whatever bytes do not lie in the object lie in its home, so an arena's sweep leaves nothing of a clone behind.
class OMCELL_API OmStringCell : public OmCellText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 1;

    /// A text that keeps three copies of the bytes, in itself where they are short, else in `region`, the default heap
    /// when null. `flag`: see `Flag`. The text itself stands wherever the caller puts it: `new (region)
    /// OmStringCell(text, region, false)`. REQUIRES: an arena lives at least until the text's destructor has run.
    explicit OmStringCell(std::string text, OmMemoryRegion* region = nullptr, bool flag = false);

    OmStringCell(OmStringCell const&) = delete;
    ~OmStringCell() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    /// The bytes as given.
    std::string AsString() const override;
    /// The UTF-8 copy. A text whose tracker says that the data is not Unicode converts its given bytes from the
    /// tracker's code page instead, unless the flag is set, the locale names no known code page, or the bytes are
    /// ill-formed in it.
    std::string AsU8String() const override;
    /// The English copy.
    std::string AsEngString() const override;

    /// Number of bytes of the UTF-8 copy.
    std::size_t TextLength() const override;

    /// Two string cells by the unsigned bytes of their UTF-8 copies, a prefix before the longer text; against another
    /// kind by order code.
    short Compare(OmCellText const& other) const override;

    /// A copy with all three byte copies, the flag, the alternative text and the metadata.
    OmCellText* Clone(OmMemoryRegion* region) const override;

    /// Replaces the alternative text, which a reader program speaks instead of the text. Empty at first.
    virtual void SetAltText(std::string text);

    /// The alternative text. Takes no part in `Compare`.
    std::string AltText() const;

    /// Whether the text is the same in every language and code page, and so is never converted.
    bool Flag() const { return _shape.flag; }

    /// Replaces the UTF-8 copy. Ignored by a text whose flag is set: its copies are all the same.
    void SetU8String(std::string_view text);

    /// Replaces the English copy. Ignored by a text whose flag is set.
    void SetEngString(std::string_view text);

private:
    friend struct om_detail::PlainText;

    /// In the order in which they lie in memory: what labels are looked up by stands next to the head.
    enum Run : unsigned { U8, Given, English, Alt };
    enum class Form : std::uint8_t { Inline, Apart, Wide };
    struct WideRuns;

    static constexpr std::size_t LongestShortRun = 0xff;
    static constexpr std::size_t Room = 36;

    /// For a clone in a block that has room for the source's runs from `runs` on, the place of the last member.
    /// REQUIRES: the source is not wide.
    OmStringCell(OmStringCell const& source, OmMemoryRegion* region, char* runs);

    std::string_view View(Run run) const {
        if (_shape.form == Form::Wide) {
            return WideView(run);
        }
        std::uint8_t const* const lengths = _shape.lengths;
        std::size_t const before = run == U8 ? 0 : run == Given ? lengths[U8] : lengths[U8] + lengths[Given];
        return run == Alt ? std::string_view() : std::string_view(Runs() + before, lengths[run]);
    }
    std::string_view WideView(Run run) const;

    /// The bytes of the three runs of a text that is not wide.
    char const* Runs() const { return _shape.form == Form::Inline ? _runs : BlockApart(); }
    std::size_t ShortLength() const {
        return std::size_t{0} + _shape.lengths[Given] + _shape.lengths[U8] + _shape.lengths[English];
    }

    /// Of a text that is not inline.
    char* BlockApart() const {
        char* block = nullptr;
        std::memcpy(&block, _runs, sizeof(block));
        return block;
    }

    /// Takes over copies of four runs, some of which may be views of the present ones. Throws std::bad_alloc when there
    /// is no memory; nothing has changed then.
    void Assign(std::string_view const (&runs)[4]);
    void Replace(Run run, std::string_view text);

    struct Shape {
        std::uint8_t lengths[3]; ///< of a text that is not wide
        Form form : 7;
        bool flag : 1;
    };

    Shape _shape;
    /// The runs, or the address of the block apart. In a clone the runs may go on behind the object's end, as far as
    /// its block does.
    char _runs[Room];
};

#endif
