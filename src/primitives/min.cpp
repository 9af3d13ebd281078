#include "primitives/extreme.h"

namespace qve {
namespace {

struct min_op : extreme<false> {
    static constexpr const wchar_t* name = L"min";
};

const register_extreme<min_op> registered(min_op::name);

}  // namespace

void define_min() {}

}  // namespace qve
