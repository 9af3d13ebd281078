// A stored file that another program cuts short is an error of the statements that read it, and of nothing else.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/EngineClient.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

namespace fs = std::filesystem;
using test::EngineClient;
using test::EngineError;
using test::EngineProcess;
using test::FormatCell;

constexpr int s_cut = 40095;

TEST(CutFile, IsAnErrorOfTheStatement) {
    const test::ScratchFolder scratch;
    const fs::path& path = scratch.GetPath();
    {
        const EngineProcess server;
        EngineClient client(server.GetDescriptor());
        client.Run("(create database \"" + (path / "db").string() + "\")");
        client.Run("(create schema [s])");
        client.Run("(create table [s].[t] ())");
        client.Run(
            "(create column [s].[t].[x] ((type \"double\") (not-null \"true\") (count \"300000\")"
            " (generated-by \"random\") (min-value \"0\") (max-value \"1\")))");
        client.Run(
            "(create column [s].[t].[y] ((type \"double\") (not-null \"true\") (generated-by \"random\")"
            " (min-value \"0\") (max-value \"1\")))");
        const std::string sum = "(aggregate (table [s].[t]) () (([n] (count [x])) ([s] (sum [x]))))";
        const std::string expected = FormatCell(client.Run(sum).rows[0][1]);

        fs::path file;
        for (const auto& entry : fs::recursive_directory_iterator(path / "db" / "s")) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with("x.") && entry.path().extension() == ".data") file = entry.path();
        }
        const auto size = fs::file_size(file);
        ASSERT_GT(size, 1'000'000u);
        fs::copy_file(file, path / "copy");

        // The rowset has its first page, and its file in memory, when the rest of the file goes.
        QVE_Rowset* rowset = nullptr;
        ASSERT_EQ(QVE_QueryExecute(client.Get(), "(table [s].[t])", &rowset), QVE_OK);
        fs::resize_file(file, 64 * 1024);
        QVE_ValueArray* array = nullptr;
        EXPECT_EQ(QVE_RowsetGetValueArray(rowset, &array), s_cut);
        QVE_RowsetClose(rowset);
        // The next ones are told that the rows are not all there.
        EXPECT_THROW(client.Run("(create table-from-query [s].[u] (restrict (table [s].[t]) ([y] [x])))"), EngineError);
        EXPECT_EQ(client.Run("(show tables)").rows.size(), 1u);

        // Once the file is there again all is well: nothing that was made up is read.
        fs::resize_file(file, 0);
        fs::copy_file(path / "copy", file, fs::copy_options::overwrite_existing);
        EXPECT_EQ(FormatCell(client.Run(sum).rows[0][1]), expected);
    }
}

}  // namespace
}  // namespace qve
