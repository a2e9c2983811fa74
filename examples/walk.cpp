// Walks any message through its descriptors: decodes the bytes given as hex
// as the type given by name, then visits every member that is present,
// knowing nothing of the classes but what _getdesc and _getref tell.
//
//   zol-walk TYPE HEX...      e.g.  zol-walk ZolTransRep B2 04 04 02 4F 4B
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <zol/zol.h>

namespace {

void Leaf(const std::string& path, AsnType& v) {
    const AsnTypeDesc* d = v._getdesc();
    const AsnTypeDesc* kind = AsnResolved(d);
    std::printf("%-44s %-22s ", path.c_str(), AsnTypeName(d));
    switch (kind->type) {
    case AsnTypeDesc::INTEGER:
        std::printf("%d\n", static_cast<AsnInt&>(v).value);
        break;
    case AsnTypeDesc::ENUMERATED: {
        int32_t n = static_cast<AsnInt&>(v).value;
        const char* name = "?";
        for (const AsnNameDesc* nd = d->getnames(); nd && nd->name; ++nd)
            if (nd->value == n)
                name = nd->name;
        std::printf("%s(%d)\n", name, n);
        break;
    }
    case AsnTypeDesc::BOOLEAN:
        std::printf("%s\n", static_cast<AsnBool&>(v).value ? "TRUE" : "FALSE");
        break;
    case AsnTypeDesc::REAL:
        std::printf("%g\n", static_cast<AsnReal&>(v).value);
        break;
    case AsnTypeDesc::OCTET_STRING: {
        const AsnOcts& o = static_cast<AsnOcts&>(v);
        std::printf("\"%.*s\"\n", static_cast<int>(o.octetLen), o.octs);
        break;
    }
    case AsnTypeDesc::BIT_STRING: {
        const AsnBits& b = static_cast<AsnBits&>(v);
        for (size_t i = 0; i < b.bitLen; ++i)
            std::putchar(b.GetBit(i) ? '1' : '0');
        std::putchar('\n');
        break;
    }
    default:
        std::printf("%s\n", AsnTypeDesc::typenames[kind->type]);
        break;
    }
}

void Walk(const std::string& path, AsnType& v) {
    const AsnTypeDesc* d = AsnResolved(v._getdesc());
    std::string prefix = path.empty() ? "" : path + ".";
    switch (d->type) {
    case AsnTypeDesc::SEQUENCE:
    case AsnTypeDesc::SET:
        // Members in table order; an absent one answers null.
        for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(d)->members; m->name; ++m)
            if (AsnType* member = v._getref(m->name))
                Walk(prefix + m->name, *member);
        break;
    case AsnTypeDesc::CHOICE:
        // The alternative in force, found by its id; it may hold nothing.
        if (const AsnChoiceMemberDesc* m = AsnChoiceInForce(v))
            if (AsnType* alt = v._getref(m->name)) {
                std::printf("%-44s alternative %s, id %d\n", path.empty() ? "(choice)" : path.c_str(), m->name,
                            m->choiceid);
                Walk(prefix + m->name, *alt);
            }
        break;
    case AsnTypeDesc::SET_OF:
    case AsnTypeDesc::SEQUENCE_OF: {
        unsigned long i = 0;
        AsnForEachElement(v, [&](AsnType& e) { Walk(path + "[" + std::to_string(i++) + "]", e); });
        break;
    }
    default:
        Leaf(path, v);
        break;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: zol-walk TYPE HEX...\n");
        return 2;
    }
    const AsnTypeDesc* type = Zol::FindType(argv[1]);
    if (!type) {
        std::fprintf(stderr, "zol-walk: no type named %s\n", argv[1]);
        return 2;
    }
    // The hex digits of all arguments, two to an octet.
    std::string digits, bytes;
    for (int i = 2; i < argc; ++i)
        for (const char* p = argv[i]; *p; ++p)
            if (std::isxdigit(static_cast<unsigned char>(*p)))
                digits += *p;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));

    std::unique_ptr<AsnType> value(type->create());
    if (!Zol::AsnBuffer::Decode(bytes.data(), bytes.size(), *value))
        return 1;
    std::printf("%s of module %s, a %s\n", type->name, type->module->name,
                AsnTypeDesc::typenames[AsnResolved(type)->type]);
    Walk("", *value);
    return 0;
}
