#include "platform/CodePageConverter.h"

#include "platform/detail/CodePageNames.h"
#include "platform/detail/Transcoder.h"

#include <memory>
#include <utility>

struct QUORMBConverter {
    std::unique_ptr<om_detail::Transcoder> transcoder;
};

QUORMBConverter* QUORMBConverterNew_A(char const* codePage) {
    auto transcoder =
        codePage != nullptr ? om_detail::Transcoder::Open(om_detail::CodePageNamed(codePage), "UTF-8") : nullptr;
    return transcoder != nullptr ? new QUORMBConverter{std::move(transcoder)} : nullptr;
}

int QUORMBU8ToGeneric(QUORMBConverter* converter, std::string& out, std::string const& text) {
    return converter != nullptr && converter->transcoder->Convert(text, out) ? 0 : 1;
}

void QUORMBConverterDelete_A(QUORMBConverter* converter) { delete converter; }
