#include "server/Formatter.h"

#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include "server/Datatype.h"
#include "server/status.h"
#include "server/swizzle.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/datatraits.h"
#include "types/heap_reader.h"

namespace qve::Server {
namespace {

/// What goes on the wire for a T: the value itself, or the payload that it is swizzled to.
template <class T>
using Payload =
    std::conditional_t<std::is_same_v<T, date>, QVE_WireDate,
                       std::conditional_t<std::is_same_v<T, datetime>, QVE_WireDatetime,
                                          std::conditional_t<std::is_same_v<T, duration>, QVE_WireDuration, T>>>;

template <class T>
constexpr bool s_isSwizzled = !std::is_same_v<Payload<T>, T>;

/// Fixed-width values. Those of a plain column go out from where they lie; those that are swizzled, that come from a
/// dictionary or are computed go through a scratch array.
template <class T>
class AtomFormatter : public Formatter {
public:
    using Formatter::Formatter;

    void RefreshInput() override { m_input = m_column->GetInput(); }

    void Render(const RowBatch& batch, QVE_Value* values, std::size_t stride) override {
        if (m_column->IsCompressed()) {
            GatherDictionary(batch);
        } else if (!m_input.data) {
            GatherRowNumbers(batch);
        } else {
            RenderFrom(static_cast<const T*>(m_input.data), batch, values, stride);
            return;
        }
        RenderFrom(m_gathered.data(), {batch.count, nullptr, 0}, values, stride);
    }

private:
    void RenderFrom(const T* atoms, const RowBatch& batch, QVE_Value* values, std::size_t stride) {
        if constexpr (s_isSwizzled<T>) m_swizzled.resize(batch.count);
        for (unsigned row = 0; row < batch.count; ++row, values += stride) {
            const T* atom = atoms + batch.GetPosition(row);
            if (is_null(*atom)) {
                *values = {m_datatype | QVE_Value::s_null, 0, nullptr};
                continue;
            }
            if constexpr (s_isSwizzled<T>) {
                m_swizzled[row] = SwizzleAtom(*atom);
                *values = {m_datatype, sizeof(Payload<T>), &m_swizzled[row]};
            } else {
                *values = {m_datatype, sizeof(T), atom};
            }
        }
    }

    void GatherDictionary(const RowBatch& batch) {
        switch (m_input.width) {
            case 1:
                return GatherTokens<unsigned char>(batch);
            case 2:
                return GatherTokens<unsigned short>(batch);
            case 4:
                return GatherTokens<unsigned>(batch);
            default:
                return GatherTokens<unsigned long long>(batch);
        }
    }

    template <class Token>
    void GatherTokens(const RowBatch& batch) {
        const heap_reader entries(m_input.heap);
        const Token* tokens = static_cast<const Token*>(m_input.data);
        m_gathered.resize(batch.count);
        for (unsigned row = 0; row < batch.count; ++row) {
            const Token token = tokens[batch.GetPosition(row)];
            const std::string_view entry = token == static_cast<Token>(~Token{0}) ? std::string_view() : entries[token];
            m_gathered[row] = datatraits<T>::null;
            if (entry.size() == sizeof(T)) std::memcpy(&m_gathered[row], entry.data(), sizeof(T));
        }
    }

    void GatherRowNumbers(const RowBatch& batch) {
        m_gathered.resize(batch.count);
        for (unsigned row = 0; row < batch.count; ++row) {
            m_gathered[row] =
                from_raw<T>(static_cast<typename datatraits<T>::raw>(m_column->GetCursor() + batch.GetPosition(row)));
        }
    }

    input_column m_input;
    std::vector<T> m_gathered;
    std::vector<Payload<T>> m_swizzled;
};

template <class T>
RefCntPtr<Formatter> MakeAtomFormatter(const std::wstring& name, RefCntPtr<Column> column, std::uint32_t datatype) {
    return MakeRef<AtomFormatter<T>>(name, std::move(column), datatype);
}

}  // namespace

RefCntPtr<Formatter> Formatter::Make(const std::wstring& name, RefCntPtr<Column> column) {
    const std::uint32_t datatype = Server::GetDatatype(column->GetProperties());
    switch (datatype) {
        case QVE_TypeInt8:
            return MakeAtomFormatter<tiny>(name, std::move(column), datatype);
        case QVE_TypeUInt8:
            return MakeAtomFormatter<uchr>(name, std::move(column), datatype);
        case QVE_TypeInt16:
            return MakeAtomFormatter<short>(name, std::move(column), datatype);
        case QVE_TypeUInt16:
            return MakeAtomFormatter<usht>(name, std::move(column), datatype);
        case QVE_TypeInt32:
            return MakeAtomFormatter<int>(name, std::move(column), datatype);
        case QVE_TypeUInt32:
            return MakeAtomFormatter<ulng>(name, std::move(column), datatype);
        case QVE_TypeInt64:
            return MakeAtomFormatter<bigint>(name, std::move(column), datatype);
        case QVE_TypeUInt64:
            return MakeAtomFormatter<oid>(name, std::move(column), datatype);
        case QVE_TypeFloat:
            return MakeAtomFormatter<float>(name, std::move(column), datatype);
        case QVE_TypeDouble:
            return MakeAtomFormatter<double>(name, std::move(column), datatype);
        case QVE_TypeBit:
            return MakeAtomFormatter<bit>(name, std::move(column), datatype);
        case QVE_TypeDate:
            return MakeAtomFormatter<date>(name, std::move(column), datatype);
        case QVE_TypeDatetime:
            return MakeAtomFormatter<datetime>(name, std::move(column), datatype);
        case QVE_TypeDuration:
            return MakeAtomFormatter<duration>(name, std::move(column), datatype);
        case QVE_TypeText8:
        case QVE_TypeText16:
            return MakeVarcharFormatter(name, std::move(column), datatype);
        default:
            throw QVE_RangeError(status::Session_NotSupported,
                                 "column " + narrow(name) + " is of a type that cannot be sent");
    }
}

}  // namespace qve::Server
