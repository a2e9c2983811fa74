// zoldump as a user runs it, in the samples' folder: each mode with its
// exact output, standard error and exit status; reading a slow pipe and a
// large one.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>

namespace {

const char* const kSampleFiles[] = {"1-order.ber", "2-reply.ber", "3-order-report.ber", "4-secboard-report.ber"};

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string Expected(const char* name) { return ReadFile(std::string(ZOL_EXPECTED) + "/" + name); }

std::string Samples() {
    std::string all;
    for (const char* f : kSampleFiles)
        all += ReadFile(std::string(ZOL_SAMPLES) + "/" + f);
    return all;
}

// Starts zoldump with `args`, split by the shell, on the given descriptors.
pid_t Start(const std::string& args, int in, int out, int err) {
    std::string command = std::string("cd ") + ZOL_SAMPLES + " && exec " + ZOLDUMP + " " + args;
    pid_t pid = fork();
    if (pid == 0) {
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    return pid;
}

int ExitCode(int status) { return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status); }

bool WriteAll(int fd, const std::string& bytes) {
    for (size_t at = 0; at < bytes.size();) {
        ssize_t n = write(fd, bytes.data() + at, bytes.size() - at);
        if (n <= 0)
            return false;
        at += size_t(n);
    }
    return true;
}

// What `fd` gives until it ends, holds `size` bytes or is silent for 10 s.
std::string ReadFor(int fd, size_t size = std::string::npos) {
    std::string got;
    char chunk[4096];
    pollfd p = {fd, POLLIN, 0};
    for (ssize_t n = 1; got.size() < size && n > 0 && poll(&p, 1, 10000) == 1;)
        if ((n = read(fd, chunk, std::min(sizeof chunk, size - got.size()))) > 0)
            got.append(chunk, size_t(n));
    return got;
}

struct Result {
    int code;
    std::string out;
    std::string err;
};

// Runs zoldump with `args`, feeding `input` on standard input.
Result Zoldump(const std::string& args, const std::string& input) {
    char dir[] = "/tmp/zoldump_testXXXXXX";
    if (!mkdtemp(dir))
        return {-1, "", "mkdtemp failed"};
    std::string d = dir;
    std::ofstream(d + "/in", std::ios::binary) << input;
    int in = open((d + "/in").c_str(), O_RDONLY | O_CLOEXEC);
    int out = open((d + "/out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int err = open((d + "/err").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int status = 0;
    waitpid(Start(args, in, out, err), &status, 0);
    for (int fd : {in, out, err})
        close(fd);
    Result r{ExitCode(status), ReadFile(d + "/out"), ReadFile(d + "/err")};
    for (const char* f : {"/in", "/out", "/err"})
        std::remove((d + f).c_str());
    rmdir(dir);
    return r;
}

#define EXPECT_RUN(run, code_, out_, err_) \
    do {                                   \
        Result r_ = (run);                 \
        EXPECT_EQ(r_.code, code_);         \
        EXPECT_EQ(r_.out, out_);           \
        EXPECT_EQ(r_.err, err_);           \
    } while (0)

std::string AllSampleFiles() {
    std::string names;
    for (const char* f : kSampleFiles)
        names += std::string(" ") + f;
    return names;
}

TEST(Zoldump, PrintsACaptureInEachForm) {
    EXPECT_RUN(Zoldump("", Samples()), 0, Expected("samples.txt"), "");
    EXPECT_RUN(Zoldump("-", Samples()), 0, Expected("samples.txt"), "");
    EXPECT_RUN(Zoldump("--json", Samples()), 0, Expected("samples.json"), "");
    // Several files: each message with its file's name.
    EXPECT_RUN(Zoldump("--brief" + AllSampleFiles(), ""), 0, Expected("samples.brief"), "");
    std::string text = Expected("samples.txt");
    EXPECT_RUN(Zoldump("1-order.ber", ""), 0, text.substr(0, text.find("\n\n--") + 1), "");
}

TEST(Zoldump, BriefShowsEachMemberPresentOnALine) {
    struct Case {
        const char* args;
        const char* hex;
        const char* out;
    } cases[] = {
        // Octet strings as text when printable, else as hex; an empty sequence.
        {"", "B2 05 04 03 41 22 5C B2 04 04 02 00 FF A0 00",
         "-- ZolTransRep, offset 0, length 7 --\nreplyOK\n  infoMessage \"A\\\"\\\\\"\n"
         "-- ZolTransRep, offset 7, length 6 --\nreplyOK\n  infoMessage '00FF'H\n"
         "-- ZolTransRep, offset 13, length 2 --\nnull {}\n"},
        {"--type ZolUserUpdateActivityStatusSetOf", "31 08 30 06 02 01 05 02 01 07 31 00",
         "-- ZolUserUpdateActivityStatusSetOf, offset 0, length 10 --\n[0]\n  userIdx 5\n  secsSinceAction 7\n"
         "-- ZolUserUpdateActivityStatusSetOf, offset 10, length 2 --\n[]\n"},
        {"--type ZolOrderVerb", "0A 01 01 0A 01 07", "-- ZolOrderVerb, offset 0, length 3 --\nsell\n"
                                                     "-- ZolOrderVerb, offset 3, length 3 --\n7\n"},
    };
    for (const Case& c : cases)
        EXPECT_RUN(Zoldump(std::string("--hex --brief ") + c.args, c.hex), 0, c.out, "");
}

TEST(Zoldump, PrintsJsonThatEncodesBackToTheSameBytes) {
    EXPECT_RUN(Zoldump("--encode", Expected("samples.json")), 0, Samples(), "");
    EXPECT_RUN(Zoldump("--encode", Zoldump("--json" + AllSampleFiles(), "").out), 0, Samples(), "");
    // The samples' JSON sources are the samples.
    for (const char* f : kSampleFiles) {
        std::string base = std::string(f).substr(0, std::string(f).size() - 4);
        EXPECT_RUN(Zoldump("--encode " + base + ".json", ""), 0, ReadFile(std::string(ZOL_SAMPLES) + "/" + f), "");
    }
    EXPECT_RUN(Zoldump("--hex", "0x30,0x06,\n04 02 5531\r\nA0 00\n"), 0,
               "-- ZolTransReq, offset 0, length 8 --\n"
               "{ -- SEQUENCE --\n"
               "    userId '5531'H  -- \"U1\" --,\n"
               "    upTransMsg null { -- SEQUENCE --\n"
               "    }\n"
               "}\n",
               "");
}

TEST(Zoldump, ChoosesTheEnvelopeByTheFirstOctets) {
    struct Case {
        const char* args;
        const char* hex;
        const char* header;
    } cases[] = {
        {"", "30 0A 04 02 55 31 BF 82 1D 02 30 00", "-- ZolQueryReq, offset 0, length 12 --"},
        // A user id in constructed form of indefinite length before the query.
        {"", "30 10 24 80 04 01 55 04 01 31 00 00 BF 82 1D 02 30 00", "-- ZolQueryReq, offset 0, length 18 --"},
        {"", "30 06 04 02 55 31 A0 00", "-- ZolTransReq, offset 0, length 8 --"},
        {"--request", "30 06 04 02 55 31 A0 00", "-- ZolTransReq, offset 0, length 8 --"},
        {"", "B1 02 04 00", "-- ZolTransRep, offset 0, length 4 --"},
        {"--reply", "A0 00", "-- ZolTransRep, offset 0, length 2 --"},
        {"--reply", "BF 82 1D 02 30 00", "-- ZolQueryRep, offset 0, length 6 --"},
        // The whole indefinite-length message is counted, end-of-contents included.
        {"", "30 80 04 02 55 31 BF 83 2A 80 30 80 30 80 04 03 41 42 43 00 00 0A 01 01 0A 01 00 02 01 64 0A 01 03 00 00 00 00 00 00",
         "-- ZolTransReq, offset 0, length 39 --"},
        {"--type ZolSecBoardRepDynamic", "30 04 9F 52 01 07", "-- ZolSecBoardRepDynamic, offset 0, length 6 --"},
    };
    for (const Case& c : cases) {
        Result r = Zoldump(std::string("--hex ") + c.args, c.hex);
        EXPECT_EQ(r.code, 0) << c.hex;
        EXPECT_EQ(r.out.substr(0, std::string(c.header).size()), c.header) << c.hex;
        EXPECT_EQ(r.err, "") << c.hex;
    }
    EXPECT_RUN(Zoldump("--hex --json --type ZolOrderVerb", "0A 01 01 0A 01 07"), 0,
               "{\n  \"offset\": 0,\n  \"length\": 3,\n  \"type\": \"ZolOrderVerb\",\n  \"value\": \"sell\"\n}\n"
               "{\n  \"offset\": 3,\n  \"length\": 3,\n  \"type\": \"ZolOrderVerb\",\n  \"value\": 7\n}\n",
               "");
}

TEST(Zoldump, BadInputGivesTheLibrarysLinesAndTheOffset) {
    struct Case {
        const char* args;
        const char* input;
        const char* err;
    } cases[] = {
        // A reply cut short behind a good message: the good one is printed.
        {"--hex", "B1 02 04 00 B2 04 04 02 4F",
         "BDecOctetString: ERROR - decoded past end of data\n"
         "zoldump: the message at offset 4 does not decode as ZolTransRep (decoding stopped at offset 9)\n"},
        {"--hex", "30 0B 04 02 55 31 BF 82 1D 02 30 00 00",
         "ERROR - Length discrepancy on sequence.\n"
         "zoldump: the message at offset 0 does not decode as ZolQueryReq (decoding stopped at offset 12)\n"},
        {"--hex", "30 08 04 02 55 31 BF 83 11 00",
         "ERROR - SEQUENCE is missing non-optional elmt.\n"
         "zoldump: the message at offset 0 does not decode as ZolTransReq (decoding stopped at offset 9)\n"},
        // The decoders read no further than the message's header says.
        {"--hex", "30 06 04 02 55 31 BF 83 11 00",
         "BDecTag: ERROR - decoded past the end of data\n"
         "zoldump: the message at offset 0 does not decode as ZolTransReq (decoding stopped at offset 8)\n"},
        {"--hex --type ZolOrderVerb", "02 01 01", "AsnEnum::BDec: ERROR tag on ENUMERATED is wrong.\n"
         "zoldump: the message at offset 0 does not decode as ZolOrderVerb (decoding stopped at offset 1)\n"},
        // Refused by its header, before the 2 GB it announces arrive.
        {"--hex", "B2 84 80 00 00 00",
         "zoldump: the message at offset 0 has 2147483654 octets, more than the 67108864 that zoldump takes\n"},
        {"--hex", "04 01 41", "zoldump: the message at offset 0 begins with 04, which begins no envelope (give --type)\n"},
        {"--hex --request", "B2 00", "zoldump: the message at offset 0 begins with B2, which begins no request (give --type)\n"},
        {"--hex --reply", "30 00", "zoldump: the message at offset 0 begins with 30, which begins no reply (give --type)\n"},
        {"--hex", "30 0G", "zoldump: bad hex text: character 'G' at offset 4\n"},
        {"--hex", "30 0 A0", "zoldump: bad hex text: \"0\" at offset 3 is not whole octets\n"},
        {"--hex", "0x", "zoldump: bad hex text: \"0x\" at offset 0 is not whole octets\n"},
        {"--hex", " \n", "zoldump: the input holds no bytes\n"},
        {"", "", "zoldump: the input holds no bytes\n"},
        {"/nonexistent/capture.ber", "", "zoldump: cannot read /nonexistent/capture.ber: No such file or directory\n"},
        {"1-order.ber .", "", "zoldump: cannot read .: Is a directory\n"},
    };
    for (const Case& c : cases) {
        Result r = Zoldump(c.args, c.input);
        EXPECT_EQ(r.code, 1) << c.input;
        EXPECT_EQ(r.err, c.err) << c.input;
    }
    EXPECT_EQ(Zoldump("--hex --brief", "B1 02 04 00 B2 04 04 02 4F").out,
              "-- ZolTransRep, offset 0, length 4 --\nreplyBad\n  infoMessage \"\"\n");
}

TEST(Zoldump, KeepGoingReportsEachRunOfBadOctetsAndGoesOnAtTheNextMessage) {
    // FF begins no envelope and, as a tag, runs on into the next octet, so
    // no element inside the garbage decodes; A0 01 00 is a reply whose
    // null alternative has content.
    std::string s[4];
    for (int i = 0; i < 4; ++i)
        s[i] = ReadFile(std::string(ZOL_SAMPLES) + "/" + kSampleFiles[i]);
    std::string capture = "\xFF\xFF\xFF" + s[0] + "\xFF" + s[1] + std::string("\xA0\x01\x00", 3) + s[2] +
                          "\xFF\xFF\xFF\xFF\xFF" + s[3] + "\xFF\xFF";
    Result r = Zoldump("--keep-going --brief", capture);
    EXPECT_EQ(r.code, 1);
    std::string heads;
    std::istringstream lines(r.out);
    for (std::string line; std::getline(lines, line);)
        if (line.compare(0, 3, "-- ") == 0)
            heads += line + "\n";
    EXPECT_EQ(heads,
              "-- ZolTransReq, offset 3, length 68 --\n-- ZolTransRep, offset 72, length 26 --\n"
              "-- ZolQueryRep, offset 101, length 116 --\n-- ZolQueryRep, offset 222, length 117 --\n");
    const std::string noEnvelope = "begins with FF, which begins no envelope (give --type); ";
    EXPECT_EQ(r.err, "zoldump: the message at offset 0 " + noEnvelope + "3 octets skipped\n" +
                         "zoldump: the message at offset 71 " + noEnvelope + "1 octet skipped\n" +
                         "Expected an empty sequence\n"
                         "zoldump: the message at offset 98 does not decode as ZolTransRep (decoding stopped at "
                         "offset 100); 3 octets skipped\n" +
                         "zoldump: the message at offset 217 " + noEnvelope + "5 octets skipped\n" +
                         "zoldump: the message at offset 339 " + noEnvelope + "2 octets skipped\n" +
                         "zoldump: messages: 4 good, 5 bad\n");
    EXPECT_RUN(Zoldump("--keep-going", Samples()), 0, Expected("samples.txt"), "zoldump: messages: 4 good, 0 bad\n");
}

TEST(Zoldump, ShowsEachMessageAsItArrives) {
    std::signal(SIGPIPE, SIG_IGN);
    int in[2], out[2];
    ASSERT_EQ(pipe2(in, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
    pid_t pid = Start("--brief", in[0], out[1], 2);
    close(in[0]);
    close(out[1]);
    // The order and the first octets of the reply: the order is shown
    // while the rest is still to be written.
    std::string capture = Samples(), order = Zoldump("--brief 1-order.ber", "").out;
    EXPECT_TRUE(WriteAll(in[1], capture.substr(0, 70)));
    EXPECT_EQ(ReadFor(out[0], order.size()), order);
    EXPECT_TRUE(WriteAll(in[1], capture.substr(70)));
    close(in[1]);
    EXPECT_EQ(order + ReadFor(out[0]), Zoldump("--brief", capture).out);
    close(out[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_EQ(ExitCode(status), 0);
}

TEST(Zoldump, Reads200MBInLessThan64MBOfMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer keeps freed memory in quarantine";
#endif
    // Replies of 1 MB each, written to a pipe as zoldump reads them.
    auto Tlv = [](char tag, const std::string& content) {
        uint32_t n = uint32_t(content.size());
        return std::string{tag, '\x84', char(n >> 24), char(n >> 16), char(n >> 8), char(n)} + content;
    };
    std::string reply = Tlv('\xB2', Tlv('\x04', std::string(1 << 20, 'x')));
    std::signal(SIGPIPE, SIG_IGN);
    int in[2], null = open("/dev/null", O_WRONLY | O_CLOEXEC), err[2];
    ASSERT_EQ(pipe2(in, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(err, O_CLOEXEC), 0);
    pid_t pid = Start("--brief --keep-going", in[0], null, err[1]);
    for (int fd : {in[0], err[1], null})
        close(fd);
    for (int i = 0; i < 200; ++i)
        ASSERT_TRUE(WriteAll(in[1], reply));
    close(in[1]);
    EXPECT_EQ(ReadFor(err[0]), "zoldump: messages: 200 good, 0 bad\n");
    close(err[0]);
    int status = 0;
    rusage usage;
    wait4(pid, &status, 0, &usage);
    EXPECT_EQ(ExitCode(status), 0);
    EXPECT_LT(usage.ru_maxrss, 64 * 1024) << "kB at the peak";
}

TEST(Zoldump, EncodesJsonToBerOrHex) {
    EXPECT_RUN(Zoldump("--encode --hex", R"({"type":"ZolTransRep","value":{"replyOK":{"infoMessage":"OK"}}})"
                                         "\n{\"type\": \"ZolQueryRep\", \"value\": {\"null\": {}}, \"offset\": 6}"),
               0, "B2 04 04 02 4F 4B\nA0 00\n", "");
    EXPECT_RUN(Zoldump("--encode --type ZolOrderVerb", R"("sell" 2 "buy")"), 0, std::string("\x0A\x01\x01\x0A\x01\x02\x0A\x01\x00", 9), "");
    EXPECT_RUN(Zoldump("--encode --hex --type ZolQueryReq",
                       R"({"userId": {"hex": "5531"}, "upQueryMsg": {"orderReq": {"seqContext": {}}}})"),
               0, "30 0A 04 02 55 31 BF 82 1D 02 30 00\n", "");
}

TEST(Zoldump, BadJsonNamesTheValueAndThePlace) {
    struct Case {
        const char* args;
        const char* input;
        const char* err;
    } cases[] = {
        {"--encode", R"({"type":"ZolTransRep","value":{"replyOK":{"infoMessage":"OK"}}} {"type":"ZolTransRep","value":{"replyOK":{}}})",
         "zoldump: the JSON value at offset 64, ZolTransRep at replyOK: the required member infoMessage of ZolReplyOK is missing\n"},
        {"--encode", R"({"type":"ZolTransRep"})",
         "zoldump: the JSON value at offset 0: expected {\"type\": NAME, \"value\": ...} (or give --type)\n"},
        {"--encode", R"({"type":"ZolTransRep","value":{},"colour":1})",
         "zoldump: the JSON value at offset 0: unexpected key \"colour\"\n"},
        {"--encode", R"({"type":"ZolNothing","value":{}})", "zoldump: the JSON value at offset 0: no type named ZolNothing\n"},
        {"--encode --type ZolOrderVerb", "\n  \"up\"",
         "zoldump: the JSON value at offset 3, ZolOrderVerb at the value: no value named \"up\" (buy, sell, buyorsell)\n"},
        {"--encode", "{\"type\": ", "zoldump: the JSON value at offset 0: parse error at line 1, column 10: syntax error "
                                    "while parsing value - unexpected end of input; expected '[', '{', or a literal\n"},
        {"--encode - 1-order.json", "[]", "zoldump: -: the JSON value at offset 0: expected {\"type\": NAME, \"value\": ...} (or give --type)\n"},
        {"--encode", "  ", "zoldump: the input holds no JSON value\n"},
    };
    for (const Case& c : cases) {
        Result r = Zoldump(c.args, c.input);
        EXPECT_EQ(r.code, 1) << c.input;
        EXPECT_EQ(r.out, "") << c.input;
        EXPECT_EQ(r.err, c.err) << c.input;
    }
}

TEST(Zoldump, ListsTypesAndTellsItsVersion) {
    EXPECT_RUN(Zoldump("--help", ""), 0, Expected("usage.txt"), "");
    Result version = Zoldump("--version", "");
    EXPECT_TRUE(std::regex_match(version.out, std::regex("zoldump [0-9]+\\.[0-9]+\\.[0-9]+\n"))) << version.out;
    // The filter meets type and module names in any case.
    EXPECT_RUN(Zoldump("--list-types orderbookby", ""), 0,
               "ZolOrderbookByPriceReq  ZOLORDERBOOK\nZolOrderbookByPriceRep  ZOLORDERBOOK\n"
               "ZolOrderbookByOrderReq  ZOLORDERBOOK\nZolOrderbookByOrderRep  ZOLORDERBOOK\n", "");
    std::string index = "ZolIndexValRepSetOfSeq     ZOLINDEX\nZolIndexValRepSetOf        ZOLINDEX\n";
    EXPECT_EQ(Zoldump("--list-types zolindex", "").out.substr(0, index.size()), index);
    EXPECT_RUN(Zoldump("--list-types nothing", ""), 1, "", "zoldump: no type's name or module holds nothing\n");
}

TEST(Zoldump, UsageErrorsExit2WithOneLine) {
    struct Case {
        const char* args;
        const char* line;
    } cases[] = {
        {"--bogus", "unknown option --bogus (see zoldump --help)"},
        {"--type", "--type needs a type name (see zoldump --help)"},
        {"--request --reply", "--request and --reply exclude each other (see zoldump --help)"},
        {"--type ZolTransReq --request", "--type excludes --request and --reply (see zoldump --help)"},
        {"--json --brief", "--brief and --json exclude each other (see zoldump --help)"},
        {"--encode --json", "--encode takes only --hex and --type (see zoldump --help)"},
        {"--encode --keep-going", "--encode takes only --hex and --type (see zoldump --help)"},
        {"--list-types a b", "--list-types takes one filter (see zoldump --help)"},
        // The nearest names, in any case.
        {"--type zoltransreq", "no type named zoltransreq; did you mean ZolTransReq? (see zoldump --list-types)"},
        {"--encode --type ZolOrderbookByPriceRq",
         "no type named ZolOrderbookByPriceRq; did you mean ZolOrderbookByPriceReq? (see zoldump --list-types)"},
        {"--type ZolTrdAccRe", "no type named ZolTrdAccRe; did you mean ZolTrdAccReq or ZolTrdAccRep? "
                               "(see zoldump --list-types)"},
        {"--type Xyz", "no type named Xyz (see zoldump --list-types)"},
    };
    for (const Case& c : cases)
        EXPECT_RUN(Zoldump(c.args, "A0 00"), 2, "", "zoldump: " + std::string(c.line) + "\n");
}

}  // namespace
