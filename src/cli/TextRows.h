#pragma once

#include <string>
#include <vector>

#include "cli/ResultWriter.h"

namespace qve::cli {

/// Keeps a result as texts, for a program that asks questions of its own.
class TextRows : public ResultWriter {
public:
    void Begin(const std::vector<ResultColumn>& resultColumns) override { columns = resultColumns; }
    void Row(const QVE_Value* values) override;
    void End() override {}

    std::vector<ResultColumn> columns;
    std::vector<std::vector<std::string>> rows;
};

}  // namespace qve::cli
