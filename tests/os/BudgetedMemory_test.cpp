#include "os/BudgetedMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>

#include "os/OS.h"
#include "os/Path.h"
#include "os/ZeroedMemory.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

constexpr uint64_t mebibyte = uint64_t{1} << 20;

// Everything in files but for what is smaller than `least`.
class BudgetedMemoryTest : public testing::Test {
protected:
    void SetUp() override {
        BudgetedMemory::SetBudget(1);
        m_before = OS::gettempdir();
        OS::tempdir(m_directory);
    }
    void TearDown() override {
        BudgetedMemory::SetBudget(0);
        OS::tempdir(m_before);
    }

    bool HasFiles() const { return !std::filesystem::is_empty(Path::utf8path(m_directory)); }

private:
    const test::ScratchFolder m_scratch;
    const std::wstring m_directory = m_scratch.GetPath().wstring();
    std::wstring m_before;
};

TEST_F(BudgetedMemoryTest, WhatGoesBeyondTheBudgetLiesInNamelessFiles) {
    budgeted_vector<uint64_t> numbers(mebibyte);
    EXPECT_EQ(BudgetedMemory::GetInFiles(), 8 * mebibyte);
    EXPECT_EQ(BudgetedMemory::GetInMemory(), 0u);
    EXPECT_FALSE(HasFiles());
    std::iota(numbers.rbegin(), numbers.rend(), uint64_t{0});
    std::sort(numbers.begin(), numbers.end());
    EXPECT_EQ(numbers.front(), 0u);
    EXPECT_EQ(numbers.back(), mebibyte - 1);
    budgeted_vector<uint64_t>().swap(numbers);
    EXPECT_EQ(BudgetedMemory::GetInFiles(), 0u);
}

TEST_F(BudgetedMemoryTest, TheBudgetIsOneForAllBlocks) {
    BudgetedMemory::SetBudget(3 * mebibyte);
    {
        const ZeroedMemory first(2 * mebibyte);
        const ZeroedMemory second(2 * mebibyte, true);
        const ZeroedMemory third(mebibyte);
        EXPECT_EQ(BudgetedMemory::GetInMemory(), 3 * mebibyte);
        EXPECT_EQ(BudgetedMemory::GetInFiles(), 2 * mebibyte);
        const auto* bytes = static_cast<const char*>(second.data());
        EXPECT_TRUE(std::all_of(bytes, bytes + second.size(), [](char byte) { return byte == 0; }));
    }
    EXPECT_EQ(BudgetedMemory::GetInMemory(), 0u);
    EXPECT_EQ(BudgetedMemory::GetInFiles(), 0u);
}

TEST_F(BudgetedMemoryTest, SmallBlocksAreNotCounted) {
    const budgeted_vector<char> small(1000, 'x');
    EXPECT_EQ(BudgetedMemory::GetInFiles() + BudgetedMemory::GetInMemory(), 0u);
}

}  // namespace
}  // namespace qve
