#ifndef OMTREE_OMCELL_OMVARIABLE_H
#define OMTREE_OMCELL_OMVARIABLE_H

#include "omcell/Export.h"
#include "omcell/OmLabelledText.h"

#include <string>

/// A variable, by its name and perhaps a label. Which of the two is shown: the table at OmLabelledText.
///
/// Two variables are compared by name, then by label, one without a label first.
class OMCELL_API OmVariable final : public OmLabelledText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 3;

    /// Name and label as string cells; an empty label is none. Everything lies in `region`, the default heap when null:
    /// `new (region) OmVariable("sex", "Sex of passenger", region)`.
    explicit OmVariable(std::string const& name, std::string const& label = std::string(),
                        OmMemoryRegion* region = nullptr, ModeType mode = LabelOrNameMode);
    /// Clones both texts into `region`. A null label is none; a text that happens to be empty is a label.
    explicit OmVariable(OmCellText const& name, OmCellText const* label = nullptr, OmMemoryRegion* region = nullptr,
                        ModeType mode = LabelOrNameMode);

    ~OmVariable() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    /// The name. Valid until the text's end.
    OmCellText const& Name() const { return Meant(); }

private:
    OmVariable(OmVariable const& source, OmMemoryRegion* region);

    OmPartedText* Shell(OmMemoryRegion* region) const override;
};

#endif
