#include "show.h"

#include <cstdio>
#include <sstream>

#include <zol/json.h>
#include <zol/zol.h>

#include "brief.h"

namespace ZolDump {

namespace {

const char* TypeName(const AsnType& v) { return AsnTypeName(v._getdesc()); }

}  // namespace

void Show(Form form, const Place& place, AsnType& message, bool first, std::string& out) {
    if (form == Form::Json) {
        Zol::Json doc = Zol::Json::object();
        if (place.file)
            doc["file"] = place.file;
        doc["offset"] = place.offset;
        doc["length"] = place.length;
        doc["type"] = TypeName(message);
        doc["value"] = Zol::ToJson(message);
        out += doc.dump(2) + "\n";
        return;
    }
    if (form == Form::Text && !first)
        out += "\n";
    out += "-- " + std::string(TypeName(message)) + ", " + (place.file ? place.file + std::string(", ") : "") +
           "offset " + std::to_string(place.offset) + ", length " + std::to_string(place.length) + " --\n";
    if (form == Form::Brief)
        return Brief(message, out);
    std::ostringstream text;
    text << message << "\n";
    out += text.str();
}

void Say(const std::string& line) {
    std::fflush(stdout);
    std::fputs(("zoldump: " + line + "\n").c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace ZolDump
