// ANY: a value whose type is chosen at run time from a registry keyed by an
// integer or an object identifier. The protocol's own messages use none;
// it stands ready for users of the runtime.
//
// Registrations belong before any decoding, on one thread: the two tables
// are shared and take no lock. A registration is never removed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zol/ber/asn_type.h"
#include "zol/universal/asn_int.h"
#include "zol/universal/asn_oid.h"

// One registration.
class AnyInfo {
public:
    int id = 0;                      // the caller's identifier of it
    AsnOid oid;                      // key of a registration by identifier, else empty
    AsnInt intKey;                   // key of a registration by integer
    AsnType* prototype = nullptr;    // Clone gives a new empty value of the type; not owned

    AnyInfo() {}
    AnyInfo(const AnyInfo& o) : id(o.id), oid(o.oid), intKey(o.intKey), prototype(o.prototype) {}
    AnyInfo& operator=(const AnyInfo& o) {
        id = o.id;
        oid = o.oid;
        intKey = o.intKey;
        prototype = o.prototype;
        return *this;
    }
};

struct HashSlot;
// A table: 256 slots, indexed by the low 8 bits of what remains of a hash,
// handled through a pointer to its first slot.
typedef HashSlot** HashTable;

struct HashSlot {
    int isLeaf;          // non-zero: holds one entry; zero: leads to `table`
    uint32_t hash;       // the entry's hash, as far as it remains at this level
    void* value;         // the entry, an AnyInfo*
    HashTable table;     // the next level
};

// Keys are hashed, never compared: equal hashes count as the same key.
uint32_t HashBytes(const char* bytes, size_t len);
// A table of null slots, or null if the allocation fails.
HashTable NewHashTable();
// False if an allocation failed. A hash that is there already keeps its
// first entry, and that counts as success.
bool HashInsert(HashTable table, void* element, uint32_t hash);
// A null table holds nothing.
bool HashLookup(HashTable table, uint32_t hash, void** value);

class AsnAny : public AsnType {
public:
    AnyInfo* info = nullptr;     // the registration chosen; not owned
    AsnType* value = nullptr;    // the value held; not freed here

    static HashTable intHashTbl;
    static HashTable oidHashTbl;

    AsnAny() {}
    AsnAny(const AsnAny&) = default;
    AsnAny& operator=(const AsnAny&) = default;
    ~AsnAny() override;

    // The key is hashed through its four octets, lowest first. The table is
    // made on first use.
    static void InstallAnyByInt(AsnInt key, int id, AsnType* prototype);
    // The key is hashed through its content octets; the record keeps a copy.
    static void InstallAnyByOid(AsnOid& key, int id, AsnType* prototype);

    // `info` becomes the registration of the key, or null.
    void SetTypeByInt(AsnInt key);
    void SetTypeByOid(AsnOid& key);
    int GetId() const { return info ? info->id : -1; }

    // Without a registration -81, and -82 if it gives no value (a null
    // prototype, or one whose Clone gives null); neither writes a line.
    // The new value is left in `value` for the caller to free.
    void BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) override;
    // Without a value these are those of AsnType: an improperly formed ANY.
    AsnLen BEnc(AsnBuf& b) const override;
    void PrintTo(AsnPrintOut& out) const override;
};
