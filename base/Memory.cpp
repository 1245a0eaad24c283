#include "base/Memory.h"

#include <malloc.h>

namespace tesserine {

void returnUnusedMemory() { malloc_trim(0); }

void returnLargeBlocksAtOnce() {
    constexpr int large = 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, large);
    mallopt(M_TRIM_THRESHOLD, large);
}

}  // namespace tesserine
