#ifndef OMTREE_OMCELL_OMSTRINGCELL_H
#define OMTREE_OMCELL_OMSTRINGCELL_H

#include "omcell/Export.h"
#include "omcell/OmCellText.h"
#include "omcell/RegionBytes.h"

#include <cstddef>
#include <string>
#include <string_view>

/// The plain text: titles, category labels, cells that hold words.
///
/// Three copies of the text's bytes are kept, each a block of just that many bytes in the text's region:
///
///     +-----------+-------+-------+---------+----------+------+
///     | base part | given | UTF-8 | English | alt text | flag |
///     +-----------+-------+-------+---------+----------+------+
///
///     given     `AsString`: the bytes handed to the constructor, in the program's own encoding
///     UTF-8     `AsU8String`; also the copy that `Compare` and `TextLength` go by
///     English   `AsEngString`: the text before translation
///
/// All three start as the given bytes. A program that knows better sets the second and the third; the flag says that
/// there is nothing to know, because the text is the same in every language and code page.
///
/// Everything lies in the region, so an arena's sweep leaves nothing of a string cell behind.
class OMCELL_API OmStringCell : public OmCellText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 1;

    /// A text whose bytes are copied three times into `region`, the default heap when null. `flag`: see `Flag`. The
    /// text itself stands wherever the caller puts it: `new (region) OmStringCell(text, region, false)`. REQUIRES: an
    /// arena lives at least until the text's destructor has run.
    explicit OmStringCell(std::string text, OmMemoryRegion* region = nullptr, bool flag = false);

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
    bool Flag() const { return _flag; }

    /// Replaces the UTF-8 copy. Ignored by a text whose flag is set: its copies are all the same.
    void SetU8String(std::string_view text);

    /// Replaces the English copy. Ignored by a text whose flag is set.
    void SetEngString(std::string_view text);

private:
    OmStringCell(OmStringCell const& source, OmMemoryRegion* region);

    om_detail::RegionBytes _given;
    om_detail::RegionBytes _u8;
    om_detail::RegionBytes _english;
    om_detail::RegionBytes _altText;
    bool _flag;
};

#endif
