// The benchmark's messages: each a fixed value built once, its BER bytes,
// the same value as asn1c's structure, and what decoding it must allocate.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <zol/zol.h>

#include "constr_TYPE.h"

namespace zb {

struct Case;

// Timing loops that need the value's own class: a fresh value per decode,
// and the merge of one report into a held record.
typedef void (*CaseLoop)(benchmark::State& st, const Case& c);

struct Case {
    std::string name;
    std::unique_ptr<AsnType> value;  // what is encoded, printed, cloned, merged
    std::unique_ptr<AsnType> held;   // the record that reports are merged into
    std::string bytes;               // what both decoders read
    bool decodeOnly = false;         // the bytes are not zol's own encoding
    long messages = 1;               // messages back to back in `bytes`

    // Heap allocations that decoding `bytes` must make by the ownership
    // rules, written down per case; checked against a walk of the value.
    long expectedDecodeAllocs = 0;
    std::string allocRule;  // how that number comes about

    asn_TYPE_descriptor_t* peerType = nullptr;
    void* peerValue = nullptr;  // asn1c's decoding of `bytes`, owned
    size_t peerDerLen = 0;      // the length of asn1c's DER of it

    CaseLoop decode = nullptr;
    CaseLoop merge = nullptr;
    // One decode outside any timing, for counting; true when it succeeded.
    bool (*decodeOnce)(const std::string& bytes) = nullptr;
    void (*mergeOnce)(const Case& c) = nullptr;

    Case() = default;
    Case(Case&&) = default;
    ~Case();
};

// Builds every case, with its bytes and asn1c's value. Exits with a
// message if any codec disagrees with the other about a value.
std::vector<Case> BuildCases();

// The allocations the ownership rules give for decoding `v`: one per
// pointer member that is set (optional members, and required sequences
// and choices), one per choice alternative, two per list element (node
// and element), one per octet or bit string.
long RuleAllocs(AsnType* v);

}  // namespace zb
