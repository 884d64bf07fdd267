#include "backend/tables/om/detail/Streams.h"

#include "omcell/OmCellText.h"
#include "platform/CodePageConverter.h"

namespace {

/// Frees what `QUORMBConverterNew_A` gave, null too.
class Converter {
public:
    explicit Converter(std::string const& codePage) : _handle(QUORMBConverterNew_A(codePage.c_str())) {}
    ~Converter() { QUORMBConverterDelete_A(_handle); }
    Converter(Converter const&) = delete;
    Converter& operator=(Converter const&) = delete;

    QUORMBConverter* Handle() const { return _handle; }

private:
    QUORMBConverter* _handle;
};

} // namespace

std::string om_detail::TitleIn(OmCellText const& title, std::string const& codePage) {
    std::string const text = title.AsString();
    std::string converted;
    Converter const converter(codePage);
    return QUORMBU8ToGeneric(converter.Handle(), converted, text) != 0 ? text : converted;
}
