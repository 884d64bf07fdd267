#ifndef OMTREE_BACKEND_TABLES_OM_HANDLELAYOUT_H
#define OMTREE_BACKEND_TABLES_OM_HANDLELAYOUT_H

#include "backend/tables/Export.h"

#ifndef OMTREE_CHECK_HANDLES
#define OMTREE_CHECK_HANDLES 0
#endif

/// Keeps the two layouts of category trees and their handles apart.
///
/// A build with OMTREE_CHECK_HANDLES=1 has larger nodes and handles than the shipped one (VectorTree.h), in the
/// libraries and in the program alike. The headers of the classes that hold such trees include this one; it makes every
/// object file name the layout that it was compiled with, and a library defines the name of its own. So a program of
/// one layout does not link with libraries of the other:
///
///     undefined reference to `om_detail::HandleLayout::Checked'     compiled with OMTREE_CHECK_HANDLES, linked without
///     undefined reference to `om_detail::HandleLayout::Plain'       the other way round
///
/// A process that comes to load libraries of both layouts (a Debug program that links a shared library which was built
/// against the shipped ones) ends when it starts, with the report "one layout of handles" by the assertion handler.
namespace om_detail {

struct OM_ASSERT_API HandleLayout {
#if OMTREE_CHECK_HANDLES
    static char const Checked;
#else
    static char const Plain;
#endif
};

// Two names, so that a linker that keeps one of equal definitions does not keep one for both.
#if OMTREE_CHECK_HANDLES
[[gnu::used, gnu::visibility("hidden")]] inline char const* const needsCheckedHandles = &HandleLayout::Checked;
#else
[[gnu::used, gnu::visibility("hidden")]] inline char const* const needsPlainHandles = &HandleLayout::Plain;
#endif

} // namespace om_detail

#endif
