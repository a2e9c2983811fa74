// What the command line of zoldump asks for.
#pragma once

#include <string>
#include <vector>

struct AsnTypeDesc;

namespace ZolDump {

enum class Form { Text, Brief, Json };

struct Options {
    bool hex = false;
    Form form = Form::Text;
    bool encode = false;
    bool request = false;
    bool reply = false;
    bool keepGoing = false;
    bool help = false;
    bool version = false;
    bool listTypes = false;
    const char* type = nullptr;
    std::vector<const char*> files;  // none: standard input; with --list-types, the filter
};

// A mistake on the command line: one line that ends with where to look,
// exit status 2.
struct UsageError {
    std::string what;
    const char* see = "--help";
};

Options ParseArgs(int argc, char** argv);

// The type named `name`; throws UsageError naming the nearest names when
// there is none.
const AsnTypeDesc* TypeNamed(const char* name);

}  // namespace ZolDump
