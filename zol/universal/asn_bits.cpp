#include "zol/universal/asn_bits.h"

#include <cstring>
#include <new>

#include "zol/ber/asn_print.h"
#include "zol/universal/asn_octs.h"
#include "zol/universal/asn_segments.h"

const AsnNamesTypeDesc AsnBits::_desc(nullptr, nullptr, false, AsnTypeDesc::BIT_STRING, nullptr, nullptr);

__thread unsigned short pendingUnusedBits ZOL_INITIAL_EXEC = 0;

namespace {

const AsnSegmentKind kBitPieces = {
    AsnBitStringTag, AsnBitsFormCode, "BDecConsBitString: ERROR - constructed BIT STRING nested too deep",
    "BDecConsBitString: ERROR - decoded non-BIT STRING tag inside a constructed BIT STRING"};

size_t OctetsOf(size_t numBits) { return (numBits + 7) / 8; }

// The block of a value of `numBits` bits, or null when the heap is
// exhausted.
char* TakeBits(size_t numBits) { return static_cast<char*>(AsnPoolTake(OctetsOf(numBits))); }

char* NewBits(size_t numBits) {
    if (char* p = TakeBits(numBits))
        return p;
    AsnThrowBadAlloc();
}

void FreeBits(char* bits, size_t numBits) { AsnPoolGive(bits, OctetsOf(numBits)); }

}  // namespace

AsnBits::~AsnBits() { FreeBits(bits, bitLen); }

void AsnBits::Clear() {
    FreeBits(bits, bitLen);
    bits = nullptr;
    bitLen = 0;
}

void AsnBits::Set(size_t numBits) {
    bits = NewBits(numBits);
    std::memset(bits, 0, OctetsOf(numBits));
    bitLen = numBits;
}

void AsnBits::Set(const char* bitOcts, size_t numBits) {
    if (bitOcts == bits)
        return;
    bits = NewBits(numBits);
    if (numBits)
        std::memcpy(bits, bitOcts, OctetsOf(numBits));
    bitLen = numBits;
}

void AsnBits::Set(const AsnBits& b) {
    if (&b != this)
        Set(b.bits ? b.bits : "", b.bitLen);
}

void AsnBits::ReSet(size_t numBits) {
    Clear();
    Set(numBits);
}

// The copy is made before the old block is freed.
void AsnBits::ReSet(const char* bitOcts, size_t numBits) {
    if (bitOcts == bits)
        return;
    char* old = bits;
    size_t oldLen = bitLen;
    bits = nullptr;
    Set(bitOcts, numBits);
    FreeBits(old, oldLen);
}

void AsnBits::ReSet(const AsnBits& b) {
    if (&b != this)
        ReSet(b.bits ? b.bits : "", b.bitLen);
}

// Bits of the last octet beyond bitLen do not count.
bool AsnBits::BitsEquiv(const AsnBits& other) const {
    if (bitLen != other.bitLen)
        return false;
    if (bitLen == 0)
        return true;
    size_t full = bitLen / 8;
    if (std::memcmp(bits, other.bits, full) != 0)
        return false;
    unsigned rest = bitLen % 8;
    if (rest == 0)
        return true;
    unsigned char mask = static_cast<unsigned char>(0xFF << (8 - rest));
    return ((bits[full] ^ other.bits[full]) & mask) == 0;
}

AsnType* AsnBits::Clone() const { return AsnClone(*this); }

const AsnTypeDesc* AsnBits::_getdesc() const { return &_desc; }

AsnLen AsnBits::BEncContent(AsnBuf& b) const {
    size_t n = OctetLen();
    b.PutSegRvs(bits, n);
    b.PutByteRvs(static_cast<unsigned char>(bitLen % 8 ? 8 - bitLen % 8 : 0));
    return static_cast<AsnLen>(n + 1);
}

AsnLen AsnBits::BEnc(AsnBuf& b) const { return BEncLenTag(b, BEncContent(b), AsnBitStringTag); }

void AsnBits::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    AsnTag tag = BDecTag(b, bytesDecoded, env);
    if (tag != AsnBitStringTag && tag != (AsnBitStringTag | AsnConstructedBit))
        AsnDecodeFail(env, AsnBitsWrongTagCode, "AsnBits::BDec: ERROR tag on BIT STRING is wrong.");
    AsnLen len = BDecLen(b, bytesDecoded, env);
    BDecContent(b, tag, len, bytesDecoded, env);
}

void AsnBits::BDecContent(AsnBuf& b, AsnTag tag, AsnLen elmtLen, AsnLen& bytesDecoded,
                          DecodeEnv env) {
    if (tag & AsnConstructedBit) {
        BDecConsBits(b, elmtLen, bytesDecoded, env);
        return;
    }
    // A primitive element has at least its unused-bits octet, and cannot
    // claim more unused bits than its octets hold.
    if (elmtLen == 0)
        AsnDecodeFail(env, AsnBitsPrimitiveCode, "BDecBitString: ERROR - no unused-bits octet");
    bytesDecoded += elmtLen;
    unsigned unused = b.GetByte();
    size_t octets = elmtLen - 1;
    size_t n = octets;
    char* src = b.GetSeg(&n);
    if (n < octets || b.ReadError())
        AsnDecodeFail(env, AsnBitsPrimitiveCode, "BDecBitString: ERROR - decoded past end of data");
    if (unused > octets * 8)
        AsnDecodeFail(env, AsnBitsPrimitiveCode, "BDecBitString: ERROR - more unused bits than bits held");
    // Only the octets that hold bits are kept.
    size_t numBits = octets * 8 - unused;
    char* kept = TakeBits(numBits);
    if (!kept)
        AsnDecodeOutOfMemory(env);
    FreeBits(bits, bitLen);  // held by a value decoded again, as an open type's clone
    bits = kept;
    bitLen = numBits;
    if (numBits)
        std::memcpy(bits, src, OctetsOf(numBits));
}

void AsnBits::BDecConsBits(AsnBuf& b, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    StrStk& stack = AsnDecodeStringStack(env);
    stack.Reset();
    pendingUnusedBits = 0;
    // Only the last piece may leave bits unused; each piece's first octet
    // says how many.
    AsnWalkSegments(b, elmtLen, bytesDecoded, env, kBitPieces, [&](AsnLen len) {
        if (pendingUnusedBits != 0)
            AsnDecodeFail(env, AsnBitsUnusedCode,
                          "BDecConsBitString: ERROR - a component of a constructed BIT STRING "
                          "that is not the last has non-zero unused bits");
        if (len != 0) {
            pendingUnusedBits = b.GetByte();
            AsnPushSegment(stack, b, len - 1, env, AsnBitsShortCode, "BDecConsOctetString: ERROR - expecting more data");
        }
    });
    size_t total = stack.totalByteLen;
    if (pendingUnusedBits > total * 8)
        AsnDecodeFail(env, AsnBitsUnusedCode, "BDecConsBitString: ERROR - more unused bits than bits held");
    size_t numBits = total * 8 - pendingUnusedBits;
    char* kept = TakeBits(numBits);
    if (!kept)
        AsnDecodeOutOfMemory(env);
    FreeBits(bits, bitLen);
    bits = kept;
    bitLen = numBits;
    stack.CopyOut(bits, OctetsOf(numBits));
}

void AsnBits::PrintTo(AsnPrintOut& out) const {
    out.Put('\'');
    out.Hex(bits, OctetLen());
    out.Put("'H  -- BIT STRING bitlen = ");
    out.Decimal(uint64_t(bitLen));
    out.Put(" --");
}
