// The root of every value class, the print indentation and the stream
// insertion that composite printers chain.
#pragma once

#include <iosfwd>

#include "zol/ber/ber.h"

struct AsnTypeDesc;

class AsnType {
public:
    virtual ~AsnType();
    // A new copy on the heap, owned by the caller; null if allocation fails.
    virtual AsnType* Clone() const;
    virtual void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env);
    virtual AsnLen BEnc(AsnBuf& b) const;
    virtual void Print(std::ostream& os) const;
    virtual const AsnTypeDesc* _getdesc() const;
    // A member by name; with `create`, an absent member is made first.
    virtual AsnType* _getref(const char* name, bool create = false);

    // Outermost forms: 1 for success, 0 for failure.
    int BEncPdu(AsnBuf& b, AsnLen& bytesEncoded) const;
    int BDecPdu(AsnBuf& b, AsnLen& bytesDecoded);

    static const AsnTypeDesc _desc;

private:
    const char* _typename() const;
};

// Blanks that a new printed line begins with, and the step of one level.
extern unsigned short indentLevel;
extern const unsigned short indentStep;

void Indent(std::ostream& os, unsigned short n);

std::ostream& operator<<(std::ostream& os, const AsnType& v);
