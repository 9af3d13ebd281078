#include "storage/dictionary_look_up.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "primitives/vector_level.h"

namespace qve {
namespace {

// Every size of dictionary that has a way of its own, with and without vector instructions, and counts that leave rows
// behind the last whole register.
TEST(DictionaryLookUp, GivesTheCellsOfTheNumbers) {
    std::mt19937 random(7);
    for (const vector_level level : {vector_level::scalar, supported_vector_level()}) {
        set_vector_level(level);
        for (const unsigned width : {1u, 2u, 4u, 8u}) {
            for (const unsigned bits : {1u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 13u}) {
                std::string dictionary(size_t{width} << bits, '\0');
                for (char& byte : dictionary) byte = static_cast<char>(random());
                for (const unsigned count : {0u, 1u, 7u, 31u, 32u, 33u, 100u, 1024u}) {
                    const unsigned indexWidth = look_up_index_width(width, bits);
                    std::string numbers(size_t{count} * indexWidth, '\0');
                    std::string expected;
                    for (unsigned i = 0; i < count; ++i) {
                        const uint32_t number = random() & ((1u << bits) - 1);
                        std::memcpy(&numbers[size_t{i} * indexWidth], &number, indexWidth);
                        expected += dictionary.substr(size_t{number} * width, width);
                    }
                    std::string out(expected.size(), '\0');
                    look_up(numbers.data(), count, dictionary.data(), width, bits, out.data());
                    ASSERT_EQ(out, expected) << "width " << width << ", bits " << bits << ", count " << count;
                }
            }
        }
    }
    set_vector_level(supported_vector_level());
}

}  // namespace
}  // namespace qve
