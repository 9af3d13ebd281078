#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

#include "os/Semaphore.h"
#include "system/RefCntObject.h"

namespace qve::Server {

/// An unbounded queue between threads: no producer ever blocks. A null item tells a consumer to stop.
template <class T>
class Queue : public RefCntObject {
public:
    Queue() : m_items(Semaphore::Construct()) {}

    /// Gives the length right after the item was added.
    std::size_t Push(T item) {
        std::size_t length;
        {
            std::lock_guard lock(m_mutex);
            m_deque.push_back(std::move(item));
            length = m_deque.size();
        }
        m_items->Release();
        return length;
    }
    /// Waits for an item.
    T Pop() {
        m_items->Acquire();
        std::lock_guard lock(m_mutex);
        T item = std::move(m_deque.front());
        m_deque.pop_front();
        return item;
    }
    /// Turns everything that waits into stop signs. For pointers.
    void Abandon() {
        std::deque<T> abandoned;
        {
            std::lock_guard lock(m_mutex);
            abandoned.resize(m_deque.size());
            abandoned.swap(m_deque);
        }
    }

private:
    const std::unique_ptr<Semaphore> m_items;
    std::mutex m_mutex;
    std::deque<T> m_deque;
};

}  // namespace qve::Server
