// The walk over the pieces of a constructed string, which the constructed
// forms of OCTET STRING and BIT STRING share: pieces of the primitive form
// are handed to the caller, pieces of the constructed form nest, anything
// else fails. The caller gathers the pieces on its thread's string stack.
#pragma once

#include "zol/ber/ber.h"
#include "zol/universal/asn_octs.h"

// What tells one string kind's walk from another's.
struct AsnSegmentKind {
    AsnTag piece;             // the tag of a primitive piece; with AsnConstructedBit, a nested level
    int formCode;             // nested too deep, or a piece of another type
    const char* tooDeepText;  // the 65th level
    const char* foreignText;  // a piece of another type
};

// The calling thread's string stack, or a failure when it cannot be made.
inline StrStk& AsnDecodeStringStack(DecodeEnv env) {
    StrStk* stack = AsnStringStack();
    if (!stack)
        AsnDecodeOutOfMemory(env);
    return *stack;
}

// Pushes the next `len` bytes onto `stack` as they lie in the buffer, or
// fails with `code` when the data end first.
ZOL_ALWAYS_INLINE void AsnPushSegment(StrStk& stack, AsnBuf& b, size_t len, DecodeEnv env, int code,
                                      const char* text) {
    if (!len)
        return;
    size_t n = len;
    char* segment = b.GetSeg(&n);
    if (n < len)
        AsnDecodeFail(env, code, text);
    if (!stack.Push(segment, n))
        AsnDecodeOutOfMemory(env);
}

// Walks the content of a constructed string of `elmtLen` octets (or
// IndefiniteLen) and calls `takePiece(len)` with the buffer at the content
// of each primitive piece, which must read exactly `len` octets or fail.
// Every level keeps a count of its own, added to the level around it when
// it ends. Levels are counted, not recursed into, and the 65th is refused.
template <class TakePiece>
ZOL_ALWAYS_INLINE void AsnWalkSegments(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env,
                                       const AsnSegmentKind& kind, TakePiece takePiece) {
    AsnLen lens[AsnMaxNesting];    // each open level's length, the outermost first
    AsnLen counts[AsnMaxNesting];  // and the octets read of it so far
    unsigned depth = 0;
    lens[0] = elmtLen;
    counts[0] = 0;
    for (;;) {
        AsnLen& count = counts[depth];
        if (lens[depth] == IndefiniteLen || count < lens[depth]) {
            AsnTag tag = BDecTag(b, count, env);
            if (tag == 0 && lens[depth] == IndefiniteLen) {
                BDecEocSecondOctet(b, count);
            } else {
                AsnLen len = BDecLen(b, count, env);
                if (tag == kind.piece) {
                    takePiece(len);
                    count += len;
                } else if (tag == (kind.piece | AsnConstructedBit)) {
                    if (depth + 1 >= AsnMaxNesting)
                        AsnDecodeFail(env, kind.formCode, kind.tooDeepText);
                    ++depth;
                    lens[depth] = len;
                    counts[depth] = 0;
                } else {
                    AsnDecodeFail(env, kind.formCode, kind.foreignText);
                }
                continue;
            }
        }
        // The level has ended.
        if (depth == 0) {
            bytesDecoded += count;
            return;
        }
        --depth;
        counts[depth] += count;
    }
}
