#include "zol/ber/asn_type.h"

#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "zol/ber/asn_pool.h"
#include "zol/ber/asn_print.h"
#include "zol/meta/asn_desc.h"

__thread unsigned short indentLevel ZOL_INITIAL_EXEC = 0;
const unsigned short indentStep = 4;

const AsnTypeDesc AsnType::_desc(nullptr, nullptr, false, AsnTypeDesc::VOID, nullptr);

void AsnThrowBadAlloc() { throw std::bad_alloc(); }

AsnType* AsnType::Clone() const { return nullptr; }

void AsnType::BDec(AsnBuf&, AsnLen&, DecodeEnv env) {
    AsnDecodeFail(env, AsnNoDecoderCode,
                  "ERROR - Attempt to decode an improperly formed ANY type (programming error).");
}

AsnLen AsnType::BEnc(AsnBuf&) const {
    AsnWarn("ERROR - Attempt to encode an improperly formed ANY type (programming error).");
    return 0;
}

void AsnType::Print(std::ostream& os) const {
    AsnPrintOut out(os);
    PrintTo(out);
    out.Flush();
}

namespace {

// The value whose default PrintTo has called its Print on this thread: a
// class that overrides neither comes back to PrintTo through the default
// Print.
__thread const AsnType* handedOver ZOL_INITIAL_EXEC = nullptr;

struct HandedOver {
    const AsnType* outer;
    explicit HandedOver(const AsnType* v) : outer(handedOver) { handedOver = v; }
    ~HandedOver() { handedOver = outer; }
};

}  // namespace

void AsnType::PrintTo(AsnPrintOut& out) const {
    if (handedOver == this) {
        out.Put("ERROR - Attempt to print an improperly formed ANY type (programming error).");
        out.EndLine();
        return;
    }
    HandedOver guard(this);
    Print(out.HandOver());
}

const AsnTypeDesc* AsnType::_getdesc() const { return &_desc; }

AsnType* AsnType::_getref(const char*, bool) { return nullptr; }

void AsnType::Clear() {}

int AsnType::BEncPdu(AsnBuf& b, AsnLen& bytesEncoded) const {
    bytesEncoded = BEnc(b);
    return b.WriteError() ? 0 : 1;
}

int AsnType::BDecPdu(AsnBuf& b, AsnLen& bytesDecoded) {
    bytesDecoded = 0;
    DecodeEnv env;
    int code = setjmp(env);
    if (code == 0) {
        BDec(b, bytesDecoded, env);
        return b.ReadError() ? 0 : 1;
    }
    if (code == AsnOutOfMemoryCode)
        Clear();
    return 0;
}

void AsnType::operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }

uint64_t AsnType::Allocations() { return AsnPoolTaken(); }

void Indent(std::ostream& os, unsigned short n) {
    static const char blanks[] = "                                                                ";
    const unsigned short chunk = sizeof blanks - 1;
    for (; n > chunk; n -= chunk)
        os.write(blanks, chunk);
    os.write(blanks, n);
}

std::ostream& operator<<(std::ostream& os, const AsnType& v) {
    v.Print(os);
    return os;
}
