#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "storage/stream/DataStream.h"
#include "system/RefCntPtr.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usraccel.h"
#include "types/usratom.h"

namespace qve {

class hashaccel;
class usrtype;

/// The values of a column, each stored once, over a stream that it shares. A token refers to an entry: here the byte
/// offset of a length prefix with the bytes behind it. The stream begins with the null: its prefix, its bytes and one
/// byte of 0, so that token 0 is a null too. One writer at a time; each reading thread has a heap of its own on a fork
/// of the stream.
class usrheap {
public:
    /// The token of null and of what is not present: all ones.
    static constexpr unsigned long long null_token = ~0ULL;

    /// Made by usrtype::heap. Writes the null into an empty stream that can extend. `stream` may be null: nothing can
    /// be stored or found then.
    usrheap(const usrtype* type, DataStream* stream);
    virtual ~usrheap();
    usrheap(const usrheap&) = delete;
    usrheap& operator=(const usrheap&) = delete;

    const usrtype* type() const { return m_type; }
    DataStream* stream() const { return m_stream.get(); }
    /// Bytes of a length prefix: 1, 2, 4 or 8; 0 in a heap of fixed records.
    unsigned prefix_width() const { return m_prefixWidth; }

    /// Forgets all entries but the null.
    virtual void clear();
    /// The value of a token; a null for all ones and for a token at or beyond the end. The atom is valid until the next
    /// operation of this heap.
    virtual const usratom& get(unsigned long long token) const;
    /// The same into an atom of the caller, which is a view when the stream is resident and else has a copy.
    virtual void get(unsigned long long token, usratom& atom) const;
    /// The token of a value, or all ones for a null, without a stream, and when the value is not present.
    virtual unsigned long long find(const usratom& atom) const;
    /// The first free token.
    virtual unsigned long long next() const;
    /// The token of a value, which is stored if it is not present; all ones for a null. A value of another type is
    /// cast. Throws QVE_OverflowError (status::usrheap_put) when it is too long for the prefix.
    virtual unsigned long long put(const usratom& atom);
    /// The same for the values of a vector; their tokens go to `out`, in its width. The values come from the heap of
    /// `in`, or are the fixed values of `in` themselves. Throws QVE_OverflowError (status::usrtype_put) when a token
    /// does not fit.
    virtual void put(unsigned count, output_column out, input_column in, const unsigned* selection);
    /// Appends the token of each entry, in order, to `stream`, eight bytes each.
    virtual void tokens(DataStream* stream) const;

    /// The token of the bytes of a value of this heap's type, stored if not present: `put` for loaders, which have
    /// bytes and no atom. Not for nulls.
    unsigned long long put_bytes(const char* data, uint64_t length);
    /// The tokens of many such values, as put_bytes gives them one by one; faster, as lookups overlap. A value without
    /// data (null pointer) gets all ones. The values must not lie in this heap's own stream.
    void put_bytes(unsigned count, unsigned long long* tokens, const std::string_view* values);

    /// The index of the stream; a hashaccel is made and built when there is none. Null without a stream.
    usraccel* accelerator() const;

    /// The token of the first entry behind the null, and of the entry behind a given one. Walk while below next().
    virtual unsigned long long first() const;
    virtual unsigned long long after(unsigned long long token) const;
    /// The bytes of an entry. The view is valid until the next operation of this heap or its stream. Without data (null
    /// pointer) for all ones and for a token at or beyond the end.
    virtual std::string_view bytes(unsigned long long token) const;

protected:
    usrheap(const usrtype* type, DataStream* stream, unsigned prefixWidth);
    /// Appends an entry and gives its token.
    virtual unsigned long long append(std::string_view bytes);
    /// Writes the null into an empty stream.
    virtual void begin();

private:
    unsigned long long put_present(usraccel& index, const usratom& atom);
    void store_tokens(unsigned count, output_column out, const unsigned long long* tokens, unsigned from,
                      const unsigned* selection) const;

    const usrtype* m_type;
    RefCntPtr<DataStream> m_stream;
    unsigned m_prefixWidth;
    usratom m_null;
    mutable usratom m_scratch;
    std::string m_entry;
};

}  // namespace qve
