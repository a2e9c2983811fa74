// The whole catalogue against what the protocol fixes: the type count of
// every module, the failure codes of every class, the worked messages, the
// ids of the envelopes, and a build-encode-decode walk over every type.
#include <dirent.h>

#include <algorithm>
#include <memory>

#include <fstream>
#include <map>
#include <sstream>

#include "support.h"
#include "walk.h"

namespace {

std::vector<std::string> FilesIn(const std::string& dir) {
    std::vector<std::string> out;
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d))
            if (std::string(e->d_name).size() > 4 && std::string(e->d_name).rfind(".txt") != std::string::npos)
                out.push_back(dir + "/" + e->d_name);
        closedir(d);
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string Encode(const AsnType& v) {
    static char block[1 << 20];
    size_t len = 0;
    char* p = Zol::AsnBuffer::Encode(block, sizeof block, v, len);
    return p ? std::string(p, len) : std::string("<overflow>");
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
}

TEST(Catalogue, CommonTypesOrder) {
    std::string names;
    for (const AsnTypeDesc* const* t = Zol::COMMONTYPESModule.types; *t; ++t)
        names += std::string((*t)->name) + " ";
    EXPECT_EQ(names,
              "AsnTextStr AsnDate AsnTime AsnRepCommand AsnSequenceNumber AsnLongTextStr AsnDateTime "
              "AsnDateTimeMS AsnFixedReal AsnFixedInt AsnLongInt AsnSequenceContext ");
}

// Each class's first and last failure codes, provoked through the front
// door: a foreign element where the first required member should stand,
// and a foreign outer tag.
TEST(Catalogue, FailureCodesOfEveryClass) {
    int checked = 0;
    for (const std::string& file : FilesIn(ZOL_CATALOGUE "/codes")) {
        std::ifstream in(file);
        std::string line;
        while (std::getline(in, line)) {
            if (line.empty() || line[0] == '#')
                continue;
            std::istringstream fields(line);
            std::string name;
            int first = 0, last = 0;
            fields >> name >> first >> last;
            const AsnTypeDesc* d = Zol::FindType(name.c_str());
            ASSERT_TRUE(d) << file << ": " << name;
            std::unique_ptr<AsnType> v(d->create());
            std::string doorName = std::string(name);
            switch (AsnResolved(d)->type) {
            case AsnTypeDesc::SEQUENCE: {
                bool allOptional = true, empty = true;
                for (auto* m = static_cast<const AsnSe_TypeDesc*>(AsnResolved(d))->members; m->name; ++m)
                    empty = false, allOptional = allOptional && m->optional;
                int expected = empty || !allOptional ? first : last + 1;
                zt::Outcome o = zt::Decode(zt::Bytes("30 02 05 00"), *v);
                EXPECT_EQ(o.result, 0) << name;
                EXPECT_NE(o.err.find(zt::DoorLine(name.c_str(), expected)), std::string::npos)
                    << name << ": " << o.err;
                std::unique_ptr<AsnType> w(d->create());
                o = zt::Decode(zt::Bytes("31 00"), *w);
                EXPECT_EQ(o.err, name + "::BDec: ERROR - wrong tag\n" + zt::DoorLine(name.c_str(), last));
                break;
            }
            case AsnTypeDesc::CHOICE: {
                EXPECT_EQ(first, last) << name;
                zt::Outcome o = zt::Decode(zt::Bytes("BF 87 7F 00"), *v);
                EXPECT_EQ(o.err, "ERROR - unexpected tag in CHOICE\n" + zt::DoorLine(name.c_str(), first));
                break;
            }
            case AsnTypeDesc::SET_OF: {
                EXPECT_EQ(first - 1, last) << name;
                zt::Outcome o = zt::Decode(zt::Bytes("30 00"), *v);
                EXPECT_EQ(o.err, name + "::BDec: ERROR - wrong tag\n" + zt::DoorLine(name.c_str(), first));
                std::unique_ptr<AsnType> w(d->create());
                o = zt::Decode(zt::Bytes("31 02 05 00"), *w);
                EXPECT_EQ(o.err, "Unexpected Tag\n" + zt::DoorLine(name.c_str(), last));
                break;
            }
            default:
                ADD_FAILURE() << name << " has failure codes but is no sequence, choice or list";
            }
            ++checked;
        }
    }
    EXPECT_EQ(checked, 323);
}

// The worked messages decode and encode again to the same octets.
TEST(Catalogue, WorkedMessagesRoundTrip) {
    int checked = 0;
    for (const std::string& file : FilesIn(ZOL_CATALOGUE "/vectors")) {
        std::ifstream in(file);
        std::string line, comment, type;
        while (std::getline(in, line)) {
            if (line.rfind("# ", 0) == 0)
                comment = line;
            else if (line.rfind("type ", 0) == 0)
                type = line.substr(5);
            else if (line.rfind("hex ", 0) == 0) {
                const AsnTypeDesc* d = Zol::FindType(type.c_str());
                ASSERT_TRUE(d) << type;
                std::unique_ptr<AsnType> v(d->create());
                std::string bytes = zt::Bytes(line.c_str() + 4);
                zt::Outcome o = zt::Decode(bytes, *v);
                EXPECT_EQ(o.result, 1) << comment << "\n" << o.err;
                EXPECT_EQ(o.err, "") << comment;
                if (comment.find("re-encodes as") == std::string::npos) {
                    EXPECT_EQ(zt::Hex(Encode(*v)), zt::Hex(bytes)) << comment;
                }
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 10);
}

// Every alternative of the four envelopes stands under its id and tag.
TEST(Catalogue, EnvelopeIds) {
    std::ifstream in(ZOL_CATALOGUE "/envelope_ids.txt");
    std::string line;
    int checked = 0;
    std::map<std::string, int> perChoice;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream f(line);
        std::string choice, name, type, octet, octets;
        int id;
        f >> choice >> id >> name >> type;
        while (f >> octet)
            octets += (octets.empty() ? "" : " ") + octet;
        auto* cd = static_cast<const AsnChoiceTypeDesc*>(Zol::FindType(choice.c_str()));
        ASSERT_TRUE(cd) << choice;
        EXPECT_EQ(cd->choicebyname(name.c_str()), id) << line;
        ASSERT_TRUE(cd->choicebyvalue(id)) << line;
        EXPECT_EQ(std::string(cd->choicebyvalue(id)), name) << line;

        // A value holding the alternative encodes under its tag octets and
        // decodes back into the same alternative.
        std::unique_ptr<AsnType> v(cd->create());
        zt::Filler filler;
        filler.pick = [&](const AsnChoiceTypeDesc* c) {
            if (c != cd)
                return 0;
            int i = 0;
            while (c->members[i].choiceid != id)
                ++i;
            return i;
        };
        filler.Fill(v.get(), cd);
        std::string bytes = Encode(*v);
        EXPECT_EQ(zt::Hex(bytes).substr(0, octets.size()), octets) << line;
        std::unique_ptr<AsnType> back(cd->create());
        zt::Outcome o = zt::Decode(bytes, *back);
        EXPECT_EQ(o.result, 1) << line << o.err;
        EXPECT_NE(back->_getref(name.c_str(), false), nullptr) << line;
        ++perChoice[choice];
        ++checked;
    }
    EXPECT_EQ(perChoice["ZolTransReqChoice"], 107);
    EXPECT_EQ(perChoice["ZolQueryReqChoice"], 70);
    EXPECT_EQ(perChoice["ZolQueryRep"], 70);
    EXPECT_EQ(perChoice["ZolTransRep"], 3);
}

// Every type of every module built and filled through its descriptors,
// encoded, decoded into a fresh value, printed and cloned.
TEST(Catalogue, DescriptorWalkOverEveryType) {
    int walked = 0;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m) {
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t) {
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
                ASSERT_EQ(o.result, 1) << o.err << zt::Hex(bytes);
                EXPECT_EQ(zt::Printed(*back), zt::Printed(*v));
                EXPECT_EQ(Encode(*back), bytes);
                std::unique_ptr<AsnType> copy(v->Clone());
                ASSERT_TRUE(copy);
                EXPECT_EQ(zt::Printed(*copy), zt::Printed(*v));
                EXPECT_EQ(Encode(*copy), bytes);
            }
            ++walked;
        }
    }
    EXPECT_EQ(walked, 480);
}

}  // namespace
