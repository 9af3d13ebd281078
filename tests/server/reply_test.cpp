#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "server/error_reply.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/status.h"
#include "server/swizzle.h"
#include "system/QuillonException.h"
#include "system/VQLException.h"

namespace qve::Server {
namespace {

std::string Print(const QVE_Value& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

template <class T>
std::string PrintSwizzled(std::uint32_t type, T value) {
    const auto payload = SwizzleAtom(value);
    return Print({type, sizeof(payload), &payload});
}

TEST(Swizzle, CrossesTheChangeOfCalendars) {
    EXPECT_EQ(PrintSwizzled(QVE_TypeDate, date{2299160}), "1582-10-15");
    EXPECT_EQ(PrintSwizzled(QVE_TypeDate, date{2299159}), "1582-10-04");
    EXPECT_EQ(PrintSwizzled(QVE_TypeDate, date{2451544}), "2000-01-01");
    EXPECT_EQ(PrintSwizzled(QVE_TypeDatetime, datetime{2451544ULL * 864000000 + 36000000 + 600000 + 10000 + 1}),
              "2000-01-01 01:01:01.0001");
}

TEST(Swizzle, GivesEveryPartOfADurationItsSign) {
    const QVE_WireDuration d = SwizzleAtom(duration{-(864000000LL + 2 * 36000000 + 3 * 600000 + 4 * 10000 + 5)});
    EXPECT_EQ(d.days, -1);
    EXPECT_EQ(d.hours, -2);
    EXPECT_EQ(d.minutes, -3);
    EXPECT_EQ(d.seconds, -4);
    EXPECT_EQ(d.fraction, -5);
    EXPECT_EQ(SwizzleAtom(duration{-5}).fraction, -5);
    EXPECT_EQ(SwizzleAtom(duration{36000000}).hours, 1);
}

TEST(ErrorReply, CarriesStatusAndText) {
    const auto read = [](const std::exception& exception, std::u16string& text) {
        QVE_Message reply;
        MakeErrorReply(exception, reply);
        QVE_InputIterator in(reply);
        std::uint64_t guid;
        in.ReadHeader(guid);
        const int status = in.ReadStatus();
        EXPECT_EQ(in.ReadU32(), 1U);
        text = in.ReadString();
        EXPECT_EQ(in.GetRemaining(), 0U);
        return status;
    };
    std::u16string text;
    EXPECT_EQ(read(QVE_RangeError(40427, "no such statement"), text), 40427);
    EXPECT_EQ(text, u"no such statement");
    EXPECT_EQ(read(QVE_OutOfRange(40102, "x"), text), 40102);
    EXPECT_EQ(read(VQLException(48048, L"m\xE4"), text), 48048);
    EXPECT_EQ(text, u"m\xE4");
    EXPECT_EQ(read(std::runtime_error("plain"), text), status::Server_StandardException);
}

}  // namespace
}  // namespace qve::Server
