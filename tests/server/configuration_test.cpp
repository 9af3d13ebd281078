#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "server/Datatype.h"
#include "server/configuration.h"
#include "server/protocol/QVE_Value.h"
#include "server/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

usrprops Read(const std::string& text) {
    std::istringstream stream(text);
    return ReadConfiguration(stream);
}

TEST(Configuration, SkipsWhatIsNoEntryAndReadsOn) {
    const usrprops properties = Read(
        "# comment:1\n\nno colon\n:value\nkey:\nlog:first\n #log:kept as a key\nlog-utc: "
        "true\nlisten:a:b\nlog:s\xC3\xA4\nnew-key:x");
    EXPECT_EQ(properties.size(), 5U);
    EXPECT_EQ(properties.text(usrpropkey::log), L"s\xE4");
    EXPECT_EQ(properties.text(usrpropkey::listen), L"a:b");
    EXPECT_EQ(properties.text(usrpropkey::log_utc), L" true");
    EXPECT_FALSE(properties.is_true(usrpropkey::log_utc));
    EXPECT_EQ(properties.text(UsrPropKey_FromString(L"new-key")), L"x");
    EXPECT_EQ(properties.text(UsrPropKey_FromString(L" #log")), L"kept as a key");
}

TEST(Configuration, ReadsNumbersLikeAStream) {
    EXPECT_EQ(ReadUnsigned(L" \t42x"), 42U);
    EXPECT_EQ(ReadUnsigned(L"x42"), 0U);
    EXPECT_EQ(ReadUnsigned(L""), 0U);
    EXPECT_EQ(ReadUnsigned(L"18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(ReadUnsigned(L"18446744073709551616"), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(ScanDigits(L"  7 8"), 7U);
    EXPECT_EQ(ScanDigits(L"\x01 9"), 9U);
    EXPECT_EQ(ScanDigits(L"-1"), 0U);
    EXPECT_EQ(ScanDigits(L" \t "), std::nullopt);
}

ParallelismFigures Figures(const std::string& text, unsigned base = 4) {
    return ParallelismFigures::Compute(Read(text), base, 2);
}

TEST(Parallelism, KeepsItsBounds) {
    EXPECT_EQ(Figures("").maxConcurrency, 4U);
    EXPECT_EQ(Figures("").degree, 4U);
    EXPECT_EQ(Figures("").minimumDegree, 2U);
    EXPECT_EQ(Figures("query-parallelism:1").degree, 2U);
    EXPECT_EQ(Figures("query-parallelism:64\nmax-concurrency:8").degree, 8U);
    EXPECT_EQ(Figures("query-parallelism:8\nmax-concurrency:8\nmin-query-parallelism:16").minimumDegree, 8U);
    EXPECT_EQ(Figures("dop:3\nquery-parallelism: ").degree, 3U);
    EXPECT_EQ(Figures("dop:3\nquery-parallelism:0").degree, 4U);
    EXPECT_EQ(Figures("max-concurrency:0").maxConcurrency, 4U);
    EXPECT_EQ(Figures("min-dop:3").minimumDegree, 3U);
}

TEST(Datatype, FollowsTheProperties) {
    using Server::GetDatatype;
    usrprops properties;
    const auto statusOf = [&] {
        try {
            GetDatatype(properties);
            return 0;
        } catch (const QVE_RangeError& exception) {
            return exception.GetStatus();
        }
    };
    EXPECT_EQ(statusOf(), status::GetDatatype_Datatype);
    properties.set(usrpropkey::datatype, L"integer");
    EXPECT_EQ(statusOf(), status::GetDatatype_Builtin);
    properties.set(usrpropkey::builtin, L"ulng");
    EXPECT_EQ(GetDatatype(properties), QVE_TypeUInt32);
    properties.set(usrpropkey::builtin, L"nonesuch");
    EXPECT_EQ(GetDatatype(properties), 0U);
    properties.set(usrpropkey::datatype, L"usr");
    EXPECT_EQ(GetDatatype(properties), QVE_TypeText8);
    properties.set(usrpropkey::scale, L"2");
    EXPECT_EQ(GetDatatype(properties), QVE_TypeText16);
    properties.set(usrpropkey::datatype, L"spatial");
    EXPECT_EQ(GetDatatype(properties), QVE_TypeSpatial);
}

TEST(QuoteStringLiteral, EscapesQuotesAndBackslashes) {
    EXPECT_EQ(Server::QuoteStringLiteral(nullptr), "NULL");
    EXPECT_EQ(Server::QuoteStringLiteral(u"a\"b\\c"), "\"a\\\"b\\\\c\"");
}

}  // namespace
}  // namespace qve
