#include "primitives/sum.h"

namespace qve {
namespace {

struct total_op : adding {
    static constexpr const wchar_t* name = L"total";
    static constexpr bool starts_null = false;
};

const register_aggregate<total_op, sum_signatures> registered;

}  // namespace

void define_total() {}

}  // namespace qve
