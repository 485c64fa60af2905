// The special values that functions report, by their bits.
#ifndef QELCV_FRAME_CONSTANTS_H_
#define QELCV_FRAME_CONSTANTS_H_

#include <bit>
#include <cstdint>

#include "qelcv/types.h"

namespace qel {

constexpr Qel32f qelConstantOfNAN_32f = std::bit_cast<Qel32f>(uint32_t{0xFFC00000});
constexpr Qel32f qelConstantOfINF_32f = std::bit_cast<Qel32f>(uint32_t{0x7F800000});
constexpr Qel32f qelConstantOfINF_NEG_32f = std::bit_cast<Qel32f>(uint32_t{0xFF800000});
constexpr Qel64f qelConstantOfNAN_64f = std::bit_cast<Qel64f>(uint64_t{0xFFF8000000000000});
constexpr Qel64f qelConstantOfINF_64f = std::bit_cast<Qel64f>(uint64_t{0x7FF0000000000000});
constexpr Qel64f qelConstantOfINF_NEG_64f = std::bit_cast<Qel64f>(uint64_t{0xFFF0000000000000});

}  // namespace qel

#endif
