#pragma once

#include <sstream>
#include <string>

#include "system/UnicodeUnits.h"
#include "types/usrtype.h"
#include "types/varchar.h"

namespace qve::test {

/// A text atom from UTF-8.
inline usratom text(std::string_view utf8, size_t scale = 1, const wchar_t* collation = nullptr) {
    const usrtype* const type = varchar::usrtypeof(varchar::clob_precision, scale, collation);
    std::string units;
    Unicode::AppendUnits(units, utf8, static_cast<unsigned>(scale));
    return usratom(type, units.data(), units.size());
}

/// The UTF-8 of a text atom.
inline std::string utf8(const usratom& atom) {
    std::string buffer;
    return std::string(Unicode::ToUTF8(atom.bytes(), static_cast<unsigned>(atom.type()->scale()), buffer));
}

/// The text form of any atom.
inline std::string printed(const usratom& atom) {
    std::ostringstream stream;
    atom.type()->tostream(stream, atom);
    return stream.str();
}

/// What a type reads from a text form.
inline usratom read(const usrtype* type, const std::string& form) {
    std::istringstream stream(form);
    usratom atom(type);
    type->fromstream(stream, atom);
    return atom;
}

}  // namespace qve::test
