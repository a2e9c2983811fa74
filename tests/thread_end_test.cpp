// A thread that ends gives back what the library held for it: its pool's
// free lists, its block of the two-argument Encode, its string stack, its
// display buffers and its locale. In the normal build the blocks live in
// the C allocator (alloc_count.h) must come back to where they stood;
// under the sanitizers, which have no pool, LeakSanitizer finds any
// per-thread block left behind when the program ends.
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "alloc_count.h"
#include "support.h"
#include "zol/ber/asn_thread.h"

namespace {

using Zol::AsnBuffer;

std::string Sample(const char* name) { return zt::FileBytes(std::string(ZOL_SAMPLES "/") + name); }

const std::string kReport = Sample("3-order-report.ber");      // a ZolQueryRep
const std::string kCons = zt::Bytes("24 80 04 02 41 42 04 01 43 00 00");  // "ABC", in pieces
const std::string kForeign = zt::Bytes("31 00");                 // no ZolTransReq

std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

// Values decoded on the calling thread; each holds blocks of its pool.
std::vector<std::unique_ptr<AsnType>> Decoded(int n) {
    std::vector<std::unique_ptr<AsnType>> out;
    for (int i = 0; i < n; ++i) {
        out.emplace_back(new Zol::ZolQueryRep);
        EXPECT_EQ(AsnBuffer::Decode(kReport.data(), kReport.size(), *out.back()), 1);
    }
    return out;
}

// What a short-lived thread does: values made and freed, so that its
// free lists hold blocks when it ends, and every other piece of
// per-thread state touched once.
void Work() {
    Decoded(3);
    AsnOcts cons;
    EXPECT_EQ(AsnBuffer::Decode(kCons.data(), kCons.size(), cons), 1);  // the string stack
    Zol::ZolTransReq foreign;
    EXPECT_EQ(AsnBuffer::Decode(kForeign.data(), kForeign.size(), foreign), 0);  // the line in data
    size_t len = 0;
    EXPECT_NE(AsnBuffer::Encode(cons, len), nullptr);  // data again
    Zol::ZolFixedReal price;
    price.value = 1234.5;
    EXPECT_NE(Zol::ZolFormat::FixedReal(price, true, true, 0), nullptr);  // buffers, locale
}

// `threads` threads at a time doing `work`, `waves` times over.
template <class F>
void Waves(int waves, int threads, F work) {
    for (int w = 0; w < waves; ++w) {
        std::vector<std::thread> wave;
        for (int t = 0; t < threads; ++t)
            wave.emplace_back(work);
        for (std::thread& t : wave)
            t.join();
    }
}

// The C library keeps a few blocks for the threads it has started (the
// stacks it caches, with their thread-local storage); a first wave of
// threads makes them, and a thousand threads after it have left none
// behind in every run so far. A thread whose pool's lists stay leaves
// dozens of blocks, and one whose blocks on the heap stay four, so a leak
// shows as thousands.
const int64_t kNoise = 8;

// The live blocks that `run` leaves behind; 0 where they are not counted.
// The failure lines of Work go nowhere.
template <class F>
int64_t LeftBehind(F run) {
    testing::internal::CaptureStderr();
    Waves(1, 8, Work);
    const int64_t before = zalloc::liveBlocks.load();
    run();
    const int64_t left = zalloc::liveBlocks.load() - before;
    testing::internal::GetCapturedStderr();
    return left;
}

TEST(ThreadEnd, AThousandThreadsGiveBackWhatTheyHeld) {
    const int64_t left = LeftBehind([] { Waves(125, 8, Work); });
    if (zalloc::liveCounted) {
        EXPECT_LE(std::llabs(left), kNoise);
    }
}

// A value made on one thread and freed on another after the first has
// ended: its blocks join the lists of the second, which gives them back
// when it ends in turn.
TEST(ThreadEnd, ValuesOutliveTheThreadThatMadeThem) {
    const int64_t left = LeftBehind([] {
        for (int round = 0; round < 100; ++round) {
            std::vector<std::unique_ptr<AsnType>> made;
            std::thread([&made] {
                EXPECT_EQ(AsnType::Allocations(), 0u);  // a new thread has taken nothing
                made = Decoded(5);
            }).join();
            std::thread([&made] {
                for (auto& v : made) {
                    std::unique_ptr<AsnType> copy(v->Clone());
                    EXPECT_EQ(Printed(*copy), Printed(*v));
                }
                made.clear();
            }).join();
        }
    });
    if (zalloc::liveCounted) {
        EXPECT_LE(std::llabs(left), kNoise);
    }
}

// A node that links itself again while it runs, as the owner of state
// that a later destructor of the thread uses again does, runs again.
TEST(ThreadEnd, ANodeLinkedAgainWhileItRunsRunsAgain) {
    static int runs = 0;
    static AsnThreadEnd node{[](AsnThreadEnd* self) {
                                 if (++runs == 1)
                                     AsnAtThreadEnd(*self);
                             },
                             nullptr, false};
    std::thread([] { AsnAtThreadEnd(node); }).join();
    EXPECT_EQ(runs, 2);
}

}  // namespace
