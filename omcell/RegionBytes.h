#ifndef OMTREE_OMCELL_REGIONBYTES_H
#define OMTREE_OMCELL_REGIONBYTES_H

#include "omcell/OmMemoryRegion.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace om_detail {

/// A run of bytes in a region's own block, which holds the bytes and nothing else (no terminating zero).
///
///     +-------+--------+
///     | first | length |  ---> [ b y t e s ]
///     +-------+--------+
///
/// Two words, so that a text can afford several. The region is not kept: it is given where a block is taken, and a
/// block finds it by itself where it is given back. No bytes take no block. After the region's sweep the destructor
/// does nothing.
class RegionBytes {
public:
    RegionBytes() = default;

    /// A copy of `text` in `region`, the default heap when null.
    RegionBytes(std::string_view text, OmMemoryRegion* region) : _first(Copy(text, region)), _length(text.size()) {}

    ~RegionBytes() { OmMemoryRegion::Release(_first); }

    RegionBytes(RegionBytes const&) = delete;
    RegionBytes& operator=(RegionBytes const&) = delete;

    /// Replaces the bytes; `text` may be a part of them. Throws std::bad_alloc when there is no memory; the bytes are
    /// unchanged then.
    void Assign(std::string_view text, OmMemoryRegion* region) {
        char* const copy = Copy(text, region);
        OmMemoryRegion::Release(_first);
        _first = copy;
        _length = text.size();
    }

    std::size_t size() const { return _length; }
    bool empty() const { return _length == 0; }

    /// Valid until `Assign` or the end of this object.
    std::string_view View() const { return {_first, _length}; }
    std::string String() const { return std::string(View()); }

private:
    static char* Copy(std::string_view text, OmMemoryRegion* region) {
        if (text.empty()) {
            return nullptr;
        }
        void* const block = OmMemoryRegion::OrDefault(region)->Allocate(text.size());
        std::memcpy(block, text.data(), text.size());
        return static_cast<char*>(block);
    }

    char* _first = nullptr;
    std::size_t _length = 0;
};

} // namespace om_detail

#endif
