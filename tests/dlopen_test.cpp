// libzol.so loaded at run time, as a Python extension or a plugin is
// loaded: the library's thread-local storage uses the initial-exec model,
// whose room in a library opened by dlopen comes from a small reserve of
// the C library, so a large thread-local variable would make dlopen fail.
// This program is not linked to the library. It opens it (the path comes
// from the build), finds the front door and the type table by their
// symbols, and decodes and encodes a reply on the main thread and on a
// thread started afterwards.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <thread>

#include <zol/zol.h>

namespace {

typedef const AsnTypeDesc* (*FindTypeFn)(const AsnModuleDesc* const* modules, const char* name);
typedef int (*DecodeFn)(const char* bytes, size_t len, AsnType& value);
typedef char* (*EncodeFn)(const AsnType& value, size_t& length);

FindTypeFn findType;
DecodeFn decode;
EncodeFn encode;
const AsnModuleDesc* const* modules;

// A replyOK of "OK" decodes, and encodes into the thread's own block to
// the same bytes.
bool RoundTrip(const char* where) {
    const char bytes[] = {'\xB2', '\x04', '\x04', '\x02', 'O', 'K'};
    const AsnTypeDesc* d = findType(modules, "ZolTransRep");
    if (!d) {
        std::fprintf(stderr, "dlopen_test: no ZolTransRep (%s)\n", where);
        return false;
    }
    AsnType* v = d->create();
    size_t len = 0;
    const char* out = decode(bytes, sizeof bytes, *v) ? encode(*v, len) : nullptr;
    const bool same = out && len == sizeof bytes && std::memcmp(out, bytes, len) == 0;
    delete v;
    if (!same)
        std::fprintf(stderr, "dlopen_test: the reply does not come back (%s)\n", where);
    return same;
}

template <class T>
bool Find(void* library, const char* symbol, T& out) {
    out = reinterpret_cast<T>(dlsym(library, symbol));
    if (!out)
        std::fprintf(stderr, "dlopen_test: %s: %s\n", symbol, dlerror());
    return out != nullptr;
}

}  // namespace

int main() {
    void* library = dlopen(ZOL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        std::fprintf(stderr, "dlopen_test: %s\n", dlerror());
        return 1;
    }
    if (!Find(library, "_Z11AsnFindTypePKPK13AsnModuleDescPKc", findType) ||
        !Find(library, "_ZN3Zol9AsnBuffer6DecodeEPKcmR7AsnType", decode) ||
        !Find(library, "_ZN3Zol9AsnBuffer6EncodeERK7AsnTypeRm", encode) ||
        !Find(library, "_ZN3Zol10AsnModulesE", modules))
        return 1;
    bool ok = RoundTrip("main thread");
    std::thread([&ok] { ok = RoundTrip("a new thread") && ok; }).join();
    return ok ? 0 : 1;
}
