// Aliases, enumerations and named bits: classes that derive from the class
// they rename and add their descriptor, and their names as constants.
#include "emit.h"

namespace zolc {

namespace {

// Copying a class derived from base $B, its parameter named $p.
const char* const kDerivedCopy = R"(    $T(const $T& $p) : $B($p) {}
    $T& operator=(const $T& $p) {
        $B::operator=($p);
        return *this;
    }
)";

}  // namespace

ClassText EmitAlias(const TypeModel& c) {
    Vars v = ClassVars(c);
    v.insert(v.end(), {{"B", c.baseClass}, {"p", "o"}});
    ClassText t;
    t.header = Fill("struct $T : public $B {\n    $T() {}\n", v);
    // An alias takes what its base is made from: text, a number or a flag.
    if (c.kind == Kind::Octs) {
        t.header += Fill(R"(    $T(const char* str) : $B(str) {}
    $T(const char* str, size_t len) : $B(str, len) {}
    $T(const $B& o) : $B(o) {}
    $T(const $T& o) : $B(o) {}
    $T& operator=(const $T& o) {
        ReSet(o);
        return *this;
    }
    $T& operator=(const char* str) {
        ReSet(str);
        return *this;
    }
)",
                         v);
    } else {
        bool number = c.kind == Kind::Int || c.kind == Kind::Enum || c.kind == Kind::Bool;
        v.emplace_back("V", c.kind == Kind::Bool ? "bool" : "int32_t");
        t.header += Fill(number ? "    $T($V v) : $B(v) {}\n" : "", v);
        t.header += Fill(kDerivedCopy, v) + Fill(number ? "    using $B::operator=;\n" : "", v);
    }
    t.Both(R"(    ~$T() override {}
    AsnType* Clone() const override;
    const AsnTypeDesc* _getdesc() const override;

    static const AsnAliasTypeDesc _desc;
};
)",
           R"(AsnType* $T::Clone() const { return AsnClone(*this); }
const AsnTypeDesc* $T::_getdesc() const { return &_desc; }
const AsnAliasTypeDesc $T::_desc(&$M, "$T", false, AsnTypeDesc::ALIAS, AsnCreate<$T>, &$B::_desc);
)",
           v);
    return t;
}

ClassText EmitNames(const TypeModel& c) {
    Vars v = ClassVars(c);
    bool isEnum = c.shape == TypeModel::Enum;
    std::string names, descs;
    for (const TypeExpr::Named& n : c.names) {
        Vars nv = {{"name", n.name}, {"value", std::to_string(n.value)}};
        names += Fill("        $name = $value,\n", nv);
        descs += Fill("    {\"$name\", $value},\n", nv);
    }
    v.insert(v.end(), {{"names", names}, {"nmdescs", descs}});
    // An enumeration is made from a number, named bits from bits.
    v.insert(v.end(), {{"B", isEnum ? "AsnEnum" : "AsnBits"}, {"p", isEnum ? "o" : "b"}});
    v.emplace_back("ctors", Fill(isEnum ? "    $T(int32_t v) : AsnEnum(v) {}\n"
                                        : R"(    explicit $T(size_t numBits) : AsnBits(numBits) {}
    $T(const char* bitOcts, size_t numBits) : AsnBits(bitOcts, numBits) {}
    $T(const AsnBits& b) : AsnBits(b) {}
)",
                                 v));
    v.emplace_back("using", Fill(isEnum ? "    using $B::operator=;\n" : "", v));
    v.emplace_back("copy", Fill(kDerivedCopy, v));
    ClassText t;
    t.header = Fill(R"(class $T : public $B {
public:
    enum : int32_t {
$names    };

    $T() {}
$ctors$copy$using)",
                    v);
    v.insert(v.end(), {{"D", isEnum ? "AsnEnumTypeDesc" : "AsnNamesTypeDesc"},
                       {"K", isEnum ? "ENUMERATED" : "BIT_STRING"}});
    t.Both(R"(    ~$T() override {}
    const AsnTypeDesc* _getdesc() const override;

    static const $D _desc;
    static const AsnNameDesc _nmdescs[];
};
)",
           R"(const AsnTypeDesc* $T::_getdesc() const { return &_desc; }
const AsnNameDesc $T::_nmdescs[] = {
$nmdescs    {nullptr, -1},
};
const $D $T::_desc(&$M, "$T", false, AsnTypeDesc::$K, AsnCreate<$T>, $T::_nmdescs);
)",
           v);
    return t;
}

}  // namespace zolc
