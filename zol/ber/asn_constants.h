// The numbers that the runtime and the schema compiler share: the in-memory
// tag and length words, the universal tags, and the failure codes of the
// runtime's decoders. It needs nothing but <cstdint>, so that the compiler,
// a host tool built before the library, includes it too.
#pragma once

#include <cstdint>

// In-memory tag: the identifier octets left-justified in a 32-bit word,
// compared as a whole. End-of-contents is 0.
typedef uint32_t AsnTag;
// Count of bytes, used for lengths and running counts.
typedef uint32_t AsnLen;

// The indefinite length form (a definite 0xFFFFFFFF cannot be told from it).
const AsnLen IndefiniteLen = 0xFFFFFFFFu;

// Bit 6 of the first identifier octet: the constructed form.
const AsnTag AsnConstructedBit = 0x20000000u;

// The universal tags as tag words, in the form BER writes them.
const AsnTag AsnBooleanTag = 0x01000000u;
const AsnTag AsnIntegerTag = 0x02000000u;
const AsnTag AsnBitStringTag = 0x03000000u;
const AsnTag AsnOctetStringTag = 0x04000000u;
const AsnTag AsnNullTag = 0x05000000u;
const AsnTag AsnOidTag = 0x06000000u;
const AsnTag AsnObjectDescriptorTag = 0x07000000u;
const AsnTag AsnExternalTag = 0x28000000u;
const AsnTag AsnRealTag = 0x09000000u;
const AsnTag AsnEnumeratedTag = 0x0A000000u;
const AsnTag AsnSequenceTag = 0x30000000u;
const AsnTag AsnSetTag = 0x31000000u;

// Failure codes: the value of the long jump of a failed decoder. The
// runtime uses -1 to -22 for malformed content, -23 for an allocation that
// failed, -50 to -58 for a wrong universal tag and -80 to -82 for the root
// and the open types; the
// string classes and EXTERNAL count upwards from 33; generated classes
// count down from AsnFirstGeneratedCode, anew in each module.
enum AsnFailureCode : int {
    AsnBitsPrimitiveCode = -1,      // primitive BIT STRING: no unused-bits octet, past the end, too many unused bits
    AsnBitsUnusedCode = -2,         // constructed BIT STRING: unused bits not in the last piece, or too many
    AsnBitsShortCode = -3,          // constructed BIT STRING: a piece runs past the end
    AsnBitsFormCode = -4,           // constructed BIT STRING: nested too deep, or a piece of another type
    AsnBoolLengthCode = -5,
    AsnBoolPastEndCode = -6,
    AsnIntTooBigCode = -7,
    AsnIntPastEndCode = -8,
    AsnLenPastEndCode = -9,         // no length octet
    AsnLenOverflowCode = -10,       // five or more length octets
    AsnLongLenPastEndCode = -11,    // the long form runs past the end
    AsnEocCode = -12,
    AsnNullLengthCode = -13,
    AsnOctsPastEndCode = -14,
    AsnConsOctsPastEndCode = -15,
    AsnConsOctsFormCode = -16,      // nested too deep, or a piece of another type
    AsnOidPastEndCode = -17,
    AsnRealOneOctetCode = -18,
    AsnRealBaseCode = -19,
    AsnRealDecimalCode = -20,
    AsnTagOverflowCode = -21,
    AsnTagPastEndCode = -22,
    AsnOutOfMemoryCode = -23,       // an allocation failed: the heap is exhausted

    AsnBitsWrongTagCode = -50,
    AsnBoolWrongTagCode = -51,
    AsnEnumWrongTagCode = -52,
    AsnIntWrongTagCode = -53,
    AsnNullWrongTagCode = -55,
    AsnOctsWrongTagCode = -56,
    AsnOidWrongTagCode = -57,
    AsnRealWrongTagCode = -58,

    AsnNoDecoderCode = -80,         // a value of the root class itself
    AsnAnyUnregisteredCode = -81,   // ANY: no registration for the identifier
    AsnAnyNoValueCode = -82,        // ANY: the registration's prototype gives no value

    AsnExternalWrongTagCode = 33,
    AsnExternalLengthCode = 34,
    AsnExternalMissingEncodingCode = 35,
    AsnExternalChoiceTagCode = 36,
    AsnExternalInnerTagCode = 37,

    AsnFirstGeneratedCode = -100,
};
