#include "types/varchar.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <memory>
#include <ostream>
#include <sstream>

#include "system/QuillonException.h"
#include "system/UnicodeUnits.h"
#include "types/collation.h"
#include "types/hashfunc.h"
#include "types/heap_reader.h"
#include "types/quoted_text.h"
#include "types/selected_rows.h"
#include "types/status.h"
#include "types/typefactory.h"

namespace qve {
namespace {

// The largest number of bytes that a character takes, in every scale.
constexpr unsigned long long character_bytes = 4;

unsigned long long size_of(unsigned long long precision) {
    constexpr auto greatest = std::numeric_limits<unsigned long long>::max();
    return precision > greatest / character_bytes ? greatest : precision * character_bytes;
}

// The hashes of the values as they lie. Their heap is resident, so that what is read of it stays.
void hash_bytes(unsigned count, unsigned* hashes, const input_column& in, const unsigned* selection) {
    constexpr unsigned block = 64;
    std::string_view texts[block];
    unsigned fresh[block];
    const heap_reader values(in.heap);
    for (unsigned base = 0; base < count; base += block) {
        const unsigned rows = std::min(block, count - base);
        const auto row = [&](unsigned k) { return selection ? selection[base + k] : base + k; };
        for (unsigned k = 0; k < rows; ++k) texts[k] = values[load_token(in, row(k))];
        hashfunc(rows, texts, fresh);
        for (unsigned k = 0; k < rows; ++k) hashes[row(k)] = texts[k].data() ? fresh[k] : ~0U;
    }
}

// The property set of a text type with exactly the four keys that make its name.
usrprops clean_varchar(const usrprops& given) {
    const auto scale = given.number(usrpropkey::scale, 2);
    if (scale != 1 && scale != 2 && scale != 4) {
        throw QVE_InvalidArgument(status::varchar_create_varchar, "varchar::create_varchar: Invalid scale");
    }
    auto precision = given.number(usrpropkey::precision, varchar::clob_precision);
    const auto size = given.number(usrpropkey::size, size_of(precision));
    if (size != size_of(precision) && size <= 0xFFFFFFFF) {
        const unsigned long long capacity = size <= 0xFF ? 0xFF : size <= 0xFFFF ? 0xFFFF : 0xFFFFFFFF;
        precision =
            std::min({precision, capacity / character_bytes, static_cast<unsigned long long>(varchar::clob_precision)});
    }
    usrprops cleaned;
    cleaned.set(usrpropkey::scale, scale);
    cleaned.set(usrpropkey::precision, precision);
    cleaned.set(usrpropkey::size, size_of(precision));
    cleaned.set(usrpropkey::collation, given.text(usrpropkey::collation, collation::collationBinary));
    return cleaned;
}

std::wstring name_of(const usrprops& cleaned) {
    const auto precision = cleaned.number(usrpropkey::precision);
    const std::wstring scale(cleaned.text(usrpropkey::scale));
    const std::wstring kind = precision == varchar::clob_precision
                                  ? L"clob(" + scale
                                  : L"varchar(" + std::to_wstring(precision) + L"," + scale;
    return kind + L") collate " + std::wstring(cleaned.text(usrpropkey::collation));
}

usrprops complete(const usrprops& given) {
    usrprops properties = clean_varchar(given);
    properties.set(usrpropkey::type, name_of(properties));
    properties.set(usrpropkey::factory, L"varchar");
    properties.set(usrpropkey::datatype, L"usr");
    properties.set(usrpropkey::fixed, false);
    return properties;
}

std::wstring name_varchar(const usrprops& properties) {
    return name_of(clean_varchar(properties));
}
std::unique_ptr<usrtype> create_varchar(const usrprops& properties) {
    return std::make_unique<varchar>(complete(properties));
}

usrprops make_props(size_t precision, size_t scale, std::wstring_view collation) {
    usrprops properties;
    properties.set(usrpropkey::factory, L"varchar");
    properties.set(usrpropkey::precision, precision);
    properties.set(usrpropkey::scale, scale);
    properties.set(usrpropkey::collation, collation);
    return properties;
}

// The type of the combined properties of a list of types; `join` combines two precisions.
template <class Join>
const usrtype* combined(varchar::types_iterator begin, varchar::types_iterator end, Join join) {
    unsigned long long scale = 1;
    unsigned long long precision = 0;
    std::wstring collation;
    for (auto it = begin; it != end; ++it) {
        const usrprops& properties = (*it)->properties();
        scale = std::max(scale, properties.number(usrpropkey::scale, 1));
        precision = join(precision, properties.number(usrpropkey::precision,
                                                      properties.number(usrpropkey::size, varchar::clob_precision)));
        if (collation.empty()) collation = properties.text(usrpropkey::collation);
    }
    if (collation.empty()) collation = qve::collation::collationBinary;
    return usrtype::resolve(make_props(precision, scale, collation));
}

std::string_view in_scale(const usratom& atom, int scale, std::string& buffer) {
    const auto from = static_cast<unsigned>(atom.type()->scale());
    const auto to = static_cast<unsigned>(scale);
    if (from == to) return atom.bytes();
    std::string utf8;
    buffer.clear();
    Unicode::AppendUnits(buffer, Unicode::ToUTF8(atom.bytes(), from, utf8), to);
    return buffer;
}

}  // namespace

varchar::varchar(usrprops properties) : usrtype(std::move(properties)) {}

void varchar::register_types() {
    usrtypefactory().define(L"varchar", name_varchar, create_varchar);
}

typefactory& varchar::varchar_factory() {
    static typefactory factory(usrpropkey::factory_varchar);
    return factory;
}

const usrtype* varchar::usrtypeof(size_t precision, size_t scale, const wchar_t* collation) {
    return resolve(make_props(precision, scale, collation ? collation : qve::collation::collationBinary));
}

usrprops varchar::propsof(size_t precision, size_t scale, const wchar_t* collation) {
    return complete(make_props(precision, scale, collation ? collation : qve::collation::collationBinary));
}

const usrtype* varchar::maxtype(types_iterator begin, types_iterator end) {
    return combined(begin, end, [](auto a, auto b) { return std::max(a, b); });
}

const usrtype* varchar::sumtype(types_iterator begin, types_iterator end) {
    return combined(begin, end, [](auto a, auto b) {
        constexpr unsigned long long cap = clob_precision;
        return std::min(cap, std::min(cap, a) + std::min(cap, b));
    });
}

std::istream& varchar::fromstream(std::istream& stream, usratom& atom) const {
    if (scale() == 1) return usrtype::fromstream(stream, atom);
    std::vector<char> bytes;
    if (!read_quoted(stream, bytes)) {
        atom.assign_null(this);
        return stream;
    }
    std::string units;
    Unicode::AppendUnits(units, std::string_view(bytes.data(), bytes.size()), static_cast<unsigned>(scale()));
    atom.assign(this, units.data(), units.size());
    return stream;
}

std::ostream& varchar::tostream(std::ostream& stream, const usratom& atom) const {
    if (atom.isnull()) return stream << "NULL";
    std::string utf8;
    return write_quoted(stream, Unicode::ToUTF8(atom.bytes(), static_cast<unsigned>(scale()), utf8));
}

bool varchar::validate(const usratom& atom) const {
    if (!dynamic_cast<const varchar*>(atom.type())) return false;
    if (atom.isnull()) return true;
    if (atom.type()->scale() != scale() || atom.length() > size()) return false;
    if (size() / character_bytes >= atom.length()) return true;
    return Unicode::Units::CharLength(atom.bytes(), static_cast<unsigned>(scale())) <=
           static_cast<unsigned long long>(precision());
}

void varchar::cast(usratom& to, const usratom& from) const {
    if (from.isnull()) return to.assign_null(this);
    if (validate(from)) {
        const usratom copy(from);
        return to.assign(this, copy.data(), copy.length());
    }
    const auto width = static_cast<unsigned>(scale());
    std::string buffer;
    usratom parsed;
    std::string_view bytes;
    if (dynamic_cast<const varchar*>(from.type())) {
        bytes = in_scale(from, scale(), buffer);
    } else {
        std::ostringstream printed;
        from.type()->tostream(printed, from);
        const std::string text = printed.str();
        if (!text.empty() && text.front() == '\'') {
            std::istringstream stream(text);
            fromstream(stream, parsed);
            bytes = parsed.bytes();
        } else {
            Unicode::AppendUnits(buffer, text, width);
            bytes = buffer;
        }
    }
    uint64_t fitting = Unicode::Units::Fit(bytes, width, size());
    if (precision() >= 0) {
        fitting = std::min(fitting, Unicode::Units::Offset(bytes, width, static_cast<uint64_t>(precision())));
    }
    const std::string kept(bytes.substr(0, fitting));
    to.assign(this, kept.data(), kept.size());
}

unsigned varchar::hash(const usratom& atom) const {
    if (!atom.data()) return ~0U;
    return collation()->hash(atom);
}

void varchar::hash(unsigned count, output_column out, input_column in, const unsigned* selection) const {
    auto* hashes = out.values<unsigned>();
    if (collation()->name() == collation::collationBinary && in.heap && in.heap->stream() &&
        in.heap->stream()->IsResident()) {
        hash_bytes(count, hashes, in, selection);
        return;
    }
    const qve::collation* local = collation()->allocate();
    usratom atom(this);
    for_selected(count, selection, [&](unsigned row) {
        get(in, row, atom);
        hashes[row] = atom.data() ? local->hash(atom) : ~0U;
    });
    collation()->release(local);
}

int varchar::compare(const usratom& left, const usratom& right) const {
    if (left.data() == right.data()) return 0;
    if (!left.data()) return -1;
    if (!right.data()) return 1;
    return collation()->compare(left, right);
}

void varchar::compare(unsigned count, output_column out, input_column left, input_column right,
                      const unsigned* selection) const {
    usrtype::compare(count, out, left, right, selection);
}

}  // namespace qve
