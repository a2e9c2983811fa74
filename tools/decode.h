// Decoding the messages of an input as its bytes arrive. The runtime's TLV
// reader frames each message, so that only a message and a chunk are held;
// the decoders then read the complete message.
#pragma once

#include <cstddef>
#include <string>

#include "options.h"

struct AsnTypeDesc;

namespace ZolDump {

class Input;
struct Outcome;
struct Window;

// The largest message zoldump takes: one longer is refused as soon as its
// header says so, before its bytes are read.
const size_t kMessageLimit = size_t(64) << 20;

class Decoder {
public:
    explicit Decoder(const Options& o);

    // Shows each message of `in` as it completes; `named`: with the input's
    // name. A bad message throws InputError, or with --keep-going is
    // reported, with the octets from it to the next message that decodes.
    void Run(Input& in, bool named);

    unsigned long good() const { return good_; }
    unsigned long bad() const { return bad_; }

private:
    Outcome Next(Input& in, Window& w);
    Outcome Decode(const Window& w, size_t frame, const char* fault);

    const Options& o_;
    const AsnTypeDesc* type_ = nullptr;
    unsigned long good_ = 0;
    unsigned long bad_ = 0;
    std::string out_;  // the form of one message, reused
};

}  // namespace ZolDump
