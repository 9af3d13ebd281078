#include "types/usrheap.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "system/QuillonException.h"
#include "types/hashaccel.h"
#include "types/heap_loader.h"
#include "types/selected_rows.h"
#include "types/status.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// How many values of a vector are gathered at once.
constexpr unsigned gathered = 256;

[[noreturn]] void damaged() {
    throw QVE_RangeError(status::usrheap_get, "usrheap::get: Damaged heap");
}

uint64_t read_prefix(const char* entry, unsigned width) {
    uint64_t length = 0;
    std::memcpy(&length, entry, width);
    return length;
}

bool same_form(const usrtype* from, const usrtype* to) {
    if (from == to) return true;
    return from->collation() && to->collation() && from->scale() == to->scale() && from->size() <= to->size() &&
           from->precision() <= to->precision();
}

}  // namespace

usrheap::usrheap(const usrtype* type, DataStream* stream) : usrheap(type, stream, 8) {
    usrheap::begin();
}

usrheap::usrheap(const usrtype* type, DataStream* stream, unsigned prefixWidth)
    : m_type(type), m_stream(stream), m_prefixWidth(prefixWidth), m_null(type->null()), m_scratch(type) {}

usrheap::~usrheap() = default;

void usrheap::begin() {
    if (!m_stream || m_stream->GetSize() > 0 || !m_stream->CanExtend()) return;
    const uint64_t length = m_null.length();
    m_entry.assign(reinterpret_cast<const char*>(&length), m_prefixWidth);
    m_entry.append(m_null.bytes());
    m_entry.push_back('\0');
    m_stream->Append(m_entry.data(), m_entry.size());
}

void usrheap::clear() {
    if (!m_stream) return;
    m_stream->SetAccelerator(nullptr);
    m_stream->Resize(0);
    begin();
}

unsigned long long usrheap::first() const {
    return m_prefixWidth + m_null.length() + 1;
}

unsigned long long usrheap::next() const {
    return m_stream ? m_stream->GetSize() : 0;
}

unsigned long long usrheap::after(unsigned long long token) const {
    return token + m_prefixWidth + usrheap::bytes(token).size();
}

std::string_view usrheap::bytes(unsigned long long token) const {
    if (!m_stream || token == null_token || token < first()) return {};
    const uint64_t size = m_stream->GetSize();
    if (token >= size) return {};
    if (size - token < m_prefixWidth) damaged();
    uint64_t cursor = m_stream->GetCursor();
    uint64_t end = cursor + m_stream->GetLimit();
    if (token < cursor || end < token + m_prefixWidth) {
        end = token + m_stream->Seek(token, m_prefixWidth);
        cursor = token;
    }
    uint64_t length = read_prefix(m_stream->GetInput(token - cursor), m_prefixWidth);
    if (length > size - token - m_prefixWidth) damaged();
    if (end - token - m_prefixWidth < length) {
        m_stream->Seek(token, m_prefixWidth + length);
        cursor = token;
    }
    return {m_stream->GetInput(token - cursor + m_prefixWidth), static_cast<size_t>(length)};
}

const usratom& usrheap::get(unsigned long long token) const {
    get(token, m_scratch);
    return m_scratch;
}

void usrheap::get(unsigned long long token, usratom& atom) const {
    const std::string_view found = bytes(token);
    if (!found.data()) return atom.assign_null(m_type);
    atom.assign(m_type, found.data(), found.size(), m_stream->IsResident());
}

usraccel* usrheap::accelerator() const {
    if (!m_stream) return nullptr;
    if (auto* present = static_cast<usraccel*>(m_stream->GetAccelerator())) return present;
    const auto made = MakeRef<hashaccel>(m_type);
    made->build(*this);
    m_stream->SetAccelerator(made);
    return made.get();
}

unsigned long long usrheap::find(const usratom& atom) const {
    if (!m_stream || atom.isnull()) return null_token;
    if (atom.type() == m_type || m_type->validate(atom)) return accelerator()->find(*this, atom);
    usratom converted(m_type);
    m_type->cast(converted, atom);
    return converted.isnull() ? null_token : accelerator()->find(*this, converted);
}

unsigned long long usrheap::append(std::string_view bytes) {
    const uint64_t length = bytes.size();
    if (m_prefixWidth < 8 && length >> (8 * m_prefixWidth)) {
        throw QVE_OverflowError(status::usrheap_put, "usrheap::put: Value does not fit its heap");
    }
    const unsigned long long token = m_stream->GetSize();
    // Built aside: the bytes may lie in this very stream, and one call costs less than two.
    m_entry.assign(reinterpret_cast<const char*>(&length), m_prefixWidth);
    m_entry.append(bytes);
    m_stream->Append(m_entry.data(), m_entry.size());
    return token;
}

unsigned long long usrheap::put(const usratom& atom) {
    if (!m_stream || atom.isnull()) return null_token;
    usraccel& index = *accelerator();
    if (atom.type() == m_type || m_type->validate(atom)) return put_present(index, atom);
    usratom converted(m_type);
    m_type->cast(converted, atom);
    return converted.isnull() ? null_token : put_present(index, converted);
}

unsigned long long usrheap::put_present(usraccel& index, const usratom& atom) {
    if (index.hashed()) return put_bytes(atom.data(), atom.length());
    unsigned long long token = index.find(*this, atom);
    if (token != null_token) return token;
    index.admit(atom);
    // What is appended may move the bytes of the atom.
    const usratom copy(m_type, atom.data(), atom.length());
    token = append(copy.bytes());
    index.insert(*this, copy, token);
    return token;
}

unsigned long long usrheap::put_bytes(const char* data, uint64_t length) {
    if (!m_stream) return null_token;
    usraccel& index = *accelerator();
    const std::string_view bytes(data, length);
    hashaccel* const hashed = index.hashed();
    if (!hashed) return put_present(index, usratom(m_type, data, length, true));
    const unsigned key = hashed->key(bytes);
    unsigned long long token = hashed->find_bytes(*this, bytes, key);
    if (token != null_token) return token;
    const char* const begin = m_stream->GetInput(0);
    if (data >= begin && data < begin + m_stream->GetLimit()) {
        const std::string copy(bytes);
        token = append(copy);
        hashed->insert_bytes(*this, copy, key, token);
    } else {
        token = append(bytes);
        hashed->insert_bytes(*this, bytes, key, token);
    }
    return token;
}

void usrheap::put_bytes(unsigned count, unsigned long long* tokens, const std::string_view* values) {
    heap_loader(*this).put(count, tokens, values);
}

void usrheap::store_tokens(unsigned count, output_column out, const unsigned long long* tokens, unsigned from,
                           const unsigned* selection) const {
    for (unsigned i = 0; i < count; ++i) store_token(out, selection ? selection[from + i] : from + i, tokens[i]);
}

void usrheap::put(unsigned count, output_column out, input_column in, const unsigned* selection) {
    const usrtype* const from_type = in.heap ? in.heap->type() : m_type;
    const bool by_bytes = in.heap ? same_form(from_type, m_type) && in.heap->stream() != m_stream.get()
                                  : m_type->fixed() && in.width == m_type->size();
    if (!by_bytes) {
        usratom atom(from_type);
        for_selected(count, selection, [&](unsigned row) {
            from_type->get(in, row, atom);
            store_token(out, row, put(atom));
        });
        return;
    }
    std::vector<std::string> copies;
    std::string_view values[gathered];
    unsigned long long tokens[gathered];
    usratom atom(from_type);
    for (unsigned from = 0; from < count; from += gathered) {
        const unsigned n = std::min(gathered, count - from);
        copies.clear();
        copies.reserve(n);
        for (unsigned i = 0; i < n; ++i) {
            from_type->get(in, selection ? selection[from + i] : from + i, atom);
            if (atom.isnull()) {
                values[i] = {};
            } else if (in.heap && (!in.heap->stream()->IsResident() || atom.length() == 0)) {
                // The atom's own bytes, which the next one takes over.
                values[i] = copies.emplace_back(atom.bytes());
            } else {
                values[i] = atom.bytes();
            }
        }
        put_bytes(n, tokens, values);
        store_tokens(n, out, tokens, from, selection);
    }
}

void usrheap::tokens(DataStream* stream) const {
    std::vector<unsigned long long> chunk;
    constexpr size_t chunk_size = 8192;
    const auto write = [&] {
        stream->Append(chunk.data(), chunk.size() * sizeof(unsigned long long));
        chunk.clear();
    };
    const unsigned long long end = next();
    for (unsigned long long token = first(); token < end; token = after(token)) {
        chunk.push_back(token);
        if (chunk.size() == chunk_size) write();
    }
    write();
}

}  // namespace qve
