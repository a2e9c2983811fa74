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

// The rows of a file: every row with its checks, in their order. A check
// line before any row, or a '|' line before any check, fails the test.
std::vector<Row> ReadRows(const std::string& path);
// The names of the row files of tests/rows/, sorted.
std::vector<std::string> RowFiles();

using RowOp = void (*)(const Row&);
bool RegisterRowOp(const char* op, RowOp fn);

// Defines the handler of the rows whose operation is `name`.
#define ZT_ROW_OP(name)                                                   \
    static void RowOp_##name(const zt::Row& row);                        \
    static const bool rowOpRegistered_##name = zt::RegisterRowOp(#name, RowOp_##name); \
    static void RowOp_##name(const zt::Row& row)

// A new value of the type named `name`: a type of the protocol's modules or
// of the test modules, or a universal class ("AsnInt", "PrintableString").
std::unique_ptr<AsnType> Make(const std::string& name);

// Expects `actual` to be `expected`, the text of check `c`. A check whose
// text, or an expected text, is "?" is a place to fill: the actual text is
// written to standard output for the one who writes the row, and nothing
// fails.
void Expect(const Row& row, const Row::Check& c, const std::string& actual, const std::string& expected);
// The same against the text of the check named `key`, if the row has one.
void Expect(const Row& row, const char* key, const std::string& actual);

// Merging and assigning are not virtual: each type that rows merge or
// assign is named in row_files.cpp, with its two operations (merge is null
// for a type without one).
struct Copier {
    void (*merge)(AsnType&, const AsnType&);
    void (*assign)(AsnType&, const AsnType&);
};
// Those of the type named `type`, or null.
const Copier* FindCopier(const std::string& type);

// "[24 80]*3 04 01 41 [00 00]*3": each block of hex in brackets repeated
// as many times as the number after it says.
std::string Expanded(const std::string& hex);

// The lines of the row's `err` checks, each with its line end.
std::string Errors(const Row& row);

// The checks on a value (hex, print, json, set, unset, with, assign, clone,
// clear) in their order, for operations that make values of their own;
// `skip` names the keys the operation has handled itself. `type` names the
// value's type for merging and assigning.
void CheckValue(const Row& row, const std::string& type, std::unique_ptr<AsnType>& v,
                const std::vector<std::string>& skip = {});

}  // namespace zt
