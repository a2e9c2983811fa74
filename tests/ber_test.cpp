// The BER primitives and the buffer under them. Rows (ber.txt, tlv.txt)
// hold tags, lengths and end-of-contents read and written, and the heads
// the TLV reader finds (examples/stream.cpp reads a stream with it, and
// its test checks that); C++ holds what rows cannot say: the buffer's
// operations in sequence, the front door's own block, the encoding frame
// and the root class.
#include <sstream>

#include "rows.h"
#include "support.h"
#include "walk.h"

namespace {

using namespace zt;

std::string Length(AsnLen n) { return n == IndefiniteLen ? "indefinite" : std::to_string(n); }

std::string Word(uint32_t tag) {
    char text[12];
    std::snprintf(text, sizeof text, "%08X", tag);
    return text;
}

// tag HEX, len HEX, eoc HEX, eoc2 HEX: one read of the primitive (eoc2:
// the second octet of an end-of-contents) with a count of 100 running.
// Checks: `value` (a tag word in hex, a length), `count` (octets added to
// the count, and read unless `read` says otherwise), `err` lines and the
// `code` of a failure, and `flagged`: the read flag set before the read.
void Read(const Row& row) {
    std::string err, value;
    AsnLen count = 100;
    AsnBuf after;
    int code = Jump(
        Bytes(row.arg.c_str()),
        [&](AsnBuf& b, DecodeEnv env) {
            b.readFailed = row.Get("flagged") != nullptr;
            if (row.op == "tag")
                value = Word(BDecTag(b, count, env));
            else if (row.op == "len")
                value = Length(BDecLen(b, count, env));
            else if (row.op == "eoc")
                BDecEoc(b, count, env);
            else
                BDecEocSecondOctet(b, count);
        },
        &err, &after);
    EXPECT_EQ(err, Errors(row));
    EXPECT_EQ(code, row.Get("code") ? std::stoi(*row.Get("code")) : 0);
    Expect(row, "value", value);
    if (const std::string* n = row.Get("count")) {
        EXPECT_EQ(count - 100, std::stoul(*n));
        const std::string* read = row.Get("read");
        EXPECT_EQ(size_t(after.readPos - after.dataBegin), std::stoul(read ? *read : *n));
    }
}
ZT_ROW_OP(tag) { Read(row); }
ZT_ROW_OP(len) { Read(row); }
ZT_ROW_OP(eoc) { Read(row); }
ZT_ROW_OP(eoc2) { Read(row); }

// enclen N, enctag WORD, realcontent V (the content of a REAL alone): the
// octets of `hex`, written into a block of any size, and their number
// returned even where they do not fit.
template <class F>
void ExpectWritten(const Row& row, F write) {
    ExpectEveryBlock(Bytes(row.Get("hex")->c_str()), [&](char* block, size_t size, size_t& len) {
        AsnBuf b;
        b.Init(block, size);
        b.ResetInWriteRvsMode();
        len = write(b);
        return b.WriteError() ? nullptr : b.DataPtr();
    });
}
ZT_ROW_OP(enclen) {
    ExpectWritten(row, [&](AsnBuf& b) { return BEncLen(b, AsnLen(std::stoul(row.arg))); });
}
ZT_ROW_OP(enctag) {
    ExpectWritten(row, [&](AsnBuf& b) { return BEncTag(b, AsnTag(std::stoul(row.arg, nullptr, 16))); });
}
ZT_ROW_OP(realcontent) {
    ExpectWritten(row, [&](AsnBuf& b) { return AsnReal(std::stod(row.arg)).BEncContent(b); });
}

std::string Head(const AsnTlv& t) {
    return Word(t.tag) + " " + Length(t.length) + " " + std::to_string(t.headerSize) + " " +
           std::to_string(t.totalSize);
}

// tlv HEX: a complete element, read with two octets more behind it, has
// the `head` TAG LENGTH HEADER TOTAL; each cut of it is incomplete, its
// head known once the header is there and its total once that is too, if
// definite. With `malformed N`: the cuts shorter than N are incomplete,
// all others malformed.
ZT_ROW_OP(tlv) {
    std::string bytes = Bytes(row.arg.c_str());
    AsnTlv tlv;
    if (const std::string* from = row.Get("malformed")) {
        for (size_t cut = 0; cut <= bytes.size(); ++cut)
            EXPECT_EQ(AsnReadTlv(bytes.data(), cut, tlv), cut < std::stoul(*from) ? AsnTlvIncomplete : AsnTlvMalformed)
                << "cut at " << cut;
        return;
    }
    std::string more = bytes + "\xFF\xFF";
    ASSERT_EQ(AsnReadTlv(more.data(), more.size(), tlv), AsnTlvComplete);
    EXPECT_EQ(tlv.totalSize, bytes.size());
    Expect(row, "head", Head(tlv));
    const AsnTlv whole = tlv;
    for (size_t cut = 0; cut < bytes.size(); ++cut) {
        ASSERT_EQ(AsnReadTlv(bytes.data(), cut, tlv), AsnTlvIncomplete) << "cut at " << cut;
        AsnTlv known{0, 0, 0, 0};
        if (cut >= whole.headerSize)
            known = {whole.tag, whole.length, whole.headerSize, whole.length == IndefiniteLen ? 0 : whole.totalSize};
        EXPECT_EQ(Head(tlv), Head(known)) << "cut at " << cut;
    }
}

// --- the buffer ---------------------------------------------------------------

TEST(AsnBuf, OperationsInSequence) {
    char block[4];
    AsnBuf b;
    b.Init(block, sizeof block);
    EXPECT_TRUE(b.ReadError() && b.WriteError());
    EXPECT_EQ(b.BlkPtr(), block);
    EXPECT_EQ(b.BlkLen(), 4u);
    b.ResetInWriteRvsMode();
    EXPECT_TRUE(b.ReadError() && !b.WriteError());
    EXPECT_TRUE(b.HasRoom(4) && !b.HasRoom(5));
    b.PutByteRvs('c');
    b.PutSegRvs("ab", 2);
    b.PutSegRvs("", 0);
    // Both opaque to the compiler, which would warn of the copy.
    volatile size_t huge = size_t(-1);
    const char* volatile source = "xyz";
    b.PutSegRvs(source, huge);  // all or nothing, and no wrapping round
    EXPECT_TRUE(b.WriteError());
    EXPECT_EQ(std::string(b.DataPtr(), b.DataLen()), "abc");
    b.ResetInWriteRvsMode();
    b.PutSegRvs("bc", 2);
    b.PutSegRvs("a", 1);
    EXPECT_EQ(b.DataPtr(), block + 1);
    EXPECT_EQ(std::string(b.DataPtr(), b.DataLen()), "abc");
    b.PutSegRvs("!", 1);
    EXPECT_FALSE(b.WriteError());
    b.PutSegRvs("", 0);  // nothing always fits
    EXPECT_FALSE(b.WriteError());
    b.PutByteRvs('?');
    EXPECT_TRUE(b.WriteError());
    EXPECT_EQ(std::string(block, 4), "!abc");

    b.ResetInReadMode();
    EXPECT_TRUE(!b.ReadError() && b.WriteError());
    EXPECT_EQ(b.PeekByte(), '!');
    EXPECT_EQ(b.GetByte(), '!');
    size_t n = 5;
    EXPECT_EQ(b.GetSeg(&n), block + 1);
    EXPECT_EQ(n, 3u);  // a short segment sets no flag
    EXPECT_TRUE(b.Eod() && !b.ReadError());
    EXPECT_EQ(b.PeekByte(), 0);
    EXPECT_TRUE(b.ReadError());

    b.InstallData(block, 4);
    EXPECT_EQ(b.BlkLen(), 4u);
    b.Skip(4);
    EXPECT_TRUE(b.Eod() && !b.ReadError());
    b.InstallData(block, 4);
    b.Skip(5);
    EXPECT_EQ(b.readPos, block + 4);
    EXPECT_TRUE(b.ReadError());
    b.InstallData(block, 4);
    char out[8] = {};
    EXPECT_EQ(b.CopyOut(out, 3), 3u);
    EXPECT_FALSE(b.ReadError());
    EXPECT_EQ(b.CopyOut(out + 3, 5), 1u);
    EXPECT_TRUE(b.ReadError());
    EXPECT_EQ(std::string(out), "!abc");
    EXPECT_EQ(b.GetByte(), 0);

    b.InstallData(nullptr, 0);
    EXPECT_TRUE(b.Eod() && !b.ReadError());
}

// --- the front door and the outermost frames --------------------------------

// The two-argument Encode writes into the front door's own block: 1 tag
// octet, 3 length octets and content fill exactly BUFSIZE. The frames
// give 1 or 0 and the count.
TEST(FrontDoor, TheBlockOfTheTwoArgumentEncodeAndTheEncodingFrame) {
    size_t len = 0;
    std::string content(Zol::AsnBuffer::BUFSIZE - 4, 'x');
    AsnOcts fits(content.data(), content.size());
    EXPECT_EQ(Zol::AsnBuffer::Encode(fits, len), Zol::AsnBuffer::data);
    EXPECT_EQ(len, 30000u);
    EXPECT_EQ(Hex(Zol::AsnBuffer::data, 4), "04 82 75 2C");
    content.push_back('y');
    AsnOcts over(content.data(), content.size());
    EXPECT_EQ(Zol::AsnBuffer::Encode(over, len), nullptr);
    EXPECT_EQ(len, 30001u);

    char block[4];
    AsnBuf b;
    AsnLen n = 0;
    b.Init(block, sizeof block);
    b.ResetInWriteRvsMode();
    EXPECT_EQ(AsnOcts("abc").BEncPdu(b, n), 0);
    EXPECT_EQ(n, 5u);
    b.ResetInWriteRvsMode();
    EXPECT_EQ(AsnInt(-1).BEncPdu(b, n), 1);
    EXPECT_EQ(n, 3u);
}

// The root class is an improperly formed value: it decodes, encodes and
// prints only to say so.
TEST(FrontDoor, TheRootClassSaysItIsImproperlyFormed) {
    AsnType t;
    EXPECT_EQ(t.Clone(), nullptr);
    EXPECT_EQ(t._getref("x", true), nullptr);
    char block[4];
    size_t len = 9;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Zol::AsnBuffer::Encode(block, sizeof block, t, len), block + sizeof block);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "ERROR - Attempt to encode an improperly formed ANY type (programming error).\n");
    EXPECT_EQ(len, 0u);
    AsnBuf b;
    b.Init(block, sizeof block);
    b.ResetInWriteRvsMode();
    AsnLen n = 9;
    testing::internal::CaptureStderr();
    EXPECT_EQ(t.BEncPdu(b, n), 1);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(Printed(t), "ERROR - Attempt to print an improperly formed ANY type (programming error).\n");
    Outcome o = Decode(Bytes("02 01 05"), t);
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.err, "ERROR - Attempt to decode an improperly formed ANY type (programming error).\n" +
                         DoorLine("(void)", -80));
}

// A program's line sink is given every line instead of standard error, the
// decoder's and the front door's alike, until the one it replaced is put back.
TEST(FrontDoor, LinesGoToTheSinkInstalled) {
    std::string lines;
    auto keep = [](const char* line, void* context) { *static_cast<std::string*>(context) += line + std::string("|"); };
    AsnLineSink before = AsnSetLineSink({keep, &lines});
    Zol::ZolTransRep v;
    Outcome o = Decode(Bytes("B2 03 04 05 41"), v);
    AsnLineSink mine = AsnSetLineSink(before);
    EXPECT_EQ(o.result, 0);
    EXPECT_EQ(o.err, "");
    EXPECT_EQ(lines, "BDecOctetString: ERROR - decoded past end of data|Decode for ZolTransRep failed with code:(-14)\n|");
    EXPECT_TRUE(mine.write == keep && mine.context == &lines);
    Zol::ZolTransRep again;
    EXPECT_EQ(Decode(Bytes("B2 03 04 05 41"), again).err,
              "BDecOctetString: ERROR - decoded past end of data\n" + DoorLine("ZolTransRep", -14));
}

// Indentation of any depth.
TEST(Print, IndentWritesTheBlanksAskedFor) {
    for (unsigned short n : {0, 1, 64, 65, 200}) {
        std::ostringstream ind;
        Indent(ind, n);
        EXPECT_EQ(ind.str(), std::string(n, ' '));
    }
}

// --- the TLV reader -----------------------------------------------------------

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

}  // namespace
