// A client may send any bytes as the values of an insert: they become rows, nulls or numbered errors.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ingest/BinaryScan.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "types/builtin.h"
#include "types/types_initialization.h"
#include "types/varchar.h"

namespace {

using namespace qve;

usrprops Named(usrprops type, const wchar_t* name) {
    type.set(usrpropkey::name, name);
    return type;
}

const std::vector<usrprops>& Columns() {
    static const std::vector<usrprops> columns = [] {
        types_initialization();
        return std::vector<usrprops>{
            Named(builtin::primitive_props(L"bigint"), L"a"),
            Named(varchar::propsof(varchar::clob_precision, 1), L"b"),
            Named(varchar::propsof(5, 2), L"c"),
            Named(builtin::primitive_props(L"double"), L"d"),
            Named(builtin::primitive_props(L"datetime"), L"e"),
            Named(builtin::primitive_props(L"bit"), L"f"),
            Named(builtin::primitive_props(L"duration"), L"g"),
            Named(builtin::primitive_props(L"date"), L"h"),
            Named(builtin::primitive_props(L"tiny"), L"i"),
        };
    }();
    return columns;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The first byte is the page size, the second the number of columns; the rest are blocks of a length byte times 8.
    if (size < 2) return 0;
    const unsigned pageSize = 1 + data[0] % 64;
    const std::vector<usrprops>& all = Columns();
    const std::vector<usrprops> columns(all.begin(), all.begin() + 1 + data[1] % all.size());
    BinaryScan::Queue queue;
    for (std::size_t at = 2; at < size;) {
        const std::size_t length = std::min<std::size_t>(std::size_t{data[at]} * 8, size - at - 1);
        auto block = MakeRef<BinaryScan::Block>();
        block->message.resize(length);
        if (length > 0) std::memcpy(block->message.data(), data + at + 1, length);
        queue.push(block);
        at += 1 + length;
    }
    queue.push(nullptr);
    BinaryScan scan(columns, queue);
    uint64_t rows = 0;
    try {
        while (const unsigned extent = scan.Next(pageSize)) {
            if (extent > pageSize) __builtin_trap();
            rows += extent;
            for (const usrprops& column : columns) {
                const RefCntPtr<Column> values = scan.GetColumn(*column.get(usrpropkey::name));
                usratom atom;
                for (unsigned row = 0; row < extent; ++row) values->GetType()->get(values->GetInput(0), row, atom);
            }
        }
        if (rows != scan.GetCursor()) __builtin_trap();
    } catch (const QuillonException&) {
    }
    return 0;
}
