// Differential test of zol's codec against asn1c's, built from the same
// ASN.1 modules. Every alternative of the four envelopes goes both ways:
//
//  ours -> asn1c: a value filled by zt::Filler is encoded by zol, decoded by
//    asn1c (ber_decode), re-encoded by asn1c (der_encode) and decoded by
//    zol again; the two zol values must be equal.
//  asn1c -> ours: a value filled through asn1c's descriptors with edge
//    values (long strings, empty lists, extreme reals, absent optionals) is
//    encoded by asn1c, decoded and re-encoded by zol, decoded by asn1c; the
//    two asn1c values must be equal, which for DER means equal bytes.
//
// Values are compared, not bytes, since DER sorts SET OF elements and
// normalises REAL mantissas where zol keeps list order and writes eight
// mantissa octets less the trailing zero ones. Prints a line per failure
// and ends with "N passed, N failed".
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <zol/json.h>
#include <zol/zol.h>

#include "walk.h"

#include "BIT_STRING.h"
#include "OCTET_STRING.h"
#include "ZolQueryRep.h"
#include "ZolQueryReq.h"
#include "ZolQueryReqChoice.h"
#include "ZolTransRep.h"
#include "ZolTransReq.h"
#include "ZolTransReqChoice.h"
#include "asn_SET_OF.h"
#include "ber_decoder.h"
#include "constr_CHOICE.h"
#include "constr_SEQUENCE.h"
#include "constr_SET_OF.h"
#include "der_encoder.h"

namespace {

int passed = 0;
int failed = 0;

std::string Hex(const std::string& s) {
    std::string out;
    char buf[4];
    for (size_t i = 0; i < s.size() && i < 200; ++i) {
        std::snprintf(buf, sizeof buf, " %02X", static_cast<unsigned char>(s[i]));
        out += buf;
    }
    return s.size() > 200 ? out + " ... (" + std::to_string(s.size()) + " bytes)" : out;
}

bool Fail(const std::string& where, const std::string& what) {
    ++failed;
    std::printf("FAIL %s: %s\n", where.c_str(), what.c_str());
    return false;
}

std::string Encode(const AsnType& v) {
    static std::vector<char> block(1 << 22);
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(block.data(), block.size(), v, len);
    return p ? std::string(p, len) : std::string();
}

// The value's JSON form with every list sorted, so that two values equal up
// to the order of SET OF elements (the protocol has no SEQUENCE OF) are
// equal. The form carries every bit of a real and every bit of a string.
Zol::Json Canon(Zol::Json j) {
    if (j.is_structured())
        for (Zol::Json& e : j)
            e = Canon(e);
    if (j.is_array())
        std::sort(j.begin(), j.end());
    return j;
}

int Append(const void* data, size_t size, void* key) {
    static_cast<std::string*>(key)->append(static_cast<const char*>(data), size);
    return 0;
}

// A value of asn1c's, freed with its holder.
struct PeerValue {
    asn_TYPE_descriptor_t* td;
    void* s = nullptr;
    explicit PeerValue(asn_TYPE_descriptor_t* t) : td(t) {}
    ~PeerValue() { ASN_STRUCT_FREE(*td, s); }
    PeerValue(const PeerValue&) = delete;
    PeerValue& operator=(const PeerValue&) = delete;

    // Decodes all of `bytes` and encodes the value again as DER; "" with
    // `err` set when asn1c refuses either.
    std::string Der(std::string& err) {
        std::string out;
        asn_enc_rval_t r = der_encode(td, s, Append, &out);
        if (r.encoded < 0)
            err = std::string("der_encode failed at ") + (r.failed_type ? r.failed_type->name : "?");
        return r.encoded < 0 ? std::string() : out;
    }
    std::string Reencoded(const std::string& bytes, std::string& err) {
        asn_dec_rval_t r = ber_decode(nullptr, td, &s, bytes.data(), bytes.size());
        if (r.code == RC_OK && r.consumed == bytes.size())
            return Der(err);
        err = "asn1c cannot decode ours (code " + std::to_string(int(r.code)) + " after " +
              std::to_string(r.consumed) + " bytes):" + Hex(bytes);
        return std::string();
    }
};

// The kinds of type, by their universal tag; a choice has none.
enum Kind { CHOICE = 0, BOOL = 1, INT = 2, BITS = 3, OCTS = 4, NUL = 5, REAL = 9, ENUM = 10, SEQ = 16, SETOF = 17 };

// A type defined as another one takes that one's members and functions the
// first time it is used; freeing null does it.
Kind KindOf(asn_TYPE_descriptor_t* td) {
    td->free_struct(td, nullptr, 0);
    return td->tags_count ? Kind(BER_TAG_VALUE(td->tags[td->tags_count - 1])) : CHOICE;
}

size_t SizeOf(asn_TYPE_descriptor_t* td) {
    switch (KindOf(td)) {
    case SEQ: return size_t(static_cast<const asn_SEQUENCE_specifics_t*>(td->specifics)->struct_size);
    case SETOF: return size_t(static_cast<const asn_SET_OF_specifics_t*>(td->specifics)->struct_size);
    case CHOICE: return size_t(static_cast<const asn_CHOICE_specifics_t*>(td->specifics)->struct_size);
    case BITS: return sizeof(BIT_STRING_t);
    case OCTS: return sizeof(OCTET_STRING_t);
    default: return sizeof(double);  // room for any of the leaves: long, int, BOOLEAN_t, double
    }
}

// Edge values. zol's INTEGER is 32 bits wide. The reals leave out -0.0
// and NaN, which zol writes as zero by design where asn1c writes 43 and
// 42, and subnormal doubles, which asn1c 0.9.28 writes with the hidden bit
// of a normal double set, i.e. as another number.
const long kInts[] = {0, 1, -1, 127, 128, -128, -129, 255, 256, 32767, 32768, -32769, 8388607,
                      -8388608, 8388608, 2147483647, -2147483647 - 1, 20240229, 235959};
const double kReals[] = {0.0, 1.0, -1.0, 0.5, 1.5, 0.1, -123.456, 1e-30, 3.0e300, -2.5e-10,
                         123456789.125, 9007199254740991.0, 1.0 / 3, DBL_MAX, DBL_MIN, -1e-300,
                         HUGE_VAL, -HUGE_VAL, 4294967296.0, -1e15 - 0.5, 12.25};
const size_t kStrLens[] = {0, 1, 3, 16, 127, 128, 255, 300};
const size_t kBitLens[] = {0, 1, 7, 8, 9, 16, 24, 31};
const int kListLens[] = {1, 3, 0, 2};
template <class T, size_t N>
const T& Pick(const T (&table)[N], unsigned n) {
    return table[n % N];
}

// Fills asn1c structures through asn1c's descriptors. The alternative of
// `top` is `topIndex`; everything else follows a running count.
struct PeerFiller {
    asn_TYPE_descriptor_t* top;
    int topIndex;
    unsigned seed;
    unsigned k = 0;

    unsigned Next() { return seed * 7919u + k++ * 31u; }

    void Member(const asn_TYPE_member_t& m, void* base) {
        void* p = static_cast<char*>(base) + m.memb_offset;
        if (m.flags & ATF_POINTER)
            Fill(m.type, *static_cast<void**>(p) = std::calloc(1, SizeOf(m.type)));
        else
            Fill(m.type, p);
    }

    void Fill(asn_TYPE_descriptor_t* td, void* p) {
        unsigned n = Next();
        switch (KindOf(td)) {
        case SEQ:
            for (int i = 0; i < td->elements_count; ++i)
                if (!td->elements[i].optional || Next() % 3)
                    Member(td->elements[i], p);
            break;
        case CHOICE: {
            int i = td == top ? topIndex : int(n % unsigned(td->elements_count)), present = i + 1;
            std::memcpy(static_cast<char*>(p) + static_cast<const asn_CHOICE_specifics_t*>(td->specifics)->pres_offset,
                        &present, sizeof present);
            Member(td->elements[i], p);
            break;
        }
        case SETOF:
            for (int i = Pick(kListLens, n); i > 0; --i) {
                void* e = std::calloc(1, SizeOf(td->elements[0].type));
                Fill(td->elements[0].type, e);
                asn_set_add(p, e);
            }
            break;
        case BOOL: *static_cast<BOOLEAN_t*>(p) = n % 2; break;
        case INT: *static_cast<long*>(p) = Pick(kInts, n); break;
        case ENUM: {
            auto* spec = static_cast<const asn_INTEGER_specifics_t*>(td->specifics);
            *static_cast<long*>(p) = spec->value2enum[n % unsigned(spec->map_count)].nat_value;
            break;
        }
        case REAL: *static_cast<double*>(p) = Pick(kReals, n); break;
        case OCTS: {
            // Now and then one long enough for a three-octet length.
            size_t len = n % 53 == 0 ? 70000 : Pick(kStrLens, n);
            auto* s = static_cast<OCTET_STRING_t*>(p);
            s->buf = static_cast<uint8_t*>(std::calloc(1, len + 1));
            for (size_t i = 0; i < len; ++i)
                s->buf[i] = uint8_t(n + i * 37);
            s->size = int(len);
            break;
        }
        case BITS: {
            size_t bits = Pick(kBitLens, n);
            auto* s = static_cast<BIT_STRING_t*>(p);
            s->size = int((bits + 7) / 8);
            s->buf = static_cast<uint8_t*>(std::calloc(1, size_t(s->size) + 1));
            for (int i = 0; i < s->size; ++i)
                s->buf[i] = uint8_t(n * 13 + unsigned(i) * 101);
            s->bits_unused = int(s->size * 8 - bits);
            if (s->size)
                s->buf[s->size - 1] &= uint8_t(0xFF << s->bits_unused);
            break;
        }
        default: break;  // NULL
        }
    }
};

struct Envelope {
    const char* name;             // zol's type and asn1c's
    asn_TYPE_descriptor_t* peer;  // asn1c's envelope
    const char* choice;           // the choice whose alternatives are run
    asn_TYPE_descriptor_t* peerChoice;
    int alternatives;             // how many it has
};

// ours -> asn1c -> ours.
bool OursFirst(const Envelope& env, const AsnTypeDesc* d, const AsnChoiceTypeDesc* cd, int alt, int seed,
               const std::string& where) {
    std::unique_ptr<AsnType> v(d->create()), back(d->create());
    zt::Filler filler;
    filler.seed = seed;
    int k = 0;
    filler.pick = [&](const AsnChoiceTypeDesc* c) {
        int n = 0;
        while (c->members[n].name)
            ++n;
        return c == cd ? alt : (seed * 7 + k++) % n;
    };
    filler.Fill(v.get(), d);
    PeerValue pv(env.peer);
    std::string err, der = pv.Reencoded(Encode(*v), err);
    if (der.empty())
        return Fail(where, err);
    if (!Zol::AsnBuffer::Decode(der.data(), der.size(), *back))
        return Fail(where, "we cannot decode asn1c's DER:" + Hex(der));
    Zol::Json was = Canon(Zol::ToJson(*v)), now = Canon(Zol::ToJson(*back));
    return was == now || Fail(where, "value changed\n  ours:  " + was.dump() + "\n  asn1c: " + now.dump());
}

// asn1c -> ours -> asn1c.
bool PeerFirst(const Envelope& env, const AsnTypeDesc* d, int alt, int seed, const std::string& where) {
    PeerValue pv(env.peer), back(env.peer);
    pv.s = std::calloc(1, SizeOf(env.peer));
    PeerFiller{env.peerChoice, alt, unsigned(seed)}.Fill(env.peer, pv.s);
    std::string err, der = pv.Der(err);
    if (der.empty())
        return Fail(where, err);
    std::unique_ptr<AsnType> v(d->create());
    if (!Zol::AsnBuffer::Decode(der.data(), der.size(), *v))
        return Fail(where, "we cannot decode asn1c's DER:" + Hex(der));
    std::string again = back.Reencoded(Encode(*v), err);
    if (again.empty())
        return Fail(where, err);
    return again == der || Fail(where, "value changed\n  before:" + Hex(der) + "\n  after: " + Hex(again));
}

}  // namespace

int main() {
    const Envelope envelopes[] = {
        {"ZolTransReq", &asn_DEF_ZolTransReq, "ZolTransReqChoice", &asn_DEF_ZolTransReqChoice, 107},
        {"ZolQueryReq", &asn_DEF_ZolQueryReq, "ZolQueryReqChoice", &asn_DEF_ZolQueryReqChoice, 70},
        {"ZolQueryRep", &asn_DEF_ZolQueryRep, "ZolQueryRep", &asn_DEF_ZolQueryRep, 70},
        {"ZolTransRep", &asn_DEF_ZolTransRep, "ZolTransRep", &asn_DEF_ZolTransRep, 3},
    };
    for (const Envelope& env : envelopes) {
        const AsnTypeDesc* d = Zol::FindType(env.name);
        const auto* cd = static_cast<const AsnChoiceTypeDesc*>(Zol::FindType(env.choice));
        // Both compilers must see the same alternatives in the same order.
        KindOf(env.peerChoice);
        int n = 0;
        while (cd->members[n].name && n < env.peerChoice->elements_count &&
               std::strcmp(cd->members[n].name, env.peerChoice->elements[n].name) == 0)
            ++n;
        if (n != env.alternatives || env.peerChoice->elements_count != n || cd->members[n].name) {
            Fail(env.name, "the alternatives of zol and asn1c part at " + std::to_string(n));
            continue;
        }
        for (int i = 0; i < n; ++i)
            for (int seed = 1; seed <= 3; ++seed) {
                std::string where = std::string(env.name) + " " + cd->members[i].name + " seed " + std::to_string(seed);
                passed += OursFirst(env, d, cd, i, seed, where + " (ours first)");
                passed += PeerFirst(env, d, i, seed, where + " (asn1c first)");
            }
    }
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed ? 1 : 0;
}
