#pragma once

#include <fstream>
#include <ostream>
#include <string>

namespace qve::cli {

/// A file that takes its place when it is whole; without Finish nothing of it stays.
class OutputFile {
public:
    /// Throws std::runtime_error when it cannot be made.
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& GetStream() { return m_file; }
    /// Throws std::runtime_error when not all could be written.
    void Finish();

private:
    const std::string m_path;
    std::string m_partial;
    std::ofstream m_file;
};

}  // namespace qve::cli
