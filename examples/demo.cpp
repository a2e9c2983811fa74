// Encodes a value through the front door, decodes the bytes into a fresh
// value and prints both the bytes and the decoded value.
#include <cstdio>
#include <iostream>

#include <zol/zol.h>

int main() {
    IA5String greeting("Hello, exchange");
    size_t length = 0;
    char* bytes = Zol::AsnBuffer::Encode(greeting, length);
    if (!bytes)
        return 1;

    std::printf("encoded %zu octets:", length);
    for (size_t i = 0; i < length; ++i)
        std::printf(" %02X", static_cast<unsigned char>(bytes[i]));
    std::printf("\n");

    IA5String decoded;
    if (!Zol::AsnBuffer::Decode(bytes, length, decoded))
        return 1;
    std::cout << "decoded: " << decoded << std::endl;
    return 0;
}
