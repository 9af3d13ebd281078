#pragma once

namespace qve {

class primitive_result;

/// The result rules of operations, each made on first use: define_primitive_results makes them all.
namespace primitive_initialization {

const primitive_result& result_cast_uchr();
const primitive_result& result_cast_usht();
const primitive_result& result_cast_ulng();
const primitive_result& result_cast_oid();
const primitive_result& result_cast_usr1();
const primitive_result& result_cast_usr2();
const primitive_result& result_cast_usr4();
const primitive_result& result_left();
const primitive_result& result_right();
const primitive_result& result_mid();
const primitive_result& result_lower();
const primitive_result& result_upper();
const primitive_result& result_ltrim();
const primitive_result& result_rtrim();
const primitive_result& result_trim();
const primitive_result& result_replace();
const primitive_result& result_rreplace();
const primitive_result& result_rextract();
const primitive_result& result_split();
const primitive_result& result_sortkey();
const primitive_result& result_to_str();

}  // namespace primitive_initialization

/// Makes the result rules of all operations that have their own. Called once at start, before anything is resolved.
void define_primitive_results();

}  // namespace qve
