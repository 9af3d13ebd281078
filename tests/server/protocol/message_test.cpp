#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "server/protocol/QVE_DumpMessage.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(const QVE_Message& message) {
    return {message.data(), message.data() + message.size()};
}

QVE_Message MessageOf(const Bytes& bytes) {
    QVE_Message message(bytes.size());
    if (!bytes.empty()) std::memcpy(message.data(), bytes.data(), bytes.size());
    return message;
}

template <class Call>
int StatusOf(Call call) {
    try {
        call();
        return 0;
    } catch (const QVE_RuntimeError& exception) {
        return exception.GetStatus();
    }
}

TEST(Message, ClearKeepsTheMemoryAndResizeZeroesIt) {
    QVE_Message message;
    std::memset(message.Extend(100), 0xAA, 100);
    const std::uint8_t* memory = message.data();
    message.clear();
    EXPECT_TRUE(message.empty());
    message.resize(50);
    EXPECT_EQ(message.data(), memory);
    EXPECT_EQ(BytesOf(message), Bytes(50, 0));
    QVE_Message other(3);
    other.swap(message);
    EXPECT_EQ(message.size(), 3U);
    EXPECT_EQ(other.size(), 50U);
}

TEST(Message, HeaderIsPatchedInPlace) {
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteHeader();
    EXPECT_EQ(BytesOf(message), (Bytes{0xE5, 0xA7, 0x0D, 0x0C, 0xFF, 0xFF, 0xFF, 0xFF,  //
                                       0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    out.WriteCommand(QVE_Command::SessionOpen);
    QVE_OutputIterator::PatchHeader(message, 0x1122334455667788);
    EXPECT_EQ(BytesOf(message), (Bytes{0xE5, 0xA7, 0x0D, 0x0C, 4,    0,    0,    0,     //
                                       0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11,  //
                                       0x19, 0xA4, 0xD3, 0xF1}));
    std::uint64_t guid = 0;
    QVE_InputIterator in(message);
    EXPECT_EQ(in.ReadHeader(guid), 4U);
    EXPECT_EQ(guid, 0x1122334455667788U);
    EXPECT_EQ(in.ReadCommand(), QVE_Command::SessionOpen);
}

TEST(Message, AlignsEveryFieldToItsSize) {
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteBytes(1, "x");     // 4 + 1
    out.WriteU32(7);            // at 8
    out.WriteGuid(9);           // at 16
    out.WriteString(u"ab\0c");  // at 24: up to the NUL
    out.WriteBytes(3, "xyz");   // at 36
    out.WriteRaw("wv", 1, 2);   // at 44
    EXPECT_EQ(BytesOf(message), (Bytes{1, 0, 0, 0, 'x', 0, 0, 0, 7,   0,   0,   0, 0,   0,  0,   0,  //
                                       9, 0, 0, 0, 0,   0, 0, 0, 3,   0,   0,   0, 'a', 0,  'b', 0,  //
                                       0, 0, 0, 0, 3,   0, 0, 0, 'x', 'y', 'z', 0, 'w', 'v'}));
    QVE_InputIterator in(message);
    EXPECT_EQ(in.ReadBytes(), "x");
    EXPECT_EQ(in.ReadU32(), 7U);
    EXPECT_EQ(in.ReadGuid(), 9U);
    EXPECT_EQ(in.ReadString(), u"ab");
    EXPECT_EQ(in.ReadBytes(), "xyz");
    EXPECT_EQ(std::memcmp(in.ReadRaw(1, 2), "wv", 2), 0);
    EXPECT_EQ(in.GetRemaining(), 0U);
}

TEST(Message, ConvertsTexts) {
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteString(L"\x1F600");
    out.WriteString(std::string_view("\xC3\xA4"));
    out.WriteString(u"");
    QVE_InputIterator in(message);
    EXPECT_EQ(in.ReadString(), u"\xD83D\xDE00");
    EXPECT_EQ(in.ReadString(), u"\xE4");
    EXPECT_EQ(in.ReadString(), u"");
}

TEST(Message, ZeroCountStillAligns) {
    const QVE_Message message(8);
    QVE_InputIterator in(message);
    in.ReadRaw(1, 1);
    in.ReadRaw(0, 4);
    EXPECT_EQ(in.GetIndex(), 4U);
}

TEST(Message, RefusesWhatItDoesNotHold) {
    const QVE_Message message(12);
    QVE_InputIterator in(message);
    in.ReadRaw(9, 1);
    EXPECT_EQ(StatusOf([&] { in.ReadU32(); }), status::QVE_InputIterator_Overrun);
    EXPECT_EQ(StatusOf([&] { in.ReadU64(); }), status::QVE_InputIterator_Overrun);
    // Beyond the end already by alignment.
    EXPECT_EQ(StatusOf([&] { in.ReadRaw(0, 8); }), status::QVE_InputIterator_Overrun);
    EXPECT_EQ(StatusOf([&] { in.ReadRaw(QVE_InputIterator::s_rawLimit, 1); }), status::QVE_InputIterator_Overrun);
    EXPECT_EQ(StatusOf([&] { in.ReadRaw(SIZE_MAX, 8); }), status::QVE_InputIterator_Overrun);
    EXPECT_EQ(in.GetIndex(), 9U);
    EXPECT_NO_THROW(in.ReadRaw(3, 1));
    try {
        in.ReadRaw(2, 4);
        FAIL();
    } catch (const QVE_RuntimeError& exception) {
        EXPECT_STREQ(exception.what(),
                     "protocol error: message decoding overrun (request.count=2 request.elemSize=4 message.index=12 "
                     "message.size=12)");
    }
}

TEST(Message, RefusesTheCountLimitEvenInALargeMessage) {
    const QVE_Message message(QVE_InputIterator::s_rawLimit);
    QVE_InputIterator in(message);
    EXPECT_EQ(StatusOf([&] { in.ReadRaw(QVE_InputIterator::s_rawLimit, 1); }), status::QVE_InputIterator_Overrun);
    EXPECT_NO_THROW(in.ReadRaw(QVE_InputIterator::s_rawLimit - 1, 1));
}

TEST(Message, RefusesABadHeader) {
    QVE_Message message(16);
    std::uint64_t guid;
    try {
        QVE_InputIterator(message).ReadHeader(guid);
        FAIL();
    } catch (const QVE_RuntimeError& exception) {
        EXPECT_EQ(exception.GetStatus(), status::QVE_InputIterator_BadMagic);
        EXPECT_STREQ(exception.what(), "protocol error: bad magic number (expected=c0da7e5 actual=0)");
    }
}

TEST(Message, RefusesBadStrings) {
    const auto statusOfString = [](const Bytes& bytes) {
        const QVE_Message message = MessageOf(bytes);
        QVE_InputIterator in(message);
        const int status = StatusOf([&] { in.ReadString(); });
        EXPECT_EQ(in.GetIndex(), status == 0 ? bytes.size() : 0U);
        return status;
    };
    EXPECT_EQ(statusOfString({0, 0, 0, 0}), status::QVE_InputIterator_StringLength);
    EXPECT_EQ(statusOfString({1, 0, 0, 0, 0, 0}), 0);
    EXPECT_EQ(statusOfString({1, 0, 0, 0, 0, 1}), status::QVE_InputIterator_StringTermination);
    EXPECT_EQ(statusOfString({1, 0, 0, 0}), status::QVE_InputIterator_Overrun);
    EXPECT_EQ(statusOfString({2, 0, 0, 0, 'a', 0}), status::QVE_InputIterator_Overrun);
    EXPECT_EQ(statusOfString({0xFF, 0xFF, 0xFF, 0xFF, 0, 0}), status::QVE_InputIterator_Overrun);
}

TEST(DumpMessage, ShowsHeaderCommandAndBytes) {
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteHeader();
    out.WriteCommand(QVE_Command::QueryExecute);
    out.WriteString(u"(x)");
    QVE_OutputIterator::PatchHeader(message, 5);
    std::ostringstream stream;
    QVE_DumpMessage(stream, message, message.size());
    const std::string text = stream.str();
    EXPECT_NE(text.find("size=16 guid=5"), std::string::npos) << text;
    EXPECT_NE(text.find("command=0xf1d3a403 (QueryExecute)"), std::string::npos) << text;
    EXPECT_NE(text.find("00000010  03 a4 d3 f1 04 00 00 00 28 00 78 00 29 00 00 00  ........(.x.)..."),
              std::string::npos)
        << text;
    // Cut anywhere, it prints what there is.
    for (std::size_t size = 0; size <= message.size() + 1; ++size) QVE_DumpMessage(stream, message, size);
}

}  // namespace
}  // namespace qve
