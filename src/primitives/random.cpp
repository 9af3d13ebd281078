#include <atomic>
#include <random>

#include "primitives/capacity.h"
#include "primitives/kernel_table.h"
#include "primitives/random_numbers.h"

namespace qve {
namespace {

// The k-th draw of the process is a mix of this and k: threads share no more than the count, and a page is one loop.
std::atomic<uint64_t>& state() {
    static std::atomic<uint64_t> next{uint64_t{std::random_device()()} << 32 | std::random_device()()};
    return next;
}

constexpr uint64_t stride = 0x9E3779B97F4A7C15;

uint64_t mixed(uint64_t x) {
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
    return x ^ (x >> 31);
}

// From 0, below 1, a multiple of 2 to the power of -53.
unsigned random(unsigned n, output_column out, unsigned const* sel) {
    n = rows_that_fit(n, out, sizeof(double), sel);
    const uint64_t first = state().fetch_add(n * stride, std::memory_order_relaxed);
    double* values = out.values<double>();
    for (unsigned k = 0; k < n; ++k) {
        const double fraction = static_cast<double>(mixed(first + k * stride) >> 11) * 0x1p-53;
        values[sel ? sel[k] : k] = fraction;
    }
    if (out.flags) *out.flags |= column_flags::not_null;
    return n;
}

constexpr kernel_entry<nullary_func> kernels[] = {{&random, L"double", {}, {}}};
const registration registered(primitive::klassMap, L"random", std::span<const kernel_entry<nullary_func>>(kernels));

}  // namespace

void seed_random_numbers(uint64_t seed) {
    state() = mixed(seed);
}

void define_random() {}

}  // namespace qve
