#include "primitives/sum.h"

namespace qve {
namespace {

struct sum_op : adding {
    static constexpr const wchar_t* name = L"sum";
    static constexpr bool starts_null = true;
};

const register_aggregate<sum_op, sum_signatures> registered;

}  // namespace

void define_sum() {}

}  // namespace qve
