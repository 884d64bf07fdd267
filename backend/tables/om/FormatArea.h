#ifndef OMTREE_BACKEND_TABLES_OM_FORMATAREA_H
#define OMTREE_BACKEND_TABLES_OM_FORMATAREA_H

#include "backend/tables/Export.h"

#include <cstdint>
#include <string>

/// Formatting of one area of a pivot table. Values are stored as given; nothing here interprets them. Made by a program
/// with `new` and handed to `OmPivotTable::setAreaFormat`, which takes ownership. Every getter and setter costs O(1),
/// or the copy of a string.
class OMTREE_API FormatArea {
public:
    /// The nine areas. Values beyond them can be stored.
    enum Area : std::int32_t {
        Title = 0,
        Caption = 1,
        Corner = 2,
        RowLabels = 3,
        ColumnLabels = 4,
        Data = 5,
        Footnotes = 6,
        Layers = 7,
        Table = 8
    };

    explicit FormatArea(Area area);
    ~FormatArea();

    FormatArea(FormatArea const&) = delete;
    FormatArea& operator=(FormatArea const&) = delete;

    /// The area given to the constructor.
    Area getArea() const;

    /// Font name; empty at first.
    std::string getFontName() const;
    void setFontName(std::string const& fontName);

    /// Font size in points; 0 at first.
    float getFontSize() const;
    void setFontSize(float fontSize);

    /// Font style as the writer numbers it; -1, no value, at first.
    int getFontStyle() const;
    void setFontStyle(int fontStyle);

    /// Margins, in points. 6 on the left, deliberately more than the 2 of the other sides.
    int getMarginLeft() const;
    void setMarginLeft(int marginLeft);
    int getMarginRight() const;
    void setMarginRight(int marginRight);
    int getMarginTop() const;
    void setMarginTop(int marginTop);
    int getMarginBottom() const;
    void setMarginBottom(int marginBottom);

    /// Whether text is underlined; false at first.
    bool getUnderline() const;
    void setUnderline(bool underline);

    /// Alignments as the writer numbers them; -1, no value, at first.
    int getHorizontalAlignment() const;
    void setHorizontalAlignment(int horizontalAlignment);
    int getVerticalAlignment() const;
    void setVerticalAlignment(int verticalAlignment);

    /// Colours as the writer spells them, stored unchanged and never parsed; empty at first.
    std::string getTextColor() const;
    void setTextColor(std::string const& textColor);
    std::string getBackgroundColor() const;
    void setBackgroundColor(std::string const& backgroundColor);

    /// Whether every other row takes the alternate colours; false at first.
    bool getUseAltRowColors() const;
    void setUseAltRowColors(bool useAltRowColors);
    std::string getAlternateTextColor() const;
    void setAlternateTextColor(std::string const& alternateTextColor);
    std::string getAlternateBackgroundColor() const;
    void setAlternateBackgroundColor(std::string const& alternateBackgroundColor);

private:
    struct Record;

    Record* _record;
};

#endif
