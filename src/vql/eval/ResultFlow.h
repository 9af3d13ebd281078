#pragma once

#include <string>
#include <utility>
#include <vector>

#include "algebra/Restrict.h"

namespace qve {

/// The columns that the client asked for, with the property "ordinal", by which a result is laid out, in each.
/// Copies nothing: its columns share the streams of those below.
class ResultFlow : public Restrict {
public:
    /// `names` in the order of the result.
    ResultFlow(RefCntPtr<DataFlow> source, std::vector<std::wstring> names);
    ~ResultFlow() override;
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

private:
    RefCntPtr<Column> WithOrdinal(const Column& source, const std::wstring& name) const;

    const std::vector<std::wstring> m_names;
    mutable std::vector<std::pair<RefCntPtr<Column>, RefCntPtr<Column>>> m_shared;  // the source's, ours
};

}  // namespace qve
