#include "commands/ValueGenerator.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "commands/CreateColumn.h"
#include "commands/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"
#include "types/datatraits.h"
#include "types/varchar.h"

namespace qve {

namespace {

constexpr unsigned nullShare = 16;  // one value in so many is null

[[noreturn]] void Raise(const std::string& text) {
    throw QVE_InvalidArgument(status::ValueGenerator, text);
}

/// Draws numbers that are the same on every machine, which the distributions of the library are not.
class Dice {
public:
    explicit Dice(uint64_t seed) : m_engine(seed) {}
    /// From 0 to below `bound`, which is not 0.
    uint64_t Below(uint64_t bound) {
        return static_cast<uint64_t>((static_cast<unsigned __int128>(m_engine()) * bound) >> 64);
    }
    /// From 0 to 1.
    double Share() { return static_cast<double>(m_engine() >> 11) / static_cast<double>((uint64_t{1} << 53) - 1); }

private:
    std::mt19937_64 m_engine;
};

template <class T>
auto RawOf(T value) {
    if constexpr (std::is_arithmetic_v<T>) {
        return value;
    } else {
        return value.value;
    }
}

template <class T>
std::optional<T> ReadBound(const usrprops& properties, usrpropkey key) {
    const std::wstring* text = properties.get(key);
    if (!text) return std::nullopt;
    const std::string bytes = narrow(*text);
    const usrtype* type = builtin::usrtypeof<T>();
    usratom atom;
    if (type->frombuffer(atom, 0, static_cast<unsigned>(bytes.size()), bytes.data()) || atom.isnull()) {
        Raise("ScalarGenerator: \"" + bytes + "\" is no value of type " + narrow(type->name()));
    }
    T value;
    std::memcpy(&value, atom.data(), sizeof value);
    return value;
}

/// The property `cardinality`; 0 when it is absent.
uint64_t ReadCardinality(const usrprops& properties, const char* generator) {
    if (!properties.has(usrpropkey::cardinality)) return 0;
    const long long count = properties.number(usrpropkey::cardinality, 0);
    if (count <= 0) Raise(std::string(generator) + ": cardinality of 0");
    return static_cast<uint64_t>(count);
}

/// Fixed values. Value i of the range is its minimum and i steps.
template <class T>
class ScalarGenerator : public ValueGenerator {
    using Raw = decltype(RawOf(T{}));

public:
    ScalarGenerator(const usrprops& properties, bool random, uint64_t seed)
        : m_dice(seed), m_random(random), m_nulls(random && !properties.has(usrpropkey::not_null)) {
        const std::optional<T> least = ReadBound<T>(properties, usrpropkey::min_value);
        const std::optional<T> most = ReadBound<T>(properties, usrpropkey::max_value);
        if (!least) Raise("ScalarGenerator: no minimum");
        if (!most && random) Raise("ScalarGenerator: no maximum");
        m_least = RawOf(*least);
        if (most && RawOf(*most) < m_least) Raise("ScalarGenerator: the maximum is below the minimum");
        m_count = ReadCardinality(properties, "ScalarGenerator");
        m_span = most ? Distance(RawOf(*most)) : 0;
        m_bounded = most.has_value();
        if (m_count == 0 && m_bounded) m_count = random && std::is_floating_point_v<Raw> ? 0 : Places(m_span);
        if (m_bounded && m_count != 0) m_count = std::min(m_count, Places(m_span));
    }

    void Next(unsigned count, Column& column) override {
        const uint64_t row = column.GetCount();
        column.Extend(count);
        T* const out = column.GetOutput().template values<T>();
        for (unsigned i = 0; i < count; ++i) out[i] = m_random ? Draw() : At(m_count ? (row + i) % m_count : row + i);
    }

private:
    using Span = std::conditional_t<std::is_floating_point_v<Raw>, double, uint64_t>;

    Span Distance(Raw to) const {
        if constexpr (std::is_floating_point_v<Raw>) {
            return static_cast<double>(to) - static_cast<double>(m_least);
        } else {
            return static_cast<uint64_t>(to) - static_cast<uint64_t>(m_least);
        }
    }
    /// How many values a range has; at least one, and 0 stands for all of 64 bits.
    static uint64_t Places(Span span) {
        if constexpr (std::is_floating_point_v<Raw>) {
            return span >= 9e18 ? uint64_t{1} << 62 : static_cast<uint64_t>(span) + 1;
        } else {
            return span + 1;
        }
    }
    T At(uint64_t place) const {
        if constexpr (std::is_floating_point_v<Raw>) {
            // Over a range with a count the values lie evenly.
            const bool even = m_random && m_count > 1;
            const double step = even ? m_span / static_cast<double>(m_count - 1) : 1.0;
            return static_cast<T>(static_cast<double>(m_least) + step * static_cast<double>(place));
        } else {
            uint64_t offset = place;
            if (m_random && m_count > 1) {
                offset = static_cast<uint64_t>(static_cast<unsigned __int128>(m_span) * place / (m_count - 1));
            }
            return T{static_cast<Raw>(static_cast<uint64_t>(m_least) + offset)};
        }
    }
    T Draw() {
        if (m_nulls && m_dice.Below(nullShare) == 0) return datatraits<T>::null;
        if constexpr (std::is_floating_point_v<Raw>) {
            if (m_count == 0) return static_cast<T>(static_cast<double>(m_least) + m_span * m_dice.Share());
        } else if (m_count == 0) {
            return At(m_dice.Below(~uint64_t{0}));
        }
        return At(m_dice.Below(m_count));
    }

    Dice m_dice;
    const bool m_random;
    const bool m_nulls;
    bool m_bounded = false;
    Raw m_least;
    Span m_span = 0;
    uint64_t m_count = 0;  // of different values; 0 for as many as come
};

/// Words, a letter at a time, by the frequency of English letters.
class EnglishGenerator {
public:
    explicit EnglishGenerator(Dice& dice) : m_dice(dice) {}

    std::string PickWord() {
        std::string word(2 + m_dice.Below(9), ' ');
        for (char& letter : word) letter = PickLetter();
        return word;
    }

private:
    char PickLetter() {
        // Per ten thousand letters of text, from a to z.
        static constexpr unsigned frequency[26] = {817, 149, 278, 425, 1270, 223, 202, 609, 697, 15,  77, 403, 241,
                                                   675, 751, 193, 10,  599,  633, 906, 276, 98,  236, 15, 197, 7};
        static constexpr unsigned total = [] {
            unsigned sum = 0;
            for (const unsigned share : frequency) sum += share;
            return sum;
        }();
        uint64_t place = m_dice.Below(total);
        char letter = 'a';
        for (const unsigned share : frequency) {
            if (place < share) break;
            place -= share;
            ++letter;
        }
        return letter;
    }

    Dice& m_dice;
};

/// Words out of a dictionary that is made first.
class VarcharGenerator : public ValueGenerator {
public:
    VarcharGenerator(const usrprops& properties, const usrtype& type, uint64_t seed)
        : m_dice(seed), m_nulls(!properties.has(usrpropkey::not_null)) {
        const uint64_t count = ReadCardinality(properties, "VarcharGenerator");
        if (count == 0) Raise("VarcharGenerator: cardinality of 0");
        // A dictionary that does not fit the tokens, or memory.
        if (count > (uint64_t{1} << 26)) Raise("VarcharGenerator: tokens overflow");
        EnglishGenerator english(m_dice);
        std::unordered_set<std::string> words;
        while (words.size() < count) {
            std::string word = english.PickWord();
            // Short words run out before long ones.
            while (words.count(word) != 0) word += english.PickWord();
            m_words.emplace_back(&type);
            const usratom plain(varchar::usrtypeof(varchar::clob_precision, 1), word.data(), word.size());
            type.cast(m_words.back(), plain);
            words.insert(std::move(word));
        }
    }

    void Next(unsigned count, Column& column) override {
        if (m_tokens.empty()) {
            for (const usratom& word : m_words) m_tokens.push_back(column.GetHeap()->put(word));
        }
        column.Extend(count);
        unsigned long long* const out = column.GetOutput().values<unsigned long long>();
        for (unsigned i = 0; i < count; ++i) {
            const bool null = m_nulls && m_dice.Below(nullShare) == 0;
            out[i] = null ? usrheap::null_token : m_tokens[m_dice.Below(m_tokens.size())];
        }
    }

private:
    Dice m_dice;
    const bool m_nulls;
    std::vector<usratom> m_words;
    std::vector<unsigned long long> m_tokens;
};

}  // namespace

std::unique_ptr<ValueGenerator> ValueGenerator::Make(const usrprops& properties, const usrtype& type, uint64_t seed) {
    const std::wstring_view mode = properties.text(CreateColumn::propGeneratedBy);
    const bool random = mode == CreateColumn::generateRandom;
    if (!random && mode != CreateColumn::generateAffine) {
        Raise("CreateColumn: unknown generator: " + narrow(mode));
    }
    if (dynamic_cast<const varchar*>(&type)) {
        if (!random) Raise("VarcharGenerator: texts are drawn at random only");
        return std::make_unique<VarcharGenerator>(properties, type, seed);
    }
    std::unique_ptr<ValueGenerator> made;
    const auto make = [&]<class T>(T) {
        if (type.name() != datatraits<T>::name) return false;
        made = std::make_unique<ScalarGenerator<T>>(properties, random, seed);
        return true;
    };
    const auto any = [&](auto... atoms) { return (make(atoms) || ...); };
    if (any(bit{}, char{}, short{}, int{}, bigint{}, uchr{}, usht{}, ulng{}, oid{}, float{}, double{}, date{},
            datetime{}, duration{})) {
        return made;
    }
    Raise("CreateColumn: no generator for type " + narrow(type.name()));
}

}  // namespace qve
