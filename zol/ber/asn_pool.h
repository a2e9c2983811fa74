// The blocks that values, and the bytes their strings hold, live in. Blocks
// of up to 256 bytes come from free lists of this thread, which keep what
// was given back (a decoded message is freed and the next one takes the
// same blocks) and are emptied when the thread ends; larger ones, and all
// of them in sanitizer builds, come from malloc. A block is given back
// with the size it was taken with, which picks its list.
#pragma once

#include <cstddef>
#include <cstdint>

// A block of `size` bytes, or null when the heap has none.
void* AsnPoolTake(std::size_t size);
// Gives back a block of AsnPoolTake(size); null is ignored.
void AsnPoolGive(void* p, std::size_t size);
// The number of blocks this thread has taken so far.
uint64_t AsnPoolTaken();
