#include "cli/ResultWriter.h"

namespace qve::cli {

std::unique_ptr<ResultWriter> ResultWriter::Make(Format format, std::ostream& output) {
    switch (format) {
        case Format::csv:
            return MakeDelimitedWriter(output, false);
        case Format::tsv:
            return MakeDelimitedWriter(output, true);
        case Format::json:
            return MakeJsonWriter(output, false);
        case Format::jsonl:
            return MakeJsonWriter(output, true);
        case Format::vertical:
            return MakeVerticalWriter(output);
        default:
            return MakeTableWriter(output);
    }
}

}  // namespace qve::cli
