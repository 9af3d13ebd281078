#pragma once

#include <cstdint>

/// Numbers of the package format that its reader and its writer share.
namespace qve::Package {

constexpr uint64_t magic = 0x0C0DA7E462010220;
constexpr uint32_t versionWritten = 2;
constexpr uint32_t fileTag = 0x7812CAF0;
constexpr uint32_t directoryTag = 0x7812CAF1;
/// Data and nodes begin at multiples of this.
constexpr uint64_t alignment = 16;
/// Where the header says where the root lies.
constexpr uint64_t rootOffset = 12;
/// Bytes of a file node without a text of its own: tag, range, the empty string. No directory node has this length.
constexpr uint64_t plainFileNode = 4 + 16 + 4 + 2;

}  // namespace qve::Package
