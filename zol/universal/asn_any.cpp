#include "zol/universal/asn_any.h"

#include <csetjmp>
#include <new>

HashTable AsnAny::intHashTbl = nullptr;
HashTable AsnAny::oidHashTbl = nullptr;

uint32_t HashBytes(const char* bytes, size_t len) {
    uint32_t hash = 0;
    for (size_t i = 0; i < len; ++i)
        hash = hash * 65587u + static_cast<uint32_t>(static_cast<signed char>(bytes[i]));
    return hash;
}

HashTable NewHashTable() { return new (std::nothrow) HashSlot*[256](); }

bool HashInsert(HashTable table, void* element, uint32_t hash) {
    HashSlot* slot;
    while ((slot = table[hash & 0xFF]) != nullptr) {
        if (slot->hash == hash)
            return true;
        if (slot->isLeaf) {
            // Both entries move one level down, where the next 8 bits of
            // their hashes tell them apart (or push them further down).
            HashTable below = NewHashTable();
            if (!below)
                return false;
            slot->table = below;
            if (!HashInsert(below, slot->value, slot->hash >> 8) ||
                !HashInsert(below, element, hash >> 8))
                return false;
            slot->isLeaf = 0;
            return true;
        }
        table = slot->table;
        hash >>= 8;
    }
    slot = new (std::nothrow) HashSlot;
    if (!slot)
        return false;
    slot->isLeaf = 1;
    slot->hash = hash;
    slot->value = element;
    slot->table = nullptr;
    table[hash & 0xFF] = slot;
    return true;
}

bool HashLookup(HashTable table, uint32_t hash, void** value) {
    if (!table)
        return false;
    HashSlot* slot = table[hash & 0xFF];
    if (!slot)
        return false;
    while (!slot->isLeaf) {
        hash >>= 8;
        slot = slot->table[hash & 0xFF];
        if (!slot)
            return false;
    }
    if (slot->hash != hash)
        return false;
    *value = slot->value;
    return true;
}

namespace {

uint32_t IntHash(const AsnInt& key) {
    uint32_t v = static_cast<uint32_t>(key.value);
    const char octets[4] = {static_cast<char>(v), static_cast<char>(v >> 8),
                            static_cast<char>(v >> 16), static_cast<char>(v >> 24)};
    return HashBytes(octets, 4);
}

uint32_t OidHash(const AsnOid& key) { return HashBytes(key.oid, key.oidLen); }

// A hash that is there already keeps its first registration, so no record
// is made for it. A failed insertion drops the record: the key is then not
// found.
void Install(HashTable& table, uint32_t hash, AnyInfo* info) {
    void* found;
    if (!info)
        return;
    if (!table)
        table = NewHashTable();
    if (!table || HashLookup(table, hash, &found) || !HashInsert(table, info, hash))
        delete info;
}

AnyInfo* Find(HashTable table, uint32_t hash) {
    void* found = nullptr;
    return HashLookup(table, hash, &found) ? static_cast<AnyInfo*>(found) : nullptr;
}

}  // namespace

AsnAny::~AsnAny() {}

void AsnAny::InstallAnyByInt(AsnInt key, int id, AsnType* prototype) {
    AnyInfo* info = new (std::nothrow) AnyInfo;
    if (info) {
        info->id = id;
        info->intKey = key;
        info->prototype = prototype;
    }
    Install(intHashTbl, IntHash(key), info);
}

void AsnAny::InstallAnyByOid(AsnOid& key, int id, AsnType* prototype) {
    AnyInfo* info = new (std::nothrow) AnyInfo;
    if (info) {
        info->id = id;
        info->oid = key;
        info->prototype = prototype;
    }
    Install(oidHashTbl, OidHash(key), info);
}

void AsnAny::SetTypeByInt(AsnInt key) { info = Find(intHashTbl, IntHash(key)); }

void AsnAny::SetTypeByOid(AsnOid& key) { info = Find(oidHashTbl, OidHash(key)); }

void AsnAny::BDec(AsnBuf& b, AsnLen& bytesDecoded, DecodeEnv env) {
    if (!info)
        std::longjmp(env, AsnAnyUnregisteredCode);
    value = info->prototype ? info->prototype->Clone() : nullptr;
    if (!value)
        std::longjmp(env, AsnAnyNoValueCode);
    value->BDec(b, bytesDecoded, env);
}

AsnLen AsnAny::BEnc(AsnBuf& b) const { return value ? value->BEnc(b) : AsnType::BEnc(b); }

void AsnAny::PrintTo(AsnPrintOut& out) const {
    if (value)
        value->PrintTo(out);
    else
        AsnType::PrintTo(out);
}
