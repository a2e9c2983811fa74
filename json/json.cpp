#include "zol/json.h"

#include "zol/json_form.h"

namespace Zol {

namespace {

// The JSON form's document: nlohmann's ordered JSON.
struct JsonOut {
    using Value = Json;

    Value Object() { return Json::object(); }
    Value Array() { return Json::array(); }
    void Add(Value& object, const char* key, Value member) { object[key] = std::move(member); }
    void Append(Value& array, Value element) { array.push_back(std::move(element)); }
    Value Integer(int32_t n) { return n; }
    Value Boolean(bool b) { return b; }
    Value Null() { return nullptr; }
    Value Real(double x) { return x; }
    Value Name(const char* name) { return name; }
    Value Text(const char* text, size_t size) { return std::string(text, size); }
    [[noreturn]] void Fail(const std::string& what) { throw JsonError(what); }
};

struct JsonIn {
    using Node = const Json*;

    bool IsObject(Node j) const { return j->is_object(); }
    bool IsArray(Node j) const { return j->is_array(); }
    bool IsNull(Node j) const { return j->is_null(); }
    size_t Size(Node j) const { return j->size(); }
    Node Member(Node j, const char* key) const {
        auto it = j->find(key);
        return it == j->end() ? nullptr : &*it;
    }
    template <class Known>
    std::string FirstUnknownKey(Node j, Known known) const {
        for (auto it = j->begin(); it != j->end(); ++it)
            if (!known(it.key()))
                return it.key();
        return "";
    }
    void SoleKey(Node j, std::string_view& key, Node& value) const {
        key = j->begin().key();
        value = &j->begin().value();
    }
    Node Element(Node j, size_t i) const { return &(*j)[i]; }
    bool String(Node j, std::string_view& s) const {
        if (!j->is_string())
            return false;
        s = j->get_ref<const std::string&>();
        return true;
    }
    bool Bytes(Node, std::string_view&) const { return false; }
    bool Boolean(Node j, bool& b) const {
        if (!j->is_boolean())
            return false;
        b = j->get<bool>();
        return true;
    }
    bool Integer(Node j, int64_t& n, bool& huge) const {
        if (j->is_number_unsigned()) {
            uint64_t u = j->get<uint64_t>();
            huge = u > uint64_t(std::numeric_limits<int64_t>::max());
            n = huge ? 0 : int64_t(u);
            return true;
        }
        if (!j->is_number_integer())
            return false;
        n = j->get<int64_t>();
        return true;
    }
    bool Number(Node j, double& x) const {
        if (!j->is_number())
            return false;
        x = j->get<double>();
        return true;
    }
    std::string Show(Node j) const { return j->dump(); }
    [[noreturn]] void Fail(const std::string& what) const { throw JsonError(what); }
};

}  // namespace

// Members are reached through _getref, which hands out a value's parts
// for writing too; writing JSON only reads them.
Json ToJson(const AsnType& value) {
    JsonOut out;
    return Form::Write(out, const_cast<AsnType&>(value));
}

void FromJson(const Json& json, AsnType& value) {
    JsonIn in;
    Form::Reader<JsonIn>(in).Read(&json, value);
}

}  // namespace Zol
