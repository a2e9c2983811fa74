#include "zol/ber/pattern.h"

#include <cstdio>

const char* const AsnMissingElmtText = "ERROR - SEQUENCE is missing non-optional elmt.";
const char* const AsnLengthDiscrepancyText = "ERROR - Length discrepancy on sequence.";
const char* const AsnUnexpectedTagText = "Unexpected Tag";
const char* const AsnChoiceTagText = "ERROR - unexpected tag in CHOICE";
const char* const AsnEmptySequenceText = "Expected an empty sequence";

void AsnPrintOpen(std::ostream& os) {
    os << "{ -- SEQUENCE --" << std::endl;
    indentLevel = static_cast<unsigned short>(indentLevel + indentStep);
}

void AsnPrintClose(std::ostream& os) {
    os << std::endl;
    indentLevel = static_cast<unsigned short>(indentLevel - indentStep);
    Indent(os, indentLevel);
    os << "}";
}

void AsnPrintEmptySeq(std::ostream& os) {
    os << "{ -- SEQUENCE --" << std::endl;
    Indent(os, indentLevel);
    os << "}";
}

void AsnPrintSeparator(std::ostream& os) { os << "," << std::endl; }

// An embedded member always has a value; all but the last end their line.
void AsnPrintMember(std::ostream& os, const char* name, const AsnType& v, bool last) {
    Indent(os, indentLevel);
    os << name << ' ' << v;
    if (!last)
        os << "," << std::endl;
}

// A set pointer member writes no separator of its own; an absent one
// writes a void line.
void AsnPrintMember(std::ostream& os, const char* name, const AsnType* v, bool last) {
    Indent(os, indentLevel);
    os << name << ' ';
    if (v)
        os << *v;
    else if (last)
        os << "-- void --" << std::endl;
    else
        os << "-- void --" << "," << std::endl;
}

void AsnPrintChoice(std::ostream& os, const char* name, const AsnType* v) {
    if (!name)
        return;
    os << name << ' ';
    if (v)
        os << *v;
    else
        os << "-- void3 --\n";
}

AsnListRefKind AsnListRefName(const char* name, unsigned long* n) {
    char extra;
    if (std::sscanf(name, "insert %lu%c", n, &extra) == 1)
        return AsnListRefInsert;
    if (std::sscanf(name, "%lu%c", n, &extra) == 1)
        return AsnListRefIndex;
    return AsnListRefNone;
}
