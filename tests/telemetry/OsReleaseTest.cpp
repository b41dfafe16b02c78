#include "telemetry/OsRelease.h"

#include <gtest/gtest.h>

namespace vellumor::osReleaseTest {

TEST(OsRelease, namesTheSystemAndItsVersion)
{
    const std::pair<const char*, const char*> rows[] = {
        {"PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\n"
         "VERSION_ID=\"12\"\nVERSION=\"12 (bookworm)\"\nID=debian\n",
         "debian 12"},
        {"ID=ubuntu\nID_LIKE=debian\nVERSION_ID='24.04'", "ubuntu 24.04"},
        {"ID=arch\nBUILD_ID=rolling\n", "arch"},
        {"VERSION_ID=3\n", "linux 3"},
        {"", "linux"},
        {"# ID=comment\nID=\"opensuse-leap\"\r\nVERSION_ID=\"15.5\"\r\n", "opensuse-leap 15.5"},
        {"ID=first\nID=second\n", "first"},
        {"ID=\"a\\\"b", "a\"b"},
        {"ID\n=x\nID=", "linux"},
    };
    for (const auto& [text, name] : rows)
        EXPECT_EQ(OsRelease::nameAndVersion(text), name) << text;
}

TEST(OsRelease, aValueComesWithoutItsQuotes)
{
    EXPECT_EQ(OsRelease::value("A=1\nB=\"two words\"\nC='three'", "B"), "two words");
    EXPECT_EQ(OsRelease::value("A=1\nB=\"two words\"\nC='three'", "C"), "three");
    EXPECT_EQ(OsRelease::value("A=1", "a"), "");
}

} // namespace vellumor::osReleaseTest
