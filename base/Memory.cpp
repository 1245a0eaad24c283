#include "base/Memory.h"

#include <malloc.h>

namespace tesserine {

void returnUnusedMemory() { malloc_trim(0); }

}  // namespace tesserine
