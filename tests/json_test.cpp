// The JSON form: exact texts both ways as rows of tests/rows/json.txt, and
// JSON -> BER -> JSON over every type of every module.
//
//   json TYPE JSON    the JSON read into a new value of TYPE ("new": a new
//                     value, not read)
//     writes JSON     the value's JSON form; without it, the JSON read
//     hex HEX         the value encodes to HEX, and HEX decodes to a value
//                     of the same JSON form
//     error TEXT      reading or writing fails with this text
#include <memory>

#include <zol/json.h>

#include "rows.h"
#include "support.h"
#include "walk.h"

namespace {

using Zol::Json;

ZT_ROW_OP(json) {
    size_t blank = row.arg.find(' ');
    std::string type = row.arg.substr(0, blank), text = row.arg.substr(blank + 1);
    std::unique_ptr<AsnType> v = zt::Make(type);
    std::string error, form;
    try {
        if (text != "new")
            Zol::FromJson(Json::parse(text), *v);
        form = Zol::ToJson(*v).dump();
    } catch (const Zol::JsonError& e) {
        error = e.what();
    }
    const std::string* want = row.Get("error");
    EXPECT_EQ(error, want ? *want : "");
    if (!error.empty())
        return;
    const std::string* writes = row.Get("writes");
    EXPECT_EQ(form, writes ? *writes : text);
    if (const std::string* hex = row.Get("hex")) {
        EXPECT_EQ(zt::Encoded(*v), zt::Hex(zt::Bytes(hex->c_str())));
        std::unique_ptr<AsnType> d = zt::Make(type);
        ASSERT_EQ(zt::Decode(zt::Bytes(hex->c_str()), *d).result, 1);
        EXPECT_EQ(Zol::ToJson(*d).dump(), writes ? *writes : text);
    }
}

// Every type, and every alternative of a choice at the top: the value's
// JSON read back encodes to the same bytes, which decode to the same JSON.
TEST(Json, RoundTripsEveryTypeOfEveryModule) {
    int values = 0;
    for (const AsnModuleDesc* const* m = Zol::AsnModules; *m; ++m)
        for (const AsnTypeDesc* const* t = (*m)->types; *t; ++t) {
            const AsnTypeDesc* r = AsnResolved(*t);
            int alternatives = 1;
            if (r->type == AsnTypeDesc::CHOICE)
                while (static_cast<const AsnChoiceTypeDesc*>(r)->members[alternatives].name)
                    ++alternatives;
            for (int k = 0; k < alternatives; ++k, ++values) {
                zt::Filler f;
                int met = 0;
                f.pick = [&](const AsnChoiceTypeDesc* cd) {
                    int n = 0;
                    while (cd->members[n].name)
                        ++n;
                    return (k + met++) % n;
                };
                f.seed = k;
                std::unique_ptr<AsnType> v((*t)->create()), read((*t)->create()), decoded((*t)->create());
                f.Fill(v.get(), *t);
                Json j = Zol::ToJson(*v);
                std::string ber = zt::Encoded(*v);
                Zol::FromJson(j, *read);
                ASSERT_EQ(zt::Encoded(*read), ber) << (*t)->name << " " << j.dump();
                ASSERT_EQ(zt::Decode(zt::Bytes(ber.c_str()), *decoded).result, 1) << (*t)->name << " " << ber;
                ASSERT_EQ(Zol::ToJson(*decoded), j) << (*t)->name;
            }
        }
    EXPECT_GT(values, 700);
}

}  // namespace
