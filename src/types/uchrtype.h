#pragma once

#include "types/scalartype.h"

namespace qve {

/// "uchr": an unsigned char that prints and parses as a number.
class uchrtype : public scalartype<unsigned char> {
public:
    using scalartype<unsigned char>::scalartype;
    std::istream& fromstream(std::istream& stream, usratom& atom) const override;
    std::ostream& tostream(std::ostream& stream, const usratom& atom) const override;
};

}  // namespace qve
