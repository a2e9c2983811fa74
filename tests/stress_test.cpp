// Many threads, one library. One thread first takes every input below
// through the library's public surface and keeps what comes out; then
// several threads (ZOL_STRESS_THREADS, 8 by default), released together,
// each take every input again in an order of their own (ZOL_STRESS_ROUNDS
// times, once by default), and every result must be the first thread's.
// Built with ThreadSanitizer (-DZOL_TSAN=ON) it also shows that no two
// threads touch the same memory unguarded.
//
// Inputs: the samples as each envelope; the fuzz corpus, each file as its
// target's class; every decode row of tests/rows/; every alternative of
// the four envelopes filled through the descriptors (the catalogue's
// envelope ids); and the catalogue's classes fed elements they refuse
// (its failure codes). Results: the decode's result, and the failure line
// it leaves in AsnBuffer::data; the print; both Encode forms; the print of
// a Clone; a merge into a value decoded from the type's input before; the
// display texts of ZolFormat, plain and through the user's locale, of
// numbers derived from the input and of the message's own numbers and
// dates; and the JSON form. One thread also reads its number settings
// anew before every input.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <thread>

#include <zol/json.h>

#include "rows.h"
#include "support.h"
#include "walk.h"

namespace {

using Zol::AsnBuffer;
using Zol::ZolFormat;

struct Input {
    std::string name;  // where it comes from, for the report
    std::string type;
    std::string bytes;
    int base = -1;  // the input before it of the same type, merged into
};

struct Result {
    int decoded = 0;
    std::string failure;  // AsnBuffer::data after a failing decode
    std::string print, encoded, encodedInData, clone, merged, formatted, json;
};

// What a thread found different from the reference: the field, and its
// two texts.
struct Mismatch {
    size_t input = 0;
    const char* what = nullptr;
    std::string actual, expected;
};

// Whether `a` and `b` differ, and if so, in what.
bool Differs(const Result& a, const Result& b, Mismatch& m) {
    if (a.decoded != b.decoded) {
        m.what = "decode result";
        m.actual = std::to_string(a.decoded);
        m.expected = std::to_string(b.decoded);
        return true;
    }
    const std::pair<const char*, std::string Result::*> fields[] = {
        {"failure line", &Result::failure}, {"print", &Result::print},
        {"Encode into a block", &Result::encoded}, {"Encode into data", &Result::encodedInData},
        {"clone", &Result::clone}, {"merge", &Result::merged},
        {"ZolFormat", &Result::formatted}, {"JSON", &Result::json}};
    for (const auto& f : fields)
        if (a.*f.second != b.*f.second) {
            m.what = f.first;
            m.actual = a.*f.second;
            m.expected = b.*f.second;
            return true;
        }
    return false;
}

// --- the inputs ---------------------------------------------------------------

using zt::FileBytes;
using zt::FilesIn;

const char* const kEnvelopes[] = {"ZolTransReq", "ZolTransRep", "ZolQueryReq", "ZolQueryRep"};

void AddSamples(std::vector<Input>& out) {
    for (const std::string& f : FilesIn(ZOL_SAMPLES, ".ber"))
        for (const char* type : kEnvelopes)
            out.push_back({"samples/" + f, type, FileBytes(ZOL_SAMPLES "/" + f)});
}

// The class of each fuzz target, as fuzz/CMakeLists.txt declares it.
void AddCorpus(std::vector<Input>& out) {
    std::map<std::string, std::string> types;
    const std::string decl = FileBytes(ZOL_FUZZ_DIR "/CMakeLists.txt");
    const std::regex target(R"(\nzol_fuzz_target\((\w+) (?:Zol::)?(\w+)\))");
    for (std::sregex_iterator m(decl.begin(), decl.end(), target), end; m != end; ++m)
        types[(*m)[1]] = (*m)[2];
    EXPECT_EQ(types.size(), 10u);
    for (const std::string& dir : FilesIn(ZOL_FUZZ_DIR "/corpus")) {
        auto t = types.find(dir);
        if (t == types.end()) {
            ADD_FAILURE() << "fuzz/corpus/" << dir << " is no fuzz target";
            continue;
        }
        const std::string path = ZOL_FUZZ_DIR "/corpus/" + dir;
        for (const std::string& f : FilesIn(path))
            out.push_back({"fuzz/corpus/" + dir + "/" + f, t->second, FileBytes(path + "/" + f)});
    }
}

void AddRows(std::vector<Input>& out) {
    for (const std::string& file : zt::RowFiles())
        for (const zt::Row& row : zt::ReadRows(ZOL_ROWS "/" + file)) {
            if (row.op != "decode")
                continue;
            size_t blank = row.arg.find(' ');
            out.push_back({file + ":" + std::to_string(row.line), row.arg.substr(0, blank),
                           zt::Bytes(zt::Expanded(row.arg.substr(blank + 1)).c_str())});
        }
}

std::vector<std::vector<std::string>> Fields(const std::string& path) {
    std::vector<std::vector<std::string>> out;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream words(line);
        out.emplace_back();
        for (std::string w; words >> w;)
            out.back().push_back(w);
    }
    return out;
}

void AddCatalogue(std::vector<Input>& out) {
    // Every envelope alternative, each member filled.
    for (const auto& f : Fields(ZOL_CATALOGUE "/envelope_ids.txt")) {
        auto* cd = static_cast<const AsnChoiceTypeDesc*>(Zol::FindType(f.at(0).c_str()));
        int i = 0;
        while (cd->members[i].name && cd->members[i].name != f.at(2))
            ++i;
        std::unique_ptr<AsnType> v(cd->create());
        zt::Filler filler;
        filler.pick = [&](const AsnChoiceTypeDesc* c) { return c == cd ? i : 0; };
        filler.Fill(v.get(), cd);
        std::vector<char> block(1 << 16);
        size_t len = 0;
        const char* p = AsnBuffer::Encode(block.data(), block.size(), *v, len);
        ASSERT_NE(p, nullptr) << f.at(2);
        out.push_back({"envelope_ids.txt: " + f.at(2), f.at(0), std::string(p, len)});
    }
    // Every class of the catalogue refusing a foreign element, a foreign
    // outer tag and a tag of no alternative.
    for (const std::string& file : FilesIn(ZOL_CATALOGUE "/codes"))
        for (const auto& f : Fields(ZOL_CATALOGUE "/codes/" + file))
            for (const char* hex : {"30 02 05 00", "31 00", "BF 87 7F 00"})
                out.push_back({"codes/" + file + ": " + f.at(0) + " " + hex, f.at(0), zt::Bytes(hex)});
}

// Each input merges into the one before it of its type, where its type
// has a merge.
void LinkBases(std::vector<Input>& inputs) {
    std::map<std::string, int> last;
    for (size_t i = 0; i < inputs.size(); ++i) {
        const zt::Copier* c = zt::FindCopier(inputs[i].type);
        if (!c || !c->merge)
            continue;
        auto prev = last.find(inputs[i].type);
        if (prev != last.end())
            inputs[i].base = prev->second;
        last[inputs[i].type] = int(i);
    }
}

// --- one input through the library ------------------------------------------

// ZolFormat's texts of `v`, if it is a number, date or time of the
// protocol, plain and through the locale. Each text is taken before the
// next call, which writes the same buffer.
void Format(const AsnType& v, std::string& out) {
    using namespace Zol;
    auto take = [&out](const char* text) { (out += text) += '|'; };
    if (auto* x = dynamic_cast<const ZolFixedReal*>(&v)) {
        take(ZolFormat::FixedReal(*x, true, false, 0));
        take(ZolFormat::FixedReal(*x, false, true, 0));
    } else if (auto* i = dynamic_cast<const ZolInteger*>(&v)) {
        take(ZolFormat::Integer(*i, false, false, 0));
        take(ZolFormat::Integer(*i, true, true, 0));
    } else if (auto* l = dynamic_cast<const ZolLongInt*>(&v)) {
        take(ZolFormat::LongInt(*l, true, false, 0));
        take(ZolFormat::LongInt(*l, true, true, 0));
    } else if (auto* d = dynamic_cast<const ZolDate*>(&v)) {
        take(ZolFormat::Date(*d));
    } else if (auto* t = dynamic_cast<const ZolDateTime*>(&v)) {
        take(ZolFormat::DateTime(*t));
    } else if (auto* ms = dynamic_cast<const ZolDateTimeMS*>(&v)) {
        take(ZolFormat::DateTime(*ms));
    }
}

// Numbers and a date made from the input's size, so that every input
// formats something.
std::string FormatDerived(size_t n) {
    Zol::ZolFixedReal real;
    real.value = double(n) * 1234.5678 - 40000.0;
    real.decimals = new AsnInt(int32_t(n % 5));
    Zol::ZolInteger integer(int32_t(n * 7919 - 100000));
    Zol::ZolDate date(int32_t(19900101 + (n % 30) * 10000 + (n % 12) * 100 + n % 28));
    std::string out;
    Format(real, out);
    Format(integer, out);
    Format(date, out);
    return out + '\n';
}

using zt::Printed;

Result Process(const std::vector<Input>& inputs, size_t at) {
    const Input& in = inputs[at];
    Result r;
    r.formatted = FormatDerived(in.bytes.size());
    std::unique_ptr<AsnType> v = zt::Make(in.type);
    AsnBuffer::data[0] = '\0';  // a decode that fails without a jump writes no line
    r.decoded = AsnBuffer::Decode(in.bytes.data(), in.bytes.size(), *v);
    if (!r.decoded) {
        r.failure = AsnBuffer::data;
        return r;
    }
    r.print = Printed(*v);

    std::vector<char> block(2 * in.bytes.size() + 64);
    size_t len = 0;
    const char* p = AsnBuffer::Encode(block.data(), block.size(), *v, len);
    r.encoded = p ? std::string(p, len) : "does not fit: " + std::to_string(len);
    p = AsnBuffer::Encode(*v, len);
    r.encodedInData = !p ? "does not fit: " + std::to_string(len)
                      : p + len != AsnBuffer::data + AsnBuffer::BUFSIZE ? "not at the top of data"
                                                                        : std::string(p, len);

    std::unique_ptr<AsnType> copy(v->Clone());
    r.clone = Printed(*copy);

    if (in.base >= 0) {
        const Input& base = inputs[size_t(in.base)];
        std::unique_ptr<AsnType> held = zt::Make(base.type);
        if (AsnBuffer::Decode(base.bytes.data(), base.bytes.size(), *held)) {
            zt::FindCopier(in.type)->merge(*held, *v);
            r.merged = Printed(*held);
        }
    }

    zt::ForEachValue(*v, v->_getdesc(), [&](AsnType& x) { Format(x, r.formatted); });
    try {
        r.json = Zol::ToJson(*v).dump();
    } catch (const std::exception& e) {
        r.json = std::string("throws: ") + e.what();
    }
    return r;
}

// --- the threads -------------------------------------------------------------

int FromEnvironment(const char* name, int otherwise) {
    const char* v = std::getenv(name);
    return v && std::atoi(v) > 0 ? std::atoi(v) : otherwise;
}

// Sets the locale variables for the test's length: the tests' own locale,
// whose separators, digits and date form are none of "C"'s.
class Locale {
public:
    Locale() {
        for (const char* var : {"LOCPATH", "LC_ALL"})
            if (const char* v = std::getenv(var))
                saved[var] = v;
        setenv("LOCPATH", ZOL_LOCALES, 1);
        setenv("LC_ALL", "zt_ZT", 1);
    }
    ~Locale() {
        for (const char* var : {"LOCPATH", "LC_ALL"})
            if (saved.count(var))
                setenv(var, saved[var].c_str(), 1);
            else
                unsetenv(var);
    }

private:
    std::map<std::string, std::string> saved;
};

// Decoders write a line to standard error for every input they refuse:
// thousands here. They go to /dev/null for the test's length; the
// sanitizers' reports go to the descriptor, not through `stderr`.
class QuietDecoders {
public:
    QuietDecoders() : null(std::fopen("/dev/null", "w")), saved(stderr) {
        if (null)
            stderr = null;
    }
    ~QuietDecoders() {
        stderr = saved;
        if (null)
            std::fclose(null);
    }

private:
    FILE* null;
    FILE* saved;
};

TEST(Threads, EveryResultIsOneThreadsResult) {
    std::vector<Input> inputs;
    AddSamples(inputs);
    AddCorpus(inputs);
    AddRows(inputs);
    AddCatalogue(inputs);
    LinkBases(inputs);
    for (const Input& in : inputs)
        zt::Make(in.type);  // every type is known; fails the test otherwise

    Locale locale;
    QuietDecoders quiet;

    // The reference, from a thread of its own, as new as the others.
    std::vector<Result> expected(inputs.size());
    std::thread([&] {
        for (size_t i = 0; i < inputs.size(); ++i)
            expected[i] = Process(inputs, i);
    }).join();

    const size_t threads = size_t(FromEnvironment("ZOL_STRESS_THREADS", 8));
    const int rounds = FromEnvironment("ZOL_STRESS_ROUNDS", 1);
    std::vector<std::vector<Mismatch>> found(threads);
    std::atomic<size_t> waiting{threads};
    std::vector<std::thread> pool;
    for (size_t t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
            std::vector<size_t> order(inputs.size());
            for (size_t i = 0; i < order.size(); ++i)
                order[i] = i;
            std::shuffle(order.begin(), order.end(), std::mt19937(unsigned(t + 1)));
            // Released together, so that the threads' work overlaps.
            waiting.fetch_sub(1);
            while (waiting.load() > 0)
                std::this_thread::yield();
            for (int round = 0; round < rounds; ++round)
                for (size_t i : order) {
                    if (t == 0)
                        ZolFormat::GetNumberLocaleInfo();
                    Mismatch m;
                    if (Differs(Process(inputs, i), expected[i], m)) {
                        m.input = i;
                        found[t].push_back(m);
                    }
                }
        });
    for (std::thread& t : pool)
        t.join();

    for (size_t t = 0; t < threads; ++t) {
        EXPECT_TRUE(found[t].empty()) << "thread " << t << ": " << found[t].size() << " differences";
        for (size_t k = 0; k < found[t].size() && k < 10; ++k) {
            const Mismatch& m = found[t][k];
            ADD_FAILURE() << "thread " << t << ", " << inputs[m.input].name << " (" << inputs[m.input].type
                          << "): the " << m.what << " differs\n--- this thread\n"
                          << m.actual.substr(0, 2000) << "\n--- the reference\n" << m.expected.substr(0, 2000);
        }
    }

    // What the inputs cover, so that a reader missing its files shows.
    size_t decoded = 0, lines = 0, merged = 0, localeTexts = 0;
    for (const Result& r : expected) {
        decoded += r.decoded;
        lines += !r.failure.empty();
        merged += !r.merged.empty();
        localeTexts += r.formatted.find('\'') != std::string::npos;
    }
    std::printf("%zu inputs (%zu decode, %zu fail with a line), %zu merges; %zu threads x %d rounds\n",
                inputs.size(), decoded, lines, merged, threads, rounds);
    EXPECT_GT(decoded, 1000u);
    EXPECT_GT(lines, 1000u);
    EXPECT_GT(merged, 300u);
    // The tests' locale groups thousands with an apostrophe, where it could be built.
    if (std::ifstream(ZOL_LOCALES "/zt_ZT/LC_NUMERIC")) {
        EXPECT_GT(localeTexts, 1000u);
    }
}

}  // namespace
