#include "decode.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <memory>

#include <zol/zol.h>

#include "input.h"
#include "show.h"
#include "types.h"

namespace ZolDump {

// The bytes of an input from `start` on: the message being read and what
// follows it of the last chunk.
struct Window {
    std::string bytes;
    uint64_t start = 0;  // the input offset of bytes[0]
    size_t at = 0;       // where the message begins in `bytes`
    bool ended = false;  // the input has no more

    uint64_t Offset() const { return start + at; }
    const char* Here() const { return bytes.data() + at; }
    size_t Left() const { return bytes.size() - at; }
};

// What the bytes at the window's place came to.
struct Outcome {
    enum Kind { End, Good, Bad } kind;
    size_t size;                     // of a good message
    std::unique_ptr<AsnType> value;  // a good message
    std::string why;                 // for a bad one, the line that says why
};

namespace {

// Standard error goes nowhere while this lives: the decoders' failure lines
// at the offsets tried after a bad message are not the reader's business.
class Quiet {
public:
    Quiet() : saved_(dup(2)) {
        std::fflush(stderr);
        int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (null >= 0) {
            dup2(null, 2);
            close(null);
        }
    }
    ~Quiet() {
        std::fflush(stderr);
        if (saved_ >= 0) {
            dup2(saved_, 2);
            close(saved_);
        }
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    int saved_;
};

// Reads a chunk more into `w`, dropping the messages behind it first.
bool More(Input& in, Window& w) {
    w.bytes.erase(0, w.at);
    w.start += w.at;
    w.at = 0;
    w.ended = w.ended || !in.Read(w.bytes);
    return !w.ended;
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

Outcome Bad(const Window& w, const std::string& what) {
    return {Outcome::Bad, 0, nullptr, "the message at offset " + std::to_string(w.Offset()) + " " + what};
}

}  // namespace

Decoder::Decoder(const Options& o) : o_(o) {
    if (o.type)
        type_ = TypeNamed(o.type);
}

// Frames the message at the window's place, reading until it is whole, and
// decodes it. An element whose size the header does not give (the
// indefinite form) is scanned again once its bytes have doubled or the
// input pauses, so that reading a long one stays linear.
Outcome Decoder::Next(Input& in, Window& w) {
    for (;;) {
        if (w.Left() == 0 && !More(in, w))
            return {Outcome::End, 0, nullptr, ""};
        AsnTlv tlv;
        AsnTlvStatus status = AsnReadTlv(w.Here(), w.Left(), tlv);
        if (tlv.totalSize > kMessageLimit)
            return Bad(w, "has " + std::to_string(tlv.totalSize) + " octets, more than the " +
                              std::to_string(kMessageLimit) + " that zoldump takes");
        if (status == AsnTlvComplete)
            return Decode(w, tlv.totalSize, nullptr);
        if (status == AsnTlvMalformed)
            return Decode(w, 0, "is no well-formed BER element");
        if (w.ended)
            return Decode(w, 0, "is cut short by the end of the input");
        if (w.Left() > kMessageLimit)
            return Bad(w, "runs past " + std::to_string(kMessageLimit) + " octets, more than zoldump takes");
        size_t want = tlv.totalSize ? tlv.totalSize : 2 * w.Left();
        while (More(in, w) && w.Left() < want && (tlv.totalSize || in.Ready())) {
        }
    }
}

// Decodes the `frame` octets at the window's place. Without a whole element
// (`frame` 0) the decoders still read what is there, for their failure
// line; `fault` says what is wrong should they not fail.
Outcome Decoder::Decode(const Window& w, size_t frame, const char* fault) {
    size_t n = frame ? frame : w.Left();
    std::string why;
    std::unique_ptr<AsnType> value(type_ ? type_->create()
                                         : Envelope(reinterpret_cast<const unsigned char*>(w.Here()), n, o_, why).release());
    if (!value)
        return Bad(w, why);
    AsnBuf b;
    b.InstallData(const_cast<char*>(w.Here()), n);
    AsnLen used = 0;
    const char* type = AsnTypeName(value->_getdesc());
    if (!value->BDecPdu(b, used) || used == 0 || used > n)
        return Bad(w, std::string("does not decode as ") + type + " (decoding stopped at offset " +
                          std::to_string(w.Offset() + uint64_t(b.readPos - b.dataBegin)) + ")");
    if (!frame)
        return Bad(w, fault);
    if (used != frame)
        return Bad(w, std::string("decodes as ") + type + " in " + std::to_string(used) + " of its " +
                          std::to_string(frame) + " octets");
    return {Outcome::Good, frame, std::move(value), ""};
}

void Decoder::Run(Input& in, bool named) {
    std::string prefix = named ? in.name() + ": " : "";
    Window w;
    for (Outcome r = Next(in, w); r.kind != Outcome::End;) {
        if (r.kind == Outcome::Good) {
            out_.clear();
            Show(o_.form, {named ? in.name().c_str() : nullptr, w.Offset(), r.size}, *r.value, good_ == 0, out_);
            // Out at once: the reader of a live capture sees each message as
            // it comes, and the decoders' failure lines come after it.
            std::fwrite(out_.data(), 1, out_.size(), stdout);
            std::fflush(stdout);
            ++good_;
            w.at += r.size;
            r = Next(in, w);
            continue;
        }
        if (!o_.keepGoing)
            throw InputError{prefix + r.why};
        // Try each next offset until a message decodes there, or the input ends.
        uint64_t from = w.Offset();
        std::string why = r.why;
        {
            Quiet quiet;
            do {
                ++w.at;
                r = Next(in, w);
            } while (r.kind == Outcome::Bad);
        }
        ++bad_;
        uint64_t skipped = w.Offset() - from;
        Say(prefix + why + "; " + std::to_string(skipped) + (skipped == 1 ? " octet" : " octets") + " skipped");
    }
    if (w.Offset() == 0)
        throw InputError{prefix + "the input holds no bytes"};
}

}  // namespace ZolDump
