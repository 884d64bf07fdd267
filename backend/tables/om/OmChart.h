#ifndef OMTREE_BACKEND_TABLES_OM_OMCHART_H
#define OMTREE_BACKEND_TABLES_OM_OMCHART_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmOutputPart.h"

#include <cstdint>
#include <string>
#include <vector>

/// Kind of image in a chart's image stream, as the producer numbers it. Values beyond the named one can be stored.
enum ChartXMLContentSubType : std::int32_t {
    ChartContentDefault = 0 ///< until set
};

/// A chart of the output document: byte streams, a map record and attached files that the engine delivers in chunks.
///
/// The chunked setters append the `length` bytes at `bytes`, zero bytes included, and interpret nothing; those of the
/// binary data, the image and the visualisation JSON first reserve room for just the whole. Getters give references
/// that are valid until the next change of that stream and no longer than the part. Copying is shallow like that of
/// every part.
class OMTREE_API OmChart : public OmOutputPart {
public:
    enum EDITABLE : std::int32_t {
        EDITABLE_UNKNOWN = 0 ///< before `Done`
    };
    enum EDITOR : std::int32_t {
        EDITOR_DEFAULT = 1 ///< before `Done`
    };

    /// Unless the code page is empty, the title becomes a string cell that holds the title's UTF-8 text converted into
    /// it, or the same text unconverted when that fails (see `QUORMBConverterNew_A` for the names accepted). Failure is
    /// not reported.
    OmChart(OmCellText const& title, std::string const& localeCodePage, long long chartId);
    OmChart(OmChart const&) = default;
    OmChart& operator=(OmChart const&) = default;
    ~OmChart() override;

    void Accept(Visitor& visitor) override;

    virtual void SetXmlDescription(char const* bytes, unsigned int length);
    virtual void SetXmlUncompressedLength(unsigned int length);
    /// Reserves that many bytes for the XML description; records no length.
    virtual void SetXmlCompressedLength(unsigned int length);
    virtual void SetBinaryDataStream(char const* bytes, unsigned int length);
    virtual void SetImageStream(char const* bytes, unsigned int length);
    virtual void SetViZJSON(char const* bytes, unsigned int length);
    virtual void SetImageSubType(ChartXMLContentSubType subType);
    /// Ends the transfer: takes the editable state and the editor from the 8 bytes at `bytes`, two 32-bit values in the
    /// machine's byte order.
    virtual void Done(char const* bytes);

    std::string const& GetXmlDescription() const;
    unsigned int GetXmlUncompressedLength() const;
    std::string const& GetXmlData() const;
    std::string const& GetImageData() const;
    std::string const& GetViZJSONData() const;
    std::string const& LocaleCodePage() const;
    ChartXMLContentSubType GetChartSubType() const;
    /// 0 before `Done`.
    EDITABLE GetEditable() const;
    /// 1 before `Done`.
    EDITOR GetEditor() const;
    long long getChartId() const;

    /// Empties the binary data stream and nothing else.
    void deleteData();

    /// The map record, accumulated from chunks; its parts are packed without alignment:
    ///
    ///     mark (16 bits) | A (32) | A bytes | B (16) | B bytes | C (32) | C bytes | D (16) | D bytes
    ///
    /// The lengths are in the reader's byte order when the mark reads as 1, and byte-reversed otherwise.
    void SetMapInfo(char const* bytes, unsigned int length);
    bool hasMap() const;
    /// Splits the record into its four parts; without a record the four strings keep their values. Throws OMSException
    /// "OmChart::getMapInfo() -- length > remaining" (the length, the bytes left) when the record is cut short or a
    /// length runs past its end; the strings are unchanged then.
    void getMapInfo(std::string& a, std::string& b, std::string& c, std::string& d) const;

    /// Attached files: a name, then its content in one or more chunks, then the next name. A content chunk continues
    /// the last content while there are as many contents as names; otherwise it begins a new one.
    void addCSVFileName(char const* bytes, unsigned int length);
    void addCSVFileContent(char const* bytes, unsigned int length);
    std::vector<std::string> const& getCSVFileNames() const;
    std::vector<std::string> const& getCSVFiles() const;
    /// Whether there is a name.
    bool hasCSVFile() const;

    void addGeoJSONFileName(char const* bytes, unsigned int length);
    void addGeoJSONFileContent(char const* bytes, unsigned int length);
    std::vector<std::string> const& getGeoJSONFileNames() const;
    std::vector<std::string> const& getGeoJSONContent() const;
    /// Whether there is a name.
    bool hasGeoJSONFile() const;

    void setVizJSONTemplate(char const* bytes, unsigned int length);
    std::string const& getVizJSONTemplate() const;

    /// Replaces the options.
    void setOptions(std::string const& options);
    std::string const& getOptions() const;

private:
    struct Record;

    Record* _record;
};

#endif
