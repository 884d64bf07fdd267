#ifndef OMTREE_TESTS_SUPPORT_ALLOCATORMAYRETURNNULL_H
#define OMTREE_TESTS_SUPPORT_ALLOCATORMAYRETURNNULL_H

// Under the address sanitizer a request that no allocator can serve ends the process, unless it is told to fail as
// malloc does. A test of such requests includes this, in one source of its program.

#if defined(__SANITIZE_ADDRESS__)
#define OM_TEST_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OM_TEST_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(OM_TEST_ADDRESS_SANITIZER)
extern "C" __attribute__((visibility("default"))) char const* __asan_default_options();
extern "C" char const* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

#endif
