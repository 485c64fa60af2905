// Kernels of Sobel filters against products of polynomials.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <vector>

#include "kit/checks.h"
#include "kit/image.h"
#include "qelcv/filter.h"

namespace {

constexpr int kLargestSize = 25;

// The coefficients of (1 + x)^(size - 1 - dx) * (x - 1)^dx, from that of x^0 on.
std::vector<int64_t> exactKernel(int size, int dx) {
    std::vector<int64_t> product = {1};
    for (int factor = 1; factor < size; ++factor) {
        const int constant = factor <= dx ? -1 : 1;
        std::vector<int64_t> next(product.size() + 1);
        for (size_t i = 0; i < product.size(); ++i) {
            next[i] += constant * product[i];
            next[i + 1] += product[i];
        }
        product = next;
    }
    return product;
}

template <class T>
using Function = qelStatus (*)(T*, int, int, int);

template <class T>
void agreesWithModel(Function<T> function) {
    for (int size = 1; size <= kLargestSize; size += 2) {
        for (int dx = 0; dx < size; ++dx) {
            const std::vector<int64_t> exact = exactKernel(size, dx);
            for (const int sign : {1, 0, INT_MAX, -1, INT_MIN}) {
                kit::Image<T> want({size, 1}, T(0)), got({size, 1}, T(99));
                for (int i = 0; i < size; ++i)
                    want.at(i, 0) = static_cast<T>(sign < 0 ? -exact[size_t(i)] : exact[size_t(i)]);
                ASSERT_EQ(qelStatusOk, function(got.data(), size, dx, sign));
                ASSERT_TRUE(sameBits(want, got)) << "size " << size << ", dx " << dx << ", sign " << sign;
            }
        }
    }
}

TEST(GenSobelKernel, qeliGenSobelKernel_16s) { agreesWithModel(qeliGenSobelKernel_16s); }
TEST(GenSobelKernel, qeliGenSobelKernel_32f) { agreesWithModel(qeliGenSobelKernel_32f); }

template <class T>
std::vector<T> kernelOf(Function<T> function, int size, int dx, int sign = 1) {
    std::vector<T> kernel(static_cast<size_t>(size));
    EXPECT_EQ(qelStatusOk, function(kernel.data(), size, dx, sign));
    return kernel;
}

TEST(GenSobelKernel, SmallKernels) {
    using Kernel = std::vector<Qel16s>;
    EXPECT_EQ(Kernel({1}), kernelOf(qeliGenSobelKernel_16s, 1, 0));
    EXPECT_EQ(Kernel({1, 2, 1}), kernelOf(qeliGenSobelKernel_16s, 3, 0));
    EXPECT_EQ(Kernel({-1, 0, 1}), kernelOf(qeliGenSobelKernel_16s, 3, 1));
    EXPECT_EQ(Kernel({1, 0, -1}), kernelOf(qeliGenSobelKernel_16s, 3, 1, -1));
    EXPECT_EQ(Kernel({1, -2, 1}), kernelOf(qeliGenSobelKernel_16s, 3, 2));
    EXPECT_EQ(Kernel({1, 4, 6, 4, 1}), kernelOf(qeliGenSobelKernel_16s, 5, 0));
    EXPECT_EQ(Kernel({-1, -2, 0, 2, 1}), kernelOf(qeliGenSobelKernel_16s, 5, 1));
    EXPECT_EQ(Kernel({1, 0, -2, 0, 1}), kernelOf(qeliGenSobelKernel_16s, 5, 2));
    EXPECT_EQ(Kernel({1, -4, 6, -4, 1}), kernelOf(qeliGenSobelKernel_16s, 5, 4));
}

// A negated zero stays +0.
TEST(GenSobelKernel, NegatedZero) {
    EXPECT_TRUE(kit::sameBits(Qel32f(0), kernelOf(qeliGenSobelKernel_32f, 3, 1, -1)[1]));
}

// The middle of size 17 is 12870, that of size 19 is 48620, which 16 bits do not hold.
TEST(GenSobelKernel, SixteenBitsWrapFromSize19On) {
    EXPECT_EQ(12870, kernelOf(qeliGenSobelKernel_16s, 17, 0)[8]);
    EXPECT_EQ(48620 - 65536, kernelOf(qeliGenSobelKernel_16s, 19, 0)[9]);
    EXPECT_EQ(65536 - 48620, kernelOf(qeliGenSobelKernel_16s, 19, 0, -1)[9]);
    EXPECT_EQ(48620, kernelOf(qeliGenSobelKernel_32f, 19, 0)[9]);
}

template <class T>
void check(kit::Checks<T*, int, int, int> checks) {
    checks.template notAnImage<0>()
        .template value<1>(3)
        .template fault<1>("size 0", qelStatusBadSize, 0)
        .template fault<1>("size 2", qelStatusBadSize, 2)
        .template fault<1>("size -3", qelStatusBadSize, -3)
        .template fault<1>("size INT_MIN", qelStatusBadSize, INT_MIN)
        .template fault<2>("dx -1", qelStatusBadSize, -1)
        .template fault<2>("dx 3", qelStatusBadSize, 3)
        .template fault<2>("dx INT_MAX", qelStatusBadSize, INT_MAX)
        .run();
}

TEST(GenSobelKernelChecks, EveryMember) {
    check(CHECKS_OF(qeliGenSobelKernel_16s));
    check(CHECKS_OF(qeliGenSobelKernel_32f));
}

}  // namespace
