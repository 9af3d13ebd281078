#pragma once

namespace qve::status {

inline constexpr int absent_operator = 40296;

inline constexpr int NamespaceBuilder_Raise = 49012;  // a fault of an operator of a plan
inline constexpr int ExpBuilder_Raise = 49013;        // a fault of an expression of a plan
inline constexpr int ParseNamespace_Single = 49014;   // "expected single query", "expected single expression"

}  // namespace qve::status
