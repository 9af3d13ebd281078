#include "types/usrtype.h"

#include <tbb/spin_rw_mutex.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <istream>
#include <ostream>
#include <sstream>
#include <typeinfo>
#include <unordered_map>
#include <vector>

#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/arrayheap.h"
#include "types/collation.h"
#include "types/dictionaryheap.h"
#include "types/hashfunc.h"
#include "types/quoted_text.h"
#include "types/selected_rows.h"
#include "types/status.h"
#include "types/typefactory.h"
#include "types/usrheap.h"

namespace qve {
namespace {

// Types by canonical name. Never emptied, so that references to types stay good while statics are destroyed.
struct typetable {
    tbb::spin_rw_mutex mutex;
    std::unordered_map<std::wstring, std::unique_ptr<usrtype>> types;
};
typetable& s_typetable() {
    static auto* table = std::make_unique<typetable>().release();
    return *table;
}

std::wstring name_usr(const usrprops& properties) {
    const std::wstring* size = properties.get(usrpropkey::size);
    return size ? L"usr(" + *size + L")" : L"blob";
}

std::unique_ptr<usrtype> create_usr(const usrprops& properties) {
    usrprops created;
    created.set(usrpropkey::type, name_usr(properties));
    created.set(usrpropkey::factory, L"usr");
    created.set(usrpropkey::datatype, L"usr");
    created.set(usrpropkey::fixed, false);
    if (const std::wstring* size = properties.get(usrpropkey::size)) created.set(usrpropkey::size, *size);
    return std::make_unique<usrtype>(std::move(created));
}

// A property as a signed number; `absent` when it is absent or none.
long long signed_property(const usrprops& properties, usrpropkey key, long long absent) {
    const std::wstring* value = properties.get(key);
    if (!value) return absent;
    const std::string text = narrow(*value);
    long long number = absent;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

usrtype::usrtype(usrprops properties) : usrtype(std::move(properties), {}) {}

usrtype::usrtype(usrprops properties, std::string_view nullBytes)
    : m_properties(std::move(properties)),
      m_name(m_properties.text(usrpropkey::type, L"blob")),
      m_datatype(m_properties.text(usrpropkey::datatype, L"usr")),
      m_size(m_properties.number(usrpropkey::size)),
      m_fixed(m_properties.is_true(usrpropkey::fixed)),
      m_precision(signed_property(m_properties, usrpropkey::precision, -1)),
      m_scale(static_cast<int>(signed_property(m_properties, usrpropkey::scale, -1))),
      m_collation(m_properties.has(usrpropkey::collation) ? collation::resolve(m_properties.text(usrpropkey::collation))
                                                          : nullptr),
      m_class(DecodeDataType(m_datatype)),
      m_nullBytes(nullBytes) {}

usrtype::~usrtype() = default;

const usrtype* usrtype::resolve(const usrprops& properties) {
    const typefactory& factory = usrtypefactory();
    std::wstring name = factory.nametype(properties);
    typetable& table = s_typetable();
    {
        tbb::spin_rw_mutex::scoped_lock lock(table.mutex, false);
        const auto found = table.types.find(name);
        if (found != table.types.end()) return found->second.get();
    }
    // Made outside the lock, since making a type may resolve others; whoever enters it first wins.
    std::unique_ptr<usrtype> type = factory.createtype(properties);
    tbb::spin_rw_mutex::scoped_lock lock(table.mutex, true);
    return table.types.try_emplace(std::move(name), std::move(type)).first->second.get();
}

DataType usrtype::DecodeDataType(std::wstring_view text) {
    static constexpr std::wstring_view names[] = {L"index",    L"boolean",  L"integer", L"real",   L"date",
                                                  L"datetime", L"duration", L"usr",     L"spatial"};
    const auto* found = std::find(std::begin(names), std::end(names), text);
    return found == std::end(names) ? DataType::usr : static_cast<DataType>(found - names);
}

void usrtype::register_types() {
    usrtypefactory().define(L"usr", name_usr, create_usr);
}

typefactory& usrtype::usrtypefactory() {
    static typefactory factory(usrpropkey::factory);
    return factory;
}

bool usrtype::frombuffer(usratom& atom, unsigned begin, unsigned end, const char* buffer) const {
    std::istringstream stream(std::string(buffer + begin, buffer + end));
    fromstream(stream, atom);
    return stream.fail();
}

std::istream& usrtype::fromstream(std::istream& stream, usratom& atom) const {
    std::vector<char> bytes;
    if (read_quoted(stream, bytes)) {
        atom.swap(this, bytes);
    } else {
        atom.assign_null(this);
    }
    return stream;
}

std::ostream& usrtype::tostream(std::ostream& stream, const usratom& atom) const {
    if (atom.isnull()) return stream << "NULL";
    return write_quoted(stream, atom.bytes());
}

bool usrtype::validate(const usratom& atom) const {
    const usrtype* const type = atom.type();
    return type && type->GetDataType() == GetDataType() && typeid(*type) == typeid(*this) && atom.length() <= m_size;
}

void usrtype::cast(usratom& to, const usratom& from) const {
    if (from.isnull()) {
        to.assign_null(this);
    } else if (validate(from)) {
        if (&to == &from) {
            usratom copy(from);
            to.assign(this, copy.data(), copy.length());
        } else {
            to.assign(this, from.data(), from.length());
        }
    } else {
        std::ostringstream printed;
        from.type()->tostream(printed, from);
        std::string text = printed.str();
        if (text.empty() || text.front() != '\'') text = "'" + text + "'";
        std::istringstream stream(text);
        fromstream(stream, to);
    }
}

unsigned usrtype::hash(const usratom& atom) const {
    if (!atom.data()) return ~0U;
    return hashfunc(atom.data(), atom.length());
}

void usrtype::hash(unsigned count, output_column out, input_column in, const unsigned* selection) const {
    usratom atom(this);
    auto* hashes = out.values<unsigned>();
    for_selected(count, selection, [&](unsigned row) {
        get(in, row, atom);
        hashes[row] = hash(atom);
    });
}

int usrtype::compare(const usratom& left, const usratom& right) const {
    if (left.data() == right.data()) return 0;
    if (!left.data()) return -1;
    if (!right.data()) return 1;
    const std::string_view a = left.bytes();
    const std::string_view b = right.bytes();
    const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    if (order) return order < 0 ? -1 : 1;
    return a.size() < b.size() ? -1 : a.size() > b.size();
}

void usrtype::compare(unsigned count, output_column out, input_column left, input_column right,
                      const unsigned* selection) const {
    usratom a(this);
    usratom b(this);
    auto* orders = out.values<char>();
    for_selected(count, selection, [&](unsigned row) {
        get(left, row, a);
        get(right, row, b);
        orders[row] = static_cast<char>(compare(a, b));
    });
}

void usrtype::put(output_column column, unsigned long row, const usratom& atom) const {
    const unsigned long long token = column.heap ? column.heap->put(atom) : usrheap::null_token;
    store_token(column, row, token);
}

void usrtype::get(input_column column, unsigned long row, usratom& atom) const {
    const unsigned long long token = load_token(column, row);
    if (token == usrheap::null_token || !column.heap) {
        atom.assign_null(this);
    } else {
        column.heap->get(token, atom);
    }
}

usratom usrtype::null() const {
    return usratom(this, m_nullBytes.empty() ? nullptr : m_nullBytes.data(), m_nullBytes.size());
}

std::unique_ptr<usrheap> usrtype::heap(DataStream* stream) const {
    if (m_fixed) return std::make_unique<arrayheap>(this, stream);
    if (m_size < 0x100) return std::make_unique<dictionaryheap<unsigned char>>(this, stream);
    if (m_size < 0x10000) return std::make_unique<dictionaryheap<unsigned short>>(this, stream);
    if (m_size < 0x100000000) return std::make_unique<dictionaryheap<unsigned int>>(this, stream);
    return std::make_unique<usrheap>(this, stream);
}

bool usrtype::nullfromstream(std::istream& stream) {
    stream >> std::ws;
    const int next = stream.peek();
    if (next == std::istream::traits_type::eof()) return true;
    if ((next | 32) != 'n') return false;
    stream.ignore(4);
    return true;
}

}  // namespace qve
