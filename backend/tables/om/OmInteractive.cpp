#include "backend/tables/om/OmInteractive.h"

#include "backend/tables/om/detail/Streams.h"
#include "omcell/OmStringCell.h"

#include <cstdint>
#include <memory>

struct OmInteractive::Record {
    std::string localeCodePage;
    om_detail::Attachments geoJsonFiles;
    std::string interactiveJson;
    std::string procedureName;
    std::string jsonPath;
    std::string options;
    std::int64_t interactiveId = 0;
};

OmInteractive::OmInteractive(OmCellText const& title, std::string const& localeCodePage, long long interactiveId)
    : OmOutputPart(title) {
    auto record = std::make_unique<Record>();
    record->localeCodePage = localeCodePage;
    record->interactiveId = interactiveId;
    if (!localeCodePage.empty()) {
        ReplaceTitle(OmStringCell(om_detail::TitleIn(title, localeCodePage), nullptr, false));
    }
    _record = record.release();
}

OmInteractive::~OmInteractive() { delete _record; }

void OmInteractive::Accept(Visitor& visitor) { visitor.Visit(*this); }

std::string const& OmInteractive::LocaleCodePage() const { return _record->localeCodePage; }

long long OmInteractive::getInteractiveId() const { return _record->interactiveId; }

void OmInteractive::addGeoJSONFileName(char const* bytes, unsigned int length) {
    _record->geoJsonFiles.AddName(bytes, length);
}

void OmInteractive::addGeoJSONFileContent(char const* bytes, unsigned int length) {
    _record->geoJsonFiles.AddContent(bytes, length);
}

std::vector<std::string> const& OmInteractive::getGeoJSONFileNames() const { return _record->geoJsonFiles.names; }

std::vector<std::string> const& OmInteractive::getGeoJSONContent() const { return _record->geoJsonFiles.contents; }

bool OmInteractive::hasGeoJSONFile() const { return !_record->geoJsonFiles.names.empty(); }

void OmInteractive::setInteractiveJSON(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->interactiveJson, bytes, length);
}

std::string const& OmInteractive::getInteractiveJSON() const { return _record->interactiveJson; }

void OmInteractive::setProcedureName(std::string const& procedureName) { _record->procedureName = procedureName; }

std::string const& OmInteractive::getProcedureName() const { return _record->procedureName; }

void OmInteractive::setJSONPath(std::string const& jsonPath) { _record->jsonPath = jsonPath; }

std::string const& OmInteractive::getJSONPath() const { return _record->jsonPath; }

void OmInteractive::setOptions(std::string const& options) { _record->options = options; }

std::string const& OmInteractive::getOptions() const { return _record->options; }
