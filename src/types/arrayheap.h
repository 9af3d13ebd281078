#pragma once

#include "types/usrheap.h"

namespace qve {

/// The heap of a fixed type: records of the type's size. Token k is the ordinal of an entry, which lies at (k + 1)
/// times the size; the first record is the null.
class arrayheap : public usrheap {
public:
    arrayheap(const usrtype* type, DataStream* stream);

    unsigned long long next() const override;
    unsigned long long first() const override { return 0; }
    unsigned long long after(unsigned long long token) const override { return token + 1; }
    std::string_view bytes(unsigned long long token) const override;

protected:
    unsigned long long append(std::string_view bytes) override;
    void begin() override;
};

}  // namespace qve
