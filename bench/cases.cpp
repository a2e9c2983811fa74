#include "cases.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "ber_decoder.h"
#include "der_encoder.h"
#include "messages.h"

// asn1c's descriptors of the same types. Its headers are not included:
// they declare C structures under the names of zol's classes.
extern "C" {
extern asn_TYPE_descriptor_t asn_DEF_ZolTransReq;
extern asn_TYPE_descriptor_t asn_DEF_ZolTransRep;
extern asn_TYPE_descriptor_t asn_DEF_ZolQueryRep;
extern asn_TYPE_descriptor_t asn_DEF_ZolSecBoardRep;
extern asn_TYPE_descriptor_t asn_DEF_ZolOrderbookByPriceRep;
}

namespace zb {

using namespace Zol;
using namespace zmsg;

namespace {

[[noreturn]] void Die(const std::string& what) {
    std::fprintf(stderr, "zol_bench: %s\n", what.c_str());
    std::exit(2);
}

std::string Encoded(const AsnType& v) {
    static std::vector<char> block(1 << 20);
    size_t len = 0;
    char* p = AsnBuffer::Encode(block.data(), block.size(), v, len);
    if (!p)
        Die("a value does not encode");
    return std::string(p, len);
}

std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

bool IsComposite(const AsnTypeDesc* d) {
    AsnTypeDesc::Type t = AsnResolved(d)->type;
    return t == AsnTypeDesc::SEQUENCE || t == AsnTypeDesc::CHOICE;
}

// A burst of order reports as a client reads them from one block
// (Report).
const long kBurst = 10000;

// --- constructed strings ----------------------------------------------------

// The kinds of the primitive leaves of `v` in the order they stand on the
// wire: true for an octet string.
void LeafKinds(AsnType* v, const AsnTypeDesc* d, std::vector<bool>& out) {
    const AsnTypeDesc* r = AsnResolved(d);
    switch (r->type) {
    case AsnTypeDesc::SEQUENCE:
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* member = v->_getref(m->name, false))
                LeafKinds(member, m->desc, out);
        break;
    case AsnTypeDesc::CHOICE:
        for (const AsnChoiceMemberDesc* m = static_cast<const AsnChoiceTypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* alt = v->_getref(m->name, false)) {
                LeafKinds(alt, m->desc, out);
                break;
            }
        break;
    case AsnTypeDesc::SET_OF:
        AsnForEachElement(*v, [&](AsnType& e) { LeafKinds(&e, static_cast<const AsnListTypeDesc*>(r)->base, out); });
        break;
    default:
        out.push_back(r->type == AsnTypeDesc::OCTET_STRING);
        break;
    }
}

std::string DefiniteLen(size_t n) {
    std::string out;
    if (n < 0x80)
        return std::string(1, char(n));
    while (n) {
        out.insert(out.begin(), char(n & 0xFF));
        n >>= 8;
    }
    return char(0x80 | out.size()) + out;
}

// Rewrites the elements of `in` from `at` to `end`: every octet string
// becomes constructed with an indefinite length, its text cut into pieces
// of at most eight octets; everything else keeps its form, constructed
// elements with their lengths recomputed.
std::string Rewrite(const std::string& in, size_t& at, size_t end, const std::vector<bool>& kinds, size_t& leaf) {
    std::string out;
    while (at < end) {
        AsnTlv tlv;
        if (AsnReadTlv(in.data() + at, end - at, tlv) != AsnTlvComplete || tlv.length == IndefiniteLen)
            Die("constructed-string rewrite met an element it does not take");
        std::string tag = in.substr(at, BTagLen(tlv.tag));
        size_t len = tlv.length;
        at += tlv.headerSize;
        if (tlv.tag & AsnConstructedBit) {
            std::string content = Rewrite(in, at, at + len, kinds, leaf);
            out += tag + DefiniteLen(content.size()) + content;
        } else if (kinds.at(leaf++)) {
            tag[0] = char(tag[0] | 0x20);
            out += tag + '\x80';
            for (size_t i = 0; i < len; i += 8) {
                size_t piece = std::min<size_t>(8, len - i);
                out += '\x04' + DefiniteLen(piece) + in.substr(at + i, piece);
            }
            out += std::string(2, '\0');
            at += len;
        } else {
            out += tag + DefiniteLen(len) + in.substr(at, len);
            at += len;
        }
    }
    return out;
}

std::string ConstructedStrings(AsnType& v) {
    std::vector<bool> kinds;
    LeafKinds(&v, v._getdesc(), kinds);
    std::string in = Encoded(v);
    size_t at = 0, leaf = 0;
    std::string out = Rewrite(in, at, in.size(), kinds, leaf);
    if (leaf != kinds.size())
        Die("constructed-string rewrite lost its place");
    return out;
}

// --- the loops that need the class ------------------------------------------

template <class T>
void DecodeLoop(benchmark::State& st, const Case& c) {
    const char* bytes = c.bytes.data();
    size_t len = c.bytes.size();
    for (auto _ : st) {
        T v;
        int ok = AsnBuffer::Decode(bytes, len, v);
        benchmark::DoNotOptimize(ok);
        benchmark::DoNotOptimize(&v);
    }
}

// Calls `each(bytes, size)` for every message of a block of messages back
// to back, each framed by the head of its element as a reader of a stream
// frames them; false if one is cut or malformed.
template <class F>
bool ForEachMessage(const std::string& block, F each) {
    const char* p = block.data();
    const char* end = p + block.size();
    while (p < end) {
        AsnTlv tlv;
        if (AsnReadTlv(p, size_t(end - p), tlv) != AsnTlvComplete)
            return false;
        each(p, tlv.totalSize);
        p += tlv.totalSize;
    }
    return true;
}

// A burst: every message decoded into a fresh value, destroyed before
// the next. The block is the calling thread's own copy, so that threads
// decoding at once share nothing but the code.
template <class T>
void BurstLoop(benchmark::State& st, const Case& c) {
    const std::string mine = c.bytes;
    for (auto _ : st)
        ForEachMessage(mine, [](const char* p, size_t n) {
            T v;
            int ok = AsnBuffer::Decode(p, n, v);
            benchmark::DoNotOptimize(ok);
            benchmark::DoNotOptimize(&v);
        });
}

template <class T>
bool BurstOnce(const std::string& bytes) {
    bool ok = true;
    return ForEachMessage(bytes, [&ok](const char* p, size_t n) {
        T v;
        ok = AsnBuffer::Decode(p, n, v) == 1 && ok;
    }) && ok;
}

template <class T>
void MergeLoop(benchmark::State& st, const Case& c) {
    T& held = static_cast<T&>(*c.held);
    const T& report = static_cast<const T&>(*c.value);
    for (auto _ : st) {
        held |= report;
        benchmark::DoNotOptimize(&held);
    }
}

template <class T>
void MergeOnce(const Case& c) {
    static_cast<T&>(*c.held) |= static_cast<const T&>(*c.value);
}

template <class T>
bool DecodeOnce(const std::string& bytes) {
    T v;
    return AsnBuffer::Decode(bytes.data(), bytes.size(), v) == 1;
}

template <class T>
Case Make(const char* name, std::unique_ptr<T> value, asn_TYPE_descriptor_t* peer, long expected,
          const char* rule) {
    Case c;
    c.name = name;
    c.bytes = Encoded(*value);
    c.held.reset(value->Clone());
    c.value = std::move(value);
    c.peerType = peer;
    c.expectedDecodeAllocs = expected;
    c.allocRule = rule;
    c.decode = DecodeLoop<T>;
    c.merge = MergeLoop<T>;
    c.decodeOnce = DecodeOnce<T>;
    c.mergeOnce = MergeOnce<T>;
    return c;
}

int Collect(const void* data, size_t size, void* key) {
    static_cast<std::string*>(key)->append(static_cast<const char*>(data), size);
    return 0;
}

// Both codecs must read each case, and each must read what the other
// writes, before anything is timed.
void Check(Case& c) {
    const AsnTypeDesc* desc = c.value->_getdesc();
    std::unique_ptr<AsnType> ours(desc->create());
    if (AsnBuffer::Decode(c.bytes.data(), c.bytes.size(), *ours) != 1)
        Die(c.name + ": zol does not decode its bytes");
    if (Printed(*ours) != Printed(*c.value))
        Die(c.name + ": zol decodes another value");

    asn_dec_rval_t r = ber_decode(nullptr, c.peerType, &c.peerValue, c.bytes.data(), c.bytes.size());
    if (r.code != RC_OK || r.consumed != c.bytes.size())
        Die(c.name + ": asn1c does not decode the bytes");
    std::string der;
    asn_enc_rval_t e = der_encode(c.peerType, c.peerValue, Collect, &der);
    if (e.encoded < 0)
        Die(c.name + ": asn1c does not encode the value");
    c.peerDerLen = der.size();
    std::unique_ptr<AsnType> back(desc->create());
    if (AsnBuffer::Decode(der.data(), der.size(), *back) != 1)
        Die(c.name + ": zol does not decode asn1c's DER");
    // DER sorts the elements of a SET OF, so a list may come back in
    // another order: the same printed characters, differently arranged.
    std::string a = Printed(*back), b = Printed(*c.value);
    if (a != b) {
        std::sort(a.begin(), a.end());
        std::sort(b.begin(), b.end());
        if (a != b)
            Die(c.name + ": asn1c's DER holds another value");
    }
    long rule = RuleAllocs(ours.get());
    if (rule != c.expectedDecodeAllocs)
        Die(c.name + ": the allocations written down (" + std::to_string(c.expectedDecodeAllocs) +
            ") are not what the rules give (" + std::to_string(rule) + ")");
}

// The burst: zol reads every message as the report it was made from,
// with the allocations the rules give, and asn1c reads the block whole,
// one message after another.
void CheckBurst(Case& c) {
    long i = 0, allocs = 0;
    bool same = ForEachMessage(c.bytes, [&](const char* p, size_t n) {
        ZolQueryRep v;
        if (AsnBuffer::Decode(p, n, v) != 1 || Printed(v) != Printed(*Report(i++)))
            Die(c.name + ": zol does not decode message " + std::to_string(i));
        allocs += RuleAllocs(&v);
    });
    if (!same || i != c.messages)
        Die(c.name + ": the block does not frame into its messages");
    for (size_t at = 0; at < c.bytes.size();) {
        void* v = nullptr;
        asn_dec_rval_t r = ber_decode(nullptr, c.peerType, &v, c.bytes.data() + at, c.bytes.size() - at);
        ASN_STRUCT_FREE(*c.peerType, v);
        if (r.code != RC_OK)
            Die(c.name + ": asn1c does not decode the block");
        at += r.consumed;
    }
    if (allocs != c.expectedDecodeAllocs)
        Die(c.name + ": the allocations written down (" + std::to_string(c.expectedDecodeAllocs) +
            ") are not what the rules give (" + std::to_string(allocs) + ")");
}

}  // namespace

Case::~Case() {
    if (peerValue)
        ASN_STRUCT_FREE(*peerType, peerValue);
}

long RuleAllocs(AsnType* v) {
    long n = 0;
    const AsnTypeDesc* r = AsnResolved(v->_getdesc());
    switch (r->type) {
    case AsnTypeDesc::SEQUENCE:
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* member = v->_getref(m->name, false))
                n += (m->optional || IsComposite(m->desc) ? 1 : 0) + RuleAllocs(member);
        break;
    case AsnTypeDesc::CHOICE:
        for (const AsnChoiceMemberDesc* m = static_cast<const AsnChoiceTypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* alt = v->_getref(m->name, false)) {
                n += 1 + RuleAllocs(alt);
                break;
            }
        break;
    case AsnTypeDesc::SET_OF:
        AsnForEachElement(*v, [&n](AsnType& e) { n += 2 + RuleAllocs(&e); });
        break;
    case AsnTypeDesc::OCTET_STRING:
    case AsnTypeDesc::BIT_STRING:
        n = 1;
        break;
    default:
        break;
    }
    return n;
}

std::vector<Case> BuildCases() {
    std::vector<Case> cases;
    cases.push_back(Make("TransReq new order", NewOrder(), &asn_DEF_ZolTransReq, 19,
                         "13 objects (upTransMsg, its alternative, order, secBoardId, boardId, "
                         "visibleQuantity, price, decimals, trdAccId, brokerRef, purgeOnLogoff, "
                         "positionType, execUserId) + 6 strings (userId, secCode, boardId, trdAccId, "
                         "brokerRef, execUserId)"));
    cases.push_back(Make("TransRep replyOK", ReplyOK(), &asn_DEF_ZolTransRep, 5,
                         "3 objects (the alternative, extraInfo, replyHint) + 2 strings "
                         "(infoMessage, extraInfo)"));
    cases.push_back(Make("QueryRep orderRep", OrderRecord(), &asn_DEF_ZolQueryRep, 34,
                         "22 objects (the alternative; seqContext, seqNum, recNum; orderId, speedIndex; "
                         "statics, secBoardId, price, brokerRef, purgeOnLogoff, entryTime, trdAccId, "
                         "details and 4 of its members, execUserId; dynamics, matchValue, "
                         "averagePrice) + 3 decimals + 9 strings (orderNo, secCode, boardId, instrId, "
                         "userId, firmId, brokerRef, trdAccId, execUserId)"));
    cases.push_back(Make("SecBoardRep full", FullSecBoard(), &asn_DEF_ZolSecBoardRep, 173,
                         "102 pointer members (seqContext, seqNum, recNum, secBoardId, statics, "
                         "dynamics; 18 optional members and 2 required sequences of statics; all 76 "
                         "of dynamics) + 49 decimals of 49 fixed reals + 22 strings (21 texts, "
                         "1 bit string)"));
    cases.push_back(Make("OrderbookByPrice 2x200", Book(), &asn_DEF_ZolOrderbookByPriceRep, 2803,
                         "3 (secBoardId, secCode, boardId) + 400 levels x 7 (list node, element, "
                         "price, decimals, depth, numOrders, numFirms)"));

    // The new order again, every text as 24 80 04 .. 04 .. 00 00.
    Case cons = Make("TransReq cons. strings", NewOrder(), &asn_DEF_ZolTransReq, 19,
                     "as the new order: a constructed string is gathered into one allocation");
    cons.bytes = ConstructedStrings(*cons.value);
    cons.decodeOnly = true;
    cases.push_back(std::move(cons));

    for (Case& c : cases)
        Check(c);

    Case burst = Make("QueryRep burst x10000", Report(0), &asn_DEF_ZolQueryRep, 1000 * 34 + 9000 * 12,
                      "1000 reports with statics x 34 (as the order record) + 9000 without x 12 "
                      "(the statics hold 13 objects, a decimals and 8 strings)");
    burst.bytes.clear();
    for (long i = 0; i < kBurst; ++i)
        burst.bytes += Encoded(*Report(i));
    burst.messages = kBurst;
    burst.decodeOnly = true;
    burst.decode = BurstLoop<ZolQueryRep>;
    burst.decodeOnce = BurstOnce<ZolQueryRep>;
    CheckBurst(burst);
    cases.push_back(std::move(burst));
    return cases;
}

}  // namespace zb
