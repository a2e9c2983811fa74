#include "messages.h"

#include <cstdio>

#include <zol/zol.h>

namespace ZolDump {

// The bytes of the input from `start` on: the message being read and what
// follows it of the last chunk.
struct MessageReader::Window {
    std::string bytes;
    uint64_t start = 0;  // the input offset of bytes[0]
    size_t at = 0;       // where the message begins in `bytes`
    bool ended = false;  // the input has no more

    uint64_t Offset() const { return start + at; }
    const char* Here() const { return bytes.data() + at; }
    size_t Left() const { return bytes.size() - at; }
};

namespace {

// Keeps the library's lines in `lines` instead of writing them, while it lives.
class KeepLines {
public:
    explicit KeepLines(std::string& lines) : replaced_(AsnSetLineSink({Keep, &lines})) {}
    ~KeepLines() { AsnSetLineSink(replaced_); }
    KeepLines(const KeepLines&) = delete;
    KeepLines& operator=(const KeepLines&) = delete;

private:
    static void Keep(const char* line, void* lines) {
        std::string& kept = *static_cast<std::string*>(lines);
        kept += line;
        kept += '\n';
    }
    AsnLineSink replaced_;
};

// Decodes `value` from `b` under a jump environment of its own; the
// decoder's failure code, or 0. No frame here owns anything to destroy.
int DecodeCode(AsnType& value, AsnBuf& b, AsnLen& used) {
    DecodeEnv env;
    int code = setjmp(env);
    if (code == 0)
        value.BDec(b, used, env);
    return code;
}

}  // namespace

const AsnTypeDesc* EnvelopeFor(const char* bytes, size_t n, Direction d, std::string& why) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(bytes);
    unsigned char first = p[0];
    if (first == 0x30 && d != Direction::Reply) {
        // The alternative's tag follows the user id: BF 82 is a query.
        AsnTlv request, userId;
        AsnReadTlv(bytes, n, request);
        size_t at = request.headerSize;
        if (at && AsnReadTlv(bytes + at, n - at, userId) == AsnTlvComplete) {
            at += userId.totalSize;
            if (at + 1 < n && p[at] == 0xBF && p[at + 1] == 0x82)
                return &Zol::ZolQueryReq::_desc;
        }
        return &Zol::ZolTransReq::_desc;
    }
    if ((first == 0xA0 || first == 0xB1 || first == 0xB2) && d != Direction::Request)
        return &Zol::ZolTransRep::_desc;
    if (first == 0xBF && n > 1 && p[1] == 0x82 && d != Direction::Request)
        return &Zol::ZolQueryRep::_desc;
    char hex[8];
    std::snprintf(hex, sizeof hex, "%02X", first);
    why = std::string("begins with ") + hex + ", which begins no " +
          (d == Direction::Request ? "request" : d == Direction::Reply ? "reply" : "envelope");
    return nullptr;
}

const char* EncodeInto(const AsnType& value, std::vector<char>& block, size_t& length) {
    if (block.empty())
        block.resize(1 << 16);
    for (;;) {
        const char* p = Zol::AsnBuffer::Encode(block.data(), block.size(), value, length);
        if (p || length < block.size())
            return p;
        block.resize(length + 1);
    }
}

MessageReader::MessageReader(Source& in, const ReadOptions& o) : in_(in), o_(o), w_(new Window) {}

MessageReader::~MessageReader() = default;

uint64_t MessageReader::offset() const { return w_->Offset(); }

bool MessageReader::AtEnd() { return w_->Left() == 0 && !More(); }

// Reads a chunk more into the window, dropping the messages behind it first.
bool MessageReader::More() {
    Window& w = *w_;
    w.bytes.erase(0, w.at);
    w.start += w.at;
    w.at = 0;
    w.ended = w.ended || !in_.Read(w.bytes);
    return !w.ended;
}

Message MessageReader::Bad(const std::string& what) const {
    Message m;
    m.kind = Message::Bad;
    m.offset = m.stop = w_->Offset();
    m.why = "the message at offset " + std::to_string(m.offset) + " " + what;
    return m;
}

Message MessageReader::Next() {
    Message m;
    if (pending_.kind != Message::End)
        std::swap(m, pending_);
    else if (!stopped_)
        m = Frame();
    if (m.kind == Message::Good)
        w_->at = size_t(m.offset + m.size - w_->start);
    if (m.kind != Message::Bad)
        return m;
    if (!o_.keepGoing) {
        stopped_ = true;
        return m;
    }
    // Try each next offset until a message decodes there, or the input ends:
    // the octets passed over are this one bad message.
    do {
        ++w_->at;
        pending_ = Frame();
    } while (pending_.kind == Message::Bad);
    m.size = size_t(w_->Offset() - m.offset);
    m.why += "; " + std::to_string(m.size) + (m.size == 1 ? " octet" : " octets") + " skipped";
    return m;
}

// Frames the message at the window's place, reading until it is whole, and
// decodes it. An element whose size the header does not give (the
// indefinite form) is scanned again once its bytes have doubled or the
// input pauses, so that reading a long one stays linear.
Message MessageReader::Frame() {
    Window& w = *w_;
    for (;;) {
        if (w.Left() == 0 && !More())
            return Message();
        AsnTlv tlv;
        AsnTlvStatus status = AsnReadTlv(w.Here(), w.Left(), tlv);
        if (tlv.totalSize > kMessageLimit)
            return Bad("has " + std::to_string(tlv.totalSize) + " octets, more than the " +
                       std::to_string(kMessageLimit) + " that " + o_.reader + " takes");
        if (status == AsnTlvComplete)
            return Decode(tlv.totalSize, nullptr);
        if (status == AsnTlvMalformed)
            return Decode(0, "is no well-formed BER element");
        if (w.ended)
            return Decode(0, "is cut short by the end of the input");
        if (w.Left() > kMessageLimit)
            return Bad("runs past " + std::to_string(kMessageLimit) + " octets, more than " + o_.reader + " takes");
        size_t want = tlv.totalSize ? tlv.totalSize : 2 * w.Left();
        while (More() && w.Left() < want && (tlv.totalSize || in_.Ready())) {
        }
    }
}

// Decodes the `frame` octets at the window's place. Without a whole element
// (`frame` 0) the decoders still read what is there, for their failure
// line; `fault` says what is wrong should they not fail.
Message MessageReader::Decode(size_t frame, const char* fault) {
    const Window& w = *w_;
    size_t n = frame ? frame : w.Left();
    const AsnTypeDesc* type = o_.type;
    std::string why;
    if (!type && !(type = EnvelopeFor(w.Here(), n, o_.direction, why)))
        return Bad(why + o_.typeHint);
    std::unique_ptr<AsnType> value(type->create());
    AsnBuf b;
    b.InstallData(const_cast<char*>(w.Here()), n);
    AsnLen used = 0;
    std::string lines;
    int code;
    {
        KeepLines keep(lines);
        code = DecodeCode(*value, b, used);
    }
    const char* name = AsnTypeName(type);
    Message m;
    if (code || b.ReadError() || used == 0 || used > n) {
        uint64_t stop = w.Offset() + uint64_t(b.readPos - b.dataBegin);
        m = Bad(std::string("does not decode as ") + name + " (decoding stopped at offset " + std::to_string(stop) + ")");
        m.code = code;
        m.stop = stop;
    } else if (!frame || used != frame) {
        m = Bad(!frame ? std::string(fault)
                       : std::string("decodes as ") + name + " in " + std::to_string(used) + " of its " +
                             std::to_string(frame) + " octets");
        m.stop = w.Offset() + used;
    } else {
        m.kind = Message::Good;
        m.offset = w.Offset();
        m.size = frame;
        m.value = std::move(value);
    }
    m.lines = std::move(lines);
    return m;
}

}  // namespace ZolDump
