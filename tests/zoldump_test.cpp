// zoldump as a user runs it: the runs of zoldump_runs.txt, each with its
// exact output, standard error and exit status; the bytes of a round trip
// through JSON; reading a slow pipe and a large one.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support.h"

namespace {

using zt::FileBytes;

std::string Expected(const char* name) { return FileBytes(std::string(ZOL_EXPECTED) + "/" + name); }

// Starts the shell command `command` in the samples' folder, zoldump first
// on the PATH, on the given descriptors.
pid_t Start(const std::string& command, int in, int out, int err) {
    std::string tools = std::string(ZOLDUMP).substr(0, std::string(ZOLDUMP).rfind('/'));
    std::string line = "cd " + std::string(ZOL_SAMPLES) + " && PATH=" + tools + ":$PATH && " + command;
    pid_t pid = fork();
    if (pid == 0) {
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
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

// Runs the shell command `command`, feeding `input` on standard input.
Result Shell(const std::string& command, const std::string& input) {
    char dir[] = "/tmp/zoldump_testXXXXXX";
    if (!mkdtemp(dir))
        return {-1, "", "mkdtemp failed"};
    std::string d = dir;
    std::ofstream(d + "/in", std::ios::binary) << input;
    int in = open((d + "/in").c_str(), O_RDONLY | O_CLOEXEC);
    int out = open((d + "/out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int err = open((d + "/err").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    int status = 0;
    waitpid(Start(command, in, out, err), &status, 0);
    for (int fd : {in, out, err})
        close(fd);
    Result r{ExitCode(status), FileBytes(d + "/out"), FileBytes(d + "/err")};
    for (const char* f : {"/in", "/out", "/err"})
        std::remove((d + f).c_str());
    rmdir(dir);
    return r;
}

std::string Samples() { return Shell("cat *.ber", "").out; }

struct Case {
    int line;  // in zoldump_runs.txt
    std::string command;
    std::vector<std::string> input;
    Result expected;
};

// The runs of tests/expected/zoldump_runs.txt, whose head says how they
// are written.
std::vector<Case> Cases() {
    std::istringstream in(Expected("zoldump_runs.txt"));
    std::vector<Case> cases;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        std::string text = line.size() > 2 ? line.substr(2) : "";
        if (line.compare(0, 2, "$ ") == 0)
            cases.push_back({number, text, {}, {0, "", ""}});
        else if (cases.empty() || line.empty() || line[0] == '#')
            continue;
        else if (line[0] == '<')
            cases.back().input.push_back(text);
        else if (line.compare(0, 3, ">> ") == 0)
            cases.back().expected.out += Expected(line.substr(3).c_str());
        else if (line[0] == '>')
            cases.back().expected.out += text + "\n";
        else if (line[0] == '!')
            cases.back().expected.err += text + "\n";
        else if (line[0] == '?')
            cases.back().expected.code = std::stoi(text);
    }
    return cases;
}

TEST(Zoldump, RunsAsTheTranscriptShows) {
    std::vector<Case> cases = Cases();
    EXPECT_GT(cases.size(), 50u);
    for (const Case& c : cases) {
        std::string input;
        for (size_t i = 0; i < c.input.size(); ++i)
            input += (i ? "\n" : "") + c.input[i];
        Result r = Shell(c.command, input);
        EXPECT_EQ(r.out, c.expected.out) << "zoldump_runs.txt:" << c.line;
        EXPECT_EQ(r.err, c.expected.err) << "zoldump_runs.txt:" << c.line;
        EXPECT_EQ(r.code, c.expected.code) << "zoldump_runs.txt:" << c.line;
    }
}

TEST(Zoldump, JsonEncodesBackToTheSameBytes) {
    EXPECT_EQ(Shell("zoldump --json *.ber | zoldump --encode", "").out, Samples());
    EXPECT_EQ(Shell("cat *.ber | zoldump --json | zoldump --encode", "").out, Samples());
    // The samples' JSON sources are the samples.
    EXPECT_EQ(Shell("zoldump --encode *.json", "").out, Samples());
}

TEST(Zoldump, ShowsEachMessageAsItArrives) {
    std::signal(SIGPIPE, SIG_IGN);
    int in[2], out[2];
    ASSERT_EQ(pipe2(in, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(out, O_CLOEXEC), 0);
    pid_t pid = Start("exec zoldump --brief", in[0], out[1], 2);
    close(in[0]);
    close(out[1]);
    // The order and the first octets of the reply: the order is shown
    // while the rest is still to be written.
    std::string capture = Samples(), shown = Shell("zoldump --brief", capture).out;
    std::string order = Shell("zoldump --brief 1-order.ber", "").out;
    EXPECT_TRUE(WriteAll(in[1], capture.substr(0, 70)));
    EXPECT_EQ(ReadFor(out[0], order.size()), order);
    // A reply of indefinite length in two writes: shown when its end
    // arrives, though the input goes on.
    EXPECT_TRUE(WriteAll(in[1], capture.substr(70) + "\xB2\x80\x04\x02OK"));
    EXPECT_EQ(ReadFor(out[0], shown.size() - order.size()), shown.substr(order.size()));
    EXPECT_TRUE(WriteAll(in[1], std::string(2, '\0')));
    std::string reply = "-- ZolTransRep, offset 327, length 8 --\nreplyOK\n  infoMessage \"OK\"\n";
    EXPECT_EQ(ReadFor(out[0], reply.size()), reply);
    close(in[1]);
    EXPECT_EQ(ReadFor(out[0]), "");
    close(out[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_EQ(ExitCode(status), 0);
}

TEST(Zoldump, Reads200MBInLessThan64MBOfMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer keeps freed memory in quarantine";
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    GTEST_SKIP() << "AddressSanitizer keeps freed memory in quarantine";
#endif
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
    pid_t pid = Start("exec zoldump --brief --keep-going", in[0], null, err[1]);
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

}  // namespace
