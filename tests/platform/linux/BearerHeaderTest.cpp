#include "platform/linux/BearerHeader.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vellumor::bearerHeaderTest {
namespace {

TEST(BearerHeader, holdsTheSchemeAndTheToken)
{
    EXPECT_EQ(BearerHeader("t0ken").value(), QByteArray("Bearer t0ken"));
}

TEST(BearerHeader, isWipedInTheCopiesThatShareItsBytes)
{
    auto header = std::make_unique<BearerHeader>("t0ken");
    const QByteArray shared = header->value();
    header.reset();
    EXPECT_EQ(shared, QByteArray(12, '\0'));
}

TEST(BearerHeader, leavesTheBytesToARequestThatWasBrokenOff)
{
    auto header = std::make_unique<BearerHeader>("t0ken");
    const QByteArray shared = header->value();
    header->leave();
    header.reset();
    EXPECT_EQ(shared, QByteArray("Bearer t0ken"));
}

TEST(BearerHeader, visibleAsciiAloneCanBeSent)
{
    const std::pair<std::string, bool> rows[] = {
        {"!", true},
        {"~", true},
        {"az-AZ_09.~", true},
        {"", false},
        {"a b", false},
        {"a\r\nx: y", false},
        {"a\n", false},
        {"\ta", false},
        {"a\x7f", false},
        {"caf\xc3\xa9", false},
        {std::string("a\0b", 3), false},
    };
    for (const auto& [text, sendable] : rows) {
        SCOPED_TRACE(text);
        EXPECT_EQ(BearerHeader::isSendable(text), sendable);
    }
}

} // namespace
} // namespace vellumor::bearerHeaderTest
