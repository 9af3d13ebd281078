#pragma once

#include <limits>

#include "types/usrheap.h"

namespace qve {

/// A heap whose tokens fit T (unsigned char, short or int) as long as it is not longer than T can say. The all-ones
/// value of T is null too, unless the heap has grown beyond that offset.
template <class T>
class dictionaryheap : public usrheap {
public:
    dictionaryheap(const usrtype* type, DataStream* stream) : usrheap(type, stream, sizeof(T)) { usrheap::begin(); }

    std::string_view bytes(unsigned long long token) const override {
        if (token == std::numeric_limits<T>::max() && next() <= token) return {};
        return usrheap::bytes(token);
    }
};

}  // namespace qve
