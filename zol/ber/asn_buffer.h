// The front door: encode a value into memory, decode one from memory.
#pragma once

#include <cstddef>

#include "zol/ber/asn_type.h"

namespace Zol {

class AsnBuffer {
public:
    static const int BUFSIZE = 30000;
    // The buffer that Decode reads through.
    static AsnBuf asnBuf;
    // The block of the two-argument Encode, and the scratch space of
    // Decode's failure line.
    static char data[BUFSIZE];

    // Encodes `value` into the top of `block`. Returns the first byte of the
    // encoding, which ends at block + size, or null if it did not fit;
    // `length` is the size of the encoding either way. Touches no shared
    // state, so threads may use it on different blocks.
    static char* Encode(char* block, size_t size, const AsnType& value, size_t& length);
    // The same into `data`; the result stays good until the next call.
    static char* Encode(const AsnType& value, size_t& length);
    // Decodes one value out of `bytes` into a newly constructed `value`.
    // 1 for success, 0 for failure. Bytes behind the value are ignored.
    static int Decode(const char* bytes, size_t len, AsnType& value);
    // Gives `text` to the line sink (AsnSetLineSink): by default standard
    // error, with a line end.
    static void Error(const char* text);
};

}  // namespace Zol
