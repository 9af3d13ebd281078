#include "cli/ErrorLocator.h"

#include <algorithm>
#include <string_view>

#include "cli/display_width.h"
#include "storage/Column.h"
#include "system/VQLException.h"
#include "system/unicode.h"
#include "vql/VQLQueryParser.h"
#include "vql/syntax/SymbolDictionary.h"
#include "vql/syntax/VQLLexer.h"
#include "vql/syntax/VQLParser.h"

namespace qve::cli {
namespace {

constexpr int s_firstOfParser = 49000;
constexpr int s_lastOfParser = 49999;

[[noreturn]] void ThrowNotSingle(RefCntPtr<VQLNode>) {
    throw VQLException(0);
}

/// Where the lexer, the parser or the builders refuse the text with this very error.
std::optional<Place> PlaceOfRefusal(const std::wstring& text, int status, const std::string& message) {
    SymbolDictionary symbols;
    try {
        const RefCntPtr<VQLNode> node = VQLParser::ParseAndReturnFirstNode(symbols, text.c_str(), true, ThrowNotSingle);
        if (node) VQLQueryParser{symbols}(node);
    } catch (const VQLParseException& refusal) {
        if (refusal.GetErrorCode() != status || refusal.GetWhatA() != message) return std::nullopt;
        return Place{refusal.GetPosition().GetLineNo(), refusal.GetPosition().GetColumnNo()};
    } catch (const std::exception&) {
        // Another fault than the one to be found.
    }
    return std::nullopt;
}

/// Where the longest name or word of the text stands that the message speaks of.
std::optional<Place> PlaceOfName(const std::wstring& text, const std::string& message) {
    const std::wstring wide = widen(message);
    VQLLexer lexer;
    try {
        lexer(text.c_str());
    } catch (const std::exception&) {
        return std::nullopt;
    }
    const VQLToken* best = nullptr;
    std::size_t bestLength = 0;
    for (const VQLToken& token : lexer.GetTokens()) {
        const std::wstring_view name = *token.GetValue();
        std::wstring mention(name);
        if (token.GetType() == VQLTokenType::symbol) mention = L"(" + mention + L")";
        const bool isName = token.GetType() == VQLTokenType::identifier || token.GetType() == VQLTokenType::symbol;
        if (!isName || name.size() <= bestLength || wide.find(mention) == std::wstring::npos) continue;
        best = &token;
        bestLength = name.size();
    }
    if (!best) return std::nullopt;
    return Place{best->GetPosition().GetLineNo(), best->GetPosition().GetColumnNo()};
}

}  // namespace

std::optional<Place> LocateError(const std::string& statement, int status, const std::string& message) {
    if (status < s_firstOfParser || status > s_lastOfParser) return std::nullopt;
    const std::wstring text = widen(statement);
    if (const std::optional<Place> place = PlaceOfRefusal(text, status, message)) return place;
    return PlaceOfName(text, message);
}

std::string ShowPlace(const std::string& text, Place place) {
    const std::wstring wide = widen(text);
    std::wstring_view line = wide;
    for (int i = 0; i < place.line && line.find(L'\n') != std::wstring_view::npos; ++i) {
        line.remove_prefix(line.find(L'\n') + 1);
    }
    line = line.substr(0, line.find(L'\n'));
    // Generated statements may be one line of megabytes: only the surroundings of the place are shown.
    constexpr std::size_t shown = 60;
    const std::size_t place_in_line = std::min(static_cast<std::size_t>(place.column), line.size());
    const std::size_t first = place_in_line > shown ? place_in_line - shown : 0;
    const std::string mark = first > 0 ? "..." : "";
    const std::wstring_view before = line.substr(first, place_in_line - first);
    const std::wstring_view around = line.substr(first, before.size() + shown);
    const std::string end = first + around.size() < line.size() ? "..." : "";
    const std::string indent(mark.size() + DisplayWidth(Printable(narrow(before))), ' ');
    return mark + Printable(narrow(around)) + end + "\n" + indent + "^";
}

}  // namespace qve::cli
