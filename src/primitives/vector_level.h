#pragma once

namespace qve {

/// How far dense loops may use the vector unit of the processor. All levels give the same results bit for bit.
enum class vector_level : unsigned char { scalar, sse41, avx2, avx512 };

/// The level of this process: what the processor has, or scalar when vector features are switched off.
vector_level supported_vector_level();

namespace detail {
extern vector_level s_vector_level;  // zero, that is scalar, until static initialisation has set it
}

/// The level kernels use.
inline vector_level current_vector_level() {
    return detail::s_vector_level;
}
/// For tests and measurements, while no kernel runs. A level above the supported one must not be set.
inline void set_vector_level(vector_level level) {
    detail::s_vector_level = level;
}

}  // namespace qve
