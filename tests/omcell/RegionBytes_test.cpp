#include "omcell/RegionBytes.h"

#include "tests/support/AllocatorMayReturnNull.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <string_view>

using om_detail::RegionBytes;

TEST(RegionBytes, KeepsACopyOfItsOwnSize) {
    OmMemoryRegion arena(false);
    {
        std::string text(56, 'a');
        RegionBytes const bytes(text, &arena);
        text.assign(56, 'b');
        EXPECT_EQ(bytes.View(), std::string(56, 'a'));
        EXPECT_EQ(bytes.String(), std::string(56, 'a'));
        EXPECT_EQ(bytes.size(), 56U);
        EXPECT_EQ(arena.LiveBytes(), 56U); // 57 bytes would take the next size of block
    }
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(RegionBytes, NoBytesTakeNoBlock) {
    OmMemoryRegion arena(false);
    RegionBytes bytes("", &arena);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(bytes.View(), "");
    EXPECT_EQ(arena.LiveBlocks(), 0U);
    bytes.Assign("a", &arena);
    bytes.Assign("", &arena);
    EXPECT_EQ(arena.LiveBlocks(), 0U);
}

TEST(RegionBytes, TakesAPieceOfItself) {
    RegionBytes bytes("abcdef", nullptr);
    bytes.Assign(bytes.View().substr(2, 3), nullptr);
    EXPECT_EQ(bytes.View(), "cde");
    bytes.Assign(bytes.View(), nullptr);
    EXPECT_EQ(bytes.View(), "cde");
}

TEST(RegionBytes, StaysAsItWasWhenThereIsNoMemory) {
    RegionBytes bytes("abc", nullptr);
    // The size is refused before a byte is read; volatile, or the compiler warns of the reading.
    std::size_t const volatile size = static_cast<std::size_t>(-1) / 2;
    std::string_view const absurd(bytes.View().data(), size);
    EXPECT_THROW(bytes.Assign(absurd, nullptr), std::bad_alloc);
    EXPECT_EQ(bytes.View(), "abc");
}
