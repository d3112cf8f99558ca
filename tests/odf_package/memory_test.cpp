// Every allocation fails once: each operation says so, and the package can be used afterwards.

#include "odf_package/fixture.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

/// Allocations until one fails; negative for none. Only on the thread that counts.
thread_local long allocationsLeft = -1;

bool mayAllocate() noexcept {
    return allocationsLeft < 0 || allocationsLeft-- > 0;
}

} // namespace

// The library's own allocations come here too.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const memory = mayAllocate() ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (!memory) {
        allocationsLeft = -1; // what cleans up may allocate again
        throw std::bad_alloc();
    }
    return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return mayAllocate() ? std::malloc(size == 0 ? 1 : size) : nullptr;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

using namespace odf_package_test;
using ODF::Status;

namespace {

/// Runs `work` with one failure after another, or each `step`th, until none is left; how many allocations
/// there were.
template<typename Work>
long EachFailure(long step, Work work) {
    for (long count = 0;; count += step) {
        allocationsLeft = count;
        const Status status = work();
        const bool hasFailed = allocationsLeft < 0;
        allocationsLeft = -1;
        if (!hasFailed) {
            EXPECT_EQ(status, Status::Ok);
            return count;
        }
        // A note that finds no room is given up without failing what it tells of.
        EXPECT_TRUE(status == Status::OutOfMemory || status == Status::Ok)
            << count << ": " << ODF::ToText(status);
    }
}

} // namespace

TEST(Memory, EachAllocationMayFail) {
    ODF::OdfPackage source;
    source.setMediaType(test::kTextType);
    source.put("content.xml", ToBytes(test::TextContent(std::string(2000, 'a'))));
    source.put("Pictures/a.png", ToBytes("x"));
    Bytes archive;
    ODF::Diagnostics notes;
    ASSERT_EQ(source.write({}, archive, notes), Status::Ok);
    source.setEncryption(Encryption::Members, "p");
    Bytes sealed;
    ASSERT_EQ(source.write({}, sealed, notes), Status::Ok);

    for (const Bytes& bytes : {archive, sealed}) {
        const long step = bytes == archive ? 1 : 7; // the keys take their time
        ODF::OdfPackage package;
        EXPECT_GT(EachFailure(step,
                              [&] {
                                  Bytes copy;
                                  const long left = std::exchange(allocationsLeft, -1);
                                  copy = bytes;
                                  allocationsLeft = left;
                                  return package.open(std::move(copy), "p", {}, notes);
                              }),
                  20);
        Bytes read;
        EXPECT_GT(EachFailure(step, [&] { return package.read("content.xml", read, notes); }), 0);
        EXPECT_EQ(read, ToBytes(test::TextContent(std::string(2000, 'a'))));
        Bytes written;
        EXPECT_GT(EachFailure(step,
                              [&] {
                                  written = {};
                                  return package.write({}, written, notes);
                              }),
                  10);
        Opened again(ToText(written), "p");
        EXPECT_EQ(again.read("content.xml"), ToText(read));
    }
}
