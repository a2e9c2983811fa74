// The Wireshark dissector as tshark runs it, over captures made here with
// text2pcap from the samples and the fuzz corpus: every message's tree has
// the lines zoldump --brief prints for it, and there are as many messages
// as zoldump finds, however TCP cuts the stream. Skipped where tshark is
// missing (tools/setup --ci installs it).
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "support.h"

namespace {

namespace fs = std::filesystem;

using zt::FileBytes;

// A line of zoldump --brief as the tree shows it: `name: value`, a text
// without its quotes, a constructed member's name alone.
std::string ToTree(const std::string& line) {
    size_t indent = line.find_first_not_of(' '), blank = line.find(' ', indent);
    if (blank == std::string::npos)
        return line;
    std::string value = line.substr(blank + 1);
    if (value == "{}" || value == "[]")
        return line;
    if (value[0] == '"')
        value = std::regex_replace(value.substr(1, value.size() - 2), std::regex(R"(\\(.))"), "$1");
    return line.substr(0, blank) + ": " + value;
}

// One message as shown: its type, its lines as the tree shows them, two
// blanks a level, and, for one that does not decode, why not.
struct Shown {
    std::string type;
    std::string lines;
    std::string malformed;
    int frame = 0;
};

// A folder of the test's own: captures, and tshark's configuration, so
// that a dissector in the user's plugins folder does not load as well.
class Tshark : public testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v tshark >/dev/null && command -v text2pcap >/dev/null") != 0)
            GTEST_SKIP() << "tshark or text2pcap is missing (tools/setup --ci installs them)";
        char dir[] = "/tmp/zol_tshark_XXXXXX";
        ASSERT_TRUE(mkdtemp(dir));
        dir_ = dir;
    }
    void TearDown() override {
        if (!dir_.empty())
            fs::remove_all(dir_);
    }

    // Standard output of `command`, run by the shell in the test's folder.
    std::string Run(const std::string& command) {
        std::string out;
        if (FILE* p = popen(("cd " + dir_ + " && " + command + " 2>stderr").c_str(), "r")) {
            char chunk[4096];
            for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, p)) > 0;)
                out.append(chunk, n);
            pclose(p);
        }
        return out;
    }
    // Standard error of the last command run.
    std::string Stderr() { return FileBytes(dir_ + "/stderr"); }

    // A capture of TCP segments made by text2pcap: requests (true) from a
    // client to port 7000, replies back.
    std::string Capture(const std::vector<std::pair<bool, std::string>>& segments) {
        std::ofstream dump(dir_ + "/capture.txt");
        for (const auto& [request, bytes] : segments) {
            dump << (request ? "O" : "I");
            char text[16];
            for (size_t i = 0; i < bytes.size(); ++i) {
                if (i % 16 == 0 && std::snprintf(text, sizeof text, "\n%06zx", i))
                    dump << text;
                std::snprintf(text, sizeof text, " %02x", static_cast<unsigned char>(bytes[i]));
                dump << text;
            }
            dump << "\n\n";
        }
        dump.close();
        Run("text2pcap -q -D -T 7000,40000 capture.txt capture.pcap");
        return "capture.pcap";
    }

    // tshark with the dissector over `capture`; `how` tells it the port.
    // It runs in a German locale (where the machine has it), whose decimal
    // comma must not reach the reals shown.
    std::string Dissect(const std::string& capture, const std::string& how, const std::string& more = "-V -O zol") {
        std::string out = Run("LC_ALL=de_DE.UTF-8 WIRESHARK_CONFIG_DIR=" + dir_ + " tshark -X lua_script:" ZOL_LUA " " +
                              how + " -r " + capture + " " + more);
        EXPECT_EQ(out.find("Lua Error"), std::string::npos) << out;
        EXPECT_EQ(Stderr().find("Lua Error"), std::string::npos) << Stderr();
        return out;
    }

    // The messages zoldump --brief finds in `bytes`, with `options`, their
    // lines as the tree shows them (ToTree).
    std::vector<Shown> Brief(const std::string& bytes, const std::string& options) {
        std::ofstream(dir_ + "/stream", std::ios::binary) << bytes;
        std::istringstream text(Run(ZOLDUMP " --brief " + options + " stream"));
        std::vector<Shown> messages;
        for (std::string line; std::getline(text, line);) {
            if (line.compare(0, 3, "-- ") == 0)
                messages.push_back({line.substr(3, line.find(',') - 3), "", "", 0});
            else if (!messages.empty())
                messages.back().lines += ToTree(line) + "\n";
        }
        return messages;
    }

    std::string dir_;
};

// The messages of tshark -V -O zol: each item of zol, with the lines
// under it two blanks a level, the frame it is in and its expert item.
std::vector<Shown> Trees(const std::string& text) {
    std::istringstream in(text);
    std::vector<Shown> messages;
    int frame = 0;
    bool inside = false;
    size_t expert = std::string::npos;  // the indentation of the expert item, whose lines are skipped
    for (std::string line; std::getline(in, line);) {
        size_t indent = line.find_first_not_of(' ');
        if (indent == 0) {
            if (line.compare(0, 6, "Frame ") == 0)
                frame = std::stoi(line.substr(6));
            inside = line.compare(0, 5, "zol, ") == 0;
            if (inside)
                messages.push_back({"", "", "", frame});
            continue;
        }
        if (!inside || indent == std::string::npos || indent > expert)
            continue;
        expert = std::string::npos;
        std::string item = line.substr(indent);
        if (item.compare(0, 9, "Message: ") == 0) {
            messages.back().type = item.substr(9);
        } else if (item.compare(0, 13, "[Expert Info ") == 0) {
            messages.back().malformed = item;
            expert = indent;
        } else {
            messages.back().lines += std::string(indent / 2 - 2, ' ') + item + "\n";
        }
    }
    return messages;
}

// Whether the tree's `line` shows zoldump's `want`: the same, or with an
// enumeration's number after its name, or cut where Wireshark cuts a long
// line, marked [truncated].
bool Shows(const std::string& line, const std::string& want) {
    static const std::regex named(".*: [A-Za-z][A-Za-z0-9_]*"), number(" \\(-?[0-9]+\\)"), cut("( *)\\[truncated\\](.*)");
    std::smatch m;
    if (line.compare(0, want.size(), want) == 0)
        return line.size() == want.size() || (std::regex_match(want, named) && std::regex_match(line.substr(want.size()), number));
    return std::regex_match(line, m, cut) && want.compare(0, m.length(0) - 11, std::string(m[1]) + std::string(m[2])) == 0;
}

// The trees are the messages zoldump shows, one for one.
void ExpectSame(const std::vector<Shown>& trees, const std::vector<Shown>& briefs) {
    ASSERT_EQ(trees.size(), briefs.size());
    for (size_t i = 0; i < trees.size(); ++i) {
        std::istringstream tree(trees[i].lines), brief(briefs[i].lines);
        std::string shown;
        for (std::string line, want; std::getline(tree, line);)
            shown += (std::getline(brief, want) && Shows(line, want) ? want : line) + "\n";
        EXPECT_EQ(trees[i].type, briefs[i].type) << "message " << i;
        EXPECT_EQ(shown, briefs[i].lines) << "message " << i << ", a " << briefs[i].type;
        EXPECT_EQ(trees[i].malformed, "") << "message " << i;
    }
}

// Every message of one direction: the samples' and the fuzz corpus's.
std::vector<std::string> Messages(bool requests) {
    std::vector<fs::path> paths;
    for (const auto& e : fs::directory_iterator(ZOL_SAMPLES))
        if (e.path().extension() == ".ber")
            paths.push_back(e.path());
    for (const char* target : {"fuzz_trans_req", "fuzz_query_req", "fuzz_trans_rep", "fuzz_query_rep"})
        for (const auto& e : fs::directory_iterator(std::string(ZOL_CORPUS) + "/" + target))
            paths.push_back(e.path());
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> messages;
    for (const fs::path& p : paths) {
        std::string bytes = FileBytes(p);
        if ((bytes[0] == 0x30) == requests)  // requests are sequences
            messages.push_back(bytes);
    }
    return messages;
}

std::string Sample(const char* name) { return FileBytes(std::string(ZOL_SAMPLES) + "/" + name + ".ber"); }

}  // namespace

TEST_F(Tshark, ShowsEachMessageInASegmentOfItsOwn) {
    std::vector<std::pair<bool, std::string>> segments;
    std::string stream[2];
    for (bool request : {true, false})
        for (const std::string& m : Messages(request)) {
            segments.push_back({request, m});
            stream[request] += m;
        }
    std::vector<Shown> want = Brief(stream[true], "--request"), replies = Brief(stream[false], "--reply");
    want.insert(want.end(), replies.begin(), replies.end());
    EXPECT_EQ(want.size(), segments.size());
    ExpectSame(Trees(Dissect(Capture(segments), "-o zol.tcp_port:7000")), want);
}

TEST_F(Tshark, ReassemblesAStreamCutIntoSegmentsOf1000Octets) {
    std::vector<std::pair<bool, std::string>> segments;
    std::vector<Shown> want;
    for (bool request : {true, false}) {
        std::string stream;
        for (const std::string& m : Messages(request))
            stream += m;
        for (size_t at = 0; at < stream.size(); at += 1000)
            segments.push_back({request, stream.substr(at, 1000)});
        std::vector<Shown> shown = Brief(stream, request ? "--request" : "--reply");
        want.insert(want.end(), shown.begin(), shown.end());
    }
    // Decode As, where the others set the port's preference.
    ExpectSame(Trees(Dissect(Capture(segments), "-d tcp.port==7000,zol")), want);
}

TEST_F(Tshark, ShowsTwoMessagesOfOneSegmentAndNamesBothInTheInfoColumn) {
    std::string two = Sample("2-reply") + Sample("3-order-report");
    std::string capture = Capture({{false, two}});
    ExpectSame(Trees(Dissect(capture, "-o zol.tcp_port:7000")), Brief(two, "--reply"));
    EXPECT_EQ(Dissect(capture, "-o zol.tcp_port:7000", "-T fields -e _ws.col.Info"),
              "ZolTransRep replyOK, ZolQueryRep orderRep\n");
}

TEST_F(Tshark, WaitsForTheEndOfAnIndefiniteLengthMessage) {
    std::string message = FileBytes(std::string(ZOL_CORPUS) + "/fuzz_query_rep/boardRep-indefinite");
    size_t third = message.size() / 3;
    std::vector<Shown> trees = Trees(Dissect(
        Capture({{false, message.substr(0, third)}, {false, message.substr(third, third)}, {false, message.substr(2 * third)}}),
        "-o zol.tcp_port:7000"));
    ExpectSame(trees, Brief(message, "--reply"));
    EXPECT_EQ(trees.at(0).frame, 3);
}

TEST_F(Tshark, FiltersOnMembers) {
    const std::pair<const char*, const char*> rows[] = {
        {"zol.ZolOrderEntry.quantity == 500", "1\n"},
        {"zol.ZolTransReq.upTransMsg == \"order\"", "1\n"},  // a choice holds its alternative's name
        {"zol.AsnFixedReal.value == 101.3", "4\n"},
    };
    std::vector<std::pair<bool, std::string>> segments;
    for (const char* name : {"1-order", "2-reply", "3-order-report", "4-secboard-report"})
        segments.push_back({name[0] == '1', Sample(name)});
    std::string capture = Capture(segments);
    for (const auto& [filter, frames] : rows)
        EXPECT_EQ(Dissect(capture, "-o zol.tcp_port:7000", std::string("-T fields -e frame.number -Y '") + filter + "'"),
                  frames)
            << filter;
}

// A report with a wrong tag inside, and a request from the host's side,
// each between replies: each is one malformed message, as zoldump
// --keep-going counts them, and the messages after them are found.
TEST_F(Tshark, MarksWhatDoesNotDecodeAndFindsTheMessagesAfterIt) {
    std::string reply = Sample("2-reply"), damaged = Sample("3-order-report");
    damaged[damaged.size() - 7] = '\x0c';  // the tag of dynamics.orderStatus, an ENUMERATED
    std::string stream = reply + damaged + reply + Sample("1-order") + reply;
    std::vector<Shown> good, bad;
    for (const Shown& shown : Trees(Dissect(Capture({{false, stream}}), "-o zol.tcp_port:7000")))
        (shown.malformed.empty() ? good : bad).push_back(shown);
    ExpectSame(good, Brief(stream, "--reply --keep-going"));

    std::smatch m;
    std::string said = Stderr();
    EXPECT_NE(said.find("messages: 3 good, 2 bad"), std::string::npos) << said;
    ASSERT_EQ(bad.size(), 2u);
    ASSERT_TRUE(std::regex_search(said, m, std::regex("offset ([0-9]+) does not decode as (\\w+) \\(decoding stopped at offset ([0-9]+)")));
    EXPECT_EQ(bad[0].type, m[2]);
    EXPECT_NE(bad[0].malformed.find("stopped at octet " + std::to_string(std::stoi(m[3]) - std::stoi(m[1]))),
              std::string::npos)
        << bad[0].malformed;
    ASSERT_TRUE(std::regex_search(said, m, std::regex("begins with 30, which begins no reply")));
    EXPECT_NE(bad[1].malformed.find(m[0]), std::string::npos) << bad[1].malformed;
}

// Every octet of two messages after their outer tag and length changed
// five ways, each message in a segment of its own: the dissector takes
// what zol's decoders take, with the same lines, and marks the rest
// malformed at the octet where they stop. A security board's report (an
// explicit pair, a bit string, reals, texts) and an order of several legs
// (a list, booleans, enumerations).
TEST_F(Tshark, RefusesWhatTheDecodersRefuseWhereTheyStop) {
    const struct {
        std::string message;
        size_t header;
        bool request;
    } rows[] = {
        {Sample("4-secboard-report"), 4, false},
        {FileBytes(std::string(ZOL_CORPUS) + "/fuzz_trans_req/orderMultiLegAmend"), 3, true},
    };
    std::vector<std::pair<bool, std::string>> segments;
    for (const auto& row : rows)
        for (size_t i = row.header; i < row.message.size(); ++i)
            for (int flip : {0x01, 0x04, 0x20, 0x40, 0x80}) {
                segments.push_back({row.request, row.message});
                segments.back().second[i] = char(row.message[i] ^ flip);
                char name[32];
                std::snprintf(name, sizeof name, "/m%04zu.%s", segments.size(), row.request ? "request" : "reply");
                std::ofstream(dir_ + name, std::ios::binary) << segments.back().second;
            }
    // zoldump on each: a message, or the line that says why not.
    std::istringstream said(Run("for f in m*; do echo ==; " ZOLDUMP " --brief --${f#*.} $f 2>&1; done"));
    std::vector<Shown> want;
    for (std::string line; std::getline(said, line);) {
        if (line == "==")
            want.push_back({"", "", "", 0});
        else if (line.compare(0, 3, "-- ") == 0)
            want.back().type = line.substr(3, line.find(',') - 3);
        else if (line.compare(0, 9, "zoldump: ") == 0)
            want.back().malformed = line;
        else if (!want.back().type.empty())
            want.back().lines += ToTree(line) + "\n";
    }
    std::vector<Shown> trees = Trees(Dissect(Capture(segments), "-o zol.tcp_port:7000"));
    ASSERT_EQ(trees.size(), want.size());
    static const std::regex stop("as (\\w+) \\(decoding stopped at offset ([0-9]+)\\)|in [0-9]+ of its [0-9]+ octets");
    for (size_t i = 0; i < want.size(); ++i) {
        std::smatch m;
        if (want[i].malformed.empty()) {
            ExpectSame({trees[i]}, {want[i]});
            continue;
        }
        ASSERT_TRUE(std::regex_search(want[i].malformed, m, stop)) << want[i].malformed;
        // "ZolQueryRep does not decode: ... stopped at octet 37", or "in 110 of its 116 octets".
        std::regex where(m[2].matched ? std::string(m[1]) + " does not decode: .*stopped at octet " + std::string(m[2]) + "\\b"
                                      : std::string(m[0]));
        EXPECT_TRUE(std::regex_search(trees[i].malformed, where))
            << "message " << i << ": " << trees[i].malformed << "\n  zoldump: " << want[i].malformed;
    }
}
