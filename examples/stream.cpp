// Reading messages from a stream, as a client reads the host's replies from
// its connection. A stream socket delivers bytes, not messages: one read
// may end inside a message or hold several. AsnReadTlv tells when the bytes
// received hold a whole message, which then goes to AsnBuffer::Decode; the
// rest waits for the next read. Here the connection is a local socket pair
// read 16 octets at a time, so that messages straddle reads.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include <zol/zol.h>

using namespace Zol;

namespace {

// The largest message the client takes; a longer one ends the connection
// as soon as its header says so, before its bytes are received.
const size_t kMaxMessage = 1 << 20;

std::string Encoded(const AsnType& message) {
    char block[256];
    size_t length = 0;
    char* bytes = AsnBuffer::Encode(block, sizeof block, message, length);
    return bytes ? std::string(bytes, length) : std::string();
}

ZolTransRep Reply(bool ok, const char* text) {
    ZolTransRep reply;
    if (ok) {
        reply.choiceId = ZolTransRep::replyOKCid;
        reply.replyOK = new ZolReplyOK;
        reply.replyOK->infoMessage = text;
    } else {
        reply.choiceId = ZolTransRep::replyBadCid;
        reply.replyBad = new ZolReplyBad;
        reply.replyBad->infoMessage = text;
    }
    return reply;
}

// Host: three replies back to back, the last one in the indefinite length
// form as another codec may write it, then a header that announces 2 GB.
void HostSends(int fd) {
    std::string wire = Encoded(Reply(true, "Order entered")) + Encoded(Reply(false, "Unknown security"));
    wire.append("\xB2\x80\x04\x02OK\x00\x00", 8);  // replyOK "OK" of indefinite length
    wire.append("\xB2\x84\x80\x00\x00\x00", 6);   // the head of a reply of 2 GB
    if (write(fd, wire.data(), wire.size()) != ssize_t(wire.size()))
        std::perror("write");
}

void Show(const ZolTransRep& reply, size_t size, int reads) {
    bool ok = reply.choiceId == ZolTransRep::replyOKCid;
    const AsnOcts& text = ok ? reply.replyOK->infoMessage : reply.replyBad->infoMessage;
    std::printf("client: after read %d, a reply of %zu octets: %s \"%.*s\"\n", reads, size,
                ok ? "replyOK" : "replyBad", int(text.octetLen), text.octs);
}

// The client ends a connection that sends what it does not take.
int Refuse(int reads, const std::string& what) {
    std::printf("client: after read %d, %s: closing\n", reads, what.c_str());
    return 0;
}

// Client: the receive loop. `received` holds what arrived and is not yet a
// whole message.
int ClientReceives(int fd) {
    std::string received;
    char chunk[16];
    int reads = 0;
    for (ssize_t n; (n = read(fd, chunk, sizeof chunk)) > 0;) {
        ++reads;
        received.append(chunk, size_t(n));
        size_t used = 0;
        AsnTlv tlv;
        AsnTlvStatus status;
        while ((status = AsnReadTlv(received.data() + used, received.size() - used, tlv)) == AsnTlvComplete) {
            ZolTransRep reply;
            if (!AsnBuffer::Decode(received.data() + used, tlv.totalSize, reply))
                return 1;  // a whole element, but not a reply
            Show(reply, tlv.totalSize, reads);
            used += tlv.totalSize;
        }
        received.erase(0, used);  // drop the messages taken
        if (status == AsnTlvMalformed)
            return Refuse(reads, "bytes that are no BER element");
        if (tlv.totalSize > kMaxMessage || received.size() > kMaxMessage)
            return Refuse(reads, "a message of " + std::to_string(tlv.totalSize) + " octets");
    }
    std::printf("client: the connection ended%s\n", received.empty() ? "" : " inside a message");
    return 0;
}

}  // namespace

int main() {
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, fds) != 0) {
        std::perror("socketpair");
        return 1;
    }
    HostSends(fds[0]);
    close(fds[0]);
    int status = ClientReceives(fds[1]);
    close(fds[1]);
    return status;
}
