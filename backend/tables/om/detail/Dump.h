#ifndef OMTREE_BACKEND_TABLES_OM_DETAIL_DUMP_H
#define OMTREE_BACKEND_TABLES_OM_DETAIL_DUMP_H

#include <charconv>
#include <cstdint>
#include <ios>
#include <iostream>
#include <string>
#include <string_view>

/// What the debug dumps write with. A dump reads the same whatever the program has set on standard output (width, fill,
/// base, flags, locale) and leaves it as it is, so everything goes out unformatted.
namespace om_detail {

inline void Write(std::string_view bytes) { std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size())); }

/// Writes two blanks for each `indent`.
inline void WriteIndent(unsigned int indent) {
    constexpr std::string_view Blanks = "                                ";
    std::uint64_t left = std::uint64_t{2} * indent;
    for (; left > Blanks.size(); left -= Blanks.size()) {
        Write(Blanks);
    }
    Write(Blanks.substr(0, static_cast<std::size_t>(left)));
}

/// An address as a stream in its first state shows it: "0" for null, else hexadecimal digits behind "0x".
inline std::string AddressText(void const* address) {
    if (address == nullptr) {
        return "0";
    }
    char text[2 + 2 * sizeof(void*)] = {'0', 'x'};
    char* const end = std::to_chars(text + 2, text + sizeof(text), reinterpret_cast<std::uintptr_t>(address), 16).ptr;
    return {text, end};
}

} // namespace om_detail

#endif
