#ifndef OMTREE_OMCELL_OMBLANK_H
#define OMTREE_OMCELL_OMBLANK_H

#include "omcell/Export.h"
#include "omcell/OmCellText.h"

#include <string>

/// A deliberately empty cell: shown as nothing, yet stored and counted like any other. It has no text to convert, so
/// table visitors pass it by.
class OMCELL_API OmBlank : public OmCellText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 6;

    /// `region` is the region that the text is made for, the default heap when null: `new (region) OmBlank(region)`.
    explicit OmBlank(OmMemoryRegion* region = nullptr);

    ~OmBlank() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    /// The empty string, in every form.
    std::string AsString() const override;
    std::string AsU8String() const override;
    std::string AsEngString() const override;

    /// All blanks are equal; against another kind by order code.
    short Compare(OmCellText const& other) const override;

    OmCellText* Clone(OmMemoryRegion* region) const override;

    /// True.
    bool IsBlank() const override;

private:
    OmBlank(OmBlank const& source, OmMemoryRegion* region);
};

#endif
