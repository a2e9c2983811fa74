// zoldump: decodes BER messages of the protocol and prints them as the
// library's text or as JSON; with --encode, turns JSON back into BER.
//
// Exit status: 0 when everything was read, 1 on bad input (the library's
// failure lines and one summary line on standard error), 2 on a usage error.
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <zol/json.h>
#include <zol/zol.h>

namespace {

const char* const kUsage =
    "usage: zoldump [--hex] [--json] [--type NAME | --request | --reply] [FILE]\n"
    "       zoldump --encode [--hex] [--type NAME] [FILE]\n"
    "Decodes the BER messages in FILE (standard input when FILE is absent or -)\n"
    "and prints each with its offset and length. With --encode, reads JSON\n"
    "values and writes their BER to standard output.\n"
    "  --hex        the bytes are hex text (blanks, newlines, commas and 0x are\n"
    "               allowed); with --encode, write hex text\n"
    "  --json       print JSON instead of the library's text\n"
    "  --type NAME  read every message as the type NAME of any module\n"
    "  --request    the messages are requests: ZolTransReq or ZolQueryReq\n"
    "  --reply      the messages are replies: ZolTransRep or ZolQueryRep\n"
    "  --encode     read JSON, write BER: bare values with --type, else objects\n"
    "               {\"type\": NAME, \"value\": ...} as --json prints them\n"
    "  --help       print this text\n"
    "Without --type the first octets choose the envelope: 30 a request (BF 82\n"
    "after the user id a query, else a transaction), A0 B1 B2 a transaction\n"
    "reply, BF 82 a query reply.\n";

struct Options {
    bool hex = false;
    bool json = false;
    bool encode = false;
    bool request = false;
    bool reply = false;
    bool help = false;
    const char* type = nullptr;
    const char* file = nullptr;
};

struct UsageError {
    std::string what;
};

// Bad input: the summary line, printed after whatever the library wrote.
struct InputError {
    std::string what;
};

Options ParseArgs(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--hex")
            o.hex = true;
        else if (a == "--json")
            o.json = true;
        else if (a == "--encode")
            o.encode = true;
        else if (a == "--request")
            o.request = true;
        else if (a == "--reply")
            o.reply = true;
        else if (a == "--help")
            o.help = true;
        else if (a == "--type") {
            if (++i == argc)
                throw UsageError{"--type needs a type name"};
            o.type = argv[i];
        } else if (a.size() > 1 && a[0] == '-')
            throw UsageError{"unknown option " + a};
        else if (o.file)
            throw UsageError{"more than one input file"};
        else
            o.file = argv[i];
    }
    if (o.help)
        return o;
    if (o.request && o.reply)
        throw UsageError{"--request and --reply exclude each other"};
    if (o.type && (o.request || o.reply))
        throw UsageError{"--type excludes --request and --reply"};
    if (o.encode && (o.json || o.request || o.reply))
        throw UsageError{"--encode takes only --hex and --type"};
    return o;
}

std::string ReadAll(const char* file) {
    if (!file || std::strcmp(file, "-") == 0)
        return std::string(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw InputError{std::string("cannot read ") + file};
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Hex text to bytes. Words are split by blanks, line ends and commas; each
// may begin with 0x and must hold whole octets.
std::string FromHex(const std::string& text) {
    std::string out;
    size_t i = 0;
    while (i < text.size()) {
        char c = text[i];
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ',') {
            ++i;
            continue;
        }
        size_t start = i;
        if (c == '0' && i + 1 < text.size() && (text[i + 1] == 'x' || text[i + 1] == 'X'))
            i += 2;
        size_t digits = i;
        while (i < text.size() && HexDigit(text[i]) >= 0)
            ++i;
        if (i < text.size() && !std::strchr(" \t\r\n,", text[i]))
            throw InputError{"bad hex text: character '" + std::string(1, text[i]) + "' at offset " +
                             std::to_string(i)};
        if ((i - digits) % 2 || i == digits)
            throw InputError{"bad hex text: \"" + text.substr(start, i - start) + "\" at offset " +
                             std::to_string(start) + " is not whole octets"};
        for (size_t k = digits; k < i; k += 2)
            out += static_cast<char>(HexDigit(text[k]) << 4 | HexDigit(text[k + 1]));
    }
    return out;
}

std::string ToHex(const char* p, size_t n) {
    std::string out;
    char buf[4];
    for (size_t i = 0; i < n; ++i) {
        std::snprintf(buf, sizeof buf, i ? " %02X" : "%02X", static_cast<unsigned char>(p[i]));
        out += buf;
    }
    return out;
}

// The envelope that the first octets of a message call for, or null.
std::unique_ptr<AsnType> Envelope(const unsigned char* p, size_t n, const Options& o, std::string& why) {
    unsigned char first = p[0];
    bool query = n > 1 && first == 0xBF && p[1] == 0x82;
    if (first == 0x30 && !o.reply) {
        // The alternative's tag follows the user id: BF 82 is a query.
        const char* bytes = reinterpret_cast<const char*>(p);
        AsnTlv request, userId;
        AsnReadTlv(bytes, n, request);
        size_t at = request.headerSize;
        if (at && AsnReadTlv(bytes + at, n - at, userId) == AsnTlvComplete) {
            at += userId.totalSize;
            if (at + 1 < n && p[at] == 0xBF && p[at + 1] == 0x82)
                return std::unique_ptr<AsnType>(new Zol::ZolQueryReq);
        }
        return std::unique_ptr<AsnType>(new Zol::ZolTransReq);
    }
    if ((first == 0xA0 || first == 0xB1 || first == 0xB2) && !o.request)
        return std::unique_ptr<AsnType>(new Zol::ZolTransRep);
    if (query && !o.request)
        return std::unique_ptr<AsnType>(new Zol::ZolQueryRep);
    char buf[8];
    std::snprintf(buf, sizeof buf, "%02X", first);
    why = std::string("begins with ") + buf + ", which begins no " +
          (o.request ? "request" : o.reply ? "reply" : "envelope") + " (give --type)";
    return nullptr;
}

const char* TypeName(const AsnType& v) { return AsnTypeName(v._getdesc()); }

int Decode(const Options& o) {
    const AsnTypeDesc* type = nullptr;
    if (o.type && !(type = Zol::FindType(o.type)))
        throw UsageError{std::string("no type named ") + o.type};

    std::string input = ReadAll(o.file);
    if (o.hex)
        input = FromHex(input);
    if (input.empty())
        throw InputError{"the input holds no bytes"};

    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(input.data());
    size_t offset = 0;
    bool firstOut = true;
    while (offset < input.size()) {
        std::unique_ptr<AsnType> value;
        std::string why;
        if (type)
            value.reset(type->create());
        else
            value = Envelope(bytes + offset, input.size() - offset, o, why);
        if (!value)
            throw InputError{"the message at offset " + std::to_string(offset) + " " + why};

        AsnBuf b;
        b.InstallData(&input[offset], input.size() - offset);
        AsnLen used = 0;
        int ok = value->BDecPdu(b, used);
        if (!ok || used == 0 || used > input.size() - offset) {
            std::cout.flush();
            throw InputError{"the message at offset " + std::to_string(offset) + " does not decode as " +
                             TypeName(*value) + " (decoding stopped at offset " +
                             std::to_string(offset + size_t(b.readPos - b.dataBegin)) + ")"};
        }

        if (o.json) {
            Zol::Json doc = Zol::Json::object();
            doc["offset"] = offset;
            doc["length"] = used;
            doc["type"] = TypeName(*value);
            doc["value"] = Zol::ToJson(*value);
            std::cout << doc.dump(2) << "\n";
        } else {
            if (!firstOut)
                std::cout << "\n";
            std::cout << "-- " << TypeName(*value) << ", offset " << offset << ", length " << used << " --\n"
                      << *value << "\n";
        }
        firstOut = false;
        offset += used;
    }
    return 0;
}

// The BER of one value, in a block as large as it needs.
std::string EncodeValue(const AsnType& v) {
    std::vector<char> block(1 << 16);
    for (;;) {
        size_t length = 0;
        char* p = Zol::AsnBuffer::Encode(block.data(), block.size(), v, length);
        if (p)
            return std::string(p, length);
        if (length < block.size())
            throw InputError{"the value does not encode"};
        block.resize(length + 1);
    }
}

int Encode(const Options& o) {
    const AsnTypeDesc* type = nullptr;
    if (o.type && !(type = Zol::FindType(o.type)))
        throw UsageError{std::string("no type named ") + o.type};

    std::string input = ReadAll(o.file);
    std::istringstream in(input);
    std::string out;
    int count = 0;
    for (;;) {
        while (std::isspace(in.peek()))
            in.get();
        if (in.peek() == std::char_traits<char>::eof())
            break;
        size_t start = size_t(in.tellg());
        std::string where = "the JSON value at offset " + std::to_string(start);
        Zol::Json doc;
        try {
            in >> doc;
        } catch (const Zol::Json::exception& e) {
            std::string what = e.what();
            size_t cut = what.find("] ");
            throw InputError{where + ": " + (cut == std::string::npos ? what : what.substr(cut + 2))};
        }
        const AsnTypeDesc* t = type;
        const Zol::Json* value = &doc;
        if (!t) {
            if (!doc.is_object() || !doc.contains("type") || !doc.contains("value") || !doc["type"].is_string())
                throw InputError{where + ": expected {\"type\": NAME, \"value\": ...} (or give --type)"};
            for (auto it = doc.begin(); it != doc.end(); ++it)
                if (it.key() != "type" && it.key() != "value" && it.key() != "offset" && it.key() != "length")
                    throw InputError{where + ": unexpected key \"" + it.key() + "\""};
            const std::string& name = doc["type"].get_ref<const std::string&>();
            if (!(t = Zol::FindType(name.c_str())))
                throw InputError{where + ": no type named " + name};
            value = &doc["value"];
        }
        std::unique_ptr<AsnType> v(t->create());
        try {
            Zol::FromJson(*value, *v);
        } catch (const Zol::JsonError& e) {
            throw InputError{where + ", " + t->name + " at " + e.what()};
        }
        std::string ber = EncodeValue(*v);
        out += o.hex ? ToHex(ber.data(), ber.size()) + "\n" : ber;
        ++count;
    }
    if (!count)
        throw InputError{"the input holds no JSON value"};
    std::cout.write(out.data(), std::streamsize(out.size()));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    try {
        o = ParseArgs(argc, argv);
        if (o.help) {
            std::cout << kUsage;
            return 0;
        }
        return o.encode ? Encode(o) : Decode(o);
    } catch (const UsageError& e) {
        std::cerr << "zoldump: " << e.what << "\n" << kUsage;
        return 2;
    } catch (const InputError& e) {
        std::cout.flush();
        std::cerr << "zoldump: " << e.what << "\n";
        return 1;
    } catch (const std::exception& e) {
        std::cout.flush();
        std::cerr << "zoldump: " << e.what() << "\n";
        return 1;
    }
}
