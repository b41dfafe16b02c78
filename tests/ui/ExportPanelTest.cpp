#include "ui/ExportPanel.h"

#include "FakeSavePortal.h"
#include "support/BusTesting.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QThread>
#include <QThreadPool>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellumor::exportPanelTest {
namespace {

using test::contentsOf;

// From here on no file grows beyond so many bytes, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes)
        : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }

private:
    rlimit m_before{};
    void (*m_signal)(int);
};

std::string write(const std::string& path, const std::string& bytes)
{
    return ExportPanel::write(QString::fromStdString(path), bytes);
}

TEST(ExportPanel, aFileIsWrittenAndReplacesTheOneThatWasThere)
{
    const test::TempFolder folder;
    const std::string file = folder.file("ä ö.csv");
    for (const std::string& bytes : {std::string("first\0line\n", 11), std::string("new"),
                                     std::string(3'000'000, 'x'), std::string()}) {
        EXPECT_EQ(write(file, bytes), "");
        EXPECT_EQ(contentsOf(file), bytes);
    }
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"ä ö.csv"});
}

TEST(ExportPanel, onAFullDiskTheOldFileStaysAsItIs)
{
    const test::TempFolder folder;
    const std::string file = folder.put("a.csv", "the old one");
    const FullDisk full(1000);
    EXPECT_EQ(write(file, std::string(999, 'x')), "");
    folder.put("a.csv", "the old one");
    EXPECT_NE(write(file, std::string(100'000, 'x')), "");
    EXPECT_EQ(contentsOf(file), "the old one");
    EXPECT_EQ(test::namesIn(folder.path()), std::vector<std::string>{"a.csv"});
}

TEST(ExportPanel, whatCannotBeWrittenSaysWhyAndLeavesNothingBehind)
{
    const test::TempFolder folder;
    const std::string plain = folder.put("plain", "a file");
    const std::string inside = folder.makeFolder("inside");
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto before = test::namesIn(folder.path());
    const struct {
        std::string path;
        std::string reason;
    } rows[] = {
        {folder.file("none/a.csv"), "No such file or directory"},
        {plain + "/a.csv", "Not a directory"},
        {inside, "Not a regular file"},
        {pipe, "Not a regular file"},
        {"/proc/a.csv", "No such file or directory"}, // takes no new files, not even of root
        {folder.file(std::string(300, 'x')), "File name too long"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(write(row.path, "bytes"), row.reason) << row.path;
    EXPECT_EQ(test::namesIn(folder.path()), before);
    EXPECT_EQ(contentsOf(plain), "a file");
    EXPECT_EQ(test::namesIn(inside), std::vector<std::string>());
}

TEST(ExportPanel, aLinkStaysOneAndItsFileIsReplaced)
{
    const test::TempFolder folder;
    const std::string file = folder.put("elsewhere/a.csv", "the old one");
    const std::string link = folder.file("link.csv");
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    EXPECT_EQ(write(link, "new"), "");
    EXPECT_EQ(contentsOf(file), "new");
    struct stat status {};
    ASSERT_EQ(lstat(link.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

struct ExportPanelSaveTest : test::BusTest {
    test::TempFolder home;
    std::vector<std::string> failures;

    void save(const std::string& name = "history.csv")
    {
        ExportPanel::save(
            name, "the bytes",
            [this](const std::string& reason) {
                EXPECT_EQ(QThread::currentThread(), qApp->thread());
                failures.push_back(reason);
            },
            client);
    }
    void answer(test::FakeSavePortal& portal, uint ending, const std::string& path)
    {
        save();
        ASSERT_TRUE(test::turnLoopUntil([&] { return !portal.asked.empty(); }));
        const QString uri = QStringLiteral("file://") + QString::fromStdString(path);
        portal.respond({ending, QVariantMap{{QStringLiteral("uris"), QStringList(uri)}}});
    }
    static QFileDialog* dialog()
    {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* const dialog = qobject_cast<QFileDialog*>(window);
            if (dialog != nullptr && dialog->isVisible())
                return dialog;
        }
        return nullptr;
    }
    // What was begun has come to its end.
    void settleAll()
    {
        settle(server.baseService());
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
    }
};

TEST_F(ExportPanelSaveTest, thePortalsPanelSaysWhereTheFileGoes)
{
    test::FakeSavePortal portal(server);
    const std::string file = home.file("there.csv");
    answer(portal, 0, file);
    ASSERT_TRUE(test::turnLoopUntil([&] { return contentsOf(file) == "the bytes"; }));
    EXPECT_EQ(portal.asked.at(0).options.value("current_name").toString(), "history.csv");
    settleAll();
    EXPECT_EQ(failures, std::vector<std::string>());
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(ExportPanelSaveTest, theKindOfFileIsThatOfItsName)
{
    const test::FakeSavePortal portal(server);
    save("history.csv");
    save("history.json");
    ASSERT_TRUE(test::turnLoopUntil([&] { return portal.asked.size() == 2; }));
    using Filters = test::FakeSavePortal::Filters;
    EXPECT_EQ(portal.asked[0].filters(), (Filters{{"CSV", {{1, "text/csv"}}}}));
    EXPECT_EQ(portal.asked[1].filters(), (Filters{{"JSON", {{1, "application/json"}}}}));
}

TEST_F(ExportPanelSaveTest, cancellingDoesNothing)
{
    test::FakeSavePortal portal(server);
    const std::string file = home.file("there.csv");
    answer(portal, 1, file);
    settleAll();
    EXPECT_EQ(test::namesIn(home.path()), std::vector<std::string>());
    EXPECT_EQ(failures, std::vector<std::string>());
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(ExportPanelSaveTest, aFailureIsToldOnTheMainThread)
{
    test::FakeSavePortal portal(server);
    answer(portal, 0, home.file("none/there.csv"));
    ASSERT_TRUE(test::turnLoopUntil([&] { return !failures.empty(); }));
    EXPECT_EQ(failures, std::vector<std::string>{"No such file or directory"});
}

TEST_F(ExportPanelSaveTest, withoutAPortalQtAsks)
{
    save();
    ASSERT_TRUE(test::turnLoopUntil([] { return dialog() != nullptr; }));
    EXPECT_EQ(dialog()->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(QFileInfo(dialog()->selectedFiles().value(0)).fileName(), "history.csv");
    EXPECT_EQ(dialog()->nameFilters(), QStringList{"CSV (*.csv)"});
    const std::string file = home.file("there.csv");
    emit dialog()->fileSelected(QString::fromStdString(file));
    dialog()->close();
    ASSERT_TRUE(test::turnLoopUntil([&] { return contentsOf(file) == "the bytes"; }));
    EXPECT_EQ(dialog(), nullptr);
    settleAll();
    EXPECT_EQ(failures, std::vector<std::string>());
}

} // namespace
} // namespace vellumor::exportPanelTest
