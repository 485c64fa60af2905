// Scratch of the filters with fixed kernels, to the byte.
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "kit/core_double.h"
#include "qelcv/filter.h"

namespace {

using Query = std::function<qelStatus(QelSize, int, int*)>;
Query queryOf(qelStatus (*f)(QelSize, int, int*)) { return f; }
Query queryOf(qelStatus (*f)(QelSize, int*)) {
    return [=](QelSize size, int, int* pSize) { return f(size, pSize); };
}

struct Sized {
    const char* name;
    Query query;
    QelSize size;
    int mask;
    int threads;
    int bytes32, bytes64;  // with pointers of 4 and of 8 bytes
};

// A row of the table below.
Sized sized(const char* name, const Query& query, int width, int height, int mask, int threads, int bytes32,
            int bytes64) {
    return {name, query, {width, height}, mask, threads, bytes32, bytes64};
}
#define SIZE(function, ...) sized(#function, queryOf(function), __VA_ARGS__)

// A region's width and height, mask and thread limit; then the bytes. The first one worked through, for one thread with
// pointers of 4 bytes:
//     21 rows of seven blocks of 16 samples of 4 bytes, and 36 + 248:   9692
//     a row pipeline for two threads, twice 32 + 43 * 4 + 3 * 64 + 64:   920
//     a column pipeline of 32f, and the tail, 32 + 32:                    64
// Two threads take 21352. Pointers of 8 bytes add 39 * 4 to the first line and twice 43 * 4 to the second.
const Sized kSizes[] = {
    SIZE(qeliFilterSobelHorizGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterSobelHorizGetBufferSize_32f_C1R, 100, 40, 55, 2, 25528, 26608),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17544, 19232),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 19736, 21536),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 19544, 21344),
    SIZE(qeliFilterSobelVertGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterSobelVertGetBufferSize_32f_C1R, 100, 40, 55, 2, 25528, 26608),
    SIZE(qeliFilterSobelVertGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17416, 19104),
    SIZE(qeliFilterSobelVertGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 19608, 21408),
    SIZE(qeliFilterSobelVertGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterSobelVertGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 19544, 21344),
    SIZE(qeliFilterSobelNegVertGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterSobelNegVertGetBufferSize_32f_C1R, 100, 40, 55, 2, 25528, 26608),
    SIZE(qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17480, 19168),
    SIZE(qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 19672, 21472),
    SIZE(qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 19544, 21344),
    SIZE(qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, 100, 40, 55, 2, 25528, 26608),
    SIZE(qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17480, 19168),
    SIZE(qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 19672, 21472),
    SIZE(qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 19544, 21344),
    SIZE(qeliFilterSobelVertSecondGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterSobelVertSecondGetBufferSize_32f_C1R, 100, 40, 55, 2, 25528, 26608),
    SIZE(qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17480, 19168),
    SIZE(qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 19672, 21472),
    SIZE(qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 19544, 21344),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 100, 40, 55, 2, 25528, 26608),
    SIZE(qeliFilterSobelCrossGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17480, 19168),
    SIZE(qeliFilterSobelCrossGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 19672, 21472),
    SIZE(qeliFilterSobelCrossGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterSobelCrossGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 19544, 21344),
    SIZE(qeliFilterScharrHorizGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterScharrHorizGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterScharrHorizGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterScharrVertGetBufferSize_32f_C1R, 100, 40, 33, 2, 21352, 22352),
    SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 17480, 19168),
    SIZE(qeliFilterScharrVertGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 17352, 19040),
    SIZE(qeliFilterLaplacianGetBufferSize_32f_C1R, 100, 40, 33, 2, 40416, 41416),
    SIZE(qeliFilterLaplacianGetBufferSize_32f_C1R, 100, 40, 55, 2, 48224, 49304),
    SIZE(qeliFilterLaplacianGetBufferSize_8u16s_C1R, 100, 40, 33, 2, 27136, 28824),
    SIZE(qeliFilterLaplacianGetBufferSize_8u16s_C1R, 100, 40, 55, 2, 31168, 32968),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 100, 40, 33, 2, 27136, 28824),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 100, 40, 55, 2, 49152, 50952),
    SIZE(qeliFilterLowpassGetBufferSize_32f_C1R, 100, 40, 33, 2, 21224, 22224),
    SIZE(qeliFilterLowpassGetBufferSize_32f_C1R, 100, 40, 55, 2, 25400, 26480),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 100, 40, 33, 2, 17480, 19168),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 100, 40, 55, 2, 19672, 21472),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 1, 1, 33, 1, 1416, 1604),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 1, 1, 55, 1, 1656, 1884),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 16, 1, 33, 1, 1560, 1748),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 16, 1, 55, 1, 1800, 2028),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 17, 9, 33, 3, 10944, 12276),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 17, 9, 55, 3, 12576, 14124),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 1920, 1080, 33, 1, 113008, 121828),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 1920, 1080, 55, 1, 128480, 137340),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 640, 480, 33, 33, 13814064, 18027108),
    SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 640, 480, 55, 33, 14079648, 18310908),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 1, 1, 33, 1, 1996, 2168),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 1, 1, 55, 1, 2412, 2616),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 16, 1, 33, 1, 1996, 2168),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 16, 1, 55, 1, 2412, 2616),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 17, 9, 33, 3, 12132, 13032),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 17, 9, 55, 3, 14964, 16008),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 1920, 1080, 33, 1, 166248, 170736),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 1920, 1080, 55, 1, 197128, 201648),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 640, 480, 33, 33, 4203144, 6312240),
    SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, 640, 480, 55, 33, 4689960, 6808560),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 1, 1, 33, 1, 2180, 2368),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 1, 1, 55, 1, 2636, 2864),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 16, 1, 33, 1, 2324, 2512),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 16, 1, 55, 1, 2780, 3008),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 17, 9, 33, 3, 15252, 16584),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 17, 9, 55, 3, 19548, 21096),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 1920, 1080, 33, 1, 193740, 202560),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 1920, 1080, 55, 1, 4371828, 4380688),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 640, 480, 33, 33, 14704140, 18917184),
    SIZE(qeliFilterLaplacianGetBufferSize_8u8s_C1R, 640, 480, 55, 33, 35415732, 39646992),
    SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, 1, 1, 33, 1, 1384, 1572),
    SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, 16, 1, 33, 1, 1528, 1716),
    SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, 17, 9, 33, 3, 10848, 12180),
    SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, 1920, 1080, 33, 1, 112976, 121796),
    SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, 640, 480, 33, 33, 13813008, 18026052),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 1, 1, 33, 1, 1384, 1572),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 1, 1, 55, 1, 1624, 1852),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 16, 1, 33, 1, 1528, 1716),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 16, 1, 55, 1, 1768, 1996),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 17, 9, 33, 3, 10848, 12180),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 17, 9, 55, 3, 12480, 14028),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 1920, 1080, 33, 1, 112976, 121796),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 1920, 1080, 55, 1, 128448, 137308),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 640, 480, 33, 33, 13813008, 18026052),
    SIZE(qeliFilterLowpassGetBufferSize_8u_C1R, 640, 480, 55, 33, 14078592, 18309852),
};
#undef SIZE

TEST(FixedBufferSize, EveryMember) {
    for (const Sized& s : kSizes) {
        kit::core().threads = s.threads;
        int bytes = 0;
        EXPECT_EQ(qelStatusOk, s.query(s.size, s.mask, &bytes)) << s.name;
        EXPECT_EQ(sizeof(void*) == 4 ? s.bytes32 : s.bytes64, bytes)
            << s.name << ", " << s.size.width << "x" << s.size.height << ", mask " << s.mask << ", " << s.threads
            << " threads";
    }
    kit::core().reset();
}

// The height from which on the size of a region one sample wide is beyond int, and the last size below it.
struct Limit {
    Query query;
    int threads;
    int height32, bytes32;
    int height64, bytes64;
};

TEST(FixedBufferSize, LastSizeThatFits) {
    const Limit limits[] = {
        {queryOf(qeliFilterSobelHorizGetBufferSize_32f_C1R), 1, 536870309, 2147483644, 268435129, 2147483640},
        {queryOf(qeliFilterSobelHorizGetBufferSize_32f_C1R), 3, 59652050, 2147483640, 29826015, 2147483640},
        {queryOf(qeliFilterLaplacianGetBufferSize_8u8s_C1R), 1, 53687026, 2147483636, 44739183, 2147483600},
        {queryOf(qeliFilterLaplacianGetBufferSize_8u8s_C1R), 3, 12782577, 2147483580, 8947800, 2147483544},
        {queryOf(qeliFilterSobelVertGetBufferSize_8u16s_C1R), 1, 268435257, 2147483640, 134217615, 2147483644},
        {queryOf(qeliFilterSobelVertGetBufferSize_8u16s_C1R), 3, 29826056, 2147483640, 14913021, 2147483532},
    };
    for (const Limit& limit : limits) {
        kit::core().threads = limit.threads;
        const int height = sizeof(void*) == 4 ? limit.height32 : limit.height64;
        int bytes = 0;
        EXPECT_EQ(qelStatusOk, limit.query({1, height}, 55, &bytes));
        EXPECT_EQ(sizeof(void*) == 4 ? limit.bytes32 : limit.bytes64, bytes);
        bytes = 7;
        EXPECT_EQ(qelStatusOverflow, limit.query({1, height + 1}, 55, &bytes));
        EXPECT_EQ(7, bytes);
    }
    kit::core().reset();
}

// Sizes whose products are beyond 32 bits, and some beyond 64.
void overflows(const char* name, const Query& query) {
    for (const int mask : {33, 55}) {
        for (const int threads : {1, 2, 4, 33}) {
            kit::core().threads = threads;
            for (const QelSize size : {QelSize{INT_MAX, 1},
                                       {1, INT_MAX},
                                       {INT_MAX, INT_MAX},
                                       {1 << 30, 1 << 20},
                                       {1 << 29, INT_MAX},
                                       {1 << 30, INT_MAX},
                                       {INT_MAX - 15, INT_MAX}}) {
                int bytes = 7;
                EXPECT_EQ(qelStatusOverflow, query(size, mask, &bytes))
                    << name << ", " << size.width << "x" << size.height << ", mask " << mask << ", " << threads
                    << " threads";
                EXPECT_EQ(7, bytes) << name;
            }
        }
    }
    kit::core().reset();
}

TEST(FixedBufferSize, Overflow) {
#define LARGE(function) overflows(#function, queryOf(function));
    LARGE(qeliFilterSobelHorizGetBufferSize_32f_C1R)
    LARGE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterSobelHorizGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterSobelVertGetBufferSize_32f_C1R)
    LARGE(qeliFilterSobelVertGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterSobelVertGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterSobelNegVertGetBufferSize_32f_C1R)
    LARGE(qeliFilterSobelNegVertGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterSobelNegVertGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterSobelHorizSecondGetBufferSize_32f_C1R)
    LARGE(qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterSobelVertSecondGetBufferSize_32f_C1R)
    LARGE(qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterSobelCrossGetBufferSize_32f_C1R)
    LARGE(qeliFilterSobelCrossGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterSobelCrossGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterScharrHorizGetBufferSize_32f_C1R)
    LARGE(qeliFilterScharrHorizGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterScharrHorizGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterScharrVertGetBufferSize_32f_C1R)
    LARGE(qeliFilterScharrVertGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterScharrVertGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterLaplacianGetBufferSize_32f_C1R)
    LARGE(qeliFilterLaplacianGetBufferSize_8u16s_C1R)
    LARGE(qeliFilterLaplacianGetBufferSize_8u8s_C1R)
    LARGE(qeliFilterLowpassGetBufferSize_32f_C1R)
    LARGE(qeliFilterLowpassGetBufferSize_8u_C1R)
#undef LARGE
}

}  // namespace
