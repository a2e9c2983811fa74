// A SET OF: the list machinery is the runtime's AsnList (zol/ber/asn_list.h);
// the generated class adds what differs from list to list, its failure
// codes and its descriptor.
#include "emit.h"

namespace zolc {

ClassText EmitList(const TypeModel& c) {
    Vars v = ClassVars(c);
    ClassText t;
    t.header = Fill("class $T : public AsnList<$T, $E> {\npublic:\n", v);
    t.Both(kDecodeDecls, R"(void $T::BDecContent(AsnBuf& b, AsnTag, AsnLen elmtLen, AsnLen& bytesDecoded, DecodeEnv env) {
    DecodeContent(b, elmtLen, bytesDecoded, env, $listElmtCode);
}

)",
           v);
    t.source += Fill(kDecodeWhole, v);
    t.Both("\n    static const AsnListTypeDesc _desc;\n};\n",
           "const AsnListTypeDesc $T::_desc(&$M, \"$T\", false, AsnTypeDesc::SET_OF, AsnCreate<$T>, &$E::_desc, $T::ForEach);\n",
           v);
    return t;
}

}  // namespace zolc
