#include "platform/CodePageConverter.h"

#include "platform/detail/CodePageNames.h"

#include <cerrno>
#include <iconv.h>
#include <memory>
#include <new>

struct QUORMBConverter {
    iconv_t handle;
};

namespace {

/// Runs one text through a converter, from its initial shift state and back to it. False when a byte has no meaning or
/// a character no place.
bool Convert(iconv_t handle, std::string const& text, std::string& out) {
    std::string converted;
    char buffer[256];
    std::string source = text; // the C interface takes a modifiable pointer
    char* from = source.data();
    std::size_t fromLeft = source.size();
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    bool flushing = false;
    for (;;) {
        char* to = buffer;
        std::size_t toLeft = sizeof(buffer);
        std::size_t const result =
            flushing ? iconv(handle, nullptr, nullptr, &to, &toLeft) : iconv(handle, &from, &fromLeft, &to, &toLeft);
        bool const failed = result == static_cast<std::size_t>(-1);
        if (failed && errno != E2BIG) {
            return false;
        }
        // Characters converted in a way that cannot be undone were replaced by others.
        if (!failed && result != 0) {
            return false;
        }
        converted.append(buffer, static_cast<std::size_t>(to - buffer));
        if (failed) {
            continue;
        }
        if (flushing) {
            break;
        }
        flushing = true;
    }
    out.swap(converted);
    return true;
}

QUORMBConverter* Open(char const* to, char const* from) {
    if (to == nullptr || from == nullptr) {
        return nullptr;
    }
    iconv_t const handle = iconv_open(to, from);
    if (handle == reinterpret_cast<iconv_t>(-1)) {
        return nullptr;
    }
    QUORMBConverter* const converter = new (std::nothrow) QUORMBConverter{handle};
    if (converter == nullptr) {
        iconv_close(handle);
    }
    return converter;
}

} // namespace

QUORMBConverter* QUORMBConverterNew_A(char const* codePage) {
    return codePage != nullptr ? Open(om_detail::CodePageNamed(codePage), "UTF-8") : nullptr;
}

int QUORMBU8ToGeneric(QUORMBConverter* converter, std::string& out, std::string const& text) {
    return converter != nullptr && Convert(converter->handle, text, out) ? 0 : 1;
}

void QUORMBConverterDelete_A(QUORMBConverter* converter) {
    if (converter != nullptr) {
        iconv_close(converter->handle);
        delete converter;
    }
}

int QUORMBGenericToU8(char const* codePage, std::string& out, std::string const& text) {
    std::unique_ptr<QUORMBConverter, decltype(&QUORMBConverterDelete_A)> const converter(
        codePage != nullptr ? Open("UTF-8", om_detail::CodePageNamed(codePage)) : nullptr, QUORMBConverterDelete_A);
    return QUORMBU8ToGeneric(converter.get(), out, text);
}
