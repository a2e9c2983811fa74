#include "zol/ber/asn_tlv.h"

namespace {

const unsigned char kHighTagNumber = 0x1F;  // low five bits of the first identifier octet: more follow
const unsigned char kMoreOctets = 0x80;     // top bit of a later identifier octet: another follows
const unsigned char kIndefinite = 0x80;     // the first length octet of the indefinite form
const unsigned kMaxLengthOctets = 4;        // after the first, as the decoders take them

// Reads the identifier and length octets at the start of `p[0, size)` by
// the rules of BDecTag and BDecLen, and sets `tag`, `len` and `header` when
// they are all there and well formed.
AsnTlvStatus ReadHeader(const unsigned char* p, size_t size, AsnTag& tag, AsnLen& len, size_t& header) {
    if (size == 0)
        return AsnTlvIncomplete;
    AsnTag t = AsnTag(p[0]) << 24;
    size_t i = 1;
    if ((p[0] & kHighTagNumber) == kHighTagNumber) {
        if (i == size)
            return AsnTlvIncomplete;
        t |= AsnTag(p[i]) << 16;
        if (p[i++] & kMoreOctets) {
            if (i == size)
                return AsnTlvIncomplete;
            t |= AsnTag(p[i]) << 8;
            if (p[i++] & kMoreOctets)
                return AsnTlvMalformed;
        }
    }
    if (i == size)
        return AsnTlvIncomplete;
    unsigned first = p[i++];
    AsnLen l = first;
    if (first == kIndefinite) {
        l = IndefiniteLen;
    } else if (first > kIndefinite) {
        unsigned count = first & 0x7Fu;
        if (count > kMaxLengthOctets)
            return AsnTlvMalformed;
        if (size - i < count)
            return AsnTlvIncomplete;
        for (l = 0; count--;)
            l = l << 8 | p[i++];
        if (l == IndefiniteLen)
            return AsnTlvMalformed;
    }
    if (l == IndefiniteLen && !(t & AsnConstructedBit))
        return AsnTlvMalformed;
    tag = t;
    len = l;
    header = i;
    return AsnTlvComplete;
}

}  // namespace

AsnTlvStatus AsnReadTlv(const char* bytes, size_t size, AsnTlv& tlv) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
    tlv = AsnTlv{0, 0, 0, 0};
    AsnTlvStatus status = ReadHeader(p, size, tlv.tag, tlv.length, tlv.headerSize);
    if (status != AsnTlvComplete)
        return status;
    if (tlv.length != IndefiniteLen) {
        tlv.totalSize = tlv.headerSize + tlv.length;
        return tlv.length <= size - tlv.headerSize ? AsnTlvComplete : AsnTlvIncomplete;
    }
    // The indefinite form ends with the end-of-contents that closes the
    // last level open: nested indefinite elements open one more, definite
    // ones are stepped over whole.
    size_t open = 1;
    size_t at = tlv.headerSize;
    while (open) {
        if (at < size && p[at] == 0) {
            if (at + 1 == size)
                return AsnTlvIncomplete;
            if (p[at + 1] != 0)
                return AsnTlvMalformed;
            at += 2;
            --open;
            continue;
        }
        AsnTag tag;
        AsnLen len;
        size_t header;
        status = ReadHeader(p + at, size - at, tag, len, header);
        if (status != AsnTlvComplete)
            return status;
        at += header;
        if (len == IndefiniteLen)
            ++open;
        else if (len <= size - at)
            at += len;
        else
            return AsnTlvIncomplete;
    }
    tlv.totalSize = at;
    return AsnTlvComplete;
}
