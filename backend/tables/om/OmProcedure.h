#ifndef OMTREE_BACKEND_TABLES_OM_OMPROCEDURE_H
#define OMTREE_BACKEND_TABLES_OM_OMPROCEDURE_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmHeading.h"
#include "omcell/OmCellText.h"

#include <string>

/// The heading of one procedure's output: also carries the command that produced it, and how variables and values are
/// to be labelled below it.
class OMTREE_API OmProcedure : public OmHeading {
public:
    /// The command starts as the title's text, the translated command empty, the four display modes at 2 (label where
    /// there is one, else name or value).
    OmProcedure(OmCellText const& title, std::string const& languageCode, std::string const& localeCodePage,
                std::string const& localeName);
    /// The strings are copied first: when there is no memory for them nothing is shared, and nothing has changed.
    OmProcedure(OmProcedure const& other);
    OmProcedure& operator=(OmProcedure const& other);
    ~OmProcedure() override;

    void Accept(Visitor& visitor) override;

    std::string const& Command() const { return _texts.command; }
    void SetCommand(std::string const& command) { _texts.command = command; }

    std::string const& LanguageCode() const { return _texts.languageCode; }
    std::string const& LocaleCodePage() const { return _texts.localeCodePage; }
    std::string const& LocaleName() const { return _texts.localeName; }

    std::string const& TransCommand() const { return _texts.transCommand; }
    void SetTransCommand(std::string const& command) { _texts.transCommand = command; }

    OmCellText::ModeType OutlineVarDisplay() const { return _outlineVarDisplay; }
    void OutlineVarDisplay(OmCellText::ModeType mode) { _outlineVarDisplay = mode; }
    OmCellText::ModeType OutlineValueDisplay() const { return _outlineValueDisplay; }
    void OutlineValueDisplay(OmCellText::ModeType mode) { _outlineValueDisplay = mode; }
    OmCellText::ModeType TableVarDisplay() const { return _tableVarDisplay; }
    void TableVarDisplay(OmCellText::ModeType mode) { _tableVarDisplay = mode; }
    OmCellText::ModeType TableValueDisplay() const { return _tableValueDisplay; }
    void TableValueDisplay(OmCellText::ModeType mode) { _tableValueDisplay = mode; }

    /// Sets the command to the text's string, then destroys the title and puts a clone of the text in its place. Where
    /// both are of the library's own kinds, to the last part, the clone is made first, and the text may be the
    /// procedure's own title or a part of it. Otherwise it is neither (hardened check "title != held"; when its handler
    /// returns, command and title stay).
    void setOutlineText(OmCellText const& text);

private:
    struct Texts {
        std::string command;
        std::string languageCode;
        std::string localeCodePage;
        std::string localeName;
        std::string transCommand;
    };

    OmProcedure(OmProcedure const& other, Texts&& texts) noexcept;

    Texts _texts;
    OmCellText::ModeType _outlineVarDisplay = OmCellText::LabelOrNameMode;
    OmCellText::ModeType _outlineValueDisplay = OmCellText::LabelOrNameMode;
    OmCellText::ModeType _tableVarDisplay = OmCellText::LabelOrNameMode;
    OmCellText::ModeType _tableValueDisplay = OmCellText::LabelOrNameMode;
};

#endif
