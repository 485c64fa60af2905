// How much of an image to work on at a time, by the cache that is nearest to the processor.
#ifndef QELCV_FRAME_TURNS_H_
#define QELCV_FRAME_TURNS_H_

#include <cstdint>

namespace qel {

// Bytes of the nearest data cache, the usual number where the system does not tell.
int nearestCacheSize();

// What a turn may touch to find it in the nearest cache again: a part is left to what the caller keeps there.
inline int nearestBytes() { return nearestCacheSize() - nearestCacheSize() / 6; }

// Rows of results that a turn makes, from 1 up to `most`: as many as stay in the nearest cache with all that they are
// made of. A turn touches bytesPerRow for each of them, and bytesBesides however many they are.
int rowsPerTurn(int64_t bytesPerRow, int64_t bytesBesides, int most);

}  // namespace qel

#endif
