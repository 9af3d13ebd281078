#include "cli/OutputFile.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace qve::cli {

OutputFile::OutputFile(const std::string& path) : m_path(path), m_partial(path + ".partial") {
    m_file.open(m_partial, std::ios::binary | std::ios::trunc);
    if (!m_file) throw std::runtime_error("cannot write " + m_partial);
}

OutputFile::~OutputFile() {
    if (m_partial.empty()) return;
    std::error_code ignored;
    std::filesystem::remove(m_partial, ignored);
}

void OutputFile::Finish() {
    m_file.close();
    if (!m_file) throw std::runtime_error("cannot write " + m_partial + ": is the disk full?");
    std::filesystem::rename(m_partial, m_path);
    m_partial.clear();
}

}  // namespace qve::cli
