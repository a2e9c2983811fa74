// Aliases, enumerations and named bits, and the descriptors that tell them
// apart: an alias keeps its own name and module but answers for the kind
// and names at the end of its chain; enumerations and named bits clone
// into their universal base.
#include <memory>

#include "decode_rows.h"
#include "support.h"
#include "tests/patterns.h"
#include "walk.h"

namespace {

using namespace Zol;
using namespace zt;

TEST(Alias, DescriptorsFollowTheChain) {
    const struct {
        const AsnTypeDesc* desc;
        const char* name;
        AsnTypeDesc::Type resolved;
        const AsnModuleDesc* module;
    } rows[] = {
        {&ZolFirmId::_desc, "ZolFirmId", AsnTypeDesc::OCTET_STRING, &ZOLTYPESModule},
        {&ZolQuantity::_desc, "ZolQuantity", AsnTypeDesc::INTEGER, &ZOLTYPESModule},
        {&ZolPrice::_desc, "ZolPrice", AsnTypeDesc::SEQUENCE, &ZOLTYPESModule},
        {&ZolBoolean::_desc, "ZolBoolean", AsnTypeDesc::BOOLEAN, &ZOLTYPESModule},
        {&ZolLargeQty::_desc, "ZolLargeQty", AsnTypeDesc::SEQUENCE, &ZOLTYPESModule},
        {&ZolOrderMultiLegId::_desc, "ZolOrderMultiLegId", AsnTypeDesc::SEQUENCE, &ZOLTYPESModule},
        {&AsnLongTextStr::_desc, "AsnLongTextStr", AsnTypeDesc::OCTET_STRING, &COMMONTYPESModule},
        {&PatVerb::_desc, "PatVerb", AsnTypeDesc::ENUMERATED, &TESTPATTERNSModule},
        {&ZolMarketName::_desc, "ZolMarketName", AsnTypeDesc::OCTET_STRING, &ZOLMARKETModule},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(r.desc->type, AsnTypeDesc::ALIAS) << r.name;
        EXPECT_EQ(r.desc->gettype(), r.resolved) << r.name;
        EXPECT_EQ(AsnResolved(r.desc)->type, r.resolved) << r.name;
        EXPECT_STREQ(AsnTypeName(r.desc), r.name);
        EXPECT_STREQ(r.desc->getname(), r.name);
        EXPECT_EQ(r.desc->getmodule(), r.module) << r.name;
        EXPECT_FALSE(r.desc->ispdu());
        std::unique_ptr<AsnType> made(r.desc->create());
        EXPECT_EQ(made->_getdesc(), r.desc) << r.name;
    }
    // ZolPrice -> ZolFixedReal -> AsnFixedReal.
    auto* price = static_cast<const AsnAliasTypeDesc*>(&ZolPrice::_desc);
    EXPECT_EQ(price->base, &ZolFixedReal::_desc);
    EXPECT_EQ(static_cast<const AsnAliasTypeDesc*>(price->base)->base, &AsnFixedReal::_desc);
    EXPECT_EQ(AsnAliasBase(&ZolFixedReal::_desc), &AsnFixedReal::_desc);
    EXPECT_EQ(AsnAliasBase(&AsnFixedReal::_desc), nullptr);
    EXPECT_EQ(AsnResolved(&ZolPrice::_desc), &AsnFixedReal::_desc);
    // A universal class is shown by its kind.
    EXPECT_STREQ(AsnTypeName(&AsnInt::_desc), "INTEGER");
    EXPECT_STREQ(AsnTypeName(&AsnOcts::_desc), "OCTET STRING");

    // By name across the modules: whole names only, the last module too.
    EXPECT_EQ(Zol::FindType("ZolPrice"), &ZolPrice::_desc);
    EXPECT_EQ(Zol::FindType("ZolPricePoint"), &ZolPricePoint::_desc);
    EXPECT_EQ(Zol::FindType("ZolPric"), nullptr);
    const AsnModuleDesc* const* last = Zol::AsnModules;
    while (last[1])
        ++last;
    EXPECT_EQ(Zol::FindType((*last)->types[0]->name), (*last)->types[0]);
    EXPECT_EQ(Zol::FindType("PatVerb"), nullptr);  // not a module of the protocol
    const AsnModuleDesc* const patterns[] = {&TESTPATTERNSModule, nullptr};
    EXPECT_EQ(AsnFindType(patterns, "PatVerb"), &PatVerb::_desc);

    // Names through an alias are the enumeration's own table.
    const AsnNameDesc* levels = ZolAccessLevel::_desc.getnames();
    std::string all;
    for (const AsnNameDesc* n = levels; n->name; ++n)
        all += std::string(n->name) + "=" + std::to_string(n->value) + " ";
    EXPECT_EQ(all, "none=0 public1=1 user=2 firm=4 full=8 ");
    EXPECT_EQ(levels[5].name, nullptr);
    EXPECT_EQ(levels[5].value, -1);
    EXPECT_EQ(ZolAccessLevel::full, 8);
    EXPECT_EQ(PatVerb::_desc.getnames(), ZolOrderVerb::_nmdescs);
    EXPECT_EQ(ZolOrderMethods::_desc.getnames()[8].name, std::string("yield"));
    EXPECT_EQ(ZolOrderMethods::_desc.getnames()[8].value, 10);
    EXPECT_EQ(ZolOrderMethods::_desc.type, AsnTypeDesc::BIT_STRING);
    EXPECT_EQ(ZolOrderMethods::_desc.getnames()[24].name, nullptr);
    EXPECT_EQ(ZolOrderMethods::_desc.getnames()[24].value, -1);
}

// The tables zolc writes: rows in order with their optional flags, ids,
// list elements, and the module's types in definition order.
TEST(Descriptors, TablesOfTheGeneratedClasses) {
    std::string rows;
    for (const AsnSe_MemberDesc* m = PatAll::_desc.members; m->name; ++m)
        rows += std::string(m->name) + (m->optional ? "? " : " ");
    EXPECT_EQ(rows, "num verb flag ratio text methods price note? points opt? extra? ");
    EXPECT_EQ(PatAll::_desc.members, PatAll::_mdescs);
    EXPECT_EQ(PatAll::_mdescs[6].desc, &ZolPrice::_desc);
    EXPECT_EQ(PatAll::_mdescs[3].desc, &AsnReal::_desc);
    EXPECT_EQ(PatAll::_mdescs[11].desc, nullptr);
    EXPECT_EQ(PatAll::_desc.type, AsnTypeDesc::SEQUENCE);
    EXPECT_EQ(PatEmpty::_mdescs[0].name, nullptr);

    std::string alts;
    for (const AsnChoiceMemberDesc* m = PatChoice::_desc.members; m->name; ++m)
        alts += std::string(m->name) + "=" + std::to_string(m->choiceid) + ":" + m->desc->name + " ";
    EXPECT_EQ(alts, "num=0:ZolInteger text=1:ZolTextStr rec=2:PatOpt none=3:PatEmpty inner=4:PatInner "
                    "wide=40:ZolInteger wider=300:ZolTextStr ");
    EXPECT_EQ(PatChoice::_desc.type, AsnTypeDesc::CHOICE);
    EXPECT_EQ(PatList::_desc.type, AsnTypeDesc::SET_OF);
    EXPECT_EQ(static_cast<const AsnListTypeDesc&>(PatList::_desc).base, &PatElem::_desc);

    std::string types;
    for (const AsnTypeDesc* const* t = TESTPATTERNSModule.types; *t; ++t)
        types += std::string((*t)->name) + " ";
    EXPECT_EQ(types, "PatEmpty PatOpt PatInner PatChoice PatElem PatList PatHolder PatAll PatVerb PatListHolder ");
    EXPECT_STREQ(TESTPATTERNSModule.name, "TESTPATTERNS");
}

TEST(AliasDeathTest, GetnamesWithoutANamesTableAborts) {
    EXPECT_DEATH(ZolPrice::_desc.getnames(), "^SEQUENCE::getnames\\(\\) called\n");
    EXPECT_DEATH(ZolTransRep::_desc.getnames(), "^CHOICE::getnames\\(\\) called\n");
    EXPECT_DEATH(PatList::_desc.getnames(), "^SET OF::getnames\\(\\) called\n");
    EXPECT_DEATH(ZolFirmId::_desc.getnames(), "^OCTET STRING::getnames\\(\\) called\n");
}

TEST(Alias, ValuesKeepTheirClass) {
    ZolFirmId a("ABC"), b("ABC", 3), c(std::string("A\0BC", 4).c_str(), 4);
    EXPECT_TRUE(a == b);
    EXPECT_EQ(c.Len(), 4u);
    EXPECT_EQ(Encoded(c), "04 04 41 00 42 43");
    EXPECT_EQ(ZolFirmId("A\0BC").Len(), 1u);
    EXPECT_EQ(ZolFirmId().Len(), 0u);
    char src[] = "XYZ";
    ZolFirmId d;
    d = src;
    src[0] = 'Q';
    EXPECT_EQ(std::string(d), "XYZ");
    ZolFirmId e(static_cast<const ZolTextStr&>(d));
    EXPECT_EQ(std::string(e), "XYZ");

    ZolQuantity q(5);
    std::unique_ptr<AsnType> qc(q.Clone());
    EXPECT_EQ(qc->_getdesc(), &ZolQuantity::_desc);
    EXPECT_EQ(qc->_getdesc()->gettype(), AsnTypeDesc::INTEGER);
    EXPECT_STREQ(qc->_getdesc()->getname(), "ZolQuantity");
    EXPECT_EQ(dynamic_cast<ZolQuantity*>(qc.get())->value, 5);
    std::unique_ptr<AsnType> pc(ZolPrice().Clone());
    EXPECT_EQ(pc->_getdesc(), &ZolPrice::_desc);
    EXPECT_NE(pc->_getref("value"), nullptr);  // the base's members

    // Enumerations and named bits have no Clone of their own.
    ZolOrderVerb v(ZolOrderVerb::sell);
    std::unique_ptr<AsnType> vc(v.Clone());
    EXPECT_EQ(typeid(*vc), typeid(AsnEnum));
    EXPECT_EQ(vc->_getdesc(), &AsnEnum::_desc);
    EXPECT_EQ(vc->_getdesc()->getname(), nullptr);
    EXPECT_EQ(static_cast<AsnEnum*>(vc.get())->value, 1);
    EXPECT_EQ(Printed(v), "1");
    EXPECT_EQ(Encoded(v), "0A 01 01");
    ZolOrderMethods m(size_t(12));
    m.SetBit(ZolOrderMethods::hidden);
    std::unique_ptr<AsnType> mc(m.Clone());
    EXPECT_EQ(typeid(*mc), typeid(AsnBits));
    EXPECT_EQ(mc->_getdesc(), &AsnBits::_desc);
    EXPECT_EQ(Encoded(*mc), "03 03 04 00 10");
    EXPECT_EQ(Encoded(m), "03 03 04 00 10");
}

TEST(Alias, ValuesOutsideTheNamesTravel) {
    const DecodeRow rows[] = {
        {ZolEventSubject::_desc.create, "30 03 0A 01 63", 1, "", 0, true},
        {ZolOrderVerb::_desc.create, "0A 02 01 2C", 1, "", 0, true},
        {ZolOrderVerb::_desc.create, "02 01 01", 0, "AsnEnum::BDec: ERROR tag on ENUMERATED is wrong.\n", -52},
        {ZolOrderMethods::_desc.create, "03 05 03 FF FF FF F8", 1, "", 0, true},  // 29 bits
        {ZolOrderMethods::_desc.create, "03 01 00", 1, "", 0, true},
        {ZolOrderMethods::_desc.create, "03 06 00 01 02 03 04 05", 1, "", 0, true},
        {ZolFirmId::_desc.create, "24 06 04 01 41 04 01 42", 1, "", 0},
        {ZolQuantity::_desc.create, "04 01 05", 0, "AsnInt::BDec: ERROR tag on INTEGER is wrong.\n", -53},
    };
    CheckDecodes(rows, sizeof rows / sizeof *rows);

    ZolEventSubject s;
    ASSERT_EQ(Decode(Bytes("30 03 0A 01 63"), s).result, 1);
    EXPECT_EQ(s.subjectClass.value, 99);
    EXPECT_EQ(Printed(s), "{ -- SEQUENCE --\n    subjectClass 99,\n    subjectId -- void --\n\n}");
    ZolOrderMethods m;
    ASSERT_EQ(Decode(Bytes("03 05 03 FF FF FF F8"), m).result, 1);
    EXPECT_EQ(m.BitLen(), 29u);
    EXPECT_TRUE(m.GetBit(ZolOrderMethods::immwithdraw));
    EXPECT_TRUE(m.GetBit(21));
}

}  // namespace
