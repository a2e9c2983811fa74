#include "zol/json.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

namespace Zol {

namespace {

// The enumeration's name for `v`, or null. Universal enumerations have no
// names table.
const char* EnumName(const AsnTypeDesc* d, int32_t v) {
    const AsnNameDesc* names = d->getnames();
    for (; names && names->name; ++names)
        if (names->value == v)
            return names->name;
    return nullptr;
}

const char* const kPlusInfinity = "PLUS-INFINITY";
const char* const kMinusInfinity = "MINUS-INFINITY";
const char* const kNotANumber = "NOT-A-NUMBER";

// A leaf of a kind that must sit in a class of the matching universal
// family; anything else means a descriptor and a class disagree.
template <class T>
T& Leaf(AsnType& v, const char* kind) {
    T* p = dynamic_cast<T*>(&v);
    if (!p)
        throw JsonError(std::string("a value described as ") + kind + " is not of its class");
    return *p;
}

Json Write(AsnType& v) {
    const AsnTypeDesc* d = v._getdesc();
    const AsnTypeDesc* r = AsnResolved(d);
    switch (r->type) {
    case AsnTypeDesc::SEQUENCE:
    case AsnTypeDesc::SET: {
        Json out = Json::object();
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* member = v._getref(m->name))
                out[m->name] = Write(*member);
        return out;
    }
    case AsnTypeDesc::CHOICE:
        // Only the alternative in force answers without create.
        for (const AsnChoiceMemberDesc* m = static_cast<const AsnChoiceTypeDesc*>(r)->members; m->name; ++m)
            if (AsnType* alt = v._getref(m->name)) {
                Json out = Json::object();
                out[m->name] = Write(*alt);
                return out;
            }
        return nullptr;
    case AsnTypeDesc::SET_OF:
    case AsnTypeDesc::SEQUENCE_OF: {
        Json out = Json::array();
        AsnForEachElement(v, [&out](AsnType& e) { out.push_back(Write(e)); });
        return out;
    }
    case AsnTypeDesc::INTEGER:
        return Leaf<AsnInt>(v, "INTEGER").value;
    case AsnTypeDesc::ENUMERATED: {
        int32_t n = Leaf<AsnInt>(v, "ENUMERATED").value;
        if (const char* name = EnumName(d, n))
            return name;
        return n;
    }
    case AsnTypeDesc::BOOLEAN:
        return Leaf<AsnBool>(v, "BOOLEAN").value;
    case AsnTypeDesc::NUL_:
        return nullptr;
    case AsnTypeDesc::REAL: {
        double x = Leaf<AsnReal>(v, "REAL").value;
        if (std::isnan(x))
            return kNotANumber;
        if (std::isinf(x))
            return x > 0 ? kPlusInfinity : kMinusInfinity;
        return x;
    }
    case AsnTypeDesc::OCTET_STRING: {
        const AsnOcts& o = Leaf<AsnOcts>(v, "OCTET STRING");
        bool printable = true;
        for (size_t i = 0; i < o.octetLen && printable; ++i)
            printable = o.octs[i] >= 0x20 && o.octs[i] <= 0x7E;
        if (printable)
            return std::string(o.octs ? o.octs : "", o.octetLen);
        static const char digits[] = "0123456789ABCDEF";
        std::string hex;
        for (size_t i = 0; i < o.octetLen; ++i) {
            unsigned char c = static_cast<unsigned char>(o.octs[i]);
            hex += digits[c >> 4];
            hex += digits[c & 15];
        }
        Json out = Json::object();
        out["hex"] = hex;
        return out;
    }
    case AsnTypeDesc::BIT_STRING: {
        const AsnBits& b = Leaf<AsnBits>(v, "BIT STRING");
        std::string s;
        for (size_t i = 0; i < b.bitLen; ++i)
            s += b.GetBit(i) ? '1' : '0';
        return s;
    }
    default:
        throw JsonError(std::string("no JSON form for ") + AsnTypeDesc::typenames[r->type]);
    }
}

// Reading keeps the path to the value in hand for the failure text.
class Reader {
public:
    void Read(const Json& j, AsnType& v) {
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
        case AsnTypeDesc::SEQUENCE_OF:
            if (!j.is_array())
                Fail("expected an array", j);
            for (size_t i = 0; i < j.size(); ++i) {
                AsnType* e = v._getref(("insert " + std::to_string(i)).c_str(), true);
                if (!e)
                    Fail("the list takes no element " + std::to_string(i));
                Enter("[" + std::to_string(i) + "]", j[i], *e);
            }
            break;
        case AsnTypeDesc::INTEGER:
            Leaf<AsnInt>(v, "INTEGER").value = Integer(j, "expected an integer");
            break;
        case AsnTypeDesc::ENUMERATED:
            Leaf<AsnInt>(v, "ENUMERATED").value = Enumerated(j, d);
            break;
        case AsnTypeDesc::BOOLEAN:
            if (!j.is_boolean())
                Fail("expected true or false", j);
            Leaf<AsnBool>(v, "BOOLEAN").value = j.get<bool>();
            break;
        case AsnTypeDesc::NUL_:
            if (!j.is_null())
                Fail("expected null", j);
            break;
        case AsnTypeDesc::REAL:
            Leaf<AsnReal>(v, "REAL").value = Real(j);
            break;
        case AsnTypeDesc::OCTET_STRING: {
            std::string bytes = Octets(j);
            Leaf<AsnOcts>(v, "OCTET STRING").ReSet(bytes.data(), bytes.size());
            break;
        }
        case AsnTypeDesc::BIT_STRING: {
            if (!j.is_string())
                Fail("expected a string of 0 and 1", j);
            const std::string& s = j.get_ref<const std::string&>();
            AsnBits& b = Leaf<AsnBits>(v, "BIT STRING");
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

private:
    std::string path_;

    [[noreturn]] void Fail(const std::string& what) const {
        throw JsonError((path_.empty() ? std::string("the value") : path_) + ": " + what);
    }
    [[noreturn]] void Fail(const std::string& what, const Json& found) const {
        std::string text = found.dump();
        if (text.size() > 40)
            text = text.substr(0, 37) + "...";
        Fail(what + ", found " + text);
    }

    void Enter(const std::string& step, const Json& j, AsnType& v) {
        size_t keep = path_.size();
        path_ += step;
        Read(j, v);
        path_.resize(keep);
    }
    void EnterMember(const char* name, const Json& j, AsnType& v) {
        Enter(path_.empty() ? name : std::string(".") + name, j, v);
    }

    void ReadSequence(const Json& j, AsnType& v, const AsnSe_TypeDesc* d) {
        if (!j.is_object())
            Fail(std::string("expected an object for ") + Name(v), j);
        for (auto it = j.begin(); it != j.end(); ++it) {
            const AsnSe_MemberDesc* m = d->members;
            while (m->name && it.key() != m->name)
                ++m;
            if (!m->name)
                Fail(std::string(Name(v)) + " has no member " + it.key());
        }
        for (const AsnSe_MemberDesc* m = d->members; m->name; ++m) {
            auto it = j.find(m->name);
            if (it == j.end()) {
                if (!m->optional)
                    Fail(std::string("the required member ") + m->name + " of " + Name(v) + " is missing");
                continue;
            }
            AsnType* member = v._getref(m->name, true);
            if (!member)
                Fail(std::string("cannot make the member ") + m->name);
            EnterMember(m->name, *it, *member);
        }
    }

    void ReadChoice(const Json& j, AsnType& v, const AsnChoiceTypeDesc* d) {
        if (!j.is_object() || j.size() != 1)
            Fail(std::string("expected an object with one key, an alternative of ") + Name(v), j);
        const std::string& name = j.begin().key();
        const AsnChoiceMemberDesc* m = d->members;
        while (m->name && name != m->name)
            ++m;
        if (!m->name)
            Fail(std::string(Name(v)) + " has no alternative " + name);
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
            Fail(std::string("cannot select the alternative ") + name);
        EnterMember(m->name, j.begin().value(), *alt);
    }

    int32_t Integer(const Json& j, const char* expected) const {
        if (j.is_number_unsigned()) {
            if (j.get<uint64_t>() <= uint64_t(std::numeric_limits<int32_t>::max()))
                return static_cast<int32_t>(j.get<uint64_t>());
            Fail("the number does not fit in 32 bits", j);
        }
        if (j.is_number_integer()) {
            int64_t n = j.get<int64_t>();
            if (n >= std::numeric_limits<int32_t>::min() && n <= std::numeric_limits<int32_t>::max())
                return static_cast<int32_t>(n);
            Fail("the number does not fit in 32 bits", j);
        }
        Fail(expected, j);
    }

    int32_t Enumerated(const Json& j, const AsnTypeDesc* d) const {
        if (j.is_string()) {
            const std::string& s = j.get_ref<const std::string&>();
            for (const AsnNameDesc* n = d->getnames(); n && n->name; ++n)
                if (s == n->name)
                    return n->value;
            std::string known;
            for (const AsnNameDesc* n = d->getnames(); n && n->name; ++n)
                known += (known.empty() ? "" : ", ") + std::string(n->name);
            Fail("no value named \"" + s + "\"" + (known.empty() ? "" : " (" + known + ")"));
        }
        return Integer(j, "expected a name or a number");
    }

    double Real(const Json& j) const {
        if (j.is_number())
            return j.get<double>();
        if (j.is_string()) {
            const std::string& s = j.get_ref<const std::string&>();
            if (s == kPlusInfinity)
                return std::numeric_limits<double>::infinity();
            if (s == kMinusInfinity)
                return -std::numeric_limits<double>::infinity();
            if (s == kNotANumber)
                return std::numeric_limits<double>::quiet_NaN();
        }
        Fail("expected a number, \"PLUS-INFINITY\", \"MINUS-INFINITY\" or \"NOT-A-NUMBER\"", j);
    }

    std::string Octets(const Json& j) const {
        if (j.is_string())
            return j.get<std::string>();
        if (j.is_object() && j.size() == 1 && j.contains("hex") && j["hex"].is_string()) {
            const std::string& hex = j["hex"].get_ref<const std::string&>();
            std::string out;
            if (hex.size() % 2)
                Fail("an odd number of hex digits", j);
            for (size_t i = 0; i < hex.size(); i += 2) {
                int hi = HexValue(hex[i]), lo = HexValue(hex[i + 1]);
                if (hi < 0 || lo < 0)
                    Fail("expected hex digits", j);
                out += static_cast<char>(hi << 4 | lo);
            }
            return out;
        }
        Fail("expected a string or {\"hex\": \"...\"}", j);
    }

    static const char* Name(const AsnType& v) { return AsnTypeName(v._getdesc()); }
};

}  // namespace

// Members are reached through _getref, which hands out a value's parts
// for writing too; writing JSON only reads them.
Json ToJson(const AsnType& value) { return Write(const_cast<AsnType&>(value)); }

void FromJson(const Json& json, AsnType& value) { Reader().Read(json, value); }

}  // namespace Zol
