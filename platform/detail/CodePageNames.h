#ifndef OMTREE_PLATFORM_DETAIL_CODEPAGENAMES_H
#define OMTREE_PLATFORM_DETAIL_CODEPAGENAMES_H

#include <string>
#include <string_view>

namespace om_detail {

/// The C library's name of the code page that `name` spells, or null when it is none of the known ones.
///
/// The rules of spelling stand in CodePageConverter.h. Known code pages are on a list; the C library would also take
/// suffixes that change a conversion's meaning, and names that differ from one installation to the next.
char const* CodePageNamed(std::string_view name);

} // namespace om_detail

#endif
