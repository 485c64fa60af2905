#include <cstdlib>
#include <vector>

#include "kit/checks.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/pyramid.h"

namespace {

template <class T>
using Function = qelStatus(const T*, int, QelSize, T*, QelPoint, QelPoint);

// The rule, step by step.
std::vector<QelPoint> modelLine(QelPoint p, QelPoint end) {
    const int dx = std::abs(end.x - p.x), dy = std::abs(end.y - p.y);
    const int signX = end.x - p.x >= 0 ? 1 : -1, signY = end.y - p.y >= 0 ? 1 : -1;
    const bool steep = dx <= dy;
    const int major = steep ? dy : dx, minor = steep ? dx : dy;
    std::vector<QelPoint> line;
    int error = major;
    for (int i = 0; i <= major; ++i) {
        line.push_back(p);
        error -= 2 * minor;
        (steep ? p.y : p.x) += steep ? signY : signX;
        if (error < 0) {
            error += 2 * major;
            (steep ? p.x : p.y) += steep ? signX : signY;
        }
    }
    EXPECT_EQ(end.x, line.back().x);
    EXPECT_EQ(end.y, line.back().y);
    return line;
}

template <class T>
void agreesWithModel(Function<T>* function, int channels) {
    for (uint32_t seed = 0; seed < 1500; ++seed) {
        kit::Trial trial(seed, {int(seed % 23) + 1, int(seed % 17) + 1});
        kit::Image<T> src(trial, channels);
        const auto point = [&] {
            return QelPoint{trial.between(0, trial.size.width - 1), trial.between(0, trial.size.height - 1)};
        };
        const QelPoint pt1 = point(), pt2 = point();
        const std::vector<QelPoint> line = modelLine(pt1, pt2);
        kit::Image<T> got({int(line.size()), 1}, T(0), channels), want(got);
        for (int i = 0; i < int(line.size()); ++i)
            for (int c = 0; c < channels; ++c)
                want.at(i * channels + c, 0) = src.at(line[size_t(i)].x * channels + c, line[size_t(i)].y);
        ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), trial.size, got.data(), pt1, pt2)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial << ", " << pt1.x << " " << pt1.y << " to " << pt2.x << " " << pt2.y;
    }
}

TEST(SampleLine, qeliSampleLine_8u_C1R) { agreesWithModel<Qel8u>(qeliSampleLine_8u_C1R, 1); }
TEST(SampleLine, qeliSampleLine_8u_C3R) { agreesWithModel<Qel8u>(qeliSampleLine_8u_C3R, 3); }
TEST(SampleLine, qeliSampleLine_16u_C1R) { agreesWithModel<Qel16u>(qeliSampleLine_16u_C1R, 1); }
TEST(SampleLine, qeliSampleLine_16u_C3R) { agreesWithModel<Qel16u>(qeliSampleLine_16u_C3R, 3); }
TEST(SampleLine, qeliSampleLine_32f_C1R) { agreesWithModel<Qel32f>(qeliSampleLine_32f_C1R, 1); }
TEST(SampleLine, qeliSampleLine_32f_C3R) { agreesWithModel<Qel32f>(qeliSampleLine_32f_C3R, 3); }

template <class T>
void checks(Function<T>* function, int channels) {
    kit::Image<T> src({7, 5}, 1, channels), dst({7, 1}, 2, channels), before(dst);
    const int row = 7 * channels * int(sizeof(T));
    struct Args {
        const T* pSrc;
        int step;
        QelSize size;
        T* pDst;
        QelPoint pt1, pt2;
    };
    const Args good = {src.data(), row, {7, 5}, dst.data(), {0, 0}, {6, 4}};
    struct Fault {
        qelStatus status;
        std::function<void(Args&)> apply;
    };
    std::vector<Fault> faults = {
        {qelStatusNullPointer, [](Args& a) { a.pSrc = nullptr; }},
        {qelStatusNullPointer, [](Args& a) { a.pDst = nullptr; }},
        {qelStatusBadSize, [](Args& a) { a.size.width = 0; }},
        {qelStatusBadSize, [](Args& a) { a.size.height = -2; }},
        {qelStatusBadStep, [=](Args& a) { a.step = row - 1; }},
    };
    if (sizeof(T) > 1) faults.push_back({qelStatusStepNotElementMultiple, [=](Args& a) { a.step = row + 1; }});
    for (const QelPoint bad : {QelPoint{-1, 0}, {0, -1}, {7, 0}, {0, 5}}) {
        faults.push_back({qelStatusOutOfRange, [=](Args& a) { a.pt1 = bad; }});
        faults.push_back({qelStatusOutOfRange, [=](Args& a) { a.pt2 = bad; }});
    }
    const auto run = [&](const Args& a) { return function(a.pSrc, a.step, a.size, a.pDst, a.pt1, a.pt2); };
    for (size_t i = 0; i < faults.size(); ++i)
        for (size_t j = i; j < faults.size(); ++j) {
            Args args = good;
            faults[j].apply(args);
            faults[i].apply(args);
            EXPECT_EQ(faults[i].status, run(args)) << i << " and " << j;
            EXPECT_TRUE(sameBits(before, dst));
        }
    EXPECT_EQ(qelStatusOk, run(good));
}

TEST(SampleLineChecks, EveryMember) {
    checks<Qel8u>(qeliSampleLine_8u_C1R, 1);
    checks<Qel8u>(qeliSampleLine_8u_C3R, 3);
    checks<Qel16u>(qeliSampleLine_16u_C1R, 1);
    checks<Qel16u>(qeliSampleLine_16u_C3R, 3);
    checks<Qel32f>(qeliSampleLine_32f_C1R, 1);
    checks<Qel32f>(qeliSampleLine_32f_C3R, 3);
}

}  // namespace
