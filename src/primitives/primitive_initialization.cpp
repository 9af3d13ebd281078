#include "primitives/primitive_initialization.h"

#include "primitives/token_results.h"
#include "types/datatraits.h"

namespace qve {
namespace primitive_initialization {

const primitive_result& result_cast_uchr() {
    static const index_result<uchr> result(L"uchr");
    return result;
}
const primitive_result& result_cast_usht() {
    static const index_result<usht> result(L"usht");
    return result;
}
const primitive_result& result_cast_ulng() {
    static const index_result<ulng> result(L"ulng");
    return result;
}
const primitive_result& result_cast_oid() {
    static const index_result<oid> result(L"oid");
    return result;
}
const primitive_result& result_cast_usr1() {
    static const value_result result(L"usr1", usrpropkey::empty, 0, true);
    return result;
}
const primitive_result& result_cast_usr2() {
    static const value_result result(L"usr2", usrpropkey::empty, 0, true);
    return result;
}
const primitive_result& result_cast_usr4() {
    static const value_result result(L"usr4", usrpropkey::empty, 0, true);
    return result;
}
const primitive_result& result_left() {
    static const text_result result(L"left");
    return result;
}
const primitive_result& result_right() {
    static const text_result result(L"right");
    return result;
}
const primitive_result& result_mid() {
    static const text_result result(L"mid");
    return result;
}
const primitive_result& result_lower() {
    static const text_result result(L"lower");
    return result;
}
const primitive_result& result_upper() {
    static const text_result result(L"upper");
    return result;
}
const primitive_result& result_ltrim() {
    static const text_result result(L"ltrim");
    return result;
}
const primitive_result& result_rtrim() {
    static const text_result result(L"rtrim");
    return result;
}
const primitive_result& result_trim() {
    static const text_result result(L"trim");
    return result;
}
const primitive_result& result_replace() {
    static const text_result result(L"replace");
    return result;
}
const primitive_result& result_rreplace() {
    static const text_result result(L"rreplace");
    return result;
}
const primitive_result& result_rextract() {
    static const text_result result(L"rextract");
    return result;
}
const primitive_result& result_split() {
    static const text_result result(L"split");
    return result;
}
const primitive_result& result_sortkey() {
    static const sortkey_result result(L"sortkey");
    return result;
}
const primitive_result& result_to_str() {
    static const text_result result(L"to_str");
    return result;
}

}  // namespace primitive_initialization

void define_primitive_results() {
    using namespace primitive_initialization;
    static const primitive_result* const on_demand[] = {
        &result_cast_uchr(), &result_cast_usht(), &result_cast_ulng(), &result_cast_oid(), &result_cast_usr1(),
        &result_cast_usr2(), &result_cast_usr4(), &result_left(),      &result_right(),    &result_mid(),
        &result_lower(),     &result_upper(),     &result_ltrim(),     &result_rtrim(),    &result_trim(),
        &result_to_str(),    &result_replace(),   &result_rreplace(),  &result_rextract(), &result_split(),
        &result_sortkey(),
    };
    static_cast<void>(on_demand);
    static const any_result any(L"any");
    static const anyif_result anyif(L"anyif");
    static const fetch_result fetch(L"fetch");
    static const count_result count(L"count");
    static const lt_result lt(L"lt"), le(L"le"), gt(L"gt"), ge(L"ge");
    static const min_result min(L"min"), max(L"max");
    static const eq_result eq(L"eq"), ne(L"ne"), hash(L"hash"), rehash(L"rehash"), radixhash(L"radixhash"),
        radixgrp(L"radixgrp");
    static const value_result cast_usr8(L"usr8", usrpropkey::empty, 0, true);
    static const winner_result greatest(L"greatest"), least(L"least");
    static const text_result collect(L"collect"), concat(L"concat"), dayname(L"dayname"), monthname(L"monthname"),
        chr(L"chr"), space(L"space");
}

}  // namespace qve
