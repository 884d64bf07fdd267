#ifndef OMTREE_BACKEND_TABLES_OM_OMANSWERTREE_H
#define OMTREE_BACKEND_TABLES_OM_OMANSWERTREE_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmOutputPart.h"

#include <string>

/// An answer tree of the output document: its XML, delivered in chunks. The chunked setters append the `length` bytes
/// at `bytes`, zero bytes included, and interpret nothing. Copying is shallow like that of every part.
class OMTREE_API OmAnswerTree : public OmOutputPart {
public:
    /// Keeps a reference to `kept`, not a copy: the caller's string outlives the item.
    OmAnswerTree(OmCellText const& title, std::string const& kept);
    OmAnswerTree(OmAnswerTree const&) = default;
    OmAnswerTree& operator=(OmAnswerTree const&) = default;
    ~OmAnswerTree() override;

    void Accept(Visitor& visitor) override;

    virtual void SetTreeType(int type);
    virtual void SetPath(char const* bytes, unsigned int length);
    /// Appends a chunk; `uncompressedLength` replaces the one given before.
    virtual void SetCompressedXML(char const* bytes, unsigned int length, unsigned int uncompressedLength);
    virtual void SetUncompressedXML(char const* bytes, unsigned int length);
    virtual void SetUncompressedDisplayXML(char const* bytes, unsigned int length);
    /// Marks the end of the transfer; changes nothing.
    virtual void Done();

    /// -1 until set.
    int GetTreeType() const;
    std::string const& GetPath() const;
    std::string const& GetCompressedXml() const;
    /// 0 until set.
    unsigned int GetXmlUncompressedLength() const;
    std::string const& GetUncompressedXml() const;
    std::string const& GetUncompressedDisplayXML() const;

private:
    struct Record;

    Record* _record;
};

#endif
