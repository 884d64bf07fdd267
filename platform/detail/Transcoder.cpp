#include "platform/detail/Transcoder.h"

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

namespace om_detail {

namespace {

/// Length of the well-formed sequence at the start of `bytes`, 0 when there is none. The second byte's range is what
/// keeps out overlong forms, surrogates and values above U+10FFFF.
std::size_t SequenceLength(std::string_view bytes) {
    auto const byteAt = [&](std::size_t i) { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U; };
    unsigned int const lead = byteAt(0);
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    unsigned int const lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned int const highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byteAt(1) < lowest || byteAt(1) > highest) {
        return 0;
    }
    std::size_t const length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    for (std::size_t i = 2; i < length; ++i) {
        if (byteAt(i) < 0x80 || byteAt(i) > 0xBF) {
            return 0;
        }
    }
    return length;
}

/// What iconv_open gives for a pair of encodings that it does not know.
iconv_t const None = reinterpret_cast<iconv_t>(-1);

bool IsWellFormed(std::string_view text) {
    while (!text.empty()) {
        std::size_t const length = SequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

/// Whether one of U+E0000 to U+E007F is in the text. REQUIRES: well-formed UTF-8.
bool HasTag(std::string_view text) {
    return text.find("\xF3\xA0\x80") != std::string_view::npos || text.find("\xF3\xA0\x81") != std::string_view::npos;
}

/// Whether the encoding has a place for every character.
bool HoldsUnicode(std::string_view encoding) { return encoding == "UTF-8" || encoding == "GB18030"; }

} // namespace

std::unique_ptr<Transcoder> Transcoder::Open(char const* to, char const* from) {
    if (to == nullptr || from == nullptr) {
        return nullptr;
    }
    // The object is made first: nothing is open yet when there is no memory for it.
    std::unique_ptr<Transcoder> transcoder(new Transcoder(std::string_view(from) == "UTF-8", !HoldsUnicode(to)));
    transcoder->_handle = iconv_open(to, from);
    return transcoder->_handle != None ? std::move(transcoder) : nullptr;
}

Transcoder::Transcoder(bool fromU8, bool dropsTags) : _handle(None), _fromU8(fromU8), _dropsTags(dropsTags) {}

Transcoder::~Transcoder() {
    if (_handle != None) {
        iconv_close(_handle);
    }
}

bool Transcoder::Convert(std::string const& text, std::string& out) const {
    // The C library's own idea of UTF-8 goes beyond Unicode.
    if (_fromU8 && !IsWellFormed(text)) {
        return false;
    }
    // The C library leaves tag characters out of a text for an encoding without them, and reports nothing.
    if (_fromU8 && _dropsTags && HasTag(text)) {
        return false;
    }
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
