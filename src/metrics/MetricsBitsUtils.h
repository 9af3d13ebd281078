#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qve::Metrics {

/// Which kinds of events a program emits: one bit a kind. The quoted words are their mnemonics.
struct Bits {
    static constexpr uint64_t Server = uint64_t{1} << 0;     ///< "server": request handlers
    static constexpr uint64_t Query = uint64_t{1} << 1;      ///< "query": parsing, passes, compilation
    static constexpr uint64_t Operators = uint64_t{1} << 2;  ///< "operators": running plans
    static constexpr uint64_t Storage = uint64_t{1} << 3;    ///< "storage": streams, columns, catalog
    static constexpr uint64_t Files = uint64_t{1} << 4;      ///< "files": opening, mapping, renaming
    static constexpr uint64_t Ingest = uint64_t{1} << 5;     ///< "ingest": imports and inserts
    static constexpr uint64_t General = uint64_t{1} << 6;    ///< "general": scopes that name no kind of their own
    static constexpr uint64_t Process = uint64_t{1} << 7;    ///< "process": statistics of the process
    static constexpr uint64_t Threads = uint64_t{1} << 8;    ///< "threads": contexts that open and close
    static constexpr uint64_t Session = uint64_t{1} << 49;   ///< "session": attributes that tie a context to a session
};

/// The text form of a bit mask: mnemonics separated by ",". Lists are read with ",", ";", "|" or blanks between the
/// mnemonics, in any case of letters.
class MetricsBitsUtils {
public:
    /// The mnemonics of `list` that name no bits, joined by ","; empty when all are known.
    static std::string ValidateMnemonicList(std::string_view list);
    /// The bits that `list` names; unknown mnemonics count as nothing.
    static uint64_t ToBits(std::string_view list);
    /// The list of all bits in `bits` that have a mnemonic, in ascending order.
    static std::string ToMnemonics(uint64_t bits);
};

}  // namespace qve::Metrics
