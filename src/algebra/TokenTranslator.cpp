#include "algebra/TokenTranslator.h"

#include "storage/Column.h"
#include "types/usratom.h"
#include "types/usrtype.h"

namespace qve {

namespace {

void Put(unsigned count, const unsigned* rows, const usrtype& from, const input_column& tokens, const usrtype& to,
         const output_column& out) {
    usratom value;
    for (unsigned k = 0; k < count; ++k) {
        const unsigned i = rows ? rows[k] : k;
        from.get(tokens, i, value);
        to.put(out, i, value);
    }
}

}  // namespace

void TokenTranslator::Translate(unsigned count, const unsigned* sel, const Column& source, const input_column& tokens,
                                const Column& target, const output_column& out) {
    const usrtype& from = *source.GetType();
    const usrtype& to = *target.GetType();
    if (!m_memo.Begin(source)) {
        Put(count, sel, from, tokens, to, out);
        return;
    }
    const std::span<const unsigned> missing = m_memo.Recall(count, sel, tokens, out);
    Put(static_cast<unsigned>(missing.size()), missing.data(), from, tokens, to, out);
    m_memo.Remember(missing, tokens, out);
}

}  // namespace qve
