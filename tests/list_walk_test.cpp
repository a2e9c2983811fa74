// The JSON form walks a list in steps linear in its length, both ways.
//
// The count is of links followed from a node of a list to the next or the
// previous one: the cost that made ToJson quadratic when it reached element
// N through _getref("N"), which walks N links from the head. The list here
// has the generated lists' shape and goes through their machinery
// (AsnListRef, AsnListForEach, AsnListInsert), but its links count each
// time they are followed. The count is exact and repeatable and costs the
// walk next to nothing. Time is not a count; the machine has no hardware
// counters; valgrind's instruction count, which would also see costs
// outside the list, takes some 20 s on these walks and cannot run under
// the sanitizers.
#include <gtest/gtest.h>

#include <stdexcept>

#include <zol/json.h>

#include "zol/ber/asn_list.h"

namespace {

const long long kUnlimited = 1LL << 62;
long long steps = 0;
long long budget = kUnlimited;  // beyond it a walk is stopped, so that a quadratic one fails fast

template <class Node>
class Link {
public:
    Link& operator=(Node* to) {
        to_ = to;
        return *this;
    }
    operator Node*() const { return Follow(); }
    Node* operator->() const { return Follow(); }

private:
    Node* to_ = nullptr;
    Node* Follow() const {
        if (++steps > budget)
            throw std::length_error("more steps than the budget");
        return to_;
    }
};

using Element = Zol::ZolUserUpdateActivityStatusSetOfSeq;

class CountedList : public AsnType {
public:
    struct AsnListElmt {
        Link<AsnListElmt> next, prev;
        Element* elmt;
    };
    uint32_t count = 0;
    AsnListElmt* first = nullptr;
    AsnListElmt* curr = nullptr;
    AsnListElmt* last = nullptr;

    ~CountedList() override { AsnListClear(*this); }
    const AsnTypeDesc* _getdesc() const override { return &desc; }
    AsnType* _getref(const char* name, bool) override { return AsnListRef(*this, name); }

    static const AsnListTypeDesc desc;
};

const AsnListTypeDesc CountedList::desc(nullptr, "CountedList", false, AsnTypeDesc::SET_OF, nullptr,
                                        &Element::_desc, AsnListForEach<CountedList>);

// The steps `walk` takes; past `allowed` steps it is stopped, and fails.
template <class Walk>
long long Count(long long allowed, Walk walk) {
    steps = 0;
    budget = allowed;
    try {
        walk();
    } catch (const std::length_error&) {
        ADD_FAILURE() << "the walk was stopped after " << allowed << " steps";
    }
    budget = kUnlimited;
    return steps;
}

struct Steps {
    long long toJson;
    long long fromJson;
};

// The steps of ToJson and FromJson over a list of `n` elements.
Steps Walk(long n, Steps allowed) {
    CountedList list, back;
    for (long i = 0; i < n; ++i)
        AsnListInsert(list, list.last, nullptr)->userIdx = int32_t(i);
    Zol::Json json;
    Steps taken;
    taken.toJson = Count(allowed.toJson, [&] { json = Zol::ToJson(list); });
    if (testing::Test::HasFailure())
        return taken;
    taken.fromJson = Count(allowed.fromJson, [&] { Zol::FromJson(json, back); });
    EXPECT_EQ(back.count, uint32_t(n));
    EXPECT_EQ(back.last->elmt->userIdx, int32_t(n - 1));
    return taken;
}

TEST(ListWalk, JsonOfAMillionElementsTakesAtMost15TimesTheStepsOf100000) {
    const long n = 100000;
    // A linear walk takes a step or so per element: 100 stops a quadratic
    // one early, and the large list may take 15 times the small one's.
    Steps small = Walk(n, {100 * n, 100 * n});
    Steps large = Walk(10 * n, {15 * small.toJson, 15 * small.fromJson});
    EXPECT_GE(small.toJson, n - 1);
    EXPECT_LE(large.toJson, 15 * small.toJson);
    EXPECT_GE(small.fromJson, n - 1);
    EXPECT_LE(large.fromJson, 15 * small.fromJson);
}

}  // namespace
