#include "vql/eval/VQLQueryCompiler.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <list>

#include "algebra/Namespace.h"
#include "algebra/plan/FormatNamespace.h"
#include "primitives/define_primitives.h"
#include "storage/DatabaseFamily.h"
#include "system/QuillonException.h"
#include "system/VQLException.h"
#include "system/unicode.h"
#include "types/types_initialization.h"
#include "vql/VQLBuildTableSpaces.h"
#include "vql/VQLQueryChecker.h"
#include "vql/VQLQueryParser.h"
#include "vql/VQLTableSpaceFamily.h"

namespace qve {
namespace {

/// Compiles queries as they are written, without any pass, over a text with the columns a (integer), d (double) and s.
class VQLQueryCompilerTest : public testing::Test {
protected:
    void SetUp() override {
        types_initialization();
        define_primitives();
        m_path = std::filesystem::temp_directory_path() / ("qve_compiler_test_" + std::to_string(::getpid()) + ".csv");
        std::ofstream(m_path) << "a,d,s\n1,1.5,x\n2,2.5,y\n";
    }
    void TearDown() override { std::filesystem::remove(m_path); }

    /// `T` stands for the text.
    RefCntPtr<Namespace> Compile(std::string text) {
        const std::string form = "(text \"" + m_path.string() + "\")";
        text.replace(text.find('T'), 1, form);
        const RefCntPtr<VQLQuery> query = VQLQueryParser(m_symbols)(widen(text).c_str());
        VQLQueryChecker{m_spaces.emplace_back(VQLBuildTableSpaces(query, m_databases, m_symbols))}(query);
        return VQLQueryCompiler(m_databases)(query);
    }

    /// Number and text of what compiling raises.
    std::string Error(const std::string& text) {
        try {
            Compile(text);
        } catch (const QVE_RuntimeError& error) {
            return std::to_string(error.GetStatus()) + " " + error.what();
        } catch (const VQLException& error) {
            return std::to_string(error.GetErrorCode()) + " " + error.GetWhatA();
        }
        return "compiles";
    }

    DatabaseFamily m_databases;
    SymbolDictionary m_symbols;

private:
    std::filesystem::path m_path;
    std::list<VQLTableSpaceFamily> m_spaces;
};

// What the passes promise is demanded, and not guessed.
TEST_F(VQLQueryCompilerTest, RefusesWhatNoPassHasLowered) {
    const struct {
        const char* query;
        const char* error;
    } cases[] = {
        {"(aggregate T (([x] (+ [a] 1))) ())", "40547 group-by expressions must be trivial"},
        {"(aggregate T (([x] [a])) ())", "40547 bad group-by identifier"},
        {"(aggregate T () (([n] 1)))", "40547 measure expressions must be aggregate"},
        {"(aggregate T () (([n] (+ (count) 1))))", "40547 inputs to aggregate functions must be scalar"},
        {"(order T (((+ [a] 1) asc)))", "40547 order expressions must be trivial"},
        {"(top T (((- [d]) asc)) 3)", "40547 order expressions must be trivial"},
        {"(project T (([x].[y] [a])))", "40547 bad identifier"},
        {"(append T (table [.SESSION].[x]) ())", "48021 no such database ()"},
        {"(project T (([x] null)))", "49015 unsupported null literal value"},
        {"(aggregate T () (([q] (quantile [d] [a]))))", "49011 quantile needs a number as its second argument"},
    };
    for (const auto& test : cases) EXPECT_EQ(Error(test.query), test.error) << test.query;
}

TEST_F(VQLQueryCompilerTest, ChoosesTheOperatorsOfAPlan) {
    const struct {
        const char* query;
        const char* operators;  // from the result down
    } cases[] = {
        {"T", "text"},
        {"(select T (> [a] 1))", "select text"},
        {"(restrict (project T (([x] (+ [a] 1)))) ([x]))", "restrict project text"},
        {"(aggregate T (([s] [s])) (([n] (count))))", "scan aggregate text"},
        {"(order T (([a] asc)))", "scan order flowtable text"},
        {"(top T (([a] asc)) 5)", "scan top text"},
    };
    for (const auto& test : cases) {
        std::string operators;
        for (const FormatNamespace::Line& line : FormatNamespace::Lines(*Compile(test.query))) {
            const std::string text = narrow(line.text);
            operators += (operators.empty() ? "" : " ") + text.substr(1, text.find(' ') - 1);
        }
        EXPECT_EQ(operators, test.operators) << test.query;
    }
}

TEST_F(VQLQueryCompilerTest, RecodesManyValuesByALookup) {
    const auto recode = [](const std::string& column, const std::string& equals, const std::string& quote) {
        std::string text = "(project T (([x] (case";
        for (unsigned i = 0; i < 9; ++i) {
            text += " (" + equals + " " + column + " " + quote + std::to_string(i) + quote + ") " + std::to_string(i);
        }
        return text + " 9))))";
    };
    const auto isLookup = [this](const std::string& query) {
        const std::string text = narrow(FormatNamespace::Lines(*Compile(query)).front().text);
        return text.find("(lookup") != std::string::npos;
    };
    EXPECT_TRUE(isLookup(recode("[a]", "=", "")));
    EXPECT_TRUE(isLookup(recode("[s]", "=", "\"")));
    EXPECT_FALSE(isLookup(recode("[d]", "=", "")));  // two zeros are equal, and are two keys
    EXPECT_FALSE(isLookup(recode("[a]", "<", "")));
    EXPECT_FALSE(isLookup("(project T (([x] (case (= [a] 1) 1 (= [a] 2) 2 3))))"));
}

}  // namespace
}  // namespace qve
