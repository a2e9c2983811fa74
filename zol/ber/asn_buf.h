// The one byte buffer of the library: forward reading over received bytes,
// backward writing into a caller's block. It never allocates, never grows
// and never long-jumps; failures only set its sticky flags.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zol/ber/asn_constants.h"

// For the encoders' per-element steps, which must compile into their
// callers whatever the compiler's estimate of their size.
#define ZOL_ALWAYS_INLINE inline __attribute__((always_inline))

// Copies `n` bytes. Texts of the protocol are mostly shorter than 33
// bytes; those are moved with a few loads and stores inline, which cost
// less than the call into the C library that memcpy of an unknown length
// becomes. Both ends of the source are loaded before anything is stored.
ZOL_ALWAYS_INLINE void AsnCopyBytes(char* dst, const char* src, size_t n) {
    if (n > 32) {
        std::memcpy(dst, src, n);
    } else if (n > 16) {
        char head[16], tail[16];
        std::memcpy(head, src, 16);
        std::memcpy(tail, src + n - 16, 16);
        std::memcpy(dst, head, 16);
        std::memcpy(dst + n - 16, tail, 16);
    } else if (n >= 8) {
        uint64_t head, tail;
        std::memcpy(&head, src, 8);
        std::memcpy(&tail, src + n - 8, 8);
        std::memcpy(dst, &head, 8);
        std::memcpy(dst + n - 8, &tail, 8);
    } else if (n >= 4) {
        uint32_t head, tail;
        std::memcpy(&head, src, 4);
        std::memcpy(&tail, src + n - 4, 4);
        std::memcpy(dst, &head, 4);
        std::memcpy(dst + n - 4, &tail, 4);
    } else if (n) {
        char a = src[0], b = src[n / 2], c = src[n - 1];
        dst[0] = a;
        dst[n / 2] = b;
        dst[n - 1] = c;
    }
}

class AsnBuf {
public:
    char* dataBegin;   // first byte of data; in write mode the byte written last
    char* dataEnd;     // one past the last byte of data: the limit of reading
    char* blockBegin;  // lowest byte of the block: the floor of writing
    char* blockEnd;    // one past the highest byte of the block
    char* readPos;     // next byte to be read
    bool writeFailed;  // set in read mode, or after a write did not fit
    bool readFailed;   // set in write mode, or after a read ran past the end

    // Set-up.
    void Init(char* block, size_t size) {
        blockBegin = block;
        blockEnd = block + size;
        dataBegin = dataEnd = readPos = blockEnd;
        writeFailed = readFailed = true;
    }
    void ResetInReadMode() {
        readPos = dataBegin;
        readFailed = false;
        writeFailed = true;
    }
    void ResetInWriteRvsMode() {
        dataBegin = dataEnd = blockEnd;
        writeFailed = false;
        readFailed = true;
    }
    void InstallData(char* data, size_t len) {
        blockBegin = dataBegin = readPos = data;
        blockEnd = dataEnd = data + len;
        readFailed = false;
        writeFailed = true;
    }

    // Questions.
    char* DataPtr() const { return dataBegin; }
    size_t DataLen() const { return size_t(dataEnd - dataBegin); }
    char* BlkPtr() const { return blockBegin; }
    size_t BlkLen() const { return size_t(blockEnd - blockBegin); }
    bool Eod() const { return readPos >= dataEnd; }
    bool ReadError() const { return readFailed; }
    bool WriteError() const { return writeFailed; }

    // Reading.
    ZOL_ALWAYS_INLINE unsigned char GetByte() {
        if (readPos < dataEnd)
            return static_cast<unsigned char>(*readPos++);
        readFailed = true;
        return 0;
    }
    ZOL_ALWAYS_INLINE unsigned char PeekByte() {
        if (readPos < dataEnd)
            return static_cast<unsigned char>(*readPos);
        readFailed = true;
        return 0;
    }
    void Skip(size_t n) {
        if (n <= size_t(dataEnd - readPos)) {
            readPos += n;
        } else {
            readPos = dataEnd;
            readFailed = true;
        }
    }
    size_t CopyOut(char* dst, size_t n) {
        size_t left = size_t(dataEnd - readPos);
        if (n > left) {
            readFailed = true;
            n = left;
        }
        if (n)
            std::memcpy(dst, readPos, n);
        readPos += n;
        return n;
    }
    // Hands out the next *n bytes in place. A shortfall lowers *n and sets
    // no flag: the caller tests the length it got.
    ZOL_ALWAYS_INLINE char* GetSeg(size_t* n) {
        char* seg = readPos;
        size_t left = size_t(dataEnd - readPos);
        if (*n > left)
            *n = left;
        readPos += *n;
        return seg;
    }

    // Writing, backwards from the top of the block.
    //
    // Whether `n` more bytes fit below the data. The encoders test this
    // once per element and then store through a local pointer: a store
    // through char* may alias the buffer's own fields, so byte-by-byte
    // PutByteRvs reloads them after every byte. Where the test fails they
    // fall back to PutByteRvs, whose partial writes and flag they keep.
    ZOL_ALWAYS_INLINE bool HasRoom(size_t n) const { return n <= size_t(dataBegin - blockBegin); }

    ZOL_ALWAYS_INLINE void PutByteRvs(unsigned char c) {
        if (dataBegin > blockBegin)
            *--dataBegin = static_cast<char>(c);
        else
            writeFailed = true;
    }
    // All or nothing: a segment that does not fit is not written at all.
    ZOL_ALWAYS_INLINE void PutSegRvs(const char* src, size_t n) {
        if (n <= size_t(dataBegin - blockBegin)) {
            dataBegin -= n;
            AsnCopyBytes(dataBegin, src, n);
        } else {
            writeFailed = true;
        }
    }
};
