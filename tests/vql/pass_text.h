#pragma once

#include <map>
#include <set>
#include <vector>

#include "tests/vql/syntax_text.h"
#include "types/types_initialization.h"
#include "vql/VQLQueryChecker.h"
#include "vql/VQLTableSpaceFamily.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve::test {

/// Runs single passes on query text, over the tables [t] (g, h, i integer; d, e double; s string; b boolean; day
/// date; at datetime; span duration; k integer, ascending) and [u] (g integer, unique; n integer; w double).
class PassText {
public:
    PassText() {
        types_initialization();
        const usrprops sorted{{usrpropkey::ordered, L"asc"}};
        AddTable(L"[t]", {{L"g", VQLDataType::integer, {}},
                          {L"h", VQLDataType::integer, {}},
                          {L"i", VQLDataType::integer, {}},
                          {L"k", VQLDataType::integer, sorted},
                          {L"d", VQLDataType::double_, {}},
                          {L"e", VQLDataType::double_, {}},
                          {L"s", VQLDataType::string, {}},
                          {L"b", VQLDataType::boolean, {}},
                          {L"day", VQLDataType::date, {}},
                          {L"at", VQLDataType::datetime, {}},
                          {L"span", VQLDataType::duration, {}}});
        AddTable(L"[u]", {{L"g", VQLDataType::integer, {{usrpropkey::unique, L"true"}}},
                          {L"n", VQLDataType::integer, {}},
                          {L"w", VQLDataType::double_, {}}});
        m_family.AddTableSpace(m_tables, L"");
    }

    /// The text on one line, as the formatter writes it; without any pass.
    std::wstring Plain(const std::wstring& text) { return SyntaxText::Text(Check(m_text.Query(text))); }
    /// The text after `pass`, from query to query. What the pass leaves must stand a check.
    template <class Pass>
    std::wstring After(const std::wstring& text, Pass pass) {
        return SyntaxText::Text(Check(pass(Check(m_text.Query(text)))));
    }

    RefCntPtr<VQLQuery> Check(const RefCntPtr<VQLQuery>& query) {
        VQLQueryChecker checker(m_family);
        checker.SetForceRebuild(true);
        checker(query);
        return query;
    }
    RefCntPtr<VQLQuery> Checked(const std::wstring& text) { return Check(m_text.Query(text)); }

    SymbolDictionary& GetDictionary() { return m_text.dictionary; }
    VQLIdentifierFactory& GetFactory() { return m_factory; }
    const VQLTableSpaceFamily& GetFamily() const { return m_family; }

private:
    struct ColumnSpec {
        const wchar_t* name;
        VQLDataType type;
        usrprops properties;
    };
    void AddTable(const wchar_t* name, std::vector<ColumnSpec> specs) {
        VQLColumnSpace::Columns columns;
        for (ColumnSpec& spec : specs) {
            columns.push_back(MakeRef<VQLColumn>(VQLIdentifier::Unquoted(spec.name, m_text.dictionary), spec.type,
                                                 std::move(spec.properties)));
        }
        const VQLIdentifier table = m_text.Name(name);
        m_tables[table] = MakeRef<VQLTable>(table, MakeRef<VQLColumnSpace>(std::move(columns)));
    }

    SyntaxText m_text;
    std::map<VQLIdentifier, RefCntPtr<VQLTable>> m_tables;
    VQLTableSpaceFamily m_family{m_text.dictionary};
    VQLIdentifierFactory m_factory{m_text.dictionary};
};

}  // namespace qve::test
