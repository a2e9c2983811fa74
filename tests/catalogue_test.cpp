// The whole catalogue against what the protocol fixes: the type count of
// every module, the failure codes of every class, the ids of the
// envelopes, and a build-encode-decode walk over every type. The worked
// messages are rows (tests/rows/vectors.txt); so are the rows of kinds
// defined here:
//
//   new TYPE      a new value of the type, then the value checks
//   tags TYPE     a value with every member set (filled through the
//                 descriptors) holds its elements under these tags:
//     inner 81, 82, BF 2B ...

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>

#include "rows.h"
#include "support.h"
#include "walk.h"

namespace {

using zt::Bytes;
using zt::Hex;

// The lines of the .txt files below `dir` that are neither blank nor
// comments, as "file: line" for the failure texts, with the line.
std::vector<std::pair<std::string, std::string>> DataLines(const std::string& dir) {
    std::vector<std::pair<std::string, std::string>> out;
    for (const std::string& file : zt::FilesIn(dir, ".txt")) {
        std::ifstream in(dir + "/" + file);
        for (std::string line; std::getline(in, line);)
            if (!line.empty() && line[0] != '#')
                out.emplace_back(file + ": " + line, line);
    }
    return out;
}

std::string Encode(const AsnType& v) {
    static char block[1 << 20];
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(block, sizeof block, v, len);
    return p ? std::string(p, len) : std::string("<overflow>");
}

zt::Outcome DecodeNew(const AsnTypeDesc* d, const char* hex) {
    std::unique_ptr<AsnType> v(d->create());
    return zt::Decode(Bytes(hex), *v);
}

TEST(Catalogue, ModuleTypeCounts) {
    const std::map<std::string, int> expected = {
        {"COMMONTYPES", 12}, {"ZOLTYPES", 124}, {"ZOL", 6}, {"ZOLMISC", 35}, {"ZOLORDER", 23},
        {"ZOLORDERMULTILEG", 11}, {"ZOLORDERMARKETMAKERBLOCK", 4}, {"ZOLQUOTE", 8}, {"ZOLNEGDEAL", 14},
        {"ZOLTRADE", 19}, {"ZOLTRADEALLOCATION", 5}, {"ZOLORDERBOOK", 12}, {"ZOLMARKET", 5},
        {"ZOLBOARD", 4}, {"ZOLINSTR", 7}, {"ZOLSECTOR", 3}, {"ZOLSEC", 15}, {"ZOLSECBOARD", 14},
        {"ZOLINDEX", 8}, {"ZOLSUMMARY", 6}, {"ZOLMKTSUMM", 6}, {"ZOLPRICEPARAM", 2},
        {"ZOLSETTLEMENTPRICE", 3}, {"ZOLTRDEVENT", 8}, {"ZOLUSER", 30}, {"ZOLFIRM", 9},
        {"ZOLDEPACC", 5}, {"ZOLTRDACC", 9}, {"ZOLTRDACCGRP", 9}, {"ZOLTRDACCPOSITION", 3},
        {"ZOLCASHPOOL", 13}, {"ZOLHOLDING", 7}, {"ZOLPERMISSION", 8}, {"ZOLNEWS", 14},
        {"ZOLMESSAGE", 9}, {"ZOLAUDITEVENT", 10}};
    std::map<std::string, int> actual;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m) {
        int n = 0;
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t, ++n)
            EXPECT_EQ((*t)->module, *m) << (*t)->name;
        actual[(*m)->name] = n;
    }
    EXPECT_EQ(actual, expected);

    // In the order of their definition.
    std::string names;
    for (const AsnTypeDesc* const* t = Zol::COMMONTYPESModule.types; *t; ++t)
        names += std::string((*t)->name) + " ";
    EXPECT_EQ(names,
              "AsnTextStr AsnDate AsnTime AsnRepCommand AsnSequenceNumber AsnLongTextStr AsnDateTime "
              "AsnDateTimeMS AsnFixedReal AsnFixedInt AsnLongInt AsnSequenceContext ");
}

// Each class's first and last failure codes (catalogue/codes), provoked
// through the front door: a foreign element where the first required
// member should stand (past the last code for an all-optional sequence),
// a foreign outer tag; a tag of no alternative; a list's foreign tag and
// foreign element.
TEST(Catalogue, FailureCodesOfEveryClass) {
    int checked = 0;
    for (const auto& line : DataLines(ZOL_CATALOGUE "/codes")) {
        SCOPED_TRACE(line.first);
        std::istringstream fields(line.second);
        std::string name;
        int first = 0, last = 0;
        fields >> name >> first >> last;
        const AsnTypeDesc* d = Zol::FindType(name.c_str());
        ASSERT_TRUE(d);
        const std::string wrongTag = name + "::BDec: ERROR - wrong tag\n";
        switch (AsnResolved(d)->type) {
        case AsnTypeDesc::SEQUENCE: {
            bool allOptional = true, empty = true;
            for (auto* m = static_cast<const AsnSe_TypeDesc*>(AsnResolved(d))->members; m->name; ++m)
                empty = false, allOptional = allOptional && m->optional;
            int expected = empty || !allOptional ? first : last + 1;
            zt::Outcome o = DecodeNew(d, "30 02 05 00");
            EXPECT_EQ(o.result, 0);
            EXPECT_NE(o.err.find(zt::DoorLine(name.c_str(), expected)), std::string::npos) << o.err;
            EXPECT_EQ(DecodeNew(d, "31 00").err, wrongTag + zt::DoorLine(name.c_str(), last));
            break;
        }
        case AsnTypeDesc::CHOICE:
            EXPECT_EQ(first, last);
            EXPECT_EQ(DecodeNew(d, "BF 87 7F 00").err,
                      "ERROR - unexpected tag in CHOICE\n" + zt::DoorLine(name.c_str(), first));
            break;
        case AsnTypeDesc::SET_OF:
            EXPECT_EQ(first - 1, last);
            EXPECT_EQ(DecodeNew(d, "30 00").err, wrongTag + zt::DoorLine(name.c_str(), first));
            EXPECT_EQ(DecodeNew(d, "31 02 05 00").err, "Unexpected Tag\n" + zt::DoorLine(name.c_str(), last));
            break;
        default:
            ADD_FAILURE() << name << " has failure codes but is no sequence, choice or list";
        }
        ++checked;
    }
    EXPECT_EQ(checked, 323);
}

// Every alternative of the four envelopes stands under its id, tag and
// type: a value holding it encodes under its tag octets and decodes back
// into the same alternative.
TEST(Catalogue, EnvelopeIds) {
    std::map<std::string, int> perChoice;
    for (const auto& line : DataLines(ZOL_CATALOGUE)) {
        SCOPED_TRACE(line.first);
        std::istringstream f(line.second);
        std::string choice, name, type, octet, octets;
        int id;
        f >> choice >> id >> name >> type;
        while (f >> octet)
            octets += (octets.empty() ? "" : " ") + octet;
        auto* cd = static_cast<const AsnChoiceTypeDesc*>(Zol::FindType(choice.c_str()));
        ASSERT_TRUE(cd);
        int i = 0;
        while (cd->members[i].name && cd->members[i].choiceid != id)
            ++i;
        ASSERT_TRUE(cd->members[i].name);
        EXPECT_STREQ(cd->members[i].name, name.c_str());
        EXPECT_STREQ(cd->members[i].desc->name, type.c_str());
        EXPECT_EQ(cd->choicebyname(name.c_str()), id);
        EXPECT_STREQ(cd->choicebyvalue(id), name.c_str());

        std::unique_ptr<AsnType> v(cd->create());
        zt::Filler filler;
        filler.pick = [&](const AsnChoiceTypeDesc* c) { return c == cd ? i : 0; };
        filler.Fill(v.get(), cd);
        std::string bytes = Encode(*v);
        EXPECT_EQ(Hex(bytes).substr(0, octets.size()), octets);
        std::unique_ptr<AsnType> back(cd->create());
        zt::Outcome o = zt::Decode(bytes, *back);
        EXPECT_EQ(o.result, 1) << o.err;
        ASSERT_NE(back->_getref(name.c_str()), nullptr);
        EXPECT_EQ(back->_getref(name.c_str())->_getdesc(), cd->members[i].desc);
        ++perChoice[choice];
    }
    const std::map<std::string, int> expected = {
        {"ZolTransReqChoice", 107}, {"ZolQueryReqChoice", 70}, {"ZolQueryRep", 70}, {"ZolTransRep", 3}};
    EXPECT_EQ(perChoice, expected);
}

// Every type of every module built and filled through its descriptors,
// encoded, decoded into a fresh value, printed and cloned.
TEST(Catalogue, DescriptorWalkOverEveryType) {
    int walked = 0;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m) {
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t, ++walked) {
            const AsnTypeDesc* d = *t;
            SCOPED_TRACE(d->name);
            for (int seed = 1; seed <= 2; ++seed) {
                std::unique_ptr<AsnType> v(d->create());
                ASSERT_TRUE(v);
                EXPECT_EQ(v->_getdesc(), d);
                zt::Filler filler;
                filler.seed = seed;
                filler.pick = [seed](const AsnChoiceTypeDesc* c) {
                    int n = 0;
                    while (c->members[n].name)
                        ++n;
                    return (seed * 7) % n;
                };
                filler.Fill(v.get(), d);
                std::string bytes = Encode(*v);
                std::unique_ptr<AsnType> back(d->create());
                zt::Outcome o = zt::Decode(bytes, *back);
                ASSERT_EQ(o.result, 1) << o.err << Hex(bytes);
                EXPECT_EQ(zt::Printed(*back), zt::Printed(*v));
                EXPECT_EQ(Encode(*back), bytes);
                std::unique_ptr<AsnType> copy(v->Clone());
                ASSERT_TRUE(copy);
                // Enumerations and named bits have no Clone of their own.
                EXPECT_EQ(copy->_getdesc(), d->type == AsnTypeDesc::ENUMERATED ? &AsnEnum::_desc
                                            : d->type == AsnTypeDesc::BIT_STRING ? &AsnBits::_desc
                                                                                 : d);
                EXPECT_EQ(zt::Printed(*copy), zt::Printed(*v));
                EXPECT_EQ(Encode(*copy), bytes);
            }
        }
    }
    EXPECT_EQ(walked, 480);
}

// The identifier octets of the elements inside the outermost element, as
// "30, 9F 52, BF 2D".
std::string InnerTags(const std::string& enc) {
    AsnTlv outer, inner;
    AsnReadTlv(enc.data(), enc.size(), outer);
    std::string out;
    for (size_t i = outer.headerSize; i < outer.totalSize; i += inner.totalSize) {
        if (AsnReadTlv(enc.data() + i, outer.totalSize - i, inner) != AsnTlvComplete)
            return out + " <malformed>";
        out += (out.empty() ? "" : ", ") + Hex(enc.data() + i, BTagLen(inner.tag));
    }
    return out;
}

ZT_ROW_OP(new) {
    std::unique_ptr<AsnType> v = zt::Make(row.arg);
    zt::CheckValue(row, row.arg, v);
}

// The two-argument front door takes the whole value too, into its own
// block, ending where the block ends.
ZT_ROW_OP(tags) {
    std::unique_ptr<AsnType> v = zt::Make(row.arg);
    zt::Filler().Fill(v.get(), v->_getdesc());
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(*v, len);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p + len, Zol::AsnBuffer::data + Zol::AsnBuffer::BUFSIZE);
    EXPECT_EQ(std::string(p, len), Encode(*v));
    ASSERT_TRUE(row.Get("inner"));
    EXPECT_EQ(InnerTags(std::string(p, len)), *row.Get("inner"));
}

}  // namespace
