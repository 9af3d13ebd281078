#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "os/OS.h"
#include "os/Path.h"
#include "storage/SimpleDatabase.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "tests/support/ScratchFolder.h"
#include "types/builtin.h"
#include "types/types_initialization.h"
#include "types/varchar.h"

namespace qve {

/// Tests with the types of the engine and a directory of their own, which goes with them.
class StorageTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static const bool once = (types_initialization(), true);
        (void)once;
    }
    std::wstring In(const std::wstring& name) const { return Path::join(m_directory, name); }

    const test::ScratchFolder m_scratch;
    const std::wstring m_directory = m_scratch.GetPath().wstring();
};

/// The number of the exception that `action` throws; 0 when it throws none.
template <class F>
int StatusOf(F action) {
    try {
        action();
    } catch (const QuillonException& fault) {
        return fault.GetStatus();
    }
    return 0;
}

inline usrprops LongProperties() {
    return builtin::primitive_props(L"long");
}

inline usrprops TextProperties() {
    usrprops properties = varchar::propsof(50, 1);
    properties.set(usrpropkey::compression, L"heap");
    properties.set(usrpropkey::storagewidth, L"8");
    return properties;
}

inline usratom TextAtom(const std::string& text) {
    return usratom(varchar::usrtypeof(50, 1), text.data(), text.size());
}

inline RefCntPtr<Column> MakeLongs(const std::vector<int>& values) {
    auto column = MakeRef<Column>(LongProperties(), MakeRef<TempFileDataStream>());
    for (const int value : values) column->Append(1, usratom(value), false);
    return column;
}

inline RefCntPtr<Column> MakeTexts(const std::vector<std::string>& values) {
    auto column = MakeRef<Column>(TextProperties(), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
    for (const std::string& value : values) column->Append(1, TextAtom(value), false);
    return column;
}

/// The rows of a column in the text form of its type.
inline std::vector<std::string> Rows(Column& column) {
    std::vector<std::string> rows;
    for (uint64_t row = 0; row < column.GetCount(); ++row) {
        column.Seek(row, 1);
        usratom atom(column.GetType());
        column.GetType()->get(column.GetInput(), 0, atom);
        std::ostringstream text;
        column.GetType()->tostream(text, atom);
        rows.push_back(text.str());
    }
    return rows;
}

}  // namespace qve
