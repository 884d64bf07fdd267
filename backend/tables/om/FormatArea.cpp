#include "backend/tables/om/FormatArea.h"

struct FormatArea::Record {
    explicit Record(Area itsArea) : area(itsArea) {}

    Area area;
    std::string fontName;
    float fontSize = 0.0F;
    std::int32_t fontStyle = -1;
    std::int32_t marginLeft = 6;
    std::int32_t marginRight = 2;
    std::int32_t marginTop = 2;
    std::int32_t marginBottom = 2;
    bool underline = false;
    std::int32_t horizontalAlignment = -1;
    std::int32_t verticalAlignment = -1;
    std::string textColor;
    std::string backgroundColor;
    bool useAltRowColors = false;
    std::string alternateTextColor;
    std::string alternateBackgroundColor;
};

FormatArea::FormatArea(Area area) : _record(new Record(area)) {}

FormatArea::~FormatArea() { delete _record; }

FormatArea::Area FormatArea::getArea() const { return _record->area; }

std::string FormatArea::getFontName() const { return _record->fontName; }

void FormatArea::setFontName(std::string const& fontName) { _record->fontName = fontName; }

float FormatArea::getFontSize() const { return _record->fontSize; }

void FormatArea::setFontSize(float fontSize) { _record->fontSize = fontSize; }

int FormatArea::getFontStyle() const { return _record->fontStyle; }

void FormatArea::setFontStyle(int fontStyle) { _record->fontStyle = fontStyle; }

int FormatArea::getMarginLeft() const { return _record->marginLeft; }

void FormatArea::setMarginLeft(int marginLeft) { _record->marginLeft = marginLeft; }

int FormatArea::getMarginRight() const { return _record->marginRight; }

void FormatArea::setMarginRight(int marginRight) { _record->marginRight = marginRight; }

int FormatArea::getMarginTop() const { return _record->marginTop; }

void FormatArea::setMarginTop(int marginTop) { _record->marginTop = marginTop; }

int FormatArea::getMarginBottom() const { return _record->marginBottom; }

void FormatArea::setMarginBottom(int marginBottom) { _record->marginBottom = marginBottom; }

bool FormatArea::getUnderline() const { return _record->underline; }

void FormatArea::setUnderline(bool underline) { _record->underline = underline; }

int FormatArea::getHorizontalAlignment() const { return _record->horizontalAlignment; }

void FormatArea::setHorizontalAlignment(int horizontalAlignment) { _record->horizontalAlignment = horizontalAlignment; }

int FormatArea::getVerticalAlignment() const { return _record->verticalAlignment; }

void FormatArea::setVerticalAlignment(int verticalAlignment) { _record->verticalAlignment = verticalAlignment; }

std::string FormatArea::getTextColor() const { return _record->textColor; }

void FormatArea::setTextColor(std::string const& textColor) { _record->textColor = textColor; }

std::string FormatArea::getBackgroundColor() const { return _record->backgroundColor; }

void FormatArea::setBackgroundColor(std::string const& backgroundColor) { _record->backgroundColor = backgroundColor; }

bool FormatArea::getUseAltRowColors() const { return _record->useAltRowColors; }

void FormatArea::setUseAltRowColors(bool useAltRowColors) { _record->useAltRowColors = useAltRowColors; }

std::string FormatArea::getAlternateTextColor() const { return _record->alternateTextColor; }

void FormatArea::setAlternateTextColor(std::string const& alternateTextColor) {
    _record->alternateTextColor = alternateTextColor;
}

std::string FormatArea::getAlternateBackgroundColor() const { return _record->alternateBackgroundColor; }

void FormatArea::setAlternateBackgroundColor(std::string const& alternateBackgroundColor) {
    _record->alternateBackgroundColor = alternateBackgroundColor;
}
