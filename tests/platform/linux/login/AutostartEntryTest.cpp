#include "platform/linux/AutostartEntry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace vellumor::autostartEntryTest {
namespace {

using namespace std::string_literals;

const std::string program = "/usr/bin/vellumor";

std::string entry(const std::string& lines)
{
    return "[Desktop Entry]\nType=Application\nName=Vellumor\nExec=vellumor\n" + lines;
}

bool hasLine(const std::string& text, const std::string& line)
{
    return ("\n" + text).find("\n" + line + "\n") != std::string::npos;
}

std::ptrdiff_t linesOf(const std::string& text, const std::string& start)
{
    std::ptrdiff_t count = 0;
    for (std::size_t at = 0; (at = ("\n" + text).find("\n" + start, at)) != std::string::npos; ++at)
        ++count;
    return count;
}

TEST(AutostartEntry, isOnUnlessItSaysThatItIsHiddenOrNotEnabled)
{
    const std::pair<std::string, bool> rows[] = {
        {"", true},
        {"Hidden=false\n", true},
        {"Hidden=true\n", false},
        {"Hidden = true \n", false},
        {"Hidden=true\r\n", false},
        {"Hidden=true", false},
        {"Hidden=1\n", false},
        {"Hidden=True\n", true}, // the format knows "true" alone
        {"hidden=true\n", true},
        {"# Hidden=true\n", true},
        {"X-Hidden=true\n", true},
        {"X-GNOME-Autostart-enabled=true\n", true},
        {"X-GNOME-Autostart-enabled=false\n", false},
        {"X-GNOME-Autostart-enabled=0\n", false},
        {"X-GNOME-Autostart-enabled=\n", true},
        {"Hidden=false\nX-GNOME-Autostart-enabled=false\n", false},
        {"Hidden=true\nX-GNOME-Autostart-enabled=true\n", false},
        {"Hidden=true\nHidden=false\n", true}, // the last counts
        {"Hidden=false\nHidden=true\n", false},
        {"[Desktop Action new]\nHidden=true\n", true}, // another group's
        {"[Desktop Action new]\nHidden=false\n[Desktop Entry]\nHidden=true\n", false},
    };
    for (const auto& [lines, on] : rows) {
        SCOPED_TRACE(lines);
        EXPECT_EQ(AutostartEntry::isOn(entry(lines)), on);
    }
    EXPECT_TRUE(AutostartEntry::isOn("Hidden=true\n")); // of no group
    EXPECT_TRUE(AutostartEntry::isOn(""));
}

TEST(AutostartEntry, execQuotesWhatTheFormatReserves)
{
    const std::pair<std::string, std::string> rows[] = {
        {"/usr/bin/vellumor", "/usr/bin/vellumor"},
        {"/opt/a b/vellumor", R"("/opt/a b/vellumor")"},
        {"/opt/a\"b/v", R"("/opt/a\\"b/v")"},
        {"/opt/a'b/v", R"("/opt/a'b/v")"},
        {"/opt/a$b/v", R"("/opt/a\\$b/v")"},
        {"/opt/a`b/v", R"("/opt/a\\`b/v")"},
        {"/opt/a\\b/v", R"("/opt/a\\\\b/v")"},
        {"/opt/a\nb/v", R"("/opt/a\nb/v")"},
        {"/opt/a\tb/v", R"("/opt/a\tb/v")"},
        {"/opt/~a;b&c|d<e>f*g?h#i(j)/v", R"("/opt/~a;b&c|d<e>f*g?h#i(j)/v")"},
        {"/home/jörg/v", "\"/home/jörg/v\""},
        {"/opt/100%/v", R"(/bin/sh -c "exec \\"\\$0\\"" "/opt/100%%/v")"},
        {"/opt/a=b/v", R"(/bin/sh -c "exec \\"\\$0\\"" "/opt/a=b/v")"},
    };
    for (const auto& [path, exec] : rows) {
        SCOPED_TRACE(path);
        EXPECT_EQ(AutostartEntry::exec(path), exec);
    }
}

TEST(AutostartEntry, switchedOnFromNothingItIsThisText)
{
    EXPECT_EQ(AutostartEntry::switchedOn("", program),
              "[Desktop Entry]\n"
              "Exec=/usr/bin/vellumor\n"
              "TryExec=/usr/bin/vellumor\n"
              "Type=Application\n"
              "Version=1.0\n"
              "Name=Vellumor\n"
              "Comment=Shows the usage limits of Claude Code accounts in the panel\n"
              "Icon=dev.quorle.vellumor\n"
              "Terminal=false\n"
              "StartupNotify=false\n");
}

TEST(AutostartEntry, whatIsNoDesktopEntryIsReplacedWhole)
{
    const std::string expected = AutostartEntry::switchedOn("", program);
    for (const std::string& text :
         {"no entry\n"s, "Exec=other\nHidden=true\n"s, "[Desktop Action x]\nExec=other\n"s,
          "\0\0\0"s, "[Desktop Entry]\nName=\xff\xfe\n"s}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(AutostartEntry::switchedOn(text, program), expected);
    }
}

TEST(AutostartEntry, switchedOnKeepsWhatOthersWroteAndReplacesItsOwn)
{
    const std::string before = "# by hand\n"
                               "\n"
                               "[Desktop Entry]\n"
                               "Type=Link\n"
                               "Name=Mine\n"
                               "Name[de]=Meins\n"
                               "Exec=/old/path\n"
                               "Exec=/older/path\n"
                               "TryExec=/old/path\n"
                               "Hidden=true\n"
                               "X-GNOME-Autostart-enabled=false\n"
                               "X-GNOME-Autostart-Delay=30\n"
                               "OnlyShowIn=XFCE;\n"
                               "[Desktop Action new]\n"
                               "Exec=/other/program\n"
                               "Hidden=true\n";
    const std::string after = AutostartEntry::switchedOn(before, program);
    EXPECT_TRUE(AutostartEntry::isOn(after));
    for (const char* kept :
         {"# by hand", "Name=Mine", "Name[de]=Meins", "X-GNOME-Autostart-Delay=30",
          "OnlyShowIn=XFCE;", "[Desktop Action new]", "Exec=/other/program", "Hidden=true"})
        EXPECT_TRUE(hasLine(after, kept)) << kept;
    EXPECT_TRUE(hasLine(after, "Exec=" + program));
    EXPECT_TRUE(hasLine(after, "TryExec=" + program));
    EXPECT_TRUE(hasLine(after, "Type=Application"));
    EXPECT_EQ(linesOf(after, "Exec="), 2); // and that of the other group
    EXPECT_EQ(linesOf(after, "TryExec="), 1);
    EXPECT_EQ(linesOf(after, "X-GNOME-Autostart-enabled"), 0);
    EXPECT_LT(after.find("Exec=" + program), after.find("[Desktop Action new]"));
}

TEST(AutostartEntry, switchedOnTwiceIsSwitchedOnOnce)
{
    for (const std::string& text :
         {""s, entry("Hidden=true\nX-Mine=1\n"), entry("[Other]\nName=x"), "[Desktop Entry]"s}) {
        const std::string once = AutostartEntry::switchedOn(text, program);
        EXPECT_EQ(AutostartEntry::switchedOn(once, program), once);
        EXPECT_TRUE(AutostartEntry::isOn(once));
        EXPECT_TRUE(hasLine(once, "Name=Vellumor")) << once;
    }
}

TEST(AutostartEntry, switchedOffNothingIsLeftOfWhatTheProgramWrote)
{
    EXPECT_EQ(AutostartEntry::switchedOff(AutostartEntry::switchedOn("", program)), std::nullopt);
    EXPECT_EQ(AutostartEntry::switchedOff(entry("Hidden=true\nX-GNOME-Autostart-enabled=true\n")),
              std::nullopt);
    EXPECT_EQ(AutostartEntry::switchedOff(""), std::nullopt);
    EXPECT_EQ(AutostartEntry::switchedOff("no entry at all"), std::nullopt);
}

TEST(AutostartEntry, switchedOffWhatOthersWroteStaysAndIsHidden)
{
    for (const char* foreign : {"X-GNOME-Autostart-Delay=30", "Name[de]=Meins", "# by hand",
                                "[Desktop Action new]", "OnlyShowIn=XFCE;", "nonsense"}) {
        SCOPED_TRACE(foreign);
        const auto off = AutostartEntry::switchedOff(entry(foreign + "\n"s));
        ASSERT_TRUE(off.has_value());
        EXPECT_FALSE(AutostartEntry::isOn(*off));
        EXPECT_TRUE(hasLine(*off, foreign));
        EXPECT_EQ(AutostartEntry::switchedOff(*off), off);
        const std::string on = AutostartEntry::switchedOn(*off, program);
        EXPECT_TRUE(AutostartEntry::isOn(on));
        EXPECT_TRUE(hasLine(on, foreign));
    }
}

} // namespace
} // namespace vellumor::autostartEntryTest
