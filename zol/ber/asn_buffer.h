// The front door: encode a value into memory, decode one from memory.
#pragma once

#include <cstddef>

#include "zol/ber/asn_type.h"

namespace Zol {

class AsnBuffer {
public:
    static const int BUFSIZE = 30000;
    // Each thread has its own of these two, so that threads decode and
    // encode at the same time. The buffer that Decode reads through:
    static __thread AsnBuf asnBuf ZOL_INITIAL_EXEC;
    // The block of the two-argument Encode, and the scratch space of
    // Decode's failure line. It lives on the heap, made at the thread's
    // first use (which throws std::bad_alloc if it cannot be made) and
    // freed when the thread ends.
    static thread_local char (&data)[BUFSIZE];

    // Encodes `value` into the top of `block`. Returns the first byte of the
    // encoding, which ends at block + size, or null if it did not fit;
    // `length` is the size of the encoding either way. Touches no state
    // but the block's.
    static char* Encode(char* block, size_t size, const AsnType& value, size_t& length);
    // The same into this thread's `data`; the result stays good until the
    // thread's next call, or its next failing Decode. Null with `length` 0
    // if `data` cannot be made.
    static char* Encode(const AsnType& value, size_t& length);
    // Decodes one value out of `bytes` into a newly constructed `value`.
    // 1 for success, 0 for failure. Bytes behind the value are ignored.
    // When an allocation fails, the code is AsnOutOfMemoryCode and the
    // value is left cleared (AsnType::Clear), so that it may be destroyed
    // or decoded into again; after other failures it must be destroyed.
    static int Decode(const char* bytes, size_t len, AsnType& value);
    // Gives `text` to the line sink (AsnSetLineSink): by default standard
    // error, with a line end.
    static void Error(const char* text);
};

}  // namespace Zol
