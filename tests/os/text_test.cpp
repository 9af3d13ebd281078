#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <string>

#include "os/FormatFilename.h"
#include "os/ParseCommandline.h"

namespace qve {
namespace {

using testing::ElementsAre;

TEST(ParseCommandline, SplitsAtBlanksOutsideQuotes) {
    EXPECT_THAT(ParseCommandline::Parse(std::string_view("a  \"b c\" d\"e f\"g ")), ElementsAre("a", "b c", "de fg"));
    EXPECT_THAT(ParseCommandline::Parse(std::string_view(R"("say ""hi""" "" x)")), ElementsAre("say \"hi\"", "", "x"));
    EXPECT_THAT(ParseCommandline::Parse(std::wstring_view(L"a \"b")), ElementsAre(L"a", L"b"));
    EXPECT_THAT(ParseCommandline::Parse(std::string_view(" ")), ElementsAre());
}

TEST(FormatFilename, FillsTokens) {
    const std::time_t before = std::time(nullptr);
    const FormatFilename format(true);
    const std::time_t after = std::time(nullptr);
    const std::string stamp = format.format("%Y%m%d%H%M%S");
    bool matches = false;
    for (std::time_t t = before; t <= after; ++t) {
        char text[32];
        std::strftime(text, sizeof(text), "%Y%m%d%H%M%S", std::gmtime(&t));
        matches = matches || stamp == text;
    }
    EXPECT_TRUE(matches) << stamp;
    EXPECT_EQ(format.format("log_%P.txt"), "log_" + std::to_string(getpid()) + ".txt");
    EXPECT_EQ(format.format("100%% %x %"), "100% %x %");
}

}  // namespace
}  // namespace qve
