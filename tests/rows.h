// Tests written as rows of text: the files of tests/rows/ hold the cases,
// and C++ holds one handler per kind of row. A row is a header line, an
// operation and its argument, followed by indented check lines, each a key
// and its text; a check may carry a block of lines that begin with '|'.
//
//   decode ZolMarketRep 30 07 04 02 4D 31 0A 01 00
//     err ERROR - SEQUENCE is missing non-optional elmt.
//     code -104
//
// Blank lines and lines that begin with '#' are comments.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <zol/zol.h>

namespace zt {

struct Row {
    struct Check {
        std::string key;
        std::string text;                // the rest of its line
        std::vector<std::string> block;  // the '|' lines that follow it, bar removed
        int line = 0;
    };
    std::string file;
    int line = 0;
    std::string op;
    std::string arg;
    std::vector<Check> checks;

    // The text of the first check named `key`, or null.
    const std::string* Get(const char* key) const;
    // A check's block joined with line ends between the lines.
    static std::string Joined(const Check& c);
};

using RowOp = void (*)(const Row&);
bool RegisterRowOp(const char* op, RowOp fn);

// Defines the handler of the rows whose operation is `name`.
#define ZT_ROW_OP(name)                                                   \
    static void RowOp_##name(const zt::Row& row);                        \
    static const bool rowOpRegistered_##name = zt::RegisterRowOp(#name, RowOp_##name); \
    static void RowOp_##name(const zt::Row& row)

// The checks that any value takes (hex, print, json, set, unset, with,
// assign, clone), in their order; `skip` names the keys the operation has
// handled itself. For operations that make a value of their own.
void CheckValue(const Row& row, const std::string& type, std::unique_ptr<AsnType>& v,
                const std::vector<std::string>& skip = {});

// A new value of the type named `name`: a type of the protocol's modules or
// of the test modules, or a universal class ("AsnInt", "PrintableString").
std::unique_ptr<AsnType> Make(const std::string& name);

}  // namespace zt
