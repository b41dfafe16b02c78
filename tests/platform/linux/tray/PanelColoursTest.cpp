#include "platform/linux/tray/PanelColours.h"

#include <gtest/gtest.h>

namespace vellumor::panelColoursTest {
namespace {

TEST(PanelColours, theTrayDecidesThenTheDesktopThenWhatIsUsual)
{
    struct Row {
        std::optional<QColor> tray;
        std::optional<bool> prefersDark;
        bool isDarkOtherwise;
        QRgb expected;
    };
    const QColor orange(0xff, 0x80, 0x00);
    const Row rows[] = {
        {orange, true, true, orange.rgb()},
        {orange, std::nullopt, false, orange.rgb()},
        {std::nullopt, true, false, 0xffeeeeec},
        {std::nullopt, false, true, 0xff2e3436},
        {std::nullopt, std::nullopt, true, 0xffeeeeec},
        {std::nullopt, std::nullopt, false, 0xff2e3436},
    };
    for (const Row& row : rows) {
        const QColor colour =
            PanelColours::foregroundFor(row.tray, row.prefersDark, row.isDarkOtherwise);
        EXPECT_EQ(colour.rgb(), row.expected) << std::hex << row.expected;
    }
}

} // namespace
} // namespace vellumor::panelColoursTest
