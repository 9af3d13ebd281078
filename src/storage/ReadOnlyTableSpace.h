#pragma once

#include "storage/TableSpace.h"

namespace qve {

/// Base of spaces that cannot be changed: every change throws QVE_RuntimeError
/// (status::ReadOnlyTableSpace_NotWritable).
class ReadOnlyTableSpace : public TableSpace {
public:
    void mkdir(const std::wstring&) override { NotWritable(); }
    void rmdir(const std::wstring&) override { NotWritable(); }
    void create(const std::wstring&) override { NotWritable(); }
    void rename(const std::wstring&, const std::wstring&) override { NotWritable(); }
    void unlink(const std::wstring&) override { NotWritable(); }
    void close(const std::wstring&) override {}
    void closeall() override {}

protected:
    [[noreturn]] static void NotWritable();
};

}  // namespace qve
