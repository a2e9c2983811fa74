#include "zol/ber/asn_buffer.h"

#include <cstdio>
#include <cstring>

#include "zol/ber/ber.h"
#include "zol/meta/asn_reflect.h"

namespace Zol {

namespace {

struct DataBlock {
    char bytes[AsnBuffer::BUFSIZE];
};

char (&ThisThreadsData())[AsnBuffer::BUFSIZE] {
    DataBlock* block = AsnPerThread<DataBlock>::Get();
    if (!block)
        AsnThrowBadAlloc();
    return block->bytes;
}

// This thread's `data`, or null if it cannot be made.
char* DataOrNull() noexcept {
    try {
        return AsnBuffer::data;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

__thread AsnBuf AsnBuffer::asnBuf ZOL_INITIAL_EXEC;
thread_local char (&AsnBuffer::data)[AsnBuffer::BUFSIZE] = ThisThreadsData();

char* AsnBuffer::Encode(char* block, size_t size, const AsnType& value, size_t& length) {
    AsnBuf b;
    b.Init(block, size);
    b.ResetInWriteRvsMode();
    length = value.BEnc(b);
    if (b.WriteError())
        return nullptr;
    if (length > b.DataLen())
        length = b.DataLen();
    return b.DataPtr();
}

char* AsnBuffer::Encode(const AsnType& value, size_t& length) {
    char* block = DataOrNull();
    if (!block) {
        length = 0;
        return nullptr;
    }
    return Encode(block, BUFSIZE, value, length);
}

int AsnBuffer::Decode(const char* bytes, size_t len, AsnType& value) {
    asnBuf.InstallData(const_cast<char*>(bytes), len);
    DecodeEnv env;
    int code = setjmp(env);
    if (code == 0) {
        AsnLen decoded = 0;
        value.BDec(asnBuf, decoded, env);
        return asnBuf.ReadError() ? 0 : 1;
    }
    if (code == AsnOutOfMemoryCode)
        value.Clear();  // so that it may be decoded into again
    // The name is that of the outermost value; a universal class's kind
    // stands in for the name it lacks ("INTEGER"). The line is kept in
    // `data` too, where there is one.
    char line[256];
    std::snprintf(line, sizeof line, "Decode for %s failed with code:(%d)\n", AsnTypeName(value._getdesc()), code);
    if (char* kept = DataOrNull())
        std::memcpy(kept, line, std::strlen(line) + 1);
    Error(line);
    return 0;
}

void AsnBuffer::Error(const char* text) { AsnWriteLine(text); }

}  // namespace Zol
