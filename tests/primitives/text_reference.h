#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/primitives/test_column.h"

namespace qve::test {

/// A text by its characters, or a null.
using characters = std::optional<std::u32string>;

std::string to_utf8(const std::u32string& text);
std::u32string from_utf8(const std::string& text);

/// An argument or a result of an operation with texts: a text, or a value of a plain type.
struct text_or_cell {
    bool is_text = false;
    characters text;
    cell number;

    static text_or_cell of(characters text) { return {true, std::move(text), {}}; }
    static text_or_cell of(const cell& number) { return {false, {}, number}; }
    bool is_null() const { return is_text ? !text : number.null; }
};
std::string text_of(const text_or_cell& value);
bool same(const text_or_cell& a, const text_or_cell& b);

/// What one row of an operation gives, computed the slow way, in the binary collation; `result` is the type of what is
/// no text.
using text_reference = text_or_cell (*)(const std::wstring& result, const std::vector<text_or_cell>& arguments);

/// The reference of a map or select of which an argument or the result is a text; null when there is none.
text_reference text_reference_of(const std::wstring& operation);

/// A text as a number of a plain type, or a date; null where it is none.
cell parsed(const type_info& type, const characters& text);
/// A value of a plain type as a text.
characters printed(const type_info& type, const cell& value);

}  // namespace qve::test
