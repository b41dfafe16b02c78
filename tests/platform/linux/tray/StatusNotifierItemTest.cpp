#include "platform/linux/tray/StatusNotifierItem.h"

#include "support/BusTesting.h"

namespace vellumor::statusNotifierItemTest {
namespace {

using test::signatureOf;
using Face = StatusNotifierItem::Face;

constexpr const char* path = StatusNotifierItem::objectPath;
constexpr const char* interface = "org.kde.StatusNotifierItem";
const BusPictures onePixel{{1, 1, QByteArray("\x80\xee\xee\xec", 4)}};

struct StatusNotifierItemTest : test::BusTest {
    struct Click {
        QPoint position;
        std::string token;
        bool operator==(const Click&) const = default;
    };
    std::vector<Click> clicks;
    StatusNotifierItem item{QStringLiteral("vellumor-2"),
                            [this](QPoint position, const std::string& token) {
                                clicks.push_back({position, token});
                            }};
    QString name = serve(path, &item);
    std::vector<std::string> signalsSeen;

    StatusNotifierItemTest()
    {
        const auto see = [this](const char* signal) { signalsSeen.emplace_back(signal); };
        QObject::connect(&item, &StatusNotifierItem::NewIcon, [see] { see("NewIcon"); });
        QObject::connect(&item, &StatusNotifierItem::NewTitle, [see] { see("NewTitle"); });
        QObject::connect(&item, &StatusNotifierItem::NewToolTip, [see] { see("NewToolTip"); });
    }
    QDBusMessage ask(const char* method, const QVariantList& arguments)
    {
        const auto answer = call(name, path, interface, method, arguments);
        QCoreApplication::processEvents();
        return answer;
    }
};

TEST_F(StatusNotifierItemTest, everyPropertyHasItsValueAndItsSignature)
{
    item.setFace({onePixel, QStringLiteral("gauge-symbolic"), QStringLiteral("Work 41%"),
                  QStringLiteral("Work &amp; 41%")});
    const auto all = properties(name, path, interface);
    struct Row {
        const char* name;
        const char* signature;
        QVariant value;
    };
    const Row rows[] = {
        {"Category", "s", "ApplicationStatus"},
        {"Id", "s", "vellumor-2"},
        {"Title", "s", "Work 41%"},
        {"Status", "s", "Active"},
        {"WindowId", "i", 0},
        {"IconName", "s", "gauge-symbolic"},
        {"IconAccessibleDesc", "s", "Work 41%"},
        {"ItemIsMenu", "b", false},
        {"Menu", "o", QVariant::fromValue(QDBusObjectPath("/MenuBar"))},
        {"IconPixmap", "a(iiay)", {}},
        {"ToolTip", "(sa(iiay)ss)", {}},
    };
    EXPECT_EQ(all.size(), std::size(rows));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QVariant value = all.value(QLatin1String(row.name));
        EXPECT_EQ(signatureOf(value), row.signature);
        if (row.value.isValid()) {
            EXPECT_EQ(value, row.value);
        }
    }
    EXPECT_EQ(qdbus_cast<BusPictures>(all["IconPixmap"]), onePixel);
    const auto toolTip = qdbus_cast<BusToolTip>(all["ToolTip"]);
    EXPECT_EQ(toolTip.iconName, QString());
    EXPECT_EQ(toolTip.pictures, BusPictures());
    EXPECT_EQ(toolTip.title, QStringLiteral("Work &amp; 41%"));
    EXPECT_EQ(toolTip.text, QString());
}

TEST_F(StatusNotifierItemTest, onlyWhatHasChangedIsTold)
{
    const auto before = QStringLiteral("Work 41%");
    const auto after = QStringLiteral("Work 42%");
    const auto icon = QStringLiteral("gauge");
    const Face face{onePixel, {}, before, before};
    struct Row {
        Face face;
        std::vector<std::string> told;
    };
    const BusPictures other{{1, 1, QByteArray("\xff\0\0\0", 4)}};
    const Row rows[] = {
        {face, {"NewIcon", "NewTitle", "NewToolTip"}},
        {face, {}},
        {{other, {}, before, before}, {"NewIcon"}},
        {{other, icon, before, before}, {"NewIcon"}},
        {{other, icon, after, before}, {"NewTitle"}},
        {{other, icon, after, after}, {"NewToolTip"}},
        {{other, icon, after, after}, {}},
    };
    for (const auto& [shown, told] : rows) {
        signalsSeen.clear();
        item.setFace(shown);
        EXPECT_EQ(signalsSeen, told);
    }
}

TEST_F(StatusNotifierItemTest, bothKindsOfClickTellWhereTheyWere)
{
    ask("Activate", {1200, 14});
    ask("SecondaryActivate", {-7, 2147483647});
    EXPECT_EQ(clicks, (std::vector<Click>{{{1200, 14}, ""}, {{-7, 2147483647}, ""}}));
}

TEST_F(StatusNotifierItemTest, aClickIsHandledAfterTheAnswer)
{
    item.Activate(3, 4);
    EXPECT_TRUE(clicks.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(clicks, (std::vector<Click>{{{3, 4}, ""}}));
}

TEST_F(StatusNotifierItemTest, aTokenGoesToTheNextClickAndToNoOther)
{
    ask("ProvideXdgActivationToken", {"first"});
    ask("ProvideXdgActivationToken", {"second"});
    ask("ProvideXdgActivationToken", {QString(4097, 'x')}); // nothing that a compositor makes
    ask("Activate", {1, 2});
    ask("Activate", {1, 2});
    EXPECT_EQ(clicks, (std::vector<Click>{{{1, 2}, "second"}, {{1, 2}, ""}}));
}

TEST_F(StatusNotifierItemTest, everythingElseThatIsCalledDoesNothing)
{
    EXPECT_EQ(ask("ContextMenu", {1, 2}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(ask("Scroll", {120, "vertical"}).type(), QDBusMessage::ReplyMessage);
    const auto unknown = QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(ask("Activate", {"1", "2"}).errorName(), unknown);
    EXPECT_EQ(ask("Activate", {}).errorName(), unknown);
    EXPECT_EQ(ask("setFace", {1}).errorName(), unknown);
    const auto set =
        call(name, path, "org.freedesktop.DBus.Properties", "Set",
             {QString::fromLatin1(interface), "Title", QVariant::fromValue(QDBusVariant("mine"))});
    EXPECT_EQ(set.type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(item.title(), QString());
    EXPECT_TRUE(clicks.empty());
    EXPECT_TRUE(signalsSeen.empty());
}

} // namespace
} // namespace vellumor::statusNotifierItemTest
