#include "platform/detail/Transcoder.h"

#include <cerrno>
#include <cstddef>
#include <new>
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
iconv_t None() { return reinterpret_cast<iconv_t>(-1); }

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

/// What the encodings with states switch tables with.
constexpr char EscapeCharacters[] = "\x0E\x0F\x1B";

bool Escapes(std::string_view encoding) { return encoding.substr(0, 9) == "ISO-2022-"; }

/// With some room to spare, for a state to be closed and a character that is longer than it was.
std::size_t RoomFor(std::size_t bytes) { return bytes + 16; }

/// Whether the encoding has a place for every character.
bool HoldsUnicode(std::string_view encoding) { return encoding == "UTF-8" || encoding == "GB18030"; }

} // namespace

std::unique_ptr<Transcoder> Transcoder::Open(char const* to, char const* from) {
    if (to == nullptr || from == nullptr) {
        return nullptr;
    }
    // The object is made first: nothing is open yet when there is no memory for it.
    std::unique_ptr<Transcoder> transcoder(new Transcoder(to, from));
    transcoder->_handle = iconv_open(to, from);
    if (transcoder->_handle == None() && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return transcoder->_handle != None() ? std::move(transcoder) : nullptr;
}

Transcoder::Transcoder(char const* to, char const* from)
    : _handle(None()), _fromU8(std::string_view(from) == "UTF-8"), _dropsTags(!HoldsUnicode(to)),
      _escapes(Escapes(to)) {}

Transcoder::~Transcoder() {
    if (_handle != None()) {
        iconv_close(_handle);
    }
}

/// Whether the C library can be trusted with the text.
bool Transcoder::Holds(std::string const& text) const {
    if (!_fromU8) {
        return true;
    }
    // The C library's own idea of UTF-8 goes beyond Unicode.
    if (!IsWellFormed(text)) {
        return false;
    }
    // It leaves tag characters out of a text for an encoding without them, and reports nothing.
    if (_dropsTags && HasTag(text)) {
        return false;
    }
    return !_escapes || text.find_first_of(EscapeCharacters) == std::string::npos;
}

bool Transcoder::Convert(std::string const& text, std::string& out) const {
    if (!Holds(text)) {
        return false;
    }
    char* from = const_cast<char*>(text.data()); // the C interface takes a pointer to what it does not modify
    std::size_t fromLeft = text.size();
    std::string converted(RoomFor(text.size()), '\0');
    std::size_t used = 0;
    iconv(_handle, nullptr, nullptr, nullptr, nullptr);
    for (bool flushing = false;;) {
        char* to = converted.data() + used;
        std::size_t toLeft = converted.size() - used;
        std::size_t const result =
            flushing ? iconv(_handle, nullptr, nullptr, &to, &toLeft) : iconv(_handle, &from, &fromLeft, &to, &toLeft);
        bool const full = result == static_cast<std::size_t>(-1) && errno == E2BIG;
        // A positive result counts characters that were replaced by others.
        if (!full && result != 0) {
            return false;
        }
        used = converted.size() - toLeft;
        if (full) {
            converted.resize(RoomFor(2 * converted.size()));
            continue;
        }
        if (flushing) {
            converted.resize(used);
            out.swap(converted);
            return true;
        }
        flushing = true;
    }
}

} // namespace om_detail
