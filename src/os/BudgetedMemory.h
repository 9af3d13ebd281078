#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace qve {

/// Large blocks of memory, for what grows with the number of rows: sort keys, hash tables, copies of columns. They come
/// out of one budget of the process. What goes beyond it lies in temporary files without a name: the system reads and
/// writes their pages as they are used, and drops them with the block, or with the process however it ends.
///
/// All functions may be called from any thread.
class BudgetedMemory {
public:
    /// Blocks below this size, in bytes, are no business of the budget.
    static constexpr uint64_t least = uint64_t{1} << 20;

    /// The budget in bytes; 0 stands for half of what the machine has, which is the default. Blocks that are there stay
    /// where they are.
    static void SetBudget(uint64_t bytes);
    static uint64_t GetBudget();
    /// Bytes that live blocks take of the budget, and that they take in files.
    static uint64_t GetInMemory();
    static uint64_t GetInFiles();

    /// A block of at least `least` bytes, which are 0. With `dense`, most of it will be touched, in any order: in
    /// memory it then asks the system for large pages. Throws std::bad_alloc, or where a file is made QVE_RuntimeError
    /// 100 when the disk is full, and 40443.
    static void* Allocate(uint64_t size, bool dense = false);
    /// Gives a block back, with the size that it was asked for.
    static void Release(void* block, uint64_t size) noexcept;
};

/// An allocator of vectors whose large blocks are BudgetedMemory.
template <class T, bool dense = false>
struct budgeted_allocator {
    using value_type = T;
    template <class U>
    struct rebind {
        using other = budgeted_allocator<U, dense>;
    };

    budgeted_allocator() = default;
    template <class U>
    budgeted_allocator(const budgeted_allocator<U, dense>&) {}

    T* allocate(size_t count) {
        const uint64_t bytes = uint64_t{count} * sizeof(T);
        return static_cast<T*>(bytes < BudgetedMemory::least ? ::operator new(bytes)
                                                             : BudgetedMemory::Allocate(bytes, dense));
    }
    /// What is to be filled whole is not set before.
    template <class U>
    requires dense void construct(U* value) { ::new (static_cast<void*>(value)) U; }
    void deallocate(T* block, size_t count) noexcept {
        const uint64_t bytes = uint64_t{count} * sizeof(T);
        if (bytes < BudgetedMemory::least) {
            ::operator delete(block);
        } else {
            BudgetedMemory::Release(block, bytes);
        }
    }
    friend bool operator==(const budgeted_allocator&, const budgeted_allocator&) { return true; }
};

template <class T>
using budgeted_vector = std::vector<T, budgeted_allocator<T>>;

/// A budgeted_vector of numbers for what is filled whole and then read in any order: it asks for large pages, and
/// resize leaves new numbers undefined.
template <class T>
using dense_vector = std::vector<T, budgeted_allocator<T, true>>;

}  // namespace qve
