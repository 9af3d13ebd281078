// Functions of texts over arbitrary bytes as UTF-8, UTF-16 and UTF-32: every kernel ends, writes no more than its row,
// and gives a text that is there.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/unicode.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/types_initialization.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace {

using namespace qve;

/// The functions of texts: maps over text columns and numbers, in one width of each.
std::vector<primitive*> Functions() {
    std::vector<primitive*> found;
    for (const primitive* p : primitive::directory().all()) {
        bool fits = p->klass() == primitive::klassMap && p->operation() != L"hash";
        bool text = false;
        for (const auto& [type, storage] : p->arguments()) {
            fits = fits && storage == primitive::storageCol && (type == L"usr4" || type == L"long");
            text = text || type == L"usr4";
        }
        const bool result = p->result() == L"usr4" || p->result() == L"long" || p->result() == L"bit";
        if (fits && text && result && p->operation() != L"fetch") found.push_back(const_cast<primitive*>(p));
    }
    return found;
}

struct Heap {
    explicit Heap(const usrtype* type) : stream(MakeRef<MemoryDataStream>()), heap(type->heap(stream.get())) {}
    RefCntPtr<MemoryDataStream> stream;
    std::unique_ptr<usrheap> heap;
};

void Call(primitive* p, const output_column& out, const std::vector<input_column>& in) {
    if (in.size() == 1) {
        ResolvePrimitive<unary_func>(p)(1, out, in[0], nullptr);
    } else if (in.size() == 2) {
        ResolvePrimitive<binary_func>(p)(1, out, in[0], in[1], nullptr);
    } else {
        ResolvePrimitive<ternary_func>(p)(1, out, in[0], in[1], in[2], nullptr);
    }
}

void Run(const std::vector<primitive*>& functions, const std::array<std::string, 3>& texts, int number,
         const usrtype* type) {
    Heap values(type);
    std::array<unsigned, 3> tokens{};
    for (size_t i = 0; i < texts.size(); ++i) {
        const size_t whole = texts[i].size() / static_cast<size_t>(type->scale()) * static_cast<size_t>(type->scale());
        tokens[i] = static_cast<unsigned>(values.heap->put(usratom(type, texts[i].data(), whole)));
    }
    for (primitive* p : functions) {
        std::vector<input_column> inputs;
        size_t text = 0;
        for (const auto& [name, storage] : p->arguments()) {
            if (name == L"usr4") {
                inputs.push_back({&tokens[text++], values.heap.get(), sizeof(unsigned), 1, 0});
            } else {
                inputs.push_back({&number, nullptr, sizeof(int), 1, 0});
            }
        }
        Heap made(type);
        // The cell behind the row must stay what it is.
        unsigned out[2] = {0, 0xABABABAB};
        const uint64_t width = p->result() == L"bit" ? 1 : sizeof(unsigned);
        Call(p, {out, made.heap.get(), width, 1, nullptr}, inputs);
        if (out[1] != 0xABABABAB) {
            std::fprintf(stderr, "%s writes beyond its output\n", narrow(p->name()).c_str());
            std::abort();
        }
        if (p->result() == L"usr4" && out[0] != ~0U && !made.heap->bytes(out[0]).data() &&
            !values.heap->bytes(out[0]).data()) {
            std::fprintf(stderr, "%s gives a token of nothing\n", narrow(p->name()).c_str());
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool initialized = (types_initialization(), define_primitives(), true);
    static_cast<void>(initialized);
    static const std::vector<primitive*> functions = Functions();
    // The first byte chooses the type, the second the number; the rest are three texts of one length.
    if (size < 2 || size > 4096) return 0;
    static constexpr std::array<unsigned, 3> scales = {1, 2, 4};
    const wchar_t* collation = data[0] / 3 % 2 ? L"en_US_CI" : L"binary";
    const usrtype* type = varchar::usrtypeof(varchar::clob_precision, scales[data[0] % 3], collation);
    std::array<std::string, 3> texts;
    const size_t third = (size - 2) / 3;
    for (size_t i = 0; i < texts.size(); ++i) {
        texts[i].assign(reinterpret_cast<const char*>(data) + 2 + i * third, third);
    }
    Run(functions, texts, static_cast<int8_t>(data[1]), type);
    return 0;
}
