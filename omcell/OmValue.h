#ifndef OMTREE_OMCELL_OMVALUE_H
#define OMTREE_OMCELL_OMVALUE_H

#include "omcell/Export.h"
#include "omcell/OmLabelledText.h"

#include <string>

/// A data value, a number as a rule, and perhaps its label. Which of the two is shown: the table at OmLabelledText.
///
/// Two values are compared by the data values' texts, then by label, one without a label first.
class OMCELL_API OmValue final : public OmLabelledText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 4;

    /// A number and its label as a string cell; an empty label is none. Everything lies in `region`, the default heap
    /// when null: `new (region) OmValue(1.0, "Male", region)`.
    explicit OmValue(double value, std::string const& label = std::string(), OmMemoryRegion* region = nullptr,
                     ModeType mode = LabelOrNameMode);
    /// The same for a value that is a string.
    explicit OmValue(std::string const& value, std::string const& label = std::string(),
                     OmMemoryRegion* region = nullptr, ModeType mode = LabelOrNameMode);
    /// Clones both texts into `region`. A null label is none; a text that happens to be empty is a label.
    explicit OmValue(OmCellText const& value, OmCellText const* label = nullptr, OmMemoryRegion* region = nullptr,
                     ModeType mode = LabelOrNameMode);

    ~OmValue() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    /// The number that the data value stands for, whatever is shown.
    double NumericValue() const override;

    /// The data value. Valid until the text's end.
    OmCellText const& Value() const { return Meant(); }

private:
    OmValue(OmValue const& source, OmMemoryRegion* region);

    OmPartedText* Shell(OmMemoryRegion* region) const override;
};

#endif
