#include "backend/tables/om/OmChart.h"

#include "backend/tables/om/OMSException.h"
#include "backend/tables/om/detail/Streams.h"
#include "omcell/OmStringCell.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

struct OmChart::Record {
    std::string xmlDescription;
    std::string binaryData;
    std::string image;
    std::string vizJson;
    std::string localeCodePage;
    std::string mapInfo;
    om_detail::Attachments csvFiles;
    om_detail::Attachments geoJsonFiles;
    std::string vizJsonTemplate;
    std::string options;
    EDITABLE editable = EDITABLE_UNKNOWN;
    EDITOR editor = EDITOR_DEFAULT;
    ChartXMLContentSubType imageSubType = ChartContentDefault;
    std::int64_t chartId = 0;
    std::uint32_t xmlUncompressedLength = 0;
};

OmChart::OmChart(OmCellText const& title, std::string const& localeCodePage, long long chartId) : OmOutputPart(title) {
    auto record = std::make_unique<Record>();
    record->localeCodePage = localeCodePage;
    record->chartId = chartId;
    if (!localeCodePage.empty()) {
        ReplaceTitle(OmStringCell(om_detail::TitleIn(title, localeCodePage), nullptr, false));
    }
    _record = record.release();
}

OmChart::~OmChart() { delete _record; }

void OmChart::Accept(Visitor& visitor) { visitor.Visit(*this); }

// --- streams ---------------------------------------------------------------------------------------------------------

void OmChart::SetXmlDescription(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->xmlDescription, bytes, length);
}

void OmChart::SetXmlUncompressedLength(unsigned int length) { _record->xmlUncompressedLength = length; }

void OmChart::SetXmlCompressedLength(unsigned int length) { _record->xmlDescription.reserve(length); }

void OmChart::SetBinaryDataStream(char const* bytes, unsigned int length) {
    om_detail::ReserveAndAppendChunk(_record->binaryData, bytes, length);
}

void OmChart::SetImageStream(char const* bytes, unsigned int length) {
    om_detail::ReserveAndAppendChunk(_record->image, bytes, length);
}

void OmChart::SetViZJSON(char const* bytes, unsigned int length) {
    om_detail::ReserveAndAppendChunk(_record->vizJson, bytes, length);
}

void OmChart::SetImageSubType(ChartXMLContentSubType subType) { _record->imageSubType = subType; }

void OmChart::Done(char const* bytes) {
    std::memcpy(&_record->editable, bytes, sizeof(_record->editable));
    std::memcpy(&_record->editor, bytes + sizeof(_record->editable), sizeof(_record->editor));
}

std::string const& OmChart::GetXmlDescription() const { return _record->xmlDescription; }

unsigned int OmChart::GetXmlUncompressedLength() const { return _record->xmlUncompressedLength; }

std::string const& OmChart::GetXmlData() const { return _record->binaryData; }

std::string const& OmChart::GetImageData() const { return _record->image; }

std::string const& OmChart::GetViZJSONData() const { return _record->vizJson; }

std::string const& OmChart::LocaleCodePage() const { return _record->localeCodePage; }

ChartXMLContentSubType OmChart::GetChartSubType() const { return _record->imageSubType; }

OmChart::EDITABLE OmChart::GetEditable() const { return _record->editable; }

OmChart::EDITOR OmChart::GetEditor() const { return _record->editor; }

long long OmChart::getChartId() const { return _record->chartId; }

void OmChart::deleteData() { _record->binaryData.clear(); }

// --- map record ------------------------------------------------------------------------------------------------------

namespace {

/// Reads a packed record from front to back and never past its end.
class MapReader {
public:
    explicit MapReader(std::string const& bytes) : _bytes(bytes) {
        std::uint16_t mark = 0;
        Read(&mark, sizeof(mark));
        _reversed = mark != 1;
    }

    /// A length of the given type, then that many bytes.
    template <typename Length>
    std::string Part() {
        std::array<unsigned char, sizeof(Length)> raw{};
        Read(raw.data(), raw.size());
        if (_reversed) {
            std::reverse(raw.begin(), raw.end());
        }
        Length length = 0;
        std::memcpy(&length, raw.data(), raw.size());
        Need(length);
        std::string part = _bytes.substr(_next, length);
        _next += length;
        return part;
    }

private:
    void Need(std::size_t length) const {
        std::size_t const remaining = _bytes.size() - _next;
        if (length > remaining) {
            throw OMSException("OmChart::getMapInfo() -- length > remaining", static_cast<double>(length),
                               static_cast<double>(remaining));
        }
    }

    void Read(void* target, std::size_t length) {
        Need(length);
        std::memcpy(target, _bytes.data() + _next, length);
        _next += length;
    }

    std::string const& _bytes;
    std::size_t _next = 0;
    bool _reversed = false;
};

} // namespace

void OmChart::SetMapInfo(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->mapInfo, bytes, length);
}

bool OmChart::hasMap() const { return !_record->mapInfo.empty(); }

void OmChart::getMapInfo(std::string& a, std::string& b, std::string& c, std::string& d) const {
    if (!hasMap()) {
        return;
    }
    MapReader reader(_record->mapInfo);
    std::string first = reader.Part<std::uint32_t>();
    std::string second = reader.Part<std::uint16_t>();
    std::string third = reader.Part<std::uint32_t>();
    std::string fourth = reader.Part<std::uint16_t>();
    a.swap(first);
    b.swap(second);
    c.swap(third);
    d.swap(fourth);
}

// --- attached files and options --------------------------------------------------------------------------------------

void OmChart::addCSVFileName(char const* bytes, unsigned int length) { _record->csvFiles.AddName(bytes, length); }

void OmChart::addCSVFileContent(char const* bytes, unsigned int length) { _record->csvFiles.AddContent(bytes, length); }

std::vector<std::string> const& OmChart::getCSVFileNames() const { return _record->csvFiles.names; }

std::vector<std::string> const& OmChart::getCSVFiles() const { return _record->csvFiles.contents; }

bool OmChart::hasCSVFile() const { return !_record->csvFiles.names.empty(); }

void OmChart::addGeoJSONFileName(char const* bytes, unsigned int length) {
    _record->geoJsonFiles.AddName(bytes, length);
}

void OmChart::addGeoJSONFileContent(char const* bytes, unsigned int length) {
    _record->geoJsonFiles.AddContent(bytes, length);
}

std::vector<std::string> const& OmChart::getGeoJSONFileNames() const { return _record->geoJsonFiles.names; }

std::vector<std::string> const& OmChart::getGeoJSONContent() const { return _record->geoJsonFiles.contents; }

bool OmChart::hasGeoJSONFile() const { return !_record->geoJsonFiles.names.empty(); }

void OmChart::setVizJSONTemplate(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->vizJsonTemplate, bytes, length);
}

std::string const& OmChart::getVizJSONTemplate() const { return _record->vizJsonTemplate; }

void OmChart::setOptions(std::string const& options) { _record->options = options; }

std::string const& OmChart::getOptions() const { return _record->options; }
