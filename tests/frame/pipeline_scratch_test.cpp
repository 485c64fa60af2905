#include "filter/pipeline_scratch.h"

#include <gtest/gtest.h>

#include <vector>

#include "kit/core_double.h"

namespace qel {
namespace {

TEST(PipelineScratch, PartsLieSideBySide) {
    for (const int threads : {1, 2, 3, 33}) {
        kit::core().threads = threads;
        for (int ownBytes = 0; ownBytes < 70; ownBytes += 3) {
            const PipelineScratch scratch({1 << 20, 3}, 4, ownBytes);
            EXPECT_EQ(int64_t{7 * sizeof(void*)} + ownBytes, scratch.partBytes());
            ASSERT_EQ(threads * (32 + scratch.partBytes()), scratch.bytes());

            std::vector<char> block(size_t(scratch.bytes()) + 64);
            for (size_t offset = 0; offset < 32; ++offset) {
                char* const begin = block.data() + offset;
                const char* free = begin;
                for (int thread = 0; thread < threads; ++thread) {
                    const char* const part = scratch.part(begin, thread);
                    EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(part) % 32);
                    EXPECT_GE(part, free);
                    free = part + scratch.partBytes();
                }
                EXPECT_LE(free, begin + scratch.bytes());
            }
        }
    }
    kit::core().reset();
}

}  // namespace
}  // namespace qel
