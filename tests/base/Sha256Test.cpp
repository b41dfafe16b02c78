#include "base/Sha256.h"

#include <gtest/gtest.h>

namespace vellumor::sha256Test {

TEST(Sha256, theDigestIsThatOfTheStandard)
{
    struct Row {
        std::string bytes;
        const char* digest;
    };
    const Row rows[] = {
        {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {std::string(1000000, 'a'),
         "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const auto& [bytes, digest] : rows)
        EXPECT_EQ(Sha256::hex(bytes), digest);
}

TEST(Sha256, zeroBytesCount)
{
    EXPECT_EQ(Sha256::hex(std::string(1, '\0')),
              "6e340b9cffb37a989ca544e6bb780a2c78901d3fb33738768511a30617afa01d");
}

TEST(Sha256, theShortDigestOfComposedAndDecomposedTextIsTheSame)
{
    EXPECT_EQ(Sha256::first8Hex("abc"), "ba7816bf");
    const std::string composed = "/home/jos\xC3\xA9";
    const std::string decomposed = "/home/jose\xCC\x81";
    EXPECT_EQ(Sha256::first8Hex(composed), Sha256::hex(composed).substr(0, 8));
    EXPECT_EQ(Sha256::first8Hex(decomposed), Sha256::first8Hex(composed));
    EXPECT_NE(Sha256::hex(decomposed), Sha256::hex(composed));
}

} // namespace vellumor::sha256Test
