#include "input.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "zol/values/hex_digits.h"

namespace ZolDump {

namespace {

bool Separator(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ','; }

// Enough of a word to recognise it in the failure text.
const size_t kWordShown = 24;

}  // namespace

Input::Input(const char* file, bool hex) : name_(file ? file : "-"), fd_(0), hex_(hex) {
    if (name_ == "-")
        return;
    do
        fd_ = open(file, O_RDONLY | O_CLOEXEC);
    while (fd_ < 0 && errno == EINTR);
    if (fd_ < 0)
        throw InputError{"cannot read " + name_ + ": " + std::strerror(errno)};
}

Input::~Input() {
    if (fd_ > 0)
        close(fd_);
}

bool Input::Read(std::string& bytes) {
    if (!fault_.empty())
        throw InputError{fault_};
    char chunk[kChunk];
    ssize_t n;
    do
        n = read(fd_, chunk, sizeof chunk);
    while (n < 0 && errno == EINTR);
    if (n < 0)
        throw InputError{"cannot read " + name_ + ": " + std::strerror(errno)};
    if (n == 0) {
        if (hex_)
            text_.End();
        return false;
    }
    if (hex_) {
        // The octets before a fault in the text are read first.
        try {
            text_.Feed(chunk, size_t(n), bytes);
        } catch (const InputError& e) {
            fault_ = e.what;
        }
    } else
        bytes.append(chunk, size_t(n));
    return true;
}

bool Input::Ready() const {
    pollfd p = {fd_, POLLIN, 0};
    return poll(&p, 1, 0) != 0;
}

std::string Input::ReadAll() {
    std::string all;
    while (Read(all)) {
    }
    return all;
}

void Input::HexText::Feed(const char* text, size_t size, std::string& bytes) {
    for (size_t i = 0; i < size; ++i, ++offset_) {
        char c = text[i];
        if (Separator(c)) {
            End();
            continue;
        }
        if (wordLength_++ == 0)
            wordStart_ = offset_;
        if (word_.size() < kWordShown)
            word_ += c;
        int digit = Zol::HexValue(c);
        if (wordLength_ == 2 && (c == 'x' || c == 'X') && word_[0] == '0')
            digits_ = 0;  // the 0 of 0x was no digit
        else if (digit < 0)
            throw InputError{"bad hex text: character '" + std::string(1, c) + "' at offset " +
                             std::to_string(offset_)};
        else if (digits_++ % 2)
            bytes += static_cast<char>(high_ << 4 | digit);
        else
            high_ = digit;
    }
}

void Input::HexText::End() {
    if (wordLength_ && (digits_ == 0 || digits_ % 2))
        throw InputError{"bad hex text: \"" + word_ + (wordLength_ > kWordShown ? "..." : "") + "\" at offset " +
                         std::to_string(wordStart_) + " is not whole octets"};
    word_.clear();
    wordLength_ = digits_ = 0;
}

}  // namespace ZolDump
