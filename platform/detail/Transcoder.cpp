#include "platform/detail/Transcoder.h"

#include <cerrno>
#include <cstddef>

namespace om_detail {

std::unique_ptr<Transcoder> Transcoder::Open(char const* to, char const* from) {
    if (to == nullptr || from == nullptr) {
        return nullptr;
    }
    iconv_t const handle = iconv_open(to, from);
    if (handle == reinterpret_cast<iconv_t>(-1)) {
        return nullptr;
    }
    return std::unique_ptr<Transcoder>(new Transcoder(handle));
}

Transcoder::~Transcoder() { iconv_close(_handle); }

bool Transcoder::Convert(std::string const& text, std::string& out) const {
    std::string converted;
    char buffer[256];
    std::string source = text; // the C interface takes a modifiable pointer
    char* from = source.data();
    std::size_t fromLeft = source.size();
    iconv(_handle, nullptr, nullptr, nullptr, nullptr);
    for (bool flushing = false;;) {
        char* to = buffer;
        std::size_t toLeft = sizeof(buffer);
        std::size_t const result =
            flushing ? iconv(_handle, nullptr, nullptr, &to, &toLeft) : iconv(_handle, &from, &fromLeft, &to, &toLeft);
        bool const full = result == static_cast<std::size_t>(-1) && errno == E2BIG;
        // A positive result counts characters that were replaced by others.
        if (!full && result != 0) {
            return false;
        }
        converted.append(buffer, static_cast<std::size_t>(to - buffer));
        if (full) {
            continue;
        }
        if (flushing) {
            out.swap(converted);
            return true;
        }
        flushing = true;
    }
}

} // namespace om_detail
