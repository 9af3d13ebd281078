#include "algebra/CollectingExp.h"

#include "storage/stream/TempFileDataStream.h"

namespace qve {

void CollectingExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
}

void CollectingExp::MakeResultColumn(usrprops properties) {
    properties.set(usrpropkey::name, GetName());
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
}

}  // namespace qve
