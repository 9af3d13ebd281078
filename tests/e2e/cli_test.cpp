// The program qve as its users run it: imports, and exports of what was imported.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

struct Outcome {
    int status = -1;
    std::string output;  // of both streams
};

/// Runs a line of the shell in which QVE stands for the program.
Outcome RunLine(std::string line) {
    for (std::size_t at; (at = line.find("QVE")) != std::string::npos;) line.replace(at, 3, QVE_TEST_PROGRAM);
    FILE* const pipe = ::popen((line + " 2>&1").c_str(), "r");
    Outcome outcome;
    char buffer[4096];
    while (const std::size_t count = ::fread(buffer, 1, sizeof buffer, pipe)) outcome.output.append(buffer, count);
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class QveProgram : public testing::Test {
protected:
    QveProgram() {
        std::ofstream text(m_path / "a.csv");
        text << "id,note,x\n";
        for (int i = 0; i < s_rows; ++i) {
            text << i << ",\"n, " << i % 10 << "\"," << (i == 290'005 || i == 290'007 ? "none" : "1.5") << "\n";
        }
    }

    /// Records of three columns with these numbers in the first.
    static std::string Numbers(int from, int to) {
        std::string text;
        for (int i = from; i <= to; ++i) text += std::to_string(i) + ",a note,1\n";
        return text;
    }
    Outcome In(const std::string& line) const { return RunLine("cd " + m_path.string() + " && " + line); }
    std::string Read(const std::string& name) const {
        std::ifstream file(m_path / name, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }
    void Gzip(const std::string& from, const std::string& to) const {
        const std::string text = Read(from);
        const gzFile file = ::gzopen((m_path / to).c_str(), "wb");
        ::gzwrite(file, text.data(), static_cast<unsigned>(text.size()));
        ::gzclose(file);
    }

    // More than the types are found from.
    static constexpr int s_rows = 300'000;
    const test::ScratchFolder m_scratch;
    const std::filesystem::path m_path = m_scratch.GetPath();
};

TEST_F(QveProgram, ImportsAndReportsWhatItRefused) {
    const Outcome import = In("QVE import a.csv --into db --table shop.sale");
    EXPECT_EQ(import.status, 0) << import.output;
    EXPECT_NE(import.output.find(" x      | double                 |        2 |       290006\n"), std::string::npos)
        << import.output;
    EXPECT_NE(import.output.find("300,000 rows and 3 columns in shop.sale"), std::string::npos) << import.output;

    const Outcome again = In("QVE import a.csv --into db --table shop.sale");
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.output.find("error 40603"), std::string::npos) << again.output;

    EXPECT_EQ(In("QVE export --from db '(top (table [shop].[sale]) (([id] asc)) 2)'").output,
              "id,note,x\n0,\"n, 0\",1.5\n1,\"n, 1\",1.5\n");
    EXPECT_EQ(In("QVE export --from db --table shop.sale -o out.csv").output, "300,000 rows in out.csv\n");
    std::string expected = Read("a.csv");
    for (std::size_t at; (at = expected.find("none")) != std::string::npos;) expected.erase(at, 4);
    EXPECT_TRUE(Read("out.csv") == expected);
    EXPECT_EQ(In("QVE export --from db --format tsv '(select (table [shop].[sale]) (= [id] 290005))'").output,
              "id\tnote\tx\n290005\tn, 5\t\\N\n");
    EXPECT_EQ(In("QVE export --from db -o out.jsonl '(select (table [shop].[sale]) (= [id] 7))'").status, 0);
    EXPECT_EQ(Read("out.jsonl"), "{\"id\": 7, \"note\": \"n, 7\", \"x\": 1.5}\n");

    const Outcome wrong = In("QVE export --from db -o wrong.csv '(table [shop].[none])'");
    EXPECT_EQ(wrong.status, 1);
    EXPECT_NE(wrong.output.find("line 1, column"), std::string::npos) << wrong.output;
    EXPECT_FALSE(std::filesystem::exists(m_path / "wrong.csv"));
}

TEST_F(QveProgram, ImportsCompressedTextOrNothing) {
    Gzip("a.csv", "a.csv.gz");
    const Outcome import = In("QVE import a.csv.gz --into db --table sale");
    EXPECT_EQ(import.status, 0) << import.output;
    EXPECT_NE(import.output.find("300,000 rows and 3 columns in main.sale"), std::string::npos) << import.output;

    std::filesystem::resize_file(m_path / "a.csv.gz", std::filesystem::file_size(m_path / "a.csv.gz") - 10);
    const Outcome cut = In("QVE import a.csv.gz --into cut --table sale");
    EXPECT_EQ(cut.status, 1);
    EXPECT_NE(cut.output.find("error 40569"), std::string::npos) << cut.output;
    EXPECT_FALSE(std::filesystem::exists(m_path / "cut"));
    EXPECT_EQ(In("QVE import a.csv.gz --into db --table other.sale").status, 1);
    EXPECT_EQ(In("QVE -d db -c '(show schemas)' --format csv").output, "SCHEMAS_NAME\nSYS\nmain\nTEMP\n");
}

TEST_F(QveProgram, ImportsSeveralFilesIntoOneTable) {
    std::ofstream(m_path / "b.csv") << "x,id,note\n2.5,300000,last\n";
    Gzip("b.csv", "b.csv.gz");
    const Outcome import = In("QVE import a.csv b.csv b.csv.gz --into db --table sale");
    EXPECT_EQ(import.status, 0) << import.output;
    EXPECT_NE(import.output.find("300,002 rows and 3 columns in main.sale"), std::string::npos) << import.output;
    EXPECT_EQ(In("QVE export --from db '(select (table [main].[sale]) (= [id] 300000))'").output,
              "id,note,x\n300000,last,2.5\n300000,last,2.5\n");
    // A column that a file lacks is left out, and refused values of all files count.
    std::ofstream(m_path / "c.csv") << "id,note,y\n1,a,1\n2,b,2\n" << Numbers(3, s_rows) << "no number,c,3\n";
    const Outcome uneven = In("QVE import c.csv c.csv a.csv --into db --table uneven");
    EXPECT_EQ(uneven.status, 0) << uneven.output;
    EXPECT_NE(uneven.output.find("/c.csv, which " + (m_path / "a.csv").string() + " lacks"), std::string::npos)
        << uneven.output;
    EXPECT_NE(uneven.output.find("left out: x of " + (m_path / "a.csv").string()), std::string::npos) << uneven.output;
    EXPECT_NE(uneven.output.find("left out: y of "), std::string::npos) << uneven.output;
    EXPECT_NE(uneven.output.find("|        2 |       300001\n"), std::string::npos) << uneven.output;
    EXPECT_EQ(In("QVE import a.csv none.csv --into other --table sale").status, 1);
    EXPECT_FALSE(std::filesystem::exists(m_path / "other"));
}

TEST_F(QveProgram, MovesADatabaseAsAFile) {
    ASSERT_EQ(In("QVE import a.csv --into db --table t").status, 0);
    ASSERT_EQ(In("QVE -d db -c '(package \"" + (m_path / "p").string() + "\")'").status, 0);
    const Outcome sent = In("QVE upload p --to there");
    EXPECT_EQ(sent.status, 0);
    EXPECT_NE(sent.output.find("sent "), std::string::npos) << sent.output;
    EXPECT_EQ(In("QVE download there --output back").status, 0);
    EXPECT_TRUE(Read("back") == Read("p"));
    EXPECT_EQ(In("QVE -d back -c '(aggregate (table [main].[t]) () (([n] (count))))' --format csv").output,
              "n\n300000\n");

    EXPECT_NE(In("QVE upload p --to there").output.find("error 40420"), std::string::npos);
    EXPECT_NE(In("QVE upload db --to other").output.find("is a folder"), std::string::npos);
    EXPECT_EQ(In("QVE upload none --to other").status, 1);
    EXPECT_EQ(In("QVE download none --output other").status, 1);
    EXPECT_EQ(In("QVE download there").status, 1);
    EXPECT_FALSE(std::filesystem::exists(m_path / "other") || std::filesystem::exists(m_path / "other.partial"));
}

TEST_F(QveProgram, ChecksADatabase) {
    std::ofstream(m_path / "c.csv") << "id,word\n1,a\n2,b\n";
    ASSERT_EQ(In("QVE import c.csv --into db --table t").status, 0);
    const Outcome sound = In("QVE check db");
    EXPECT_EQ(sound.status, 0) << sound.output;
    EXPECT_NE(sound.output.find("/db: 8 tables, 29 columns, sound\n"), std::string::npos) << sound.output;

    std::ofstream(m_path / "db" / "main" / "t" / "stray") << "x";
    const Outcome left = In("QVE check db");
    EXPECT_EQ(left.status, 0);
    EXPECT_NE(left.output.find("left over: "), std::string::npos) << left.output;
    EXPECT_EQ(In("QVE check db --temp").status, 0);
    EXPECT_FALSE(std::filesystem::exists(m_path / "db" / "main" / "t" / "stray"));

    std::filesystem::resize_file(m_path / "db" / "main" / "t" / "word.1.dict", 1);
    const Outcome damaged = In("QVE check db --salvage saved");
    EXPECT_EQ(damaged.status, 1);
    EXPECT_NE(damaged.output.find("damaged: [main].[t].[word]: "), std::string::npos) << damaged.output;
    EXPECT_NE(damaged.output.find("salvaged: [main].[t]: 1 of 2 columns, 2 rows"), std::string::npos) << damaged.output;
    EXPECT_EQ(In("QVE check saved").status, 0);
    EXPECT_EQ(In("QVE check none").status, 1);
}

TEST_F(QveProgram, SaysWhatIsWrongWithTheCommandLine) {
    EXPECT_EQ(In("QVE import a.csv --into db --table a.b.c").status, 1);
    EXPECT_EQ(In("QVE export --from db").status, 1);
    EXPECT_EQ(In("QVE import a.csv --into db").status, 1);
    EXPECT_FALSE(std::filesystem::exists(m_path / "db"));
    const Outcome database = In("QVE -d none -c '(show collations)'");
    EXPECT_EQ(database.status, 1);
    EXPECT_NE(database.output.find("/none"), std::string::npos) << database.output;
    const Outcome server = In("QVE import a.csv --into db --table t --server /no/such/server");
    EXPECT_EQ(server.status, 2) << server.output;
}

}  // namespace
}  // namespace qve
