// The TLV reader that frames a byte stream: exact heads of complete
// elements, every cut of them incomplete with what is known so far,
// malformed heads refused at the first octet that proves them so, any
// depth of nesting in constant stack, and a stream of real messages cut
// where the decoders end them, however the bytes arrive.
#include <fstream>
#include <iterator>
#include <string>

#include "support.h"

namespace {

using zt::Bytes;

struct Complete {
    const char* hex;  // the element; two octets FF FF follow it in the input
    AsnTag tag;
    AsnLen length;
    size_t header;
    size_t total;
};

const Complete kComplete[] = {
    {"02 01 05", 0x02000000u, 1, 2, 3},
    {"04 00", 0x04000000u, 0, 2, 2},
    {"9F 52 01 07", 0x9F520000u, 1, 3, 4},
    {"BF 81 05 00", 0xBF810500u, 0, 4, 4},
    {"04 82 00 03 41 42 43", 0x04000000u, 3, 4, 7},              // long form with a leading zero
    {"30 84 00 00 00 01 05", 0x30000000u, 1, 6, 7},
    {"00 00", 0, 0, 2, 2},                                          // not inside an indefinite element: a tag like another
    {"30 80 04 01 41 00 00", 0x30000000u, IndefiniteLen, 2, 7},
    {"30 80 04 02 00 00 00 00", 0x30000000u, IndefiniteLen, 2, 8},  // definite content is stepped over, not read
    {"24 80 24 80 04 01 41 00 00 04 00 00 00", 0x24000000u, IndefiniteLen, 2, 13},
    {"BF 82 1D 80 30 03 02 01 05 A0 80 00 00 00 00", 0xBF821D00u, IndefiniteLen, 4, 15},
    {"30 80 30 82 00 00 00 00", 0x30000000u, IndefiniteLen, 2, 8},
};

TEST(Tlv, CompleteElementsGiveTheirExactHead) {
    for (const Complete& c : kComplete) {
        SCOPED_TRACE(c.hex);
        std::string bytes = Bytes(c.hex) + "\xFF\xFF";
        AsnTlv tlv;
        EXPECT_EQ(AsnReadTlv(bytes.data(), bytes.size(), tlv), AsnTlvComplete);
        EXPECT_EQ(tlv.tag, c.tag);
        EXPECT_EQ(tlv.length, c.length);
        EXPECT_EQ(tlv.headerSize, c.header);
        EXPECT_EQ(tlv.totalSize, c.total);
        EXPECT_EQ(c.total, Bytes(c.hex).size());
    }
}

// Every cut short of the end waits for more; once the header is there it
// is known, and so is the size of a definite element.
TEST(Tlv, EveryCutOfACompleteElementIsIncomplete) {
    for (const Complete& c : kComplete) {
        std::string bytes = Bytes(c.hex);
        for (size_t cut = 0; cut < bytes.size(); ++cut) {
            SCOPED_TRACE(std::string(c.hex) + " cut at " + std::to_string(cut));
            AsnTlv tlv;
            ASSERT_EQ(AsnReadTlv(bytes.data(), cut, tlv), AsnTlvIncomplete);
            bool head = cut >= c.header;
            EXPECT_EQ(tlv.tag, head ? c.tag : 0);
            EXPECT_EQ(tlv.length, head ? c.length : 0);
            EXPECT_EQ(tlv.headerSize, head ? c.header : 0);
            EXPECT_EQ(tlv.totalSize, head && c.length != IndefiniteLen ? c.total : 0);
        }
    }
}

// Each is refused as soon as the octet that makes it malformed is there,
// and not one octet earlier.
TEST(Tlv, MalformedHeadsAreRefusedAtTheOctetThatShowsIt) {
    struct Row {
        const char* hex;
        size_t from;  // the shortest prefix that is refused
    } rows[] = {
        {"1F 81 82 01 00", 3},                      // a tag of four octets
        {"04 85 00 00 00 00 01 41", 2},             // five length octets
        {"04 80 00 00", 2},                         // indefinite and primitive
        {"24 84 FF FF FF FF", 6},                   // the definite length the decoders read as indefinite
        {"30 80 04 80 00 00 00 00", 4},             // the same inside an indefinite element
        {"30 80 3F 81 82 01 00 00 00", 5},
        {"30 80 04 85 00 00 00 00 01 41 00 00", 4},
        {"30 80 30 80 00 00 00 05", 8},             // an end-of-contents of 00 05
        {"30 80 04 01 41 00 81 00 00", 7},
    };
    for (const Row& r : rows) {
        std::string bytes = Bytes(r.hex);
        for (size_t cut = 0; cut <= bytes.size(); ++cut) {
            SCOPED_TRACE(std::string(r.hex) + " cut at " + std::to_string(cut));
            AsnTlv tlv;
            EXPECT_EQ(AsnReadTlv(bytes.data(), cut, tlv), cut < r.from ? AsnTlvIncomplete : AsnTlvMalformed);
        }
    }
}

// A million levels of the indefinite form, which a recursive reader would
// not survive, are read in one pass.
TEST(Tlv, DeepIndefiniteNestingIsReadWithoutRecursion) {
    const size_t levels = 1000000;
    std::string bytes;
    for (size_t i = 0; i < levels; ++i)
        bytes += "\x30\x80";
    bytes.append(2 * levels, '\0');
    AsnTlv tlv;
    EXPECT_EQ(AsnReadTlv(bytes.data(), bytes.size(), tlv), AsnTlvComplete);
    EXPECT_EQ(tlv.totalSize, bytes.size());
    EXPECT_EQ(AsnReadTlv(bytes.data(), bytes.size() - 1, tlv), AsnTlvIncomplete);
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The sample messages back to back, arriving in pieces of every size from
// one octet to all: the reader cuts the stream where the decoders end each
// message, and each piece decodes as its envelope.
TEST(Tlv, AStreamIsCutIntoTheMessagesTheDecodersRead) {
    const char* const files[] = {"1-order.ber", "2-reply.ber", "3-order-report.ber", "4-secboard-report.ber"};
    std::string stream;
    std::vector<size_t> ends;
    for (const char* f : files) {
        stream += ReadFile(std::string(ZOL_SAMPLES) + "/" + f);
        ends.push_back(stream.size());
    }
    ASSERT_GT(ends[0], 0u);
    for (size_t piece = 1; piece <= stream.size(); ++piece) {
        SCOPED_TRACE("pieces of " + std::to_string(piece));
        std::string received;
        std::vector<size_t> cuts;
        size_t consumed = 0;
        for (size_t at = 0; at < stream.size(); at += piece) {
            received.append(stream, at, piece);
            AsnTlv tlv;
            AsnTlvStatus status;
            size_t used = 0;
            while ((status = AsnReadTlv(received.data() + used, received.size() - used, tlv)) == AsnTlvComplete) {
                used += tlv.totalSize;
                cuts.push_back(consumed + used);
            }
            ASSERT_EQ(status, AsnTlvIncomplete);
            received.erase(0, used);
            consumed += used;
        }
        EXPECT_EQ(cuts, ends);
        EXPECT_TRUE(received.empty());
    }
    // Each cut is where the decoder of the envelope stops.
    size_t start = 0;
    Zol::ZolTransReq order;
    Zol::ZolTransRep reply;
    Zol::ZolQueryRep report, board;
    AsnType* values[] = {&order, &reply, &report, &board};
    for (size_t i = 0; i < ends.size(); ++i) {
        AsnBuf b;
        b.InstallData(&stream[start], ends[i] - start);
        AsnLen used = 0;
        EXPECT_EQ(values[i]->BDecPdu(b, used), 1) << files[i];
        EXPECT_EQ(used, ends[i] - start) << files[i];
        start = ends[i];
    }
}

}  // namespace
