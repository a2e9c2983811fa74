#include "zol/ber/pattern.h"

#include <cstdio>

const char* const AsnMissingElmtText = "ERROR - SEQUENCE is missing non-optional elmt.";
const char* const AsnLengthDiscrepancyText = "ERROR - Length discrepancy on sequence.";
const char* const AsnUnexpectedTagText = "Unexpected Tag";
const char* const AsnChoiceTagText = "ERROR - unexpected tag in CHOICE";
const char* const AsnEmptySequenceText = "Expected an empty sequence";

void AsnPrintOpen(AsnPrintOut& out) {
    out.Put("{ -- SEQUENCE --");
    out.EndLine();
    indentLevel = static_cast<unsigned short>(indentLevel + indentStep);
}

void AsnPrintClose(AsnPrintOut& out) {
    out.EndLine();
    indentLevel = static_cast<unsigned short>(indentLevel - indentStep);
    out.Blanks(indentLevel);
    out.Put("}");
}

void AsnPrintEmptySeq(AsnPrintOut& out) {
    out.Put("{ -- SEQUENCE --");
    out.EndLine();
    out.Blanks(indentLevel);
    out.Put("}");
}

void AsnPrintSeparator(AsnPrintOut& out) {
    out.Put(",");
    out.EndLine();
}

// An embedded member always has a value; all but the last end their line.
void AsnPrintMember(AsnPrintOut& out, const char* name, size_t nameLen, const AsnType& v, bool last) {
    out.Blanks(indentLevel);
    out.Put(name, nameLen);
    out.Put(' ');
    v.PrintTo(out);
    if (!last)
        AsnPrintSeparator(out);
}

// A set pointer member writes no separator of its own; an absent one
// writes a void line.
void AsnPrintMember(AsnPrintOut& out, const char* name, size_t nameLen, const AsnType* v, bool last) {
    out.Blanks(indentLevel);
    out.Put(name, nameLen);
    out.Put(' ');
    if (v) {
        v->PrintTo(out);
        return;
    }
    out.Put(last ? "-- void --" : "-- void --,");
    out.EndLine();
}

void AsnPrintChoice(AsnPrintOut& out, const char* name, size_t nameLen, const AsnType* v) {
    if (!name)
        return;
    out.Put(name, nameLen);
    out.Put(' ');
    if (v)
        v->PrintTo(out);
    else
        out.Put("-- void3 --\n");
}

AsnListRefKind AsnListRefName(const char* name, unsigned long* n) {
    char extra;
    if (std::sscanf(name, "insert %lu%c", n, &extra) == 1)
        return AsnListRefInsert;
    if (std::sscanf(name, "%lu%c", n, &extra) == 1)
        return AsnListRefIndex;
    return AsnListRefNone;
}
