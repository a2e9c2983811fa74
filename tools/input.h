// One input of zoldump, a file or standard input, read a chunk at a time as
// the bytes arrive, so that a message is shown as soon as it is whole and
// memory does not grow with the input. Hex text is turned into bytes on the
// way, word by word across chunks.
#pragma once

#include <cstdint>
#include <string>

#include "messages.h"

namespace ZolDump {

// Input that zoldump cannot go on with: the line that says why.
struct InputError {
    std::string what;
};

class Input : public Source {
public:
    // `file` null or "-" is standard input. Throws InputError with the
    // system's reason when the file cannot be opened.
    Input(const char* file, bool hex);
    ~Input() override;
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Appends to `bytes` what one read(2) gives, waiting only when nothing
    // has arrived. False at the end of the input. Throws InputError on a
    // read error or bad hex text.
    bool Read(std::string& bytes) override;
    // Whether a Read would return without waiting.
    bool Ready() const override;
    // The whole rest of the input.
    std::string ReadAll();

    const std::string& name() const { return name_; }

    static const size_t kChunk = 1 << 16;

private:
    // Hex text to bytes. Words are split by blanks, line ends and commas;
    // each may begin with 0x and must hold whole octets.
    class HexText {
    public:
        void Feed(const char* text, size_t size, std::string& bytes);
        void End();  // the last word ends with the input

    private:
        uint64_t offset_ = 0;  // of the next character
        uint64_t wordStart_ = 0;
        std::string word_;  // the word's first characters, for the failure text
        size_t wordLength_ = 0;
        size_t digits_ = 0;
        int high_ = 0;  // the first digit of an octet not yet whole
    };

    std::string name_;
    int fd_;
    bool hex_;
    HexText text_;
    std::string fault_;  // bad hex text, told at the next Read
};

}  // namespace ZolDump
