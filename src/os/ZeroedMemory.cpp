#include "os/ZeroedMemory.h"

#include <cstdlib>
#include <new>

#include "os/BudgetedMemory.h"

namespace qve {

ZeroedMemory::ZeroedMemory(uint64_t size, bool dense) {
    if (size == 0) return;
    if (size < BudgetedMemory::least) {
        m_bytes = std::calloc(size, 1);
        if (!m_bytes) throw std::bad_alloc();
    } else {
        m_bytes = BudgetedMemory::Allocate(size, dense);
    }
    m_size = size;
}

void ZeroedMemory::Release() {
    if (m_size >= BudgetedMemory::least) {
        BudgetedMemory::Release(m_bytes, m_size);
    } else {
        std::free(m_bytes);
    }
}

}  // namespace qve
