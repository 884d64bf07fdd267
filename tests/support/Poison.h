#ifndef OMTREE_TESTS_SUPPORT_POISON_H
#define OMTREE_TESTS_SUPPORT_POISON_H

#include "tests/support/AllocatorMayReturnNull.h"

#if defined(OM_TEST_ADDRESS_SANITIZER)

#include <cstddef>
#include <gtest/gtest.h>
#include <sanitizer/asan_interface.h>

namespace omtest {

/// Whether all of a block may be touched, and the byte behind it may not.
inline testing::AssertionResult IsOpen(char* block, std::size_t bytes) {
    if (void const* const closed = __asan_region_is_poisoned(block, bytes)) {
        return testing::AssertionFailure() << "byte " << static_cast<char const*>(closed) - block << " is poisoned";
    }
    if (__asan_address_is_poisoned(block + bytes) == 0) {
        return testing::AssertionFailure() << "the byte behind " << bytes << " is not poisoned";
    }
    return testing::AssertionSuccess();
}

/// Whether no byte may be touched.
inline testing::AssertionResult IsClosed(char* block, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
        if (__asan_address_is_poisoned(block + i) == 0) {
            return testing::AssertionFailure() << "byte " << i << " is not poisoned";
        }
    }
    return testing::AssertionSuccess();
}

} // namespace omtest

#endif

#endif
