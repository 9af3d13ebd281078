// Runs the examples of docs/vql.md: each block of statements, and against the block of rows behind it.

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"

namespace qve::test {
namespace {

namespace fs = std::filesystem;

struct Example {
    int line;
    std::vector<std::string> statements;
    std::string expected;
    bool checked = false;
};

void ReplaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
}

std::vector<std::string> SplitAtBlankLines(const std::string& text) {
    std::vector<std::string> parts;
    for (size_t from = 0; from < text.size();) {
        const size_t to = std::min(text.find("\n\n", from), text.size());
        parts.push_back(text.substr(from, to - from));
        from = to + 2;
    }
    return parts;
}

std::vector<Example> ReadExamples(const std::string& path) {
    std::ifstream file(path);
    std::vector<Example> examples;
    std::string line;
    std::string block;
    enum { text, statements, rows } state = text;
    int number = 0;
    bool afterStatements = false;
    while (std::getline(file, line)) {
        ++number;
        if (state == text && line == "```vql") {
            state = statements;
            block.clear();
            examples.push_back({number, {}, {}});
        } else if (state == text && line == "```" && afterStatements) {
            state = rows;
            block.clear();
        } else if (state != text && line == "```") {
            if (state == statements) {
                examples.back().statements = SplitAtBlankLines(block);
            } else {
                examples.back().expected = block;
                examples.back().checked = true;
            }
            afterStatements = state == statements;
            state = text;
        } else if (state != text) {
            block += line + "\n";
        } else {
            afterStatements = false;
        }
    }
    return examples;
}

std::string Format(const Rows& result) {
    std::string text;
    for (const std::string& column : result.columns) text += (text.empty() ? "" : " | ") + column;
    text += "\n";
    for (const Row& row : result.rows) {
        std::string cells;
        for (const Cell& cell : row) cells += (cells.empty() ? "" : " | ") + FormatCell(cell);
        text += cells + "\n";
    }
    return text;
}

TEST(VqlDocument, ItsExamplesGiveWhatItSays) {
    const ScratchFolder scratch;
    const EngineProcess process;
    EngineClient client(process.GetDescriptor());
    const std::vector<Example> examples = ReadExamples(QVE_SOURCES "/docs/vql.md");
    ASSERT_GT(examples.size(), 15U);
    for (const Example& example : examples) {
        std::string actual;
        for (std::string statement : example.statements) {
            ReplaceAll(statement, "@FOLDER@", scratch.GetPath().string());
            ReplaceAll(statement, "@EXAMPLES@", QVE_SOURCES "/examples");
            try {
                actual = Format(client.Run(statement));
            } catch (const EngineError& error) {
                actual = fmt::format("error {}: {}\n", error.GetStatus(), error.what());
                EXPECT_TRUE(example.checked) << "docs/vql.md:" << example.line << ": " << statement << "\n" << actual;
            }
        }
        if (!example.checked) continue;
        EXPECT_EQ(actual, example.expected) << "docs/vql.md:" << example.line;
    }
}

}  // namespace
}  // namespace qve::test
