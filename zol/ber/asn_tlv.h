// Framing a byte stream into BER elements: the head of the element at the
// start of the bytes received so far, and whether all of it has arrived,
// found without decoding its content. A client reading messages from a
// socket asks this after each read, hands every complete element to
// AsnBuffer::Decode and keeps the rest for the next read.
#pragma once

#include <cstddef>

#include "zol/ber/asn_constants.h"

// The head of one element. Whatever the status, tag, length and
// headerSize are set once the identifier and length octets are all
// present and well formed, and are 0 before.
struct AsnTlv {
    AsnTag tag;         // the identifier octets as a tag word, as the decoders read them
    AsnLen length;      // the content octets, or IndefiniteLen
    size_t headerSize;  // the identifier and length octets
    // The whole element: header and content and, for the indefinite form,
    // everything up to and including the end-of-contents that closes it.
    // For an incomplete element of definite length the size it will have,
    // so that a reader knows how much to wait for and can refuse a message
    // beyond its limit early; 0 while unknown (the header is not all there,
    // or an indefinite element has not ended yet).
    size_t totalSize;
};

enum AsnTlvStatus {
    AsnTlvComplete,    // the whole element is in the bytes given
    AsnTlvIncomplete,  // the bytes end inside the element; more of them may complete it
    AsnTlvMalformed,   // no bytes that follow can make this an element the decoders read
};

// Reads the element at the start of `bytes[0, size)`, without allocating,
// jumping or copying, in time linear in `size`. Malformed are: a tag of
// more than three octets (as the decoders refuse it), a length of five or
// more octets, the definite length 0xFFFFFFFF (which the decoders cannot
// tell from the indefinite form), the indefinite form on a primitive
// element, and inside an indefinite element any of these or an
// end-of-contents other than 00 00. Elements nested in the indefinite form
// are counted in open levels, not recursed into, so any depth is read in
// constant stack; the content of definite elements is not looked at.
AsnTlvStatus AsnReadTlv(const char* bytes, size_t size, AsnTlv& tlv);
