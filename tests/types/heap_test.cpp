#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include "storage/stream/MemoryDataStream.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "tests/types/text_atoms.h"
#include "types/ascaccel.h"
#include "types/builtin.h"
#include "types/compaccel.h"
#include "types/hashaccel.h"
#include "types/heap_reader.h"
#include "types/scalartype.h"
#include "types/status.h"
#include "types/usrheap.h"

namespace qve {
namespace {

using test::text;

class TextHeap : public testing::Test {
protected:
    void open(const usrtype* type) {
        stream = MakeRef<MemoryDataStream>();
        heap = type->heap(stream.get());
    }
    unsigned long long put(std::string_view value) { return heap->put_bytes(value.data(), value.size()); }
    std::string at(unsigned long long token) {
        const std::string_view bytes = heap->bytes(token);
        return bytes.data() ? std::string(bytes) : "NULL";
    }

    RefCntPtr<DataStream> stream;
    std::unique_ptr<usrheap> heap;
};

TEST_F(TextHeap, LayoutByWidth) {
    const std::pair<const usrtype*, unsigned> widths[] = {{varchar::usrtypeof(20, 1), 1},
                                                          {varchar::usrtypeof(5000, 1), 2},
                                                          {varchar::usrtypeof(varchar::clob_precision, 1), 4},
                                                          {varchar::usrtypeof(0x40000000, 1), 8}};
    for (const auto& [type, width] : widths) {
        open(type);
        EXPECT_EQ(heap->prefix_width(), width);
        EXPECT_EQ(heap->next(), width + 1);
        const unsigned long long token = put("hello");
        EXPECT_EQ(token, 1 + width);
        EXPECT_EQ(heap->next(), 1 + width + width + 5);
        stream->Seek(0, stream->GetSize());
        const std::string bytes(stream->GetInput(0), stream->GetSize());
        EXPECT_EQ(bytes, std::string(width + 1, '\0') + '\5' + std::string(width - 1, '\0') + "hello");
    }
}

TEST_F(TextHeap, EqualValuesShareOneEntry) {
    open(varchar::usrtypeof(20, 1));
    const unsigned long long first = put("one");
    const unsigned long long second = put("two");
    const uint64_t size = stream->GetSize();
    EXPECT_EQ(put("one"), first);
    EXPECT_EQ(heap->put(text("two")), second);
    EXPECT_EQ(stream->GetSize(), size);
    EXPECT_EQ(heap->find(text("two")), second);
    EXPECT_EQ(heap->find(text("three")), usrheap::null_token);
    // From another scale it is cast.
    EXPECT_EQ(heap->find(text("two", 4)), second);
    EXPECT_EQ(heap->put(text("one", 2)), first);
    EXPECT_EQ(at(first), "one");
    EXPECT_EQ(test::utf8(heap->get(second)), "two");
}

TEST_F(TextHeap, NullsAndEmptyTexts) {
    open(varchar::usrtypeof(20, 1));
    EXPECT_EQ(heap->put(usratom(heap->type())), usrheap::null_token);
    EXPECT_EQ(heap->find(usratom(heap->type())), usrheap::null_token);
    const unsigned long long empty = put("");
    EXPECT_EQ(at(empty), "");
    EXPECT_FALSE(heap->get(empty).isnull());
    EXPECT_TRUE(heap->get(usrheap::null_token).isnull());
    EXPECT_TRUE(heap->get(0).isnull());
    EXPECT_TRUE(heap->get(heap->next()).isnull());
    EXPECT_TRUE(heap->get(1ULL << 40).isnull());
    EXPECT_TRUE(heap->get(255).isnull());
    const auto nowhere = heap->type()->heap(nullptr);
    EXPECT_EQ(nowhere->put(text("x")), usrheap::null_token);
    EXPECT_EQ(nowhere->find(text("x")), usrheap::null_token);
    EXPECT_TRUE(nowhere->get(2).isnull());
}

TEST_F(TextHeap, TopTokenOfANarrowHeapBecomesAnEntryWhenReached) {
    open(varchar::usrtypeof(63, 1));
    unsigned long long token = 0;
    for (int i = 0; token != 255 && i < 100; ++i) {
        // Entries of 32 bytes each, the first at 2: make one begin at 255.
        const size_t room = 255 - heap->next();
        token = put(std::string(room > 40 ? 30 : room - 1, static_cast<char>('a' + i)));
        if (heap->next() == 255) {
            EXPECT_TRUE(heap->get(255).isnull());
            token = put("here");
        }
    }
    ASSERT_EQ(token, 255U);
    EXPECT_EQ(at(255), "here");
}

TEST_F(TextHeap, TooLongForThePrefixIsRefused) {
    open(varchar::usrtypeof(63, 1));
    const uint64_t size = stream->GetSize();
    try {
        put(std::string(256, 'x'));
        FAIL();
    } catch (const QVE_OverflowError& fault) {
        EXPECT_EQ(fault.GetStatus(), status::usrheap_put);
    }
    EXPECT_EQ(stream->GetSize(), size);
    EXPECT_EQ(at(put(std::string(255, 'x'))), std::string(255, 'x'));
}

TEST_F(TextHeap, DamagedBytesAreAnError) {
    open(varchar::usrtypeof(20, 1));
    put("abc");
    const char broken[] = {'\x50', 'a'};
    stream->Append(broken, sizeof broken);
    EXPECT_EQ(at(2), "abc");
    EXPECT_THROW(heap->bytes(6), QVE_RangeError);
    stream->SetAccelerator(nullptr);
    EXPECT_THROW(heap->find(text("abc")), QVE_RangeError);
}

TEST_F(TextHeap, ClearAndTokens) {
    open(varchar::usrtypeof(20, 2));
    std::vector<unsigned long long> expected;
    for (const char* value : {"a", "bb", "ccc"}) expected.push_back(heap->put(text(value)));
    const auto listed = MakeRef<MemoryDataStream>();
    heap->tokens(listed.get());
    ASSERT_EQ(listed->GetSize(), 24U);
    listed->Seek(0, 24);
    std::vector<unsigned long long> tokens(3);
    std::memcpy(tokens.data(), listed->GetInput(0), 24);
    EXPECT_EQ(tokens, expected);
    heap->clear();
    EXPECT_EQ(heap->next(), heap->first());
    EXPECT_EQ(heap->find(text("a")), usrheap::null_token);
    EXPECT_EQ(heap->put(text("bb")), heap->first());
}

TEST_F(TextHeap, PartsOfItsOwnBytesAreStoredWhole) {
    open(varchar::usrtypeof(varchar::clob_precision, 1));
    const unsigned long long whole = put("abcdefghij");
    for (size_t i = 0; i < 10; ++i) {
        // The stream grows while its own bytes are put.
        const std::string_view bytes = heap->bytes(whole);
        const std::string part(bytes.substr(i));
        EXPECT_EQ(at(heap->put_bytes(bytes.data() + i, bytes.size() - i)), part);
    }
    EXPECT_EQ(heap->put(heap->get(whole)), whole);
}

// Random values, many of them repeated, one by one and in bulk, against a map; in memory and moving to a file.
TEST_F(TextHeap, GrowsAgainstAMap) {
    constexpr unsigned seed = 99;
    SCOPED_TRACE(seed);
    for (const bool on_disk : {false, true}) {
        std::mt19937 random(seed);
        if (on_disk) {
            stream = MakeRef<TempFileDataStream>();
            stream->SetPageLimit(65536);
        } else {
            stream = MakeRef<MemoryDataStream>();
        }
        heap = varchar::usrtypeof(varchar::clob_precision, 1)->heap(stream.get());
        std::map<std::string, unsigned long long> expected;
        std::vector<std::string> values;
        for (int i = 0; i < 12000; ++i) {
            const unsigned n = random() % 4000;
            values.push_back(n % 7 ? "value " + std::to_string(n) : std::string(n % 60, 'x'));
        }
        std::vector<std::string_view> views(values.begin(), values.end());
        views[17] = {};
        std::vector<unsigned long long> tokens(values.size());
        for (size_t from = 0; from < values.size(); from += 1000) {
            if (from % 2000) {
                heap->put_bytes(1000, tokens.data() + from, views.data() + from);
            } else {
                for (size_t i = from; i < from + 1000; ++i) {
                    tokens[i] = views[i].data() ? put(views[i]) : usrheap::null_token;
                }
            }
            if (on_disk && from == 5000) {
                EXPECT_GT(stream->Purge(), 0U);
            }
        }
        EXPECT_EQ(tokens[17], usrheap::null_token);
        for (size_t i = 0; i < values.size(); ++i) {
            if (i == 17) continue;
            const auto [known, added] = expected.emplace(values[i], tokens[i]);
            ASSERT_EQ(known->second, tokens[i]) << values[i];
        }
        heap_reader reader(heap.get());
        std::map<unsigned long long, std::string> by_token;
        for (const auto& [value, token] : expected) {
            ASSERT_EQ(reader[token], value);
            ASSERT_TRUE(by_token.emplace(token, value).second);
        }
        EXPECT_EQ(heap->accelerator()->cardinality(), expected.size());
        EXPECT_EQ(heap->accelerator()->last(), by_token.rbegin()->first);
        EXPECT_EQ(test::utf8(heap->accelerator()->last_atom(*heap)), by_token.rbegin()->second);
        // Built anew from the bytes, the index finds the same.
        hashaccel rebuilt(heap->type());
        rebuilt.build(*heap);
        EXPECT_EQ(rebuilt.cardinality(), expected.size());
        EXPECT_TRUE(rebuilt.distinct());
        EXPECT_EQ(rebuilt.find(*heap, text("value 1")), expected.at("value 1"));
    }
}

TEST_F(TextHeap, VectorsBetweenHeaps) {
    open(varchar::usrtypeof(20, 1));
    std::vector<unsigned short> tokens;
    for (const char* value : {"x", "yy", "x", ""}) tokens.push_back(static_cast<unsigned short>(put(value)));
    tokens.push_back(0xFFFF);
    const input_column column{tokens.data(), heap.get(), 2, 5, 0};
    for (const usrtype* type : {varchar::usrtypeof(30, 1), varchar::usrtypeof(30, 4)}) {
        const auto other_stream = MakeRef<MemoryDataStream>();
        const auto other = type->heap(other_stream.get());
        std::vector<unsigned> moved(5, 1);
        other->put(5, {moved.data(), other.get(), 4, 5, nullptr}, column, nullptr);
        EXPECT_EQ(moved[0], moved[2]);
        EXPECT_EQ(test::utf8(other->get(moved[1])), "yy");
        EXPECT_FALSE(other->get(moved[3]).isnull());
        EXPECT_EQ(moved[4], ~0U);
        const unsigned selection[] = {3, 4};
        std::vector<unsigned> some(5, 1);
        other->put(2, {some.data(), other.get(), 4, 5, nullptr}, column, selection);
        EXPECT_EQ(some, (std::vector<unsigned>{1, 1, 1, moved[3], ~0U}));
        std::vector<unsigned> hashes(5);
        heap->type()->hash(5, {hashes.data(), nullptr, 4, 5, nullptr}, column, nullptr);
        EXPECT_EQ(hashes[1], heap->type()->hash(text("yy")));
        EXPECT_EQ(hashes[4], ~0U);
    }
    // A token that a narrow column cannot hold is refused, not cut.
    std::vector<unsigned char> narrow(5);
    for (int i = 0; i < 30; ++i) put("filler number " + std::to_string(i));
    EXPECT_THROW(heap->type()->put({narrow.data(), heap.get(), 1, 5, nullptr}, 0, text("late")), QVE_OverflowError);
}

TEST_F(TextHeap, CollationsKeepTheLettersAndFindTheEqual) {
    open(varchar::usrtypeof(20, 1, L"en_US_CI"));
    const unsigned long long lower = heap->put(text("apple", 1, L"en_US_CI"));
    EXPECT_TRUE(heap->accelerator()->distinct());
    EXPECT_EQ(heap->find(text("APPLE", 1, L"en_US_CI")), lower);
    const unsigned long long upper = heap->put(text("APPLE", 1, L"en_US_CI"));
    EXPECT_NE(upper, lower);
    EXPECT_EQ(at(upper), "APPLE");
    EXPECT_FALSE(heap->accelerator()->distinct());
    EXPECT_EQ(heap->find(text("APPLE", 1, L"en_US_CI")), upper);
    EXPECT_NE(heap->find(text("Apple", 1, L"en_US_CI")), usrheap::null_token);
}

TEST(ArrayHeap, TokensAreOrdinals) {
    const usrtype* type = builtin::usrtypeof<long long>();
    const auto stream = MakeRef<MemoryDataStream>();
    const auto heap = type->heap(stream.get());
    EXPECT_EQ(stream->GetSize(), 8U);
    EXPECT_EQ(heap->next(), 0U);
    EXPECT_EQ(heap->put(usratom(30LL)), 0U);
    EXPECT_EQ(heap->put(usratom(20LL)), 1U);
    EXPECT_EQ(heap->put(usratom(30)), 0U);  // cast from long
    EXPECT_EQ(heap->put(type->null()), usrheap::null_token);
    EXPECT_EQ(heap->next(), 2U);
    EXPECT_EQ(static_cast<long long>(heap->get(1)), 20);
    EXPECT_TRUE(heap->get(2).isnull());
    EXPECT_TRUE(heap->get(usrheap::null_token).isnull());
    EXPECT_EQ(heap->find(usratom(20LL)), 1U);
    heap_reader reader(heap.get());
    EXPECT_EQ(reader[0].size(), 8U);
    EXPECT_EQ(reader[2].data(), nullptr);
    // Plain values of a vector, with a null among them.
    const long long values[] = {20, datatraits<long long>::null, 10};
    unsigned char tokens[3];
    heap->put(3, {tokens, heap.get(), 1, 3, nullptr}, {values, nullptr, 8, 3, 0}, nullptr);
    EXPECT_EQ(tokens[0], 1);
    EXPECT_EQ(tokens[1], 255);
    EXPECT_EQ(tokens[2], 2);
    // A column of tokens reads and hashes as its values do.
    usratom atom;
    type->get({tokens, heap.get(), 1, 3, 0}, 2, atom);
    EXPECT_EQ(static_cast<long long>(atom), 10);
    unsigned hashes[3];
    type->hash(3, {hashes, nullptr, 4, 3, nullptr}, {tokens, heap.get(), 1, 3, 0}, nullptr);
    EXPECT_EQ(hashes[0], type->hash(usratom(20LL)));
    EXPECT_EQ(hashes[1], type->hash(type->null()));
}

class SortedHeap : public testing::TestWithParam<bool> {};

TEST_P(SortedHeap, CompaccelFindsByOrder) {
    const bool fixed = GetParam();
    const usrtype* type = fixed ? builtin::usrtypeof<int>() : varchar::usrtypeof(20, 1);
    const auto value = [&](int i) { return fixed ? usratom(i * 2) : text("key " + std::to_string(1000000 + i * 2)); };
    const auto between = [&](int i) {
        return fixed ? usratom(i * 2 + 1) : text("key " + std::to_string(1000000 + i * 2 + 1));
    };
    for (const int count : {0, 1, 15, 16, 17, 500}) {
        const auto stream = MakeRef<MemoryDataStream>();
        const auto heap = type->heap(stream.get());
        stream->SetAccelerator(MakeRef<ascaccel>(type));
        std::vector<unsigned long long> tokens;
        for (int i = 0; i < count; ++i) tokens.push_back(heap->put(value(i)));
        EXPECT_EQ(heap->accelerator()->cardinality(), static_cast<unsigned>(count));
        if (count > 1) {
            EXPECT_THROW(heap->put(value(0)), QVE_InvalidArgument);
        }
        const auto index = MakeRef<compaccel>(type, true);
        index->build(*heap);
        stream->SetAccelerator(index);
        EXPECT_TRUE(index->comparable());
        EXPECT_EQ(index->cardinality(), static_cast<unsigned>(count));
        EXPECT_EQ(index->last(), count ? tokens.back() : usraccel::absent);
        for (int i = 0; i < count; ++i) {
            ASSERT_EQ(heap->find(value(i)), tokens[i]) << i;
            ASSERT_EQ(heap->find(between(i)), usrheap::null_token) << i;
            ASSERT_EQ(index->lookup(*heap, between(i)), i + 1 < count ? tokens[i + 1] : heap->next());
        }
        EXPECT_EQ(heap->find(value(-1)), usrheap::null_token);
    }
}
INSTANTIATE_TEST_SUITE_P(Layouts, SortedHeap, testing::Bool());

TEST(Accelerators, FindVectorsThroughForks) {
    const usrtype* type = varchar::usrtypeof(20, 1);
    const RefCntPtr<DataStream> stream = MakeRef<MemoryDataStream>();
    const auto heap = type->heap(stream.get());
    const unsigned long long a = heap->put(text("a"));
    heap->put(text("b"));
    ASSERT_NE(heap->accelerator(), nullptr);
    const RefCntPtr<DataStream> fork = stream->Fork(true);
    EXPECT_EQ(fork->GetAccelerator(), stream->GetAccelerator());
    const auto reader = type->heap(fork.get());
    EXPECT_EQ(reader->find(text("a")), a);

    const auto other_stream = MakeRef<MemoryDataStream>();
    const auto other = type->heap(other_stream.get());
    std::vector<unsigned> tokens{static_cast<unsigned>(other->put(text("zz"))),
                                 static_cast<unsigned>(other->put(text("a"))), ~0U};
    std::vector<unsigned char> found(3);
    reader->accelerator()->find(*reader, 3, {found.data(), nullptr, 1, 3, nullptr},
                                {tokens.data(), other.get(), 4, 3, 0}, nullptr);
    EXPECT_EQ(found, (std::vector<unsigned char>{255, static_cast<unsigned char>(a), 255}));
}

}  // namespace
}  // namespace qve
