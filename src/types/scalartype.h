#pragma once

#include "types/builtin.h"

namespace qve {

/// The type of the atoms of one value type T.
template <class T>
class scalartype : public builtin {
public:
    explicit scalartype(usrprops properties);

    bool frombuffer(usratom& atom, unsigned begin, unsigned end, const char* buffer) const override;
    std::istream& fromstream(std::istream& stream, usratom& atom) const override;
    std::ostream& tostream(std::ostream& stream, const usratom& atom) const override;
    bool validate(const usratom& atom) const override;
    void cast(usratom& to, const usratom& from) const override;
    unsigned hash(const usratom& atom) const override;
    void hash(unsigned count, output_column out, input_column in, const unsigned* selection) const override;
    int compare(const usratom& left, const usratom& right) const override;
    void compare(unsigned count, output_column out, input_column left, input_column right,
                 const unsigned* selection) const override;
    void put(output_column column, unsigned long row, const usratom& atom) const override;
    void get(input_column column, unsigned long row, usratom& atom) const override;
    usratom null() const override;

    /// The value of an atom of this type; the stored null for a null.
    static T value(const usratom& atom);
    /// Makes `atom` hold `value`.
    void store(usratom& atom, T value) const;
};

}  // namespace qve
