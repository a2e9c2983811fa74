// Where the module's messages come from: a bytes-like object, or a binary
// file object read a chunk at a time as the messages are taken.
#pragma once

#include <pybind11/pybind11.h>

#include <algorithm>
#include <string>

#include "messages.h"

namespace ZolPython {

namespace py = pybind11;

// The bytes of an object with the buffer protocol, held while this lives.
class BufferView {
public:
    explicit BufferView(py::handle data) {
        if (PyUnicode_Check(data.ptr()) || PyObject_GetBuffer(data.ptr(), &view_, PyBUF_SIMPLE) < 0) {
            PyErr_Clear();
            throw py::type_error(std::string("expected bytes or another bytes-like object, not ") +
                                 Py_TYPE(data.ptr())->tp_name);
        }
    }
    ~BufferView() { PyBuffer_Release(&view_); }
    BufferView(const BufferView&) = delete;
    BufferView& operator=(const BufferView&) = delete;

    const char* data() const { return static_cast<const char*>(view_.buf); }
    size_t size() const { return size_t(view_.len); }

private:
    Py_buffer view_;
};

// Bytes already in memory, handed out `chunk` at a time.
class BytesSource : public ZolDump::Source {
public:
    BytesSource(const char* data, size_t size, size_t chunk) : data_(data), size_(size), chunk_(chunk) {}

    bool Read(std::string& bytes) override {
        if (at_ == size_)
            return false;
        size_t n = std::min(chunk_, size_ - at_);
        bytes.append(data_ + at_, n);
        at_ += n;
        return true;
    }
    bool Ready() const override { return true; }

private:
    const char* data_;
    size_t size_;
    size_t chunk_;
    size_t at_ = 0;
};

// A binary file object: read1 where it has one (a buffered stream, which
// then returns what has arrived rather than waiting for a whole chunk),
// else read.
class FileSource : public ZolDump::Source {
public:
    static constexpr size_t kChunk = 1 << 16;

    explicit FileSource(py::handle file)
        : read_(py::getattr(file, py::hasattr(file, "read1") ? "read1" : "read")) {}

    bool Read(std::string& bytes) override {
        py::object got = read_(kChunk);
        if (got.is_none())
            return false;  // a non-blocking stream with nothing yet: taken as its end
        if (PyUnicode_Check(got.ptr()))
            throw py::type_error("the file gives str: messages() reads a file opened in binary mode ('rb')");
        BufferView view(got);
        bytes.append(view.data(), view.size());
        // A short read means the writer paused (a pipe, a socket) or the
        // file ended: nothing more is there without waiting.
        full_ = view.size() == kChunk;
        return view.size() != 0;
    }
    bool Ready() const override { return full_; }

private:
    py::object read_;
    bool full_ = true;
};

}  // namespace ZolPython
