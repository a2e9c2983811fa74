// The classes of collisions.asn, whose members are named like the locals
// and parameters of the generated functions: that they compile is most of
// the test; each also encodes, decodes and prints like any other class.
#include <memory>
#include <sstream>

#include "support.h"
#include "tests/collisions.h"

namespace {

using namespace Zol;
using namespace zt;

TEST(Collisions, MembersNamedLikeLocalsRoundTrip) {
    Outer outer;  // its first alternative, an explicit choice
    outer.innerTag = new Inner;
    outer.innerTag->num = new AsnInt(5);

    Locals locals;
    locals.tag = new AsnInt(1);
    locals.outerLen = new AsnInt(2);
    locals.anySet = new AsnInt(3);

    Required required;
    required.tag = 4;
    required.len = 5;
    required.o = "x";
    required.b = new Outer;
    required.b->choiceId = Outer::idCid;
    required.b->id = new AsnInt(6);

    const struct {
        const AsnType& value;
        const char* hex;
        const char* printed;
    } rows[] = {
        {outer, "A1 03 80 01 05", "innerTag num 5"},
        {locals, "30 0B 81 01 01 A7 03 02 01 02 8C 01 03",
         "{ -- SEQUENCE --\n    b -- void --,\n    tag 1    len -- void --,\n    env -- void --,\n"
         "    elmtLen -- void --,\n    seqBytes -- void --,\n    bytesDecoded -- void --,\n,\n    outerLen 2"
         "    o -- void --,\n    os -- void --,\n    name -- void --,\n    create -- void --,\n,\n    anySet 3"
         "    id -- void --\n\n}"},
        {required, "30 0E 02 01 04 A0 03 02 01 05 04 01 78 83 01 06",
         "{ -- SEQUENCE --\n    tag 4,\n    len 5,\n    o '78'H  -- \"x\" --,\n    b id 6\n}"},
    };
    for (const auto& r : rows) {
        const char* name = r.value._getdesc()->name;
        EXPECT_EQ(Encoded(r.value), r.hex) << name;
        std::unique_ptr<AsnType> back(r.value._getdesc()->create());
        EXPECT_EQ(Decode(Bytes(r.hex), *back).result, 1) << name;
        EXPECT_EQ(Encoded(*back), r.hex) << name;
        std::ostringstream printed;
        printed << *back;
        EXPECT_EQ(printed.str(), r.printed) << name;
    }
}

}  // namespace
