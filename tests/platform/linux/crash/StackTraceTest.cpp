#include "platform/linux/crash/StackTrace.h"

#include "base/Text.h"

#include <gtest/gtest.h>

namespace vellumor::stackTraceTest {
namespace {

using StackTrace::Frame;
using StackTrace::Thread;

std::vector<Thread> parse(const std::string& text)
{
    return StackTrace::parse(text);
}

// The frame of a line within a stack; an empty thread when it is none.
Thread frameOf(const std::string& line)
{
    return parse("Stack trace of thread 1:\n" + line + "\n").front();
}

TEST(StackTrace, theThreadsOfAMessageAreReadInTheirOrder)
{
    const auto threads =
        parse("Process 4242 (vellumor) of user 1000 dumped core.\n"
              "\n"
              "Module libsystemd.so.0 from deb systemd-252.38-1~deb12u1.amd64\n"
              "Stack trace of thread 4242:\n"
              "#0  0x00007f3bd2b0b3d7 __poll (libc.so.6 + 0x10a3d7)\n"
              "#1  0x000055d0c0f01234 _ZN8vellumor6Poller4tickEv (vellumor + 0x1234)\n"
              "#2  0x000055d0c0f05678 n/a (vellumor + 0x5678)\n"
              "\n"
              "Stack trace of thread 4243:\n"
              "#0  0x00007f3bd2b0b3d7 n/a (n/a + 0x0)\n"
              "ELF object binary architecture: AMD x86-64\n");
    const std::vector<Thread> expected = {
        {{"__poll", "libc.so.6", 0x10a3d7},
         {"_ZN8vellumor6Poller4tickEv", "vellumor", 0x1234},
         {std::nullopt, "vellumor", 0x5678}},
        {{std::nullopt, "", std::nullopt}},
    };
    EXPECT_EQ(threads, expected);
}

TEST(StackTrace, aFrameIsReadInEachFormThatSystemsWrite)
{
    struct Row {
        const char* line;
        Frame frame;
    };
    const Row rows[] = {
        {"#0  0x1 main (vellumor + 0x1a)", {"main", "vellumor", 0x1a}},
        {"#63 0x1 main (vellumor + 0x1a)", {"main", "vellumor", 0x1a}},
        {"#0  0x1 main (vellumor)", {"main", "vellumor", {}}},
        {"#0  0x1 main (/opt/my app/vellumor + 0x2)", {"main", "vellumor", 0x2}},
        {"#0  0x1 main", {"main", "", {}}},
        {"#0  0x1", {{}, "", {}}},
        {"#0  0x1 main (vellumor + 12)", {"main", "vellumor", {}}},
        {"#0  0x1 main (vellumor + 0xffffffffffffffff)", {"main", "vellumor", 0xffffffffffffffff}},
        {"#0  0x1 main (vellumor + 0x10000000000000000)", {"main", "vellumor", {}}},
        {"#0  0x1 main (vellumor", {"main", "", {}}},
        {"#0  0x1 main ()", {"main", "", {}}},
    };
    for (const auto& [line, frame] : rows)
        EXPECT_EQ(frameOf(line), Thread{frame}) << line;
}

TEST(StackTrace, whatIsNoFrameIsPassedOver)
{
    for (const char* line : {"", "#", "main", "#0", "#0  main (vellumor)", "#0  0xzz main (x)",
                             "0  0x1 main (vellumor)", "Module x"})
        EXPECT_TRUE(frameOf(line).empty()) << line;
}

TEST(StackTrace, withoutAThreadThereIsNoFrame)
{
    EXPECT_TRUE(parse("").empty());
    EXPECT_TRUE(parse("Process 1 (vellumor) of user 0 dumped core.").empty());
    EXPECT_TRUE(parse("#0  0x1 main (vellumor + 0x1)\n").empty());
    EXPECT_EQ(parse("Stack trace of thread 1:"), std::vector<Thread>{Thread()});
}

TEST(StackTrace, ofTooManyThreadsAndFramesTheFirstAreKept)
{
    std::string text;
    for (int thread = 0; thread < 100; ++thread) {
        text += "Stack trace of thread 1:\n";
        for (int frame = 0; frame < 100; ++frame)
            text += "#0  0x1 f" + std::to_string(frame) + " (vellumor + 0x1)\n";
    }
    const auto threads = parse(text);
    ASSERT_EQ(threads.size(), StackTrace::maxThreads);
    ASSERT_EQ(threads.back().size(), StackTrace::maxFrames);
    EXPECT_EQ(threads.back().back().symbol, "f63");
}

TEST(StackTrace, aTextThatIsTooLongIsCutBetweenCharacters)
{
    std::string name = "x";
    while (name.size() < 2 * StackTrace::maxTextSize)
        name += "é";
    const Frame frame = frameOf("#0  0x1 " + name + " (" + name + " + 0x1)").front();
    EXPECT_EQ(frame.symbol, name.substr(0, StackTrace::maxTextSize - 1));
    EXPECT_EQ(frame.module, frame.symbol);
    const std::string fitting(StackTrace::maxTextSize, 'x');
    EXPECT_EQ(frameOf("#0  0x1 " + fitting).front().symbol, fitting);
}

TEST(StackTrace, whatIsNotUtf8IsReplaced)
{
    EXPECT_TRUE(
        Text::isValidUtf8(frameOf("#0  0x1 a\xff\x80z (\xc3 + 0x1)").front().symbol.value()));
    EXPECT_TRUE(Text::isValidUtf8(frameOf("#0  0x1 a\xff\x80z (\xc3 + 0x1)").front().module));
    const std::string marks(2000, '\x80');
    EXPECT_TRUE(Text::isValidUtf8(frameOf("#0  0x1 " + marks).front().symbol.value()));
}

} // namespace
} // namespace vellumor::stackTraceTest
