#include "ui/PortalSavePanel.h"

#include "FakeSavePortal.h"
#include "support/BusTesting.h"

#include <QPointer>

namespace vellumor::portalSavePanelTest {
namespace {

using End = PortalSavePanel::End;
using Manner = test::FakeSavePortal::Manner;

QVariantMap chosen(const QVariant& uris)
{
    return {{QStringLiteral("uris"), uris}};
}

QVariantList answer(uint ending, const QVariantMap& results = {})
{
    return {ending, results};
}

const QVariantList yes = answer(0, chosen(QStringList("file:///home/a%20b/c.csv")));

struct PortalSavePanelTest : test::BusTest {
    struct Told {
        End end;
        std::string path;
        bool operator==(const Told&) const = default;
    };
    std::vector<Told> told;
    QPointer<PortalSavePanel> panel = new PortalSavePanel(client);

    ~PortalSavePanelTest() override { delete panel; }
    void ask()
    {
        panel->ask({"Export", "history.csv", "/home/ä", "CSV", "text/csv"},
                   [this](End end, const QString& path) {
                       told.push_back({end, path.toStdString()});
                   });
    }
    void askUntilUnderstood(const test::FakeSavePortal& portal)
    {
        ask();
        ASSERT_TRUE(test::turnLoopUntil([&] { return !portal.asked.empty(); }));
        settle(server.baseService()); // its reply is there before this one's
    }
    // Once it has told, it goes.
    void expectTold(End end, const std::string& path = {})
    {
        ASSERT_TRUE(test::turnLoopUntil([&] { return !told.empty() && panel.isNull(); }));
        EXPECT_EQ(told, std::vector<Told>({{end, path}}));
    }
};

TEST_F(PortalSavePanelTest, theQuestionNamesTheFileAndTheFolder)
{
    const test::FakeSavePortal portal(server);
    askUntilUnderstood(portal);
    const auto& asked = portal.asked.at(0);
    EXPECT_EQ(asked.parent, "");
    EXPECT_EQ(asked.title, "Export");
    EXPECT_EQ(asked.options.value("current_name").toString(), "history.csv");
    EXPECT_EQ(asked.options.value("current_folder").toByteArray(), QByteArray("/home/ä\0", 9));
    EXPECT_TRUE(told.empty());
}

TEST_F(PortalSavePanelTest, theQuestionNamesTheKindOfFileByItsContent)
{
    const test::FakeSavePortal portal(server);
    askUntilUnderstood(portal);
    EXPECT_EQ(portal.asked.at(0).filters(),
              (test::FakeSavePortal::Filters{{"CSV", {{1, "text/csv"}}}})); // 1: by type
}

TEST_F(PortalSavePanelTest, theFileThatTheUserHasChosenIsTold)
{
    test::FakeSavePortal portal(server);
    askUntilUnderstood(portal);
    portal.respond(yes);
    expectTold(End::chosen, "/home/a b/c.csv");
}

TEST_F(PortalSavePanelTest, anAnswerAsQuickAsTheCallIsNotLost)
{
    test::FakeSavePortal portal(server);
    portal.answerAtOnce = yes;
    ask();
    expectTold(End::chosen, "/home/a b/c.csv");
}

TEST_F(PortalSavePanelTest, aPortalThatNamesItsRequestsOtherwiseIsListenedTo)
{
    test::FakeSavePortal portal(server);
    portal.manner = Manner::oldNames;
    askUntilUnderstood(portal);
    // Its object is listened to some time after it was named, which no user is too quick for.
    ASSERT_TRUE(test::turnLoopUntil([&] {
        portal.respond(yes);
        return !told.empty();
    }));
    expectTold(End::chosen, "/home/a b/c.csv");
}

TEST_F(PortalSavePanelTest, howThePanelEndsDecides)
{
    const struct {
        QVariantList response;
        End end;
    } rows[] = {
        {answer(1), End::cancelled},
        {answer(1, chosen(QStringList("file:///home/c.csv"))), End::cancelled},
        {answer(2), End::cancelled}, // GTK's, for the Escape key
        {answer(77), End::cancelled},
        {answer(0), End::unavailable},
        {answer(0, chosen(QStringList())), End::unavailable},
        {answer(0, chosen("file:///home/c.csv")), End::unavailable},
        {answer(0, chosen(7)), End::unavailable},
        {{QStringLiteral("0"), QVariantMap()}, End::unavailable},
        {{0U}, End::unavailable},
        {{}, End::unavailable},
    };
    test::FakeSavePortal portal(server);
    for (const auto& row : rows) {
        told.clear();
        portal.asked.clear();
        delete panel;
        panel = new PortalSavePanel(client);
        askUntilUnderstood(portal);
        portal.respond(row.response);
        SCOPED_TRACE(&row - rows);
        expectTold(row.end);
    }
}

TEST_F(PortalSavePanelTest, nobodyElseCanAnswer)
{
    test::FakeSavePortal portal(server);
    const auto other =
        QDBusConnection::connectToBus(QString::fromStdString(bus.address()), "other");
    askUntilUnderstood(portal);
    portal.respondFrom(other, answer(0, chosen(QStringList("file:///etc/passwd"))));
    settle(other.baseService());
    EXPECT_TRUE(told.empty());
    portal.respond(yes);
    expectTold(End::chosen, "/home/a b/c.csv");
    QDBusConnection::disconnectFromBus("other");
}

TEST_F(PortalSavePanelTest, ofSeveralAnswersTheFirstCounts)
{
    test::FakeSavePortal portal(server);
    askUntilUnderstood(portal);
    for (int i = 0; i < 100; ++i)
        portal.respond(i == 0 ? yes : answer(1));
    settle(server.baseService());
    expectTold(End::chosen, "/home/a b/c.csv");
}

TEST_F(PortalSavePanelTest, withoutAPortalItIsToldSoButNotBeforeTheCallHasReturned)
{
    ask();
    EXPECT_TRUE(told.empty());
    expectTold(End::unavailable);
}

TEST_F(PortalSavePanelTest, withoutABusItIsToldSoButNotBeforeTheCallHasReturned)
{
    delete panel;
    panel = new PortalSavePanel(QDBusConnection("no such bus"));
    ask();
    EXPECT_TRUE(told.empty());
    expectTold(End::unavailable);
}

TEST_F(PortalSavePanelTest, aPortalThatHasNoPanelsOrMakesNoSenseCountsAsNone)
{
    for (const Manner manner : {Manner::withoutPanels, Manner::elsewhere}) {
        told.clear();
        test::FakeSavePortal portal(server);
        portal.manner = manner;
        delete panel;
        panel = new PortalSavePanel(client);
        ask();
        expectTold(End::unavailable);
    }
}

TEST_F(PortalSavePanelTest, aPortalThatStaysSilentIsNotWaitedForAndToldThatItIsTooLate)
{
    test::FakeSavePortal portal(server);
    portal.manner = Manner::silent;
    ask();
    expectTold(End::unavailable);
    portal.respond(yes);
    settle(server.baseService());
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(PortalSavePanelTest, aPortalThatGoesAwayTakesItsPanelWithIt)
{
    test::FakeSavePortal portal(server);
    askUntilUnderstood(portal);
    portal.leave();
    expectTold(End::unavailable);
}

TEST(PortalSavePanel, onlyOneFileOnThisMachineIsAPath)
{
    const struct {
        QString uri;
        std::optional<QString> path;
    } rows[] = {
        {"file:///home/c.csv", "/home/c.csv"},
        {"file:///home/%C3%A4%20%25.csv", "/home/ä %.csv"},
        {"FILE:///home/c.csv", "/home/c.csv"},
        {"file:///home/..%2Fc.csv", "/home/../c.csv"},
        {"file://other/home/c.csv", std::nullopt},
        {"file:///home/", std::nullopt},
        {"file:///", std::nullopt},
        {"file:", std::nullopt},
        {"file:home/c.csv", std::nullopt},
        {"file:///home/c%00.csv", std::nullopt},
        {"file:///home/c.csv?x", std::nullopt},
        {"file:///home/c.csv#x", std::nullopt},
        {"https://example.org/c.csv", std::nullopt},
        {"smb://host/c.csv", std::nullopt},
        {"/home/c.csv", std::nullopt},
        {"", std::nullopt},
        {"file:///" + QString(5000, 'x'), std::nullopt},
        {"file:///" + QString(20'000'000, 'x'), std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.uri.left(40).toStdString());
        EXPECT_EQ(PortalSavePanel::chosenPath(chosen(QStringList(row.uri))), row.path);
    }
    EXPECT_EQ(PortalSavePanel::chosenPath({}), std::nullopt);
    EXPECT_EQ(PortalSavePanel::chosenPath(chosen(QStringList{"file:///a", "file:///b"})),
              std::nullopt);
}

} // namespace
} // namespace vellumor::portalSavePanelTest
