#include "zol/meta/asn_reflect.h"

#include <cstring>

#include "zol/ber/asn_type.h"

const AsnTypeDesc* AsnAliasBase(const AsnTypeDesc* d) {
    return d->type == AsnTypeDesc::ALIAS ? static_cast<const AsnAliasTypeDesc*>(d)->base : nullptr;
}

const AsnTypeDesc* AsnResolved(const AsnTypeDesc* d) {
    while (d && d->type == AsnTypeDesc::ALIAS)
        d = AsnAliasBase(d);
    return d;
}

const char* AsnTypeName(const AsnTypeDesc* d) { return d->name ? d->name : AsnTypeDesc::typenames[d->type]; }

const AsnTypeDesc* AsnFindType(const AsnModuleDesc* const* modules, const char* name) {
    for (; *modules; ++modules)
        for (const AsnTypeDesc* const* t = (*modules)->types; *t; ++t)
            if (std::strcmp((*t)->name, name) == 0)
                return *t;
    return nullptr;
}

const AsnChoiceMemberDesc* AsnChoiceInForce(const AsnType& choice) {
    const AsnTypeDesc* d = AsnResolved(choice._getdesc());
    if (!d || d->type != AsnTypeDesc::CHOICE)
        return nullptr;
    const AsnChoiceTypeDesc* c = static_cast<const AsnChoiceTypeDesc*>(d);
    int32_t id = c->inForce(choice);
    const AsnChoiceMemberDesc* m = c->members;
    while (m->name && m->choiceid != id)
        ++m;
    return m->name ? m : nullptr;
}

const AsnListTypeDesc* AsnListDescOf(const AsnType& list) {
    const AsnTypeDesc* d = AsnResolved(list._getdesc());
    return d && d->type == AsnTypeDesc::SET_OF ? static_cast<const AsnListTypeDesc*>(d) : nullptr;
}
