// Run-time type descriptors: one constant record per class, built while the
// library loads and read-only afterwards. Callers walk values with them;
// the codec never reads them.
#pragma once

#include <cstdint>

class AsnType;
struct AsnModuleDesc;

struct AsnNameDesc {
    const char* name;
    int32_t value;
};

struct AsnTypeDesc {
    enum Type {
        VOID,
        ALIAS,
        INTEGER,
        REAL,
        NUL_,
        BOOLEAN,
        ENUMERATED,
        BIT_STRING,
        OCTET_STRING,
        OBJECT_IDENTIFIER,
        SET,
        SEQUENCE,
        SET_OF,
        SEQUENCE_OF,
        CHOICE,
        ANY
    };
    typedef AsnType* (*CreateFn)();

    const AsnModuleDesc* module;  // null for a universal class
    const char* name;             // null for a universal class
    bool pdu;
    Type type;
    CreateFn create;  // a new default-constructed value; null for universal classes

    // The text of each Type, indexed by it.
    static const char* const typenames[16];

    AsnTypeDesc(const AsnModuleDesc* module_, const char* name_, bool pdu_, Type type_, CreateFn create_)
        : module(module_), name(name_), pdu(pdu_), type(type_), create(create_) {}
    AsnTypeDesc(const AsnTypeDesc&) = default;
    virtual ~AsnTypeDesc() = default;

    virtual const AsnModuleDesc* getmodule() const;
    virtual const char* getname() const;
    virtual bool ispdu() const;
    virtual Type gettype() const;
    // The names table of integer, enumeration and bit-string descriptors.
    // Asking any other descriptor is a programming error that ends the
    // process.
    virtual const AsnNameDesc* getnames() const;
};

// Integer and bit-string classes: adds the names table.
struct AsnNamesTypeDesc : AsnTypeDesc {
    const AsnNameDesc* names;

    AsnNamesTypeDesc(const AsnModuleDesc* module_, const char* name_, bool pdu_, Type type_,
                     CreateFn create_, const AsnNameDesc* names_)
        : AsnTypeDesc(module_, name_, pdu_, type_, create_), names(names_) {}
    AsnNamesTypeDesc(const AsnNamesTypeDesc&) = default;

    const AsnNameDesc* getnames() const override;
};

// Enumerations.
struct AsnEnumTypeDesc : AsnNamesTypeDesc {
    using AsnNamesTypeDesc::AsnNamesTypeDesc;
    AsnEnumTypeDesc(const AsnEnumTypeDesc&) = default;
};

// A member of a sequence or choice: its name and its type.
struct AsnMemberDesc {
    const char* name;
    const AsnTypeDesc* desc;

    AsnMemberDesc() : name(nullptr), desc(nullptr) {}
    AsnMemberDesc(const char* name_, const AsnTypeDesc* desc_) : name(name_), desc(desc_) {}
};

struct AsnChoiceMemberDesc : AsnMemberDesc {
    int32_t choiceid;  // the alternative's id, which is also its tag number

    AsnChoiceMemberDesc() : choiceid(0) {}
    AsnChoiceMemberDesc(const char* name_, const AsnTypeDesc* desc_, int32_t choiceid_)
        : AsnMemberDesc(name_, desc_), choiceid(choiceid_) {}
};

struct AsnSe_MemberDesc : AsnMemberDesc {
    bool optional;

    AsnSe_MemberDesc() : optional(false) {}
    AsnSe_MemberDesc(const char* name_, const AsnTypeDesc* desc_, bool optional_)
        : AsnMemberDesc(name_, desc_), optional(optional_) {}
};

// Common base of the descriptors with member tables.
struct AsnMembersTypeDesc : AsnTypeDesc {
    using AsnTypeDesc::AsnTypeDesc;
    AsnMembersTypeDesc(const AsnMembersTypeDesc&) = default;
};

// Choices: `inForce` gives the id of the alternative in force of a value of
// this type (AsnChoiceInForce of asn_reflect.h is the way to call it).
struct AsnChoiceTypeDesc : AsnMembersTypeDesc {
    typedef int32_t (*InForceFn)(const AsnType& choice);

    const AsnChoiceMemberDesc* members;
    InForceFn inForce;

    AsnChoiceTypeDesc(const AsnModuleDesc* module_, const char* name_, bool pdu_, Type type_,
                      CreateFn create_, const AsnChoiceMemberDesc* members_, InForceFn inForce_)
        : AsnMembersTypeDesc(module_, name_, pdu_, type_, create_), members(members_), inForce(inForce_) {}
    AsnChoiceTypeDesc(const AsnChoiceTypeDesc&) = default;

    // The id of the first alternative named `name`, or -1.
    int32_t choicebyname(const char* name) const;
    // The name of the first alternative with id `id`, or null.
    const char* choicebyvalue(int32_t id) const;
};

struct AsnSe_TypeDesc : AsnMembersTypeDesc {
    const AsnSe_MemberDesc* members;

    AsnSe_TypeDesc(const AsnModuleDesc* module_, const char* name_, bool pdu_, Type type_,
                   CreateFn create_, const AsnSe_MemberDesc* members_)
        : AsnMembersTypeDesc(module_, name_, pdu_, type_, create_), members(members_) {}
    AsnSe_TypeDesc(const AsnSe_TypeDesc&) = default;
};

// Lists: `base` describes the element; `forEach` calls `visit` with each
// element of a list of this type, first to last (AsnForEachElement of
// asn_reflect.h is the way to call it).
struct AsnListTypeDesc : AsnTypeDesc {
    typedef void (*VisitFn)(AsnType& elmt, void* context);
    typedef void (*ForEachFn)(const AsnType& list, VisitFn visit, void* context);

    const AsnTypeDesc* base;
    ForEachFn forEach;

    AsnListTypeDesc(const AsnModuleDesc* module_, const char* name_, bool pdu_, Type type_,
                    CreateFn create_, const AsnTypeDesc* base_, ForEachFn forEach_ = nullptr)
        : AsnTypeDesc(module_, name_, pdu_, type_, create_), base(base_), forEach(forEach_) {}
    AsnListTypeDesc(const AsnListTypeDesc&) = default;
};

// Aliases keep their own module, name and pdu flag; type and names are
// those at the end of the alias chain.
struct AsnAliasTypeDesc : AsnTypeDesc {
    const AsnTypeDesc* base;

    AsnAliasTypeDesc(const AsnModuleDesc* module_, const char* name_, bool pdu_, Type type_,
                     CreateFn create_, const AsnTypeDesc* base_)
        : AsnTypeDesc(module_, name_, pdu_, type_, create_), base(base_) {}
    AsnAliasTypeDesc(const AsnAliasTypeDesc&) = default;

    Type gettype() const override;
    const AsnNameDesc* getnames() const override;
};

struct AsnModuleDesc {
    const char* name;
    const AsnTypeDesc* const* types;  // in definition order, null-terminated
};
