#include "primitives/run_marks.h"

namespace qve {
namespace {

const registration registered(primitive::klassMap, L"run", kernel_span(run_entries<false>));

}  // namespace

void define_run() {}

}  // namespace qve
