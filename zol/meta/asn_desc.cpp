#include "zol/meta/asn_desc.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

const char* const AsnTypeDesc::typenames[16] = {
    "(void)",     "(alias)", "INTEGER",      "REAL",
    "NULL",       "BOOLEAN", "ENUMERATED",   "BIT STRING",
    "OCTET STRING", "OBJECT IDENTIFIER", "SET", "SEQUENCE",
    "SET OF",     "SEQUENCE OF", "CHOICE",   "ANY",
};

const AsnModuleDesc* AsnTypeDesc::getmodule() const { return module; }
const char* AsnTypeDesc::getname() const { return name; }
bool AsnTypeDesc::ispdu() const { return pdu; }
AsnTypeDesc::Type AsnTypeDesc::gettype() const { return type; }

const AsnNameDesc* AsnTypeDesc::getnames() const {
    std::fprintf(stderr, "%s::getnames() called\n", typenames[type]);
    std::abort();
}

const AsnNameDesc* AsnNamesTypeDesc::getnames() const { return names; }

int32_t AsnChoiceTypeDesc::choicebyname(const char* wanted) const {
    for (const AsnChoiceMemberDesc* m = members; m->name; ++m)
        if (std::strcmp(m->name, wanted) == 0)
            return m->choiceid;
    return -1;
}

const char* AsnChoiceTypeDesc::choicebyvalue(int32_t id) const {
    for (const AsnChoiceMemberDesc* m = members; m->name; ++m)
        if (m->choiceid == id)
            return m->name;
    return nullptr;
}

AsnTypeDesc::Type AsnAliasTypeDesc::gettype() const { return base->gettype(); }
const AsnNameDesc* AsnAliasTypeDesc::getnames() const { return base->getnames(); }
