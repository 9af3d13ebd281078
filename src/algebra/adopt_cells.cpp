#include "algebra/adopt_cells.h"

#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"

namespace qve {

void adopt_cells(Column& target, const Column& source) {
    if (target.IsCompressed()) {
        target.SetDict(source.GetDict() ? source.GetDict() : MakeRef<TempFileDataStream>());
        for (const usrpropkey key : {usrpropkey::distinct, usrpropkey::comparable}) {
            if (!source.HasProperty(key)) target.ClearProperty(key);
        }
        if (target.GetTokenSize() != source.GetTokenSize()) {
            target.SetProperty(usrpropkey::storagewidth, std::to_wstring(source.GetTokenSize()));
        }
    }
    target.SetData(MakeRef<TempFileDataStream>());
}

}  // namespace qve
