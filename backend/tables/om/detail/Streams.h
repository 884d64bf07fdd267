#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_STREAMS_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_STREAMS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class OmCellText;

namespace om_detail {

/// Appends `length` bytes; none, whatever `bytes` is, when the length is 0.
inline void AppendChunk(std::string& stream, char const* bytes, unsigned int length) {
    if (length != 0) {
        stream.append(bytes, length);
    }
}

/// The same for streams that come in few large chunks: reserves just what is needed first. The chunk may be a piece of
/// the stream itself, the terminating zero included, which moves when room is made.
inline void ReserveAndAppendChunk(std::string& stream, char const* bytes, unsigned int length) {
    std::less<> const before;
    bool const isPiece = !before(bytes, stream.data()) && !before(stream.data() + stream.size(), bytes);
    if (!isPiece) {
        stream.reserve(stream.size() + length);
        AppendChunk(stream, bytes, length);
        return;
    }
    std::ptrdiff_t const offset = bytes - stream.data();
    stream.reserve(stream.size() + length);
    AppendChunk(stream, stream.data() + offset, length);
}

/// Files attached to a part: names and contents in two parallel lists. A producer sends a name, then the content in one
/// or more chunks, then the next name.
struct Attachments {
    std::vector<std::string> names;
    std::vector<std::string> contents;

    void AddName(char const* bytes, unsigned int length) { names.push_back(Chunk(bytes, length)); }

    /// Continues the last content while every name has one; otherwise begins a new one.
    void AddContent(char const* bytes, unsigned int length) {
        if (contents.size() == names.size() && !contents.empty()) {
            AppendChunk(contents.back(), bytes, length);
        } else {
            contents.push_back(Chunk(bytes, length));
        }
    }

private:
    static std::string Chunk(char const* bytes, unsigned int length) {
        return length != 0 ? std::string(bytes, length) : std::string();
    }
};

/// The title's text in a code page; unconverted when the conversion fails.
std::string TitleIn(OmCellText const& title, std::string const& codePage);

} // namespace om_detail

#endif
