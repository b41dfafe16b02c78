#include "platform/linux/AutostartFile.h"

#include "support/TempFolder.h"
#include "support/private_bus/ChildProcess.h"

#include <gio/gdesktopappinfo.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

// The file as others read it: GLib, by which most desktops start programs, and the validator of the
// format.
namespace vellumor::autostartLaunchTest {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
    void operator()(gchar* text) const { g_free(text); }
};

const std::string paths[] = {
    "vellumor",
    "a b  c/Vellumor 1.0.AppImage",
    " blank at both ends /v ",
    "a\"quoted\"/v",
    "it's/v",
    "$HOME/`id`/$(id)/v",
    "back\\slash\\\\es\\",
    "100%/%f%%U/v",
    "a=b/v",
    "a=b %c \"$d\" \\e/v",
    "~;&|<>*?#()[]{}!^/v",
    "tab\tand\nline/v",
    "jörg/日本語/v",
    "-n/--help",
};

// A program at `path` that leaves its own name in `told`.
void putProgram(const test::TempFolder& folder, const std::string& path, const std::string& told)
{
    const std::string file = folder.put(path, "#!/bin/sh\nprintf '%s|%s' \"$0\" \"$#\" > " + told +
                                                  ".new && mv " + told + ".new " + told + "\n");
    ::chmod(file.c_str(), 0755);
}

std::string waitForContents(const std::string& path)
{
    const auto limit = std::chrono::steady_clock::now() + 20s;
    while (!fs::exists(path) && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(2ms);
    return test::contentsOf(path);
}

void validate(const test::TempFolder& folder, const std::string& file)
{
    test::ChildProcess::Command command;
    command.arguments = {"desktop-file-validate", file};
    command.environment = {{"PATH", "/usr/bin:/bin"}};
    command.outputFile = folder.file("validated");
    EXPECT_EQ(test::runToEnd(command), "");
}

TEST(AutostartLaunch, theDesktopsReaderStartsThatVeryProgramWhateverItsPath)
{
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const test::TempFolder folder;
        const std::string told = folder.file("told");
        putProgram(folder, path, told);
        AutostartFile login(folder.file("config"), folder.file(path));
        ASSERT_EQ(login.setEnabled(true), std::nullopt);
        validate(folder, login.path());
        const std::unique_ptr<GDesktopAppInfo, Unref> entry(
            g_desktop_app_info_new_from_filename(login.path().c_str()));
        ASSERT_NE(entry, nullptr);
        GError* error = nullptr;
        EXPECT_TRUE(g_app_info_launch(G_APP_INFO(entry.get()), nullptr, nullptr, &error));
        g_clear_error(&error);
        EXPECT_EQ(waitForContents(told), folder.file(path) + "|0");
    }
}

TEST(AutostartLaunch, whatIsSwitchedOffAndKeptIsHiddenToTheDesktopsReader)
{
    const test::TempFolder folder;
    putProgram(folder, "vellumor", folder.file("told"));
    AutostartFile login(folder.path(), folder.file("vellumor"));
    folder.put("autostart/dev.quorle.vellumor.desktop",
               "[Desktop Entry]\nX-GNOME-Autostart-Delay=30\n");
    ASSERT_EQ(login.setEnabled(true), std::nullopt);
    const std::unique_ptr<GDesktopAppInfo, Unref> on(
        g_desktop_app_info_new_from_filename(login.path().c_str()));
    ASSERT_NE(on, nullptr);
    EXPECT_FALSE(g_desktop_app_info_get_is_hidden(on.get()));
    const std::unique_ptr<gchar, Unref> delay(
        g_desktop_app_info_get_string(on.get(), "X-GNOME-Autostart-Delay"));
    EXPECT_STREQ(delay.get(), "30");
    ASSERT_EQ(login.setEnabled(false), std::nullopt);
    validate(folder, login.path());
    const std::unique_ptr<GDesktopAppInfo, Unref> off(
        g_desktop_app_info_new_from_filename(login.path().c_str()));
    ASSERT_NE(off, nullptr);
    EXPECT_TRUE(g_desktop_app_info_get_is_hidden(off.get()));
}

TEST(AutostartLaunch, anEntryWhoseProgramIsGoneIsPassedOver)
{
    const test::TempFolder folder;
    AutostartFile login(folder.path(), folder.file("a b=%/gone"));
    ASSERT_EQ(login.setEnabled(true), std::nullopt);
    EXPECT_EQ(g_desktop_app_info_new_from_filename(login.path().c_str()), nullptr);
}

TEST(AutostartLaunch, theFormatsOwnParserReadsTheProgramBack)
{
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const test::TempFolder folder;
        AutostartFile login(folder.file("config"), "/" + path);
        ASSERT_EQ(login.setEnabled(true), std::nullopt);
        const std::unique_ptr<GKeyFile, Unref> file(g_key_file_new());
        ASSERT_TRUE(
            g_key_file_load_from_file(file.get(), login.path().c_str(), G_KEY_FILE_NONE, nullptr));
        const std::unique_ptr<gchar, Unref> program(
            g_key_file_get_string(file.get(), "Desktop Entry", "TryExec", nullptr));
        EXPECT_STREQ(program.get(), ("/" + path).c_str());
    }
}

} // namespace
} // namespace vellumor::autostartLaunchTest
