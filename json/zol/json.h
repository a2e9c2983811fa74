// JSON form of any value of the library, both ways, found through the
// value's descriptors and _getref alone:
//
//   SEQUENCE     an object with one key per member present, in the order of
//                the members; an absent optional member is left out
//   CHOICE       an object with one key, the name of the alternative in force
//   SET OF       an array
//   ENUMERATED   the name of the value, or its number when it has no name
//   INTEGER      a number
//   BOOLEAN      true or false
//   NULL         null
//   REAL         a number; the infinities are "PLUS-INFINITY" and
//                "MINUS-INFINITY", not-a-number is "NOT-A-NUMBER"
//   OCTET STRING a string when every octet is printable ASCII (20 to 7E),
//                else an object {"hex": "..."} of two upper-case hex digits
//                per octet
//   BIT STRING   a string of 0 and 1, one character per bit, bit 0 first
//
// A fixed real (ZolPrice ...) is a sequence and shows as one:
// {"value": 101.25, "decimals": 2}.
#pragma once

#include <stdexcept>
#include <string>

#include <nlohmann/json.hpp>

#include <zol/zol.h>

namespace Zol {

// Objects keep their keys in the order of the members.
using Json = nlohmann::ordered_json;

// A JSON text that does not fit the type it is read as; what() names the
// place ("upTransMsg.order.order.quantity") and the fault.
class JsonError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The JSON form of `value`, in time linear in its size: lists are walked
// first to last, their cursors left where they were; nothing of the value
// changes. A choice that holds nothing gives null; a required member that
// was never set is left out, as an absent optional one is.
Json ToJson(const AsnType& value);

// Fills `value`, a newly constructed value, from its JSON form, in time
// linear in its size (the elements of a list are appended). Every required
// member must be given, and no key may name something the type lacks.
// Throws JsonError; `value` may then be partly filled.
void FromJson(const Json& json, AsnType& value);

}  // namespace Zol
