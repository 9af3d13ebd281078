// What a client is told when there is no memory left to tell it.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

#include "server/error_reply.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_Message.h"
#include "system/QuillonException.h"

namespace {

// Allocations that the calling thread may still make; below 0: any number.
thread_local long t_allowed = -1;

bool refuses_allocation() {
    return t_allowed >= 0 && t_allowed-- == 0;
}

}  // namespace

// Not inlined: g++ would take the pair of malloc and delete for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* memory = refuses_allocation() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (!memory) throw std::bad_alloc();
    return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return refuses_allocation() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace qve::Server {
namespace {

TEST(ErrorReply, HasAStatusWhenMemoryEndsWhileItIsBuilt) {
    const QVE_RuntimeError exception(40427, std::string(10'000, 'x'));
    bool whole = false;
    bool bare = false;
    for (long allowed = 0; !whole; ++allowed) {
        QVE_Message reply;
        reply.reserve(64);
        t_allowed = allowed;
        MakeErrorReply(exception, reply);
        t_allowed = -1;
        QVE_InputIterator in(reply);
        std::uint64_t guid;
        in.ReadHeader(guid);
        const int status = in.ReadStatus();
        const unsigned texts = in.ReadU32();
        whole = status == 40427 && texts == 1;
        if (!whole) {
            EXPECT_EQ(status, 40135) << allowed;
            EXPECT_EQ(texts, 0U);
            bare = true;
        }
    }
    EXPECT_TRUE(bare);
}

}  // namespace
}  // namespace qve::Server
