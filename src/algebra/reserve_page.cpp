#include "algebra/reserve_page.h"

#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"

namespace qve {

output_column reserve_page(Column& column, unsigned extent) {
    if (column.IsCompressed() && !column.GetDict()) column.SetDict(MakeRef<TempFileDataStream>());
    if (!column.GetData()) column.SetData(MakeRef<TempFileDataStream>());
    if (column.GetLimit() < extent) {
        const uint64_t rows = column.GetCount();
        if (rows < extent) column.Extend(extent - rows);
        column.Seek(0, extent);
    }
    return column.GetOutput(0);
}

}  // namespace qve
