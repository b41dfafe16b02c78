#include "cli/DesktopProgram.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vellumor::desktopProgramTest {
namespace {

TEST(DesktopProgram, itLiesInAFolderOfItsOwnUnderTheSameName)
{
    const std::filesystem::path path = DesktopProgram::pathBeside("/opt/some/bin/vellumor");
    EXPECT_EQ(path.lexically_normal(), "/opt/some/libexec/vellumor/vellumor");
}

} // namespace
} // namespace vellumor::desktopProgramTest
