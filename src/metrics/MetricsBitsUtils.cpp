#include "metrics/MetricsBitsUtils.h"

#include <cctype>
#include <utility>

namespace qve::Metrics {

namespace {

constexpr std::pair<std::string_view, uint64_t> mnemonics[] = {
    {"server", Bits::Server},   {"query", Bits::Query},     {"operators", Bits::Operators}, {"storage", Bits::Storage},
    {"files", Bits::Files},     {"ingest", Bits::Ingest},   {"general", Bits::General},     {"process", Bits::Process},
    {"threads", Bits::Threads}, {"session", Bits::Session},
};

constexpr uint64_t all_bits() {
    uint64_t bits = 0;
    for (const auto& [mnemonic, bit] : mnemonics) bits |= bit;
    return bits;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

// The bits of one mnemonic; 0 when it is unknown.
uint64_t bits_of(std::string_view mnemonic) {
    if (equal_ignoring_case(mnemonic, "all")) return all_bits();
    for (const auto& [name, bit] : mnemonics) {
        if (equal_ignoring_case(mnemonic, name)) return bit;
    }
    return 0;
}

template <class Visit>
void for_each_mnemonic(std::string_view list, Visit visit) {
    constexpr std::string_view separators = ",;| \t";
    for (size_t begin = list.find_first_not_of(separators); begin != list.npos;) {
        const size_t end = std::min(list.find_first_of(separators, begin), list.size());
        visit(list.substr(begin, end - begin));
        begin = list.find_first_not_of(separators, end);
    }
}

void join(std::string& list, std::string_view mnemonic) {
    if (!list.empty()) list += ',';
    list += mnemonic;
}

}  // namespace

std::string MetricsBitsUtils::ValidateMnemonicList(std::string_view list) {
    std::string unknown;
    for_each_mnemonic(list, [&](std::string_view mnemonic) {
        if (bits_of(mnemonic) == 0) join(unknown, mnemonic);
    });
    return unknown;
}

uint64_t MetricsBitsUtils::ToBits(std::string_view list) {
    uint64_t bits = 0;
    for_each_mnemonic(list, [&](std::string_view mnemonic) { bits |= bits_of(mnemonic); });
    return bits;
}

std::string MetricsBitsUtils::ToMnemonics(uint64_t bits) {
    std::string list;
    for (const auto& [mnemonic, bit] : mnemonics) {
        if (bits & bit) join(list, mnemonic);
    }
    return list;
}

}  // namespace qve::Metrics
