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
// mantissa octets less the trailing zero ones. Where the two encoders
// write different bytes for the same value, the differing leaves are
// counted by tag and shown once each.
//
// Prints a line per failure and ends with "N passed, N failed".

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include <zol/zol.h>

#include "walk.h"

#include "BIT_STRING.h"
#include "INTEGER.h"
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
#include "xer_encoder.h"

namespace {

int passed = 0;
int failed = 0;

// Upper-case hex octets separated by blanks.
std::string Hex(const char* data, size_t len) {
    std::string out;
    char buf[4];
    for (size_t i = 0; i < len; ++i) {
        std::snprintf(buf, sizeof buf, i ? " %02X" : "%02X", static_cast<unsigned char>(data[i]));
        out += buf;
    }
    return out;
}

std::string Hex(const std::string& s, size_t max = 96) {
    std::string h = Hex(s.data(), std::min(s.size(), max));
    return s.size() > max ? h + " ... (" + std::to_string(s.size()) + " bytes)" : h;
}

void Fail(const std::string& where, const std::string& what) {
    ++failed;
    std::printf("FAIL %s: %s\n", where.c_str(), what.c_str());
}

// ---------------------------------------------------------------------------
// zol's side

std::string Encode(const AsnType& v) {
    static std::vector<char> block(1 << 22);
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(block.data(), block.size(), v, len);
    return p ? std::string(p, len) : std::string();
}

std::set<std::string> oursTypes;  // named types met by Canon
long oursLeaves = 0;              // leaves it wrote while tallying
bool tally = false;

// The value as text in which SET OF elements stand sorted, so that two
// values equal up to list order print the same. Reals are written exactly.
void Canon(AsnType* v, const AsnTypeDesc* d, std::string& out) {
    for (const AsnTypeDesc* a = d; tally && a; a = AsnAliasBase(a))
        if (a->name)
            oursTypes.insert(a->name);
    const AsnTypeDesc* r = AsnResolved(d);
    char buf[64];
    switch (r->type) {
    case AsnTypeDesc::SEQUENCE: {
        out += "{";
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m) {
            out += m->name;
            out += "=";
            if (AsnType* member = v->_getref(m->name, false))
                Canon(member, m->desc, out);
            else
                out += "-";
            out += ";";
        }
        out += "}";
        return;
    }
    case AsnTypeDesc::CHOICE:
        for (const AsnChoiceMemberDesc* m = static_cast<const AsnChoiceTypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* alt = v->_getref(m->name, false)) {
                out += m->name;
                out += ":";
                Canon(alt, m->desc, out);
                return;
            }
        out += "<no alternative>";
        return;
    case AsnTypeDesc::SET_OF: {
        std::vector<std::string> elems;
        const AsnTypeDesc* elem = static_cast<const AsnListTypeDesc*>(r)->base;
        AsnForEachElement(*v, [&](AsnType& e) {
            elems.emplace_back();
            Canon(&e, elem, elems.back());
        });
        std::sort(elems.begin(), elems.end());
        out += "[";
        for (const std::string& e : elems)
            out += e + ",";
        out += "]";
        return;
    }
    case AsnTypeDesc::INTEGER:
    case AsnTypeDesc::ENUMERATED:
        out += std::to_string(static_cast<AsnInt*>(v)->value);
        break;
    case AsnTypeDesc::BOOLEAN:
        out += static_cast<AsnBool*>(v)->value ? "T" : "F";
        break;
    case AsnTypeDesc::REAL:
        std::snprintf(buf, sizeof buf, "%a", static_cast<AsnReal*>(v)->value);
        out += buf;
        break;
    case AsnTypeDesc::OCTET_STRING: {
        auto* o = static_cast<AsnOcts*>(v);
        out += "'" + Hex(o->octs ? o->octs : "", o->octetLen) + "'H";
        break;
    }
    case AsnTypeDesc::BIT_STRING: {
        auto* b = static_cast<AsnBits*>(v);
        out += std::to_string(b->bitLen) + ":'" + Hex(b->bits ? b->bits : "", (b->bitLen + 7) / 8) + "'B";
        break;
    }
    case AsnTypeDesc::NUL_:
        out += "NULL";
        break;
    default:
        out += "<?>";
        break;
    }
    oursLeaves += tally;
}

std::string Canon(AsnType& v, bool count = false) {
    std::string out;
    tally = count;
    Canon(&v, v._getdesc(), out);
    tally = false;
    return out;
}

// Decodes with standard error held back; it is shown only on failure.
bool OursDecode(const std::string& bytes, AsnType& v, std::string& err) {
    std::fflush(stderr);
    std::FILE* tmp = std::tmpfile();
    int saved = dup(fileno(stderr));
    dup2(fileno(tmp), fileno(stderr));
    int r = Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), v);
    std::fflush(stderr);
    dup2(saved, fileno(stderr));
    close(saved);
    std::rewind(tmp);
    char line[512];
    err.clear();
    while (std::fgets(line, sizeof line, tmp))
        err += line;
    std::fclose(tmp);
    return r == 1;
}

// ---------------------------------------------------------------------------
// asn1c's side

int Append(const void* data, size_t size, void* key) {
    static_cast<std::string*>(key)->append(static_cast<const char*>(data), size);
    return 0;
}

// DER of a value, or "" with `err` set when asn1c refuses it.
std::string PeerEncode(asn_TYPE_descriptor_t* td, void* s, std::string& err) {
    std::string out;
    asn_enc_rval_t r = der_encode(td, s, Append, &out);
    if (r.encoded < 0) {
        err = std::string("der_encode failed at ") + (r.failed_type ? r.failed_type->name : "?");
        return std::string();
    }
    return out;
}

// The lines around the first place where two texts differ.
std::string FirstDifference(const std::string& was, const std::string& now) {
    auto lines = [](const std::string& s) {
        std::vector<std::string> v;
        size_t i = 0, j;
        while ((j = s.find('\n', i)) != std::string::npos) {
            v.push_back(s.substr(i, j - i));
            i = j + 1;
        }
        v.push_back(s.substr(i));
        return v;
    };
    std::vector<std::string> a = lines(was), b = lines(now);
    size_t i = 0;
    while (i < a.size() && i < b.size() && a[i] == b[i])
        ++i;
    std::string out;
    for (size_t k = i > 4 ? i - 4 : 0; k < i; ++k)
        out += "    " + a[k] + "\n";
    out += "  before: " + (i < a.size() ? a[i] : "<end>") + "\n";
    out += "  after:  " + (i < b.size() ? b[i] : "<end>");
    return out;
}

// A value decoded by asn1c, owned by the holder, or null with `err` set.
struct PeerValue {
    asn_TYPE_descriptor_t* td;
    void* s = nullptr;
    explicit PeerValue(asn_TYPE_descriptor_t* t) : td(t) {}
    ~PeerValue() { ASN_STRUCT_FREE(*td, s); }
    PeerValue(const PeerValue&) = delete;
    PeerValue& operator=(const PeerValue&) = delete;

    bool Decode(const std::string& bytes, std::string& err) {
        asn_dec_rval_t r = ber_decode(nullptr, td, &s, bytes.data(), bytes.size());
        if (r.code != RC_OK || r.consumed != bytes.size()) {
            err = "ber_decode gave code " + std::to_string(int(r.code)) + " after " + std::to_string(r.consumed) +
                  " of " + std::to_string(bytes.size()) + " bytes";
            return false;
        }
        return true;
    }
    std::string Xer() const {
        std::string out;
        xer_encode(td, s, XER_F_BASIC, Append, &out);
        return out;
    }
};

enum Kind { BOOL, INT, BITS, OCTS, NUL, REAL, ENUM, SEQ, SETOF, CHOICE };

// The kind of a type. A type defined as another one takes that one's
// members and functions the first time it is used; freeing null does it.
Kind KindOf(asn_TYPE_descriptor_t* td) {
    td->free_struct(td, nullptr, 0);
    if (td->tags_count == 0)
        return CHOICE;
    switch (BER_TAG_VALUE(td->tags[td->tags_count - 1])) {
    case 1: return BOOL;
    case 2: return INT;
    case 3: return BITS;
    case 4: return OCTS;
    case 5: return NUL;
    case 9: return REAL;
    case 10: return ENUM;
    case 16: return SEQ;
    case 17: return SETOF;
    }
    std::fprintf(stderr, "asn1c type %s has an unexpected tag\n", td->name);
    std::abort();
}

size_t SizeOf(asn_TYPE_descriptor_t* td) {
    switch (KindOf(td)) {
    case BOOL: return sizeof(BOOLEAN_t);
    case INT:
    case ENUM: return sizeof(long);
    case BITS: return sizeof(BIT_STRING_t);
    case OCTS: return sizeof(OCTET_STRING_t);
    case NUL: return sizeof(int);
    case REAL: return sizeof(double);
    case SEQ: return size_t(static_cast<const asn_SEQUENCE_specifics_t*>(td->specifics)->struct_size);
    case SETOF: return size_t(static_cast<const asn_SET_OF_specifics_t*>(td->specifics)->struct_size);
    case CHOICE: return size_t(static_cast<const asn_CHOICE_specifics_t*>(td->specifics)->struct_size);
    }
    return 0;
}

// Edge values. zol's INTEGER is 32 bits wide. The reals leave out -0.0
// and NaN, which zol writes as zero by design where asn1c writes 43 and
// 42, and subnormal doubles, which asn1c 0.9.28 writes with the hidden bit
// of a normal double set, i.e. as another number (1e-310 comes back from
// its own encoder and decoder as 0x0.01012688b70e6p-1022).
const long kInts[] = {0, 1, -1, 127, 128, -128, -129, 255, 256, 32767, 32768, -32769, 8388607,
                      -8388608, 8388608, 2147483647, -2147483647 - 1, 20240229, 235959};
const double kReals[] = {0.0, 1.0, -1.0, 0.5, 1.5, 0.1, -123.456, 1e-30, 3.0e300, -2.5e-10,
                         123456789.125, 9007199254740991.0, 1.0 / 3, DBL_MAX, DBL_MIN, -1e-300,
                         HUGE_VAL, -HUGE_VAL, 4294967296.0, -1e15 - 0.5, 12.25};
const size_t kStrLens[] = {0, 1, 3, 16, 127, 128, 255, 300};
const size_t kBitLens[] = {0, 1, 7, 8, 9, 16, 24, 31};
const int kListLens[] = {1, 3, 0, 2};

std::set<std::string> peerTypes;  // asn1c types met by PeerFiller
long peerLeaves = 0;              // leaves it filled

// Fills asn1c structures through asn1c's descriptors. The alternative of
// `top` is `topIndex`; everything else follows a running count.
struct PeerFiller {
    asn_TYPE_descriptor_t* top;
    int topIndex;
    unsigned seed;
    unsigned k = 0;

    unsigned Next() { return seed * 7919u + k++ * 31u; }

    void FillPointer(asn_TYPE_descriptor_t* td, void** slot) {
        *slot = std::calloc(1, SizeOf(td));
        Fill(td, *slot);
    }

    void Member(const asn_TYPE_member_t& m, void* base) {
        void* p = static_cast<char*>(base) + m.memb_offset;
        if (m.flags & ATF_POINTER)
            FillPointer(m.type, static_cast<void**>(p));
        else
            Fill(m.type, p);
    }

    void Fill(asn_TYPE_descriptor_t* td, void* p) {
        Kind kind = KindOf(td);
        peerTypes.insert(td->name);
        unsigned n = Next();
        switch (kind) {
        case SEQ:
            for (int i = 0; i < td->elements_count; ++i) {
                const asn_TYPE_member_t& m = td->elements[i];
                if (m.optional && Next() % 3 == 0)
                    continue;
                Member(m, p);
            }
            return;
        case CHOICE: {
            auto* spec = static_cast<const asn_CHOICE_specifics_t*>(td->specifics);
            int i = td == top ? topIndex : int(n % unsigned(td->elements_count));
            int present = i + 1;
            std::memcpy(static_cast<char*>(p) + spec->pres_offset, &present, sizeof present);
            Member(td->elements[i], p);
            return;
        }
        case SETOF: {
            asn_TYPE_descriptor_t* elem = td->elements[0].type;
            for (int i = kListLens[n % 4]; i > 0; --i) {
                void* e = nullptr;
                FillPointer(elem, &e);
                asn_set_add(p, e);
            }
            return;
        }
        case BOOL:
            *static_cast<BOOLEAN_t*>(p) = n % 2;
            break;
        case INT:
            *static_cast<long*>(p) = kInts[n % (sizeof kInts / sizeof *kInts)];
            break;
        case ENUM: {
            auto* spec = static_cast<const asn_INTEGER_specifics_t*>(td->specifics);
            *static_cast<long*>(p) = spec->value2enum[n % unsigned(spec->map_count)].nat_value;
            break;
        }
        case REAL:
            *static_cast<double*>(p) = kReals[n % (sizeof kReals / sizeof *kReals)];
            break;
        case OCTS: {
            // Now and then one long enough for a three-octet length.
            size_t len = n % 53 == 0 ? 70000 : kStrLens[n % (sizeof kStrLens / sizeof *kStrLens)];
            auto* s = static_cast<OCTET_STRING_t*>(p);
            s->buf = static_cast<uint8_t*>(std::calloc(1, len + 1));
            for (size_t i = 0; i < len; ++i)
                s->buf[i] = uint8_t(n + i * 37);
            s->size = int(len);
            break;
        }
        case BITS: {
            size_t bits = kBitLens[n % (sizeof kBitLens / sizeof *kBitLens)];
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
        case NUL:
            break;
        }
        ++peerLeaves;
    }
};

// ---------------------------------------------------------------------------
// Where two encodings of one value differ: both are walked as TLV trees
// side by side, and each primitive leaf that differs is counted under its
// tag, as is each list whose elements differ only in order.

struct Tlv {
    std::string tag;
    bool constructed;
    std::string content;
};

bool ParseTlvs(const std::string& s, std::vector<Tlv>& out) {
    for (size_t i = 0; i < s.size();) {
        AsnTlv tlv;
        if (AsnReadTlv(s.data() + i, s.size() - i, tlv) != AsnTlvComplete)
            return false;
        out.push_back({s.substr(i, BTagLen(tlv.tag)), (tlv.tag & AsnConstructedBit) != 0,
                       s.substr(i + tlv.headerSize, tlv.totalSize - tlv.headerSize)});
        i += tlv.totalSize;
    }
    return true;
}

struct DiffStat {
    long count = 0;
    std::string ours, peer;
};
std::map<std::string, DiffStat> diffs;

void Note(const std::string& what, const std::string& ours, const std::string& peer) {
    DiffStat& d = diffs[what];
    if (d.count++ == 0) {
        d.ours = ours;
        d.peer = peer;
    }
}

void Differences(const std::string& ours, const std::string& peer) {
    std::vector<Tlv> a, b;
    if (!ParseTlvs(ours, a) || !ParseTlvs(peer, b) || a.size() != b.size()) {
        Note("structure", Hex(ours, 24), Hex(peer, 24));
        return;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i].tag == b[i].tag && a[i].content == b[i].content)
            continue;
        if (a[i].tag != b[i].tag || a[i].constructed != b[i].constructed) {
            Note("tag", Hex(a[i].tag), Hex(b[i].tag));
        } else if (!a[i].constructed) {
            Note("primitive " + Hex(a[i].tag), Hex(a[i].content, 24), Hex(b[i].content, 24));
        } else {
            std::vector<Tlv> ca, cb;
            if (a[i].tag == "\x31" && ParseTlvs(a[i].content, ca) && ParseTlvs(b[i].content, cb)) {
                auto key = [](const Tlv& t) { return t.tag + t.content; };
                std::vector<std::string> ka, kb;
                for (const Tlv& t : ca)
                    ka.push_back(key(t));
                for (const Tlv& t : cb)
                    kb.push_back(key(t));
                std::sort(ka.begin(), ka.end());
                std::sort(kb.begin(), kb.end());
                if (ka == kb) {
                    Note("SET OF order", Hex(a[i].content, 24), Hex(b[i].content, 24));
                    continue;
                }
            }
            Differences(a[i].content, b[i].content);
        }
    }
}

// ---------------------------------------------------------------------------

struct Envelope {
    const char* name;                 // zol's type and asn1c's
    asn_TYPE_descriptor_t* peer;      // asn1c's envelope
    const char* choice;               // the choice whose alternatives are run
    asn_TYPE_descriptor_t* peerChoice;
    int alternatives;                 // how many it has
};

const int kSeeds = 3;

struct Totals {
    int values = 0, sameBytes = 0;
    size_t largest = 0;  // bytes of the longest encoding
};

// ours -> asn1c -> ours.
void OursFirst(const Envelope& env, const AsnTypeDesc* d, const AsnChoiceTypeDesc* cd, int alt, int seed,
               Totals& t) {
    std::string where = std::string(env.name) + " " + cd->members[alt].name + " seed " + std::to_string(seed) +
                        " (ours first)";
    std::unique_ptr<AsnType> v(d->create());
    zt::Filler filler;
    filler.seed = seed;
    int k = 0;
    filler.pick = [&](const AsnChoiceTypeDesc* c) {
        if (c == cd)
            return alt;
        int n = 0;
        while (c->members[n].name)
            ++n;
        return (seed * 7 + k++) % n;
    };
    filler.Fill(v.get(), d);
    std::string ours = Encode(*v);

    PeerValue pv(env.peer);
    std::string err;
    if (!pv.Decode(ours, err))
        return Fail(where, "asn1c cannot decode ours: " + err + "\n  " + Hex(ours, 400));
    std::string der = PeerEncode(env.peer, pv.s, err);
    if (der.empty())
        return Fail(where, err);

    std::unique_ptr<AsnType> back(d->create());
    if (!OursDecode(der, *back, err))
        return Fail(where, "we cannot decode asn1c's DER:\n" + err + "  " + Hex(der, 400));
    std::string was = Canon(*v, true), now = Canon(*back);
    if (was != now)
        return Fail(where, "value changed\n  ours:  " + was + "\n  asn1c: " + now);
    ++t.values;
    t.largest = std::max(t.largest, der.size());
    if (ours == der)
        ++t.sameBytes;
    else
        Differences(ours, der);
    ++passed;
}

// asn1c -> ours -> asn1c.
void PeerFirst(const Envelope& env, const AsnTypeDesc* d, int alt, int seed, Totals& t) {
    std::string where = std::string(env.name) + " " + env.peerChoice->elements[alt].name + " seed " +
                        std::to_string(seed) + " (asn1c first)";
    PeerValue pv(env.peer);
    pv.s = std::calloc(1, SizeOf(env.peer));
    PeerFiller filler{env.peerChoice, alt, unsigned(seed)};
    filler.Fill(env.peer, pv.s);
    std::string err;
    std::string der = PeerEncode(env.peer, pv.s, err);
    if (der.empty())
        return Fail(where, err);

    std::unique_ptr<AsnType> v(d->create());
    if (!OursDecode(der, *v, err))
        return Fail(where, "we cannot decode asn1c's DER:\n" + err + "  " + Hex(der, 400) + "\n" + pv.Xer());
    std::string ours = Encode(*v);

    PeerValue back(env.peer);
    if (!back.Decode(ours, err))
        return Fail(where, "asn1c cannot decode ours: " + err + "\n  " + Hex(ours, 400));
    std::string again = PeerEncode(env.peer, back.s, err);
    if (again != der) {
        // XER shows the value but not every bit of a real, so the bytes
        // where the two DER encodings part come first.
        size_t i = 0;
        while (i < der.size() && i < again.size() && der[i] == again[i])
            ++i;
        size_t from = i > 16 ? i - 16 : 0;
        return Fail(where, "value changed; DER from byte " + std::to_string(from) + "\n  before: " +
                               Hex(der.substr(from, 40)) + "\n  after:  " + Hex(again.substr(from, 40)) + "\n" +
                               FirstDifference(pv.Xer(), back.Xer()));
    }
    ++t.values;
    t.largest = std::max(t.largest, der.size());
    if (ours == der)
        ++t.sameBytes;
    else
        Differences(ours, der);
    ++passed;
}

}  // namespace

int main() {
    const Envelope envelopes[] = {
        {"ZolTransReq", &asn_DEF_ZolTransReq, "ZolTransReqChoice", &asn_DEF_ZolTransReqChoice, 107},
        {"ZolQueryReq", &asn_DEF_ZolQueryReq, "ZolQueryReqChoice", &asn_DEF_ZolQueryReqChoice, 70},
        {"ZolQueryRep", &asn_DEF_ZolQueryRep, "ZolQueryRep", &asn_DEF_ZolQueryRep, 70},
        {"ZolTransRep", &asn_DEF_ZolTransRep, "ZolTransRep", &asn_DEF_ZolTransRep, 3},
    };
    Totals ours, peer;
    for (const Envelope& env : envelopes) {
        const AsnTypeDesc* d = Zol::FindType(env.name);
        const auto* cd = static_cast<const AsnChoiceTypeDesc*>(Zol::FindType(env.choice));
        if (!d || !cd) {
            Fail(env.name, "no such type in zol");
            continue;
        }
        // Both compilers must see the same alternatives in the same order.
        KindOf(env.peerChoice);
        int n = 0;
        while (cd->members[n].name)
            ++n;
        if (n != env.alternatives || env.peerChoice->elements_count != n) {
            Fail(env.name, "alternatives: zol " + std::to_string(n) + ", asn1c " +
                               std::to_string(env.peerChoice->elements_count) + ", expected " +
                               std::to_string(env.alternatives));
            continue;
        }
        for (int i = 0; i < n; ++i) {
            if (std::strcmp(cd->members[i].name, env.peerChoice->elements[i].name) != 0) {
                Fail(env.name, std::string("alternative ") + cd->members[i].name + " is " +
                                   env.peerChoice->elements[i].name + " in asn1c");
                continue;
            }
            for (int seed = 1; seed <= kSeeds; ++seed) {
                OursFirst(env, d, cd, i, seed, ours);
                PeerFirst(env, d, i, seed, peer);
            }
        }
    }

    std::printf("ours first:  %d values equal after asn1c, %d of them byte for byte; %zu types, %ld leaves, "
                "up to %zu bytes\n",
                ours.values, ours.sameBytes, oursTypes.size(), oursLeaves, ours.largest);
    std::printf("asn1c first: %d values equal after zol, %d of them byte for byte; %zu types, %ld leaves, "
                "up to %zu bytes\n",
                peer.values, peer.sameBytes, peerTypes.size(), peerLeaves, peer.largest);
    std::string missed;
    int all = 0, unreached = 0;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m)
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t, ++all)
            if (!oursTypes.count((*t)->name)) {
                ++unreached;
                missed += std::string(" ") + (*t)->name;
            }
    std::printf("zol types reached from the envelopes: %d of %d; not reached:%s\n", all - unreached, all,
                missed.c_str());
    for (const auto& [what, d] : diffs)
        std::printf("  bytes differ, %s: %ld times, e.g. ours %s, asn1c %s\n", what.c_str(), d.count, d.ours.c_str(),
                    d.peer.c_str());
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed ? 1 : 0;
}
