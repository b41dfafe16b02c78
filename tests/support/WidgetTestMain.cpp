#include <QApplication>

#include <gtest/gtest.h>

// For tests with windows: no display is needed, and there is one font, whoever runs them.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("FONTCONFIG_FILE", VELLUMOR_TEST_FONTS);
    qputenv("XDG_RUNTIME_DIR", "/nonexistent"); // or Qt makes a folder of its own
    qunsetenv("QT_SCALE_FACTOR");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
