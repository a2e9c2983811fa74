// Python's objects as a document of the JSON form's shape (json_form.h):
// dict, list, int, float, str, bool and None, built straight from a value
// and read straight into one. The names of members and enumeration values
// are made into Python strings once, interned, and kept.
#pragma once

#include <pybind11/pybind11.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

#include <zol/json_form.h>

namespace ZolPython {

namespace py = pybind11;

// A value that does not fit its type; what() names the place as the JSON
// form does.
struct FormError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The interned Python string of a name of the schema, made at its first use.
// Names are static text, so their address identifies them.
inline PyObject* NameObject(const char* name) {
    static std::unordered_map<const char*, PyObject*> names;
    PyObject*& s = names[name];
    if (!s && !(s = PyUnicode_InternFromString(name)))
        throw py::error_already_set();
    return s;
}

inline py::object Owned(PyObject* p) {
    if (!p)
        throw py::error_already_set();
    return py::reinterpret_steal<py::object>(p);
}

struct PyOut {
    using Value = py::object;

    Value Object() { return Owned(PyDict_New()); }
    Value Array() { return Owned(PyList_New(0)); }
    void Add(Value& object, const char* key, Value member) {
        if (PyDict_SetItem(object.ptr(), NameObject(key), member.ptr()) < 0)
            throw py::error_already_set();
    }
    void Append(Value& array, Value element) {
        if (PyList_Append(array.ptr(), element.ptr()) < 0)
            throw py::error_already_set();
    }
    Value Integer(int32_t n) { return Owned(PyLong_FromLong(n)); }
    Value Boolean(bool b) { return py::reinterpret_borrow<py::object>(b ? Py_True : Py_False); }
    Value Null() { return py::none(); }
    Value Real(double x) { return Owned(PyFloat_FromDouble(x)); }
    Value Name(const char* name) { return py::reinterpret_borrow<py::object>(NameObject(name)); }
    Value Text(const char* text, size_t size) { return Owned(PyUnicode_DecodeASCII(text, Py_ssize_t(size), nullptr)); }
    [[noreturn]] void Fail(const std::string& what) { throw FormError(what); }
};

struct PyIn {
    using Node = PyObject*;  // borrowed

    bool IsObject(Node o) const { return PyDict_Check(o); }
    bool IsArray(Node o) const { return PyList_Check(o) || PyTuple_Check(o); }
    bool IsNull(Node o) const { return o == Py_None; }
    size_t Size(Node o) const {
        return size_t(PyDict_Check(o) ? PyDict_GET_SIZE(o) : PyList_Check(o) ? PyList_GET_SIZE(o) : PyTuple_GET_SIZE(o));
    }
    Node Member(Node o, const char* key) const {
        PyObject* member = PyDict_GetItemWithError(o, NameObject(key));
        if (!member && PyErr_Occurred())
            throw py::error_already_set();
        return member;
    }
    template <class Known>
    std::string FirstUnknownKey(Node o, Known known) {
        PyObject *key, *value;
        for (Py_ssize_t at = 0; PyDict_Next(o, &at, &key, &value);) {
            std::string_view k = KeyText(key);
            if (!PyUnicode_Check(key) || !known(k))
                return std::string(k);
        }
        return "";
    }
    void SoleKey(Node o, std::string_view& key, Node& value) {
        PyObject* k;
        Py_ssize_t at = 0;
        PyDict_Next(o, &at, &k, &value);
        key = KeyText(k);
    }
    Node Element(Node o, size_t i) const {
        return PyList_Check(o) ? PyList_GET_ITEM(o, Py_ssize_t(i)) : PyTuple_GET_ITEM(o, Py_ssize_t(i));
    }
    bool String(Node o, std::string_view& s) const {
        if (!PyUnicode_Check(o))
            return false;
        Py_ssize_t size;
        const char* text = PyUnicode_AsUTF8AndSize(o, &size);
        if (!text)
            throw py::error_already_set();  // a lone surrogate, which UTF-8 cannot hold
        s = std::string_view(text, size_t(size));
        return true;
    }
    bool Bytes(Node o, std::string_view& s) const {
        if (PyBytes_Check(o))
            s = std::string_view(PyBytes_AS_STRING(o), size_t(PyBytes_GET_SIZE(o)));
        else if (PyByteArray_Check(o))
            s = std::string_view(PyByteArray_AS_STRING(o), size_t(PyByteArray_GET_SIZE(o)));
        else
            return false;
        return true;
    }
    bool Boolean(Node o, bool& b) const {
        if (!PyBool_Check(o))
            return false;
        b = o == Py_True;
        return true;
    }
    // True and False are ints to Python, but not numbers to the JSON form.
    bool Integer(Node o, int64_t& n, bool& huge) const {
        if (!PyLong_Check(o) || PyBool_Check(o))
            return false;
        int overflow = 0;
        n = PyLong_AsLongLongAndOverflow(o, &overflow);
        if (n == -1 && PyErr_Occurred())
            throw py::error_already_set();
        huge = overflow != 0;
        return true;
    }
    bool Number(Node o, double& x) const {
        if (PyFloat_Check(o)) {
            x = PyFloat_AS_DOUBLE(o);
            return true;
        }
        if (!PyLong_Check(o) || PyBool_Check(o))
            return false;
        x = PyLong_AsDouble(o);
        if (x == -1.0 && PyErr_Occurred()) {
            PyErr_Clear();  // beyond a double: refused as no number
            return false;
        }
        return true;
    }
    std::string Show(Node o) const { return py::repr(o).cast<std::string>(); }
    [[noreturn]] void Fail(const std::string& what) const { throw FormError(what); }

private:
    std::string keyText_;  // a key that is no string, as repr shows it

    std::string_view KeyText(PyObject* key) {
        if (PyUnicode_Check(key)) {
            std::string_view k;
            String(key, k);
            return k;
        }
        keyText_ = Show(key);
        return keyText_;
    }
};

// The Python form of `value`.
inline py::object ToPython(AsnType& value) {
    PyOut out;
    return Zol::Form::Write(out, value);
}

// Fills `value`, newly constructed, from `object`; throws FormError.
inline void FromPython(py::handle object, AsnType& value) {
    PyIn in;
    Zol::Form::Reader<PyIn>(in).Read(object.ptr(), value);
}

}  // namespace ZolPython
