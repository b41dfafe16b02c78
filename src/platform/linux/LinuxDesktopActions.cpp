#include "platform/linux/LinuxDesktopActions.h"

#include "base/Log.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStringList>

#include <sys/stat.h>

#include <algorithm>
#include <string_view>

namespace vellumor {

namespace {

struct Place {
    std::string path;
    bool isFolder = true;
};

// `path` where something is, else the nearest folder above it that is there.
Place nearest(std::string path)
{
    while (path.size() > 1) {
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0)
            return {path, S_ISDIR(status.st_mode)};
        path.resize(std::max(path.rfind('/'), std::size_t{1}));
    }
    return {"/", true};
}

bool isPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/-._~").find(c) != std::string_view::npos;
}

// Of the path's very bytes, which need be no Unicode.
QString fileUrl(std::string_view path)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(c))
            url += c;
        else
            url.append("%").append(1, digits[byte / 16]).append(1, digits[byte % 16]);
    }
    return QString::fromStdString(url);
}

bool isPage(std::string_view url)
{
    return url.starts_with("https://") || url.starts_with("http://");
}

// The programs that open anything with what the user has chosen for it.
std::vector<ChildLauncher::Command> openers(const std::string& what)
{
    return {{"xdg-open", what}, {"gio", "open", what}};
}

} // namespace

LinuxDesktopActions::LinuxDesktopActions(Clock& clock, Worker& worker, Environment environment,
                                         QDBusConnection bus, std::chrono::milliseconds answerLimit)
    : m_worker(worker)
    , m_bus(std::move(bus))
    , m_answerLimit(static_cast<int>(answerLimit.count()))
    , m_launcher(clock, worker, std::move(environment))
{
}

Task<bool> LinuxDesktopActions::openTerminal()
{
    std::vector<ChildLauncher::Command> terminals = {{"xdg-terminal-exec"},
                                                     {"x-terminal-emulator"}};
    const bool isOpen = co_await m_launcher.launchFirst(std::move(terminals));
    if (!isOpen)
        log(Tag::main, "no terminal could be opened");
    co_return isOpen;
}

Task<bool> LinuxDesktopActions::showFolder(std::string path)
{
    auto look = [path = std::move(path)] { return nearest(path); };
    Place place = co_await m_worker.run(std::move(look));
    const bool isShown = co_await showInFileManager(place.path, place.isFolder);
    if (isShown)
        co_return true;
    if (!place.isFolder) // to open a file would be another thing than to show it
        place.path.resize(std::max(place.path.rfind('/'), std::size_t{1}));
    std::vector<ChildLauncher::Command> commands = openers(place.path);
    const bool isOpen = co_await m_launcher.launchFirst(std::move(commands));
    if (!isOpen)
        log(Tag::main, "no file manager could be opened");
    co_return isOpen;
}

Task<bool> LinuxDesktopActions::showInFileManager(std::string path, bool isFolder)
{
    const auto name = QStringLiteral("org.freedesktop.FileManager1");
    auto call = QDBusMessage::createMethodCall(
        name, QStringLiteral("/org/freedesktop/FileManager1"), name,
        isFolder ? QStringLiteral("ShowFolders") : QStringLiteral("ShowItems"));
    call.setArguments({QStringList{fileUrl(path)}, QString()});
    const QDBusPendingCall pending = m_bus.asyncCall(call, m_answerLimit);
    const QDBusMessage answer = co_await pending;
    co_return answer.type() == QDBusMessage::ReplyMessage;
}

Task<bool> LinuxDesktopActions::openPage(std::string url)
{
    if (!isPage(url)) {
        log(Tag::main, "no page: it is not opened");
        co_return false;
    }
    std::vector<ChildLauncher::Command> commands = openers(url);
    commands.push_back({"x-www-browser", url});
    const bool isOpen = co_await m_launcher.launchFirst(std::move(commands));
    if (!isOpen)
        log(Tag::main, "no browser could be opened");
    co_return isOpen;
}

} // namespace vellumor
