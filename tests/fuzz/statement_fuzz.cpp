// Statement text, from bytes to trees: whatever a client sends ends in a query, an expression or a numbered error. What
// was built prints as text that builds the same again.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "system/QuillonException.h"
#include "system/VQLException.h"
#include "system/unicode.h"
#include "types/types_initialization.h"
#include "vql/VQLExpressionFormatter.h"
#include "vql/VQLExpressionParser.h"
#include "vql/VQLQueryCloner.h"
#include "vql/VQLQueryFormatter.h"
#include "vql/VQLQueryParser.h"

namespace {

using namespace qve;

[[noreturn]] void Fail(const char* what, const std::wstring& first, const std::wstring& second) {
    std::fprintf(stderr, "%s:\n%s\n%s\n", what, narrow(first).c_str(), narrow(second).c_str());
    std::abort();
}

/// Runs `body`; the errors of statements are what most inputs come to.
template <class Body>
void Expecting(Body body) {
    try {
        body();
    } catch (const VQLException& e) {
        if (e.GetErrorCode() == 0) Fail("error without number", e.GetWhatW(), {});
    } catch (const QuillonException& e) {
        if (e.GetStatus() == 0) Fail("error without number", widen(e.GetText()), {});
    }
}

void TryQuery(const std::wstring& text) {
    SymbolDictionary dictionary;
    const RefCntPtr<VQLQuery> query = VQLQueryParser(dictionary)(text.c_str());
    const std::wstring formatted = FormatQuery(query);
    if (const std::wstring cloned = FormatQuery(VQLQueryCloner(dictionary)(query)); cloned != formatted)
        Fail("a clone differs", formatted, cloned);
    SymbolDictionary other;
    try {
        if (const std::wstring again = FormatQuery(VQLQueryParser(other)(formatted.c_str())); again != formatted)
            Fail("the text does not read back", formatted, again);
    } catch (const VQLException& e) {
        // Properties that print quoted may pass the length of a token, and nothing else may fail.
        if (e.GetWhatW() != L"bad token size") Fail("the text does not read back", formatted, e.GetWhatW());
    }
}

void TryExpression(const std::wstring& text) {
    SymbolDictionary dictionary;
    const std::wstring formatted = FormatExpression(VQLExpressionParser()(text.c_str(), dictionary, {}));
    SymbolDictionary other;
    try {
        const std::wstring again = FormatExpression(VQLExpressionParser()(formatted.c_str(), other, {}));
        if (again != formatted) Fail("the text does not read back", formatted, again);
    } catch (const VQLException& e) {
        if (e.GetWhatW() != L"bad token size") Fail("the text does not read back", formatted, e.GetWhatW());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool initialized = (types_initialization(), true);
    static_cast<void>(initialized);
    const std::wstring text = widen(std::string_view(reinterpret_cast<const char*>(data), size));
    Expecting([&] { TryQuery(text); });
    Expecting([&] { TryExpression(text); });
    return 0;
}
