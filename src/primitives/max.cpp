#include "primitives/extreme.h"

namespace qve {
namespace {

struct max_op : extreme<true> {
    static constexpr const wchar_t* name = L"max";
};

const register_extreme<max_op> registered(max_op::name);

}  // namespace

void define_max() {}

}  // namespace qve
