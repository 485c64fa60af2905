#include <limits>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/trial.h"
#include "pyramid/subpix_model.h"
#include "qelcv/pyramid.h"

namespace {

using namespace subpix;

struct Axis {
    int min, max, whole;
    Qel32f fraction;
};

Axis axisModel(int srcSize, int dstSize, Qel32f centre) {
    const Qel32f start = centre - (dstSize - 1) * 0.5F;
    const int whole = int(start + dstSize) - dstSize;
    Axis axis = {0, dstSize - 1, whole, start - whole};
    if (whole < 0) axis.min = std::min(-whole, dstSize);
    if (whole + dstSize - 1 > srcSize - 2) axis.max = srcSize - whole - 2;
    if (std::max(whole, 0) >= srcSize) axis.min = 0, axis.max = -1;
    return axis;
}

// Sample by sample: between samples of the image in both axes, in one of them, in none.
template <class T, class R>
void model(const kit::Image<T>& src, kit::Image<R>& want, const Axis& ax, const Axis& ay, int scaleFactor) {
    const auto edge = [](const Axis& a, int i, int size) { return i < a.min ? 0 : size - 1; };
    const auto inside = [](const Axis& a, int i) { return i >= a.min && i <= a.max; };
    for (int y = 0; y < want.size().height; ++y)
        for (int x = 0; x < want.size().width; ++x) {
            const int sx = inside(ax, x) ? ax.whole + x : edge(ax, x, src.size().width);
            const int sy = inside(ay, y) ? ay.whole + y : edge(ay, y, src.size().height);
            if (inside(ax, x) && inside(ay, y)) {
                want.at(x, y) = four<T, R>(src, sx, sy, ax.fraction, ay.fraction, scaleFactor);
            } else if (inside(ax, x)) {
                want.at(x, y) = two<T, R>(src.at(sx, sy), src.at(sx + 1, sy), ax.fraction, scaleFactor);
            } else if (inside(ay, y)) {
                want.at(x, y) = two<T, R>(src.at(sx, sy), src.at(sx, sy + 1), ay.fraction, scaleFactor);
            } else {
                want.at(x, y) = one<T, R>(src.at(sx, sy), scaleFactor);
            }
        }
}

template <class T, class R, class Call>
void agreesWithModel(const Call& call) {
    for (uint32_t seed = 0; seed < 1200; ++seed) {
        kit::Trial trial(seed, {int(seed % 70) + 1, int(seed % 13) + 1});
        const QelSize srcSize = {trial.between(1, 40), trial.between(1, 20)};
        kit::Image<T> src(trial, srcSize);
        kit::Image<R> got(trial), want(got);
        const auto centre = [&](int size, int window) {
            const Qel32f whole = Qel32f(trial.between(-2 * window, size + 2 * window));
            return trial.coin() ? whole + Qel32f(trial.between(-1000, 1000)) / 512 : whole / 2;
        };
        const Qel32f x = centre(srcSize.width, trial.size.width), y = centre(srcSize.height, trial.size.height);
        const int scaleFactor = kIsQ14<T, R> && sizeof(R) == 2 ? trial.between(-9, 3) : 0;
        const Axis ax = axisModel(srcSize.width, trial.size.width, x);
        const Axis ay = axisModel(srcSize.height, trial.size.height, y);
        model(src, want, ax, ay, scaleFactor);
        QelPoint min = {-9, -9}, max = {-9, -9};
        ASSERT_EQ(qelStatusOk, call(src.data(), src.step(), srcSize, got.data(), got.step(), trial.size, x, y, &min,
                                    &max, scaleFactor))
            << trial;
        ASSERT_TRUE(sameResults(want, got)) << trial << ", image " << srcSize.width << "x" << srcSize.height << ", at "
                                            << x << ", " << y << ", scale " << scaleFactor;
        ASSERT_EQ(ax.min, min.x) << trial << ", at " << x;
        ASSERT_EQ(ay.min, min.y) << trial << ", at " << y;
        ASSERT_EQ(ax.max, max.x) << trial << ", at " << x;
        ASSERT_EQ(ay.max, max.y) << trial << ", at " << y;
    }
}

// A centre so far to the right that adding the window's width rounds it up to a whole number: the fraction is just
// below zero, and results beside a sharp edge would leave the range of their type.
template <class T, class R, class Call>
void agreesWithModelAtRoundedCentres(const Call& call) {
    for (const bool brightLeft : {false, true}) {
        for (const bool sideways : {false, true}) {
            const QelSize srcSize = sideways ? QelSize{40, 2048} : QelSize{2048, 40};
            kit::Image<T> src(srcSize, 0);
            for (int y = 0; y < srcSize.height; ++y)
                for (int x = 0; x < srcSize.width; ++x)
                    if ((sideways ? y : x) == (brightLeft ? 1000 : 1001)) src.at(x, y) = std::numeric_limits<T>::max();
            const Qel32f far = 1014.99994F, x = sideways ? 0 : far, y = sideways ? far : 0;
            kit::Image<R> got({31, 31}, 0), want({31, 31}, 0);
            model(src, want, axisModel(srcSize.width, 31, x), axisModel(srcSize.height, 31, y), 0);
            QelPoint min, max;
            ASSERT_EQ(qelStatusOk,
                      call(src.data(), src.step(), srcSize, got.data(), got.step(), {31, 31}, x, y, &min, &max, 0));
            ASSERT_TRUE(sameResults(want, got)) << "bright left " << brightLeft << ", sideways " << sideways;
        }
    }
}

template <class T, class R>
auto withoutScale(qelStatus (*function)(const T*, int, QelSize, R*, int, QelSize, Qel32f, Qel32f, QelPoint*,
                                        QelPoint*)) {
    return [=](const T* pSrc, int srcStep, QelSize srcSize, R* pDst, int dstStep, QelSize dstSize, Qel32f x, Qel32f y,
               QelPoint* pMin, QelPoint* pMax,
               int) { return function(pSrc, srcStep, srcSize, pDst, dstStep, dstSize, x, y, pMin, pMax); };
}

class CopySubpixIntersect : public kit::EveryTarget {};
ON_EVERY_TARGET(CopySubpixIntersect);

TEST_P(CopySubpixIntersect, qeliCopySubpixIntersect_8u_C1R) {
    agreesWithModel<Qel8u, Qel8u>(withoutScale(qeliCopySubpixIntersect_8u_C1R));
    agreesWithModelAtRoundedCentres<Qel8u, Qel8u>(withoutScale(qeliCopySubpixIntersect_8u_C1R));
}
TEST_P(CopySubpixIntersect, qeliCopySubpixIntersect_8u16u_C1R_Sfs) {
    agreesWithModel<Qel8u, Qel16u>(qeliCopySubpixIntersect_8u16u_C1R_Sfs);
}
TEST_P(CopySubpixIntersect, qeliCopySubpixIntersect_8u32f_C1R) {
    agreesWithModel<Qel8u, Qel32f>(withoutScale(qeliCopySubpixIntersect_8u32f_C1R));
}
TEST_P(CopySubpixIntersect, qeliCopySubpixIntersect_16u_C1R) {
    agreesWithModel<Qel16u, Qel16u>(withoutScale(qeliCopySubpixIntersect_16u_C1R));
    agreesWithModelAtRoundedCentres<Qel16u, Qel16u>(withoutScale(qeliCopySubpixIntersect_16u_C1R));
}
TEST_P(CopySubpixIntersect, qeliCopySubpixIntersect_16u32f_C1R) {
    agreesWithModel<Qel16u, Qel32f>(withoutScale(qeliCopySubpixIntersect_16u32f_C1R));
}
TEST_P(CopySubpixIntersect, qeliCopySubpixIntersect_32f_C1R) {
    agreesWithModel<Qel32f, Qel32f>(withoutScale(qeliCopySubpixIntersect_32f_C1R));
}

// Far away, the nearest corner fills the window, and nothing of it lies between samples.
TEST(CopySubpixIntersectFar, NearestCorner) {
    const Qel8u src[2][2] = {{1, 2}, {3, 4}};
    const Qel32f infinity = std::numeric_limits<Qel32f>::infinity(), nan = std::numeric_limits<Qel32f>::quiet_NaN();
    const struct {
        Qel32f x, y;
        Qel8u sample;
        QelPoint min, max;
    } cases[] = {{1e9F, 1e9F, 4, {0, 0}, {-1, -1}},         {-1e9F, 1e20F, 3, {3, 0}, {2, -1}},
                 {1e30F, -1e30F, 2, {0, 3}, {-1, 2}},       {-50, -50, 1, {3, 3}, {2, 2}},
                 {infinity, -infinity, 2, {0, 3}, {-1, 2}}, {nan, -infinity, 2, {0, 3}, {-1, 2}}};
    for (const auto& c : cases) {
        kit::Image<Qel8u> got({3, 3}, 9), want({3, 3}, c.sample);
        QelPoint min, max;
        ASSERT_EQ(qelStatusOk, qeliCopySubpixIntersect_8u_C1R(src[0], 2, {2, 2}, got.data(), got.step(), {3, 3}, c.x,
                                                              c.y, &min, &max));
        EXPECT_TRUE(sameBits(want, got)) << c.x << ", " << c.y;
        EXPECT_EQ(c.min.x, min.x) << c.x;
        EXPECT_EQ(c.min.y, min.y) << c.y;
        EXPECT_EQ(c.max.x, max.x) << c.x;
        EXPECT_EQ(c.max.y, max.y) << c.y;
    }
}

template <class T, class R, class Call>
void checks(const Call& call) {
    kit::Image<T> src({7, 5}, 1);
    kit::Image<R> dst({4, 3}, 2), before(dst);
    QelPoint min = {7, 7}, max = {7, 7};
    const int srcRow = 7 * int(sizeof(T)), dstRow = 4 * int(sizeof(R));
    struct Args {
        const T* pSrc;
        int srcStep;
        QelSize srcSize;
        R* pDst;
        int dstStep;
        QelSize dstSize;
        QelPoint *pMin, *pMax;
    };
    const Args good = {src.data(), srcRow, {7, 5}, dst.data(), dstRow, {4, 3}, &min, &max};
    struct Fault {
        qelStatus status;
        void (*apply)(Args&);
    };
    std::vector<Fault> faults = {
        {qelStatusNullPointer, [](Args& a) { a.pSrc = nullptr; }},
        {qelStatusNullPointer, [](Args& a) { a.pDst = nullptr; }},
        {qelStatusNullPointer, [](Args& a) { a.pMin = nullptr; }},
        {qelStatusNullPointer, [](Args& a) { a.pMax = nullptr; }},
        {qelStatusBadSize, [](Args& a) { a.srcSize.width = 0; }},
        {qelStatusBadSize, [](Args& a) { a.srcSize.height = -1; }},
        {qelStatusBadSize, [](Args& a) { a.dstSize.width = 0; }},
        {qelStatusBadSize, [](Args& a) { a.dstSize.height = 0; }},
        {qelStatusBadStep, [](Args& a) { a.srcStep = 7 * int(sizeof(T)) - 1; }},
        {qelStatusBadStep, [](Args& a) { a.dstStep = 4 * int(sizeof(R)) - 1; }},
    };
    if (sizeof(T) > 1) faults.push_back({qelStatusStepNotElementMultiple, [](Args& a) { ++a.srcStep; }});
    if (sizeof(R) > 1) faults.push_back({qelStatusStepNotElementMultiple, [](Args& a) { ++a.dstStep; }});
    const auto run = [&](const Args& a) {
        return call(a.pSrc, a.srcStep, a.srcSize, a.pDst, a.dstStep, a.dstSize, 3, 2, a.pMin, a.pMax, 0);
    };
    for (size_t i = 0; i < faults.size(); ++i)
        for (size_t j = i; j < faults.size(); ++j) {
            Args args = good;
            if (j > i) faults[j].apply(args);
            faults[i].apply(args);
            EXPECT_EQ(faults[i].status, run(args)) << i << " and " << j;
            EXPECT_TRUE(sameBits(before, dst));
            EXPECT_TRUE(min.x == 7 && min.y == 7 && max.x == 7 && max.y == 7);
        }
    EXPECT_EQ(qelStatusOk, run(good));
}

TEST(CopySubpixIntersectChecks, EveryMember) {
    checks<Qel8u, Qel8u>(withoutScale(qeliCopySubpixIntersect_8u_C1R));
    checks<Qel8u, Qel16u>(qeliCopySubpixIntersect_8u16u_C1R_Sfs);
    checks<Qel8u, Qel32f>(withoutScale(qeliCopySubpixIntersect_8u32f_C1R));
    checks<Qel16u, Qel16u>(withoutScale(qeliCopySubpixIntersect_16u_C1R));
    checks<Qel16u, Qel32f>(withoutScale(qeliCopySubpixIntersect_16u32f_C1R));
    checks<Qel32f, Qel32f>(withoutScale(qeliCopySubpixIntersect_32f_C1R));
}

}  // namespace
