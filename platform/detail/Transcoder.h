#ifndef OMTREE_PLATFORM_DETAIL_TRANSCODER_H
#define OMTREE_PLATFORM_DETAIL_TRANSCODER_H

#include <iconv.h>
#include <memory>
#include <string>

namespace om_detail {

/// Owns one of the C library's converters between two encodings. Used by one thread at a time.
class Transcoder {
public:
    /// A converter between two encodings by the C library's names for them; null when a name is null or unknown there.
    /// Throws std::bad_alloc, also when the C library has no memory for it.
    static std::unique_ptr<Transcoder> Open(char const* to, char const* from);

    Transcoder(Transcoder const&) = delete;
    Transcoder& operator=(Transcoder const&) = delete;
    ~Transcoder();

    /// Converts a whole text, from the initial shift state and back to it. False, with `out` as before, when a byte has
    /// no meaning in the one encoding or a character no place in the other; nothing is replaced.
    bool Convert(std::string const& text, std::string& out) const;

private:
    Transcoder(char const* to, char const* from);

    bool Holds(std::string const& text) const;

    iconv_t _handle; ///< what iconv_open gives for an unknown encoding, until there is one
    bool _fromU8;
    bool _dropsTags; ///< the C library passes over tag characters on the way to this encoding
    bool _escapes;   ///< this encoding switches tables by control characters, which the C library passes through
};

} // namespace om_detail

#endif
