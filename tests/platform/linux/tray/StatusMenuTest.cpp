#include "platform/linux/tray/StatusMenu.h"

#include "support/BusTesting.h"

namespace vellumor::statusMenuTest {
namespace {

using test::signatureOf;
using Clicks = std::vector<std::string>;

constexpr const char* path = "/MenuBar";
constexpr const char* interface = "com.canonical.dbusmenu";

// Four entries: 1 with a shortcut and an underscore, 2 a line, 3, and 4 without anything to do.
struct StatusMenuTest : test::BusTest {
    Clicks clicks;
    StatusMenu menu{{{"Refresh_all", {"Control", "r"}, [this] { clicks.emplace_back("refresh"); }},
                     {"", {}, {}},
                     {"Quit", {}, [this] { clicks.emplace_back("quit"); }},
                     {"Nothing", {}, {}}}};
    QString name = serve(path, &menu);

    QDBusMessage ask(const char* method, const QVariantList& arguments)
    {
        return call(name, path, interface, method, arguments);
    }
    static QVariant ids(const QList<int>& list) { return QVariant::fromValue(list); }
    static QVariant events(const QList<MenuEvent>& list) { return QVariant::fromValue(list); }
    static MenuEvent event(int id, const char* what = "clicked")
    {
        return {id, QString::fromLatin1(what), QDBusVariant(0), 0};
    }
    // Of all clicks that have been sent so far.
    Clicks clicked()
    {
        settle(name);
        QCoreApplication::processEvents();
        return clicks;
    }
};

const QVariantMap rootProperties{{"children-display", "submenu"}};
const QVariantMap lineProperties{{"enabled", true}, {"type", "separator"}, {"visible", true}};

QVariantMap named(const char* label)
{
    return {{"enabled", true}, {"label", label}, {"visible", true}};
}

bool isError(const QDBusMessage& answer, const char* name)
{
    return answer.type() == QDBusMessage::ErrorMessage && answer.errorName() == QLatin1String(name);
}
constexpr const char* invalid = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char* unknownMethod = "org.freedesktop.DBus.Error.UnknownMethod";

TEST_F(StatusMenuTest, theLayoutHoldsEveryEntryWithItsProperties)
{
    const auto answer = ask("GetLayout", {0, -1, QStringList()});
    ASSERT_EQ(answer.signature(), QStringLiteral("u(ia{sv}av)"));
    EXPECT_EQ(answer.arguments()[0].toUInt(), 1U);
    const auto layout = qdbus_cast<MenuLayout>(answer.arguments()[1]);
    EXPECT_EQ(layout.id, 0);
    EXPECT_EQ(layout.properties, rootProperties);
    ASSERT_EQ(layout.children.size(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(layout.children[i].id, i + 1);
    EXPECT_EQ(layout.children[1].properties, lineProperties);
    EXPECT_EQ(layout.children[2].properties, named("Quit"));
    auto refresh = layout.children[0].properties;
    const QVariant shortcut = refresh.take(QStringLiteral("shortcut"));
    EXPECT_EQ(refresh, named("Refresh__all"));
    EXPECT_EQ(signatureOf(shortcut), "aas");
    EXPECT_EQ(qdbus_cast<QList<QStringList>>(shortcut), (QList<QStringList>{{"Control", "r"}}));
}

TEST_F(StatusMenuTest, theLayoutIsAsDeepAndAsWideAsAskedFor)
{
    struct Row {
        int parent;
        int depth;
        int children;
    };
    for (const auto& [parent, depth, children] :
         {Row{0, -1, 4}, Row{0, 1, 4}, Row{0, 2147483647, 4}, Row{0, 0, 0}, Row{3, -1, 0}}) {
        const auto answer = ask("GetLayout", {parent, depth, QStringList{"label", "nonsense"}});
        const auto layout = qdbus_cast<MenuLayout>(answer.arguments().value(1));
        EXPECT_EQ(layout.id, parent);
        EXPECT_EQ(layout.children.size(), children);
        const QVariantMap label{{"label", "Quit"}};
        EXPECT_EQ(parent == 0 ? label : layout.properties, label);
        if (children != 0) {
            EXPECT_EQ(layout.children[2].properties, label);
            EXPECT_EQ(layout.children[1].properties, QVariantMap());
        }
    }
}

TEST_F(StatusMenuTest, propertiesOfAGroupAreToldOnceAnEntry)
{
    const std::pair<QList<int>, QList<int>> rows[] = {
        {{}, {0, 1, 2, 3, 4}},
        {{3, 2}, {2, 3}},
        {{3, 3, 3}, {3}},
        {{-1, 5, 2147483647, -2147483647 - 1, 4}, {4}},
        {{77}, {}},
    };
    for (const auto& [asked, told] : rows) {
        const auto answer = ask("GetGroupProperties", {ids(asked), QStringList()});
        ASSERT_EQ(answer.signature(), QStringLiteral("a(ia{sv})"));
        QList<int> found;
        for (const auto& entry : qdbus_cast<QList<MenuProperties>>(answer.arguments()[0])) {
            found.append(entry.id);
            if (entry.id == 3) {
                EXPECT_EQ(entry.properties, named("Quit"));
            }
        }
        EXPECT_EQ(found, told);
    }
}

TEST_F(StatusMenuTest, oneProperty)
{
    const auto answer = ask("GetProperty", {2, "type"});
    EXPECT_EQ(answer.signature(), QStringLiteral("v"));
    EXPECT_EQ(answer.arguments()[0].value<QDBusVariant>().variant(), QVariant("separator"));
    EXPECT_TRUE(isError(ask("GetProperty", {2, "label"}), invalid));
    EXPECT_TRUE(isError(ask("GetProperty", {99, "label"}), invalid));
    EXPECT_TRUE(isError(ask("GetProperty", {-1, "label"}), invalid));
}

TEST_F(StatusMenuTest, aClickRunsTheEntrysActionAfterTheAnswer)
{
    struct Row {
        int id;
        const char* event;
        Clicks clicks;
    };
    for (const auto& [id, what, expected] :
         {Row{1, "clicked", {"refresh"}}, Row{3, "clicked", {"quit"}}, Row{3, "hovered", {}},
          Row{0, "opened", {}}, Row{0, "clicked", {}}, Row{2, "clicked", {}},
          Row{4, "clicked", {}}}) {
        clicks.clear();
        menu.Event(id, QString::fromLatin1(what), QDBusVariant(0), 0);
        EXPECT_EQ(clicks, Clicks()); // not yet
        QCoreApplication::processEvents();
        EXPECT_EQ(clicks, expected);
        clicks.clear();
        const auto answer = ask("Event", {id, what, QVariant::fromValue(QDBusVariant("")), 7U});
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage);
        EXPECT_EQ(clicked(), expected);
    }
}

TEST_F(StatusMenuTest, eventsInAGroupClickEachEntryOnce)
{
    const auto answer =
        ask("EventGroup",
            {events({event(0, "opened"), event(3), event(9), event(3), event(1), event(-4)})});
    EXPECT_EQ(answer.signature(), QStringLiteral("ai"));
    EXPECT_EQ(qdbus_cast<QList<int>>(answer.arguments()[0]), (QList<int>{9, -4}));
    EXPECT_EQ(clicked(), (Clicks{"quit", "refresh"}));
}

TEST_F(StatusMenuTest, aGroupOfWhichNothingIsKnownIsAnError)
{
    EXPECT_TRUE(isError(ask("EventGroup", {events({event(5), event(-1)})}), invalid));
    EXPECT_TRUE(isError(ask("AboutToShowGroup", {ids({5, -1})}), invalid));
    EXPECT_EQ(ask("EventGroup", {events({})}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(ask("AboutToShowGroup", {ids({})}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(clicked(), Clicks());
}

TEST_F(StatusMenuTest, nothingNeedsAnUpdateBeforeItIsShown)
{
    const auto one = ask("AboutToShow", {0});
    EXPECT_EQ(one.arguments(), QVariantList{false});
    const auto group = ask("AboutToShowGroup", {ids({0, 8, 3})});
    ASSERT_EQ(group.signature(), QStringLiteral("aiai"));
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments()[0]), QList<int>());
    EXPECT_EQ(qdbus_cast<QList<int>>(group.arguments()[1]), QList<int>{8});
}

TEST_F(StatusMenuTest, whatIsNotThereIsAnErrorAndChangesNothing)
{
    const auto nothing = QVariant::fromValue(QDBusVariant(0));
    EXPECT_TRUE(isError(ask("GetLayout", {5, -1, QStringList()}), invalid));
    EXPECT_TRUE(isError(ask("GetLayout", {-1, -1, QStringList()}), invalid));
    EXPECT_TRUE(isError(ask("Event", {-2147483647 - 1, "clicked", nothing, 0U}), invalid));
    EXPECT_TRUE(isError(ask("AboutToShow", {2147483647}), invalid));
    EXPECT_TRUE(isError(ask("Event", {"3", "clicked", nothing, 0U}), unknownMethod));
    EXPECT_TRUE(isError(ask("Event", {}), unknownMethod));
    EXPECT_TRUE(isError(ask("EventGroup", {QStringList{"3"}}), unknownMethod));
    EXPECT_TRUE(isError(ask("click", {3}), unknownMethod));
    EXPECT_EQ(clicked(), Clicks());
}

TEST_F(StatusMenuTest, hugeGroupsAreAnsweredWithWhatIsThere)
{
    QList<int> many;
    QList<MenuEvent> clicksInOne;
    for (int i = 0; i < 100'000; ++i) {
        many.append(i % 7);
        clicksInOne.append(event(3));
    }
    const auto properties = ask("GetGroupProperties", {ids(many), QStringList()});
    EXPECT_EQ(qdbus_cast<QList<MenuProperties>>(properties.arguments()[0]).size(), 5);
    EXPECT_EQ(ask("EventGroup", {events(clicksInOne)}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(clicked(), Clicks{"quit"});
}

TEST_F(StatusMenuTest, thePropertiesOfTheMenuItself)
{
    const auto all = properties(name, path, interface);
    EXPECT_EQ(all, (QVariantMap{{"Version", 3U},
                                {"TextDirection", "ltr"},
                                {"Status", "normal"},
                                {"IconThemePath", QStringList()}}));
}

} // namespace
} // namespace vellumor::statusMenuTest
