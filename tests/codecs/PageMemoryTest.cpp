#include "codecs/pixels/PageMemory.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace paperline {
namespace {

TEST(PageMemory, IsZeroedHoweverOftenItIsTaken) {
    for (const size_t byteCount : {size_t{1}, size_t{100'000}, size_t{9'000'001}})
        for (int turn = 0; turn < 3; ++turn) {
            const PageMemory memory = allocatePageMemory(byteCount);
            ASSERT_TRUE(memory) << byteCount;
            const bool zero = std::all_of(
                memory.get(), memory.get() + byteCount, [](uint8_t byte) { return byte == 0; });
            EXPECT_TRUE(zero) << byteCount;
            std::fill_n(memory.get(), byteCount, uint8_t{0xA5});
        }
}

TEST(PageMemory, IsRefusedWhereThereIsNotSoMuch) {
    EXPECT_FALSE(allocatePageMemory(SIZE_MAX / 2));
}

} // namespace
} // namespace paperline
