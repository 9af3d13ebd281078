#pragma once

#include <string>
#include <vector>

#include "vql/syntax/VQLDataType.h"

namespace qve {

class VQLFunctionTable;

/// One signature of a function, and the kernel operation that computes it.
class VQLFunction {
public:
    VQLFunction(VQLDataType returnType, std::wstring name, std::wstring primitiveOp, std::vector<VQLDataType> arguments,
                bool isAggregate);

    VQLDataType GetReturnType() const { return m_returnType; }
    const std::wstring& GetName() const { return m_name; }
    const std::wstring& GetPrimitiveOp() const { return m_primitiveOp; }
    const std::vector<VQLDataType>& GetArguments() const { return m_arguments; }
    bool IsAggregate() const { return m_isAggregate; }

    /// A domain argument is evaluated on the dictionary of a compressed column and not on its codes.
    bool IsDomainArgument(size_t i) const { return m_domainArguments.at(i); }
    void SetDomainArgument(size_t i, bool isDomain) { m_domainArguments.at(i) = isDomain; }
    /// Makes no argument a domain argument.
    void InitDomainArguments() { m_domainArguments.assign(m_arguments.size(), false); }

    /// All functions of the language. Built on first use, read-only from then on.
    static const VQLFunctionTable& Table();

    static const std::wstring fnAnd, fnOr, fnNot, fnIsNull, fnIsNotNull;

private:
    VQLDataType m_returnType;
    std::wstring m_name;
    std::wstring m_primitiveOp;
    std::vector<VQLDataType> m_arguments;
    bool m_isAggregate;
    std::vector<bool> m_domainArguments;
};

}  // namespace qve
