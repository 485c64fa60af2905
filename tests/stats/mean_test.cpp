#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

// The arguments of all members.
template <class T>
struct Args {
    const T* pSrc;
    int srcStep;
    const Qel8u* pMask;
    int maskStep;
    QelSize roiSize;
    int coi;
    Qel64f* pMean;
    Qel64f* pStdDev;
};

template <class T>
using MeanC1MR = qelStatus(const T*, int, const Qel8u*, int, QelSize, Qel64f*);
template <class T>
using MeanC3CMR = qelStatus(const T*, int, const Qel8u*, int, QelSize, int, Qel64f*);
template <class T>
using StdDevC1R = qelStatus(const T*, int, QelSize, Qel64f*, Qel64f*);
template <class T>
using StdDevC3CR = qelStatus(const T*, int, QelSize, int, Qel64f*, Qel64f*);
template <class T>
using StdDevC1MR = qelStatus(const T*, int, const Qel8u*, int, QelSize, Qel64f*, Qel64f*);
template <class T>
using StdDevC3CMR = qelStatus(const T*, int, const Qel8u*, int, QelSize, int, Qel64f*, Qel64f*);

// When a member's 32f sums are folded into double precision; integers are exact.
enum class Fold { kRows, kPairs, kAtEnd, kEachSample };

template <class T, class F>
struct Member {
    F* function;
    const char* name;
    int limitShift = 17;  // parallel from the thread limit times 2 to this power on; 0: never
    bool needsCores = false;

    static constexpr int channels() {
        return std::is_same_v<F, MeanC3CMR<T>> || std::is_same_v<F, StdDevC3CR<T>> || std::is_same_v<F, StdDevC3CMR<T>>
                   ? 3
                   : 1;
    }
    static constexpr bool masked() { return !std::is_same_v<F, StdDevC1R<T>> && !std::is_same_v<F, StdDevC3CR<T>>; }
    static constexpr bool deviates() { return !std::is_same_v<F, MeanC1MR<T>> && !std::is_same_v<F, MeanC3CMR<T>>; }

    qelStatus operator()(const Args<T>& a) const {
        if constexpr (std::is_same_v<F, MeanC1MR<T>>)
            return function(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roiSize, a.pMean);
        else if constexpr (std::is_same_v<F, MeanC3CMR<T>>)
            return function(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roiSize, a.coi, a.pMean);
        else if constexpr (std::is_same_v<F, StdDevC1R<T>>)
            return function(a.pSrc, a.srcStep, a.roiSize, a.pMean, a.pStdDev);
        else if constexpr (std::is_same_v<F, StdDevC3CR<T>>)
            return function(a.pSrc, a.srcStep, a.roiSize, a.coi, a.pMean, a.pStdDev);
        else if constexpr (std::is_same_v<F, StdDevC1MR<T>>)
            return function(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roiSize, a.pMean, a.pStdDev);
        else
            return function(a.pSrc, a.srcStep, a.pMask, a.maskStep, a.roiSize, a.coi, a.pMean, a.pStdDev);
    }

    bool parallel(QelSize roi) const {
        if (limitShift == 0 || (needsCores && kit::core().cores == 1)) return false;
        return int64_t{roi.width} * roi.height >= int64_t{kit::core().threads} << limitShift;
    }

    // How the sums of a region are folded.
    Fold fold(const Args<T>& a) const {
        if (!deviates()) return channels() == 1 ? Fold::kAtEnd : Fold::kEachSample;
        if (masked()) return Fold::kRows;
        const int64_t pixels = int64_t{a.roiSize.width} * a.roiSize.height;
        const auto address = reinterpret_cast<uintptr_t>(a.pSrc);
        if (channels() == 1) {
            if (pixels < 5001) return Fold::kAtEnd;
            return pixels <= 99999 && address % 4 == 0 && a.srcStep / 4 % 4 == 0 ? Fold::kRows : Fold::kPairs;
        }
        if (pixels < 5000) return Fold::kAtEnd;
        return address % 16 == 0 && a.srcStep / 4 % 4 == 0 ? Fold::kRows : Fold::kPairs;
    }
};

// The scalar model. Its view of a region: one channel, some of whose pixels are taken.
template <class T>
struct View {
    Args<T> a;
    int channels;

    bool taken(int x, int y) const { return a.pMask == nullptr || a.pMask[ptrdiff_t{a.maskStep} * y + x] != 0; }
    T at(int x, int y) const {
        T sample;  // memcpy, for the region may begin anywhere
        std::memcpy(&sample,
                    reinterpret_cast<const char*>(a.pSrc) + ptrdiff_t{a.srcStep} * y +
                        sizeof(T) * size_t(channels * x + (channels == 3 ? a.coi - 1 : 0)),
                    sizeof(T));
        return sample;
    }
};

struct Model {
    Qel64f sum = 0;
    Qel64f squares = 0;
    int64_t count = 0;
};

// Four single-precision lanes for the samples, four for their squares.
class Lanes {
public:
    void add(int lane, Qel32f x) {
        sum_[lane] = sum_[lane] + x;
        const Qel32f square = x * x;
        squares_[lane] = squares_[lane] + square;
    }

    // One or two rows at once: eight pixels of the upper row, eight of the lower one; what is left of the rows goes
    // pixel by pixel into the first lane, the upper row's first.
    template <class Sample>
    void addRows(int width, int top, int rows, const Sample& sample) {
        const int whole = width / 8 * 8;
        for (int x = 0; x < whole; x += 8)
            for (int y = top; y < top + rows; ++y)
                for (int i = 0; i < 8; ++i) add(i % 4, sample(x + i, y));
        for (int x = whole; x < width; ++x)
            for (int y = top; y < top + rows; ++y) add(0, sample(x, y));
    }

    // High to low in single precision, then into two totals each.
    void foldInto(Qel64f (&sums)[2], Qel64f (&squares)[2]) {
        for (int i = 0; i < 2; ++i) {
            const Qel32f high = sum_[i] + sum_[i + 2];
            const Qel32f highSquare = squares_[i] + squares_[i + 2];
            sums[i] += Qel64f(high);
            squares[i] += Qel64f(highSquare);
        }
        *this = Lanes();
    }

    Qel64f widened() const { return (Qel64f(sum_[0]) + Qel64f(sum_[2])) + (Qel64f(sum_[1]) + Qel64f(sum_[3])); }

private:
    Qel32f sum_[4] = {};
    Qel32f squares_[4] = {};
};

template <class Sample>
Model foldedSums(QelSize roi, int top, int bottom, Fold fold, const Sample& sample, bool deviates = true) {
    const int together = fold == Fold::kPairs || (fold == Fold::kAtEnd && deviates) ? 2 : 1;
    Qel64f sums[2] = {}, squares[2] = {};
    Lanes lanes;
    for (int y = top; y < bottom; y += together) {
        lanes.addRows(roi.width, y, std::min(together, bottom - y), sample);
        if (fold != Fold::kAtEnd) lanes.foldInto(sums, squares);
    }
    if (!deviates) return {lanes.widened(), 0, 0};
    lanes.foldInto(sums, squares);
    return {sums[0] + sums[1], squares[0] + squares[1], 0};
}

// Rows `top` up to `bottom`.
template <class T, class M>
Model modelOfRows(const View<T>& v, const M& member, int top, int bottom) {
    Model model;
    int64_t sum = 0;
    uint64_t squares = 0;
    for (int y = top; y < bottom; ++y) {
        for (int x = 0; x < v.a.roiSize.width; ++x) {
            if (!v.taken(x, y)) continue;
            ++model.count;
            if constexpr (std::is_integral_v<T>) {
                sum += v.at(x, y);
                squares += uint64_t(int64_t{v.at(x, y)} * v.at(x, y));
            } else {
                model.sum += Qel64f(v.at(x, y));
            }
        }
    }
    if constexpr (std::is_integral_v<T>) {
        model.sum = Qel64f(sum);
        model.squares = Qel64f(squares);
    } else if (member.fold(v.a) != Fold::kEachSample) {
        const auto sample = [&](int x, int y) { return v.taken(x, y) ? v.at(x, y) : 0.0F; };
        const int64_t count = model.count;
        model = foldedSums(v.a.roiSize, top, bottom, member.fold(v.a), sample, member.deviates());
        model.count = count;
    }
    return model;
}

template <class T>
bool constant(const View<T>& v) {
    std::vector<T> samples;
    for (int y = 0; y < v.a.roiSize.height; ++y)
        for (int x = 0; x < v.a.roiSize.width; ++x)
            if (v.taken(x, y)) samples.push_back(v.at(x, y));
    return std::all_of(samples.begin(), samples.end(), [&](T x) { return x == samples[0]; });
}

// Writes what the member is to write.
template <class T, class M>
void model(const View<T>& v, const M& member, Qel64f* pMean, Qel64f* pStdDev) {
    const QelSize roi = v.a.roiSize;
    const int team = member.parallel(roi) ? kit::core().threads : 1;
    Model total;
    for (int thread = 0; thread < team; ++thread) {
        const int share = roi.height / team;
        const int top = share * thread;
        const int bottom = thread + 1 < team ? top + share : roi.height;
        const Model part = modelOfRows(v, member, top, bottom);
        total = {total.sum + part.sum, total.squares + part.squares, total.count + part.count};
    }
    *pMean = total.count == 0 ? 0 : total.sum / Qel64f(total.count);
    if (!member.deviates()) return;
    const Qel64f variance = total.count == 0 ? 0 : std::fabs(total.squares / Qel64f(total.count) - *pMean * *pMean);
    *pStdDev = std::sqrt(variance);
    if constexpr (std::is_floating_point_v<T>) {
        if (0.05 * (*pMean * *pMean) > variance) {
            const Qel32f mean = static_cast<Qel32f>(*pMean);
            const auto distance = [&](int x, int y) { return v.taken(x, y) ? v.at(x, y) - mean : 0.0F; };
            const Model second = foldedSums(roi, 0, roi.height, Fold::kRows, distance);
            *pStdDev = constant(v) ? 0 : std::sqrt(second.squares / Qel64f(total.count));
        }
    }
}

// Bit for bit, but one NaN is as good as another.
bool same(Qel64f want, Qel64f got) {
    return std::isnan(want) ? std::isnan(got) : std::memcmp(&want, &got, sizeof want) == 0;
}

constexpr Qel64f kUnwritten = -12345.0;

template <class T, class M>
void agrees(const M& member, const Args<T>& given, const std::string& text) {
    const bool large = int64_t{given.roiSize.width} * given.roiSize.height > 120000;
    for (int coi = large ? M::channels() : 1; coi <= M::channels(); ++coi) {
        Args<T> a = given;
        Qel64f gotMean = kUnwritten, gotStdDev = kUnwritten, mean = kUnwritten, stdDev = kUnwritten;
        a.coi = coi;
        a.pMean = &gotMean;
        a.pStdDev = &gotStdDev;
        model(View<T>{a, M::channels()}, member, &mean, &stdDev);
        ASSERT_EQ(qelStatusOk, member(a)) << member.name << ", " << text;
        ASSERT_PRED2(same, mean, gotMean) << member.name << ", mean, channel " << coi << ", " << text;
        ASSERT_PRED2(same, stdDev, gotStdDev) << member.name << ", deviation, channel " << coi << ", " << text;
    }
}

// Half of the pixels, none, all, few; taken pixels have any byte but zero.
kit::Image<Qel8u> maskOf(kit::Trial& trial) {
    kit::Image<Qel8u> mask(trial);
    const int kind = trial.between(0, 7);
    const int share = kind == 0 ? 0 : kind == 1 ? 64 : kind == 2 ? 1 : 32;
    for (int y = 0; y < trial.size.height; ++y) {
        for (int x = 0; x < trial.size.width; ++x) {
            const Qel8u any = static_cast<Qel8u>(trial.between(1, 255));
            mask.at(x, y) = trial.between(0, 63) < share ? any : 0;
        }
    }
    return mask;
}

template <class T, class M>
void agreesOver(const M& member, kit::Trial& trial) {
    kit::Image<T> image(trial, M::channels());
    const kit::Image<Qel8u> mask = maskOf(trial);
    if constexpr (std::is_floating_point_v<T>) {
        // A large mean with small differences asks for the second pass; a spread of 0.387 either way of the mean makes
        // a variance that is about 0.05 of the squared mean, where the second pass begins.
        const int kind = trial.between(0, 3);
        if (kind < 2) {
            trial.note("offset");
            const Qel32f spread = kind == 0 ? 0.01F : Qel32f(trial.between(380, 394)) / 1000.0F;
            for (int y = 0; y < trial.size.height; ++y)
                for (int x = 0; x < trial.size.width * M::channels(); ++x)
                    image.at(x, y) = 5000.0F + 5000.0F * spread * Qel32f(trial.between(-9999, 9999)) / 9999.0F;
        }
    }
    Args<T> args{image.data(), image.step(), M::masked() ? mask.data() : nullptr, mask.step(), trial.size, 1,
                 nullptr,      nullptr};
    agrees(member, args, trial.text());
}

// Small regions, long rows, and the parallel limit of two and three threads: exact, one row less, and shares of odd
// height.
template <class T, class M>
void agreesWithModel(const M& member) {
    for (const uint32_t seed : kit::seeds(180)) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(agreesOver<T>(member, trial));
    }
    // Rows long enough for a 32-bit sum of one of them to overflow, were it not widened in time.
    if constexpr (std::is_integral_v<T>) {
        for (const kit::Content content : {kit::Content::kLowest, kit::Content::kHighest}) {
            kit::Trial trial(0, {600000 / M::channels(), 1});
            trial.setContent(content);
            ASSERT_NO_FATAL_FAILURE(agreesOver<T>(member, trial));
        }
    }
    const int shift = member.limitShift == 0 ? 17 : member.limitShift;
    // Exact sums do not show the path, so one region will do for them.
    struct Large {
        int threads, moreRows;
    };
    for (const Large large : {Large{2, 0}, {2, -1}, {3, 3}}) {
        kit::Trial trial(uint32_t(large.threads), {128 * large.threads, (1 << (shift - 7)) + large.moreRows},
                         large.threads);
        trial.setContent(kit::Content::kRandom);
        ASSERT_NO_FATAL_FAILURE(agreesOver<T>(member, trial));
        if (std::is_integral_v<T>) break;
    }
}

#define MEMBER(T, Form, function, ...) \
    Member<T, Form<T>> { function, #function, ##__VA_ARGS__ }

// Calls run(T(), member) for all of them.
template <class Run>
void forAllMembers(const Run& run) {
    run(Qel8u(), MEMBER(Qel8u, MeanC1MR, qeliMean_8u_C1MR, 0));
    run(Qel8u(), MEMBER(Qel8u, MeanC3CMR, qeliMean_8u_C3CMR));
    run(Qel8s(), MEMBER(Qel8s, MeanC1MR, qeliMean_8s_C1MR));
    run(Qel8s(), MEMBER(Qel8s, MeanC3CMR, qeliMean_8s_C3CMR));
    run(Qel16u(), MEMBER(Qel16u, MeanC1MR, qeliMean_16u_C1MR));
    run(Qel16u(), MEMBER(Qel16u, MeanC3CMR, qeliMean_16u_C3CMR));
    run(Qel32f(), MEMBER(Qel32f, MeanC1MR, qeliMean_32f_C1MR));
    run(Qel32f(), MEMBER(Qel32f, MeanC3CMR, qeliMean_32f_C3CMR));
    run(Qel8u(), MEMBER(Qel8u, StdDevC1R, qeliMean_StdDev_8u_C1R, 17, true));
    run(Qel8u(), MEMBER(Qel8u, StdDevC3CR, qeliMean_StdDev_8u_C3CR));
    run(Qel8u(), MEMBER(Qel8u, StdDevC1MR, qeliMean_StdDev_8u_C1MR));
    run(Qel8u(), MEMBER(Qel8u, StdDevC3CMR, qeliMean_StdDev_8u_C3CMR));
    run(Qel8s(), MEMBER(Qel8s, StdDevC1R, qeliMean_StdDev_8s_C1R));
    run(Qel8s(), MEMBER(Qel8s, StdDevC3CR, qeliMean_StdDev_8s_C3CR));
    run(Qel8s(), MEMBER(Qel8s, StdDevC1MR, qeliMean_StdDev_8s_C1MR));
    run(Qel8s(), MEMBER(Qel8s, StdDevC3CMR, qeliMean_StdDev_8s_C3CMR));
    run(Qel16u(), MEMBER(Qel16u, StdDevC1R, qeliMean_StdDev_16u_C1R));
    run(Qel16u(), MEMBER(Qel16u, StdDevC3CR, qeliMean_StdDev_16u_C3CR));
    run(Qel16u(), MEMBER(Qel16u, StdDevC1MR, qeliMean_StdDev_16u_C1MR));
    run(Qel16u(), MEMBER(Qel16u, StdDevC3CMR, qeliMean_StdDev_16u_C3CMR));
    run(Qel32f(), MEMBER(Qel32f, StdDevC1R, qeliMean_StdDev_32f_C1R, 16));
    run(Qel32f(), MEMBER(Qel32f, StdDevC3CR, qeliMean_StdDev_32f_C3CR, 0));
    run(Qel32f(), MEMBER(Qel32f, StdDevC1MR, qeliMean_StdDev_32f_C1MR));
    run(Qel32f(), MEMBER(Qel32f, StdDevC3CMR, qeliMean_StdDev_32f_C3CMR));
}

class Mean : public kit::EveryTarget {};
ON_EVERY_TARGET(Mean);

TEST_P(Mean, qeliMean_8u_C1MR) { agreesWithModel<Qel8u>(MEMBER(Qel8u, MeanC1MR, qeliMean_8u_C1MR, 0)); }
TEST_P(Mean, qeliMean_8u_C3CMR) { agreesWithModel<Qel8u>(MEMBER(Qel8u, MeanC3CMR, qeliMean_8u_C3CMR)); }
TEST_P(Mean, qeliMean_8s_C1MR) { agreesWithModel<Qel8s>(MEMBER(Qel8s, MeanC1MR, qeliMean_8s_C1MR)); }
TEST_P(Mean, qeliMean_8s_C3CMR) { agreesWithModel<Qel8s>(MEMBER(Qel8s, MeanC3CMR, qeliMean_8s_C3CMR)); }
TEST_P(Mean, qeliMean_16u_C1MR) { agreesWithModel<Qel16u>(MEMBER(Qel16u, MeanC1MR, qeliMean_16u_C1MR)); }
TEST_P(Mean, qeliMean_16u_C3CMR) { agreesWithModel<Qel16u>(MEMBER(Qel16u, MeanC3CMR, qeliMean_16u_C3CMR)); }
TEST_P(Mean, qeliMean_32f_C1MR) { agreesWithModel<Qel32f>(MEMBER(Qel32f, MeanC1MR, qeliMean_32f_C1MR)); }
TEST_P(Mean, qeliMean_32f_C3CMR) { agreesWithModel<Qel32f>(MEMBER(Qel32f, MeanC3CMR, qeliMean_32f_C3CMR)); }
TEST_P(Mean, qeliMean_StdDev_8u_C1R) {
    agreesWithModel<Qel8u>(MEMBER(Qel8u, StdDevC1R, qeliMean_StdDev_8u_C1R, 17, true));
}
TEST_P(Mean, qeliMean_StdDev_8u_C3CR) { agreesWithModel<Qel8u>(MEMBER(Qel8u, StdDevC3CR, qeliMean_StdDev_8u_C3CR)); }
TEST_P(Mean, qeliMean_StdDev_8u_C1MR) { agreesWithModel<Qel8u>(MEMBER(Qel8u, StdDevC1MR, qeliMean_StdDev_8u_C1MR)); }
TEST_P(Mean, qeliMean_StdDev_8u_C3CMR) { agreesWithModel<Qel8u>(MEMBER(Qel8u, StdDevC3CMR, qeliMean_StdDev_8u_C3CMR)); }
TEST_P(Mean, qeliMean_StdDev_8s_C1R) { agreesWithModel<Qel8s>(MEMBER(Qel8s, StdDevC1R, qeliMean_StdDev_8s_C1R)); }
TEST_P(Mean, qeliMean_StdDev_8s_C3CR) { agreesWithModel<Qel8s>(MEMBER(Qel8s, StdDevC3CR, qeliMean_StdDev_8s_C3CR)); }
TEST_P(Mean, qeliMean_StdDev_8s_C1MR) { agreesWithModel<Qel8s>(MEMBER(Qel8s, StdDevC1MR, qeliMean_StdDev_8s_C1MR)); }
TEST_P(Mean, qeliMean_StdDev_8s_C3CMR) { agreesWithModel<Qel8s>(MEMBER(Qel8s, StdDevC3CMR, qeliMean_StdDev_8s_C3CMR)); }
TEST_P(Mean, qeliMean_StdDev_16u_C1R) { agreesWithModel<Qel16u>(MEMBER(Qel16u, StdDevC1R, qeliMean_StdDev_16u_C1R)); }
TEST_P(Mean, qeliMean_StdDev_16u_C3CR) {
    agreesWithModel<Qel16u>(MEMBER(Qel16u, StdDevC3CR, qeliMean_StdDev_16u_C3CR));
}
TEST_P(Mean, qeliMean_StdDev_16u_C1MR) {
    agreesWithModel<Qel16u>(MEMBER(Qel16u, StdDevC1MR, qeliMean_StdDev_16u_C1MR));
}
TEST_P(Mean, qeliMean_StdDev_16u_C3CMR) {
    agreesWithModel<Qel16u>(MEMBER(Qel16u, StdDevC3CMR, qeliMean_StdDev_16u_C3CMR));
}
TEST_P(Mean, qeliMean_StdDev_32f_C1R) {
    agreesWithModel<Qel32f>(MEMBER(Qel32f, StdDevC1R, qeliMean_StdDev_32f_C1R, 16));
}
TEST_P(Mean, qeliMean_StdDev_32f_C3CR) {
    agreesWithModel<Qel32f>(MEMBER(Qel32f, StdDevC3CR, qeliMean_StdDev_32f_C3CR, 0));
}
TEST_P(Mean, qeliMean_StdDev_32f_C1MR) {
    agreesWithModel<Qel32f>(MEMBER(Qel32f, StdDevC1MR, qeliMean_StdDev_32f_C1MR));
}
TEST_P(Mean, qeliMean_StdDev_32f_C3CMR) {
    agreesWithModel<Qel32f>(MEMBER(Qel32f, StdDevC3CMR, qeliMean_StdDev_32f_C3CMR));
}

// Sums of magnitudes that lie as far apart as a sum of double precision can just hold exactly, a little closer or a
// little further, and changing from band to band: where an addition rounds, the order of the pixels shows.
TEST_P(Mean, SumsInOrderAtTheBrinkOfRounding) {
    const auto member = MEMBER(Qel32f, MeanC3CMR, qeliMean_32f_C3CMR);
    for (const uint32_t seed : kit::seeds(200)) {
        kit::Trial trial(seed, {1 + int(seed * 7 % 150), 40});
        kit::Image<Qel32f> image(trial, 3);
        const kit::Image<Qel8u> mask = maskOf(trial);
        const bool negative = trial.between(0, 1) != 0;
        int exponent = trial.between(-149, 60);
        int apart = trial.between(0, 3) == 0 ? trial.between(0, 60) : trial.between(14, 24);
        for (int y = 0; y < trial.size.height; ++y) {
            if (trial.between(0, 7) == 0) exponent += trial.between(-8, 8);
            if (trial.between(0, 7) == 0) apart += trial.between(-2, 2);
            for (int x = 0; x < trial.size.width * 3; ++x) {
                const int odd = trial.between(0x7FFFFF, 0xFFFFFF) | 1;
                const Qel32f sample = std::ldexp(Qel32f(odd), exponent + (trial.between(0, 7) == 0 ? 0 : apart) - 24);
                image.at(x, y) = trial.between(0, 15) == 0              ? 0
                                 : negative && trial.between(0, 1) != 0 ? -sample
                                                                        : sample;
            }
        }
        ASSERT_NO_FATAL_FAILURE(agrees(
            member, Args<Qel32f>{image.data(), image.step(), mask.data(), mask.step(), trial.size, 1, nullptr, nullptr},
            trial.text()));
    }
}

// Memory that reads as one value everywhere: one stretch, mapped again and again.
class Repeated {
public:
    Repeated(size_t bytes, const std::vector<unsigned char>& pattern) {
        const int file = memfd_create("repeated", 0);
        const size_t stretch = pattern.size();
        bytes_ = (bytes + stretch - 1) / stretch * stretch;
        ok_ = file >= 0 && write(file, pattern.data(), stretch) == ssize_t(stretch);
        p_ = static_cast<char*>(mmap(nullptr, bytes_, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        ok_ = ok_ && p_ != MAP_FAILED;
        for (size_t at = 0; ok_ && at < bytes_; at += stretch)
            ok_ = mmap(p_ + at, stretch, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0) == p_ + at;
        if (file >= 0) close(file);
    }
    ~Repeated() {
        if (p_ != MAP_FAILED) munmap(p_, bytes_);
    }
    Repeated(const Repeated&) = delete;
    Repeated& operator=(const Repeated&) = delete;
    bool ok() const { return ok_; }
    template <class T>
    const T* as() const {
        return reinterpret_cast<const T*>(p_);
    }

private:
    size_t bytes_;
    char* p_;
    bool ok_;
};

// 65536 samples of one value.
template <class T>
std::vector<unsigned char> rowOf(T value) {
    std::vector<unsigned char> bytes(65536 * sizeof(T));
    for (size_t i = 0; i < bytes.size(); i += sizeof(T)) std::memcpy(&bytes[i], &value, sizeof(T));
    return bytes;
}

// Sums far beyond 32 bits: more than 0x1000000 pixels of the extremes.
TEST(MeanLimits, LargeSumsAreExact) {
    kit::core().reset();
    const Repeated mask(size_t{65536} * 260, rowOf<Qel8u>(128));
    ASSERT_TRUE(mask.ok());
    forAllMembers([&](auto sample, const auto& member) {
        using T = decltype(sample);
        if constexpr (std::is_integral_v<T>) {
            constexpr int kChannels = std::decay_t<decltype(member)>::channels();
            for (const T value : {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}) {
                const Repeated image(size_t{65536} * 260 * kChannels * sizeof(T), rowOf(value));
                ASSERT_TRUE(image.ok());
                Qel64f mean = kUnwritten, stdDev = kUnwritten;
                const int step = int(65536 * kChannels * sizeof(T));
                ASSERT_EQ(qelStatusOk, member(Args<T>{image.template as<T>(),
                                                      step,
                                                      mask.as<Qel8u>(),
                                                      65536,
                                                      {65536, 260},
                                                      2 % kChannels + 1,
                                                      &mean,
                                                      &stdDev}));
                EXPECT_EQ(Qel64f(value), mean) << member.name;
                EXPECT_EQ(member.deviates() ? 0 : kUnwritten, stdDev) << member.name;
            }
        }
    });
}

// With 33 threads, the parallel path allocates its table; that tells which path ran. One row of exactly the limit, and
// of one pixel less.
TEST(MeanLimits, ParallelPath) {
    const Repeated zeros(size_t{33 << 17} * 3 * sizeof(Qel32f), rowOf<Qel8u>(0));
    ASSERT_TRUE(zeros.ok());
    forAllMembers([&](auto sample, const auto& member) {
        using T = decltype(sample);
        for (const int cores : {2, 1}) {
            for (const int shift : {16, 17}) {
                for (const int less : {0, 1}) {
                    kit::core().reset();
                    kit::core().threads = 33;
                    kit::core().cores = cores;
                    Qel64f mean = kUnwritten, stdDev = kUnwritten;
                    const int width = (33 << shift) - less;
                    Args<T> args{zeros.as<T>(),
                                 width * member.channels() * int(sizeof(T)),
                                 zeros.as<Qel8u>(),
                                 width,
                                 {width, 1},
                                 1,
                                 &mean,
                                 &stdDev};
                    const int before = kit::core().allocations;
                    ASSERT_EQ(qelStatusOk, member(args));
                    EXPECT_EQ(member.parallel(args.roiSize) ? 1 : 0, kit::core().allocations - before)
                        << member.name << ", " << width << " pixels, " << cores << " cores";
                    EXPECT_EQ(0, mean) << member.name;

                    kit::core().allocationsLeft = 0;
                    mean = stdDev = kUnwritten;
                    const bool fails = member.parallel(args.roiSize);
                    EXPECT_EQ(fails ? qelStatusNoMemory : qelStatusOk, member(args)) << member.name;
                    EXPECT_EQ(fails ? kUnwritten : 0, mean) << member.name;
                    EXPECT_EQ(fails || !member.deviates() ? kUnwritten : 0, stdDev) << member.name;
                }
            }
        }
    });
    kit::core().reset();
}

// The results of a large team, whose table is allocated.
TEST(MeanLimits, ManyThreads) {
    kit::Trial trial(5, {4096, 1056 + 16}, 33);
    trial.setContent(kit::Content::kRandom);
    agreesOver<Qel8u>(MEMBER(Qel8u, StdDevC1MR, qeliMean_StdDev_8u_C1MR), trial);
    agreesOver<Qel32f>(MEMBER(Qel32f, StdDevC1R, qeliMean_StdDev_32f_C1R, 16), trial);
    kit::core().reset();
}

// Whatever the constant, and however its sums are rounded.
TEST_P(Mean, ConstantsOf32fDoNotDeviate) {
    for (const Qel32f value : {1.0F, -0.1F, 12345.678F, 1e6F, 16777215.0F, -3.3e7F, 1e15F}) {
        for (const QelSize size : {QelSize{61, 67}, {71, 73}, {400, 300}}) {
            for (const int threads : {1, 3}) {
                kit::core().threads = threads;
                const kit::Image<Qel32f> image({3 * size.width, size.height}, value);
                kit::Image<Qel8u> mask(size, 1);
                mask.at(3, 1) = 0;
                forAllMembers([&](auto sample, const auto& member) {
                    using T = decltype(sample);
                    if constexpr (std::is_same_v<T, Qel32f>) {
                        Qel64f mean = kUnwritten, stdDev = 0;
                        ASSERT_EQ(qelStatusOk, member(Args<T>{image.data(), image.step(), mask.data(), mask.step(),
                                                              size, 3, &mean, &stdDev}));
                        EXPECT_EQ(0.0, stdDev) << member.name << " of " << value;
                        EXPECT_NEAR(1.0, mean / value, 1e-3) << member.name;
                    }
                });
            }
        }
    }
}

// How far the results are from the exact ones. A single-precision sum of n numbers is off by at most n - 1 units of
// rounding, relative to the sum of their magnitudes.
template <class T, class M>
void isClose(const M& member, kit::Trial& trial) {
    kit::Image<T> image(trial, M::channels());
    const kit::Image<Qel8u> mask = maskOf(trial);
    Qel64f mean = 0, stdDev = 0;
    const Args<T> args{image.data(), image.step(), M::masked() ? mask.data() : nullptr, mask.step(), trial.size, 1,
                       &mean,        &stdDev};
    const View<T> view{args, M::channels()};
    using Exact = long double;
    Exact sum = 0, magnitudes = 0, squares = 0, distances = 0;
    int64_t n = 0;
    const auto forTaken = [&](auto take) {
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x)
                if (view.taken(x, y)) take(Exact(view.at(x, y)));
    };
    forTaken([&](Exact x) { ++n, sum += x, magnitudes += std::fabs(x), squares += x * x; });
    if (n == 0) return;
    forTaken([&](Exact x) { distances += (x - sum / n) * (x - sum / n); });

    ASSERT_EQ(qelStatusOk, member(args));
    int adds = 4;  // for the last steps in double precision
    Exact unit = std::ldexp(Exact(1), -53);
    if (std::is_floating_point_v<T> && member.fold(args) == Fold::kEachSample) {
        adds += int(n);
    } else if (std::is_floating_point_v<T>) {
        const int chain = member.fold(args) == Fold::kAtEnd   ? trial.size.height
                          : member.fold(args) == Fold::kPairs ? 2
                                                              : 1;
        adds += chain * (trial.size.width / 8 * 2 + 7);  // of the first lane
        unit = std::ldexp(Exact(1), -24);
    }
    const Exact bound = adds * unit;
    const Exact meanBound = bound * magnitudes / n;
    EXPECT_LE(std::fabs(mean - sum / n), meanBound) << member.name << ", " << trial;
    if (!member.deviates()) return;
    // Either way to the variance: from the squares and the mean, or from the distances from a mean that is off.
    const Exact fromSums = 2 * bound * (squares + magnitudes * magnitudes / n) / n;
    const Exact off = meanBound + unit * std::fabs(sum / n);
    const Exact fromDistances = 3 * bound * (distances / n + off * off) + off * off;
    const Exact variance = Exact(stdDev) * stdDev;
    const bool second = std::is_floating_point_v<T> && 0.05 * mean * mean > std::fabs(squares / n - Exact(mean) * mean);
    EXPECT_LE(std::fabs(variance - distances / n), second ? fromDistances : fromSums) << member.name << ", " << trial;
}

TEST_P(Mean, CloseToExact) {
    forAllMembers([](auto sample, const auto& member) {
        using T = decltype(sample);
        for (const uint32_t seed : kit::seeds(20)) {
            kit::Trial trial(seed, {int(seed) * 11 + 3, int(seed) * 5 + 2});
            trial.setContent(kit::Content::kRandom);
            isClose<T>(member, trial);
        }
    });
}

// A region of its own step at an address of its own: `offset` bytes behind a multiple of 16.
template <class T, class M>
void agreesAt(const M& member, kit::Trial& trial, int step, int offset) {
    const int samples = trial.size.width * M::channels();
    const kit::Image<Qel8u> mask = maskOf(trial);
    std::vector<unsigned char> bytes(size_t(step) * size_t(trial.size.height) + 32);
    unsigned char* const p = bytes.data() + (-reinterpret_cast<uintptr_t>(bytes.data()) & 15) + offset;
    for (int y = 0; y < trial.size.height; ++y) {
        for (int x = 0; x < samples; ++x) {
            const T value = trial.anySample<T>();
            std::memcpy(p + ptrdiff_t{step} * y + sizeof(T) * size_t(x), &value, sizeof(T));
        }
    }
    agrees(member,
           Args<T>{reinterpret_cast<const T*>(p), step, M::masked() ? mask.data() : nullptr, mask.step(), trial.size, 1,
                   nullptr, nullptr},
           trial.text() + ", step " + std::to_string(step) + ", offset " + std::to_string(offset));
}

TEST_P(Mean, AnyAddress) {
    kit::Trial trial(1, {37, 9});
    forAllMembers([&](auto sample, const auto& member) {
        using T = decltype(sample);
        for (const int offset : {1, 2, 3, 7, 15})
            ASSERT_NO_FATAL_FAILURE(agreesAt<T>(member, trial, 37 * member.channels() * int(sizeof(T)), offset));
    });
}

// Both sides of every area, step and address that chooses among the 32f kernels.
TEST_P(Mean, ChoiceOfKernel) {
    forAllMembers([](auto sample, const auto& member) {
        using T = decltype(sample);
        using M = std::decay_t<decltype(member)>;
        if constexpr (std::is_floating_point_v<T> && M::deviates() && !M::masked()) {
            for (const QelSize size : {QelSize{4999, 1}, {2500, 2}, {1667, 3}, {33333, 3}, {400, 250}}) {
                kit::Trial trial(7, size, 2);
                const int aligned = (size.width * M::channels() * 4 + 15) / 16 * 16;
                ASSERT_NO_FATAL_FAILURE(agreesAt<T>(member, trial, aligned, 0));
                ASSERT_NO_FATAL_FAILURE(agreesAt<T>(member, trial, aligned, 4));
                ASSERT_NO_FATAL_FAILURE(agreesAt<T>(member, trial, aligned, 2));
                ASSERT_NO_FATAL_FAILURE(agreesAt<T>(member, trial, aligned + 4, 0));
            }
        }
    });
}

// Each output alone, and none.
TEST(MeanOutputs, AreOptional) {
    kit::core().reset();
    kit::Trial trial(3, {70, 80});
    forAllMembers([&](auto sample, const auto& member) {
        using T = decltype(sample);
        if constexpr (!std::decay_t<decltype(member)>::deviates()) return;
        trial.setContent(kit::Content::kRandom);
        const kit::Image<T> image(trial, member.channels());
        const kit::Image<Qel8u> mask = maskOf(trial);
        Qel64f mean = kUnwritten, stdDev = kUnwritten, meanAlone = kUnwritten, stdDevAlone = kUnwritten;
        Args<T> args{image.data(), image.step(), mask.data(), mask.step(), trial.size, 1, &mean, &stdDev};
        ASSERT_EQ(qelStatusOk, member(args));
        args.pMean = nullptr, args.pStdDev = &stdDevAlone;
        ASSERT_EQ(qelStatusOk, member(args));
        args.pMean = &meanAlone, args.pStdDev = nullptr;
        ASSERT_EQ(qelStatusOk, member(args));
        EXPECT_PRED2(same, mean, meanAlone) << member.name;
        EXPECT_PRED2(same, stdDev, stdDevAlone) << member.name;
        args.pMean = nullptr;
        EXPECT_EQ(qelStatusOk, member(args)) << member.name;
    });
}

TEST(MeanChecks, EveryMember) {
    forAllMembers([](auto, const auto& member) {
        using M = std::decay_t<decltype(member)>;
        constexpr size_t kOutputs = (M::masked() ? 5 : 3) + (M::channels() == 3);
        kit::Checks checks(member.name, member.function);
        if constexpr (M::masked()) checks.stepByStep();
        if constexpr (M::deviates()) checks.template optional<kOutputs>().template optional<kOutputs + 1>();
        if constexpr (M::channels() == 3) {
            checks.template channels<0>(3);
            for (const int coi : {0, 4, -1})
                checks.template fault<kOutputs - 1>("coi " + std::to_string(coi), qelStatusBadChannel, coi);
        }
        checks.run();
    });
}

}  // namespace
