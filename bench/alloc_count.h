// The allocation counts, from the helper the tests share.
#pragma once

#include "../tests/alloc_count.h"

namespace zb {
using zalloc::AllocDelta;
using zalloc::CountAllocs;
using zalloc::mallocCounted;
}  // namespace zb
