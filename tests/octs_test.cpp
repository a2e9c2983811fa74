// OCTET STRING, the string stack and the thirteen character-string classes.
#include "support.h"

#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <typeinfo>

namespace {

using zt::Bytes;
using zt::Decode;
using zt::DoorLine;
using zt::Encoded;
using zt::Hex;
using zt::Jump;

std::string Repeat(const char* hex, int n) {
    std::string out;
    for (int i = 0; i < n; ++i)
        out += Bytes(hex);
    return out;
}

// Decodes `wire` as `v` under a jump environment: the code, the text and the count.
int DecodeInto(AsnType& v, const std::string& wire, std::string* err, AsnLen* count) {
    *count = 0;
    return Jump(wire, [&](AsnBuf& b, DecodeEnv env) { v.BDec(b, *count, env); }, err);
}

TEST(AsnOcts, EncodesPrimitiveWithTheNulUncounted) {
    AsnOcts empty("");
    EXPECT_EQ(Encoded(empty), "04 00");
    EXPECT_EQ(Encoded(AsnOcts()), "04 00");
    AsnOcts zeros("a\0b", 3);
    EXPECT_EQ(Encoded(zeros), "04 03 61 00 62");
    EXPECT_EQ(Encoded(AsnOcts(std::string(200, 'q').c_str())).substr(0, 11), "04 81 C8 71");

    AsnOcts v;
    ASSERT_EQ(Decode(Bytes("04 03 61 00 62"), v).result, 1);
    EXPECT_EQ(v.Len(), 3u);
    EXPECT_EQ(std::strlen(v), 1u);
    EXPECT_EQ(v.octs[3], '\0');
    EXPECT_TRUE(v == zeros);

    AsnOcts e;
    ASSERT_EQ(Decode(Bytes("04 00"), e).result, 1);
    ASSERT_NE(e.octs, nullptr);
    EXPECT_EQ(e.octetLen, 0u);
    EXPECT_EQ(e.octs[0], '\0');
    EXPECT_TRUE(e == AsnOcts());
}

TEST(AsnOcts, PrimitiveAndConstructedDecoding) {
    const char* pastPrim = "BDecOctetString: ERROR - decoded past end of data\n";
    const char* foreign =
        "BDecConsOctetString: ERROR - decoded non-OCTET STRING tag inside a constructed OCTET STRING\n";
    const char* deep = "BDecConsOctetString: ERROR - constructed OCTET STRING nested too deep\n";
    const std::string nest64 = Repeat("24 80", 64) + Bytes("04 01 41") + Repeat("00 00", 64);
    const std::string nest65 = Repeat("24 80", 65) + Bytes("04 01 41") + Repeat("00 00", 65);
    const struct {
        std::string wire;
        int code;
        std::string err;
        const char* bytes;
        AsnLen counted;
    } rows[] = {
        {Bytes("24 80 04 01 41 04 01 42 00 00"), 0, "", "41 42", 10},
        {Bytes("24 06 04 01 41 04 01 42"), 0, "", "41 42", 8},
        {Bytes("24 0D 04 01 41 24 80 04 01 42 00 00 04 01 43"), 0, "", "41 42 43", 15},
        {Bytes("24 80 24 02 04 00 04 02 41 42 00 00"), 0, "", "41 42", 12},
        {Bytes("24 04 04 00 04 00"), 0, "", "", 6},
        {Bytes("24 00"), 0, "", "", 2},
        {Bytes("24 80 04 01 41 00 FF"), 0, "Warning - second octet of EOC not zero\n", "41", 7},
        {nest64, 0, "", "41", AsnLen(nest64.size())},
        {Bytes("24 03 02 01 05"), -16, foreign, nullptr, 0},
        {Bytes("24 04 00 00 04 00"), -16, foreign, nullptr, 0},  // 00 under a definite length is a tag
        {nest65, -16, deep, nullptr, 0},
        {Repeat("24 80", 100000), -16, deep, nullptr, 0},
        {Bytes("24 05 04 05 41 42"), -15,
         "BDecConsOctetString: ERROR - attempt to decode past end of data\n", nullptr, 0},
        {Bytes("24 80 04 01 41"), -22, "BDecTag: ERROR - decoded past the end of data\n", nullptr, 0},
        {Bytes("04 03 41 42"), -14, pastPrim, nullptr, 0},
        {Bytes("04 80 41"), -14, pastPrim, nullptr, 0},
        {Bytes("04 84 FF FF FF F0 41 42"), -14, pastPrim, nullptr, 0},
        {Bytes("04 84 FF FF FF FF 41 42"), -14, pastPrim, nullptr, 0},
    };
    for (const auto& r : rows) {
        AsnOcts v;
        std::string err;
        AsnLen n;
        EXPECT_EQ(DecodeInto(v, r.wire, &err, &n), r.code) << Hex(r.wire.substr(0, 16));
        EXPECT_EQ(err, r.err) << Hex(r.wire.substr(0, 16));
        if (r.code)
            continue;
        EXPECT_EQ(Hex(v.octs, v.octetLen), r.bytes);
        EXPECT_EQ(v.octs[v.octetLen], '\0');
        EXPECT_EQ(n, r.counted) << Hex(r.wire.substr(0, 16));
    }
}

// BDecContent looks only at the constructed bit, so context tags work too.
TEST(AsnOcts, ContentOfAContextTaggedString) {
    for (AsnTag tag : {0x80000000u, 0xA0000000u}) {
        AsnOcts v;
        AsnLen n = 0;
        std::string wire = tag & AsnConstructedBit ? Bytes("04 02 41 42") : Bytes("41 42");
        EXPECT_EQ(Jump(wire, [&](AsnBuf& b, DecodeEnv env) { v.BDecContent(b, tag, AsnLen(wire.size()), n, env); }),
                  0);
        EXPECT_EQ(std::string(v.octs), "AB");
        EXPECT_EQ(n, wire.size());
    }
}

TEST(StrStk, GrowsByItsStepAndKeepsPushingOrder) {
    StrStk s(2, 3);
    s.Reset();
    char text[] = "abcdef";
    for (int i = 0; i < 6; ++i)
        s.Push(text + i, 1);
    EXPECT_EQ(s.size, 8u);
    EXPECT_EQ(s.totalByteLen, 6u);
    char out[7] = {};
    s.CopyOut(out);
    EXPECT_STREQ(out, "abcdef");

    // Past the shared stack's first 128 entries, in one string.
    std::string wire = Bytes("24 80");
    std::string expect;
    for (int i = 0; i < 300; ++i) {
        wire += Bytes("04 01") + char(i);
        expect += char(i);
    }
    wire += Bytes("00 00");
    AsnOcts v;
    ASSERT_EQ(Decode(wire, v).result, 1);
    EXPECT_EQ(std::string(v.octs, v.octetLen), expect);
    EXPECT_GE(stringStack.size, 300u);
    EXPECT_EQ(stringStack.size % 64, 0u);
}

TEST(AsnOcts, SetReSetAndEquality) {
    AsnOcts v("hello");
    v.ReSet(v.octs);  // its own block: nothing happens
    EXPECT_EQ(std::string(v), "hello");
    v.ReSet(v.octs + 1, 3);  // a part of its own block is copied before the free
    EXPECT_EQ(std::string(v), "ell");
    v = v;
    EXPECT_EQ(std::string(v), "ell");
    AsnOcts w;
    w = "ell";
    EXPECT_TRUE(v == w);
    w = "elm";
    EXPECT_TRUE(v != w);
    EXPECT_TRUE(AsnOcts("ab") != AsnOcts("ab", 3));
}

TEST(AsnOcts, Print) {
    const struct {
        AsnOcts v;
        const char* text;
    } rows[] = {
        {AsnOcts("a b"), "'612062'H  -- \"a b\" --"},
        {AsnOcts("\x01\t\xff~", 4), "'0109ff7e'H  -- \". .~\" --"},
        {AsnOcts(), "''H  -- \"\" --"},
    };
    for (const auto& r : rows) {
        std::ostringstream os;
        os << r.v;
        EXPECT_EQ(os.str(), r.text);
    }
}

// The string classes differ only in their tags, their code and their text.
TEST(StringClasses, TagsCodesAndTexts) {
    const struct {
        std::function<AsnOcts*()> make;
        const char* name;
        const char* tag;
        int code;
    } rows[] = {
        {[] { return new ObjectDescriptor; }, "ObjectDescriptor", "07", 50},
        {[] { return new NumericString; }, "NumericString", "12", 49},
        {[] { return new PrintableString; }, "PrintableString", "13", 48},
        {[] { return new TeletexString; }, "TeletexString", "14", 47},
        {[] { return new T61String; }, "T61String", "14", 46},
        {[] { return new VideotexString; }, "VideotexString", "15", 45},
        {[] { return new IA5String; }, "IA5String", "16", 44},
        {[] { return new GraphicString; }, "GraphicString", "19", 43},
        {[] { return new VisibleString; }, "VisibleString", "1A", 42},
        {[] { return new ISO646String; }, "ISO646String", "1A", 41},
        {[] { return new GeneralString; }, "GeneralString", "1B", 40},
        {[] { return new UTCTime; }, "UTCTime", "17", 39},
        {[] { return new GeneralizedTime; }, "GeneralizedTime", "18", 38},
    };
    for (const auto& r : rows) {
        std::unique_ptr<AsnOcts> v(r.make());
        *v = "\x80z";  // no character set is checked
        EXPECT_EQ(Encoded(*v), std::string(r.tag) + " 02 80 7A") << r.name;
        std::unique_ptr<AsnType> c(v->Clone());
        EXPECT_EQ(typeid(*c), typeid(*v)) << r.name;
        EXPECT_EQ(v->_getdesc(), &AsnOcts::_desc);

        std::string prim = Bytes(r.tag) + Bytes("01 41");
        std::string cons = std::string(1, char(Bytes(r.tag)[0] | 0x20)) + Bytes("80 04 01 41 04 00 00 00");
        for (const std::string& wire : {prim, cons}) {
            std::unique_ptr<AsnOcts> d(r.make());
            auto o = Decode(wire, *d);
            EXPECT_EQ(o.result, 1) << r.name;
            EXPECT_EQ(std::string(d->octs, d->octetLen), "A") << r.name;
        }
        for (const char* wire : {"04 01 41", "24 00", "1C 01 41"}) {
            std::unique_ptr<AsnOcts> d(r.make());
            auto o = Decode(Bytes(wire), *d);
            EXPECT_EQ(o.result, 0);
            EXPECT_EQ(o.err, std::string(r.name) + "::BDec: ERROR - wrong tag\n" + DoorLine("OCTET STRING", r.code));
        }
    }
}

}  // namespace
