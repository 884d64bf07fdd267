#ifndef OMTREE_BACKEND_TABLES_OM_OMMODEL_H
#define OMTREE_BACKEND_TABLES_OM_OMMODEL_H

#include "backend/tables/Export.h"
#include "backend/tables/om/OmOutputPart.h"

#include <cstdint>
#include <string>

/// A statistical model of the output document: byte streams that the engine delivers in chunks. The chunked setters
/// append the `length` bytes at `bytes`, zero bytes included, and interpret nothing. Getters give references that are
/// valid until the next change of that stream and no longer than the part. Copying is shallow like that of every part.
class OMTREE_API OmModel : public OmOutputPart {
public:
    enum MODEL_TYPE : std::int32_t {
        MODEL_PMML = 0,     ///< a single document; the type of a new model
        MODEL_CONTAINER = 1 ///< a container of documents
    };

    explicit OmModel(OmCellText const& title);
    OmModel(OmModel const&) = default;
    OmModel& operator=(OmModel const&) = default;
    ~OmModel() override;

    void Accept(Visitor& visitor) override;

    virtual void SetPMML(char const* bytes, unsigned int length);
    /// Reserves room for just the whole before it appends.
    virtual void SetBinaryDataStream(char const* bytes, unsigned int length);
    /// Every chunk of either container sets the type to 1, first, also one for which there is no memory.
    virtual void SetPMMLContainer(char const* bytes, unsigned int length);
    virtual void SetStatXMLContainer(char const* bytes, unsigned int length);

    void SetModelType(MODEL_TYPE type);
    MODEL_TYPE GetModelType() const;

    std::string const& GetPMML() const;
    std::string const& GetBinaryDataStream() const;
    std::string const& GetPMMLContainer() const;
    std::string const& GetStatXMLContainer() const;

private:
    struct Record;

    Record* _record;
};

#endif
