#pragma once

#include <optional>
#include <string>

#include "vql/VQLFunctionTable.h"

namespace qve {

/// Fills a function table with all functions of the language.
class CreateFunctions {
public:
    using Type = std::optional<VQLDataType>;

    explicit CreateFunctions(VQLFunctionTable& table) : m_table(table) {}

    void operator()();

    /// Insert one signature, an aggregate's or a scalar function's; trailing empty arguments are left out. Throw
    /// VQLException "return type cannot be null".
    void Agg(Type returnType, const wchar_t* name, const wchar_t* op, Type argument1 = {}, Type argument2 = {});
    void Func(Type returnType, const wchar_t* name, const wchar_t* op, Type argument1 = {}, Type argument2 = {},
              Type argument3 = {});

private:
    void Insert(Type returnType, const wchar_t* name, const wchar_t* op, std::initializer_list<Type> arguments,
                bool isAggregate);
    void CreateAggregates();
    void CreateLogic();
    void CreateArithmetic();
    void CreateMath();
    void CreateDates();
    void CreateStrings();
    void CreateConversions();

    VQLFunctionTable& m_table;
};

}  // namespace qve
