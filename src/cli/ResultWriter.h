#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "client/qve.h"

namespace qve::cli {

/// One column of a result.
struct ResultColumn {
    std::string name;
    uint32_t type = 0;
    /// Of a column that was imported: how many fields were no values of its type, and the row of the first one.
    uint64_t rejected = 0;
    uint64_t firstRejected = 0;
};

/// Prints one result.
class ResultWriter {
public:
    virtual ~ResultWriter() = default;
    virtual void Begin(const std::vector<ResultColumn>& columns) = 0;
    /// One value for each column; they need not live longer than the call.
    virtual void Row(const QVE_Value* values) = 0;
    /// Not called for a result that breaks off.
    virtual void End() = 0;

    static std::unique_ptr<ResultWriter> Make(Format format, std::ostream& output);
};

/// With `counted` the number of rows stands below.
std::unique_ptr<ResultWriter> MakeTableWriter(std::ostream& output, bool counted = true);
std::unique_ptr<ResultWriter> MakeDelimitedWriter(std::ostream& output, bool tabs);
/// An array of objects, or with `lines` an object a line.
std::unique_ptr<ResultWriter> MakeJsonWriter(std::ostream& output, bool lines);
std::unique_ptr<ResultWriter> MakeVerticalWriter(std::ostream& output);

}  // namespace qve::cli
