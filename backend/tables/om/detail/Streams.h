#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_STREAMS_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_STREAMS_H

#include <cstddef>
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

/// The same for streams that come in few large chunks: reserves just what is needed first.
inline void ReserveAndAppendChunk(std::string& stream, char const* bytes, unsigned int length) {
    stream.reserve(stream.size() + length);
    AppendChunk(stream, bytes, length);
}

/// Files attached to a part: names and contents in two parallel lists. A producer sends a name, then the content in one
/// or more chunks, then the next name.
struct Attachments {
    std::vector<std::string> names;
    std::vector<std::string> contents;

    void AddName(char const* bytes, unsigned int length) {
        names.emplace_back();
        AppendChunk(names.back(), bytes, length);
    }

    /// Continues the last content while every name has one; otherwise begins a new one.
    void AddContent(char const* bytes, unsigned int length) {
        if (contents.empty() || contents.size() != names.size()) {
            contents.emplace_back();
        }
        AppendChunk(contents.back(), bytes, length);
    }
};

/// The title's text in a code page; unconverted when the conversion fails.
std::string TitleIn(OmCellText const& title, std::string const& codePage);

} // namespace om_detail

#endif
