// zoldump: decodes BER messages of the protocol as they arrive and prints
// them as the library's text, one line per member or JSON; with --encode,
// turns JSON back into BER.
//
// Exit status: 0 when everything was read, 1 on bad input (the library's
// failure lines and one line of zoldump's on standard error), 2 on a usage
// error.
#include <cstdio>
#include <exception>
#include <string>

#include "decode.h"
#include "encode.h"
#include "input.h"
#include "show.h"
#include "types.h"

namespace ZolDump {

namespace {

const char* const kUsage =
    "usage: zoldump [--hex] [--brief | --json] [--keep-going] [--type NAME | --request | --reply] [FILE...]\n"
    "       zoldump --encode [--hex] [--type NAME] [FILE...]\n"
    "       zoldump --list-types [FILTER]\n"
    "Decodes the BER messages in each FILE (standard input when there is none,\n"
    "or for -) as they arrive and prints each with its offset and length, and\n"
    "with several FILEs its file's name. With --encode, reads JSON values and\n"
    "writes their BER to standard output.\n"
    "  --hex          the bytes are hex text (blanks, newlines, commas and 0x are\n"
    "                 allowed); with --encode, write hex text\n"
    "  --brief        print one line per member present instead of the library's\n"
    "                 text, enumerations by name\n"
    "  --json         print JSON instead of the library's text\n"
    "  --keep-going   report a bad message and go on at the next offset where a\n"
    "                 message decodes; end with the count of good and bad ones\n"
    "  --type NAME    read every message as the type NAME of any module\n"
    "  --request      the messages are requests: ZolTransReq or ZolQueryReq\n"
    "  --reply        the messages are replies: ZolTransRep or ZolQueryRep\n"
    "  --encode       read JSON, write BER: bare values with --type, else objects\n"
    "                 {\"type\": NAME, \"value\": ...} as --json prints them\n"
    "  --list-types   list every type with its module, or those whose name or\n"
    "                 module holds FILTER in any case\n"
    "  --version      print zoldump's version\n"
    "  --help         print this text\n"
    "Without --type the first octets choose the envelope: 30 a request (BF 82\n"
    "after the user id a query, else a transaction), A0 B1 B2 a transaction\n"
    "reply, BF 82 a query reply. A message may have up to 64 MB.\n";

}  // namespace

Options ParseArgs(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--hex")
            o.hex = true;
        else if (a == "--brief" || a == "--json") {
            Form form = a == "--json" ? Form::Json : Form::Brief;
            if (o.form != Form::Text && o.form != form)
                throw UsageError{"--brief and --json exclude each other"};
            o.form = form;
        } else if (a == "--keep-going")
            o.keepGoing = true;
        else if (a == "--encode")
            o.encode = true;
        else if (a == "--request")
            o.request = true;
        else if (a == "--reply")
            o.reply = true;
        else if (a == "--help")
            o.help = true;
        else if (a == "--version")
            o.version = true;
        else if (a == "--list-types")
            o.listTypes = true;
        else if (a == "--type") {
            if (++i == argc)
                throw UsageError{"--type needs a type name"};
            o.type = argv[i];
        } else if (a.size() > 1 && a[0] == '-')
            throw UsageError{"unknown option " + a};
        else
            o.files.push_back(argv[i]);
    }
    if (o.help || o.version)
        return o;
    if (o.listTypes && o.files.size() > 1)
        throw UsageError{"--list-types takes one filter"};
    if (o.request && o.reply)
        throw UsageError{"--request and --reply exclude each other"};
    if (o.type && (o.request || o.reply))
        throw UsageError{"--type excludes --request and --reply"};
    if (o.encode && (o.form != Form::Text || o.request || o.reply || o.keepGoing))
        throw UsageError{"--encode takes only --hex and --type"};
    return o;
}

const AsnTypeDesc* TypeNamed(const char* name) {
    if (const AsnTypeDesc* t = FindTypeNamed(name))
        return t;
    throw UsageError{NoTypeNamed(name), "--list-types"};
}

namespace {

int Decode(const Options& o) {
    Decoder decoder(o);
    std::vector<const char*> files = o.files;
    if (files.empty())
        files.push_back(nullptr);
    int status = 0;
    try {
        for (const char* file : files) {
            Input in(file, o.hex);
            decoder.Run(in, files.size() > 1);
        }
    } catch (const InputError& e) {
        Say(e.what);
        status = 1;
    }
    if (o.keepGoing)
        Say("messages: " + std::to_string(decoder.good()) + " good, " + std::to_string(decoder.bad()) + " bad");
    return decoder.bad() ? 1 : status;
}

int Run(const Options& o) {
    if (o.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (o.version) {
        std::puts("zoldump " ZOL_VERSION);
        return 0;
    }
    if (o.listTypes) {
        std::string list = TypeList(o.files.empty() ? nullptr : o.files[0]);
        if (list.empty())
            throw InputError{std::string("no type's name or module holds ") + o.files[0]};
        std::fputs(list.c_str(), stdout);
        return 0;
    }
    return o.encode ? Encode(o) : Decode(o);
}

}  // namespace

}  // namespace ZolDump

int main(int argc, char** argv) {
    using namespace ZolDump;
    try {
        return Run(ParseArgs(argc, argv));
    } catch (const UsageError& e) {
        Say(e.what + " (see zoldump " + e.see + ")");
        return 2;
    } catch (const InputError& e) {
        Say(e.what);
        return 1;
    } catch (const std::exception& e) {
        Say(e.what());
        return 1;
    }
}
