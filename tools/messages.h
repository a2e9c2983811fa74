// Reading the messages of an input as its bytes arrive, as zoldump and the
// Python module read them. The runtime's TLV reader frames each message, so
// that only a message and a chunk are held; the decoders then read the
// complete message, as the type asked for or as the envelope its first
// octets call for. A message that does not decode is told with the
// library's lines, the failure code and where decoding stopped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class AsnType;
struct AsnTypeDesc;

namespace ZolDump {

// The largest message taken: one longer is refused as soon as its header
// says so, before its bytes are read.
const size_t kMessageLimit = size_t(64) << 20;

// Where the bytes come from: a file, standard input, a Python file object.
class Source {
public:
    virtual ~Source() = default;
    // Appends to `bytes` what one read gives, waiting only when nothing has
    // arrived. False at the end of the input.
    virtual bool Read(std::string& bytes) = 0;
    // Whether a Read would return without waiting.
    virtual bool Ready() const = 0;
};

// Which envelopes the first octets may call for.
enum class Direction { Any, Request, Reply };

struct ReadOptions {
    const AsnTypeDesc* type = nullptr;  // every message is of this type; null: the envelope
    Direction direction = Direction::Any;
    // Go on after a bad message at the next offset where one decodes.
    bool keepGoing = false;
    const char* reader = "zoldump";        // who refuses a message over the limit
    const char* typeHint = " (give --type)";  // after "... which begins no envelope"
};

// What the bytes at one place of the input came to.
struct Message {
    enum Kind { End, Good, Bad } kind = End;
    uint64_t offset = 0;  // in the input
    // Good: the message's octets. Bad: the octets skipped to the next
    // message that decodes when going on, else 0.
    size_t size = 0;
    std::unique_ptr<AsnType> value;  // of a good message
    // The library's lines written while decoding it: a bad message's failure
    // line, or warnings about a good one. Each ends with a line end.
    std::string lines;
    // Bad: the line that says what went wrong ("the message at offset 0 does
    // not decode as ZolTransRep (decoding stopped at offset 4)"), with the
    // octets skipped when going on.
    std::string why;
    int code = 0;       // bad: the decoder's failure code; 0 when no decoder failed
    uint64_t stop = 0;  // bad: the input offset where decoding stopped, else the message's
};

class MessageReader {
public:
    MessageReader(Source& in, const ReadOptions& o);
    ~MessageReader();
    MessageReader(const MessageReader&) = delete;
    MessageReader& operator=(const MessageReader&) = delete;

    // The next message: good, bad, or the end of the input. Without
    // keepGoing a bad message ends the reading: Next gives End after it.
    Message Next();

    // The input offset up to which messages have been read.
    uint64_t offset() const;
    // Whether the input's bytes are all read and taken.
    bool AtEnd();

private:
    struct Window;
    Message Frame();
    Message Decode(size_t frame, const char* fault);
    Message Bad(const std::string& what) const;
    bool More();

    Source& in_;
    ReadOptions o_;
    std::unique_ptr<Window> w_;
    Message pending_;       // the good message found after a bad one
    bool stopped_ = false;  // a bad message ended the reading
};

// The envelope that the first octets of a message call for, or null with
// `why` saying what they begin instead.
const AsnTypeDesc* EnvelopeFor(const char* bytes, size_t n, Direction d, std::string& why);

// The BER of `value` in `block`, grown as needed; null when the value does
// not encode. The encoding ends at the block's top.
const char* EncodeInto(const AsnType& value, std::vector<char>& block, size_t& length);

}  // namespace ZolDump
