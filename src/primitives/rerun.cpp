#include "primitives/run_marks.h"

namespace qve {
namespace {

const registration registered(primitive::klassMap, L"rerun", kernel_span(run_entries<true>));

}  // namespace

void define_rerun() {}

}  // namespace qve
