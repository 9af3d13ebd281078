#include "storage/PropertyFile.h"

#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/status.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

using PropertyFileTest = StorageTest;

TEST_F(PropertyFileTest, TakesLinesApartAtTheFirstColonAndSkipsTheRest) {
    const usrprops read = ParseProperties("name:a:b\n\n# size:1\n:2\nprecision:\nnothing\nunheard-of:x\r\nscale:7");
    EXPECT_EQ(read.size(), 3u);
    EXPECT_EQ(read.text(usrpropkey::name), L"a:b");
    EXPECT_EQ(read.text(usrpropkey::scale), L"7");
    EXPECT_EQ(read.text(UsrPropKey_FromString(L"unheard-of")), L"x");
}

TEST_F(PropertyFileTest, SurvivesBytesThatAreNoText) {
    std::string bytes("\xff\xfe:x\nname:\xc3\x28\n\0\0name", 18);
    const usrprops read = ParseProperties(bytes);
    EXPECT_EQ(read.text(usrpropkey::name), L"\xFFFD(");
}

TEST_F(PropertyFileTest, WritesOverALongerFile) {
    MemoryDirectoryTableSpace space(L"memory");
    space.create(L"f");
    usrprops properties;
    properties.set(usrpropkey::name, std::wstring(1000, L'\x4E2D'));
    properties.set(usrpropkey::default_value, L"two\nlines");
    WritePropertyFile(space, L"f", properties);
    properties.set(usrpropkey::name, L"short");
    WritePropertyFile(space, L"f", properties);
    const usrprops read = ReadPropertyFile(space, L"f");
    EXPECT_EQ(read.text(usrpropkey::name), L"short");
    EXPECT_EQ(read.text(usrpropkey::default_value), L"two lines");
    EXPECT_EQ(FormatProperties(read), "default-value:two lines\nname:short\n");
}

TEST_F(PropertyFileTest, RefusesAFileThatIsTooLongToBeOne) {
    MemoryDirectoryTableSpace space(L"memory");
    space.create(L"f");
    space.open(L"f", true)->Resize((uint64_t{1} << 24) + 1);
    EXPECT_EQ(StatusOf([&] { ReadPropertyFile(space, L"f"); }), status::ReadPropertyFile);
}

}  // namespace
}  // namespace qve
