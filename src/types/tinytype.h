#pragma once

#include "types/scalartype.h"

namespace qve {

/// "tiny": a char that prints and parses as a number.
class tinytype : public scalartype<char> {
public:
    using scalartype<char>::scalartype;
    std::istream& fromstream(std::istream& stream, usratom& atom) const override;
    std::ostream& tostream(std::ostream& stream, const usratom& atom) const override;
};

}  // namespace qve
