#ifndef OMTREE_BACKEND_TABLES_OM_OMTEXTBLOCK_H
#define OMTREE_BACKEND_TABLES_OM_OMTEXTBLOCK_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmOutputPart.h"

#include <cstddef>
#include <list>
#include <string>

/// Lines of text; the engine's log is one. Lines are copied with the block, the title is shared like that of every
/// part.
class OMTREE_API OmTextBlock : public OmOutputPart {
public:
    /// No lines. The block is a log when the title's text is "Log" to the letter, then and for good.
    OmTextBlock(OmCellText const& title, std::string const& localeCodePage);
    /// The lines are copied first: when there is no memory for them nothing is shared, and nothing has changed.
    OmTextBlock(OmTextBlock const& other);
    OmTextBlock& operator=(OmTextBlock const& other);
    ~OmTextBlock() override;

    void Accept(Visitor& visitor) override;

    /// The lines in order; the program fills them. Valid as long as the block.
    std::list<std::string>& TextList() { return _textList; }
    std::list<std::string> const& TextList() const { return _textList; }

    /// Number of lines.
    std::size_t Size() const { return _textList.size(); }

    bool IsLog() const { return _isLog; }

    /// Code page of the lines.
    std::string const& LocaleCodePage() const { return _localeCodePage; }

private:
    OmTextBlock(OmTextBlock const& other, std::list<std::string>&& lines, std::string&& codePage) noexcept;

    std::list<std::string> _textList;
    bool _isLog;
    std::string _localeCodePage;
};

#endif
