#include "ingest/TextColumnParser.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <string_view>

#include "ingest/ICUDateParser.h"
#include "ingest/ScalarParser.h"
#include "ingest/TextProperties.h"
#include "ingest/status.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"
#include "types/complete_type.h"
#include "types/parse_value.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve {

TextColumnParser::TextColumnParser(usrprops type, parse_config config, unsigned rank)
    : m_type(std::move(type)), m_config(std::move(config)), m_rank(rank) {
    MakeColumn({});
}

TextColumnParser::~TextColumnParser() = default;

void TextColumnParser::MakeColumn(const usrprops& properties) {
    usrprops all = properties;
    all += m_type;
    RefCntPtr<DataStream> dictionary;
    if (all.has(usrpropkey::compression)) dictionary = MakeRef<TempFileDataStream>();
    m_column = MakeRef<Column>(std::move(all), MakeRef<TempFileDataStream>(), std::move(dictionary));
    ClearErrors();
}

void TextColumnParser::ClearErrors() {
    m_errors = 0;
    m_nonEmpty = 0;
    m_firstError = m_lastError = none;
}

void TextColumnParser::Reset(unsigned rows) {
    if (m_column->GetCount() < rows) m_column->Extend(rows - m_column->GetCount());
    m_column->Seek(0, rows);
    m_column->SetFlags(m_column->GetFlags() | column_flags::not_null);
}

namespace {

/// Text, whose values go into the dictionary of the column.
class VarCharParser : public TextColumnParser {
public:
    VarCharParser(usrprops type, parse_config config) : TextColumnParser(std::move(type), std::move(config), 0) {}

    RefCntPtr<TextColumnParser> Clone() const override { return MakeRef<VarCharParser>(m_type, m_config); }

    void Reset(unsigned rows) override {
        TextColumnParser::Reset(rows);
        m_values.resize(rows);
        m_tokens.resize(rows);
        m_unescaped.clear();
    }

    void Parse(unsigned count, unsigned first, uint64_t, const TextFields& fields) override {
        const char* const text = fields.text;
        unsigned empty = 0;
        m_unescaped.clear();
        for (unsigned i = 0; i < count; ++i) {
            const unsigned begin = fields.begins[i * fields.stride] + 1;
            unsigned end = fields.ends[i * fields.stride];
            if (begin < end && text[end - 1] == '\r') --end;  // the record ends in two characters
            if (begin == end) {
                m_values[i] = {};
                ++empty;
            } else if (IsQuote(text[begin])) {
                m_values[i] = Unquote(text, begin, end);
            } else {
                m_values[i] = {text + begin, end - begin};
            }
        }
        m_nonEmpty += count - empty;
        m_column->GetHeap()->put_bytes(count, m_tokens.data(), m_values.data());
        StoreTokens(count, first);
        if (empty) m_column->SetFlags(m_column->GetFlags() & ~column_flags::not_null);
    }

private:
    bool IsQuote(char c) const { return c == m_config.double_quote || c == m_config.single_quote; }

    std::string_view Unquote(const char* text, unsigned begin, unsigned end) {
        const char quote = text[begin];
        if (end - begin >= 2 && text[end - 1] == quote) {
            const std::string_view inner(text + begin + 1, end - begin - 2);
            const bool plain = inner.find(quote) == std::string_view::npos &&
                               (m_config.escape == 0 || inner.find(m_config.escape) == std::string_view::npos);
            if (plain) return inner;
        }
        std::string& value = m_unescaped.emplace_back();
        if (parse_varchar_char(value, begin, end, text, m_config)) value.assign(text + begin, end - begin);
        return value;
    }

    // The scan has chosen a width that the tokens of the whole text fit into.
    void StoreTokens(unsigned count, unsigned first) {
        const output_column out = m_column->GetOutput(0);
        if (out.width == sizeof(uint64_t)) {
            std::memcpy(static_cast<uint64_t*>(out.data) + first, m_tokens.data(), count * sizeof(uint64_t));
            return;
        }
        unsigned* const tokens = static_cast<unsigned*>(out.data) + first;
        for (unsigned i = 0; i < count; ++i) tokens[i] = static_cast<unsigned>(m_tokens[i]);
    }

    std::vector<std::string_view> m_values;
    std::vector<unsigned long long> m_tokens;
    std::deque<std::string> m_unescaped;  // values that are not text as it stands in the file
};

/// Tells of the candidates which one a client's type asks for.
class CandidateList {
public:
    CandidateList(parse_config config, const usrprops& given) : m_config(std::move(config)) {
        if (given.has(usrpropkey::type) || given.has(usrpropkey::builtin) || given.has(usrpropkey::datatype)) {
            m_wanted = complete_type(given);
        }
    }

    template <class T>
    void Add(unsigned rank, parse_function<T> parse, const parse_config* config = nullptr) {
        const usrtype* type = builtin::usrtypeof<T>();
        if (!Wants(*type)) return;
        m_parsers.push_back(
            MakeRef<ScalarParser<T, parse_function<T>>>(type->properties(), config ? *config : m_config, rank, parse));
    }
    void Add(RefCntPtr<TextColumnParser> parser) {
        if (Wants(*usrtype::resolve(parser->GetType()))) m_parsers.push_back(std::move(parser));
    }
    /// The same for a type that is only used when it is asked for.
    template <class T>
    void AddOnDemand(parse_function<T> parse) {
        if (!m_wanted.empty()) Add(0, parse);
    }
    void AddText(const usrprops& type) {
        if (m_wanted.empty() || usrtype::resolve(m_wanted)->datatype() == L"usr") {
            m_parsers.push_back(MakeRef<VarCharParser>(type, m_config));
        }
    }
    const usrprops& GetWanted() const { return m_wanted; }
    TextColumnParsers Take() { return std::move(m_parsers); }

private:
    bool Wants(const usrtype& type) const { return m_wanted.empty() || usrtype::resolve(m_wanted) == &type; }

    parse_config m_config;
    usrprops m_wanted;
    TextColumnParsers m_parsers;
};

void AddDateOrder(CandidateList& candidates, const parse_config& config, std::wstring_view order) {
    parse_config ordered = config;
    for (size_t i = 0; i < 3; ++i) ordered.date_order[i] = static_cast<parse_config::date_part>(order[i]);
    candidates.Add<date>(3, parse_ymd_date_char, &ordered);
    candidates.Add<datetime>(3, parse_ymd_datetime_char, &ordered);
}

}  // namespace

usrprops TextType(const usrprops& properties) {
    const std::wstring* collation = properties.get(usrpropkey::collation);
    usrprops type = varchar::propsof(varchar::clob_precision, 1, collation ? collation->c_str() : nullptr);
    type.set(usrpropkey::compression, L"heap");
    return type;
}

TextColumnParsers GetTypeParsers(const parse_config& config, const usrprops& textProperties, const usrprops& given) {
    CandidateList candidates(config, given);
    candidates.Add<bit>(0, parse_bit_char);
    candidates.Add<bit>(0, parse_boolean_char);
    candidates.Add<long long>(0, parse_bigint_char);
    candidates.Add<double>(0, parse_double_char);
    candidates.Add<double>(1, parse_currency_char);
    candidates.Add<date>(1, parse_iso_date_char);
    candidates.Add<date>(2, parse_integer_date_char);
    candidates.Add<datetime>(1, parse_iso_datetime_char);
    candidates.Add<duration>(1, parse_iso_duration_char);
    candidates.AddOnDemand<char>(parse_tiny_char);
    candidates.AddOnDemand<short>(parse_short_char);
    candidates.AddOnDemand<int>(parse_long_char);
    candidates.AddOnDemand<float>(parse_float_char);
    if (textProperties.has(usrpropkey::date_order)) {
        AddDateOrder(candidates, config, date_order(config));
    } else {
        const std::string locale = GetDateLocale(textProperties);
        for (RefCntPtr<TextColumnParser>& parser : GetDefaultDateFormatsByLocale(config, locale)) {
            candidates.Add(std::move(parser));
        }
        for (const std::wstring& order : GetDateOrders(locale)) AddDateOrder(candidates, config, order);
    }
    if (const std::wstring* pattern = textProperties.get(usrpropkey::datetime_format)) {
        candidates.Add(GetDateFormatParser(config, GetDateLocale(textProperties), *pattern));
    }
    usrprops text = TextType(given.has(usrpropkey::collation) ? given : textProperties);
    const usrprops wanted = candidates.GetWanted();
    if (!wanted.empty() && usrtype::resolve(wanted)->datatype() == L"usr") {
        text = wanted;
        text.set(usrpropkey::compression, L"heap");
    }
    candidates.AddText(text);
    TextColumnParsers parsers = candidates.Take();
    if (parsers.empty()) {
        throw QVE_InvalidArgument(status::TextScan_Type,
                                  "TextScan: text cannot be read as " + narrow(given.text(usrpropkey::type)));
    }
    return parsers;
}

RefCntPtr<TextColumnParser> ChooseParser(
    TextColumnParsers parsers,
    const std::function<void(TextColumnParser& parser, unsigned from, unsigned count)>& parse, unsigned records) {
    constexpr unsigned block = 256;  // records between two looks at which types still come into question
    const auto fails = [](const RefCntPtr<TextColumnParser>& parser) { return parser->GetErrors() > 0; };
    for (unsigned from = 0; from < records && parsers.size() > 1; from += block) {
        const unsigned count = std::min(block, records - from);
        for (const auto& parser : parsers) parse(*parser, from, count);
        // Text takes everything, so a type that fails once is out of the question beside it.
        if (!std::all_of(parsers.begin(), parsers.end(), fails)) std::erase_if(parsers, fails);
    }
    return *std::min_element(parsers.begin(), parsers.end(),
                             [](const auto& a, const auto& b) { return CompareParsers(*a, *b); });
}

bool CompareParsers(const TextColumnParser& a, const TextColumnParser& b) {
    if (a.GetErrors() != b.GetErrors()) return a.GetErrors() < b.GetErrors();
    const bool aIsText = a.GetColumn()->IsCompressed();
    const bool bIsText = b.GetColumn()->IsCompressed();
    if (aIsText != bIsText) return a.GetNonEmpty() == 0 ? aIsText : bIsText;
    const unsigned aWidth = a.GetColumn()->GetTokenSize();
    const unsigned bWidth = b.GetColumn()->GetTokenSize();
    if (aWidth != bWidth) return aWidth > bWidth;
    return a.GetRank() < b.GetRank();
}

}  // namespace qve
