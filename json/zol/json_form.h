// The JSON form's rules for every kind, written once over any document
// that has JSON's shape: nlohmann's JSON for the JSON form (json.cpp) and
// Python's objects for the Python module. Both ways go through the
// descriptors and _getref alone, in time linear in the value's size.
//
// Writing: Form::Write(out, value) with an `Out` that gives
//   Value                         a document value, movable
//   Value Object(), Array()
//   void Add(Value& object, const char* key, Value member)
//   void Append(Value& array, Value element)
//   Value Integer(int32_t), Boolean(bool), Null(), Real(double)
//   Value Name(const char*)       a name of the schema's (an enumeration's
//                                 value, a REAL's special value): static text
//   Value Text(const char*, size_t)   printable ASCII
//   [[noreturn]] void Fail(const std::string&)
//
// Reading: Form::Reader<In>(in).Read(node, value) with an `In` that gives
//   Node                          a document value, cheap to copy; Node() is none
//   bool IsObject(Node), IsArray(Node), IsNull(Node)
//   size_t Size(Node)             an object's keys, an array's elements
//   Node Member(Node object, const char* key)    Node() when absent
//   std::string FirstUnknownKey(Node object, Known known)
//                                 the first key, in the object's order, for
//                                 which known(std::string_view) is false
//   void SoleKey(Node object, std::string_view& key, Node& value)
//   Node Element(Node array, size_t i)
//   bool String(Node, std::string_view&)       valid until the next call
//   bool Bytes(Node, std::string_view&)        octets of the document's own
//   bool Boolean(Node, bool&)
//   bool Integer(Node, int64_t&, bool& huge)   huge: beyond 64 bits
//   bool Number(Node, double&)
//   std::string Show(Node)        the value as a failure line shows it
//   [[noreturn]] void Fail(const std::string&)   throws the document's error
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <zol/zol.h>

namespace Zol {
namespace Form {

inline const char* const kPlusInfinity = "PLUS-INFINITY";
inline const char* const kMinusInfinity = "MINUS-INFINITY";
inline const char* const kNotANumber = "NOT-A-NUMBER";

// The enumeration's name for `v`, or null. Universal enumerations have no
// names table.
inline const char* EnumName(const AsnTypeDesc* d, int32_t v) {
    for (const AsnNameDesc* names = d->getnames(); names && names->name; ++names)
        if (names->value == v)
            return names->name;
    return nullptr;
}

inline const char* Name(const AsnType& v) { return AsnTypeName(v._getdesc()); }

// A leaf of a kind that must sit in a class of the matching universal
// family; anything else means a descriptor and a class disagree.
template <class T, class Doc>
T& Leaf(Doc& doc, AsnType& v, const char* kind) {
    T* p = dynamic_cast<T*>(&v);
    if (!p)
        doc.Fail(std::string("a value described as ") + kind + " is not of its class");
    return *p;
}

template <class Out>
typename Out::Value Write(Out& out, AsnType& v) {
    const AsnTypeDesc* d = v._getdesc();
    const AsnTypeDesc* r = AsnResolved(d);
    switch (r->type) {
    case AsnTypeDesc::SEQUENCE:
    case AsnTypeDesc::SET: {
        typename Out::Value object = out.Object();
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* member = v._getref(m->name))
                out.Add(object, m->name, Write(out, *member));
        return object;
    }
    case AsnTypeDesc::CHOICE: {
        const AsnChoiceMemberDesc* m = AsnChoiceInForce(v);
        AsnType* alt = m ? v._getref(m->name) : nullptr;
        if (!alt)
            return out.Null();
        typename Out::Value object = out.Object();
        out.Add(object, m->name, Write(out, *alt));
        return object;
    }
    case AsnTypeDesc::SET_OF:
    case AsnTypeDesc::SEQUENCE_OF: {
        typename Out::Value array = out.Array();
        AsnForEachElement(v, [&out, &array](AsnType& e) { out.Append(array, Write(out, e)); });
        return array;
    }
    case AsnTypeDesc::INTEGER:
        return out.Integer(Leaf<AsnInt>(out, v, "INTEGER").value);
    case AsnTypeDesc::ENUMERATED: {
        int32_t n = Leaf<AsnInt>(out, v, "ENUMERATED").value;
        if (const char* name = EnumName(d, n))
            return out.Name(name);
        return out.Integer(n);
    }
    case AsnTypeDesc::BOOLEAN:
        return out.Boolean(Leaf<AsnBool>(out, v, "BOOLEAN").value);
    case AsnTypeDesc::NUL_:
        return out.Null();
    case AsnTypeDesc::REAL: {
        double x = Leaf<AsnReal>(out, v, "REAL").value;
        if (std::isnan(x))
            return out.Name(kNotANumber);
        if (std::isinf(x))
            return out.Name(x > 0 ? kPlusInfinity : kMinusInfinity);
        return out.Real(x);
    }
    case AsnTypeDesc::OCTET_STRING: {
        const AsnOcts& o = Leaf<AsnOcts>(out, v, "OCTET STRING");
        bool printable = true;
        for (size_t i = 0; i < o.octetLen && printable; ++i)
            printable = o.octs[i] >= 0x20 && o.octs[i] <= 0x7E;
        if (printable)
            return out.Text(o.octs ? o.octs : "", o.octetLen);
        static const char digits[] = "0123456789ABCDEF";
        std::string hex;
        hex.reserve(2 * o.octetLen);
        for (size_t i = 0; i < o.octetLen; ++i) {
            unsigned char c = static_cast<unsigned char>(o.octs[i]);
            hex += digits[c >> 4];
            hex += digits[c & 15];
        }
        typename Out::Value object = out.Object();
        out.Add(object, "hex", out.Text(hex.data(), hex.size()));
        return object;
    }
    case AsnTypeDesc::BIT_STRING: {
        const AsnBits& b = Leaf<AsnBits>(out, v, "BIT STRING");
        std::string s;
        s.reserve(b.bitLen);
        for (size_t i = 0; i < b.bitLen; ++i)
            s += b.GetBit(i) ? '1' : '0';
        return out.Text(s.data(), s.size());
    }
    default:
        out.Fail(std::string("no JSON form for ") + AsnTypeDesc::typenames[r->type]);
    }
}

// Fills a newly constructed value from its form. Strict: every required
// member must be given, no key may name something the type lacks. A
// failure names the place ("upTransMsg.order.order.quantity: expected an
// integer, found \"100\""), kept as steps and spelled out only then.
template <class In>
class Reader {
public:
    using Node = typename In::Node;

    explicit Reader(In& in) : in_(in) {}

    void Read(Node j, AsnType& v) {
        const AsnTypeDesc* d = v._getdesc();
        const AsnTypeDesc* r = AsnResolved(d);
        switch (r->type) {
        case AsnTypeDesc::SEQUENCE:
        case AsnTypeDesc::SET:
            ReadSequence(j, v, static_cast<const AsnSe_TypeDesc*>(r));
            break;
        case AsnTypeDesc::CHOICE:
            ReadChoice(j, v, static_cast<const AsnChoiceTypeDesc*>(r));
            break;
        case AsnTypeDesc::SET_OF:
        case AsnTypeDesc::SEQUENCE_OF: {
            if (!in_.IsArray(j))
                Fail("expected an array", j);
            size_t n = in_.Size(j);
            for (size_t i = 0; i < n; ++i) {
                AsnType* e = v._getref(("insert " + std::to_string(i)).c_str(), true);
                if (!e)
                    Fail("the list takes no element " + std::to_string(i));
                path_.push_back({nullptr, i});
                Read(in_.Element(j, i), *e);
                path_.pop_back();
            }
            break;
        }
        case AsnTypeDesc::INTEGER:
            Leaf<AsnInt>(*this, v, "INTEGER").value = Integer(j, "expected an integer");
            break;
        case AsnTypeDesc::ENUMERATED:
            Leaf<AsnInt>(*this, v, "ENUMERATED").value = Enumerated(j, d);
            break;
        case AsnTypeDesc::BOOLEAN: {
            bool b;
            if (!in_.Boolean(j, b))
                Fail("expected true or false", j);
            Leaf<AsnBool>(*this, v, "BOOLEAN").value = b;
            break;
        }
        case AsnTypeDesc::NUL_:
            if (!in_.IsNull(j))
                Fail("expected null", j);
            break;
        case AsnTypeDesc::REAL:
            Leaf<AsnReal>(*this, v, "REAL").value = Real(j);
            break;
        case AsnTypeDesc::OCTET_STRING:
            Octets(j, Leaf<AsnOcts>(*this, v, "OCTET STRING"));
            break;
        case AsnTypeDesc::BIT_STRING: {
            std::string_view s;
            if (!in_.String(j, s))
                Fail("expected a string of 0 and 1", j);
            AsnBits& b = Leaf<AsnBits>(*this, v, "BIT STRING");
            b.ReSet(s.size());
            for (size_t i = 0; i < s.size(); ++i) {
                if (s[i] != '0' && s[i] != '1')
                    Fail("expected a string of 0 and 1", j);
                if (s[i] == '1')
                    b.SetBit(i);
            }
            break;
        }
        default:
            Fail(std::string("no JSON form for ") + AsnTypeDesc::typenames[r->type]);
        }
    }

    [[noreturn]] void Fail(const std::string& what) const {
        std::string place;
        for (const Step& s : path_)
            place += s.name ? (place.empty() ? "" : ".") + std::string(s.name) : "[" + std::to_string(s.index) + "]";
        in_.Fail((place.empty() ? std::string("the value") : place) + ": " + what);
    }

private:
    // One step of the way to the value being read: a member's name, or a
    // list's index when `name` is null.
    struct Step {
        const char* name;
        size_t index;
    };

    In& in_;
    std::vector<Step> path_;
    std::vector<Node> found_;  // the members given, of every sequence being read

    [[noreturn]] void Fail(const std::string& what, Node found) const {
        std::string text = in_.Show(found);
        if (text.size() > 40)
            text = text.substr(0, 37) + "...";
        Fail(what + ", found " + text);
    }

    void ReadMember(const char* name, Node j, AsnType& v) {
        path_.push_back({name, 0});
        Read(j, v);
        path_.pop_back();
    }

    void ReadSequence(Node j, AsnType& v, const AsnSe_TypeDesc* d) {
        if (!in_.IsObject(j))
            Fail(std::string("expected an object for ") + Name(v), j);
        // Every key must name a member: when fewer members are given than
        // there are keys, the first key that names none is told.
        size_t first = found_.size(), given = 0;
        for (const AsnSe_MemberDesc* m = d->members; m->name; ++m) {
            found_.push_back(in_.Member(j, m->name));
            given += found_.back() != Node();
        }
        if (given != in_.Size(j)) {
            std::string key = in_.FirstUnknownKey(j, [d](std::string_view k) {
                for (const AsnSe_MemberDesc* m = d->members; m->name; ++m)
                    if (k == m->name)
                        return true;
                return false;
            });
            Fail(std::string(Name(v)) + " has no member " + key);
        }
        size_t i = first;
        for (const AsnSe_MemberDesc* m = d->members; m->name; ++m, ++i) {
            Node member = found_[i];
            if (member == Node()) {
                if (!m->optional)
                    Fail(std::string("the required member ") + m->name + " of " + Name(v) + " is missing");
                continue;
            }
            AsnType* value = v._getref(m->name, true);
            if (!value)
                Fail(std::string("cannot make the member ") + m->name);
            ReadMember(m->name, member, *value);
        }
        found_.resize(first);
    }

    void ReadChoice(Node j, AsnType& v, const AsnChoiceTypeDesc* d) {
        if (!in_.IsObject(j) || in_.Size(j) != 1)
            Fail(std::string("expected an object with one key, an alternative of ") + Name(v), j);
        std::string_view name;
        Node value;
        in_.SoleKey(j, name, value);
        const AsnChoiceMemberDesc* m = d->members;
        while (m->name && name != m->name)
            ++m;
        if (!m->name)
            Fail(std::string(Name(v)) + " has no alternative " + std::string(name));
        AsnType* alt = v._getref(m->name, true);
        if (!alt) {
            // A new choice stands on id 0 and holds nothing, so asking for
            // the alternative with id 0 yields nothing: another alternative
            // is selected first, which moves the choice off id 0.
            for (const AsnChoiceMemberDesc* o = d->members; o->name && !alt; ++o)
                if (o->choiceid != m->choiceid && v._getref(o->name, true))
                    alt = v._getref(m->name, true);
        }
        if (!alt)
            Fail(std::string("cannot select the alternative ") + m->name);
        ReadMember(m->name, value, *alt);
    }

    int32_t Integer(Node j, const char* expected) const {
        int64_t n;
        bool huge = false;
        if (!in_.Integer(j, n, huge))
            Fail(expected, j);
        if (huge || n < std::numeric_limits<int32_t>::min() || n > std::numeric_limits<int32_t>::max())
            Fail("the number does not fit in 32 bits", j);
        return static_cast<int32_t>(n);
    }

    int32_t Enumerated(Node j, const AsnTypeDesc* d) const {
        std::string_view s;
        if (!in_.String(j, s))
            return Integer(j, "expected a name or a number");
        for (const AsnNameDesc* n = d->getnames(); n && n->name; ++n)
            if (s == n->name)
                return n->value;
        std::string known;
        for (const AsnNameDesc* n = d->getnames(); n && n->name; ++n)
            known += (known.empty() ? "" : ", ") + std::string(n->name);
        Fail("no value named \"" + std::string(s) + "\"" + (known.empty() ? "" : " (" + known + ")"));
    }

    double Real(Node j) const {
        double x;
        if (in_.Number(j, x))
            return x;
        std::string_view s;
        if (in_.String(j, s)) {
            if (s == kPlusInfinity)
                return std::numeric_limits<double>::infinity();
            if (s == kMinusInfinity)
                return -std::numeric_limits<double>::infinity();
            if (s == kNotANumber)
                return std::numeric_limits<double>::quiet_NaN();
        }
        Fail("expected a number, \"PLUS-INFINITY\", \"MINUS-INFINITY\" or \"NOT-A-NUMBER\"", j);
    }

    void Octets(Node j, AsnOcts& o) const {
        std::string_view s;
        if (in_.Bytes(j, s) || in_.String(j, s)) {
            o.ReSet(s.data(), s.size());
            return;
        }
        Node hex;
        if (!in_.IsObject(j) || in_.Size(j) != 1 || (hex = in_.Member(j, "hex")) == Node() || !in_.String(hex, s))
            Fail("expected a string or {\"hex\": \"...\"}", j);
        if (s.size() % 2)
            Fail("an odd number of hex digits", j);
        std::string bytes(s.size() / 2, '\0');
        for (size_t i = 0; i < s.size(); i += 2) {
            int hi = HexValue(s[i]), lo = HexValue(s[i + 1]);
            if (hi < 0 || lo < 0)
                Fail("expected hex digits", j);
            bytes[i / 2] = static_cast<char>(hi << 4 | lo);
        }
        o.ReSet(bytes.data(), bytes.size());
    }
};

}  // namespace Form
}  // namespace Zol
