#pragma once

/// Numbers of the faults that the type system raises.
namespace qve::status {

inline constexpr int BinaryCollation_split = 40028;

inline constexpr int ICUCollation_Builtin = 40191;
inline constexpr int ICUCollation_open = 40192;
inline constexpr int ICUCollation_setAttributes = 40193;
inline constexpr int ICUCollation_attributes = 40194;

inline constexpr int builtin_create_boolean = 40653;
inline constexpr int builtin_create_date = 40654;
inline constexpr int builtin_create_datetime = 40655;
inline constexpr int builtin_create_duration = 40656;
inline constexpr int builtin_create_index = 40657;
inline constexpr int builtin_create_integer = 40658;
inline constexpr int builtin_create_real = 40659;
inline constexpr int builtin_name_type = 40660;
inline constexpr int collation_resolve = 40662;
inline constexpr int cuckoo_hash_rehash = 40663;
/// A collation operation was given an atom without data.
inline constexpr int collation_null_argument = 40664;
/// ICU refused a sort key, a search or the locale of a collation.
inline constexpr int collation_sortkey = 40665;
inline constexpr int collation_search = 40666;
inline constexpr int collation_locale = 40667;
/// A token does not fit the width of the column it is written to.
inline constexpr int usrtype_put = 40668;
/// A value is longer than the length prefix of its heap can say.
inline constexpr int usrheap_put = 40669;
/// The bytes of a heap are not entries of its layout.
inline constexpr int usrheap_get = 40670;
inline constexpr int UsrPropKey_ToString = 40671;
/// A dictionary that must ascend was given a value that is not above its last.
inline constexpr int ascaccel_insert = 40672;

inline constexpr int typefactory_createtype_key = 40686;
inline constexpr int typefactory_createtype_value = 40687;
inline constexpr int typefactory_nametype_key = 40688;
inline constexpr int typefactory_nametype_value = 40689;
inline constexpr int complete_type_name = 40690;
inline constexpr int varchar_create_varchar = 40691;

}  // namespace qve::status
