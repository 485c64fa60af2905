#include <algorithm>
#include <climits>
#include <cmath>

#include "feature/hough_line_kernels.h"
#include "frame/check.h"
#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "qelcv/feature.h"

namespace qel {
namespace {

constexpr Qel64f kLargestTheta = 3.14159;
constexpr Qel32f kLargestTheta_32f = 3.14159F;

// Truncated and held in the range of int; 0 for a NaN.
template <class Float>
int64_t truncated(Float value) {
    constexpr Float kLimit = Float(INT64_MAX / 2);
    return value > kLimit ? INT64_MAX / 2 : value < -kLimit ? -INT64_MAX / 2 : std::isnan(value) ? 0 : int64_t(value);
}
template <class Float>
int truncatedToInt(Float value) {
    return static_cast<int>(std::clamp<int64_t>(truncated(value), INT_MIN, INT_MAX));
}

// Counters of an angle, and angles.
int64_t rhoCount(QelSize roiSize, Qel32f deltaRho) {
    return truncated(static_cast<Qel32f>(2 * (int64_t{roiSize.width} + roiSize.height) + 1) / deltaRho);
}
int64_t thetaSteps(Qel32f deltaTheta) { return truncated(kLargestTheta / deltaTheta); }

// A found line; 16 bytes in the documented size.
struct Candidate {
    int rho;
    int theta;
    int votes;
    int spare;
};

// The strongest lines so far, at most `room`, in descending order.
class CandidateList {
public:
    CandidateList(Candidate* entries, int room) : entries_(entries), room_(room) {}

    int count() const { return count_; }
    const Candidate& operator[](int i) const { return entries_[i]; }

    // What a line must have more votes than, not to be dropped.
    int least() const { return count_ == room_ ? entries_[room_ - 1].votes : 0; }

    // Of equal votes the earlier line stays in front.
    void insert(const Candidate& line) {
        const auto weaker = [](int votes, const Candidate& entry) { return entry.votes < votes; };
        Candidate* const end = entries_ + count_;
        Candidate* const place = std::upper_bound(entries_, end, line.votes, weaker);
        if (place == entries_ + room_) return;
        std::move_backward(place, count_ < room_ ? end : end - 1, count_ < room_ ? end + 1 : end);
        *place = line;
        count_ += count_ < room_;
    }

private:
    Candidate* entries_;
    int room_;
    int count_ = 0;
};

// The pieces of the scratch. Counters have neighbours that are zero, and stand for a distance on either side that the
// coarsest resolutions round to; behind them is one for votes that do not count.
struct HoughScratch {
    static constexpr int kAlignment = 32;
    static constexpr int kAhead = 4;
    static constexpr int kBehind = 4;

    HoughScratch(Qel8u* pBuffer, QelSize roiSize, int counters, int maxLineCount, int angles)
        : listPitch(std::ptrdiff_t{roiSize.width} + 12),
          lists(reinterpret_cast<Qel32s*>(alignUp(pBuffer, kAlignment))),
          rowBytes(alignUp((int64_t{counters} + kAhead + kBehind) * int64_t{sizeof(Qel32s)}, kAlignment)),
          ring(alignUp(lists + listPitch * roiSize.height, kAlignment)),
          candidates(reinterpret_cast<Candidate*>(ring + 3 * rowBytes)),
          cosines(reinterpret_cast<Qel32s*>(candidates + maxLineCount)),
          sines(cosines + angles) {}

    // The row of angle t, which may be -1.
    Qel32s* counters(int t) const { return reinterpret_cast<Qel32s*>(ring + (t + 1) % 3 * rowBytes) + kAhead; }
    void clear(int t) const { zeroBytes(counters(t) - kAhead, static_cast<size_t>(rowBytes)); }

    std::ptrdiff_t listPitch;
    Qel32s* lists;
    int64_t rowBytes;
    char* ring;
    Candidate* candidates;
    Qel32s* cosines;
    Qel32s* sines;
};

// The part of the plane that is looked at.
struct Region {
    QelPointPolar low;
    QelPointPolar high;
};

class HoughLine {
public:
    HoughLine(QelSize roiSize, QelPointPolar delta, int maxLineCount, Qel8u* pBuffer)
        : roiSize_(roiSize),
          delta_(delta),
          counters_(static_cast<int>(std::clamp<int64_t>(rhoCount(roiSize, delta.rho), 1, INT_MAX / 8))),
          half_((counters_ - 1) / 2),
          angles_(static_cast<int>(std::min<int64_t>(thetaSteps(delta.theta), INT_MAX / 8)) + 1),
          scratch_(pBuffer, roiSize, counters_, maxLineCount, angles_),
          list_(scratch_.candidates, maxLineCount) {}

    // Without a region all angles and distances.
    int find(Plane<const Qel8u> src, int threshold, const Region* region, QelPointPolar* pLine) {
        fillTables();
        listPoints(src);
        scratch_.clear(-1);
        for (int t = 0; t < angles_; ++t) {
            scratch_.clear(t);
            if (isInside(t, region)) vote(t, region);
            if (t > 0 && isInside(t - 1, region)) takePeaks(t - 1, threshold);
        }
        scratch_.clear(angles_);
        if (isInside(angles_ - 1, region)) takePeaks(angles_ - 1, threshold);
        for (int i = 0; i < list_.count(); ++i) {
            pLine[i] = {static_cast<Qel32f>(list_[i].rho - half_) * delta_.rho,
                        static_cast<Qel32f>(list_[i].theta) * delta_.theta};
        }
        return list_.count();
    }

private:
    // Angles are added up in single precision: the last one need not be the product.
    void fillTables() {
        const Qel64f scale = Qel64f{1.0F / delta_.rho};
        Qel32f angle = 0;
        for (int t = 0; t < angles_; ++t, angle += delta_.theta) {
            scratch_.sines[t] = truncatedToInt(std::sin(Qel64f{angle}) * 1024.0 * scale);
            scratch_.cosines[t] = truncatedToInt(std::cos(Qel64f{angle}) * 1024.0 * scale);
        }
    }

    void listPoints(Plane<const Qel8u> src) {
        HoughPointsKernel* const kernel = ownHoughPoints_8u32s_W7;
        for (int y = 0; y < roiSize_.height; ++y) {
            Qel32s* const list = scratch_.lists + scratch_.listPitch * y;
            list[0] = kernel(src.row(y), roiSize_.width, list + 1);
        }
    }

    bool isInside(int t, const Region* region) const {
        const Qel32f theta = static_cast<Qel32f>(t) * delta_.theta;
        return region == nullptr || (theta >= region->low.theta && theta <= region->high.theta);
    }

    void vote(int t, const Region* region) const {
        const HoughPoints points = {scratch_.lists, scratch_.listPitch, roiSize_.height};
        const auto counterOf = [this](Qel32f rho) {
            return truncatedToInt(static_cast<Qel32f>(half_) + rho / delta_.rho);
        };
        HoughAngle angle = {scratch_.cosines[t], scratch_.sines[t], half_, -1, counters_, counters_ + 2};
        if (region != nullptr) {
            angle.lo = std::max(angle.lo, counterOf(region->low.rho));
            angle.hi = std::min(angle.hi, counterOf(region->high.rho));
        }
        HoughVoteKernel* const kernel = region == nullptr ? ownHoughVote_32f_W7 : ownHoughVote_Region_32s_W7;
        kernel(points, angle, scratch_.counters(t));
    }

    void takePeaks(int t, int threshold) {
        HoughPeakKernel* const next = ownPeakBuf_w7;
        const HoughRows rows = {scratch_.counters(t - 1), scratch_.counters(t), scratch_.counters(t + 1)};
        const int end = counters_ + 1;
        const auto from = [&](int r) { return next(rows, r, end, std::max(threshold, list_.least())); };
        for (int r = from(-1); r < end; r = from(r + 1)) list_.insert({r, t, rows.current[r], 0});
    }

    QelSize roiSize_;
    QelPointPolar delta_;
    int counters_;
    int half_;
    int angles_;
    HoughScratch scratch_;
    CandidateList list_;
};

// Of both functions, which pass their own pointers.
Check checkHough(Check pointers, int srcStep, QelSize roiSize, QelPointPolar delta, int threshold, int maxLineCount) {
    const Qel32f sides = static_cast<Qel32f>(int64_t{roiSize.width} + roiSize.height);
    return pointers.positiveSteps(srcStep)
        .size(roiSize)
        .require(maxLineCount >= 1, qelStatusBadSize)
        .require(delta.rho > 0 && delta.rho <= sides, qelStatusBadArg)
        .require(delta.theta > 0 && delta.theta <= kLargestTheta_32f, qelStatusBadArg)
        .require(threshold >= 1, qelStatusBadArg);
}

}  // namespace
}  // namespace qel

qelStatus qeliHoughLineGetSize_8u_C1R(QelSize roiSize, QelPointPolar delta, int maxLineCount, int* pBufferSize) {
    using namespace qel;
    const qelStatus status =
        Check().pointers(pBufferSize).size(roiSize).require(delta.rho > 0 && delta.theta > 0, qelStatusBadArg).status();
    if (status != qelStatusOk) return status;
    const auto low = [](int64_t n) { return static_cast<unsigned>(n); };
    const unsigned bytes = (4 * low(roiSize.width) + 48) * low(roiSize.height) + 16 * low(maxLineCount) +
                           16 * low(rhoCount(roiSize, delta.rho)) + 8 * low(thetaSteps(delta.theta)) + 264;
    *pBufferSize = static_cast<int>(bytes);
    return bytes > INT_MAX ? qelStatusSizeOverflow : qelStatusOk;
}

qelStatus qeliHoughLine_8u32f_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, QelPointPolar delta, int threshold,
                                  QelPointPolar* pLine, int maxLineCount, int* pLineCount, Qel8u* pBuffer) {
    using namespace qel;
    const qelStatus status =
        checkHough(Check().pointers(pSrc, pLine, pLineCount, pBuffer), srcStep, roiSize, delta, threshold, maxLineCount)
            .status();
    if (status != qelStatusOk) return status;
    HoughLine hough(roiSize, delta, maxLineCount, pBuffer);
    *pLineCount = hough.find({pSrc, srcStep}, threshold, nullptr, pLine);
    return qelStatusOk;
}

qelStatus qeliHoughLine_Region_8u32f_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, QelPointPolar* pLine,
                                         QelPointPolar* dstRoi, int maxLineCount, int* pLineCount, QelPointPolar delta,
                                         int threshold, Qel8u* pBuffer) {
    using namespace qel;
    const qelStatus status = checkHough(Check().pointers(pSrc, pLine, dstRoi, pLineCount, pBuffer), srcStep, roiSize,
                                        delta, threshold, maxLineCount)
                                 .status();
    if (status != qelStatusOk) return status;
    if (dstRoi[0].theta > dstRoi[1].theta || dstRoi[0].rho > dstRoi[1].rho) {
        *pLineCount = 0;
        return qelStatusBadRange;
    }
    for (QelPointPolar* corner : {dstRoi, dstRoi + 1}) {
        corner->theta = std::min(std::max(corner->theta, 0.0F), kLargestTheta_32f);
    }
    const Region region = {dstRoi[0], dstRoi[1]};
    HoughLine hough(roiSize, delta, maxLineCount, pBuffer);
    *pLineCount = hough.find({pSrc, srcStep}, threshold, &region, pLine);
    return qelStatusOk;
}
