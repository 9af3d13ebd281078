#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "server/ipc/IPC_Whitelist.h"

namespace qve {
namespace {

std::string ErrorOf(const std::string& text) {
    try {
        IPC_Whitelist whitelist(text);
        return "";
    } catch (const std::invalid_argument& exception) {
        return exception.what();
    }
}

TEST(Whitelist, HoldsRangesOfOneFamily) {
    const IPC_Whitelist list("10.0.0.1-10.0.1.0,,192.168.0.7,2001:db8::1-2001:db8::ff");
    EXPECT_TRUE(list.IsWhitelisted("10.0.0.1"));
    EXPECT_TRUE(list.IsWhitelisted("10.0.0.255"));
    EXPECT_TRUE(list.IsWhitelisted("10.0.1.0"));
    EXPECT_FALSE(list.IsWhitelisted("10.0.1.1"));
    EXPECT_FALSE(list.IsWhitelisted("10.0.0.0"));
    EXPECT_TRUE(list.IsWhitelisted("192.168.0.7"));
    EXPECT_FALSE(list.IsWhitelisted("192.168.0.8"));
    EXPECT_TRUE(list.IsWhitelisted("2001:db8::a0"));
    EXPECT_FALSE(list.IsWhitelisted("2001:db8::100"));
    EXPECT_FALSE(IPC_Whitelist("0.0.0.1-255.255.255.255").IsWhitelisted("::1"));
}

TEST(Whitelist, TakesMappedAddressesForIPv4) {
    EXPECT_TRUE(IPC_Whitelist("::ffff:10.0.0.1").IsWhitelisted("10.0.0.1"));
    EXPECT_TRUE(IPC_Whitelist("10.0.0.1").IsWhitelisted("::ffff:10.0.0.1"));
}

TEST(Whitelist, ComparesScopesAfterBytes) {
    const IPC_Whitelist list("fe80::1%2");
    EXPECT_TRUE(list.IsWhitelisted("fe80::1%2"));
    EXPECT_FALSE(list.IsWhitelisted("fe80::1%3"));
    EXPECT_FALSE(list.IsWhitelisted("fe80::1"));
}

TEST(Whitelist, AnEmptyListAdmitsNobody) {
    EXPECT_FALSE(IPC_Whitelist("").IsWhitelisted("::1"));
    EXPECT_FALSE(IPC_Whitelist(",,").IsWhitelisted("127.0.0.1"));
}

TEST(Whitelist, TellsWhatIsWrong) {
    EXPECT_EQ(ErrorOf("1.2.3.4-1.2.3.5-1.2.3.6"),
              "whitelist: malformed ip range, should be '<addr>' or '<from_addr>-<to_addr>'");
    EXPECT_EQ(ErrorOf("1.2.3"), "whitelist: could not parse 1.2.3");
    EXPECT_EQ(ErrorOf("1.2.3.4-"), "whitelist: could not parse ");
    EXPECT_EQ(ErrorOf("::g"), "whitelist: could not parse ::g. Does your Operating System support IPv6?");
    EXPECT_EQ(ErrorOf("0.0.0.0"), "whitelist: undefined ip address");
    EXPECT_EQ(ErrorOf("::"), "whitelist: undefined ip address");
}

}  // namespace
}  // namespace qve
