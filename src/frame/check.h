// The vocabulary of argument checks.
#ifndef QELCV_FRAME_CHECK_H_
#define QELCV_FRAME_CHECK_H_

#include "frame/image.h"
#include "qelcv/types.h"

namespace qel {

// Keeps the status of the first test that failed. A function states its checks in their order:
//
//     Check().pointers(pSrc, pDst).size(roiSize).steps(rowOf<T>(roiSize.width), srcStep, dstStep).status()
class Check {
public:
    constexpr Check& require(bool holds, qelStatus otherwise) {
        if (status_ == qelStatusOk && !holds) status_ = otherwise;
        return *this;
    }

    constexpr Check& pointers(const auto*... p) { return require((... && (p != nullptr)), qelStatusNullPointer); }

    constexpr Check& size(QelSize roi) { return require(roi.width >= 1 && roi.height >= 1, qelStatusBadSize); }

    constexpr Check& length(int len) { return require(len >= 1, qelStatusBadSize); }

    // Each step holds a row.
    constexpr Check& stepSizes(RowOf row, auto... step) {
        return require((... && (step >= row.bytes)), qelStatusBadStep);
    }

    // Each step is a whole number of samples.
    constexpr Check& stepAlignments(RowOf row, auto... step) {
        return require((... && (step % row.sample == 0)), qelStatusStepNotElementMultiple);
    }

    // Every step against the row, then every step against the sample: a short step is reported before an odd one.
    constexpr Check& steps(RowOf row, auto... step) { return stepSizes(row, step...).stepAlignments(row, step...); }

    // The only test of a step in functions that do not compare it with the row.
    constexpr Check& positiveSteps(auto... step) { return require((... && (step >= 1)), qelStatusBadStep); }

    // The channel of interest of a 3-channel image.
    constexpr Check& channel(int coi) { return require(coi >= 1 && coi <= 3, qelStatusBadChannel); }

    constexpr qelStatus status() const { return status_; }

private:
    qelStatus status_ = qelStatusOk;
};

}  // namespace qel

#endif
