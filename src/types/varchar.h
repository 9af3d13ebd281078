#pragma once

#include <cstddef>
#include <vector>

#include "types/usrtype.h"

namespace qve {

/// The type of text: UTF-8, UTF-16 or UTF-32 by `scale` (1, 2, 4), at most `precision` characters, ordered by a
/// collation.
class varchar : public usrtype {
public:
    /// The precision of text without a limit; its types are named "clob".
    static constexpr size_t clob_precision = 0x3FFFFFFF;

    explicit varchar(usrprops properties);

    /// Makes text types known; called by types_initialization.
    static void register_types();
    /// The factory of the property `factory-varchar`, in which nothing is registered.
    static typefactory& varchar_factory();

    /// A text type. A null collation means "binary". Throws QVE_InvalidArgument 40691 for a scale other than 1, 2 and
    /// 4, QVE_RangeError 40662 for an unknown collation.
    static const usrtype* usrtypeof(size_t precision, size_t scale, const wchar_t* collation = nullptr);
    /// The property set of that type.
    static usrprops propsof(size_t precision, size_t scale, const wchar_t* collation = nullptr);

    using types_iterator = std::vector<const usrtype*>::const_iterator;
    /// The text type able to hold any one of a list of types: the greatest scale and precision, the first collation.
    static const usrtype* maxtype(types_iterator begin, types_iterator end);
    /// The text type able to hold the concatenation of all of a list of types: the precisions add up.
    static const usrtype* sumtype(types_iterator begin, types_iterator end);

    std::istream& fromstream(std::istream& stream, usratom& atom) const override;
    std::ostream& tostream(std::ostream& stream, const usratom& atom) const override;
    bool validate(const usratom& atom) const override;
    void cast(usratom& to, const usratom& from) const override;
    unsigned hash(const usratom& atom) const override;
    void hash(unsigned count, output_column out, input_column in, const unsigned* selection) const override;
    int compare(const usratom& left, const usratom& right) const override;
    void compare(unsigned count, output_column out, input_column left, input_column right,
                 const unsigned* selection) const override;
};

}  // namespace qve
