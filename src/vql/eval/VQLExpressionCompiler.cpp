#include "vql/eval/VQLExpressionCompiler.h"

#include <limits>

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/CountdExp.h"
#include "algebra/LiteralAtom.h"
#include "algebra/MakeCall.h"
#include "algebra/MomentsExp.h"
#include "algebra/Namespace.h"
#include "algebra/QuantileExp.h"
#include "metrics/Scope.h"
#include "primitives/primitive.h"
#include "primitives/primitive_result.h"
#include "storage/Column.h"
#include "system/VQLException.h"
#include "telemetry/LogEntry.h"
#include "types/builtin.h"
#include "types/usratom.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLRewriteQuantiles.h"
#include "vql/eval/MakeCaseLookup.h"
#include "vql/eval/status.h"

namespace qve {
namespace {

const std::wstring anonymous;

bool IsArrayCompressed(const Column& column) {
    return column.GetProperties().text(usrpropkey::compression) == L"array";
}

RefCntPtr<Column> Describe(usrprops properties, bool single) {
    if (single) properties.set(usrpropkey::storagetype, Column::storageVal);
    return MakeRef<Column>(std::move(properties));
}

[[noreturn]] void RaiseUnknownFunction(const VQLFuncallExpression& call) {
    throw VQLParseException(status::VQLExpressionCompiler_Call, L"unknown function (" + call.GetName() + L")",
                            call.GetPosition());
}

// A conversion to try on each operand: the type to convert to, or null to leave it. All keep the value.
using Conversion = const usrtype* (*)(const usrtype& from);

const usrtype* Widest(const usrtype& from) {
    switch (from.GetDataType()) {
        case DataType::integer:
            return builtin::usrtypeof<long long>();
        case DataType::real:
            return builtin::usrtypeof<double>();
        default:
            return nullptr;
    }
}
const usrtype* DateToDatetime(const usrtype& from) {
    return from.GetDataType() == DataType::date ? builtin::usrtypeof<datetime>() : nullptr;
}
const usrtype* NumberToDouble(const usrtype& from) {
    const DataType type = from.GetDataType();
    return type == DataType::integer || type == DataType::real ? builtin::usrtypeof<double>() : nullptr;
}
const usrtype* NumberToDoubleDateToDatetime(const usrtype& from) {
    const usrtype* number = NumberToDouble(from);
    return number ? number : DateToDatetime(from);
}

// Each is tried after the one before has found no kernel.
constexpr Conversion conversions[] = {Widest, DateToDatetime, NumberToDouble, NumberToDoubleDateToDatetime};

primitive* FindKernel(const wchar_t* klass, const std::wstring& op, primitive::argument_list types) {
    const bool aggregate = std::wstring_view(klass) == primitive::klassAggregate;
    if (aggregate) types.emplace_back(L"ulng", primitive::storageCol);
    for (primitive* candidate : primitive::resolve(op, types)) {
        if (candidate->klass() == klass) return candidate;
    }
    return nullptr;
}

template <class Operands>
primitive* FindKernel(const wchar_t* klass, const std::wstring& op, const Operands& operands) {
    primitive::argument_list types;
    for (const auto& operand : operands) types.emplace_back(operand.Type(), operand.description->GetStorageName());
    return FindKernel(klass, op, std::move(types));
}

bool IsComparison(const std::wstring& op) {
    return op == L"eq" || op == L"ne" || op == L"lt" || op == L"le" || op == L"gt" || op == L"ge" ||
           op == L"isdistinct" || op == L"isnotdistinct";
}

}  // namespace

std::atomic<bool> VQLExpressionCompiler::s_useConstantFolding{true};

std::wstring VQLExpressionCompiler::Compiled::Type() const {
    return description->GetPrimitiveType(usrpropkey::empty);
}

bool VQLExpressionCompiler::Compiled::IsConstant() const {
    return dynamic_cast<ConstantExp*>(exp.get()) != nullptr;
}

VQLExpressionCompiler::VQLExpressionCompiler(ContextType context, const Namespace& source)
    : m_source(source), m_context(context) {}

VQLExpressionCompiler::~VQLExpressionCompiler() {
    if (m_folded == 0) return;
    LogEntry() << L"VQLExpressionCompiler: Parsed: " << m_parsed << L", Folded: " << m_folded;
}

RefCntPtr<Exp> VQLExpressionCompiler::operator()(const RefCntPtr<VQLExpression>& expression) {
    return Compile(expression, m_context).exp;
}

VQLExpressionCompiler::Compiled VQLExpressionCompiler::Compile(const RefCntPtr<VQLExpression>& expression,
                                                               ContextType context) {
    const ContextType outer = std::exchange(m_context, context);
    ++m_parsed;
    expression->Accept(*this);
    m_context = outer;
    return std::exchange(m_result, {});
}

VQLExpressionCompiler::Operands VQLExpressionCompiler::CompileArguments(const VQLExpressions& arguments,
                                                                        ContextType context) {
    Operands operands;
    operands.reserve(arguments.size());
    for (const auto& argument : arguments) operands.push_back(Compile(argument, context));
    return operands;
}

void VQLExpressionCompiler::Push(VQLExpression& expression, Compiled compiled) {
    expression.SetPrimitiveType(compiled.Type());
    expression.SetPrimitiveStorage(compiled.description->GetStorageName());
    expression.SetPrimitiveProperties(compiled.description->GetProperties());
    m_result = std::move(compiled);
}

VQLExpressionCompiler::Compiled VQLExpressionCompiler::MakeConstant(const usratom& atom) const {
    return {MakeRef<ConstantExp>(atom), Describe(ConstantExp::AtomProperties(atom), true)};
}

void VQLExpressionCompiler::VisitLiteral(VQLLiteralExpression& expression) {
    if (expression.GetType()) {  // the target of a cast: a null of that type
        Push(expression, MakeConstant(expression.GetType()->null()));
        return;
    }
    const VQLDataValue& literal = expression.GetLiteral();
    const bool isNull = literal.IsNull();
    const VQLDataValue value = isNull ? VQLDataValue::Null(expression.GetDataType()) : literal;
    const usratom atom = AtomOfLiteral(value, expression.GetUsrProps());
    if (!atom.type()) {
        throw isNull ? VQLParseException(status::VQLExpressionCompiler_NullLiteral, L"unsupported null literal value",
                                         expression.GetPosition())
                     : VQLParseException(status::VQLExpressionCompiler_Literal, L"unsupported literal type",
                                         expression.GetPosition());
    }
    Push(expression, MakeConstant(atom));
}

void VQLExpressionCompiler::VisitIdentifier(VQLIdentifierExpression& expression) {
    const std::wstring& name = expression.GetIdentifier().GetComponents().back().AsString();
    const RefCntPtr<Column> description = m_source.DescribeColumn(name);
    Push(expression, {MakeRef<ColumnExp>(description), description});
}

VQLExpressionCompiler::Compiled VQLExpressionCompiler::MakeCast(const Compiled& value, const usrprops& target) const {
    const usrtype* type = usrtype::resolve(target);
    if (value.IsConstant()) {
        const auto& constant = static_cast<const ConstantExp&>(*value.exp);
        const RefCntPtr<ConstantExp> cast = CastConstant(constant, target);
        return {cast, Describe(cast->GetProperties(), true)};
    }
    const bool single = value.description->GetStorageName() == Column::storageVal;
    return {MakeRef<CastExp>(anonymous, value.exp, MakeConstant(type->null()).exp),
            Describe(type->properties(), single)};
}

VQLExpressionCompiler::Operands VQLExpressionCompiler::Convert(const VQLFuncallExpression& call, const wchar_t* klass,
                                                               Operands operands) const {
    const std::wstring& op = call.GetPrimitiveOp();
    if (FindKernel(klass, op, operands)) return operands;
    for (const Conversion conversion : conversions) {
        Operands converted = operands;
        for (Compiled& operand : converted) {
            const usrtype* from = operand.description->GetType();
            const usrtype* target = conversion(*from);
            if (target && target != from) operand = MakeCast(operand, target->properties());
        }
        if (FindKernel(klass, op, converted)) return converted;
    }
    return operands;
}

VQLExpressionCompiler::Compiled VQLExpressionCompiler::MakeCall(const VQLFuncallExpression& call, const wchar_t* klass,
                                                                const Operands& operands) const {
    const std::wstring& op = call.GetPrimitiveOp();
    const std::wstring_view family = klass;
    Exp::Arguments arguments;
    std::vector<usrprops> inputs;
    bool single = !operands.empty() && family == primitive::klassMap;
    for (const Compiled& operand : operands) {
        arguments.push_back(operand.exp);
        inputs.push_back(operand.description->GetProperties());
        single &= operand.description->GetStorageName() == Column::storageVal;
    }
    RefCntPtr<Exp> exp = family == primitive::klassSelect      ? MakeSelectCall(op, arguments)
                         : family == primitive::klassAggregate ? MakeAggregateCall(op, arguments)
                                                               : MakeMapCall(op, arguments);
    if (!exp) RaiseUnknownFunction(call);

    // Without a kernel the binding raises an error that names the types; until then the language's type stands in.
    const primitive* kernel = FindKernel(klass, op, operands);
    usrprops properties;
    if (kernel) {
        properties = primitive_result::resolve(op).result_props(kernel, inputs);
    } else if (const usrtype* type = TypeOfDataType(call.GetDataType(), {})) {
        properties = type->properties();
    }
    if (family == primitive::klassSelect) properties = primitive::primitive_props(L"bit");
    return {exp, Describe(std::move(properties), single)};
}

// The engine selects among doubles, datetimes and durations.
VQLExpressionCompiler::Compiled VQLExpressionCompiler::MakeQuantile(const VQLFuncallExpression& call,
                                                                    const Operands& operands) const {
    const usrtype* from = operands[0].description->GetType();
    const usrtype* type = NumberToDoubleDateToDatetime(*from);
    const Compiled value = type && type != from ? MakeCast(operands[0], type->properties()) : operands[0];
    const RefCntPtr<Exp> fraction = MakeConstant(usratom(VQLQuantileFraction(call))).exp;
    return {MakeRef<QuantileExp>(anonymous, value.exp, fraction), Describe(value.description->GetProperties(), false)};
}

VQLExpressionCompiler::Compiled VQLExpressionCompiler::MakeMoments(const std::wstring& op,
                                                                   MomentsExp::Statistic statistic,
                                                                   const Operands& operands) const {
    Exp::Arguments values;
    for (const Compiled& operand : operands) {
        const usrtype* from = operand.description->GetType();
        const bool isDouble = from == builtin::usrtypeof<double>();
        values.push_back((isDouble ? operand : MakeCast(operand, builtin::usrtypeof<double>()->properties())).exp);
    }
    return {MakeRef<MomentsExp>(anonymous, op, statistic, std::move(values)),
            Describe(primitive::primitive_props(L"double"), false)};
}

void VQLExpressionCompiler::NarrowLiteral(Operands& operands) const {
    if (operands.size() != 2 || operands[0].IsConstant() == operands[1].IsConstant()) return;
    const unsigned literal = operands[0].IsConstant() ? 0 : 1;
    const usrtype* column = operands[1 - literal].description->GetType();
    const auto& constant = static_cast<const ConstantExp&>(*operands[literal].exp);
    const usratom value = constant.GetValue();
    if (column->GetDataType() != DataType::integer || column == value.type() ||
        value.type() != builtin::usrtypeof<long long>() || value.isnull()) {
        return;
    }
    const auto number = static_cast<long long>(value);
    const int bits = static_cast<int>(8 * column->size());
    if (bits >= 64) return;
    const long long bound = 1LL << (bits - 1);
    if (number <= -bound || number >= bound) return;  // the least value is the null
    operands[literal] = MakeCast(operands[literal], column->properties());
}

VQLExpressionCompiler::Compiled VQLExpressionCompiler::Fold(Compiled value) {
    if (!GetUseConstantFolding() || value.exp->GetArguments().empty()) return value;
    for (const auto& argument : value.exp->GetArguments()) {
        if (!dynamic_cast<ConstantExp*>(argument.get())) return value;
    }
    Metrics::Scope scope("Folding");
    value.exp->AllocateColumn(nullptr);
    value.exp->Evaluate(1, 1, nullptr, nullptr);
    usratom atom;
    const RefCntPtr<Column>& column = value.exp->GetColumn();
    column->GetType()->get(value.exp->GetResult(), 0, atom);
    ++m_folded;
    return MakeConstant(atom);
}

void VQLExpressionCompiler::VisitFuncall(VQLFuncallExpression& expression) {
    const std::wstring& op = expression.GetPrimitiveOp();
    if (op.empty()) {
        throw VQLParseException(status::VQLExpressionCompiler_Call,
                                L"unresolved function (" + expression.GetName() + L")", expression.GetPosition());
    }
    const ContextType context = m_context;
    const VQLExpressions& arguments = expression.GetArguments();
    for (const auto& argument : arguments) {
        const auto* column = dynamic_cast<const VQLIdentifierExpression*>(argument.get());
        if (!column) continue;
        const std::wstring& name = column->GetIdentifier().GetComponents().back().AsString();
        if (IsArrayCompressed(*m_source.DescribeColumn(name))) {
            throw VQLParseException(status::VQLExpressionCompiler_Call,
                                    L"funcall on array compressed column (" + name + L")", expression.GetPosition());
        }
    }

    if (op == BooleanExp::opAnd || op == BooleanExp::opOr) {
        // The parts of one that selects select in turn, each of the rows that are still undecided.
        Exp::Arguments parts;
        bool constant = true;
        for (const auto& operand :
             CompileArguments(arguments, context == ContextType::select ? ContextType::select : ContextType::map)) {
            constant &= operand.IsConstant();
            parts.push_back(operand.exp);
        }
        Compiled result{MakeRef<BooleanExp>(anonymous, op, std::move(parts)),
                        Describe(primitive::primitive_props(L"bit"), constant)};
        Push(expression, constant ? Fold(std::move(result)) : std::move(result));
        return;
    }
    if (op == CastExp::opCast) {
        const auto& target = static_cast<const VQLLiteralExpression&>(*arguments.front());
        Push(expression, MakeCast(Compile(arguments.back(), ContextType::map), target.GetUsrProps()));
        return;
    }

    Operands operands = CompileArguments(arguments, ContextType::map);
    if (IsComparison(op)) NarrowLiteral(operands);
    const bool aggregates =
        context == ContextType::aggregate && expression.GetExpressionType() == VQLExpressionType::aggregate;
    if (aggregates && op == QuantileExp::opQuantile) {
        Push(expression, MakeQuantile(expression, operands));
        return;
    }
    if (const MomentsExp::Statistic* statistic = aggregates ? MomentsExp::Find(op) : nullptr) {
        Push(expression, MakeMoments(op, *statistic, operands));
        return;
    }
    if (aggregates && op == CountdExp::opCountd) {
        Push(expression,
             {MakeRef<CountdExp>(anonymous, operands[0].exp), Describe(primitive::primitive_props(L"bigint"), false)});
        return;
    }
    const wchar_t* klass = aggregates                       ? primitive::klassAggregate
                           : context == ContextType::select ? primitive::klassSelect
                                                            : primitive::klassMap;
    bool constant = !operands.empty() && !aggregates;
    for (const Compiled& operand : operands) constant &= operand.IsConstant();
    if (constant) klass = primitive::klassMap;

    Operands converted = Convert(expression, klass, operands);
    if (klass == primitive::klassSelect && !FindKernel(klass, op, converted)) {
        klass = primitive::klassMap;  // the rows are selected by the computed bits
        converted = Convert(expression, klass, std::move(operands));
    }
    Compiled result = MakeCall(expression, klass, converted);
    if (const primitive* kernel = FindKernel(klass, op, converted)) expression.SetPrimitiveName(kernel->name());
    if (constant) result = Fold(std::move(result));
    if (klass == primitive::klassMap) {
        const VQLDataType wanted = expression.GetDataType();
        const usrtype* target = TypeOfDataType(wanted, {});
        if (target && VQLDataTypeFromProps(result.description->GetProperties()) != wanted) {
            result = MakeCast(result, target->properties());
        }
    }
    Push(expression, std::move(result));
}

void VQLExpressionCompiler::VisitCase(VQLCaseExpression& expression) {
    const VQLExpressions& arguments = expression.GetArguments();
    if (arguments.size() % 2 == 0) {
        throw VQLParseException(status::VQLExpressionCompiler_Call, L"case has an even number of arguments",
                                expression.GetPosition());
    }
    const Operands operands = CompileArguments(arguments, ContextType::map);
    Exp::Arguments parts;
    bool constant = true;
    const usrtype* common = nullptr;
    bool same = true;
    for (size_t i = 0; i < operands.size(); ++i) {
        const Compiled& operand = operands[i];
        if (IsArrayCompressed(*operand.description)) {
            throw VQLParseException(
                status::VQLExpressionCompiler_Call,
                L"case references an array compressed column (" + operand.description->GetName() + L")",
                expression.GetPosition());
        }
        parts.push_back(operand.exp);
        constant &= operand.IsConstant();
        if (i % 2 == 0 && i + 1 != operands.size()) continue;  // a condition
        const usrtype* type = operand.description->GetType();
        same &= !common || type == common;
        common = type;
    }
    const usrtype* wide = TypeOfDataType(expression.GetDataType(), {});
    const usrtype* type = same || !wide ? common : wide;
    RefCntPtr<Exp> lookup = constant ? nullptr : MakeCaseLookup(parts);
    Compiled result{lookup ? std::move(lookup) : MakeRef<CaseExp>(anonymous, std::move(parts)),
                    Describe(type->properties(), constant)};
    Push(expression, constant ? Fold(std::move(result)) : std::move(result));
}

}  // namespace qve
