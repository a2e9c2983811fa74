#include "decode.h"

#include <cstdio>

#include <zol/zol.h>

#include "input.h"
#include "messages.h"
#include "show.h"

namespace ZolDump {

Decoder::Decoder(const Options& o) : o_(o), type_(o.type ? TypeNamed(o.type) : nullptr) {}

void Decoder::Run(Input& in, bool named) {
    ReadOptions read;
    read.type = type_;
    read.direction = o_.request ? Direction::Request : o_.reply ? Direction::Reply : Direction::Any;
    read.keepGoing = o_.keepGoing;
    MessageReader reader(in, read);
    std::string prefix = named ? in.name() + ": " : "";
    for (Message m; (m = reader.Next()).kind != Message::End;) {
        // The library's lines about a message come before what is said of it.
        std::fflush(stdout);
        std::fputs(m.lines.c_str(), stderr);
        if (m.kind == Message::Bad) {
            if (!o_.keepGoing)
                throw InputError{prefix + m.why};
            ++bad_;
            Say(prefix + m.why);
            continue;
        }
        out_.clear();
        Show(o_.form, {named ? in.name().c_str() : nullptr, m.offset, m.size}, *m.value, good_ == 0, out_);
        // Out at once: the reader of a live capture sees each message as it
        // comes, and the decoders' failure lines come after it.
        std::fwrite(out_.data(), 1, out_.size(), stdout);
        std::fflush(stdout);
        ++good_;
    }
    if (reader.offset() == 0)
        throw InputError{prefix + "the input holds no bytes"};
}

}  // namespace ZolDump
