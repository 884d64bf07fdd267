#ifndef OMTREE_OMCELL_OMLABELLEDTEXT_H
#define OMTREE_OMCELL_OMLABELLEDTEXT_H

#include "omcell/Export.h"
#include "omcell/OmPartedText.h"

#include <string>
#include <vector>

/// What variables and values have in common: a text that says what is meant (name or value), perhaps a label, and the
/// mode that says which of the two is shown.
///
///     mode                       with label "Sex of passenger"      without
///     0  NameMode                sex                                sex
///     1  LabelMode               Sex of passenger                   (empty)
///     2  LabelOrNameMode         Sex of passenger                   sex
///     3  BothMode                sex Sex of passenger               sex
///     beyond                     as 2                               as 2
///
/// With both, one blank stands between them. All string forms obey the mode; name, value and label are shown in the
/// form that is asked for.
///
/// The mode takes no part in `TextLength` and `Compare`: the same variable in two modes is one variable.
class OMCELL_API OmLabelledText : public OmPartedText {
public:
    ~OmLabelledText() override;

    /// The label, or null. Valid until the text's end.
    OmCellText const* Label() const { return _label; }

    ModeType Mode() const { return _mode; }
    void Mode(ModeType mode) { _mode = mode; }

protected:
    /// Clones both texts into `region`; `label` may be null.
    OmLabelledText(OmCellText const& meant, OmCellText const* label, OmMemoryRegion* region, ModeType mode);
    /// Clones the first text into `region` and makes the label a string cell there; an empty label is none.
    OmLabelledText(OmCellText const& meant, std::string const& label, OmMemoryRegion* region, ModeType mode);
    /// The shell of a copy.
    OmLabelledText(OmLabelledText const& source, OmMemoryRegion* region);

    /// Name or value. Never null in a finished text. REQUIRES: the text is not being destroyed.
    OmCellText const& Meant() const { return *_meant; }
    /// The same; null while the text is being destroyed, and the name or value is gone.
    OmCellText const* MeantOrNull() const { return _meant; }

    /// For the destructors of the kinds.
    void GiveUpParts(Bin& bin) final;

private:
    OmLabelledText(OmMemoryRegion* region, ModeType mode);

    void TakeClones(OmCellText const& meant, OmCellText const* label);
    void ListParts(std::vector<Part>& parts) const final;
    void Expand(Form form, Pieces& pieces) const final;

    OmCellText* _meant = nullptr;
    OmCellText* _label = nullptr;
    ModeType _mode;
};

#endif
