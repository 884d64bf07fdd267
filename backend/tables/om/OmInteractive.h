#ifndef OMTREE_BACKEND_TABLES_OM_OMINTERACTIVE_H
#define OMTREE_BACKEND_TABLES_OM_OMINTERACTIVE_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmOutputPart.h"

#include <string>
#include <vector>

/// An interactive item of the output document: its JSON, and attached GeoJSON files, delivered in chunks (see OmChart
/// for how chunks, attachments and titles in a code page behave). Copying is shallow like that of every part.
class OMTREE_API OmInteractive : public OmOutputPart {
public:
    OmInteractive(OmCellText const& title, std::string const& localeCodePage, long long interactiveId);
    OmInteractive(OmInteractive const&) = default;
    OmInteractive& operator=(OmInteractive const&) = default;
    ~OmInteractive() override;

    void Accept(Visitor& visitor) override;

    std::string const& LocaleCodePage() const;
    long long getInteractiveId() const;

    void addGeoJSONFileName(char const* bytes, unsigned int length);
    void addGeoJSONFileContent(char const* bytes, unsigned int length);
    std::vector<std::string> const& getGeoJSONFileNames() const;
    std::vector<std::string> const& getGeoJSONContent() const;
    /// Whether there is a name.
    bool hasGeoJSONFile() const;

    /// Appends a chunk.
    void setInteractiveJSON(char const* bytes, unsigned int length);
    std::string const& getInteractiveJSON() const;

    /// These three replace.
    void setProcedureName(std::string const& procedureName);
    std::string const& getProcedureName() const;
    void setJSONPath(std::string const& jsonPath);
    std::string const& getJSONPath() const;
    void setOptions(std::string const& options);
    std::string const& getOptions() const;

private:
    struct Record;

    Record* _record;
};

#endif
