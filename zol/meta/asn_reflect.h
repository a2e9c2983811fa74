// Reflection over the descriptors: finding a type by name, following an
// alias to the kind that decides, the name a type is shown by, and walking
// a list's elements in order. Callers that know a message only at run time
// (tools, the JSON form, generic walks) use these instead of spelling the
// walks out.
#pragma once

#include "zol/meta/asn_desc.h"

class AsnType;

// The next link of an alias chain: the base of an alias, null for any other
// descriptor. For callers that look at every name along the chain.
const AsnTypeDesc* AsnAliasBase(const AsnTypeDesc* d);

// The descriptor at the end of an alias chain: the one whose kind decides
// how a value of the type is read. Any other descriptor is its own end.
const AsnTypeDesc* AsnResolved(const AsnTypeDesc* d);

// The name a type is shown by: its own name, or for a universal class,
// which has none, its kind ("INTEGER", "OCTET STRING").
const char* AsnTypeName(const AsnTypeDesc* d);

// The type named `name` among `modules` (an array that ends with a null
// pointer, as Zol::AsnModules), or null. Names are unique across modules.
const AsnTypeDesc* AsnFindType(const AsnModuleDesc* const* modules, const char* name);

// The record of the alternative in force of `choice`, a value of a CHOICE
// type or an alias of one, found by its id; null if `choice` is no choice.
// Its value is choice._getref(record->name), null while the choice holds
// nothing. Asking each alternative by name instead compares names, in time
// that grows with the square of their number.
const AsnChoiceMemberDesc* AsnChoiceInForce(const AsnType& choice);

// Calls `visit(AsnType& elmt)` with each element of `list`, a value of a
// SET OF type or an alias of one, first to last, in time linear in their
// number. The list's cursor does not move.
template <class Visit>
void AsnForEachElement(const AsnType& list, Visit&& visit);

// --- implementation ----------------------------------------------------------

const AsnListTypeDesc* AsnListDescOf(const AsnType& list);  // null if `list` is no list

template <class Visit>
void AsnForEachElement(const AsnType& list, Visit&& visit) {
    const AsnListTypeDesc* d = AsnListDescOf(list);
    if (!d || !d->forEach)
        return;
    d->forEach(
        list, [](AsnType& elmt, void* context) { (*static_cast<Visit*>(context))(elmt); },
        const_cast<void*>(static_cast<const void*>(&visit)));
}
