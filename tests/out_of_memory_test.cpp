// Memory that runs out: the k-th allocation of a decode or of a clone
// fails, for every k. A decode gives 0 with its out-of-memory line and
// code and leaves its value clear, so that the same value then decodes
// the message; a clone gives null; and nothing allocated on the way is
// left behind. The heap's blocks in use are counted where the C allocator
// is interposed; under the sanitizers the leak checker sees them.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "alloc_count.h"
#include "../bench/messages.h"
#include "support.h"
#include "walk.h"

namespace {

using namespace zt;

using zt::Printed;

std::string EncodedBytes(const AsnType& v) {
    std::string block(1 << 16, '\0');
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(&block[0], block.size(), v, len);
    return p ? std::string(p, len) : std::string();
}

int64_t HeapInUse() { return zalloc::liveBlocks.load(); }

// A failure planted at the `k`-th allocation for the life of the object,
// however the scope is left.
struct FailingAt {
    explicit FailingAt(uint64_t k) { AsnPoolFailAfter(k); }
    ~FailingAt() { AsnPoolFailAfter(0); }
};

// The blocks that `f` takes from the pool, counted with a failure planted
// too far away to be met, so that the pool's lists serve none of them.
uint64_t Takes(const std::function<void()>& f) {
    FailingAt never(UINT64_MAX / 2);
    uint64_t before = AsnType::Allocations();
    f();
    return AsnType::Allocations() - before;
}

struct Message {
    const char* name;
    std::unique_ptr<AsnType> value;
};

class OutOfMemory : public testing::TestWithParam<int> {};

TEST_P(OutOfMemory, EveryAllocationOfADecodeAndACloneMayFail) {
    Message messages[] = {{"ZolTransReq", zmsg::NewOrder()},
                          {"ZolQueryRep", zmsg::OrderRecord()},
                          {"ZolSecBoardRep", zmsg::FullSecBoard()},
                          {"ZolOrderbookByPriceRep", zmsg::Book()}};
    const Message& m = messages[GetParam()];
    const AsnTypeDesc* desc = m.value->_getdesc();
    const std::string bytes = EncodedBytes(*m.value);
    const std::unique_ptr<AsnType> empty(desc->create());
    const std::string emptyText = Printed(*empty);
    const std::string failure = "ERROR - out of memory while decoding\n" + DoorLine(m.name, AsnOutOfMemoryCode);

    std::unique_ptr<AsnType> fresh(desc->create());
    uint64_t decodeTakes = Takes([&] { Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), *fresh); });
    ASSERT_GT(decodeTakes, 4u);
    // A failure at the k-th allocation, and the value decoded again.
    auto decodeFailingAt = [&](uint64_t k) {
        std::unique_ptr<AsnType> v(desc->create());
        FailingAt failing(k);
        Outcome failed = Decode(bytes, *v);
        ASSERT_EQ(failed.result, 0);
        ASSERT_EQ(failed.err, failure);
        ASSERT_EQ(Printed(*v), emptyText);
        Outcome again = Decode(bytes, *v);
        ASSERT_EQ(again.result, 1) << again.err;
        ASSERT_EQ(EncodedBytes(*v), bytes);
        v.reset();  // while the heap has every block
    };
    // What the thread keeps (the front door's block, the threads library's
    // record of it) is made by a first round, before the heap is watched.
    decodeFailingAt(1);
    for (uint64_t k = 1; k <= decodeTakes; ++k) {
        int64_t inUse = HeapInUse();
        decodeFailingAt(k);
        ASSERT_FALSE(HasFatalFailure()) << "allocation " << k;
        ASSERT_EQ(HeapInUse(), inUse) << "allocation " << k;
    }

    uint64_t cloneTakes = Takes([&] { delete m.value->Clone(); });
    ASSERT_EQ(cloneTakes, decodeTakes + 1);  // the root
    for (uint64_t k = 1; k <= cloneTakes; ++k) {
        int64_t inUse = HeapInUse();
        AsnType* copy;
        {
            FailingAt failing(k);
            copy = m.value->Clone();
        }
        ASSERT_EQ(copy, nullptr) << "allocation " << k;
        ASSERT_EQ(HeapInUse(), inUse) << "allocation " << k;
    }
}

INSTANTIATE_TEST_SUITE_P(Messages, OutOfMemory, testing::Range(0, 4));

}  // namespace
