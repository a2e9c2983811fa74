#include "brief.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <zol/zol.h>

namespace ZolDump {

namespace {

// The shortest text that reads back as `x`: with a decimal point and no
// exponent from 1e-5 to 1e15, where prices and quantities lie.
std::string RealText(double x) {
    if (std::isnan(x))
        return "NOT-A-NUMBER";
    if (std::isinf(x))
        return x > 0 ? "PLUS-INFINITY" : "MINUS-INFINITY";
    char text[48];
    bool fixed = std::fabs(x) < 1e15 && (x == 0 || std::fabs(x) >= 1e-5);
    for (int digits = fixed ? 0 : 1; digits <= 24; ++digits) {
        std::snprintf(text, sizeof text, fixed ? "%.*f" : "%.*g", digits, x);
        if (std::strtod(text, nullptr) == x)
            break;
    }
    return text;
}

std::string OctetsText(const AsnOcts& o) {
    bool printable = true;
    for (size_t i = 0; i < o.octetLen && printable; ++i)
        printable = o.octs[i] >= 0x20 && o.octs[i] <= 0x7E;
    std::string text = printable ? "\"" : "'";
    for (size_t i = 0; i < o.octetLen; ++i) {
        char c = o.octs[i];
        if (!printable) {
            char hex[3];
            std::snprintf(hex, sizeof hex, "%02X", static_cast<unsigned char>(c));
            text += hex;
        } else if (c == '"' || c == '\\') {
            text += '\\';
            text += c;
        } else {
            text += c;
        }
    }
    return text + (printable ? "\"" : "'H");
}

std::string LeafText(AsnType& v, const AsnTypeDesc* d, AsnTypeDesc::Type kind) {
    switch (kind) {
    case AsnTypeDesc::INTEGER:
        return std::to_string(static_cast<AsnInt&>(v).value);
    case AsnTypeDesc::ENUMERATED: {
        int32_t n = static_cast<AsnInt&>(v).value;
        for (const AsnNameDesc* name = d->getnames(); name && name->name; ++name)
            if (name->value == n)
                return name->name;
        return std::to_string(n);
    }
    case AsnTypeDesc::BOOLEAN:
        return static_cast<AsnBool&>(v).value ? "TRUE" : "FALSE";
    case AsnTypeDesc::NUL_:
        return "NULL";
    case AsnTypeDesc::REAL:
        return RealText(static_cast<AsnReal&>(v).value);
    case AsnTypeDesc::OCTET_STRING:
        return OctetsText(static_cast<AsnOcts&>(v));
    case AsnTypeDesc::BIT_STRING: {
        const AsnBits& b = static_cast<AsnBits&>(v);
        std::string bits = "'";
        for (size_t i = 0; i < b.bitLen; ++i)
            bits += b.GetBit(i) ? '1' : '0';
        return bits + "'B";
    }
    default: {
        std::ostringstream text;
        text << v;
        return text.str();
    }
    }
}

class BriefWriter {
public:
    explicit BriefWriter(std::string& out) : out_(out) {}

    // `name` is empty for the message itself, whose members stand at depth 0.
    void Write(const std::string& name, AsnType& v, int depth) {
        const AsnTypeDesc* d = v._getdesc();
        const AsnTypeDesc* r = AsnResolved(d);
        int inner = name.empty() ? depth : depth + 1;
        switch (r->type) {
        case AsnTypeDesc::SEQUENCE:
        case AsnTypeDesc::SET: {
            size_t head = Open(name, depth);
            for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
                if (AsnType* member = v._getref(m->name))
                    Write(m->name, *member, inner);
            Close(head, name, "{}");
            break;
        }
        case AsnTypeDesc::CHOICE: {
            // The alternative in force joins the choice's name.
            const AsnChoiceMemberDesc* m = AsnChoiceInForce(v);
            if (AsnType* alt = m ? v._getref(m->name) : nullptr)
                return Write(name.empty() ? m->name : name + "." + m->name, *alt, depth);
            Line(name, "(none)", depth);
            break;
        }
        case AsnTypeDesc::SET_OF:
        case AsnTypeDesc::SEQUENCE_OF: {
            size_t head = Open(name, depth);
            unsigned long i = 0;
            AsnForEachElement(v, [&](AsnType& e) { Write("[" + std::to_string(i++) + "]", e, inner); });
            Close(head, name, "[]");
            break;
        }
        default:
            Line(name, LeafText(v, d, r->type), depth);
        }
    }

private:
    std::string& out_;

    void Line(const std::string& name, const std::string& text, int depth) {
        out_.append(2 * size_t(depth), ' ');
        out_ += name;
        out_ += name.empty() || text.empty() ? "" : " ";
        out_ += text;
        out_ += '\n';
    }
    // The line of a constructed member, none for the message itself;
    // returns where its members begin.
    size_t Open(const std::string& name, int depth) {
        if (!name.empty())
            Line(name, "", depth);
        return out_.size();
    }
    // A constructed value with nothing in it shows `mark` instead.
    void Close(size_t head, const std::string& name, const char* mark) {
        if (out_.size() != head)
            return;
        if (name.empty())
            out_ += std::string(mark) + "\n";
        else
            out_.insert(head - 1, std::string(" ") + mark);
    }
};

}  // namespace

void Brief(AsnType& value, std::string& out) { BriefWriter(out).Write("", value, 0); }

}  // namespace ZolDump
