#include "backend/tables/om/detail/Streams.h"

#include "omcell/OmCellText.h"
#include "platform/CodePageConverter.h"

#include <memory>

std::string om_detail::TitleIn(OmCellText const& title, std::string const& codePage) {
    std::string const text = title.AsString();
    std::string converted;
    std::unique_ptr<QUORMBConverter, decltype(&QUORMBConverterDelete_A)> const converter(
        QUORMBConverterNew_A(codePage.c_str()), QUORMBConverterDelete_A);
    if (QUORMBU8ToGeneric(converter.get(), converted, text) != 0) {
        return text;
    }
    return converted;
}
