#pragma once

#include <string>
#include <string_view>

namespace qve::QuilICU {

/// The composed form (NFC) of a text, in which texts that look alike by the rules of Unicode are the same code points.
/// Throws QVE_RuntimeError (status::NormaliseWide_Check, status::NormaliseWide_Normalise) when ICU fails.
std::wstring NormaliseWide(std::wstring_view text);

}  // namespace qve::QuilICU
