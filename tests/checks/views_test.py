#!/usr/bin/env python3
"""The check of the views finds what it is there for."""
import unittest

from views import breaches

VIEW = "src/ui/settings/A.cpp"
PANEL = "src/ui/settings/PathPanel.cpp"


class Views(unittest.TestCase):
    def expect(self, count, text, path=VIEW):
        found = breaches({path: text})
        self.assertEqual(len(found), count, f"{text!r}: {found}")

    def test_a_view_over_its_model_has_no_breach(self):
        self.expect(0, '#include "ui/settings/A.h"\n#include "app/state/AppState.h"\n#include "base/PlatformWords.h"\n'
                       '#include "platform/Notifications.h"\n#include "ui/model/settings/UsageContent.h"\n'
                       "#include <QCheckBox>\n#include <algorithm>\n"
                       "// reads no QFile, and no time(nullptr)\n"
                       'void f() { m_appState.updatePreferences(c); label("QDateTime::currentDateTime()"); }\n')

    def test_the_header_of_a_store_is_a_breach(self):
        for header in ("store/Preferences.h", "store/FileStore.h", "accounts/AccountStore.h", "telemetry/TelemetryStore.h",
                       "history/UsageHistoryStore.h", "usage/UsageStores.h", "usage/caches/SharedCache.h",
                       "diagnostics/Diagnostics.h", "platform/linux/AutostartFile.h"):
            self.expect(1, f'#include "{header}"\n')

    def test_a_clock_is_a_breach(self):
        for text in ('#include "base/Clock.h"\n', "#include <QDateTime>\n", "#include <QElapsedTimer>\n", "#include <chrono>\n",
                     "auto t = QDateTime::currentDateTime();\n", "auto t = QTime::currentTime();\n",
                     "auto t = std::chrono::system_clock::now();\n", "auto t = systemNow();\n", "auto t = time(nullptr);\n"):
            self.expect(1, text)

    def test_the_disk_is_a_breach(self):
        for text in ("#include <QFile>\n", "#include <QDir>\n", "#include <QFileDialog>\n", "#include <QSettings>\n",
                     "#include <filesystem>\n", "#include <fstream>\n", "#include <sys/stat.h>\n",
                     "QDir(path).entryList();\n", "QFile file(path);\n", "if (std::filesystem::exists(path)) {}\n",
                     "std::ifstream in(path);\n", "auto c = readFile(path);\n", 'auto h = qgetenv("HOME");\n'):
            self.expect(1, text)

    def test_a_store_by_its_name_is_a_breach(self):
        self.expect(1, "AccountStore& store;\n")
        self.expect(1, "class TelemetryStore;\n")

    def test_the_panel_shows_the_disk_but_does_not_read_it(self):
        self.expect(0, "#include <QDir>\n#include <QFileDialog>\nnew QFileDialog(nullptr, t, QDir::homePath());\n"
                       "panel->setFilter(f | QDir::Hidden);\n", PANEL)
        self.expect(1, "QDir(path).entryList();\n", PANEL)
        self.expect(1, "QDir::current();\n", PANEL)
        self.expect(1, "#include <QFile>\n", PANEL)

    def test_the_panels_exception_is_nobody_elses(self):
        self.expect(1, "auto h = QDir::homePath();\n")


if __name__ == "__main__":
    unittest.main()
