#include "algebra/MapExp.h"

namespace qve {

MapNullaryExp::MapNullaryExp(const std::wstring& name, const std::wstring& op)
    : PrimitiveExp(name, primitive::klassMap, op, {}, false) {}

void MapNullaryExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace*) {
    RunMap(count, extent, sel,
           [this](unsigned n, const output_column& out, const unsigned* rows) { Resolve(m_function)(n, out, rows); });
}

MapUnaryExp::MapUnaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> argument, bool tokens)
    : PrimitiveExp(name, primitive::klassMap, op, {std::move(argument)}, tokens) {}

void MapUnaryExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateOperands(count, extent, sel, input);
    RunMap(count, extent, sel, [this](unsigned n, const output_column& out, const unsigned* rows) {
        Resolve(m_function)(n, out, GetInput(0), rows);
    });
}

MapBinaryExp::MapBinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right,
                           bool tokens)
    : PrimitiveExp(name, primitive::klassMap, op, {std::move(left), std::move(right)}, tokens) {}

void MapBinaryExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateOperands(count, extent, sel, input);
    RunMap(count, extent, sel, [this](unsigned n, const output_column& out, const unsigned* rows) {
        Resolve(m_function)(n, out, GetInput(0), GetInput(1), rows);
    });
}

MapTrinaryExp::MapTrinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> first,
                             RefCntPtr<Exp> second, RefCntPtr<Exp> third, bool tokens)
    : PrimitiveExp(name, primitive::klassMap, op, {std::move(first), std::move(second), std::move(third)}, tokens) {}

void MapTrinaryExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateOperands(count, extent, sel, input);
    RunMap(count, extent, sel, [this](unsigned n, const output_column& out, const unsigned* rows) {
        Resolve(m_function)(n, out, GetInput(0), GetInput(1), GetInput(2), rows);
    });
}

}  // namespace qve
