#include "win32/try_copy_memory.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "win32/platform.h"

TEST(OwnMemory, ReadableMemoryIsCopied) {
    const int source[2] = {4711, 815};
    int copy[2] = {};
    EXPECT_TRUE(TryCopyMemory(source, copy, sizeof(copy)));
    EXPECT_EQ(copy[0], 4711);
    EXPECT_EQ(copy[1], 815);
}

TEST(OwnMemory, WildAddressesAreRefused) {
    char copy[16];
    for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{0x7FFFFFFFFFFF},
                                         std::uintptr_t{0x8000000000000000}, ~std::uintptr_t{0}}) {
        EXPECT_FALSE(TryCopyMemory(reinterpret_cast<const void*>(address), copy, sizeof(copy))) << address;
    }
}
