#include "ingest/FieldSplitter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace qve {
namespace {

using Record = std::vector<std::string>;

std::vector<Record> Split(const std::string& text, bool final = true, const parse_config& config = {}) {
    SplitText split;
    FieldSplitter(config).Split(text.data(), text.size(), final, split);
    std::vector<Record> records;
    size_t first = 0;
    size_t begin = 0;
    for (const unsigned last : split.records) {
        records.emplace_back();
        for (; first < last; ++first) {
            records.back().push_back(text.substr(begin, split.delimiters[first] - begin));
            begin = split.delimiters[first] + size_t{1};
        }
    }
    return records;
}

// The same, a character at a time.
std::vector<Record> SplitSlowly(const std::string& text) {
    std::vector<Record> records(1, Record(1));
    bool atStart = true;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        std::string& field = records.back().back();
        if (atStart && (c == '"' || c == '\'')) {
            std::string quoted(1, c);
            size_t k = i + 1;
            for (; k < text.size(); ++k) {
                quoted += text[k];
                if (text[k] == '\\' && k + 1 < text.size()) {
                    quoted += text[++k];
                } else if (text[k] == c) {
                    if (k + 1 >= text.size() || text[k + 1] != c) break;
                    quoted += text[++k];
                }
            }
            if (k < text.size()) {
                field += quoted;
                i = k;
                atStart = false;
                continue;
            }
        }
        atStart = c == ',' || c == '\n';
        if (c == ',') {
            records.back().emplace_back();
        } else if (c == '\n') {
            records.emplace_back(1);
        } else {
            field += c;
        }
    }
    if (!text.empty() && text.back() == '\n') records.pop_back();
    if (text.empty()) records.clear();
    return records;
}

TEST(FieldSplitter, KeepsDelimitersInsideQuotes) {
    EXPECT_EQ(Split("a,b\n1,\"x,\ny\"\n"), (std::vector<Record>{{"a", "b"}, {"1", "\"x,\ny\""}}));
    EXPECT_EQ(Split("\"say \"\"a,b\"\"\",2\n"), (std::vector<Record>{{"\"say \"\"a,b\"\"\"", "2"}}));
    EXPECT_EQ(Split("\"a\\\",b\",2"), (std::vector<Record>{{"\"a\\\",b\"", "2"}}));
    // Only at the start of a field does a quote enclose anything.
    EXPECT_EQ(Split("5\",6\nit's,x\n"), (std::vector<Record>{{"5\"", "6"}, {"it's", "x"}}));
}

TEST(FieldSplitter, LeavesAnUnfinishedRecordForTheNextWindow) {
    EXPECT_EQ(Split("a,b\nc,", false), (std::vector<Record>{{"a", "b"}}));
    EXPECT_EQ(Split("a,b\nc,\"d\n", false), (std::vector<Record>{{"a", "b"}}));
    EXPECT_TRUE(Split("a,\"b", false).empty());
    // At the end of the text a quote that nothing closes is text.
    EXPECT_EQ(Split("a,\"b\nc,d"), (std::vector<Record>{{"a", "\"b"}, {"c", "d"}}));
    EXPECT_TRUE(Split("").empty());
    EXPECT_EQ(Split(","), (std::vector<Record>{{"", ""}}));
}

TEST(FieldSplitter, AgreesWithASlowOneOnAnyText) {
    std::mt19937 random(20261101);
    const std::string alphabet = "ab,,\n\"\"'\\ x";
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        const size_t length = random() % 300;
        for (size_t i = 0; i < length; ++i) text += alphabet[random() % alphabet.size()];
        ASSERT_EQ(Split(text), SplitSlowly(text)) << text;
    }
}

TEST(SplitRaggedFields, PadsShortRecordsAndFoldsLongOnes) {
    const std::string text = "a,b,c\n1\n\n1,2,3,4\n\r\nx,y,z";
    SplitText split;
    FieldSplitter(parse_config()).Split(text.data(), text.size(), true, split);
    std::vector<unsigned> begins;
    std::vector<unsigned> ends;
    ASSERT_EQ(split_ragged_fields_char_col(text.data(), split, 3, begins, ends), 4U);
    std::vector<std::string> fields;
    for (size_t i = 0; i < begins.size(); ++i) {
        const unsigned begin = begins[i] + 1;
        fields.push_back(text.substr(begin, ends[i] - begin));
    }
    EXPECT_EQ(fields, (std::vector<std::string>{"a", "b", "c", "1", "", "", "1", "2", "3,4", "x", "y", "z"}));
}

}  // namespace
}  // namespace qve
