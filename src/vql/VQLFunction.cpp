#include "vql/VQLFunction.h"

#include "vql/CreateFunctions.h"
#include "vql/VQLFunctionTable.h"

namespace qve {

const std::wstring VQLFunction::fnAnd = L"and";
const std::wstring VQLFunction::fnOr = L"or";
const std::wstring VQLFunction::fnNot = L"not";
const std::wstring VQLFunction::fnIsNull = L"isnull";
const std::wstring VQLFunction::fnIsNotNull = L"isnotnull";

VQLFunction::VQLFunction(VQLDataType returnType, std::wstring name, std::wstring primitiveOp,
                         std::vector<VQLDataType> arguments, bool isAggregate)
    : m_returnType(returnType),
      m_name(std::move(name)),
      m_primitiveOp(std::move(primitiveOp)),
      m_arguments(std::move(arguments)),
      m_isAggregate(isAggregate) {
    InitDomainArguments();
}

const VQLFunctionTable& VQLFunction::Table() {
    static const VQLFunctionTable table = [] {
        VQLFunctionTable functions;
        CreateFunctions{functions}();
        return functions;
    }();
    return table;
}

}  // namespace qve
