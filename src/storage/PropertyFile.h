#pragma once

#include <string>
#include <string_view>

#include "storage/TableSpace.h"
#include "types/usrprops.h"

namespace qve {

/// The text of a property file: UTF-8, a line `key:value` for each property, in the order of the keys' texts.
std::string FormatProperties(const usrprops& properties);
/// The reverse. A line is taken apart at its first ":"; empty lines, lines that begin with "#", lines without ":" and
/// lines with an empty key or value are skipped; a carriage return at the end of a line is dropped. Later lines
/// overrule earlier ones.
usrprops ParseProperties(std::string_view text);

/// Reads a property file whole. Throws QVE_RuntimeError (status::ReadPropertyFile) when it is too long to be one.
usrprops ReadPropertyFile(TableSpace& space, const std::wstring& path);
/// Writes a property file whole, over one that exists. The file must have been created.
void WritePropertyFile(TableSpace& space, const std::wstring& path, const usrprops& properties);

}  // namespace qve
