#pragma once

#include <string>
#include <string_view>

namespace qve {

class hashaccel;
class usrheap;

/// Puts vectors of values into a heap, as usrheap::put_bytes puts one. Searches overlap, and new entries come to the
/// stream together. One thread; nothing else may use the heap while put runs.
class heap_loader {
public:
    /// `heap` must live as long.
    explicit heap_loader(usrheap& heap) : m_heap(heap) {}

    /// The tokens of `count` values of the heap's type; all ones for one without data (null pointer). The values must
    /// not lie in the heap's own stream. Throws what put_bytes throws.
    void put(unsigned count, unsigned long long* tokens, const std::string_view* values);

private:
    void put_batch(hashaccel& index, unsigned count, unsigned long long* tokens, const std::string_view* values);
    void add_entry(std::string_view value);
    void flush();

    usrheap& m_heap;
    std::string m_entries;  // on their way to the stream
};

}  // namespace qve
