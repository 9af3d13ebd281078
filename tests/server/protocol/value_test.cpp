#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/QVE_ValueArray.h"
#include "server/protocol/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

std::string Print(const QVE_Value& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

template <class T>
QVE_Value Raw(std::uint32_t type, const T& payload) {
    return {type, sizeof(T), &payload};
}

TEST(Value, PayloadsOf8BytesAlignTo8AndOthersTo4) {
    // From both a start that is 8-aligned and one that is only 4-aligned.
    for (const bool shifted : {false, true}) {
        QVE_Message message;
        QVE_OutputIterator out(message);
        if (shifted) out.WriteU32(0);
        const std::vector<QVE_InterredValue> values{
            QVE_InterredValue(std::int64_t{-5}), QVE_InterredValue(std::int8_t{-1}),  QVE_InterredValue(2.5),
            QVE_InterredValue("abcde"),          QVE_InterredValue(std::uint64_t{6}), QVE_InterredValue(L"\x20AC")};
        std::vector<std::size_t> ends;
        for (const QVE_InterredValue& value : values) {
            out.WriteValue(value.GetValue());
            ends.push_back(message.size());
        }
        QVE_InputIterator in(message);
        if (shifted) in.ReadU32();
        for (std::size_t i = 0; i < values.size(); ++i) {
            const QVE_Value read = in.ReadValue();
            const QVE_Value expected = values[i].GetValue();
            EXPECT_EQ(in.GetIndex(), ends[i]);
            EXPECT_EQ(read.type, expected.type);
            ASSERT_EQ(read.size, expected.size);
            EXPECT_EQ(std::memcmp(read.data, expected.data, read.size), 0);
            const auto offset = static_cast<const std::uint8_t*>(read.data) - message.data();
            EXPECT_EQ(offset % (QVE_Value::IsAlignedTo8(read.type) ? 8 : 4), 0);
        }
    }
}

TEST(Value, NullTakesFourBytes) {
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteValue({QVE_TypeInt64 | QVE_Value::s_null, 0, nullptr});
    EXPECT_EQ(message.size(), 4U);
    QVE_InputIterator in(message);
    const QVE_Value value = in.ReadValue();
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.GetType(), QVE_TypeInt64);
    EXPECT_EQ(value.data, nullptr);
}

TEST(Value, EveryCutOfAMessageIsAnOverrunOrAnEnd) {
    QVE_Message whole;
    QVE_OutputIterator out(whole);
    out.WriteU32(0);
    out.WriteValue(QVE_InterredValue(std::int64_t{1}).GetValue());
    const std::size_t size = whole.size();
    for (std::size_t cut = 4; cut < size; ++cut) {
        QVE_Message message = whole;
        message.resize(cut);
        QVE_InputIterator in(message);
        in.ReadU32();
        try {
            in.ReadValue();
            FAIL() << cut;
        } catch (const QVE_RuntimeError& exception) {
            EXPECT_EQ(exception.GetStatus(), status::QVE_InputIterator_ValueOverrun);
            EXPECT_STREQ(exception.what(), "protocol error: QVE_Value decoding overrun (index=4)");
        }
    }
}

TEST(Value, AHugeSizeIsAnOverrun) {
    QVE_Message message;
    QVE_OutputIterator out(message);
    out.WriteU32(QVE_TypeText8);
    out.WriteU32(0xFFFFFFFF);
    EXPECT_THROW(QVE_InputIterator(message).ReadValue(), QVE_RuntimeError);
}

TEST(Properties, RoundTripAndRefuseImpossibleCounts) {
    QVE_PropertyList list;
    list.emplace_back(QVE_InterredValue(L"name"), QVE_InterredValue(L"pr\xE9t"));
    list.emplace_back(QVE_InterredValue("type"), QVE_InterredValue(std::int32_t{7}));
    list.emplace_back(QVE_InterredValue("size"), QVE_InterredValue(std::uint64_t{1} << 40));
    QVE_Message message;
    QVE_OutputIterator(message).WriteProperties(list);
    const QVE_PropertyList read = QVE_InputIterator(message).ReadProperties();
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(read[0].first.GetText(), L"name");
    EXPECT_EQ(read[0].second.GetText(), L"pr\xE9t");
    EXPECT_EQ(read[1].first.GetText(), L"type");
    EXPECT_EQ(Print(read[1].second.GetValue()), "7");
    EXPECT_EQ(Print(read[2].second.GetValue()), "1099511627776");

    QVE_Message empty;
    QVE_OutputIterator(empty).WriteProperties({});
    EXPECT_EQ(empty.size(), 4U);
    EXPECT_TRUE(QVE_InputIterator(empty).ReadProperties().empty());

    QVE_Message hostile;
    QVE_OutputIterator(hostile).WriteU32(0xFFFFFFFF);
    EXPECT_THROW(QVE_InputIterator(hostile).ReadProperties(), QVE_RuntimeError);
}

TEST(InterredValue, EmptyTextIsNotNull) {
    const QVE_InterredValue text("");
    EXPECT_FALSE(text.GetValue().IsNull());
    EXPECT_NE(text.GetValue().data, nullptr);
    EXPECT_EQ(text.GetValue().size, 0U);
    EXPECT_TRUE(QVE_InterredValue().GetValue().IsNull());
    const QVE_InterredValue copied(text.GetValue());
    EXPECT_EQ(copied.GetValue().type, QVE_TypeText8);
}

TEST(Value, PrintsEveryType) {
    EXPECT_EQ(Print(QVE_InterredValue(std::int8_t{-128}).GetValue()), "-128");
    EXPECT_EQ(Print(QVE_InterredValue(std::uint8_t{65}).GetValue()), "65");
    EXPECT_EQ(Print(QVE_InterredValue(std::int16_t{-300}).GetValue()), "-300");
    EXPECT_EQ(Print(QVE_InterredValue(std::uint16_t{65535}).GetValue()), "65535");
    EXPECT_EQ(Print(QVE_InterredValue(std::numeric_limits<std::int64_t>::min()).GetValue()), "-9223372036854775808");
    EXPECT_EQ(Print(QVE_InterredValue(1.5F).GetValue()), "1.50");
    EXPECT_EQ(Print(QVE_InterredValue(-0.125).GetValue()), "-0.12");
    EXPECT_EQ(Print(QVE_InterredValue(true).GetValue()), "true");
    EXPECT_EQ(Print(QVE_InterredValue("\xC3\xA4").GetValue()), "\xC3\xA4");
    EXPECT_EQ(Print(QVE_InterredValue(L"\xE4").GetValue()), "\xC3\xA4");
    EXPECT_EQ(Print(Raw(QVE_TypeDate, QVE_WireDate{-44, 3, 15, {}})), "-044-03-15");
    EXPECT_EQ(Print(Raw(QVE_TypeDatetime, QVE_WireDatetime{2020, 2, 29, 23, 59, 7, 0, 12})),
              "2020-02-29 23:59:07.0012");
    EXPECT_EQ(Print(Raw(QVE_TypeDuration, QVE_WireDuration{-1, -2, -3, -4, 0, -5, {}})), "-1:02:03:04.0005");
    EXPECT_EQ(Print({QVE_TypeInt8 | QVE_Value::s_null, 0, nullptr}), "NULL");
    EXPECT_EQ(Print({0, 0, ""}), "Unknown type!");
    EXPECT_EQ(Print({18, 0, ""}), "Unknown type!");
    EXPECT_EQ(Print({QVE_TypeInt64, 4, "abcd"}), "Invalid value!");
}

TEST(ValueArray, WritesBehindItsPrefix) {
    QVE_ValueArray array;
    EXPECT_THROW(array.WriteValue({}), QVE_LogicError);
    QVE_Message prefix;
    QVE_OutputIterator(prefix).WriteU32(77);
    array.SetPrefix(prefix);
    array.WriteValue(QVE_InterredValue(std::int32_t{1}).GetValue());
    array.WriteValue(QVE_InterredValue(std::int64_t{2}).GetValue());
    EXPECT_EQ(array.GetNumValues(), 2U);
    EXPECT_EQ(array.GetSizeBytes(), array.GetMessage().size() - 4);
    try {
        array.SetPrefix(prefix);
        FAIL();
    } catch (const QVE_LogicError& exception) {
        EXPECT_EQ(exception.GetStatus(), status::QVE_ValueArray_SetPrefix);
    }
    QVE_Message message;
    message.swap(array.GetMessage());
    QVE_ValueArray received;
    received.Assign(message, 4, 2);
    ASSERT_EQ(received.ReadValues().size(), 2U);
    EXPECT_EQ(Print(received.ReadValues()[1]), "2");
    EXPECT_EQ(received.Consume(1), 1U);
    EXPECT_EQ(received.Consume(5), 1U);
    EXPECT_EQ(received.Consume(5), 0U);
    EXPECT_THROW(received.WriteValue({}), QVE_LogicError);

    array.Clear();
    EXPECT_EQ(array.GetNumValues(), 0U);
    EXPECT_EQ(array.GetMessage().size(), 4U);
}

TEST(ValueArray, RefusesCountsThatTheMessageCannotHold) {
    QVE_Message message;
    QVE_OutputIterator(message).WriteValue({});
    QVE_ValueArray array;
    try {
        array.Assign(message, 0, 0xFFFFFFFF);
        FAIL();
    } catch (const QVE_RuntimeError& exception) {
        EXPECT_EQ(exception.GetStatus(), status::QVE_InputIterator_ValueOverrun);
    }
    EXPECT_TRUE(array.ReadValues().empty());
}

}  // namespace
}  // namespace qve
