#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "types/usratom.h"

namespace qve {

/// The order, equality, hashing and searching of text. All arguments are atoms of varchar types, of any scale; an atom
/// without data throws QVE_InvalidArgument with the name of the operation. Collations are defined at start-up and live
/// to the end of the process; all operations may run on any thread. Loops take allocate() once and work on what it
/// gives.
class collation {
public:
    virtual ~collation();
    collation(const collation&) = delete;
    collation& operator=(const collation&) = delete;

    /// The name of the collation of code units.
    static constexpr const wchar_t* collationBinary = L"binary";

    const std::wstring& name() const { return m_name; }

    /// Enters a collation under its name, in place of one of that name. Only at start-up.
    static void define(const collation* added);
    /// Throws QVE_RangeError 40662 for a name that was not defined.
    static const collation* resolve(std::wstring_view name);
    /// The names that are defined, sorted.
    static std::vector<std::wstring> names();
    /// Frees what this thread keeps for all collations; called at the end of a thread.
    static void releaseAllLocal();

    /// Bytes whose memcmp order is the order of this collation.
    virtual void sortkey(std::vector<unsigned char>& key, const usratom& text) const = 0;
    /// Equal texts have equal hashes.
    virtual unsigned hash(const usratom& text) const = 0;
    /// -1, 0 or 1.
    virtual int compare(const usratom& left, const usratom& right) const = 0;
    virtual bool startswith(const usratom& text, const usratom& part) const = 0;
    virtual bool endswith(const usratom& text, const usratom& part) const = 0;
    /// The place of `part` in `text` at or after character `start` (both counted from 1); 0 when absent. An empty
    /// `part` is found at 1.
    virtual int find(const usratom& text, const usratom& part, int start) const = 0;
    /// The place of the n-th occurrence, counted from the end for a negative n; 0 when there is none.
    virtual int findNth(const usratom& text, const usratom& part, int n) const = 0;
    /// The n-th piece of `text` between delimiters, counted from 1, or from the end for a negative n; empty when there
    /// is none. `result` must be an atom of a varchar type and gets a text of its scale.
    virtual void split(usratom& result, const usratom& text, const usratom& delimiter, int n) const = 0;
    virtual bool contains(const usratom& text, const usratom& part) const = 0;
    /// True when texts of printable ASCII (Unicode::Units::IsPrintableASCII) are equal only if all their bytes are, so
    /// that equality and searching need no more than their bytes.
    virtual bool compares_ascii_by_byte() const;
    /// Every occurrence of `from` becomes `to`. `result` as in split; null where it would pass longest_text.
    virtual void replace(usratom& result, const usratom& text, const usratom& from, const usratom& to) const = 0;
    /// Case mapping with the locale of the collation; `result` as in split.
    virtual void upper(const usratom& text, usratom& result) const = 0;
    virtual void lower(const usratom& text, usratom& result) const = 0;
    /// Removes white space at the ends. `result` gets the type of `text` and may be a view of it.
    virtual void ltrim(const usratom& text, usratom& result) const;
    virtual void rtrim(const usratom& text, usratom& result) const;
    virtual void trim(const usratom& text, usratom& result) const;

    /// A working copy for this thread alone; the base has none and returns itself. Give it back with release.
    virtual const collation* allocate() const;
    virtual void release(const collation* allocated) const;
    /// Frees the working copy of this thread.
    virtual void releaseLocal() const;

protected:
    explicit collation(std::wstring name) : m_name(std::move(name)) {}

private:
    std::wstring m_name;
};

/// Defines "binary" and the built-in collations of all locales.
void define_collations();

}  // namespace qve
