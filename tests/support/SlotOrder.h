#ifndef OMTREE_TESTS_SUPPORT_SLOTORDER_H
#define OMTREE_TESTS_SUPPORT_SLOTORDER_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// Reads the place of a virtual operation in its class's table out of a pointer to member function.
///
/// The Itanium C++ ABI keeps such a pointer as two words:
///
///     +---------------------------------+------------+
///     | function                        | adjustment |
///     +---------------------------------+------------+
///      non-virtual: address of the code
///      virtual:     byte offset into the table, plus 1
///
/// (on 64-bit Arm the "plus 1" mark sits in the lowest bit of the adjustment instead, which is then doubled).
///
/// A virtual destructor that is declared first takes the entries 0 and 1, its complete and its deleting form. So in a
/// list of a class's operations that is counted from 1 and starts with the destructor, operation k > 1 has `SlotOf` k.
namespace omtest {

/// What `SlotOf` gives for a function that is not virtual.
inline constexpr std::size_t NoSlot = static_cast<std::size_t>(-1);

/// Index of the entry of `member` in the table of its class, counted from 0; NoSlot when it is not virtual. Choose an
/// overload by a cast: `SlotOf(static_cast<void (Visitor::*)(OmBlank&)>(&Visitor::Visit))`.
template <typename Member>
std::size_t SlotOf(Member member) {
    static_assert(std::is_member_function_pointer_v<Member>, "a pointer to member function is asked for");
    struct Representation {
        std::uintptr_t function;
        std::ptrdiff_t adjustment;
    };
    static_assert(sizeof(Member) == sizeof(Representation), "not the two words of the Itanium C++ ABI");
    Representation words;
    std::memcpy(&words, &member, sizeof(words));
#if defined(__aarch64__) || defined(__arm__)
    bool const isVirtual = (words.adjustment & 1) != 0;
    std::uintptr_t const offset = words.function;
#else
    bool const isVirtual = (words.function & 1) != 0;
    std::uintptr_t const offset = words.function - 1;
#endif
    return isVirtual ? static_cast<std::size_t>(offset) / sizeof(void*) : NoSlot;
}

} // namespace omtest

#endif
