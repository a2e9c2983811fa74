// The universal classes beyond what rows of values say (int.txt, real.txt,
// octs.txt, bits.txt, oid.txt, external.txt): object identifiers built
// from arcs and compared, the classes' own operations in sequence, the
// stack of string pieces, the ANY registry and the descriptors.
#include <functional>
#include <typeinfo>

#include "alloc_count.h"
#include "rows.h"
#include "support.h"
#include "walk.h"

namespace {

using namespace zt;

// oid ARC..., oid octets HEX, oid empty: a value built so; checks `arcs`
// and those of any value.
ZT_ROW_OP(oid) {
    std::unique_ptr<AsnType> v;
    if (row.arg.compare(0, 6, "octets") == 0) {
        std::string o = Bytes(row.arg.c_str() + 6);
        v.reset(new AsnOid(o.data(), o.size()));
    } else if (row.arg == "empty") {
        v.reset(new AsnOid);
    } else {
        long a[11] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
        std::istringstream arcs(row.arg);
        for (long& arc : a)
            arcs >> arc;
        v.reset(new AsnOid(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10]));
    }
    const AsnOid& oid = static_cast<const AsnOid&>(*v);
    EXPECT_EQ(oid.Len(), oid.oidLen);
    EXPECT_EQ(oid.Str(), oid.oid);
    Expect(row, "arcs", std::to_string(oid.NumArcs()));
    CheckValue(row, "AsnOid", v, {"arcs"});
}

template <class T>
bool Same(const AsnType& a, const AsnType& b) {
    const T &x = static_cast<const T&>(a), &y = static_cast<const T&>(b);
    EXPECT_NE(x == y, x != y);
    return x == y;
}

// equal TYPE HEX | HEX, differ TYPE HEX | HEX: two decoded values compare
// equal, or not.
void Compare(const Row& row) {
    size_t blank = row.arg.find(' '), bar = row.arg.find('|');
    std::string type = row.arg.substr(0, blank);
    std::unique_ptr<AsnType> a = Make(type), b = Make(type);
    ASSERT_EQ(Decode(Bytes(row.arg.substr(blank, bar - blank).c_str()), *a).result, 1);
    ASSERT_EQ(Decode(Bytes(row.arg.substr(bar + 1).c_str()), *b).result, 1);
    bool same = type == "AsnOid" ? Same<AsnOid>(*a, *b) : type == "AsnBits" ? Same<AsnBits>(*a, *b) : Same<AsnOcts>(*a, *b);
    EXPECT_EQ(same, row.op == "equal");
}
ZT_ROW_OP(equal) { Compare(row); }
ZT_ROW_OP(differ) { Compare(row); }

// `v` under another name, for assigning a value to itself.
template <class T>
T& Itself(T& v) {
    return v;
}

// Set fills, ReSet replaces; a source inside the value's own block is
// copied before the block is freed, and the block itself changes nothing.
TEST(Universal, SetAndReSetInSequence) {
    AsnOcts o("hello");
    o.ReSet(o.octs);
    o.ReSet(o.octs + 1, 3);
    o = Itself(o);
    EXPECT_EQ(std::string(o), "ell");
    EXPECT_EQ(o.Len(), 3u);
    o = "x";
    EXPECT_EQ(Encoded(o), "04 01 78");
    AsnOcts copy(o);
    o.octs[0] = 'y';
    EXPECT_EQ(Encoded(copy), "04 01 78");

    AsnBits b("\xAB\xCD", 16);
    b.ReSet(b.bits, 16);
    b.ReSet(b.bits + 1, 8);
    b = Itself(b);
    EXPECT_EQ(Encoded(b), "03 02 00 CD");
    AsnBits w(b);
    b.ClrBit(0);
    EXPECT_EQ(Encoded(w), "03 02 00 CD");
    EXPECT_EQ(Encoded(b), "03 02 00 4D");
    b.ReSet(size_t(5));
    EXPECT_EQ(b.BitLen(), 5u);
    EXPECT_EQ(Encoded(b), "03 02 03 00");
    b.SetBit(0);
    b.SetBit(4);
    b.SetBit(5);  // beyond the bit count: nothing
    b.ClrBit(100);
    EXPECT_EQ(Encoded(b), "03 02 03 88");
    EXPECT_TRUE(b.GetBit(0) && b.GetBit(4) && !b.GetBit(1) && !b.GetBit(5) && !b.GetBit(1000));
    AsnBits two("\x01\x80", 16);
    EXPECT_TRUE(two.GetBit(7) && two.GetBit(8) && !two.GetBit(9) && !two.GetBit(6));

    AsnOid id(1, 2, 840, 113549);
    const char* block = id.oid;
    id.ReSet(id.oid, id.oidLen);
    id = Itself(id);
    EXPECT_EQ(id.oid, block);
    id.ReSet(id.oid + 1, 2);
    EXPECT_EQ(Encoded(id), "06 02 86 48");
    AsnOid kept(id);
    id.ReSet(2, 5);
    EXPECT_EQ(Encoded(id), "06 01 55");
    EXPECT_EQ(Encoded(kept), "06 02 86 48");
    kept = id;
    EXPECT_EQ(Encoded(kept), "06 01 55");
    AsnOid none, fromNone(none);
    EXPECT_EQ(fromNone.oid, nullptr);
    kept.ReSet(nullptr, 0);  // empties it
    EXPECT_TRUE(kept.oid == nullptr && kept.Len() == 0);
    EXPECT_EQ(Printed(kept), "{-- void --}");
    AsnOid noArcs("", 0);  // holds a block, of no octets
    EXPECT_EQ(zalloc::CountAllocs([&] {
                  AsnOid copy(noArcs);
                  EXPECT_NE(copy.oid, nullptr);
              }).zol(),
              1u);
}

// The shared stack grows by its step, then by its whole size, and hands
// its pieces out in pushing order.
TEST(Universal, StringStackGrowsByItsStepThenDoubles) {
    StrStk s(2, 3);
    char text[] = "abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ+/";
    std::vector<uint32_t> sizes;
    for (int i = 0; i < 64; ++i) {
        s.Push(text + i, 1);
        if (sizes.empty() || sizes.back() != s.size)
            sizes.push_back(s.size);
    }
    EXPECT_EQ(sizes, (std::vector<uint32_t>{2, 5, 8, 11, 14, 17, 20, 23, 26, 29, 32, 35, 38, 41, 44, 47, 50, 100}));
    EXPECT_EQ(s.totalByteLen, 64u);
    char out[65] = {};
    s.CopyOut(out);
    EXPECT_STREQ(out, text);
    s.Reset();
    EXPECT_EQ(s.nextFree + s.totalByteLen, 0u);
    // The shared one starts at 128 entries, a multiple of its step of 64.
    EXPECT_EQ(Decode(Bytes(Expanded("24 80 [04 01 41]*200 00 00").c_str()), *Make("AsnOcts")).result, 1);
    EXPECT_EQ(stringStack.size % 64, 0u);
    EXPECT_GE(stringStack.size, 200u);
}

// The registry of ANY: keys hashed into tables of 256 slots, where
// colliding hashes move down a level.
struct Tables {
    HashTable table = NewHashTable();
    ~Tables() { Free(table); }
    static void Free(HashTable t) {
        for (int i = 0; i < 256; ++i) {
            if (t[i] && !t[i]->isLeaf)
                Free(t[i]->table);
            delete t[i];
        }
        delete[] t;
    }
};

TEST(AsnAny, HashTables) {
    EXPECT_EQ(HashBytes("", 0), 0u);
    EXPECT_EQ(HashBytes("abc", 3), 0x270BED72u);
    EXPECT_EQ(HashBytes("\x80", 1), 0xFFFFFF80u);  // octets count as signed
    Tables t;
    int a, b, c, d, e;
    auto found = [&](uint32_t hash) -> void* {
        void* v = nullptr;
        return HashLookup(t.table, hash, &v) ? v : nullptr;
    };
    ASSERT_TRUE(HashInsert(t.table, &a, 0x00000101u));
    EXPECT_EQ(t.table[1]->isLeaf, 1);
    ASSERT_TRUE(HashInsert(t.table, &b, 0x00000201u));  // the same low 8 bits
    EXPECT_EQ(t.table[1]->isLeaf, 0);
    ASSERT_TRUE(HashInsert(t.table, &c, 0x00030201u));  // the same low 16 bits as b
    ASSERT_TRUE(HashInsert(t.table, &d, 0x00000002u));
    ASSERT_TRUE(HashInsert(t.table, &e, 0x00000201u));  // b's hash: b stays
    EXPECT_EQ(found(0x00000101u), &a);
    EXPECT_EQ(found(0x00000201u), &b);
    EXPECT_EQ(found(0x00030201u), &c);
    EXPECT_EQ(found(0x00000002u), &d);
    EXPECT_EQ(found(0x00000301u), nullptr);  // an empty slot below
    EXPECT_EQ(found(0x00040201u), nullptr);  // a leaf with another hash
    EXPECT_EQ(found(0x00000003u), nullptr);
    void* v = &a;
    EXPECT_FALSE(HashLookup(nullptr, 0, &v));
    EXPECT_EQ(v, &a);
}

// A type whose prototype gives no value.
struct Barren : AsnInt {
    AsnType* Clone() const override { return nullptr; }
};

// Decodes `hex` as `any` under a jump environment: the code and the text.
int DecodeAny(AsnAny& any, const char* hex, std::string* err) {
    AsnLen count = 0;
    return Jump(Bytes(hex), [&](AsnBuf& b, DecodeEnv env) { any.BDec(b, count, env); }, err);
}

TEST(AsnAny, DecodesThroughTheRegistry) {
    AsnAny any;
    any.SetTypeByInt(AsnInt(1001));  // before any table exists
    EXPECT_EQ(any.GetId(), -1);
    AsnOid key(1, 2, 840, 113549, 1);
    any.SetTypeByOid(key);
    EXPECT_EQ(any.info, nullptr);

    static AsnInt intProto;
    static AsnOcts octsProto;
    static AsnBool boolProto;
    static Barren barren;
    AsnAny::InstallAnyByInt(AsnInt(1001), 11, &intProto);
    AsnAny::InstallAnyByInt(AsnInt(1001), 12, &octsProto);  // the first stands
    AsnAny::InstallAnyByInt(AsnInt(1002), 13, &barren);
    AsnAny::InstallAnyByInt(AsnInt(1003), 14, nullptr);
    AsnAny::InstallAnyByInt(AsnInt(1005), 15, &octsProto);
    AsnAny::InstallAnyByInt(AsnInt(1001 + 65536), 16, &boolProto);  // 1001's key but for bit 16
    AsnAny::InstallAnyByOid(key, 21, &boolProto);
    key.ReSet(1, 2, 3);  // the registration keeps its own copy
    EXPECT_EQ(any.Clone(), nullptr);

    const struct {
        std::function<void(AsnAny&)> choose;
        int id;
        const char* hex;
        const char* printed;
    } rows[] = {
        {[](AsnAny& a) { a.SetTypeByInt(AsnInt(1001)); }, 11, "02 02 01 00", "256"},
        {[](AsnAny& a) { AsnOid same(1, 2, 840, 113549, 1); a.SetTypeByOid(same); }, 21, "01 01 FF", "TRUE"},
        // The clone of a string prototype holds a block of its own, which
        // the decode gives up: nothing leaks.
        {[](AsnAny& a) { a.SetTypeByInt(AsnInt(1005)); }, 15, "04 02 41 42", "'4142'H  -- \"AB\" --"},
    };
    for (const auto& r : rows) {
        AsnAny a;
        r.choose(a);
        EXPECT_EQ(a.GetId(), r.id);
        EXPECT_EQ(a.info->intKey.value, r.id == 21 ? 0 : 1000 + r.id % 10);  // the keys kept
        EXPECT_EQ(Encoded(a.info->oid), r.id == 21 ? "06 07 2A 86 48 86 F7 0D 01" : "06 00");
        std::string err;
        ASSERT_EQ(DecodeAny(a, r.hex, &err), 0) << err;
        std::unique_ptr<AsnType> held(a.value);
        EXPECT_EQ(Encoded(a), r.hex);
        EXPECT_EQ(Printed(a), r.printed);
    }
    AsnAny byOid;
    byOid.SetTypeByOid(key);
    EXPECT_EQ(byOid.info, nullptr);
    AsnAny far;
    far.SetTypeByInt(AsnInt(1001 + 65536));
    EXPECT_EQ(far.GetId(), 16);

    // Neither failure writes a line.
    const struct {
        int key;
        int code;
    } failing[] = {{1004, -81}, {1002, -82}, {1003, -82}};
    for (const auto& r : failing) {
        AsnAny a;
        a.SetTypeByInt(AsnInt(r.key));
        std::string err;
        EXPECT_EQ(DecodeAny(a, "02 01 05", &err), r.code) << r.key;
        EXPECT_EQ(err, "");
        EXPECT_EQ(a.value, nullptr);
    }
    AsnAny empty;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Encoded(empty), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR - Attempt to encode an improperly formed ANY type (programming error).\n");
    EXPECT_EQ(Printed(empty), "ERROR - Attempt to print an improperly formed ANY type (programming error).\n");
}

// EXTERNAL without its encoding, which no decoding makes, and the choice
// on its own: without a value it writes and prints nothing of one, and
// nothing at all without an alternative; with one, a clone holds a copy
// of it, and an empty choice assigned to it leaves none.
TEST(EXTERNAL, TheChoiceOnItsOwn) {
    EXPECT_EQ(Printed(EXTERNAL()),
              "{ -- SEQUENCE --\n"
              "    direct-reference -- void --,\n"
              "    indirect-reference -- void --,\n"
              "    data-value-descriptor -- void --,\n"
              "    encoding -- void --\n"
              "\n"
              "}");
    EXTERNALChoice c;
    EXPECT_EQ(Printed(c), "single-ASN1-type -- void3 --\n");
    c.choiceId = EXTERNALChoice::arbitraryCid;
    EXPECT_EQ(Printed(c), "arbitrary -- void3 --\n");
    EXPECT_EQ(Encoded(c), "");
    c.choiceId = 3;  // no alternative
    EXPECT_EQ(Printed(c), "");
    std::string err;
    AsnLen count = 0;
    EXPECT_EQ(Jump(Bytes("83 00"), [&](AsnBuf& b, DecodeEnv env) { c.BDec(b, count, env); }, &err), 36);
    EXPECT_EQ(err, "ERROR - unexpected tag in CHOICE\n");
    EXPECT_EQ(c.value, nullptr);
    EXPECT_EQ(Jump(Bytes("82 02 04 F0"), [&](AsnBuf& b, DecodeEnv env) { c.BDec(b, count, env); }), 0);
    std::unique_ptr<AsnType> clone(c.Clone());
    c.bits()->ClrBit(0);
    EXPECT_EQ(Encoded(*clone), "82 02 04 F0");
    EXPECT_EQ(Printed(*clone), "arbitrary 'f0'H  -- BIT STRING bitlen = 4 --");
    c = EXTERNALChoice();
    EXPECT_EQ(c.choiceId, 0);
    EXPECT_EQ(c.value, nullptr);
}

TEST(Descriptors, UniversalClasses) {
    // A new value of each class, its kind and what it encodes to.
    const struct {
        AsnType* v;
        const char* name;
        bool hasNames;
        const char* hex;
    } rows[] = {
        {new AsnInt, "INTEGER", true, "02 01 00"},
        {new AsnReal, "REAL", false, "09 00"},
        {new AsnNull, "NULL", false, "05 00"},
        {new AsnBool, "BOOLEAN", false, "01 01 00"},
        {new AsnEnum, "ENUMERATED", true, "0A 01 00"},
        {new AsnBits, "BIT STRING", true, "03 01 00"},
        {new AsnOcts, "OCTET STRING", false, "04 00"},
        {new NumericString, "OCTET STRING", false, "12 00"},
        {new AsnOid, "OBJECT IDENTIFIER", false, "06 00"},
        {new EXTERNALChoice, "(void)", false, ""},
    };
    for (const auto& r : rows) {
        std::unique_ptr<AsnType> v(r.v);
        EXPECT_EQ(Encoded(*v), r.hex);
        EXPECT_EQ(AsnListDescOf(*v), nullptr);  // no list
        const AsnTypeDesc* d = v->_getdesc();
        EXPECT_EQ(AsnTypeName(d), std::string(r.name));
        EXPECT_EQ(AsnTypeDesc::typenames[d->gettype()], std::string(r.name));
        EXPECT_TRUE(!d->getmodule() && !d->getname() && !d->ispdu() && !d->create) << r.name;
        if (r.hasNames) {
            EXPECT_EQ(d->getnames(), nullptr);
        }
        std::unique_ptr<AsnType> clone(v->Clone());
        ASSERT_NE(clone, nullptr) << r.name;
        const AsnType &copy = *clone, &original = *v;
        EXPECT_EQ(typeid(copy), typeid(original));
    }
    AsnBuf b;  // NULL's content, which no encoder of the library writes alone
    EXPECT_EQ(AsnNull().BEncContent(b), 0u);
    EXPECT_NE(dynamic_cast<const AsnEnumTypeDesc*>(AsnEnum()._getdesc()), nullptr);
    EXPECT_EQ(dynamic_cast<const AsnEnumTypeDesc*>(AsnInt()._getdesc()), nullptr);
}

TEST(DescriptorsDeathTest, GetnamesWithoutANamesTableAborts) {
    EXPECT_DEATH(AsnReal()._getdesc()->getnames(), "^REAL::getnames\\(\\) called\n");
    EXPECT_DEATH(IA5String()._getdesc()->getnames(), "^OCTET STRING::getnames\\(\\) called\n");
}

}  // namespace
