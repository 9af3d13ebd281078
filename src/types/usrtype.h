#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "types/DataType.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usratom.h"
#include "types/usrprops.h"

namespace qve {

class DataStream;
class collation;
class typefactory;

/// The base of all types, and itself the type of heap-stored bytes ("blob"). A type is made from a property set by
/// resolve, once per canonical name, and lives to the end of the process; so types compare by pointer. Immutable: all
/// operations may run on any thread.
class usrtype {
public:
    explicit usrtype(usrprops properties);
    virtual ~usrtype();
    usrtype(const usrtype&) = delete;
    usrtype& operator=(const usrtype&) = delete;

    /// The type that a property set denotes. Throws QVE_RangeError (40686 to 40689, 40653 to 40660),
    /// QVE_InvalidArgument 40691, or what collation::resolve throws.
    static const usrtype* resolve(const usrprops& properties);
    /// The class of types that a text of the property `datatype` denotes; any unknown text is DataType::usr.
    static DataType DecodeDataType(std::wstring_view text);
    /// Makes the factory "usr" known; called by types_initialization.
    static void register_types();
    /// The factory of the property `factory`.
    static typefactory& usrtypefactory();

    const usrprops& properties() const { return m_properties; }
    const std::wstring& name() const { return m_name; }
    /// The text of the property `datatype`.
    const std::wstring& datatype() const { return m_datatype; }
    DataType GetDataType() const { return m_class; }
    /// Width in bytes of a fixed type; of a heap type the largest heap offset that must be addressable, and so the
    /// chooser of the width of tokens.
    uint64_t size() const { return m_size; }
    /// True for types whose values all have `size` bytes.
    bool fixed() const { return m_fixed; }
    /// The property `precision`, -1 when absent: of a varchar the maximal length in characters.
    long long precision() const { return m_precision; }
    /// The property `scale`, -1 when absent: of a varchar the width of a code unit in bytes.
    int scale() const { return m_scale; }
    /// Null for types without one.
    const qve::collation* collation() const { return m_collation; }
    /// The bytes of the stored null; empty for heap types, whose null has no bytes.
    std::string_view null_bytes() const { return m_nullBytes; }

    /// Parses the bytes from `begin` to `end` of `buffer`. True when they are no such value; the atom is null then.
    virtual bool frombuffer(usratom& atom, unsigned begin, unsigned end, const char* buffer) const;
    /// Parses the text form; what is no such value fails the stream and gives null.
    virtual std::istream& fromstream(std::istream& stream, usratom& atom) const;
    /// Prints the text form, "NULL" for a null.
    virtual std::ostream& tostream(std::ostream& stream, const usratom& atom) const;
    /// Does this atom belong to this type unchanged?
    virtual bool validate(const usratom& atom) const;
    /// Converts; null where there is no answer. `to` and `from` may be one.
    virtual void cast(usratom& to, const usratom& from) const;
    virtual unsigned hash(const usratom& atom) const;
    /// The same for rows of a vector: `out` receives unsigned hashes. With a selection, at the selected positions.
    virtual void hash(unsigned count, output_column out, input_column in, const unsigned* selection) const;
    /// -1, 0 or 1; null comes first.
    virtual int compare(const usratom& left, const usratom& right) const;
    /// The same for rows of two vectors: `out` receives chars.
    virtual void compare(unsigned count, output_column out, input_column left, input_column right,
                         const unsigned* selection) const;
    /// Writes the atom as row `row`; heap types put it into the column's heap. Throws QVE_OverflowError
    /// (status::usrtype_put) when the token does not fit the column's width.
    virtual void put(output_column column, unsigned long row, const usratom& atom) const;
    /// Reads row `row`. The atom may be a view of the vector or heap, valid until these change.
    virtual void get(input_column column, unsigned long row, usratom& atom) const;
    /// The stored null of this type.
    virtual usratom null() const;
    /// A new heap of the kind this type calls for over a stream, which it shares.
    std::unique_ptr<usrheap> heap(DataStream* stream) const;

    /// Skips white space and recognises a null: the end of the input, or a letter "n" or "N", with which three more
    /// characters are taken unseen. False leaves the first character of something else in the stream.
    static bool nullfromstream(std::istream& stream);

protected:
    usrtype(usrprops properties, std::string_view nullBytes);

private:
    usrprops m_properties;
    std::wstring m_name;
    std::wstring m_datatype;
    uint64_t m_size;
    bool m_fixed;
    long long m_precision;
    int m_scale;
    const qve::collation* m_collation;
    DataType m_class;
    std::string m_nullBytes;
};

}  // namespace qve
