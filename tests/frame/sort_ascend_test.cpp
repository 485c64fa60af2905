#include "frame/sort_ascend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "frame/vector_primitives.h"
#include "kit/guarded_memory.h"

namespace qel {
namespace {

// Pending ranges without a bound of their own, which check the one that is promised.
class MeasuredRanges {
public:
    explicit MeasuredRanges(int len) : len_(len) {}
    void push(SortRange range) {
        // What waits at depth k is at most a k-th halving of the whole, and so is what is split on top of it.
        EXPECT_LE(int64_t{range.count()} << ranges_.size(), len_);
        EXPECT_LE(0, range.first);
        EXPECT_LT(range.last, len_);
        ranges_.push_back(range);
        highWater_ = std::max(highWater_, ranges_.size());
    }
    SortRange pop() {
        const SortRange range = ranges_.back();
        ranges_.pop_back();
        return range;
    }
    bool empty() const { return ranges_.empty(); }
    size_t highWater() const { return highWater_; }

private:
    int64_t len_;
    std::vector<SortRange> ranges_;
    size_t highWater_ = 0;
};

// Entries that halvings of `len` down to 10 elements can leave.
size_t mostPending(int len) {
    size_t most = 0;
    for (int64_t count = len; count > kSelectionCount; count /= 2) ++most;
    return most;
}
static_assert(kSelectionCount == 9);

void sortsAndStaysBounded(const std::vector<Qel64f>& v, const char* what) {
    std::vector<Qel64f> want = v;
    std::sort(want.begin(), want.end());

    kit::GuardedMemory memory(v.size() * sizeof(Qel64f));
    Qel64f* const got = reinterpret_cast<Qel64f*>(memory.data());
    std::copy(v.begin(), v.end(), got);
    ASSERT_EQ(qelStatusOk, qelsSortAscend_64f_I(got, int(v.size())));
    ASSERT_TRUE(std::equal(want.begin(), want.end(), got)) << what << ", " << v.size() << " elements";
    ASSERT_TRUE(memory.surroundingsIntact()) << what;

    std::vector<Qel64f> again = v;
    MeasuredRanges pending(int(v.size()));
    sortAscend(again.data(), int(again.size()), pending);
    ASSERT_EQ(want, again);
    ASSERT_LE(pending.highWater(), mostPending(int(v.size()))) << what << ", " << v.size() << " elements";
}

TEST(SortAscend, ThirtyTwoEntriesAreEnoughForAnyLength) { EXPECT_LE(mostPending(INT_MAX), 32U); }

TEST(SortAscend, Patterns) {
    std::mt19937 random(1);
    for (int len = 1; len <= 3000; len += len < 140 ? 1 : 397) {
        std::vector<Qel64f> v(static_cast<size_t>(len));
        std::iota(v.begin(), v.end(), -len / 2);
        sortsAndStaysBounded(v, "sorted");
        std::reverse(v.begin(), v.end());
        sortsAndStaysBounded(v, "reversed");
        std::shuffle(v.begin(), v.end(), random);
        sortsAndStaysBounded(v, "shuffled");
        sortsAndStaysBounded(std::vector<Qel64f>(size_t(len), 3.5), "all equal");
        for (int i = 0; i < len; ++i) v[size_t(i)] = std::min(i, len - i);
        sortsAndStaysBounded(v, "organ pipe");
        for (int i = 0; i < len; ++i) v[size_t(i)] = std::max(i, len - i);
        sortsAndStaysBounded(v, "organ pipe upside down");
        for (int i = 0; i < len; ++i) v[size_t(i)] = i % 7;
        sortsAndStaysBounded(v, "saw teeth");
        for (int i = 0; i < len; ++i) v[size_t(i)] = int(random() % 2);
        sortsAndStaysBounded(v, "two values");
        for (int i = 0; i < len; ++i) v[size_t(i)] = i == len / 2 ? 1 : 0;
        sortsAndStaysBounded(v, "one other");
        for (Qel64f& x : v) x = std::ldexp(double(random()) - 2e9, int(random() % 2000) - 1000);
        if (len > 4) v[1] = std::numeric_limits<Qel64f>::infinity(), v[3] = -v[1], v[2] = -0.0, v[0] = 0.0;
        sortsAndStaysBounded(v, "any number");
        if (HasFatalFailure()) return;
    }
}

// Orders without a name: all of them, of distinct and of equal elements.
TEST(SortAscend, EveryPermutationOfElevenInThreeKinds) {
    std::vector<Qel64f> kinds = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2};
    const std::vector<Qel64f> want = kinds;
    do {
        std::vector<Qel64f> got = kinds;
        ASSERT_EQ(qelStatusOk, qelsSortAscend_64f_I(got.data(), int(got.size())));
        ASSERT_EQ(want, got);
    } while (std::next_permutation(kinds.begin(), kinds.end()));
}

// A key whose value is settled only when a comparison asks for it, and then as badly as it can be: McIlroy, A Killer
// Adversary for Quicksort, 1999.
class Adversary {
public:
    explicit Adversary(int len) : value_(size_t(len), kOpen) {}
    bool less(int a, int b) {
        if (open(a) && open(b)) settle(a == candidate_ ? a : b);
        if (open(a))
            candidate_ = a;
        else if (open(b))
            candidate_ = b;
        return value_[size_t(a)] < value_[size_t(b)];
    }
    // The values that it chose, in the order in which the elements stood at first.
    std::vector<Qel64f> values() const { return {value_.begin(), value_.end()}; }

private:
    static constexpr int kOpen = INT_MAX;
    bool open(int i) const { return value_[size_t(i)] == kOpen; }
    void settle(int i) { value_[size_t(i)] = next_++; }

    std::vector<int> value_;
    int next_ = 0;
    int candidate_ = -1;
};

struct Key {
    int index;
    Adversary* adversary;
    bool operator<(const Key& other) const { return adversary->less(index, other.index); }
};

TEST(SortAscend, KillerSequences) {
    for (const int len : {10, 11, 20, 63, 64, 65, 500, 3000}) {
        Adversary adversary(len);
        std::vector<Key> keys;
        keys.reserve(static_cast<size_t>(len));
        for (int i = 0; i < len; ++i) keys.push_back({i, &adversary});
        MeasuredRanges pending(len);
        sortAscend(keys.data(), len, pending);
        ASSERT_LE(pending.highWater(), mostPending(len));
        ASSERT_NO_FATAL_FAILURE(sortsAndStaysBounded(adversary.values(), "killer sequence"));
    }
}

// Random splits, and splits in two halves, drive the stack highest.
TEST(SortAscend, StackOfALongVector) {
    std::mt19937 random(5);
    std::vector<Qel64f> v(1 << 18);
    for (Qel64f& x : v) x = random();
    MeasuredRanges pending(int(v.size()));
    sortAscend(v.data(), int(v.size()), pending);
    EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
    EXPECT_LE(pending.highWater(), mostPending(int(v.size())));

    std::iota(v.begin(), v.end(), 0);
    MeasuredRanges halves(int(v.size()));
    sortAscend(v.data(), int(v.size()), halves);
    EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
    EXPECT_GE(halves.highWater(), mostPending(int(v.size())) - 1) << "sorted vectors split in the middle";
}

// Among NaNs there is no order, but nothing is lost and nothing outside is touched.
TEST(SortAscend, NaNsStayInside) {
    std::mt19937 random(4);
    for (int len = 1; len <= 200; ++len) {
        for (const unsigned share : {1U, 2U, 10U}) {
            kit::GuardedMemory memory(size_t(len) * sizeof(Qel64f));
            Qel64f* const v = reinterpret_cast<Qel64f*>(memory.data());
            for (int i = 0; i < len; ++i) v[i] = random() % share == 0 ? std::nan("") : double(random() % 50);
            const auto bits = [=] {
                std::vector<uint64_t> all(static_cast<size_t>(len));
                std::memcpy(all.data(), v, size_t(len) * sizeof(Qel64f));
                std::sort(all.begin(), all.end());
                return all;
            };
            const std::vector<uint64_t> before = bits();
            ASSERT_EQ(qelStatusOk, qelsSortAscend_64f_I(v, len));
            ASSERT_EQ(before, bits());
            ASSERT_TRUE(memory.surroundingsIntact());
            std::vector<Qel64f> again(v, v + len);
            MeasuredRanges pending(len);
            sortAscend(again.data(), len, pending);
            ASSERT_LE(pending.highWater(), mostPending(len));
        }
    }
}

}  // namespace
}  // namespace qel
