// The Python module zol: the protocol's messages as plain Python objects of
// the JSON form's shape, decoded from BER and encoded back, the library's
// printed text and zoldump's brief form, and the messages of a capture
// read as they come. Reading goes through zoldump's own reader
// (tools/messages.h), so that both choose envelopes, frame messages and
// word failures alike; values go through the JSON form's rules
// (json/zol/json_form.h) straight into Python objects.
//
// The library's lines (a decoder's failure line, a warning) never reach
// the process's standard error: a failure's lines are the text of the
// DecodeError raised, a warning about a message that decoded is a
// DecodeWarning. Every call holds the GIL throughout, as the Python objects
// it builds need; the library's own state belongs to each thread.
#include <pybind11/eval.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <zol/zol.h>

#include "brief.h"
#include "messages.h"
#include "objects.h"
#include "sources.h"
#include "types.h"

namespace ZolPython {

namespace {

using ZolDump::Message;
using ZolDump::MessageReader;
using ZolDump::ReadOptions;

// The module's exception and warning classes, made when it loads and
// kept for the life of the process.
PyObject* decodeError;
PyObject* decodeWarning;
PyObject* encodeError;

const char* const kClasses = R"py(
class DecodeError(ValueError):
    """Bytes that do not decode as the type asked for, or as the envelope
    their first octets call for.

    The text is what zoldump would say: the library's failure line (when a
    decoder failed) and the line that names the message and where decoding
    stopped.

    code: the decoder's failure code (as in "Decode for X failed with
        code:(N)"), or None when the bytes were refused before a decoder
        failed (no envelope begins so, a message cut short, too long).
    offset: the offset in the input where decoding stopped, or where the
        message refused begins.
    """

    def __init__(self, text, code=None, offset=None):
        super().__init__(text)
        self.code = code
        self.offset = offset


class DecodeWarning(UserWarning):
    """A bad stretch of a capture that messages(keep_going=True) skipped,
    or a warning of the library's about a message that decoded. The text,
    code and offset are those a DecodeError would have."""

    def __init__(self, text, code=None, offset=None):
        super().__init__(text)
        self.code = code
        self.offset = offset


class EncodeError(ValueError):
    """A value that does not fit its type. The text names the place as the
    JSON form does: "upTransMsg.order.order.quantity: expected an integer,
    found '100'"."""
)py";

py::object Class(PyObject* c) { return py::reinterpret_borrow<py::object>(c); }

py::object CodeOf(int code) { return code ? py::object(py::int_(code)) : py::object(py::none()); }

[[noreturn]] void RaiseDecodeError(const std::string& text, int code, uint64_t offset) {
    py::object e = Class(decodeError)(text, CodeOf(code), offset);
    PyErr_SetObject(decodeError, e.ptr());
    throw py::error_already_set();
}

[[noreturn]] void RaiseDecodeError(const Message& m) { RaiseDecodeError(m.lines + m.why, m.code, m.stop); }

void Warn(const std::string& text, int code, uint64_t offset) {
    py::module_::import("warnings").attr("warn")(Class(decodeWarning)(text, CodeOf(code), offset),
                                                 py::arg("stacklevel") = 1);
}

// The library's warnings about a message that decoded.
void WarnOf(const Message& m) {
    if (!m.lines.empty())
        Warn(m.lines.substr(0, m.lines.size() - 1), 0, m.offset);
}

const AsnTypeDesc* TypeNamed(py::handle type) {
    if (type.is_none())
        return nullptr;
    if (!PyUnicode_Check(type.ptr()))
        throw py::type_error(std::string("a type is named by a str, not ") + Py_TYPE(type.ptr())->tp_name);
    Py_ssize_t size;
    const char* name = PyUnicode_AsUTF8AndSize(type.ptr(), &size);
    if (!name)
        throw py::error_already_set();
    if (const AsnTypeDesc* t = ZolDump::FindTypeNamed(std::string_view(name, size_t(size))))
        return t;
    throw py::value_error(ZolDump::NoTypeNamed(std::string(name, size_t(size))) + " (see zol.types())");
}

ReadOptions Options(py::handle type, bool keepGoing) {
    ReadOptions o;
    o.type = TypeNamed(type);
    o.keepGoing = keepGoing;
    o.reader = "zol";
    o.typeHint = " (give its type)";
    return o;
}

// The one message that `data` holds.
std::unique_ptr<AsnType> DecodeOne(py::handle data, py::handle type) {
    ReadOptions o = Options(type, false);
    BufferView bytes(data);
    BytesSource source(bytes.data(), bytes.size(), bytes.size());
    MessageReader reader(source, o);
    Message m = reader.Next();
    if (m.kind == Message::End)
        RaiseDecodeError("the input holds no bytes", 0, 0);
    if (m.kind == Message::Bad)
        RaiseDecodeError(m);
    if (!reader.AtEnd()) {
        size_t more = bytes.size() - m.size;
        RaiseDecodeError("the message at offset 0 is followed by " + std::to_string(more) +
                             (more == 1 ? " more octet" : " more octets") + " (zol.messages reads messages back to back)",
                         0, m.size);
    }
    WarnOf(m);
    return std::move(m.value);
}

py::object Decode(py::handle data, py::handle type) {
    std::unique_ptr<AsnType> value = DecodeOne(data, type);
    return ToPython(*value);
}

py::object Encode(py::handle value, py::handle type) {
    if (type.is_none())
        throw py::type_error("encode() needs the type of the value");
    std::unique_ptr<AsnType> v(TypeNamed(type)->create());
    try {
        FromPython(value, *v);
    } catch (const FormError& e) {
        PyErr_SetString(encodeError, e.what());
        throw py::error_already_set();
    }
    // The block is kept for the next value, unless a large one grew it.
    static std::vector<char> block;
    size_t length = 0;
    const char* bytes = ZolDump::EncodeInto(*v, block, length);
    py::object encoded = bytes ? Owned(PyBytes_FromStringAndSize(bytes, Py_ssize_t(length))) : py::none();
    if (block.size() > (size_t(1) << 20))
        std::vector<char>().swap(block);
    if (!bytes) {
        PyErr_SetString(encodeError, "the value does not encode");
        throw py::error_already_set();
    }
    return encoded;
}

py::str Text(py::handle data, py::handle type) {
    std::unique_ptr<AsnType> value = DecodeOne(data, type);
    std::ostringstream printed;
    printed << *value;
    std::string s = printed.str();
    return Owned(PyUnicode_DecodeUTF8(s.data(), Py_ssize_t(s.size()), "backslashreplace"));
}

py::str Brief(py::handle data, py::handle type) {
    std::unique_ptr<AsnType> value = DecodeOne(data, type);
    std::string out;
    ZolDump::Brief(*value, out);
    return Owned(PyUnicode_DecodeUTF8(out.data(), Py_ssize_t(out.size()), "backslashreplace"));
}

py::list Types(py::handle filter) {
    std::string wanted;
    if (!filter.is_none())
        wanted = py::cast<std::string>(filter);
    py::list names;
    for (const AsnTypeDesc* t : ZolDump::TypesMatching(filter.is_none() ? nullptr : wanted.c_str()))
        names.append(py::reinterpret_borrow<py::object>(NameObject(t->name)));
    return names;
}

// The iterator of messages(): one message and a chunk held at a time.
class Messages {
public:
    Messages(py::object source, py::handle type, bool keepGoing) : source_(source), keepGoing_(keepGoing) {
        ReadOptions o = Options(type, keepGoing);
        if (PyObject_CheckBuffer(source.ptr())) {
            view_.reset(new BufferView(source));
            input_.reset(new BytesSource(view_->data(), view_->size(), FileSource::kChunk));
        } else if (py::hasattr(source, "read")) {
            input_.reset(new FileSource(source));
        } else {
            throw py::type_error(std::string("messages() reads bytes or a binary file object, not ") +
                                 Py_TYPE(source.ptr())->tp_name);
        }
        reader_.reset(new MessageReader(*input_, o));
    }

    py::object Next() {
        for (;;) {
            Message m = reader_->Next();
            if (m.kind == Message::End)
                throw py::stop_iteration();
            if (m.kind == Message::Bad) {
                if (!keepGoing_)
                    RaiseDecodeError(m);
                ++bad;
                Warn(m.lines + m.why, m.code, m.offset);
                continue;
            }
            WarnOf(m);
            ++good;
            offset = m.offset;
            length = m.size;
            type = py::reinterpret_borrow<py::object>(NameObject(AsnTypeName(m.value->_getdesc())));
            return ToPython(*m.value);
        }
    }

    uint64_t offset = 0;
    size_t length = 0;
    py::object type = py::none();
    unsigned long good = 0;
    unsigned long bad = 0;

private:
    py::object source_;
    bool keepGoing_;
    std::unique_ptr<BufferView> view_;
    std::unique_ptr<ZolDump::Source> input_;
    std::unique_ptr<MessageReader> reader_;
};

}  // namespace

}  // namespace ZolPython

PYBIND11_MODULE(zol, m) {
    using namespace ZolPython;
    m.doc() =
        "The zol protocol's messages as plain Python objects: dict, list, int, float,\n"
        "str, bool and None in the shape of the JSON form, {\"hex\": ...} for octets\n"
        "that are not printable. decode() and encode() convert one message,\n"
        "messages() reads the messages of a capture as they come, text() and\n"
        "brief() give the library's print and zoldump's brief form.";
    m.attr("__version__") = ZOL_VERSION;
    // Each docstring begins with the signature as a Python user writes it.
    py::options options;
    options.disable_function_signatures();

    py::exec(kClasses, m.attr("__dict__"));
    decodeError = m.attr("DecodeError").ptr();
    decodeWarning = m.attr("DecodeWarning").ptr();
    encodeError = m.attr("EncodeError").ptr();

    m.def("decode", &Decode, py::arg("data"), py::arg("type") = py::none(),
          "decode(data, type=None)\n\n"
          "The value of the one message that `data` (bytes or any bytes-like object)\n"
          "holds, decoded as the type named `type` or, without it, as the envelope\n"
          "its first octets call for, as zoldump chooses: 30 a request (a query if\n"
          "BF 82 follows the user id, else a transaction), A0 B1 B2 a transaction\n"
          "reply, BF 82 a query reply. Raises DecodeError when the bytes do not\n"
          "decode or hold more than the message, ValueError for an unknown type\n"
          "name (with the nearest names).");
    m.def("encode", &Encode, py::arg("value"), py::arg("type"),
          "encode(value, type)\n\n"
          "The BER of `value`, a value of the JSON form's shape, as the type named\n"
          "`type`. Octet strings also take bytes and bytearray, lists also tuples.\n"
          "Raises EncodeError naming the place of a value that does not fit.");
    m.def("text", &Text, py::arg("data"), py::arg("type") = py::none(),
          "text(data, type=None)\n\n"
          "The library's printed text of the one message in `data`, decoded as\n"
          "decode() does.");
    m.def("brief", &Brief, py::arg("data"), py::arg("type") = py::none(),
          "brief(data, type=None)\n\n"
          "zoldump --brief's lines for the one message in `data` (without its head\n"
          "line): one line per member present, decoded as decode() does.");
    m.def("types", &Types, py::arg("filter") = py::none(),
          "types(filter=None)\n\n"
          "The names of every type of every module, or of those whose name or\n"
          "module holds `filter` in any case, in the order zoldump --list-types\n"
          "lists them.");

    py::class_<Messages>(m, "Messages",
                         "The iterator that messages() gives. After each value, `offset`, `length`\n"
                         "and `type` tell where the message stood and what it was decoded as;\n"
                         "`good` and `bad` count the messages and bad stretches so far.")
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", &Messages::Next)
        .def_readonly("offset", &Messages::offset, "The input offset of the last message given.")
        .def_readonly("length", &Messages::length, "The octets of the last message given.")
        .def_readonly("type", &Messages::type, "The type name the last message was decoded as.")
        .def_readonly("good", &Messages::good, "Messages given so far.")
        .def_readonly("bad", &Messages::bad, "Bad stretches skipped so far (keep_going).");

    m.def(
        "messages",
        [](py::object source, py::handle type, bool keepGoing) { return new Messages(source, type, keepGoing); },
        py::return_value_policy::take_ownership, py::arg("source"), py::arg("type") = py::none(),
        py::arg("keep_going") = false,
        "messages(source, type=None, keep_going=False)\n\n"
        "An iterator over the values of the messages that follow each other in\n"
        "`source`, bytes or a binary file object (read with read1, or read, 64 kB at\n"
        "a time as the values are taken: memory follows the largest message, not\n"
        "the capture). Each message is decoded as decode() does; a message may have\n"
        "up to 64 MB. A bad message raises DecodeError after the values before it;\n"
        "with keep_going=True it is skipped instead, with the octets up to the next\n"
        "offset where a message decodes, and told as a DecodeWarning.");
}
