#include "ingest/BinaryInserter.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "algebra/reserve_page.h"
#include "ingest/status.h"
#include "ingest/wire_atoms.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/varchar.h"

namespace qve {

namespace {

[[noreturn]] void RaiseBadColumn(const char* what) {
    throw QVE_InvalidArgument(status::BinaryScan_MakeInserter, std::string("BinaryScan::MakeInserter: ") + what);
}

const varchar* TextType(unsigned scale) {
    return static_cast<const varchar*>(varchar::usrtypeof(varchar::clob_precision, scale));
}

}  // namespace

void BinaryScan::Inserter::Reset(unsigned rows) {
    m_page = reserve_page(*m_column, rows);
}

template <class T>
class BinaryScan::BuiltinInserter : public Inserter {
public:
    using Inserter::Inserter;

    void Insert(unsigned count, const QVE_Value* values, size_t stride, unsigned firstRow) override {
        T* const out = m_page.values<T>() + firstRow;
        for (unsigned row = 0; row < count; ++row, values += stride) {
            const std::optional<T> atom = AtomOfWire<T>(*values);
            if (!atom) Refuse(*values);
            out[row] = atom ? *atom : datatraits<T>::null;
        }
    }
};

/// Text goes into the column's dictionary, many values at a time.
class BinaryScan::VarCharInserter : public Inserter {
public:
    explicit VarCharInserter(RefCntPtr<Column> column)
        : Inserter(std::move(column)),
          m_scale(m_column->GetType()->scale()),
          m_unlimited(m_column->GetType()->precision() >= static_cast<long long>(varchar::clob_precision)) {}

    void Insert(unsigned count, const QVE_Value* values, size_t stride, unsigned firstRow) override {
        m_texts.resize(count);
        m_converted.clear();
        m_converted.reserve(count);  // views into it must not move
        for (unsigned row = 0; row < count; ++row, values += stride) m_texts[row] = Read(*values);
        m_tokens.resize(count);
        m_page.heap->put_bytes(count, m_tokens.data(), m_texts.data());
        unsigned long long* const out = m_page.values<unsigned long long>() + firstRow;
        std::copy(m_tokens.begin(), m_tokens.end(), out);
    }

private:
    /// The text in the code units of the column; without data for null.
    std::string_view Read(const QVE_Value& value) {
        const bool narrow = value.GetType() == QVE_TypeText8;
        const bool whole = narrow || (value.GetType() == QVE_TypeText16 && value.size % 2 == 0);
        if (value.IsNull() || !whole) {
            Refuse(value);
            return {};
        }
        const std::string_view bytes(static_cast<const char*>(value.data), value.size);
        // As it stands where its units are the column's and no limit applies.
        if (narrow && m_scale == 1 && m_unlimited) return bytes.empty() ? std::string_view("", 0) : bytes;
        usratom text;
        m_column->GetType()->cast(text, usratom(TextType(narrow ? 1 : 2), bytes.data(), bytes.size()));
        if (text.isnull()) return {};
        m_converted.emplace_back(text.bytes());
        return m_converted.back();
    }

    const int m_scale;
    const bool m_unlimited;
    std::vector<std::string_view> m_texts;
    std::vector<std::string> m_converted;
    std::vector<unsigned long long> m_tokens;
};

std::unique_ptr<BinaryScan::Inserter> BinaryScan::MakeInserter(const usrprops& properties) {
    if (properties.text(usrpropkey::name).empty()) RaiseBadColumn("Missing column name");
    const usrtype* const type = usrtype::resolve(properties);
    if (dynamic_cast<const varchar*>(type)) {
        usrprops text = properties;
        text.set(usrpropkey::compression, L"heap");
        text.set(usrpropkey::storagewidth, L"8");
        text.set(usrpropkey::distinct, true);
        return std::make_unique<VarCharInserter>(
            MakeRef<Column>(std::move(text), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>()));
    }
    usrprops plain = properties;
    for (const usrpropkey key : {usrpropkey::compression, usrpropkey::storagewidth}) plain.erase(key);
    const auto make = [&]<class T>(T) -> std::unique_ptr<Inserter> {
        if (type->name() != datatraits<T>::name) return nullptr;
        return std::make_unique<BuiltinInserter<T>>(MakeRef<Column>(plain, MakeRef<TempFileDataStream>()));
    };
    std::unique_ptr<Inserter> made;
    const auto any = [&](auto... atoms) { return ((made = make(atoms)) || ...); };
    if (any(bit{}, char{}, short{}, int{}, bigint{}, uchr{}, usht{}, ulng{}, oid{}, float{}, double{}, date{},
            datetime{}, duration{})) {
        return made;
    }
    RaiseBadColumn("Unknown type");
}

}  // namespace qve
