// 32-bit callers keep their stack at multiples of 4, as the older calling convention has it. Vector code needs 16.
#include <gtest/gtest.h>

#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

#if defined(__i386__)

namespace {

// Calls absolute difference with `offset` more bytes on the stack than the compiler would leave.
int callWithOffset(int offset, const Qel16u* a, const Qel16u* b, Qel16u* out, int step, QelSize size) {
    const int words[] = {int(intptr_t(a)),   step, int(intptr_t(b)), step,
                         int(intptr_t(out)), step, size.width,       size.height};
    int status;
    asm volatile(
        "movl %%esp, %%ebx\n"
        "subl %[offset], %%esp\n"
        "pushl 28(%%esi)\n"
        "pushl 24(%%esi)\n"
        "pushl 20(%%esi)\n"
        "pushl 16(%%esi)\n"
        "pushl 12(%%esi)\n"
        "pushl 8(%%esi)\n"
        "pushl 4(%%esi)\n"
        "pushl (%%esi)\n"
        "call *%[function]\n"
        "movl %%ebx, %%esp\n"
        : "=a"(status)
        : [offset] "c"(offset), [function] "d"(qeliAbsDiff_16u_C1R), "S"(words)
        : "ebx", "edi", "memory", "cc");
    return status;
}

TEST(MisalignedStack, IsRealigned) {
    for (const QelSize size : {QelSize{37, 5}, {0x8000, 9}}) {
        kit::Trial trial(1, size, 2);
        kit::Image<Qel16u> a(size, 5), b(size, 9), out(size, 0);
        for (int offset = 0; offset < 64; offset += 4) {
            ASSERT_EQ(qelStatusOk, callWithOffset(offset, a.data(), b.data(), out.data(), a.step(), size));
            EXPECT_TRUE(sameBits(kit::Image<Qel16u>(size, 4), out)) << "offset " << offset;
        }
    }
}

}  // namespace

#endif
