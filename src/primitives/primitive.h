#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "types/usrprops.h"

namespace qve {

class primitive_directory;

/// The description of one typed kernel: which family it is of, what it computes, of which types and storage modes.
/// The function itself is in primitive_func. Registered primitives are immortal and never change, so any thread may
/// use them.
class primitive {
public:
    /// The families.
    static constexpr const wchar_t* klassMap = L"map";
    static constexpr const wchar_t* klassSelect = L"sel";
    static constexpr const wchar_t* klassAggregate = L"agg";
    static constexpr const wchar_t* klassSort = L"sort";
    static constexpr const wchar_t* klassMerge = L"merge";
    static constexpr const wchar_t* klassMultimerge = L"multimerge";

    /// The storage modes of an argument: one value per row, one value for all rows, the row number itself.
    static constexpr const wchar_t* storageCol = L"col";
    static constexpr const wchar_t* storageVal = L"val";
    static constexpr const wchar_t* storageVir = L"vir";

    /// A type name and a storage mode.
    using argument = std::pair<std::wstring, std::wstring>;
    using argument_list = std::vector<argument>;

    primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result);
    primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, const wchar_t* type1,
              const wchar_t* storage1);
    primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, const wchar_t* type1,
              const wchar_t* storage1, const wchar_t* type2, const wchar_t* storage2);
    primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, const wchar_t* type1,
              const wchar_t* storage1, const wchar_t* type2, const wchar_t* storage2, const wchar_t* type3,
              const wchar_t* storage3);
    primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, argument_list arguments);
    virtual ~primitive();
    primitive(const primitive&) = delete;
    primitive& operator=(const primitive&) = delete;

    /// One of the klass constants, by text.
    const std::wstring& klass() const { return m_klass; }
    /// The operation, as in "plus".
    const std::wstring& operation() const { return m_operation; }
    /// The type name of the result.
    const std::wstring& result() const { return m_result; }
    /// For an aggregate the last argument is the group index, of type "ulng".
    const argument_list& arguments() const { return m_arguments; }
    /// The full name, as in "map_plus_double_bigint_col_double_col": family, operation, the result unless it is spelled
    /// like the operation, then type and storage of each argument; the group index of an aggregate prints as "uidx".
    const std::wstring& name() const;

    /// The directory of all primitives of the program.
    static primitive_directory& directory();
    /// All primitives of an operation over these arguments, of every family and result, in the order of registering.
    static std::vector<primitive*> resolve(std::wstring_view name, const argument_list& arguments);
    /// The properties of a builtin type ("bit" to "duration"); empty for any other name.
    static const usrprops& primitive_props(std::wstring_view type);

private:
    std::wstring m_klass;
    std::wstring m_operation;
    std::wstring m_result;
    argument_list m_arguments;
    mutable std::wstring m_name;  ///< built on first use, under a lock
};

}  // namespace qve
