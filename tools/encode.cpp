#include "encode.h"

#include <cctype>
#include <cstdio>
#include <memory>
#include <sstream>
#include <vector>

#include <zol/json.h>
#include <zol/zol.h>

#include "input.h"
#include "messages.h"
#include "types.h"

namespace ZolDump {

namespace {

std::string ToHex(const std::string& bytes) {
    std::string out;
    char buf[4];
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::snprintf(buf, sizeof buf, i ? " %02X" : "%02X", static_cast<unsigned char>(bytes[i]));
        out += buf;
    }
    return out;
}

// The BER of one value, in a block as large as it needs.
std::string EncodeValue(const AsnType& v) {
    std::vector<char> block;
    size_t length = 0;
    const char* p = EncodeInto(v, block, length);
    if (!p)
        throw InputError{"the value does not encode"};
    return std::string(p, length);
}

// The type and the value of one JSON document read without --type.
const AsnTypeDesc* Envelope(const Zol::Json& doc, const std::string& where, const Zol::Json*& value) {
    if (!doc.is_object() || !doc.contains("type") || !doc.contains("value") || !doc["type"].is_string())
        throw InputError{where + ": expected {\"type\": NAME, \"value\": ...} (or give --type)"};
    for (auto it = doc.begin(); it != doc.end(); ++it)
        if (it.key() != "type" && it.key() != "value" && it.key() != "file" && it.key() != "offset" &&
            it.key() != "length")
            throw InputError{where + ": unexpected key \"" + it.key() + "\""};
    const std::string& name = doc["type"].get_ref<const std::string&>();
    const AsnTypeDesc* t = Zol::FindType(name.c_str());
    if (!t)
        throw InputError{where + ": no type named " + name};
    value = &doc["value"];
    return t;
}

// Appends the encodings of the values of one input to `out`; returns how many.
int EncodeInput(const Options& o, const AsnTypeDesc* type, Input& input, bool named, std::string& out) {
    std::istringstream in(input.ReadAll());
    int count = 0;
    for (;; ++count) {
        while (std::isspace(in.peek()))
            in.get();
        if (in.peek() == std::char_traits<char>::eof())
            return count;
        std::string where =
            (named ? input.name() + ": " : "") + "the JSON value at offset " + std::to_string(size_t(in.tellg()));
        Zol::Json doc;
        try {
            in >> doc;
        } catch (const Zol::Json::exception& e) {
            std::string what = e.what();
            size_t cut = what.find("] ");
            throw InputError{where + ": " + (cut == std::string::npos ? what : what.substr(cut + 2))};
        }
        const Zol::Json* value = &doc;
        const AsnTypeDesc* t = type ? type : Envelope(doc, where, value);
        std::unique_ptr<AsnType> v(t->create());
        try {
            Zol::FromJson(*value, *v);
        } catch (const Zol::JsonError& e) {
            throw InputError{where + ", " + t->name + " at " + e.what()};
        }
        std::string ber = EncodeValue(*v);
        out += o.hex ? ToHex(ber) + "\n" : ber;
    }
}

}  // namespace

int Encode(const Options& o) {
    const AsnTypeDesc* type = o.type ? TypeNamed(o.type) : nullptr;
    std::vector<const char*> files = o.files;
    if (files.empty())
        files.push_back(nullptr);
    std::string out;
    int count = 0;
    for (const char* file : files) {
        Input input(file, false);
        count += EncodeInput(o, type, input, files.size() > 1, out);
    }
    if (!count)
        throw InputError{"the input holds no JSON value"};
    std::fwrite(out.data(), 1, out.size(), stdout);
    return 0;
}

}  // namespace ZolDump
