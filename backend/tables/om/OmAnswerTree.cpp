#include "backend/tables/om/OmAnswerTree.h"

#include "backend/tables/om/detail/Streams.h"

#include <cstdint>

struct OmAnswerTree::Record {
    explicit Record(std::string const& itsKept) : kept(itsKept) {}

    std::int32_t treeType = -1;
    std::string path;
    std::string compressedXml;
    std::uint32_t xmlUncompressedLength = 0;
    std::string uncompressedXml;
    std::string uncompressedDisplayXml;
    std::string const& kept;
};

OmAnswerTree::OmAnswerTree(OmCellText const& title, std::string const& kept)
    : OmOutputPart(title), _record(new Record(kept)) {}

OmAnswerTree::~OmAnswerTree() { delete _record; }

void OmAnswerTree::Accept(Visitor& visitor) { visitor.Visit(*this); }

void OmAnswerTree::SetTreeType(int type) { _record->treeType = type; }

void OmAnswerTree::SetPath(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->path, bytes, length);
}

void OmAnswerTree::SetCompressedXML(char const* bytes, unsigned int length, unsigned int uncompressedLength) {
    om_detail::AppendChunk(_record->compressedXml, bytes, length);
    _record->xmlUncompressedLength = uncompressedLength;
}

void OmAnswerTree::SetUncompressedXML(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->uncompressedXml, bytes, length);
}

void OmAnswerTree::SetUncompressedDisplayXML(char const* bytes, unsigned int length) {
    om_detail::AppendChunk(_record->uncompressedDisplayXml, bytes, length);
}

void OmAnswerTree::Done() {}

int OmAnswerTree::GetTreeType() const { return _record->treeType; }

std::string const& OmAnswerTree::GetPath() const { return _record->path; }

std::string const& OmAnswerTree::GetCompressedXml() const { return _record->compressedXml; }

unsigned int OmAnswerTree::GetXmlUncompressedLength() const { return _record->xmlUncompressedLength; }

std::string const& OmAnswerTree::GetUncompressedXml() const { return _record->uncompressedXml; }

std::string const& OmAnswerTree::GetUncompressedDisplayXML() const { return _record->uncompressedDisplayXml; }
