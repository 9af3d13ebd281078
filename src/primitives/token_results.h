#pragma once

#include "primitives/primitive_result.h"

namespace qve {

/// Results of operations that may run on the tokens of a dictionary column when it has a certain property, and whose
/// result is a plain value that says nothing of the dictionary.
class token_result : public primitive_result {
public:
    token_result(std::wstring_view name, usrpropkey needed) : primitive_result(name), m_needed(needed) {}
    usrpropkey tokenprop() const override { return m_needed; }

private:
    usrpropkey m_needed;
};

/// Counts any dictionary column by token.
class count_result : public token_result {
public:
    explicit count_result(std::wstring_view name) : token_result(name, usrpropkey::compression) {}
};
/// Orders: only tokens that are in the order of their values.
class lt_result : public token_result {
public:
    explicit lt_result(std::wstring_view name) : token_result(name, usrpropkey::comparable) {}
};
using le_result = lt_result;
using gt_result = lt_result;
using ge_result = lt_result;
/// Equality and hashing: only tokens that are unique per value.
class eq_result : public token_result {
public:
    explicit eq_result(std::wstring_view name) : token_result(name, usrpropkey::distinct) {}
};
using ne_result = eq_result;
using hash_result = eq_result;
using rehash_result = eq_result;
using radixhash_result = eq_result;
using radixgrp_result = eq_result;

/// Results that are values of an argument: the result has the type of that argument, and where it is of a dictionary
/// also what tells of the dictionary.
class value_result : public primitive_result {
public:
    /// `argument` counts from 0; `share` marks the result as taking over the dictionary of the argument.
    value_result(std::wstring_view name, usrpropkey needed, unsigned argument, bool share)
        : primitive_result(name), m_needed(needed), m_argument(argument), m_share(share) {}
    usrpropkey tokenprop() const override { return m_needed; }
    usrprops result_props(primitive const* p, std::vector<usrprops> const& inputs) const override;

private:
    usrpropkey m_needed;
    unsigned m_argument;
    bool m_share;
};

/// One of two values: a text type that holds both.
class winner_result : public value_result {
public:
    explicit winner_result(std::wstring_view name) : value_result(name, usrpropkey::empty, 0, false) {}
    usrprops result_props(primitive const* p, std::vector<usrprops> const& inputs) const override;
};

/// Any value of a group, by token of any dictionary.
class any_result : public value_result {
public:
    explicit any_result(std::wstring_view name) : value_result(name, usrpropkey::compression, 0, true) {}
};
using anyif_result = any_result;
/// The values at positions; the source is the second argument.
class fetch_result : public value_result {
public:
    explicit fetch_result(std::wstring_view name) : value_result(name, usrpropkey::compression, 1, false) {}
};
/// The least or greatest value, by token where tokens are in the order of their values.
class min_result : public value_result {
public:
    explicit min_result(std::wstring_view name) : value_result(name, usrpropkey::comparable, 0, true) {}
};
using max_result = min_result;

/// Changes of the width of positions and tokens: of a dictionary column the result is one too.
template <class T>
class index_result : public primitive_result {
public:
    explicit index_result(std::wstring_view name) : primitive_result(name) {}
    usrpropkey tokenprop() const override { return usrpropkey::compression; }
    usrprops result_props(primitive const* p, std::vector<usrprops> const& inputs) const override {
        usrprops properties = primitive_result::result_props(p, inputs);
        if (inputs.empty()) return properties;
        for (const usrpropkey key : {usrpropkey::compression, usrpropkey::default_value}) {
            if (const std::wstring* value = inputs.front().get(key)) properties.set(key, *value);
        }
        return properties;
    }
};

/// Sort keys: bytes that compare as such, whatever the collation of the text was.
class sortkey_result : public primitive_result {
public:
    explicit sortkey_result(std::wstring_view name) : primitive_result(name) {}
    usrprops result_props(primitive const* p, std::vector<usrprops> const& inputs) const override;
};

/// Results that are new texts: without limit of length, in the widest code unit of the text arguments and the collation
/// of the first. Texts made of other values are UTF-8 in the binary collation.
class text_result : public primitive_result {
public:
    explicit text_result(std::wstring_view name) : primitive_result(name) {}
    usrprops result_props(primitive const* p, std::vector<usrprops> const& inputs) const override;
};

}  // namespace qve
