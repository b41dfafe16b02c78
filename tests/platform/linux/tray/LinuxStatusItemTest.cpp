#include "platform/linux/tray/LinuxStatusItem.h"

#include "platform/linux/tray/FakePortal.h"
#include "platform/linux/tray/FakeTrayHost.h"
#include "platform/linux/tray/LabelTesting.h"
#include "platform/linux/tray/SignalCounter.h"
#include "support/BusTesting.h"
#include "support/FakeClock.h"
#include "support/LoopTicks.h"
#include "support/PassWorker.h"

#include <sys/prctl.h>

#include <memory>

namespace vellumor::linuxStatusItemTest {
namespace {

using namespace std::chrono_literals;
using test::FakePortal;
using test::FakeTrayHost;
using test::label;
using test::turnLoopUntil;

constexpr const char* itemInterface = "org.kde.StatusNotifierItem";
constexpr const char* noTray = "no tray — start the program again to open its window";

// How often a line stands in what was logged meanwhile.
std::size_t count(const std::string& text, const std::string& line)
{
    std::size_t found = 0;
    for (auto at = text.find(line); at != std::string::npos; at = text.find(line, at + 1))
        ++found;
    return found;
}

struct LinuxStatusItemTest : test::BusTest {
    test::FakeClock clock;
    Worker worker;
    std::unique_ptr<LinuxStatusItem> item;
    std::vector<std::optional<QRect>> anchors;
    std::vector<std::string> tokens;
    int refreshes = 0;

    StatusItem::Handlers handlers()
    {
        return {[this](std::optional<QRect> anchor, const std::string& token) {
                    anchors.push_back(anchor);
                    tokens.push_back(token);
                },
                {{"Refresh", {"Control", "r"}, [this] { ++refreshes; }}}};
    }
    void start(StatusLabel shown)
    {
        item = std::make_unique<LinuxStatusItem>(clock, worker, bus.address());
        item->show(handlers());
        item->setLabel(std::move(shown));
    }
    std::unique_ptr<FakeTrayHost>
    host(FakeTrayHost::Answer answer = FakeTrayHost::Answer::accepts) const
    {
        return std::make_unique<FakeTrayHost>(bus.address(), answer);
    }
    // Lets the gaps between items pass, and no more.
    bool hasItems(const FakeTrayHost& there, std::size_t items)
    {
        if (clock.untilNextAlarm() <= ItemRow::gap && clock.pendingAlarms() != 0)
            clock.advance(ItemRow::gap);
        return there.items().size() >= items;
    }
    bool waitForItems(const FakeTrayHost& there, std::size_t items)
    {
        return turnLoopUntil([&] { return hasItems(there, items); }) &&
               there.items().size() == items;
    }
    bool isOnBus(const QString& name) const
    {
        return client.interface()->isServiceRegistered(name).value();
    }
    QVariantMap propertiesOf(const QString& name)
    {
        return properties(name, "/StatusNotifierItem", itemInterface);
    }
    BusPictures picturesOf(const QString& name)
    {
        return qdbus_cast<BusPictures>(propertiesOf(name)["IconPixmap"]);
    }
    QDBusMessage callItem(const QString& name, const char* method, const QVariantList& arguments)
    {
        const auto answer = call(name, "/StatusNotifierItem", itemInterface, method, arguments);
        QCoreApplication::processEvents();
        return answer;
    }
};

QString nameOf(int number)
{
    return QStringLiteral("org.kde.StatusNotifierItem-%1-%2").arg(::getpid()).arg(number);
}

TEST_F(LinuxStatusItemTest, anItemComesToTheHostUnderItsNameWithItsFaceAndItsMenu)
{
    const auto there = host();
    start(label(11, 1, "Work 41%"));
    ASSERT_TRUE(waitForItems(*there, 1));
    EXPECT_EQ(there->items()[0], nameOf(1));
    const auto all = propertiesOf(nameOf(1));
    EXPECT_EQ(all["Id"], QVariant("vellumor"));
    EXPECT_EQ(all["Title"], QVariant("Work 41%"));
    const auto pictures = qdbus_cast<BusPictures>(all["IconPixmap"]);
    ASSERT_EQ(pictures.size(), 3);
    EXPECT_EQ(pictures[0].width, 22);
    EXPECT_EQ(pictures[2].height, 66);
    const auto menu = all["Menu"].value<QDBusObjectPath>().path().toStdString();
    const auto click = call(nameOf(1), menu.c_str(), "com.canonical.dbusmenu", "Event",
                            {1, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
    EXPECT_EQ(click.type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(turnLoopUntil([&] { return refreshes == 1; }));
}

TEST_F(LinuxStatusItemTest, nothingComesBeforeThereIsALabel)
{
    const auto there = host();
    item = std::make_unique<LinuxStatusItem>(clock, worker, bus.address());
    item->show(handlers());
    ASSERT_TRUE(turnLoopUntil([&] { return clock.pendingAlarms() == 0; })); // the host is found
    settle(there->owner());
    EXPECT_TRUE(there->items().empty());
    item->setLabel(label(11, 1, "Work 41%"));
    EXPECT_TRUE(waitForItems(*there, 1));
}

TEST_F(LinuxStatusItemTest, aHostThatComesLateOrAgainGetsTheItems)
{
    start(label(65, 2, "two"));
    auto first = host();
    ASSERT_TRUE(waitForItems(*first, 2));
    first.reset();
    const auto second = host();
    ASSERT_TRUE(waitForItems(*second, 2));
    EXPECT_EQ(second->items(), (std::vector{nameOf(1), nameOf(2)}));
}

TEST_F(LinuxStatusItemTest, aHostThatRefusesOneIsOfferedTheOthers)
{
    const auto there = host(FakeTrayHost::Answer::refuses);
    start(label(65, 3, "three"));
    EXPECT_TRUE(waitForItems(*there, 3));
}

// The first that comes is the one at the right: whoever comes later stands left of it.
TEST_F(LinuxStatusItemTest, aWideLabelIsOneItemAnAccountFromRightToLeft)
{
    const auto there = host();
    start(label(65, 4, "four"));
    ASSERT_TRUE(waitForItems(*there, 4));
    const char* ids[] = {"vellumor", "vellumor-2", "vellumor-3", "vellumor-4"};
    const auto faces = ItemLayout::pictures(label(65, 4, "four"), ItemLayout::Host::squareCells);
    for (std::size_t i = 0; i < 4; ++i) {
        const QString name = there->items()[i];
        const auto all = propertiesOf(name);
        EXPECT_EQ(all["Id"], QVariant(ids[i]));
        EXPECT_EQ(all["Title"], QVariant("four"));
        EXPECT_EQ(picturesOf(name), busPictures(faces[3 - i], QColor(0x2e, 0x34, 0x36)));
    }
}

TEST_F(LinuxStatusItemTest, itemsComeOneAfterTheOtherWithAGapBetweenThem)
{
    const auto there = host();
    start(label(65, 3, "three"));
    ASSERT_TRUE(turnLoopUntil([&] { return there->items().size() == 1; }));
    for (std::size_t next = 2; next <= 3; ++next) {
        ASSERT_TRUE(turnLoopUntil([&] { return clock.untilNextAlarm() == ItemRow::gap; }));
        clock.advance(ItemRow::gap - 1ms);
        item->setLabel(label(65, 3, "three, and " + std::to_string(next))); // is no reason to hurry
        test::passWorker(worker);
        for (int turns = 0; turns < 5; ++turns) // joining, a name, the host: each takes its turn
            settle(there->owner());
        EXPECT_EQ(there->items().size(), next - 1);
        clock.advance(1ms);
        ASSERT_TRUE(turnLoopUntil([&] { return there->items().size() == next; }));
    }
    settle(there->owner());
    EXPECT_EQ(clock.pendingAlarms(), 0U); // nothing runs once all are there
}

TEST_F(LinuxStatusItemTest, itemsThatAreNotNeededAnyMoreLeaveTheBus)
{
    const auto there = host();
    start(label(65, 3, "three"));
    ASSERT_TRUE(waitForItems(*there, 3));
    item->setLabel(label(11, 3, "narrow"));
    EXPECT_TRUE(turnLoopUntil([&] { return !isOnBus(nameOf(2)) && !isOnBus(nameOf(3)); }));
    EXPECT_TRUE(isOnBus(nameOf(1)));
    item->setLabel(label(65, 2, "two"));
    ASSERT_TRUE(waitForItems(*there, 4));
    EXPECT_EQ(there->items()[3], nameOf(4)); // no name comes twice
    EXPECT_EQ(propertiesOf(nameOf(4))["Id"], QVariant("vellumor-2"));
}

TEST_F(LinuxStatusItemTest, changesWhileItemsAreOnTheirWayLeaveNoneBehind)
{
    const auto there = host();
    start(label(65, 4, "four"));
    ASSERT_TRUE(turnLoopUntil([&] { return !there->items().empty(); }));
    item->setLabel(label(11, 1, "one"));
    item->setLabel(label(65, 2, "two"));
    ASSERT_TRUE(turnLoopUntil([&] { return hasItems(*there, 2); }));
    for (const QString& name : there->items())
        EXPECT_TRUE(turnLoopUntil([&] {
            return !isOnBus(name) || name == there->items().front() ||
                   name == there->items().back();
        }));
    EXPECT_EQ(propertiesOf(there->items().back())["Id"], QVariant("vellumor-2"));
}

TEST_F(LinuxStatusItemTest, theSymbolStandsForTheWholeLabelOnly)
{
    const auto there = host();
    StatusLabel shown = label(11, 0, "no accounts");
    shown.iconName = "gauge-symbolic";
    start(shown);
    ASSERT_TRUE(waitForItems(*there, 1));
    EXPECT_EQ(propertiesOf(nameOf(1))["IconName"], QVariant("gauge-symbolic"));
    shown = label(65, 2, "two");
    shown.iconName = "gauge-symbolic";
    item->setLabel(shown);
    ASSERT_TRUE(waitForItems(*there, 2));
    EXPECT_EQ(propertiesOf(nameOf(1))["IconName"], QVariant(""));
}

TEST_F(LinuxStatusItemTest, waybarGetsOneWideItemAndAToolTipWithoutMarkup)
{
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "waybar"); // the fake host is this process
    const auto there = host();
    start(label(65, 4, "four"));
    item->setLabel(label(65, 4, "<b> & co"));
    const bool came = waitForItems(*there, 1);
    ::prctl(PR_SET_NAME, before);
    ASSERT_TRUE(came);
    const auto pictures = picturesOf(nameOf(1));
    ASSERT_EQ(pictures.size(), 3);
    EXPECT_EQ(pictures[1].width, 130);
    EXPECT_EQ(pictures[1].height, 38);
    const auto all = propertiesOf(nameOf(1));
    EXPECT_EQ(all["Title"], QVariant("<b> & co"));
    EXPECT_EQ(qdbus_cast<BusToolTip>(all["ToolTip"]).title, QStringLiteral("&lt;b&gt; &amp; co"));
}

TEST_F(LinuxStatusItemTest, theSameLabelAgainSendsNothing)
{
    const auto there = host();
    start(label(11, 1, "Work 41%"));
    ASSERT_TRUE(waitForItems(*there, 1));
    test::SignalCounter counter;
    client.connect(QString(), QString(), QLatin1String(itemInterface), QString(), &counter,
                   SLOT(on()));
    settle(nameOf(1));
    item->setLabel(label(11, 1, "Work 41%"));
    settle(nameOf(1));
    EXPECT_EQ(counter.count, 0);
    item->setLabel(label(11, 1, "Work 42%"));
    ASSERT_TRUE(turnLoopUntil([&] { return counter.count >= 2; })); // title and tool tip
    settle(nameOf(1));
    EXPECT_EQ(counter.count, 2);
}

TEST_F(LinuxStatusItemTest, theTintFollowsTheDesktop)
{
    FakePortal portal(bus.address(), 1U);
    const auto there = host();
    start(label(11, 1, "Work 41%"));
    ASSERT_TRUE(waitForItems(*there, 1));
    const auto face = ItemLayout::pictures(label(11, 1, ""), ItemLayout::Host::squareCells)[0];
    const auto onDark = busPictures(face, QColor(0xee, 0xee, 0xec));
    const auto onLight = busPictures(face, QColor(0x2e, 0x34, 0x36));
    EXPECT_TRUE(turnLoopUntil([&] { return picturesOf(nameOf(1)) == onDark; }));
    portal.set(2U);
    EXPECT_TRUE(turnLoopUntil([&] { return picturesOf(nameOf(1)) == onLight; }));
}

TEST_F(LinuxStatusItemTest, aClickTellsItsPlaceOnTheScreenAndItsToken)
{
    const auto there = host();
    start(label(11, 1, "Work 41%"));
    ASSERT_TRUE(waitForItems(*there, 1));
    callItem(nameOf(1), "ProvideXdgActivationToken", {"token"});
    callItem(nameOf(1), "Activate", {300, 14});
    callItem(nameOf(1), "SecondaryActivate", {999999, -5});
    ASSERT_TRUE(turnLoopUntil([&] { return anchors.size() == 2; }));
    EXPECT_EQ(anchors[0], QRect(300, 14, 1, 1));
    EXPECT_EQ(anchors[1], std::nullopt); // on no screen
    EXPECT_EQ(tokens, (std::vector<std::string>{"token", ""}));
}

TEST_F(LinuxStatusItemTest, withoutATrayThatIsSaidOnceAndNothingRunsAnyMore)
{
    testing::internal::CaptureStderr();
    start(label(11, 1, "Work 41%"));
    settle(QStringLiteral("org.freedesktop.DBus"));
    clock.advance(9999ms);
    const std::string before = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    clock.advance(1ms);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    auto late = host();
    EXPECT_TRUE(waitForItems(*late, 1)); // and yet somebody may come
    late.reset();
    EXPECT_TRUE(turnLoopUntil([&] { return clock.pendingAlarms() == 1; }));
    clock.advance(10s);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    const std::string after = testing::internal::GetCapturedStderr();
    EXPECT_EQ(count(before, noTray), 0U);
    EXPECT_EQ(count(after, noTray), 1U);
}

TEST_F(LinuxStatusItemTest, aHostThatIsThereInTimeIsNoMissingTray)
{
    testing::internal::CaptureStderr();
    const auto there = host();
    start(label(11, 1, "Work 41%"));
    const bool came = waitForItems(*there, 1);
    const auto alarms = clock.pendingAlarms();
    clock.advance(60s);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(came);
    EXPECT_EQ(alarms, 0U);
    EXPECT_EQ(text, "");
}

TEST_F(LinuxStatusItemTest, withoutABusTheProgramGoesOn)
{
    testing::internal::CaptureStderr();
    item = std::make_unique<LinuxStatusItem>(clock, worker, "disabled:");
    item->show(handlers());
    item->setLabel(label(65, 4, "four"));
    QCoreApplication::processEvents();
    clock.advance(60s);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(count(text, "no session bus"), 1U);
    EXPECT_EQ(count(text, noTray), 1U);
    EXPECT_EQ(count(text, "\n"), 2U);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
}

TEST_F(LinuxStatusItemTest, aBusThatStopsToAnswerHoldsNobodyUp)
{
    item = std::make_unique<LinuxStatusItem>(clock, worker, bus.address());
    const auto there = host();
    bus.freeze();
    const test::LoopTicks ticks;
    item->show(handlers());
    item->setLabel(label(65, 4, "four"));
    EXPECT_TRUE(turnLoopUntil([&] { return ticks.count() >= 20; }));
    clock.advance(60s);
    EXPECT_EQ(clock.pendingAlarms(), 0U);
    bus.thaw();
    EXPECT_TRUE(waitForItems(*there, 4));
}

} // namespace
} // namespace vellumor::linuxStatusItemTest
