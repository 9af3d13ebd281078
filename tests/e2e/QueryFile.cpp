#include "tests/e2e/QueryFile.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace qve::test {
namespace {

class Reader {
public:
    explicit Reader(const std::string& path) : m_path(path), m_file(path) {
        if (!m_file) throw std::runtime_error("no such file: " + path);
    }

    std::vector<QueryStep> Read() {
        std::vector<QueryStep> steps;
        std::string line;
        while (NextLine(line)) {
            if (line.empty() || line[0] == '#') continue;
            steps.push_back(ReadStep(line));
        }
        return steps;
    }

private:
    bool NextLine(std::string& line) {
        ++m_line;
        return static_cast<bool>(std::getline(m_file, line));
    }

    [[noreturn]] void Fail(const std::string& what) const {
        throw std::runtime_error(m_path + ":" + std::to_string(m_line) + ": " + what);
    }

    // The lines up to a blank one, or to a separator, which is given back.
    std::string Block(std::string* separator = nullptr) {
        std::string text;
        std::string line;
        while (NextLine(line) && !line.empty()) {
            if (separator && line.rfind("----", 0) == 0) {
                *separator = line;
                return text;
            }
            text += (text.empty() ? "" : "\n") + line;
        }
        if (separator) Fail("a query without ---- and what is expected");
        return text;
    }

    QueryStep ReadStep(const std::string& header) {
        std::istringstream words(header);
        std::string word;
        words >> word;
        QueryStep step{};
        step.line = m_line;
        if (word == "load") {
            step.kind = QueryStep::Kind::load;
            words >> step.text;
        } else if (word == "statement") {
            step.kind = QueryStep::Kind::statement;
            step.text = Block();
        } else if (word == "query") {
            step.kind = QueryStep::Kind::query;
            while (words >> word) {
                if (word == "sorted") {
                    step.sorted = true;
                } else if (word == "oracle") {
                    step.oracle = true;
                } else {
                    Fail("unknown mode: " + word);
                }
            }
            std::string separator;
            step.text = Block(&separator);
            if (step.oracle != (separator == "---- sqlite")) Fail("oracle and ---- sqlite go together");
            step.expected = Block();
        } else if (word == "error") {
            step.kind = QueryStep::Kind::error;
            words >> word;
            step.status = word == "any" ? 0 : std::stoi(word);
            std::getline(words, word);
            const size_t first = word.find('"');
            if (first != std::string::npos) step.message = word.substr(first + 1, word.rfind('"') - first - 1);
            step.text = Block();
        } else {
            Fail("unknown entry: " + header);
        }
        return step;
    }

    std::string m_path;
    std::ifstream m_file;
    int m_line = 0;
};

}  // namespace

std::vector<QueryStep> ReadQueryFile(const std::string& path) {
    return Reader(path).Read();
}

}  // namespace qve::test
