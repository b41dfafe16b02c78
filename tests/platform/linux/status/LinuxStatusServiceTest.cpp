#include "platform/linux/status/LinuxStatusService.h"

#include "platform/linux/status/Listener.h"
#include "platform/linux/status/StatusEncoding.h"
#include "status/StatusTesting.h"
#include "support/BusTesting.h"

#include <QDBusVariant>
#include <QXmlStreamReader>

#include <algorithm>

namespace vellumor::linuxStatusServiceTest {
namespace {

using test::Listener;

constexpr const char* path = "/dev/quorle/vellumor";
constexpr const char* interface = "dev.quorle.Vellumor1";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

// What stands in an interface, a line each, sorted: what a description says, however it is laid
// out.
std::vector<std::string> membersIn(const QByteArray& xml, const QString& wanted)
{
    std::vector<std::string> members;
    QXmlStreamReader reader(xml);
    bool isInside = false;
    QString member;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.name() == QLatin1String("interface"))
            isInside = reader.isStartElement() &&
                       reader.attributes().value(QLatin1String("name")) == wanted;
        if (!isInside || !reader.isStartElement() || reader.name() == QLatin1String("interface"))
            continue;
        QString line = reader.name().toString();
        for (const auto& attribute : reader.attributes())
            line += " " + attribute.name().toString() + "=" + attribute.value().toString();
        if (reader.name() == QLatin1String("annotation") || reader.name() == QLatin1String("arg"))
            line.prepend(member + ": ");
        else
            member = line;
        members.push_back(line.toStdString());
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    std::sort(members.begin(), members.end());
    return members;
}

struct LinuxStatusServiceTest : test::BusTest {
    QObject object; // by which a second start reaches the program
    StatusReport report = test::statusReport();
    bool mayRefresh = true;
    int refreshes = 0;
    int openings = 0;
    std::optional<LinuxStatusService> service;

    LinuxStatusServiceTest()
    {
        server.registerObject(QLatin1String(path), &object,
                              QDBusConnection::ExportScriptableSlots |
                                  QDBusConnection::ExportAdaptors);
        service.emplace(server);
    }
    ~LinuxStatusServiceTest() override { service.reset(); }

    void start()
    {
        service->start({[this] { return report; },
                        [this] {
                            refreshes += mayRefresh ? 1 : 0;
                            return mayRefresh;
                        },
                        [this] { ++openings; }});
    }
    [[nodiscard]] QString place() const { return server.baseService(); }
    QDBusMessage ask(const char* method, const QVariantList& arguments = {})
    {
        return call(place(), path, interface, method, arguments);
    }
    QVariant property(const char* name)
    {
        const auto answer = call(place(), path, propertiesInterface, "Get",
                                 {QLatin1String(interface), QLatin1String(name)});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }
};

TEST_F(LinuxStatusServiceTest, theLiveInterfaceIsTheOneInTheTree)
{
    start();
    const auto answer = call(place(), path, "org.freedesktop.DBus.Introspectable", "Introspect");
    const auto live = answer.arguments().value(0).toString().toUtf8();
    const auto written = QByteArray::fromStdString(test::contentsOf(VELLUMOR_STATUS_INTERFACE));
    const auto members = membersIn(live, QLatin1String(interface));
    EXPECT_EQ(members, membersIn(written, QLatin1String(interface)));
    EXPECT_FALSE(members.empty());
    EXPECT_FALSE(membersIn(live, QLatin1String(propertiesInterface)).empty());
}

TEST_F(LinuxStatusServiceTest, thePropertiesHoldTheReport)
{
    start();
    EXPECT_EQ(property("Version").toUInt(), 1U);
    EXPECT_EQ(property("LastUpdate").toLongLong(), 1774785480000000);
    const QVariant accounts = property("Accounts");
    EXPECT_EQ(test::signatureOf(accounts), "aa{sv}");
    const auto maps = qdbus_cast<StatusMaps>(accounts);
    ASSERT_EQ(maps.size(), 2);
    EXPECT_EQ(maps[0].value(QStringLiteral("name")).toString(), QStringLiteral("Work"));
    EXPECT_EQ(maps[0].value(QStringLiteral("updatedAt")).toLongLong(), 1774785480000000);
    EXPECT_EQ(maps[0].value(QStringLiteral("notes")).toStringList(),
              QStringList{QStringLiteral("Offline — showing last update")});
    const auto windows = qdbus_cast<StatusMaps>(maps[0].value(QStringLiteral("windows")));
    ASSERT_EQ(windows.size(), 2);
    EXPECT_EQ(windows[1].value(QStringLiteral("percent")).toDouble(), 91);
    EXPECT_EQ(windows[1].value(QStringLiteral("resetsAt")).toLongLong(), 0);
    EXPECT_EQ(windows[0].value(QStringLiteral("active")).toBool(), true);
}

TEST_F(LinuxStatusServiceTest, aNullInANameHidesNothingBehindIt)
{
    report.accounts[0].name = std::string("a\0b", 3);
    start();
    const auto maps = qdbus_cast<StatusMaps>(property("Accounts"));
    EXPECT_EQ(maps.value(0).value(QStringLiteral("name")).toString().toStdString(), "a�b");
}

TEST_F(LinuxStatusServiceTest, aRefreshIsDoneOrRefusedWithItsOwnError)
{
    start();
    EXPECT_EQ(ask("Refresh").type(), QDBusMessage::ReplyMessage);
    mayRefresh = false;
    const auto refused = ask("Refresh");
    EXPECT_EQ(refused.type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(refused.errorName().toStdString(), "dev.quorle.Vellumor1.Error.TooSoon");
    EXPECT_EQ(refreshes, 1);
}

TEST_F(LinuxStatusServiceTest, thePopoverOpens)
{
    start();
    EXPECT_EQ(ask("OpenPopover").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(openings, 1);
}

TEST_F(LinuxStatusServiceTest, theStartAndEachChangeAreSignals)
{
    Listener listener;
    client.connect(place(), QLatin1String(path), QLatin1String(interface),
                   QStringLiteral("Changed"), &listener, SLOT(hear()));
    settle(place());
    start();
    EXPECT_TRUE(test::turnLoopUntil([&] { return listener.heard == 1; }));
    service->announceChange();
    EXPECT_TRUE(test::turnLoopUntil([&] { return listener.heard == 2; }));
}

TEST_F(LinuxStatusServiceTest, whatIsNotInTheInterfaceIsRefused)
{
    start();
    const QString huge(4 * 1024 * 1024, QLatin1Char('x'));
    const struct {
        const char* interface;
        const char* method;
        QVariantList arguments;
    } rows[] = {
        {interface, "Quit", {}},
        {interface, "Refresh", {huge}},
        {interface, "Refresh", {1, 2, 3}},
        {interface, "OpenPopover", {huge}},
        {interface, "Changed", {}},
        {interface, "deleteLater", {}},
        {interface, "accounts", {}},
        {propertiesInterface, "Get", {QLatin1String(interface), huge}},
        {propertiesInterface, "Get", {huge, QStringLiteral("Accounts")}},
        {propertiesInterface,
         "Set",
         {QLatin1String(interface), QStringLiteral("LastUpdate"),
          QVariant::fromValue(QDBusVariant(qlonglong(5)))}},
        {propertiesInterface,
         "Set",
         {QLatin1String(interface), QStringLiteral("Version"),
          QVariant::fromValue(QDBusVariant(huge))}},
    };
    for (const auto& row : rows) {
        const auto answer = call(place(), path, row.interface, row.method, row.arguments);
        EXPECT_EQ(answer.type(), QDBusMessage::ErrorMessage) << row.method;
    }
    EXPECT_EQ(refreshes, 0);
    EXPECT_EQ(openings, 0);
    EXPECT_EQ(property("LastUpdate").toLongLong(), 1774785480000000);
}

TEST_F(LinuxStatusServiceTest, whenItHasGoneNobodyAnswers)
{
    start();
    service.reset();
    EXPECT_EQ(ask("Refresh").type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(refreshes, 0);
}

TEST(LinuxStatusServiceAlone, withoutABusItDoesNothing)
{
    LinuxStatusService service{QDBusConnection(QStringLiteral("none"))};
    service.start({});
    service.announceChange();
}

} // namespace
} // namespace vellumor::linuxStatusServiceTest
