#include "backend/tables/om/HandleLayout.h"

#include "backend/tables/Assert.h"

#if OMTREE_CHECK_HANDLES

char const om_detail::HandleLayout::Checked = 1;

namespace {

// HandleLayout::Plain of a library with the other layout, where the process has one; without an address otherwise. (The
// attribute has no effect on a member.)
extern "C" char const otherLayout __asm__("_ZN9om_detail12HandleLayout5PlainE") __attribute__((weak));

// The linker has resolved every name of the process by the time this runs.
[[maybe_unused]] bool const isAlone =
    OM_ASSERT(&otherLayout == nullptr, "one layout of handles", "backend/tables/om/HandleLayout", __LINE__);

} // namespace

#else

char const om_detail::HandleLayout::Plain = 1;

#endif
