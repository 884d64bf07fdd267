#include "backend/tables/om/OmModel.h"

#include "backend/tables/om/detail/Streams.h"

struct OmModel::Record {
    MODEL_TYPE type = MODEL_PMML;
    std::string pmml;
    std::string binaryData;
    std::string pmmlContainer;
    std::string statXmlContainer;
};

OmModel::OmModel(OmCellText const& title) : OmOutputPart(title), _record(new Record()) {}

OmModel::~OmModel() { delete _record; }

void OmModel::Accept(Visitor& visitor) { visitor.Visit(*this); }

void OmModel::SetPMML(char const* bytes, unsigned int length) { om_detail::AppendChunk(_record->pmml, bytes, length); }

void OmModel::SetBinaryDataStream(char const* bytes, unsigned int length) {
    om_detail::ReserveAndAppendChunk(_record->binaryData, bytes, length);
}

void OmModel::SetPMMLContainer(char const* bytes, unsigned int length) {
    _record->type = MODEL_CONTAINER;
    om_detail::AppendChunk(_record->pmmlContainer, bytes, length);
}

void OmModel::SetStatXMLContainer(char const* bytes, unsigned int length) {
    _record->type = MODEL_CONTAINER;
    om_detail::AppendChunk(_record->statXmlContainer, bytes, length);
}

void OmModel::SetModelType(MODEL_TYPE type) { _record->type = type; }

OmModel::MODEL_TYPE OmModel::GetModelType() const { return _record->type; }

std::string const& OmModel::GetPMML() const { return _record->pmml; }

std::string const& OmModel::GetBinaryDataStream() const { return _record->binaryData; }

std::string const& OmModel::GetPMMLContainer() const { return _record->pmmlContainer; }

std::string const& OmModel::GetStatXMLContainer() const { return _record->statXmlContainer; }
