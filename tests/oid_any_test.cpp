// OBJECT IDENTIFIER, the ANY registry with its hash tables, and EXTERNAL.
#include "support.h"

#include <memory>
#include <sstream>

namespace {

using zt::Bytes;
using zt::Decode;
using zt::DoorLine;
using zt::Encoded;
using zt::Hex;
using zt::Jump;

std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

std::string Octets(const AsnOid& v) { return Hex(v.oid, v.oidLen); }

// Decodes `wire` as `v` under a jump environment; the code and the text.
int DecodeInto(AsnType& v, const std::string& wire, std::string* err) {
    AsnLen count = 0;
    return Jump(wire, [&](AsnBuf& b, DecodeEnv env) { v.BDec(b, count, env); }, err);
}

TEST(AsnOid, BuiltFromArcs) {
    // A literal 0 as the first arc would also be a null block pointer.
    const unsigned long zero = 0;
    const struct {
        AsnOid v;
        const char* octets;
        unsigned long arcs;
        const char* printed;
    } rows[] = {
        {AsnOid(1, 2, 840, 113549), "2A 86 48 86 F7 0D", 4, "{1 2 840 113549}"},
        {AsnOid(2, 100), "81 34", 2, "{2 100}"},
        {AsnOid(zero, 39), "27", 2, "{0 39}"},
        {AsnOid(2, 999, 3), "88 37 03", 3, "{2 999 3}"},
        {AsnOid(1, 2, -1), "2A", 2, "{1 2}"},
        {AsnOid(1, 2, 0, 5), "2A", 2, "{1 2}"},  // a zero ends the list too
        {AsnOid(1, 2, 3, -7, 5), "2A 03", 3, "{1 2 3}"},
        {AsnOid(1, 3, 2147483647), "2B 87 FF FF FF 7F", 3, "{1 3 2147483647}"},
        {AsnOid(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11), "2A 03 04 05 06 07 08 09 0A 0B", 11,
         "{1 2 3 4 5 6 7 8 9 10 11}"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.printed);
        EXPECT_EQ(Octets(r.v), r.octets);
        EXPECT_EQ(r.v.Len(), r.v.oidLen);
        EXPECT_EQ(r.v.NumArcs(), r.arcs);
        EXPECT_EQ(Printed(r.v), r.printed);
    }
    EXPECT_EQ(Encoded(AsnOid(1, 2, 840)), "06 03 2A 86 48");
    EXPECT_EQ(Encoded(AsnOid()), "06 00");
    EXPECT_EQ(AsnOid()._getdesc()->type, AsnTypeDesc::OBJECT_IDENTIFIER);
}

TEST(AsnOid, PrintsWhatTheOctetsHold) {
    const struct {
        const char* octets;
        unsigned long arcs;
        const char* printed;
    } rows[] = {
        {"78", 2, "{2 40}"},                // 120 is 2 40, never 3 0
        {"81 A0 80 00", 2, "{0 2621440}"},  // 2621440 / 40 is 65536, 0 in 16 bits
        {"2A 86", 3, "{1 2 6}"},            // cut short: ends with the octets
        {"86", 2, "{0 6}"},
        {"2A 80 80 01", 3, "{1 2 1}"},      // leading zero groups are no error
        {"", 1, "{}"},
    };
    for (const auto& r : rows) {
        std::string o = Bytes(r.octets);
        AsnOid v(o.data(), o.size());
        EXPECT_EQ(v.NumArcs(), r.arcs) << r.octets;
        EXPECT_EQ(Printed(v), r.printed) << r.octets;
    }
    EXPECT_EQ(Printed(AsnOid()), "{-- void --}");
    EXPECT_EQ(AsnOid().NumArcs(), 1u);
}

TEST(AsnOid, Decoding) {
    const char* past = "BDecOctetString: ERROR - decoded past end of data\n";
    const struct {
        const char* wire;
        int code;
        const char* err;
        const char* octets;
    } rows[] = {
        {"06 03 2A 86 48", 0, "", "2A 86 48"},
        {"06 81 03 2A 86 48", 0, "", "2A 86 48"},
        {"06 00", 0, "", ""},
        {"06 05 2A", -17, past, nullptr},
        {"06 80 2A 00 00", -17, past, nullptr},
        {"26 01 2A", -57, "AsnOid::BDec: ERROR tag on OBJECT IDENTIFIER is wrong.\n", nullptr},
        {"04 01 2A", -57, "AsnOid::BDec: ERROR tag on OBJECT IDENTIFIER is wrong.\n", nullptr},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.wire);
        AsnOid v;
        std::string err;
        EXPECT_EQ(DecodeInto(v, Bytes(r.wire), &err), r.code);
        EXPECT_EQ(err, r.err);
        if (r.octets) {
            ASSERT_NE(v.oid, nullptr);
            EXPECT_EQ(Octets(v), r.octets);
        }
    }
    AsnOid v;
    zt::Outcome out = Decode(Bytes("06 05 2A"), v);
    EXPECT_EQ(out.result, 0);
    EXPECT_EQ(out.err, std::string(past) + DoorLine("OBJECT IDENTIFIER", -17));
}

TEST(AsnOid, EqualityStopsAtAPairOfZeroOctets) {
    auto oid = [](const char* hex) {
        std::string o = Bytes(hex);
        return AsnOid(o.data(), o.size());
    };
    EXPECT_TRUE(oid("2A 00 03") == oid("2A 00 04"));
    EXPECT_TRUE(oid("2A 03") != oid("2A 04"));
    EXPECT_TRUE(oid("2A 03") != oid("2A 03 00"));
    EXPECT_TRUE(oid("") == AsnOid());
    EXPECT_TRUE(AsnOid(1, 2, 840) == oid("2A 86 48"));
}

TEST(AsnOid, SetReSetAndCopies) {
    AsnOid v(1, 2, 840, 113549);
    const char* block = v.oid;
    v.ReSet(v.oid, v.oidLen);  // its own block: nothing
    v = v;
    EXPECT_EQ(v.oid, block);
    v.ReSet(v.oid + 1, 2);     // a part of its own block is copied before the free
    EXPECT_EQ(Octets(v), "86 48");

    AsnOid copy(v);
    std::unique_ptr<AsnType> clone(v.Clone());
    v.ReSet(2, 5);
    EXPECT_EQ(Octets(v), "55");
    EXPECT_EQ(Octets(copy), "86 48");
    EXPECT_EQ(Octets(static_cast<AsnOid&>(*clone)), "86 48");
    copy = v;
    EXPECT_EQ(Octets(copy), "55");

    AsnOid empty, fromEmpty(empty);
    EXPECT_EQ(fromEmpty.oid, nullptr);
    EXPECT_EQ(Printed(fromEmpty), "{-- void --}");
}

// The hash tables

struct TableOwner {
    HashTable table = NewHashTable();
    ~TableOwner() { Free(table); }
    static void Free(HashTable t) {
        for (int i = 0; i < 256; ++i) {
            if (t[i] && !t[i]->isLeaf)
                Free(t[i]->table);
            delete t[i];
        }
        delete[] t;
    }
};

TEST(AnyRegistry, HashBytes) {
    EXPECT_EQ(HashBytes("", 0), 0u);
    EXPECT_EQ(HashBytes("abc", 3), 0x270BED72u);
    EXPECT_EQ(HashBytes("\x80", 1), 0xFFFFFF80u);  // octets count as signed
    EXPECT_EQ(HashBytes("\x01\x80", 2), 65587u - 128u);
}

TEST(AnyRegistry, CollidingHashesMoveDown) {
    TableOwner t;
    int a, b, c, d, e;
    auto found = [&](uint32_t hash) -> void* {
        void* v = nullptr;
        return HashLookup(t.table, hash, &v) ? v : nullptr;
    };
    ASSERT_TRUE(HashInsert(t.table, &a, 0x00000101u));
    EXPECT_EQ(t.table[1]->isLeaf, 1);
    ASSERT_TRUE(HashInsert(t.table, &b, 0x00000201u));  // same low 8 bits
    EXPECT_EQ(t.table[1]->isLeaf, 0);
    ASSERT_TRUE(HashInsert(t.table, &c, 0x00030201u));  // same low 16 bits as b
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

TEST(AsnAny, LookupInATableNeverMade) {
    HashTable ints = AsnAny::intHashTbl, oids = AsnAny::oidHashTbl;
    AsnAny::intHashTbl = AsnAny::oidHashTbl = nullptr;
    AsnAny any;
    any.SetTypeByInt(AsnInt(1));
    EXPECT_EQ(any.info, nullptr);
    AsnOid key(1, 2);
    any.SetTypeByOid(key);
    EXPECT_EQ(any.info, nullptr);
    AsnAny::intHashTbl = ints;
    AsnAny::oidHashTbl = oids;
}

TEST(AsnAny, DecodesThroughTheRegistry) {
    static AsnInt intProto;
    static AsnOcts octsProto;
    static AsnBool boolProto;
    static Barren barren;
    AsnAny::InstallAnyByInt(AsnInt(1001), 11, &intProto);
    AsnAny::InstallAnyByInt(AsnInt(1001), 12, &octsProto);  // the first stands
    AsnAny::InstallAnyByInt(AsnInt(1002), 13, &barren);
    AsnAny::InstallAnyByInt(AsnInt(1003), 14, nullptr);
    AsnOid key(1, 2, 840, 113549, 1);
    AsnAny::InstallAnyByOid(key, 21, &boolProto);
    key.ReSet(1, 2, 3);  // the registration keeps its own copy

    AsnAny any;
    EXPECT_EQ(any.GetId(), -1);
    EXPECT_EQ(any.Clone(), nullptr);

    any.SetTypeByInt(AsnInt(1001));
    EXPECT_EQ(any.GetId(), 11);
    std::string err;
    ASSERT_EQ(DecodeInto(any, Bytes("02 02 01 00"), &err), 0);
    std::unique_ptr<AsnType> held(any.value);
    EXPECT_EQ(static_cast<AsnInt*>(any.value)->value, 256);
    EXPECT_EQ(Encoded(any), "02 02 01 00");
    EXPECT_EQ(Printed(any), "256");

    AsnAny byOid;
    AsnOid same(1, 2, 840, 113549, 1);
    byOid.SetTypeByOid(same);
    ASSERT_EQ(byOid.GetId(), 21);
    EXPECT_EQ(Octets(byOid.info->oid), "2A 86 48 86 F7 0D 01");
    ASSERT_EQ(DecodeInto(byOid, Bytes("01 01 FF"), &err), 0);
    std::unique_ptr<AsnType> held2(byOid.value);
    EXPECT_EQ(Encoded(byOid), "01 01 FF");

    // A string prototype's clone holds a block of its own, which the
    // decode gives up: nothing leaks.
    AsnAny::InstallAnyByInt(AsnInt(1005), 15, &octsProto);
    AsnAny text;
    text.SetTypeByInt(AsnInt(1005));
    ASSERT_EQ(DecodeInto(text, Bytes("04 02 41 42"), &err), 0);
    std::unique_ptr<AsnType> held3(text.value);
    EXPECT_EQ(Encoded(text), "04 02 41 42");

    const struct {
        int key;
        int code;
    } failing[] = {{1004, -81}, {1002, -82}, {1003, -82}};
    for (const auto& r : failing) {
        AsnAny a;
        a.SetTypeByInt(AsnInt(r.key));
        EXPECT_EQ(DecodeInto(a, Bytes("02 01 05"), &err), r.code) << r.key;
        EXPECT_EQ(err, "");  // neither failure writes a line
        EXPECT_EQ(a.value, nullptr);
    }
    AsnAny unknown;
    unknown.SetTypeByInt(AsnInt(1004));
    EXPECT_EQ(unknown.GetId(), -1);
    zt::Outcome out = Decode(Bytes("02 01 05"), unknown);
    EXPECT_EQ(out.result, 0);
    EXPECT_EQ(out.err, DoorLine("(void)", -81));
}

TEST(AsnAny, WithoutAValueItIsAnImproperlyFormedAny) {
    AsnAny any;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Encoded(any), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR - Attempt to encode an improperly formed ANY type (programming error).\n");
    EXPECT_EQ(Printed(any), "ERROR - Attempt to print an improperly formed ANY type (programming error).\n");
}

// EXTERNAL

EXTERNALChoice* Alternative(int id, const char* hex) {
    EXTERNALChoice* c = new EXTERNALChoice;
    c->choiceId = id;
    std::string o = Bytes(hex);
    if (id == EXTERNALChoice::arbitraryCid)
        c->value = new AsnBits(o.data(), o.size() * 8 - 4);
    else
        c->value = new AsnOcts(o.data(), o.size());
    return c;
}

TEST(EXTERNAL, EncodesAndDecodesBack) {
    const struct {
        bool full;
        int alternative;
        const char* wire;
    } rows[] = {
        {false, EXTERNALChoice::octet_alignedCid, "28 04 81 02 41 42"},
        {false, EXTERNALChoice::single_ASN1_typeCid, "28 06 A0 04 04 02 41 42"},
        {false, EXTERNALChoice::arbitraryCid, "28 05 82 03 04 41 42"},
        {true, EXTERNALChoice::octet_alignedCid, "28 0F 06 03 2A 86 48 02 01 05 07 01 64 81 02 41 42"},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.wire);
        EXTERNAL v;
        v.encoding = Alternative(r.alternative, "41 42");
        if (r.full) {
            v.direct_reference = new AsnOid(1, 2, 840);
            v.indirect_reference = new AsnInt(5);
            v.data_value_descriptor = new ObjectDescriptor("d");
        }
        EXPECT_EQ(Encoded(v), r.wire);
        EXTERNAL back;
        ASSERT_EQ(Decode(Bytes(r.wire), back).result, 1);
        EXPECT_EQ(back.encoding->choiceId, r.alternative);
        EXPECT_EQ(Encoded(back), r.wire);
        EXPECT_EQ(Printed(back), Printed(v));
    }
    // Other forms read: indefinite lengths, constructed strings, long lengths.
    const char* accepted[][2] = {
        {"28 80 81 02 41 42 00 00", "28 04 81 02 41 42"},
        {"28 80 A0 80 04 02 41 42 00 00 00 00", "28 06 A0 04 04 02 41 42"},
        {"28 0A A0 08 24 06 04 01 41 04 01 42", "28 06 A0 04 04 02 41 42"},
        {"28 0A A1 80 04 01 41 04 01 42 00 00", "28 04 81 02 41 42"},
        {"28 0A 27 03 04 01 64 81 81 02 41 42", "28 07 07 01 64 81 02 41 42"},
        {"28 08 02 02 00 05 81 02 41 42", "28 07 02 01 05 81 02 41 42"},
    };
    for (const auto& a : accepted) {
        EXTERNAL v;
        ASSERT_EQ(Decode(Bytes(a[0]), v).result, 1) << a[0];
        EXPECT_EQ(Encoded(v), a[1]) << a[0];
    }
}

TEST(EXTERNAL, DecodingFailures) {
    const std::string missing = "ERROR - SEQUENCE is missing non-optional elmt.\n";
    const struct {
        const char* wire;
        int code;
        std::string err;
    } rows[] = {
        {"29 04 81 02 41 42", 33, "EXTERNAL::BDec: ERROR - wrong tag\n"},
        {"08 04 81 02 41 42", 33, "EXTERNAL::BDec: ERROR - wrong tag\n"},
        {"28 05 81 02 41 42 00", 34, "ERROR - Length discrepancy on sequence.\n"},
        {"28 05 06 01 2A 04 00", 35, missing},  // after direct-reference, no rule takes 04
        {"28 08 02 01 05 06 01 2A 81 00", 35, missing},  // out of order
        {"28 02 83 00", 35, missing},
        {"28 04 A0 02 05 00", 37, "Unexpected Tag\n"},
        {"28 80 81 02 41 42 00 01", -12, "BDecEoc: ERROR - non zero byte in EOC or end of data reached\n"},
    };
    for (const auto& r : rows) {
        EXTERNAL v;
        std::string err;
        EXPECT_EQ(DecodeInto(v, Bytes(r.wire), &err), r.code) << r.wire;
        EXPECT_EQ(err, r.err) << r.wire;
    }
    EXTERNALChoice c;
    std::string err;
    EXPECT_EQ(DecodeInto(c, Bytes("83 00"), &err), 36);
    EXPECT_EQ(err, "ERROR - unexpected tag in CHOICE\n");
    EXPECT_EQ(c.value, nullptr);
}

TEST(EXTERNAL, AssignmentAndMerge) {
    EXTERNAL full;
    full.direct_reference = new AsnOid(1, 2, 840);
    full.indirect_reference = new AsnInt(5);
    full.data_value_descriptor = new ObjectDescriptor("d");
    full.encoding = Alternative(EXTERNALChoice::octet_alignedCid, "41 42");
    const std::string fullWire = Encoded(full);

    EXTERNAL copy(full);
    std::unique_ptr<AsnType> clone(full.Clone());
    full.data_value_descriptor->ReSet("e");
    EXPECT_EQ(Encoded(copy), fullWire);
    EXPECT_EQ(Encoded(*clone), fullWire);
    copy = copy;
    copy |= copy;
    EXPECT_EQ(Encoded(copy), fullWire);

    // Assignment drops what the source lacks.
    EXTERNAL only;
    only.encoding = Alternative(EXTERNALChoice::arbitraryCid, "F0");
    copy = only;
    EXPECT_EQ(Encoded(copy), "28 04 82 02 04 F0");

    // A merge touches only what the source holds.
    EXTERNAL held;
    held.direct_reference = new AsnOid(1, 2);
    held.encoding = Alternative(EXTERNALChoice::octet_alignedCid, "41 42");
    EXTERNAL report;
    report.indirect_reference = new AsnInt(7);
    report.encoding = Alternative(EXTERNALChoice::octet_alignedCid, "43");
    held |= report;
    EXPECT_EQ(Encoded(held), "28 09 06 01 2A 02 01 07 81 01 43");
    held |= only;  // another alternative: taken over whole
    EXPECT_EQ(Encoded(held), "28 0A 06 01 2A 02 01 07 82 02 04 F0");
    held |= EXTERNAL();
    EXPECT_EQ(Encoded(held), "28 0A 06 01 2A 02 01 07 82 02 04 F0");

    EXTERNALChoice empty, fromEmpty(empty);
    fromEmpty.choiceId = EXTERNALChoice::arbitraryCid;
    fromEmpty = empty;
    EXPECT_EQ(fromEmpty.choiceId, 0);
    EXPECT_EQ(fromEmpty.value, nullptr);
    EXPECT_EQ(Encoded(fromEmpty), "");
}

TEST(EXTERNAL, Printing) {
    EXTERNAL v;
    EXPECT_EQ(Printed(v),
              "{ -- SEQUENCE --\n"
              "    direct-reference -- void --,\n"
              "    indirect-reference -- void --,\n"
              "    data-value-descriptor -- void --,\n"
              "    encoding -- void --\n"
              "\n"
              "}");
    // A member that is there ends no line.
    v.direct_reference = new AsnOid(1, 2, 840);
    v.indirect_reference = new AsnInt(5);
    v.encoding = Alternative(EXTERNALChoice::octet_alignedCid, "41 42");
    EXPECT_EQ(Printed(v),
              "{ -- SEQUENCE --\n"
              "    direct-reference {1 2 840}    indirect-reference 5    data-value-descriptor -- void --,\n"
              "    encoding octet-aligned '4142'H  -- \"AB\" --\n"
              "}");
    EXPECT_EQ(indentLevel, 0);

    EXTERNALChoice c;
    EXPECT_EQ(Printed(c), "single-ASN1-type -- void3 --\n");
    c.choiceId = EXTERNALChoice::arbitraryCid;
    EXPECT_EQ(Printed(c), "arbitrary -- void3 --\n");
    EXPECT_EQ(c._getdesc(), v._getdesc());
    EXPECT_EQ(v._getdesc()->type, AsnTypeDesc::VOID);
}

}  // namespace
