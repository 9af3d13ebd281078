// Text files of arbitrary bytes, scanned by detection alone: every column of every record is parsed, or the text is
// refused with a number. What the scan found out makes a second one give as many records and as many refused values.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "ingest/TextScan.h"
#include "primitives/define_primitives.h"
#include "storage/Column.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/QuillonException.h"
#include "types/types_initialization.h"

namespace {

using namespace qve;

struct Totals {
    uint64_t rows = 0;
    uint64_t nulls = 0;
    bool operator==(const Totals&) const = default;
};

RefCntPtr<DataStream> StreamOf(const uint8_t* bytes, size_t size) {
    return MakeRef<MemoryDataStream>(reinterpret_cast<const char*>(bytes), size);
}

Totals Drain(TextScan& scan) {
    constexpr unsigned pageSize = 100;
    Totals totals;
    usratom value;
    while (const unsigned extent = scan.Next(pageSize)) {
        totals.rows += extent;
        for (const std::wstring& name : scan.GetColumnNames()) {
            const RefCntPtr<Column> column = scan.GetColumn(name);
            for (unsigned row = 0; row < extent; ++row) {
                column->GetType()->get(column->GetInput(), row, value);
                totals.nulls += value.isnull();
            }
        }
    }
    return totals;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    static const bool once = (types_initialization(), define_primitives(), true);
    (void)once;
    try {
        TextScan scan(StreamOf(bytes, size), {}, {});
        const Totals found = Drain(scan);
        TextScan again(StreamOf(bytes, size), scan.GetSchema(), scan.GetTextProperties());
        if (!(Drain(again) == found)) {
            std::fprintf(stderr, "the second scan differs\n");
            std::abort();
        }
    } catch (const QuillonException& fault) {
        if (fault.GetStatus() != 0 && !fault.GetText().empty()) return 0;
        std::fprintf(stderr, "refused without a number\n");
        std::abort();
    }
    return 0;
}
