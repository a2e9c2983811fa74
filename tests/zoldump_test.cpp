// zoldump as a user runs it: each mode with its exact output, standard
// error and exit status.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string Expected(const char* name) { return ReadFile(std::string(ZOL_EXPECTED) + "/" + name); }

std::string Samples() {
    std::string all;
    for (const char* f : {"1-order", "2-reply", "3-order-report", "4-secboard-report"})
        all += ReadFile(std::string(ZOL_SAMPLES) + "/" + f + ".ber");
    return all;
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
    std::string cmd = std::string(ZOLDUMP) + " " + args + " <" + d + "/in >" + d + "/out 2>" + d + "/err";
    int status = std::system(cmd.c_str());
    Result r{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ReadFile(d + "/out"),
          ReadFile(d + "/err")};
    for (const char* f : {"/in", "/out", "/err"})
        std::remove((d + f).c_str());
    rmdir(dir);
    return r;
}

#define EXPECT_RUN(run, code_, out_, err_)    \
    do {                                      \
        Result r_ = (run);                       \
        EXPECT_EQ(r_.code, code_);            \
        EXPECT_EQ(r_.out, out_);              \
        EXPECT_EQ(r_.err, err_);              \
    } while (0)

TEST(Zoldump, PrintsACaptureOfEveryEnvelopeAsText) {
    EXPECT_RUN(Zoldump("", Samples()), 0, Expected("samples.txt"), "");
    EXPECT_RUN(Zoldump("-", Samples()), 0, Expected("samples.txt"), "");
}

TEST(Zoldump, PrintsJsonThatEncodesBackToTheSameBytes) {
    EXPECT_RUN(Zoldump("--json", Samples()), 0, Expected("samples.json"), "");
    EXPECT_RUN(Zoldump("--encode", Expected("samples.json")), 0, Samples(), "");
    // The samples' JSON sources are the samples.
    for (const char* f : {"1-order", "2-reply", "3-order-report", "4-secboard-report"}) {
        std::string base = std::string(ZOL_SAMPLES) + "/" + f;
        EXPECT_RUN(Zoldump("--encode " + base + ".json", ""), 0, ReadFile(base + ".ber"), "");
    }
}

TEST(Zoldump, ReadsFilesAndHexText) {
    std::string order = std::string(ZOL_SAMPLES) + "/1-order.ber";
    EXPECT_EQ(Zoldump(order, "").out, Expected("samples.txt").substr(0, Expected("samples.txt").find("\n\n--") + 1));

    // Blanks, line ends, commas and 0x are allowed.
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
        {"--type ZolOrderVerb", "0A 01 01 0A 01 00", "-- ZolOrderVerb, offset 0, length 3 --\n1\n\n-- ZolOrderVerb, offset 3, length 3 --"},
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
        {"--hex", "30 06 04 02 55 31 BF 83 11 00",
         "ERROR - SEQUENCE is missing non-optional elmt.\n"
         "zoldump: the message at offset 0 does not decode as ZolTransReq (decoding stopped at offset 9)\n"},
        {"--hex --type ZolOrderVerb", "02 01 01", "AsnEnum::BDec: ERROR tag on ENUMERATED is wrong.\n"
         "zoldump: the message at offset 0 does not decode as ZolOrderVerb (decoding stopped at offset 1)\n"},
        {"--hex", "04 01 41", "zoldump: the message at offset 0 begins with 04, which begins no envelope (give --type)\n"},
        {"--hex --request", "B2 00", "zoldump: the message at offset 0 begins with B2, which begins no request (give --type)\n"},
        {"--hex --reply", "30 00", "zoldump: the message at offset 0 begins with 30, which begins no reply (give --type)\n"},
        {"--hex", "BF 83 2A 00", "zoldump: the message at offset 0 begins with BF, which begins no envelope (give --type)\n"},
        {"--hex", "30 0G", "zoldump: bad hex text: character 'G' at offset 4\n"},
        {"--hex", "30 0 A0", "zoldump: bad hex text: \"0\" at offset 3 is not whole octets\n"},
        {"--hex", "0x", "zoldump: bad hex text: \"0x\" at offset 0 is not whole octets\n"},
        {"--hex", " \n", "zoldump: the input holds no bytes\n"},
        {"", "", "zoldump: the input holds no bytes\n"},
        {"/nonexistent/capture.ber", "", "zoldump: cannot read /nonexistent/capture.ber\n"},
    };
    for (const Case& c : cases) {
        Result r = Zoldump(c.args, c.input);
        EXPECT_EQ(r.code, 1) << c.input;
        EXPECT_EQ(r.err, c.err) << c.input;
    }
    EXPECT_EQ(Zoldump("--hex", "B1 02 04 00 B2 04 04 02 4F").out,
              "-- ZolTransRep, offset 0, length 4 --\n"
              "replyBad { -- SEQUENCE --\n"
              "    infoMessage ''H  -- \"\" --,\n"
              "    replyHint -- void --\n"
              "\n"
              "}\n");
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
        {"--encode", "  ", "zoldump: the input holds no JSON value\n"},
    };
    for (const Case& c : cases) {
        Result r = Zoldump(c.args, c.input);
        EXPECT_EQ(r.code, 1) << c.input;
        EXPECT_EQ(r.out, "") << c.input;
        EXPECT_EQ(r.err, c.err) << c.input;
    }
}

TEST(Zoldump, UsageErrorsExit2WithTheUsage) {
    const std::string usage = Expected("usage.txt");
    EXPECT_RUN(Zoldump("--help", ""), 0, usage, "");
    struct Case {
        const char* args;
        const char* line;
    } cases[] = {
        {"--bogus", "unknown option --bogus"},
        {"--type", "--type needs a type name"},
        {"--type ZolNothing", "no type named ZolNothing"},
        {"--encode --type ZolNothing", "no type named ZolNothing"},
        {"--request --reply", "--request and --reply exclude each other"},
        {"--type ZolTransReq --request", "--type excludes --request and --reply"},
        {"--encode --json", "--encode takes only --hex and --type"},
        {"--encode --reply", "--encode takes only --hex and --type"},
        {"a.ber b.ber", "more than one input file"},
    };
    for (const Case& c : cases)
        EXPECT_RUN(Zoldump(c.args, "A0 00"), 2, "", "zoldump: " + std::string(c.line) + "\n" + usage);
}

}  // namespace
