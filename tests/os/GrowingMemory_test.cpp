#include "os/GrowingMemory.h"

#include <gtest/gtest.h>

#include <string>

namespace qve {
namespace {

// Through the change from the heap to a mapping of its own, and beyond.
TEST(GrowingMemory, KeepsItsBytesWhileItGrows) {
    GrowingMemory memory;
    EXPECT_TRUE(memory.empty());
    std::string expected;
    for (unsigned i = 0; expected.size() < 9'000'000; ++i) {
        const std::string piece(1 + i * 37 % 70'000, static_cast<char>('a' + i % 26));
        memory.Append(piece.data(), piece.size());
        expected += piece;
        ASSERT_EQ(reinterpret_cast<uintptr_t>(memory.data()) % 64, 0U);
    }
    EXPECT_EQ(std::string(memory.data(), memory.size()), expected);
}

TEST(GrowingMemory, BytesThatComeBackAreZero) {
    for (const uint64_t size : {uint64_t{100}, uint64_t{5'000'000}}) {
        GrowingMemory memory;
        memory.Append(std::string(size, 'x').data(), size);
        memory.Resize(size / 2);
        memory.Resize(size + 10);
        EXPECT_EQ(std::string(memory.data(), memory.size()),
                  std::string(size / 2, 'x') + std::string(size + 10 - size / 2, '\0'));
    }
}

TEST(GrowingMemory, ASizeBeyondAllMemoryIsRefused) {
    GrowingMemory memory;
    memory.Append("abc", 3);
    EXPECT_THROW(memory.Resize(uint64_t{1} << 60), std::bad_alloc);
    EXPECT_THROW(memory.Resize(~uint64_t{0}), std::bad_alloc);
    EXPECT_EQ(std::string(memory.data(), memory.size()), "abc");
}

}  // namespace
}  // namespace qve
