#pragma once

#include <cstddef>
#include <string_view>

namespace qve {

/// The seed of every hash of bytes.
inline constexpr unsigned hash_seed = 0xDEADBEEF;

/// A 32-bit hash of bytes: Bob Jenkins' lookup2 of 1996, in rounds of 12 bytes.
unsigned hashfunc(const void* data, size_t length, unsigned seed = hash_seed);

/// The same of many texts, several at a time in the lanes of vectors.
void hashfunc(size_t count, const std::string_view* texts, unsigned* hashes, unsigned seed = hash_seed);

}  // namespace qve
