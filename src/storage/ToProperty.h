#pragma once

#include <string>

namespace qve {

class usratom;

/// The text of a value in the properties of a column.
std::wstring ToProperty(const usratom& atom);

}  // namespace qve
