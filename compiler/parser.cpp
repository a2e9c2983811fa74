// Lexer and recursive-descent parser for the subset of ASN.1 that the
// protocol is written in. Everything outside the subset is a schema error
// that names the file and line.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

#include "ast.h"

namespace zolc {

void SchemaError(const Where& where, const std::string& message) {
    std::fprintf(stderr, "%s:%d: error: %s\n", where.file.c_str(), where.line, message.c_str());
    std::exit(1);
}

namespace {

struct Token {
    enum Kind { Word, Number, Assign, Punct, End } kind = End;
    std::string text;
    int line = 0;
    std::string comment;  // comment lines immediately before this token
};

class Lexer {
public:
    Lexer(const std::string& file, const std::string& src) : file_(file), src_(src) {}

    std::vector<Token> Run() {
        std::vector<Token> out;
        std::string pending;
        int pendingLine = -1;
        while (true) {
            SkipBlanks();
            if (pos_ >= src_.size())
                break;
            char c = src_[pos_];
            if (c == '-' && Peek(1) == '-') {
                int at = line_;
                std::string text = LineComment();
                if (pendingLine != at - 1 && pendingLine != at)
                    pending.clear();
                if (!text.empty())
                    pending += (pending.empty() ? "" : "\n") + text;
                pendingLine = at;
                continue;
            }
            if (c == '/' && Peek(1) == '*') {
                BlockComment();
                continue;
            }
            Token t;
            t.line = line_;
            if (pendingLine == line_ - 1 || pendingLine == line_)
                t.comment = pending;
            pending.clear();
            pendingLine = -1;
            if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') {
                t.kind = Token::Word;
                while (pos_ < src_.size() && (std::isalnum(static_cast<unsigned char>(src_[pos_])) ||
                                              src_[pos_] == '_' || src_[pos_] == '-')) {
                    if (src_[pos_] == '-' && Peek(1) == '-')
                        break;
                    t.text += src_[pos_++];
                }
                if (t.text.back() == '-' || t.text.find('-') != std::string::npos)
                    SchemaError({file_, line_}, "'" + t.text +
                                                    "': names with hyphens are not taken, since "
                                                    "every name becomes a C++ identifier");
            } else if (std::isdigit(static_cast<unsigned char>(c))) {
                t.kind = Token::Number;
                while (pos_ < src_.size() && std::isdigit(static_cast<unsigned char>(src_[pos_])))
                    t.text += src_[pos_++];
                if (t.text.size() > 9)
                    SchemaError({file_, line_}, "number " + t.text + " is too large");
            } else if (src_.compare(pos_, 3, "::=") == 0) {
                t.kind = Token::Assign;
                t.text = "::=";
                pos_ += 3;
            } else if (std::string("{}[](),;.").find(c) != std::string::npos) {
                t.kind = Token::Punct;
                t.text = std::string(1, c);
                ++pos_;
            } else {
                SchemaError({file_, line_}, std::string("unexpected character '") + c + "'");
            }
            out.push_back(t);
        }
        Token end;
        end.line = line_;
        out.push_back(end);
        return out;
    }

private:
    char Peek(size_t k) const { return pos_ + k < src_.size() ? src_[pos_ + k] : '\0'; }

    void SkipBlanks() {
        while (pos_ < src_.size() && std::isspace(static_cast<unsigned char>(src_[pos_]))) {
            if (src_[pos_] == '\n')
                ++line_;
            ++pos_;
        }
    }

    // `--` runs to the end of the line or to the next `--`.
    std::string LineComment() {
        pos_ += 2;
        size_t start = pos_;
        while (pos_ < src_.size() && src_[pos_] != '\n' &&
               !(src_[pos_] == '-' && Peek(1) == '-'))
            ++pos_;
        std::string text = src_.substr(start, pos_ - start);
        if (pos_ < src_.size() && src_[pos_] == '-')
            pos_ += 2;
        size_t b = text.find_first_not_of(' ');
        size_t e = text.find_last_not_of(' ');
        return b == std::string::npos ? "" : text.substr(b, e - b + 1);
    }

    void BlockComment() {
        int at = line_;
        pos_ += 2;
        while (pos_ < src_.size() && !(src_[pos_] == '*' && Peek(1) == '/')) {
            if (src_[pos_] == '\n')
                ++line_;
            ++pos_;
        }
        if (pos_ >= src_.size())
            SchemaError({file_, at}, "comment is not closed");
        pos_ += 2;
    }

    std::string file_;
    const std::string& src_;
    size_t pos_ = 0;
    int line_ = 1;
};

const std::set<std::string> kReserved = {
    "ABSENT", "ABSTRACT-SYNTAX", "ALL", "APPLICATION", "AUTOMATIC", "BEGIN", "BIT", "BMPString",
    "BOOLEAN", "BY", "CHARACTER", "CHOICE", "CLASS", "COMPONENT", "COMPONENTS", "CONSTRAINED",
    "CONTAINING", "DEFAULT", "DEFINITIONS", "EMBEDDED", "ENCODED", "END", "ENUMERATED", "EXCEPT",
    "EXPLICIT", "EXPORTS", "EXTENSIBILITY", "EXTERNAL", "FALSE", "FROM", "IDENTIFIER", "IMPLICIT",
    "IMPLIED", "IMPORTS", "INCLUDES", "INSTANCE", "INTEGER", "INTERSECTION", "MAX", "MIN",
    "MINUS-INFINITY", "NULL", "OBJECT", "OCTET", "OF", "OPTIONAL", "PATTERN", "PDV",
    "PLUS-INFINITY", "PRESENT", "PRIVATE", "REAL", "RELATIVE-OID", "SEQUENCE", "SET", "SIZE",
    "STRING", "SYNTAX", "TAGS", "TRUE", "TYPE-IDENTIFIER", "UNION", "UNIQUE",
    "UNIVERSAL", "WITH"};

class Parser {
public:
    Parser(const std::string& file, std::vector<Token> toks) : file_(file), toks_(std::move(toks)) {}

    Module ParseModuleBody() {
        Module m;
        m.where = Here();
        m.name = TypeReference("module name");
        Expect("DEFINITIONS");
        if (Accept("IMPLICIT")) {
            Expect("TAGS");
        } else if (Accept("EXPLICIT")) {
            Expect("TAGS");
            m.explicitTags = true;
        } else if (Is("AUTOMATIC")) {
            Error("AUTOMATIC TAGS is not taken: every tag is written in the module");
        } else {
            m.explicitTags = true;
        }
        ExpectKind(Token::Assign, "'::='");
        Expect("BEGIN");
        if (Accept("EXPORTS")) {
            while (!IsPunct(";") && Cur().kind != Token::End)
                ++pos_;
            ExpectPunct(";");
        }
        if (Accept("IMPORTS")) {
            while (!IsPunct(";")) {
                Import imp;
                imp.where = Here();
                do
                    imp.names.push_back(TypeReference("imported type"));
                while (AcceptPunct(","));
                Expect("FROM");
                imp.module = TypeReference("module name");
                m.imports.push_back(imp);
            }
            ExpectPunct(";");
        }
        while (!Is("END")) {
            if (Cur().kind == Token::End)
                Error("module is not closed by END");
            TypeAssignment t;
            t.where = Here();
            t.comment = Cur().comment;
            t.name = TypeReference("type name");
            ExpectKind(Token::Assign, "'::='");
            t.type = Type(true);
            m.types.push_back(std::move(t));
        }
        Expect("END");
        if (Cur().kind != Token::End)
            Error("text after END");
        return m;
    }

private:
    const Token& Cur() const { return toks_[pos_]; }
    Where Here() const { return {file_, Cur().line}; }
    [[noreturn]] void Error(const std::string& msg) const { SchemaError(Here(), msg); }
    std::string Describe() const {
        return Cur().kind == Token::End ? "end of file" : "'" + Cur().text + "'";
    }

    bool Is(const char* word) const { return Cur().kind == Token::Word && Cur().text == word; }
    bool IsPunct(const char* p) const { return Cur().kind == Token::Punct && Cur().text == p; }
    bool Accept(const char* word) {
        if (!Is(word))
            return false;
        ++pos_;
        return true;
    }
    bool AcceptPunct(const char* p) {
        if (!IsPunct(p))
            return false;
        ++pos_;
        return true;
    }
    void Expect(const char* word) {
        if (!Accept(word))
            Error(std::string("expected ") + word + ", found " + Describe());
    }
    void ExpectPunct(const char* p) {
        if (!AcceptPunct(p))
            Error(std::string("expected '") + p + "', found " + Describe());
    }
    void ExpectKind(Token::Kind k, const char* what) {
        if (Cur().kind != k)
            Error(std::string("expected ") + what + ", found " + Describe());
        ++pos_;
    }

    std::string Word(const char* what) {
        if (Cur().kind != Token::Word)
            Error(std::string("expected ") + what + ", found " + Describe());
        if (kReserved.count(Cur().text))
            Error(std::string("expected ") + what + ", found the keyword " + Describe());
        return toks_[pos_++].text;
    }
    std::string TypeReference(const char* what) {
        if (Cur().kind == Token::Word && !std::isupper(static_cast<unsigned char>(Cur().text[0])))
            Error(std::string(what) + " " + Describe() + " must begin with a capital letter");
        return Word(what);
    }
    std::string Identifier(const char* what) {
        if (Cur().kind == Token::Word && !std::islower(static_cast<unsigned char>(Cur().text[0])))
            Error(std::string(what) + " " + Describe() + " must begin with a small letter");
        return Word(what);
    }
    long Number(const char* what) {
        bool negative = AcceptNegative();
        if (Cur().kind != Token::Number)
            Error(std::string("expected ") + what + ", found " + Describe());
        long v = std::atol(toks_[pos_++].text.c_str());
        return negative ? -v : v;
    }
    bool AcceptNegative() { return false; }

    // `top` allows the constructed forms, which only a type assignment may
    // hold: a member's type is a reference or a universal type.
    TypeExpr Type(bool top) {
        TypeExpr t;
        t.where = Here();
        if (Accept("INTEGER")) {
            t.kind = TypeExpr::Integer;
            if (IsPunct("{"))
                Error("named numbers on INTEGER are not taken; use ENUMERATED");
        } else if (Accept("BOOLEAN")) {
            t.kind = TypeExpr::Boolean;
        } else if (Accept("REAL")) {
            t.kind = TypeExpr::Real;
        } else if (Accept("NULL")) {
            t.kind = TypeExpr::Null;
        } else if (Accept("OCTET")) {
            Expect("STRING");
            t.kind = TypeExpr::OctetString;
        } else if (Accept("BIT")) {
            Expect("STRING");
            t.kind = TypeExpr::BitString;
            if (IsPunct("{")) {
                if (!top)
                    Error("a BIT STRING with named bits must be a type of its own");
                t.names = NamedList("bit name", false);
            }
        } else if (Accept("ENUMERATED")) {
            if (!top)
                Error("an ENUMERATED must be a type of its own, referenced by name");
            t.kind = TypeExpr::Enumerated;
            t.names = NamedList("enumeration name", true);
        } else if (Is("SEQUENCE") || Is("SET") || Is("CHOICE")) {
            if (!top)
                Error(Cur().text + " inside a member is not taken: name it as a type of its own");
            if (Accept("CHOICE")) {
                t.kind = TypeExpr::Choice;
                Members(t, true);
            } else if (Accept("SEQUENCE")) {
                if (Is("OF"))
                    Error("SEQUENCE OF is not taken: the protocol's lists are SET OF");
                t.kind = TypeExpr::Sequence;
                Members(t, false);
            } else {
                Expect("SET");
                if (!Accept("OF"))
                    Error("SET is not taken: the protocol's compound types are SEQUENCE and SET OF");
                t.kind = TypeExpr::SetOf;
                t.refName = TypeReference("element type");
            }
        } else if (Cur().kind == Token::Word && kReserved.count(Cur().text)) {
            Error("the type " + Describe() + " is not taken");
        } else {
            t.kind = TypeExpr::Ref;
            t.refName = TypeReference("type");
        }
        if (IsPunct("("))
            Error("constraints are not taken");
        return t;
    }

    std::vector<TypeExpr::Named> NamedList(const char* what, bool allowEmpty) {
        std::vector<TypeExpr::Named> names;
        ExpectPunct("{");
        if (!IsPunct("}") || !allowEmpty) {
            do {
                if (IsPunct("."))
                    Error("extension markers are not taken");
                TypeExpr::Named n;
                n.where = Here();
                n.name = Identifier(what);
                ExpectPunct("(");
                n.value = Number("a number");
                ExpectPunct(")");
                names.push_back(n);
            } while (AcceptPunct(","));
        }
        ExpectPunct("}");
        return names;
    }

    void Members(TypeExpr& t, bool choice) {
        ExpectPunct("{");
        if (IsPunct("}")) {
            if (choice)
                Error("a CHOICE needs at least one alternative");
            ++pos_;
            return;
        }
        do {
            if (IsPunct("."))
                Error("extension markers are not taken");
            TypeExpr::Member m;
            m.where = Here();
            size_t first = pos_;
            m.name = Identifier(choice ? "alternative name" : "member name");
            if (AcceptPunct("[")) {
                if (Is("UNIVERSAL") || Is("APPLICATION") || Is("PRIVATE"))
                    Error("only context-specific tags are taken");
                m.tagged = true;
                m.tagNumber = Number("a tag number");
                ExpectPunct("]");
                if (Accept("IMPLICIT"))
                    m.tagging = TypeExpr::Member::Implicit;
                else if (Accept("EXPLICIT"))
                    m.tagging = TypeExpr::Member::Explicit;
            } else if (choice) {
                Error("alternative '" + m.name + "' needs a tag [n] whose number is its id");
            }
            m.type = Type(false);
            if (choice && Is("OPTIONAL"))
                Error("an alternative of a CHOICE cannot be OPTIONAL");
            m.optional = Accept("OPTIONAL");
            if (Is("DEFAULT"))
                Error("DEFAULT is not taken");
            for (size_t i = first; i < pos_; ++i) {
                bool tight = i == first || toks_[i].text == "]" || toks_[i - 1].text == "[";
                m.text += (tight ? "" : " ") + toks_[i].text;
            }
            t.members.push_back(std::move(m));
        } while (AcceptPunct(","));
        if (IsPunct("."))
            Error("extension markers are not taken");
        ExpectPunct("}");
    }

    std::string file_;
    std::vector<Token> toks_;
    size_t pos_ = 0;
};

}  // namespace

Module ParseModule(const std::string& path, const std::string& shownAs) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        SchemaError({shownAs, 0}, "cannot read the file");
    std::stringstream ss;
    ss << in.rdbuf();
    std::string src = ss.str();
    Lexer lexer(shownAs, src);
    Parser parser(shownAs, lexer.Run());
    Module m = parser.ParseModuleBody();
    m.path = shownAs;
    return m;
}

}  // namespace zolc
