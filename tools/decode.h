// zoldump's decoding: each message of an input shown as it arrives, read by
// the shared MessageReader.
#pragma once

#include <string>

#include "options.h"

struct AsnTypeDesc;

namespace ZolDump {

class Input;

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
    const Options& o_;
    const AsnTypeDesc* type_;  // from --type, or null
    unsigned long good_ = 0;
    unsigned long bad_ = 0;
    std::string out_;  // the form of one message, reused
};

}  // namespace ZolDump
