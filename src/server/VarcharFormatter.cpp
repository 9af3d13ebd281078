#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "server/Formatter.h"
#include "system/unicode.h"
#include "types/heap_reader.h"

namespace qve::Server {
namespace {

/// Text in the code unit of its heap; UTF-32, which the wire does not know, in UTF-8.
class VarcharFormatter : public Formatter {
public:
    VarcharFormatter(const std::wstring& name, RefCntPtr<Column> column, std::uint32_t datatype)
        : Formatter(name, std::move(column), datatype), m_isUtf32(m_column->GetType()->scale() == 4) {}

    void RefreshInput() override { m_input = m_column->GetInput(); }

    void Render(const RowBatch& batch, QVE_Value* values, std::size_t stride) override {
        m_bytes.clear();
        switch (m_input.width) {
            case 1:
                Resolve<unsigned char>(batch, values, stride);
                break;
            case 2:
                Resolve<unsigned short>(batch, values, stride);
                break;
            case 4:
                Resolve<unsigned>(batch, values, stride);
                break;
            default:
                Resolve<unsigned long long>(batch, values, stride);
        }
        // Only now, when the bytes have come to rest.
        std::size_t offset = 0;
        for (unsigned row = 0; row < batch.count; ++row, values += stride) {
            if (values->IsNull()) continue;
            values->data = m_bytes.data() + offset;
            offset += values->size;
        }
    }

private:
    /// Copies the entries: the heap may move its window from one to the next.
    template <class Token>
    void Resolve(const RowBatch& batch, QVE_Value* values, std::size_t stride) {
        const heap_reader entries(m_input.heap);
        const Token* tokens = static_cast<const Token*>(m_input.data);
        for (unsigned row = 0; row < batch.count; ++row, values += stride) {
            const Token token = tokens[batch.GetPosition(row)];
            const std::string_view entry = entries[token];
            // Token 0 is the stored null, the top one of a narrow column may be an entry: the heap knows.
            if (!entry.data() || token == 0) {
                *values = {m_datatype | QVE_Value::s_null, 0, nullptr};
                continue;
            }
            *values = {m_datatype, Append(entry), nullptr};
        }
    }

    std::uint32_t Append(std::string_view entry) {
        if (m_isUtf32) {
            std::wstring wide(entry.size() / sizeof(wchar_t), L'\0');
            std::memcpy(wide.data(), entry.data(), wide.size() * sizeof(wchar_t));
            const std::string utf8 = narrow(wide);
            m_bytes.insert(m_bytes.end(), utf8.begin(), utf8.end());
            return static_cast<std::uint32_t>(utf8.size());
        }
        m_bytes.insert(m_bytes.end(), entry.begin(), entry.end());
        return static_cast<std::uint32_t>(entry.size());
    }

    const bool m_isUtf32;
    input_column m_input;
    std::vector<char> m_bytes;  // the texts of a batch, one after the other; at least one byte long when read
};

}  // namespace

RefCntPtr<Formatter> MakeVarcharFormatter(const std::wstring& name, RefCntPtr<Column> column, std::uint32_t datatype) {
    return MakeRef<VarcharFormatter>(name, std::move(column), datatype);
}

}  // namespace qve::Server
