// Encodes a reply and decodes it again through the installed headers and
// library.
#include <cstdio>

#include <zol/zol.h>

int main() {
    Zol::ZolTransRep reply;
    reply.choiceId = Zol::ZolTransRep::replyOKCid;
    reply.replyOK = new Zol::ZolReplyOK;
    reply.replyOK->infoMessage = "OK";
    char block[64];
    size_t length = 0;
    const char* bytes = Zol::AsnBuffer::Encode(block, sizeof block, reply, length);
    Zol::ZolTransRep back;
    if (!bytes || !Zol::AsnBuffer::Decode(bytes, length, back) || back.choiceId != Zol::ZolTransRep::replyOKCid)
        return 1;
    for (size_t i = 0; i < length; ++i)
        std::printf(i ? " %02X" : "%02X", static_cast<unsigned char>(bytes[i]));
    std::printf("\n");
    return 0;
}
