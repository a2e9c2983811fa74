// Generic walks over any type of the catalogue through its descriptors
// alone: build a value and fill every member through _getref, or visit
// every value a value holds. The catalogue's walk over every type and the
// tests that need a value with every member set (damage, JSON, the asn1c
// peer, the threads' stress) share them.
#pragma once

#include <functional>
#include <sstream>
#include <string>

#include <zol/zol.h>

namespace zt {

inline std::string Printed(const AsnType& v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

// Fills `v` of type `d` through descriptors and _getref with create.
// `pick` chooses an alternative of each choice met (index into its
// member table); lists get two elements. Values vary with `seed`.
struct Filler {
    std::function<int(const AsnChoiceTypeDesc*)> pick = [](const AsnChoiceTypeDesc*) { return 0; };
    int seed = 1;
    int depth = 0;

    void Fill(AsnType* v, const AsnTypeDesc* d) {
        const AsnTypeDesc* r = AsnResolved(d);
        ++seed;
        switch (r->type) {
        case AsnTypeDesc::SEQUENCE: {
            auto* sd = static_cast<const AsnSe_TypeDesc*>(r);
            for (const AsnSe_MemberDesc* m = sd->members; m->name; ++m) {
                AsnType* member = v->_getref(m->name, true);
                if (member)
                    Fill(member, m->desc);
            }
            break;
        }
        case AsnTypeDesc::CHOICE: {
            auto* cd = static_cast<const AsnChoiceTypeDesc*>(r);
            const AsnChoiceMemberDesc& alt = cd->members[pick(cd)];
            // The alternative in force answers without create; another one
            // is made by asking for it with create.
            AsnType* value = v->_getref(alt.name, true);
            if (!value) {
                v->_getref(cd->members[alt.choiceid == cd->members[0].choiceid ? 1 : 0].name, true);
                value = v->_getref(alt.name, true);
            }
            if (value)
                Fill(value, alt.desc);
            break;
        }
        case AsnTypeDesc::SET_OF: {
            const AsnTypeDesc* elem = static_cast<const AsnListTypeDesc*>(r)->base;
            Fill(v->_getref("insert 0", true), elem);
            Fill(v->_getref("insert 1", true), elem);
            break;
        }
        case AsnTypeDesc::INTEGER:
            static_cast<AsnInt*>(v)->value = seed * 37 - 500;
            break;
        case AsnTypeDesc::ENUMERATED: {
            const AsnNameDesc* names = d->getnames();
            static_cast<AsnInt*>(v)->value = names && names[0].name ? names[seed % 2 && names[1].name ? 1 : 0].value : 3;
            break;
        }
        case AsnTypeDesc::BOOLEAN:
            static_cast<AsnBool*>(v)->value = seed % 2 == 0;
            break;
        case AsnTypeDesc::REAL:
            static_cast<AsnReal*>(v)->value = seed + 0.25;
            break;
        case AsnTypeDesc::OCTET_STRING:
            static_cast<AsnOcts*>(v)->ReSet(("t" + std::to_string(seed)).c_str());
            break;
        case AsnTypeDesc::BIT_STRING: {
            auto* bits = static_cast<AsnBits*>(v);
            bits->ReSet(size_t(12 + seed % 5));
            bits->SetBit(1);
            bits->SetBit(size_t(seed % 12));
            break;
        }
        default:
            break;
        }
    }
};

// Calls `visit` with `v`, of type `d`, and with every member, alternative
// in force and element below it, parents first.
inline void ForEachValue(AsnType& v, const AsnTypeDesc* d, const std::function<void(AsnType&)>& visit) {
    visit(v);
    const AsnTypeDesc* r = AsnResolved(d);
    switch (r->type) {
    case AsnTypeDesc::SEQUENCE:
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* member = v._getref(m->name, false))
                ForEachValue(*member, m->desc, visit);
        break;
    case AsnTypeDesc::CHOICE:
        if (const AsnChoiceMemberDesc* alt = AsnChoiceInForce(v))
            if (AsnType* value = v._getref(alt->name, false))
                ForEachValue(*value, alt->desc, visit);
        break;
    case AsnTypeDesc::SET_OF:
        AsnForEachElement(v, [&](AsnType& e) { ForEachValue(e, static_cast<const AsnListTypeDesc*>(r)->base, visit); });
        break;
    default:
        break;
    }
}

}  // namespace zt
