#ifndef OMTREE_BACKEND_TABLES_OM_OMSORT_H
#define OMTREE_BACKEND_TABLES_OM_OMSORT_H

#include <cstdint>

/// How the children of a category are to be sorted for display. The model stores and prints the order; it sorts
/// nothing.
struct OmSort {
    enum Order : std::int32_t {
        Up = 0,
        Down = 1,
        None = 2 ///< names no direction; the default
    };
};

#endif
