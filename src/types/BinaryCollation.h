#pragma once

#include "types/collation.h"

namespace qve {

/// "binary": order of code units. Texts of one scale compare and hash by their bytes; of different scales, by what they
/// are in UTF-16.
class BinaryCollation : public collation {
public:
    BinaryCollation() : collation(collationBinary) {}

    void sortkey(std::vector<unsigned char>& key, const usratom& text) const override;
    unsigned hash(const usratom& text) const override;
    int compare(const usratom& left, const usratom& right) const override;
    bool startswith(const usratom& text, const usratom& part) const override;
    bool endswith(const usratom& text, const usratom& part) const override;
    int find(const usratom& text, const usratom& part, int start) const override;
    int findNth(const usratom& text, const usratom& part, int n) const override;
    void split(usratom& result, const usratom& text, const usratom& delimiter, int n) const override;
    bool contains(const usratom& text, const usratom& part) const override;
    void replace(usratom& result, const usratom& text, const usratom& from, const usratom& to) const override;
    void upper(const usratom& text, usratom& result) const override;
    void lower(const usratom& text, usratom& result) const override;
};

}  // namespace qve
