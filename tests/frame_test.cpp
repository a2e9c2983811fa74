// The front door, the outermost frames, the root class, printing and the
// descriptors of the universal classes.
#include "support.h"

#include <functional>
#include <memory>
#include <sstream>
#include <typeinfo>

namespace {

using Zol::AsnBuffer;
using zt::Bytes;
using zt::Decode;
using zt::DoorLine;
using zt::Encoded;
using zt::Hex;

TEST(Encode, WritesAtTheTopOfTheBlock) {
    char block[16];
    size_t len = 0;
    AsnOcts v("AB");
    char* p = AsnBuffer::Encode(block, sizeof block, v, len);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p + len, block + sizeof block);
    EXPECT_EQ(Hex(p, len), "04 02 41 42");

    AsnInt i(1);
    EXPECT_EQ(AsnBuffer::Encode(block, 0, i, len), nullptr);
    EXPECT_EQ(len, 3u);
    EXPECT_EQ(AsnBuffer::Encode(block, 2, i, len), nullptr);
    EXPECT_EQ(len, 3u);
    EXPECT_EQ(AsnBuffer::Encode(block, 3, i, len), block);
}

// 1 tag octet + 3 length octets + content: exactly BUFSIZE fits, one more does not.
TEST(Encode, TwoArgumentFormHoldsExactlyBufsize) {
    std::string content(AsnBuffer::BUFSIZE - 4, 'x');
    AsnOcts fits(content.data(), content.size());
    size_t len = 0;
    EXPECT_EQ(AsnBuffer::Encode(fits, len), AsnBuffer::data);
    EXPECT_EQ(len, 30000u);
    EXPECT_EQ(Hex(AsnBuffer::data, 4), "04 82 75 2C");

    content.push_back('y');
    AsnOcts over(content.data(), content.size());
    EXPECT_EQ(AsnBuffer::Encode(over, len), nullptr);
    EXPECT_EQ(len, 30001u);
}

TEST(Decode, VerdictsAndLines) {
    const struct {
        const char* wire;
        int result;
        std::string err;
    } rows[] = {
        {"", 0, "BDecTag: ERROR - decoded past the end of data\n" + DoorLine("INTEGER", -22)},
        {"02 01 05 FF FF", 1, ""},  // trailing bytes are ignored
        {"02 02 01", 0, "AsnInt::BDecContent: ERROR - decoded past end of data.\n" + DoorLine("INTEGER", -8)},
    };
    for (const auto& r : rows) {
        AsnInt v;
        auto o = Decode(Bytes(r.wire), v);
        EXPECT_EQ(o.result, r.result) << r.wire;
        EXPECT_EQ(o.err, r.err) << r.wire;
        if (r.result) {
            EXPECT_EQ(v.value, 5);
        }
    }
    // A REAL cut short only sets the read flag: 0 with no text at all.
    AsnReal r;
    auto o = Decode(Bytes("09 03 80 01"), r);
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.err, "");
}

// Every universal class refuses a foreign tag with its own line and code;
// the front door names the kind of the value it was given.
TEST(Decode, WrongUniversalTag) {
    const struct {
        std::function<AsnType*()> make;
        const char* text;
        const char* kind;
        int code;
    } rows[] = {
        {[] { return new AsnBits; }, "AsnBits::BDec: ERROR tag on BIT STRING is wrong.", "BIT STRING", -50},
        {[] { return new AsnBool; }, "AsnBool::BDec: ERROR tag on BOOLEAN wrong.", "BOOLEAN", -51},
        {[] { return new AsnEnum; }, "AsnEnum::BDec: ERROR tag on ENUMERATED is wrong.", "ENUMERATED", -52},
        {[] { return new AsnInt; }, "AsnInt::BDec: ERROR tag on INTEGER is wrong.", "INTEGER", -53},
        {[] { return new AsnNull; }, "AsnNull::BDec: ERROR tag on NULL is wrong.", "NULL", -55},
        {[] { return new AsnOcts; }, "AsnOcts::BDec: ERROR tag on OCTET STRING is wrong.", "OCTET STRING", -56},
        {[] { return new AsnReal; }, "AsnReal::BDec: ERROR tag on REAL is wrong.", "REAL", -58},
        {[] { return new AsnType; },
         "ERROR - Attempt to decode an improperly formed ANY type (programming error).", "(void)", -80},
    };
    for (const auto& r : rows) {
        std::unique_ptr<AsnType> v(r.make());
        // 30 is no universal class's tag; 22 is the constructed form of INTEGER's 02.
        for (const char* wire : {"30 00", "22 01 00", "A2 01 00"}) {
            auto o = Decode(Bytes(wire), *v);
            EXPECT_EQ(o.result, 0);
            EXPECT_EQ(o.err, std::string(r.text) + "\n" + DoorLine(r.kind, r.code)) << wire;
        }
    }
}

TEST(Pdu, FramesGiveOneOrZeroAndTheCount) {
    std::string two = Bytes("02 01 05 01 01 FF");
    AsnBuf b;
    b.InstallData(&two[0], two.size());
    AsnInt i;
    AsnBool t;
    AsnLen n = 99;
    EXPECT_EQ(i.BDecPdu(b, n), 1);
    EXPECT_EQ(n, 3u);
    EXPECT_EQ(t.BDecPdu(b, n), 1);
    EXPECT_EQ(n, 3u);
    EXPECT_TRUE(b.Eod());
    EXPECT_EQ(int(i) + t.value, 6);

    // A long jump is dropped silently by the frame: only the decoder's line.
    testing::internal::CaptureStderr();
    EXPECT_EQ(i.BDecPdu(b, n), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "BDecTag: ERROR - decoded past the end of data\n");

    std::string cut = Bytes("09 02 80");
    b.InstallData(&cut[0], cut.size());
    AsnReal r;
    EXPECT_EQ(r.BDecPdu(b, n), 0);

    char block[4];
    b.Init(block, sizeof block);
    b.ResetInWriteRvsMode();
    AsnOcts s("abc");
    EXPECT_EQ(s.BEncPdu(b, n), 0);
    EXPECT_EQ(n, 5u);
    b.ResetInWriteRvsMode();
    EXPECT_EQ(AsnInt(-1).BEncPdu(b, n), 1);
    EXPECT_EQ(Hex(b.DataPtr(), b.DataLen()), "02 01 FF");
}

TEST(AsnTypeRoot, DefaultBehaviours) {
    AsnType t;
    EXPECT_EQ(t.Clone(), nullptr);
    EXPECT_EQ(t._getref("x", true), nullptr);
    EXPECT_EQ(t._getdesc(), &AsnType::_desc);

    char block[4];
    size_t len = 9;
    testing::internal::CaptureStderr();
    char* p = AsnBuffer::Encode(block, sizeof block, t, len);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR - Attempt to encode an improperly formed ANY type (programming error).\n");
    EXPECT_EQ(p, block + sizeof block);
    EXPECT_EQ(len, 0u);

    std::ostringstream os;
    os << t;
    EXPECT_EQ(os.str(), "ERROR - Attempt to print an improperly formed ANY type (programming error).\n");
}

// A composite printer as generated code writes one: opening line, members
// indented by the shared level, closing brace at the outer level.
struct Nest : AsnType {
    std::unique_ptr<AsnType> inner;
    explicit Nest(AsnType* in) : inner(in) {}
    void Print(std::ostream& os) const override {
        os << "{\n";
        indentLevel += indentStep;
        Indent(os, indentLevel);
        os << *inner << "\n";
        indentLevel -= indentStep;
        Indent(os, indentLevel);
        os << "}";
    }
};

TEST(Print, NestedValuesIndentByTheSharedLevel) {
    Nest v(new Nest(new Nest(new AsnInt(7))));
    std::ostringstream os;
    os << v << ";";
    EXPECT_EQ(os.str(),
              "{\n"
              "    {\n"
              "        {\n"
              "            7\n"
              "        }\n"
              "    }\n"
              "};");
    EXPECT_EQ(indentLevel, 0);

    for (unsigned short n : {0, 1, 64, 65, 200}) {
        std::ostringstream ind;
        Indent(ind, n);
        EXPECT_EQ(ind.str(), std::string(n, ' '));
    }
}

// A clone is a separate object of the same class: changing the original
// leaves it as it was.
TEST(Clone, IsIndependentOfTheOriginal) {
    const struct {
        std::function<AsnType*()> make;
        std::function<void(AsnType&)> change;
    } rows[] = {
        {[] { return new AsnInt(5); }, [](AsnType& v) { static_cast<AsnInt&>(v) = 6; }},
        {[] { return new AsnEnum(5); }, [](AsnType& v) { static_cast<AsnEnum&>(v) = 6; }},
        {[] { return new AsnBool(true); }, [](AsnType& v) { static_cast<AsnBool&>(v) = false; }},
        {[] { return new AsnNull; }, [](AsnType&) {}},
        {[] { return new AsnReal(1.5); }, [](AsnType& v) { static_cast<AsnReal&>(v) = 2.0; }},
        {[] { return new AsnOcts("ab"); }, [](AsnType& v) { static_cast<AsnOcts&>(v).octs[0] = 'z'; }},
        {[] { return new IA5String("ab"); }, [](AsnType& v) { static_cast<AsnOcts&>(v) = "xyz"; }},
        {[] { return new GeneralizedTime("ab"); }, [](AsnType& v) { static_cast<AsnOcts&>(v).octs[1] = 'z'; }},
        {[] { return new AsnBits("\xF0", 4); }, [](AsnType& v) { static_cast<AsnBits&>(v).ClrBit(0); }},
    };
    for (const auto& r : rows) {
        std::unique_ptr<AsnType> orig(r.make());
        std::string before = Encoded(*orig);
        std::unique_ptr<AsnType> copy(orig->Clone());
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(typeid(*copy), typeid(*orig));
        r.change(*orig);
        EXPECT_EQ(Encoded(*copy), before);
    }
}

TEST(Descriptors, UniversalClasses) {
    AsnType t;
    AsnInt i;
    AsnReal re;
    AsnNull n;
    AsnBool b;
    AsnEnum e;
    AsnBits bits;
    AsnOcts o;
    NumericString s;
    const struct {
        const AsnType& v;
        const AsnTypeDesc* desc;
        int type;
        bool hasNames;
    } rows[] = {
        {t, &AsnType::_desc, 0, false}, {i, &AsnInt::_desc, 2, true},      {re, &AsnReal::_desc, 3, false},
        {n, &AsnNull::_desc, 4, false}, {b, &AsnBool::_desc, 5, false},    {e, &AsnEnum::_desc, 6, true},
        {bits, &AsnBits::_desc, 7, true}, {o, &AsnOcts::_desc, 8, false}, {s, &AsnOcts::_desc, 8, false},
    };
    for (const auto& r : rows) {
        const AsnTypeDesc* d = r.v._getdesc();
        ASSERT_EQ(d, r.desc);
        EXPECT_EQ(d->getmodule(), nullptr);
        EXPECT_EQ(d->getname(), nullptr);
        EXPECT_FALSE(d->ispdu());
        EXPECT_EQ(d->gettype(), AsnTypeDesc::Type(r.type));
        EXPECT_EQ(d->create, nullptr);
        if (r.hasNames) {
            EXPECT_EQ(d->getnames(), nullptr);
        }
    }
    EXPECT_NE(dynamic_cast<const AsnEnumTypeDesc*>(AsnEnum()._getdesc()), nullptr);
    EXPECT_EQ(dynamic_cast<const AsnEnumTypeDesc*>(AsnInt()._getdesc()), nullptr);

    std::string all;
    for (const char* name : AsnTypeDesc::typenames)
        all += std::string(name) + "|";
    EXPECT_EQ(all,
              "(void)|(alias)|INTEGER|REAL|NULL|BOOLEAN|ENUMERATED|BIT STRING|OCTET STRING|"
              "OBJECT IDENTIFIER|SET|SEQUENCE|SET OF|SEQUENCE OF|CHOICE|ANY|");
}

TEST(DescriptorsDeathTest, GetnamesWithoutANamesTableAborts) {
    EXPECT_DEATH(AsnReal()._getdesc()->getnames(), "^REAL::getnames\\(\\) called\n");
    EXPECT_DEATH(AsnType()._getdesc()->getnames(), "^\\(void\\)::getnames\\(\\) called\n");
    EXPECT_DEATH(IA5String()._getdesc()->getnames(), "^OCTET STRING::getnames\\(\\) called\n");
}

}  // namespace
