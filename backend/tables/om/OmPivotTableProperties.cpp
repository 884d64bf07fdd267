// The display properties of OmPivotTable: stored as given, never interpreted.

#include "backend/tables/om/OmPivotTable.h"
#include "backend/tables/om/detail/PivotTableData.h"

#include <cstdint>

bool OmPivotTable::Show() const { return _my->show; }

void OmPivotTable::Show(bool value) { _my->show = value; }

bool OmPivotTable::RotateRowLabels() const { return _my->rotateRowLabels; }

void OmPivotTable::RotateRowLabels(bool value) { _my->rotateRowLabels = value; }

bool OmPivotTable::RotateColumnLabels() const { return _my->rotateColumnLabels; }

void OmPivotTable::RotateColumnLabels(bool value) { _my->rotateColumnLabels = value; }

int OmPivotTable::OptionNumber() const { return _my->optionNumber; }

void OmPivotTable::OptionNumber(int value) { _my->optionNumber = value; }

long long OmPivotTable::TableId() const { return _my->tableId; }

void OmPivotTable::TableId(long long value) { _my->tableId = value; }

std::string const& OmPivotTable::TableLocale() const { return _my->tableLocale; }

void OmPivotTable::TableLocale(std::string const& value) { _my->tableLocale = value; }

int OmPivotTable::MinColumnWidth() const { return _my->minColumnWidth; }

void OmPivotTable::MinColumnWidth(int value) { _my->minColumnWidth = value; }

int OmPivotTable::MaxColumnWidth() const { return _my->maxColumnWidth; }

void OmPivotTable::MaxColumnWidth(int value) { _my->maxColumnWidth = value; }

int OmPivotTable::MinRowWidth() const { return _my->minRowWidth; }

void OmPivotTable::MinRowWidth(int value) { _my->minRowWidth = value; }

int OmPivotTable::MaxRowWidth() const { return _my->maxRowWidth; }

void OmPivotTable::MaxRowWidth(int value) { _my->maxRowWidth = value; }

int OmPivotTable::getLayerLoc() const { return _my->layerLocation; }

void OmPivotTable::setLayerLoc(int value) { _my->layerLocation = value; }

std::string const& OmPivotTable::getBorderInfo() const { return _my->borderInfo; }

void OmPivotTable::setBorderInfo(std::string const& value) { _my->borderInfo = value; }

std::string const& OmPivotTable::getTableLookInfo() const { return _my->tableLookInfo; }

void OmPivotTable::setTableLookInfo(std::string const& value) { _my->tableLookInfo = value; }

std::string const& OmPivotTable::getTablePropertiesInfo() const { return _my->tablePropertiesInfo; }

void OmPivotTable::setTablePropertiesInfo(std::string const& value) { _my->tablePropertiesInfo = value; }

std::vector<unsigned int> const& OmPivotTable::getTableCustomWidths() const { return _my->customWidths; }

void OmPivotTable::setTableCustomWidths(std::vector<unsigned int> const& value) { _my->customWidths = value; }

std::vector<unsigned int> const& OmPivotTable::getTableCustomHeights() const { return _my->customHeights; }

void OmPivotTable::setTableCustomHeights(std::vector<unsigned int> const& value) { _my->customHeights = value; }

bool OmPivotTable::showCaption() const { return _my->showCaption; }

void OmPivotTable::showCaption(bool value) { _my->showCaption = value; }

int OmPivotTable::getLang() const { return _my->lang; }

void OmPivotTable::setLang(int value) { _my->lang = value; }

int OmPivotTable::getVariableMode() const { return _my->variableMode; }

void OmPivotTable::setVariableMode(int value) { _my->variableMode = value; }

int OmPivotTable::getValueMode() const { return _my->valueMode; }

void OmPivotTable::setValueMode(int value) { _my->valueMode = value; }

bool OmPivotTable::getImputed() const { return _my->imputed; }

void OmPivotTable::setImputed(bool value) { _my->imputed = value; }

long OmPivotTable::getStartColor() const { return _my->startColor; }

void OmPivotTable::setStartColor(long value) { _my->startColor = static_cast<std::int32_t>(value); }

long OmPivotTable::getEndColor() const { return _my->endColor; }

void OmPivotTable::setEndColor(long value) { _my->endColor = static_cast<std::int32_t>(value); }

bool OmPivotTable::getLabelsOnly() const { return _my->labelsOnly; }

void OmPivotTable::setLabelsOnly(bool value) { _my->labelsOnly = value; }

bool OmPivotTable::fastTable() const { return _my->fastTable; }

void OmPivotTable::setFastTable(bool fast) { _my->fastTable = fast; }

bool OmPivotTable::backendOwns() const { return _my->backendOwns; }

void OmPivotTable::setBackendOwns(bool owns) { _my->backendOwns = owns; }

std::string const& OmPivotTable::getMiscProperties() const { return _my->miscProperties; }

void OmPivotTable::addMiscProperty(std::string const& property) {
    std::string added = _my->miscProperties.empty() ? "" : ",";
    added += property; // may be the stored string itself
    _my->miscProperties += added;
}

std::map<std::uint64_t, std::uint16_t>& OmPivotTable::getEmptyCellStyles() const { return _my->emptyCellStyles; }

std::map<std::uint64_t, std::uint16_t>& OmPivotTable::emptyCellStyles() { return _my->emptyCellStyles; }

std::vector<OmCellProperties>& OmPivotTable::getCellStyles() const { return _my->cellStyles; }

std::vector<OmCellProperties>& OmPivotTable::cellStyles() { return _my->cellStyles; }
