// zol against asn1c, in one binary and one run: for every case, encoding
// into a reused block (zol) against DER encoding (asn1c) and a memcpy of
// as many bytes; decoding a fresh value (zol) against BER decoding
// (asn1c), each destroyed inside the timing; printing to a null stream,
// cloning and merging; and the burst decoded on 1, 2 and as many threads
// as there are cores at once. Ends with the tables, the allocation counts
// and the goals. Google Benchmark's flags work as usual
// (--benchmark_filter, --benchmark_repetitions, --benchmark_out=FILE for
// its raw JSON).

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>
#include <zol/zol.h>

#include "alloc_count.h"
#include "cases.h"
#include "der_encoder.h"
#include "ber_decoder.h"

namespace {

using zb::Case;

// A stream that drops what is written, through a put area so that
// single characters cost what they cost in any buffered stream.
class NullBuf : public std::streambuf {
public:
    NullBuf() { setp(area, area + sizeof area); }

protected:
    int overflow(int c) override {
        setp(area, area + sizeof area);
        return traits_type::not_eof(c);
    }
    int sync() override { return 0; }

private:
    char area[4096];
};

NullBuf nullBuf;
std::ostream nullOut(&nullBuf);

std::vector<char> block(1 << 20);

void ZolEncode(benchmark::State& st, const Case* c) {
    size_t len = 0;
    for (auto _ : st) {
        char* p = Zol::AsnBuffer::Encode(block.data(), block.size(), *c->value, len);
        benchmark::DoNotOptimize(p);
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(int64_t(st.iterations()) * int64_t(c->bytes.size()));
}

void PeerEncode(benchmark::State& st, const Case* c) {
    for (auto _ : st) {
        asn_enc_rval_t r = der_encode_to_buffer(c->peerType, c->peerValue, block.data(), block.size());
        benchmark::DoNotOptimize(r.encoded);
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(int64_t(st.iterations()) * int64_t(c->bytes.size()));
}

void Memcpy(benchmark::State& st, const Case* c) {
    const char* src = c->bytes.data();
    size_t n = c->bytes.size();
    for (auto _ : st) {
        benchmark::DoNotOptimize(src);
        std::memcpy(block.data(), src, n);
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(int64_t(st.iterations()) * int64_t(n));
}

// Messages decoded per second, beside Google Benchmark's own figures
// (--benchmark_out, or its console reporter with --benchmark_filter).
void CountMessages(benchmark::State& st, const Case* c) {
    st.SetBytesProcessed(int64_t(st.iterations()) * int64_t(c->bytes.size()));
    st.counters["msgs/s"] = benchmark::Counter(double(c->messages), benchmark::Counter::kIsIterationInvariantRate);
}

void ZolDecode(benchmark::State& st, const Case* c) {
    c->decode(st, *c);
    CountMessages(st, c);
}

// The thread counts of the burst's decode on several threads at once (each
// thread reads its own copy of the block): 1, 2 and the number of cores.
std::vector<int> ThreadCounts() {
    std::vector<int> counts = {1, 2};
    int cores = int(std::thread::hardware_concurrency());
    if (cores > 2)
        counts.push_back(cores);
    return counts;
}

// asn1c's decoding of every message of the bytes, each freed before the
// next is read: its decoder says where a message ends.
void PeerDecodeAll(const Case& c) {
    for (size_t at = 0; at < c.bytes.size();) {
        void* s = nullptr;
        asn_dec_rval_t r = ber_decode(nullptr, c.peerType, &s, c.bytes.data() + at, c.bytes.size() - at);
        benchmark::DoNotOptimize(r.code);
        ASN_STRUCT_FREE(*c.peerType, s);
        if (r.code != RC_OK)
            break;
        at += r.consumed;
    }
}

void PeerDecode(benchmark::State& st, const Case* c) {
    for (auto _ : st)
        PeerDecodeAll(*c);
    CountMessages(st, c);
}

void Print(benchmark::State& st, const Case* c) {
    for (auto _ : st)
        nullOut << *c->value;
}

void Clone(benchmark::State& st, const Case* c) {
    for (auto _ : st) {
        AsnType* copy = c->value->Clone();
        benchmark::DoNotOptimize(copy);
        delete copy;
    }
}

void Merge(benchmark::State& st, const Case* c) { c->merge(st, *c); }

// One of each operation, for counting allocations and for profiling.
void EncodeOnce(const Case& c) {
    size_t len;
    Zol::AsnBuffer::Encode(block.data(), block.size(), *c.value, len);
}
void PeerEncodeOnce(const Case& c) { der_encode_to_buffer(c.peerType, c.peerValue, block.data(), block.size()); }
void MemcpyOnce(const Case& c) {
    std::memcpy(block.data(), c.bytes.data(), c.bytes.size());
    benchmark::ClobberMemory();
}
void DecodeOnce(const Case& c) {
    if (!c.decodeOnce(c.bytes))
        std::fprintf(stderr, "zol_bench: %s does not decode\n", c.name.c_str());
}
void PeerDecodeOnce(const Case& c) { PeerDecodeAll(c); }
void PrintOnce(const Case& c) { nullOut << *c.value; }
void CloneOnce(const Case& c) { delete c.value->Clone(); }
void MergeOnce(const Case& c) { c.mergeOnce(c); }

// The operations, in the order they run for each case.
struct Op {
    const char* name;
    void (*run)(benchmark::State&, const Case*);
    void (*once)(const Case&);
    bool decodeOnlyToo;
};
const Op kOps[] = {
    {"encode", ZolEncode, EncodeOnce, false},
    {"asn1c_encode", PeerEncode, PeerEncodeOnce, false},
    {"memcpy", Memcpy, MemcpyOnce, false},
    {"decode", ZolDecode, DecodeOnce, true},
    {"asn1c_decode", PeerDecode, PeerDecodeOnce, true},
    {"print", Print, PrintOnce, false},
    {"clone", Clone, CloneOnce, false},
    {"merge", Merge, MergeOnce, false},
};

std::string Key(size_t caseIndex, const char* op) { return std::to_string(caseIndex) + "/" + op; }

// Keeps the CPU time per iteration of every run (the wall-clock time of a
// run on several threads, under "NAME/threads:N", which the threads'
// iterations share), shows a dot per benchmark, and prints nothing else:
// the tables come at the end.
class Collector : public benchmark::BenchmarkReporter {
public:
    std::map<std::string, std::vector<double>> ns;

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs) {
            if (r.run_type != Run::RT_Iteration || r.error_occurred)
                continue;
            // Names are "CASE/OP" followed by Google Benchmark's suffixes.
            std::string name = r.run_name.function_name;
            if (!r.run_name.threads.empty())
                ns[name + "/" + r.run_name.threads].push_back(r.GetAdjustedRealTime());
            else
                ns[name].push_back(r.GetAdjustedCPUTime());
        }
        std::fputc('.', stderr);
        std::fflush(stderr);
    }
    void Finalize() override { std::fputc('\n', stderr); }

    // The median of the repetitions, or NaN when the benchmark did not run.
    double Median(const std::string& key) const {
        auto it = ns.find(key);
        if (it == ns.end() || it->second.empty())
            return NAN;
        std::vector<double> v = it->second;
        std::sort(v.begin(), v.end());
        size_t n = v.size();
        return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
    }
};

std::string Fmt(const char* format, double v) {
    if (std::isnan(v))
        return "-";
    char buf[64];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

// Prints rows of cells with every column as wide as its widest cell, the
// first column left-aligned and the others right-aligned.
void Table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<size_t> width;
    for (const auto& row : rows)
        for (size_t i = 0; i < row.size(); ++i) {
            if (width.size() <= i)
                width.push_back(0);
            width[i] = std::max(width[i], row[i].size());
        }
    for (size_t r = 0; r < rows.size(); ++r) {
        std::string line = "|";
        for (size_t i = 0; i < rows[r].size(); ++i) {
            const std::string& cell = rows[r][i];
            std::string pad(width[i] - cell.size(), ' ');
            line += " " + (i == 0 ? cell + pad : pad + cell) + " |";
        }
        std::puts(line.c_str());
        if (r == 0) {
            std::string rule = "|";
            for (size_t i = 0; i < width.size(); ++i)
                rule += (i == 0 ? ":" : "-") + std::string(width[i], '-') + (i == 0 ? "-|" : ":|");
            std::puts(rule.c_str());
        }
    }
}

// Google Benchmark's defaults, unless the command line sets them: three
// repetitions of at least 0.2 s each, whose median is what the table shows.
std::vector<char*> WithDefaults(int argc, char** argv) {
    static std::string reps = "--benchmark_repetitions=3";
    static std::string minTime = "--benchmark_min_time=0.2";
    std::vector<char*> args(argv, argv + argc);
    auto given = [&](const char* flag) {
        for (int i = 1; i < argc; ++i)
            if (std::strncmp(argv[i], flag, std::strlen(flag)) == 0)
                return true;
        return false;
    };
    if (!given("--benchmark_repetitions"))
        args.push_back(&reps[0]);
    if (!given("--benchmark_min_time"))
        args.push_back(&minTime[0]);
    return args;
}

}  // namespace

// --profile=CASE/OP [--times=N]: runs one operation N times (1000 by
// default) outside Google Benchmark, for a profiler. With callgrind,
// --toggle-collect=zb_profile_loop counts the loop alone. CASE is the
// case's number in the table, from 0; OP one of the operation names.
extern "C" __attribute__((noinline)) void zb_profile_loop(const Op& op, const Case& c, long times) {
    for (long i = 0; i < times; ++i)
        op.once(c);
}

int Profile(const std::vector<Case>& cases, const std::string& what, long times) {
    size_t slash = what.find('/');
    size_t i = slash == std::string::npos ? cases.size() : size_t(std::atol(what.c_str()));
    std::string name = slash == std::string::npos ? "" : what.substr(slash + 1);
    for (const Op& op : kOps)
        if (i < cases.size() && name == op.name && (!cases[i].decodeOnly || op.decodeOnlyToo)) {
            zb_profile_loop(op, cases[i], times);
            std::printf("%s: %s %ld times, %ld messages each\n", cases[i].name.c_str(), op.name, times,
                        cases[i].messages);
            return 0;
        }
    std::fprintf(stderr, "zol_bench: no operation %s\n", what.c_str());
    return 1;
}

int main(int argc, char** argv) {
    std::vector<Case> cases = zb::BuildCases();
    for (int i = 1; i < argc; ++i)
        if (std::strncmp(argv[i], "--profile=", 10) == 0) {
            long times = 1000;
            for (int j = 1; j < argc; ++j)
                if (std::strncmp(argv[j], "--times=", 8) == 0)
                    times = std::atol(argv[j] + 8);
            return Profile(cases, argv[i] + 10, times);
        }

    // Allocations of one operation each, outside any timing.
    struct Counts {
        zb::AllocDelta encode, peerEncode, decode, peerDecode, print, clone, merge;
    };
    std::vector<Counts> counts(cases.size());
    for (size_t i = 0; i < cases.size(); ++i) {
        Case& c = cases[i];
        Counts& k = counts[i];
        // A first run of each warms what is made once (the stream's locale
        // facets, asn1c's lazily built tables) before counting.
        for (int pass = 0; pass < 2; ++pass) {
            if (!c.decodeOnly) {
                k.encode = zb::CountAllocs([&] { EncodeOnce(c); });
                k.peerEncode = zb::CountAllocs([&] { PeerEncodeOnce(c); });
                k.print = zb::CountAllocs([&] { PrintOnce(c); });
                k.clone = zb::CountAllocs([&] { CloneOnce(c); });
                k.merge = zb::CountAllocs([&] { MergeOnce(c); });
            }
            k.decode = zb::CountAllocs([&] { DecodeOnce(c); });
            k.peerDecode = zb::CountAllocs([&] { PeerDecodeOnce(c); });
        }
    }

    for (size_t i = 0; i < cases.size(); ++i)
        for (const Op& op : kOps)
            if (!cases[i].decodeOnly || op.decodeOnlyToo)
                benchmark::RegisterBenchmark(Key(i, op.name).c_str(), op.run, &cases[i])->Unit(benchmark::kNanosecond);
    for (size_t i = 0; i < cases.size(); ++i)
        if (cases[i].messages > 1) {
            benchmark::internal::Benchmark* b =
                benchmark::RegisterBenchmark(Key(i, "decode_threads").c_str(), ZolDecode, &cases[i]);
            b->Unit(benchmark::kNanosecond)->UseRealTime();
            for (int n : ThreadCounts())
                b->Threads(n);
        }

    std::vector<char*> args = WithDefaults(argc, argv);
    int n = int(args.size());
    benchmark::Initialize(&n, args.data());
    if (benchmark::ReportUnrecognizedArguments(n, args.data()))
        return 1;
    Collector collector;
    std::fprintf(stderr, "running");
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::Shutdown();

    auto t = [&](size_t i, const char* op) { return collector.Median(Key(i, op)); };
    auto mbs = [](size_t bytes, double ns) { return bytes / ns * 1e9 / 1e6; };

    std::puts("\nEncoding and decoding (CPU ns per message, per block for a burst, median of the repetitions):\n");
    std::vector<std::vector<std::string>> rows = {
        {"case", "bytes", "asn1c DER", "encode ns", "MB/s", "asn1c enc ns", "x asn1c", "memcpy ns", "x memcpy",
         "decode ns", "MB/s", "asn1c dec ns", "x asn1c"}};
    for (size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        double enc = t(i, "encode"), penc = t(i, "asn1c_encode"), cpy = t(i, "memcpy");
        double dec = t(i, "decode"), pdec = t(i, "asn1c_decode");
        rows.push_back({c.name, std::to_string(c.bytes.size()), c.decodeOnly ? "-" : std::to_string(c.peerDerLen),
                        Fmt("%.0f", enc), Fmt("%.0f", mbs(c.bytes.size(), enc)), Fmt("%.0f", penc),
                        Fmt("%.1f", penc / enc), Fmt("%.1f", cpy), Fmt("%.1f", enc / cpy), Fmt("%.0f", dec),
                        Fmt("%.0f", mbs(c.bytes.size(), dec)), Fmt("%.0f", pdec), Fmt("%.1f", pdec / dec)});
    }
    Table(rows);
    for (size_t i = 0; i < cases.size(); ++i)
        if (cases[i].messages > 1) {
            double n = double(cases[i].messages);
            std::printf("\n%s: %ld messages in one block, each framed by AsnReadTlv and decoded into a fresh value:"
                        "\nzol %s messages/s (%s ns each), asn1c %s messages/s (%s ns each)\n",
                        cases[i].name.c_str(), cases[i].messages, Fmt("%.0f", n / t(i, "decode") * 1e9).c_str(),
                        Fmt("%.0f", t(i, "decode") / n).c_str(),
                        Fmt("%.0f", n / t(i, "asn1c_decode") * 1e9).c_str(),
                        Fmt("%.0f", t(i, "asn1c_decode") / n).c_str());
        }

    // Messages a second over all threads, and the ratio to one thread.
    std::vector<double> threadRatios;
    for (size_t i = 0; i < cases.size(); ++i) {
        if (cases[i].messages == 1)
            continue;
        std::printf("\n%s on several threads at once, each decoding its own copy of the block (wall-clock time;"
                    "\n%u cores):\n\n",
                    cases[i].name.c_str(), std::thread::hardware_concurrency());
        rows = {{"threads", "messages/s", "ns per message", "x 1 thread"}};
        const double one = t(i, "decode_threads/threads:1");
        for (int n : ThreadCounts()) {
            double block = t(i, ("decode_threads/threads:" + std::to_string(n)).c_str());
            double perMessage = block / double(cases[i].messages);
            rows.push_back({std::to_string(n), Fmt("%.0f", 1e9 / perMessage), Fmt("%.1f", perMessage),
                            Fmt("%.2f", one / block)});
            threadRatios.push_back(one / block);
        }
        Table(rows);
    }

    std::puts("\nPrinting to a null stream, cloning (and deleting the clone), merging a report into a held record:\n");
    rows = {{"case", "print ns", "clone ns", "merge ns", "print allocs", "clone allocs", "merge allocs"}};
    for (size_t i = 0; i < cases.size(); ++i) {
        if (cases[i].decodeOnly)
            continue;
        rows.push_back({cases[i].name, Fmt("%.0f", t(i, "print")), Fmt("%.0f", t(i, "clone")),
                        Fmt("%.0f", t(i, "merge")), std::to_string(counts[i].print.zol()),
                        std::to_string(counts[i].clone.zol()), std::to_string(counts[i].merge.zol())});
    }
    Table(rows);

    std::puts("\nHeap allocations per message (zol: values through AsnType's operator new, strings through new[];"
              "\nasn1c: malloc/calloc/realloc):\n");
    rows = {{"case", "zol encode", "zol decode", "expected", "", "asn1c encode", "asn1c decode"}};
    bool allocsOk = true;
    for (size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        const Counts& k = counts[i];
        bool encOk = c.decodeOnly || k.encode.zol() == 0;
        bool decOk = long(k.decode.zol()) == c.expectedDecodeAllocs;
        allocsOk = allocsOk && encOk && decOk;
        auto peer = [](uint64_t v) { return zb::mallocCounted ? std::to_string(v) : std::string("?"); };
        rows.push_back({c.name, c.decodeOnly ? "-" : std::to_string(k.encode.zol()), std::to_string(k.decode.zol()),
                        std::to_string(c.expectedDecodeAllocs), encOk && decOk ? "ok" : "WRONG",
                        c.decodeOnly ? "-" : peer(k.peerEncode.mallocs), peer(k.peerDecode.mallocs)});
    }
    Table(rows);
    for (const Case& c : cases)
        std::printf("  %s: %ld = %s\n", c.name.c_str(), c.expectedDecodeAllocs, c.allocRule.c_str());

    std::puts("\nGoals:\n");
    bool goalsOk = true;
    auto goal = [&](bool ok, const std::string& text) {
        goalsOk = goalsOk && ok;
        std::printf("  [%s] %s\n", ok ? "met" : "MISSED", text.c_str());
    };
    // A ratio that could not be formed (a benchmark filtered out) is NaN
    // and leaves its goal unjudged.
    double minEnc = INFINITY, maxCopy = 0, minDec = INFINITY;
    for (size_t i = 0; i < cases.size(); ++i) {
        if (!cases[i].decodeOnly) {
            minEnc = std::fmin(minEnc, t(i, "asn1c_encode") / t(i, "encode"));
            maxCopy = std::fmax(maxCopy, t(i, "encode") / t(i, "memcpy"));
        }
        minDec = std::fmin(minDec, t(i, "asn1c_decode") / t(i, "decode"));
    }
    auto timed = [&](bool ok, double v, const std::string& text) {
        if (std::isinf(v) || v == 0)
            std::printf("  [not run] %s\n", text.c_str());
        else
            goal(ok, text);
    };
    timed(minEnc >= 20, minEnc,
          "encoding at least 20x as fast as asn1c's DER encoder on every case (lowest " + Fmt("%.1f", minEnc) + "x)");
    goal(allocsOk, "no allocation while encoding; decoding allocates exactly what the rules say");
    timed(maxCopy <= 20, maxCopy,
          "encoding within 20x a memcpy of the same bytes on every case (highest " + Fmt("%.1f", maxCopy) + "x)");
    timed(minDec >= 15, minDec,
          "decoding at least 15x as fast as asn1c's BER decoder on every case (lowest " + Fmt("%.1f", minDec) + "x)");
    if (threadRatios.size() > 1) {
        double two = threadRatios[1];
        if (std::thread::hardware_concurrency() < 2 || std::isnan(two))
            std::printf("  [not run] two threads decoding the burst at least 1.8x as fast as one\n");
        else
            goal(two >= 1.8, "two threads decode at least 1.8x as many messages a second as one (" +
                                 Fmt("%.2f", two) + "x)");
    }
    for (size_t i = 0; i < cases.size(); ++i)
        if (cases[i].name == "SecBoardRep full")
            std::printf("  [info] a full ZolSecBoardRep: print %s ns, clone %s ns, merge %s ns\n",
                        Fmt("%.0f", t(i, "print")).c_str(), Fmt("%.0f", t(i, "clone")).c_str(),
                        Fmt("%.0f", t(i, "merge")).c_str());
    // Only the allocation counts are exact; timings on a shared machine
    // are reported, not judged by the exit status.
    return allocsOk ? 0 : 1;
}
