// The files of a column, of arbitrary bytes: its properties up to a zero byte, how long its data are (4 bytes, little
// endian), its data with the header of their encoding, and the rest as its dictionary. What is no column is refused
// with a number; of what is one every part can be read, and nothing takes more memory than the files are long.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "storage/Column.h"
#include "storage/EncodingFactory.h"
#include "storage/PropertyFile.h"
#include "storage/stream/MemoryDataStream.h"
#include "storage/verify_column.h"
#include "system/QuillonException.h"
#include "types/types_initialization.h"

namespace {

using namespace qve;

constexpr uint64_t s_page = 1024;

/// Reads a page at a row, as operators do.
void ReadPage(Column& column, uint64_t row) {
    const uint64_t rows = column.GetCount();
    if (row >= rows) return;
    const uint64_t count = std::min({column.Seek(row, std::min(s_page, rows - row)), s_page, rows - row});
    const char* const cells = static_cast<const char*>(column.GetInput().data);
    unsigned sum = 0;
    for (uint64_t i = 0; i < count * column.GetTokenSize(); ++i) sum += static_cast<unsigned char>(cells[i]);
    volatile unsigned used = sum;
    (void)used;
    usratom value(column.GetType());
    for (uint64_t i = 0; i < count; i += 97) {
        column.Seek(row + i, 1);
        column.GetType()->get(column.GetInput(), 0, value);
    }
}

void ReadColumn(std::string_view text, std::string_view data, std::string_view dictionary) {
    usrprops properties = ParseProperties(text);
    // What was read once is read again.
    if (FormatProperties(ParseProperties(FormatProperties(properties))) != FormatProperties(properties)) {
        std::fprintf(stderr, "properties change when they are written and read\n");
        std::abort();
    }
    RefCntPtr<DataStream> cells = MakeRef<MemoryDataStream>(data.data(), data.size());
    const std::wstring encoding(properties.text(usrpropkey::encoding));
    if (!encoding.empty()) cells = EncodingFactory::CreateEncodingStream(std::move(cells), encoding);
    RefCntPtr<DataStream> entries;
    if (properties.has(usrpropkey::compression)) {
        entries = MakeRef<MemoryDataStream>(dictionary.data(), dictionary.size());
    }
    Column column(std::move(properties), std::move(cells), std::move(entries));
    column.GetType();
    // A header may promise any number of equal or rising values; all of them are read where they are not too many.
    constexpr uint64_t few = 1 << 20;
    if (column.GetCount() <= few) {
        VerifyColumn(column, [] {});
    }
    for (const uint64_t row : {uint64_t{0}, uint64_t{1023}, uint64_t{s_page}, column.GetCount() / 2}) {
        ReadPage(column, row);
    }
    ReadPage(column, column.GetCount() - std::min(column.GetCount(), s_page + 1));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    static const bool once = (types_initialization(), true);
    (void)once;
    const std::string_view input(reinterpret_cast<const char*>(bytes), size);
    const size_t end = std::min(input.find('\0'), input.size());
    std::string_view rest = input.substr(std::min(end + 1, input.size()));
    uint32_t count = 0;
    std::memcpy(&count, rest.data(), std::min(sizeof count, rest.size()));
    rest.remove_prefix(std::min(sizeof count, rest.size()));
    const std::string_view data = rest.substr(0, count);
    rest.remove_prefix(data.size());
    try {
        ReadColumn(input.substr(0, end), data, rest);
    } catch (const QuillonException& fault) {
        if (fault.GetStatus() != 0 && !fault.GetText().empty()) return 0;
        std::fprintf(stderr, "refused without a number\n");
        std::abort();
    }
    return 0;
}
