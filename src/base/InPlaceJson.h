#pragma once

#include <rapidjson/document.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace vellumor {

// JSON decoded inside the buffer that holds it. The general library copies every text that it
// meets, which a secret does not bear and a large file of which two fields matter does not deserve.
class InPlaceJson {
public:
    using Value = rapidjson::Value;

    // Decodes the `size` bytes at `text`, behind which stands a zero. It changes them, and they
    // outlive it.
    InPlaceJson(char* text, std::size_t size);
    InPlaceJson(const InPlaceJson&) = delete;
    InPlaceJson& operator=(const InPlaceJson&) = delete;

    // Null pointer when the bytes were not one JSON value in valid UTF-8, were nested deeper than
    // maxJsonDepth, or held more than maxJsonValues.
    [[nodiscard]] const Value* root() const { return m_isGood ? &m_document : nullptr; }

    // What stands in `object` under `key`; of a repeated key the last, as for Claude Code itself.
    // Null pointer when there is none, when it is null, or when `object` is none.
    [[nodiscard]] static const Value* find(const Value* object, std::string_view key);

    // Nothing when the value is no text, or one that holds half a surrogate pair, which the decoder
    // lets through.
    [[nodiscard]] static std::optional<std::string_view> textOf(const Value& value);

private:
    alignas(std::max_align_t) std::array<char, 4096> m_firstChunk; // enough for the usual file
    rapidjson::MemoryPoolAllocator<> m_memory;
    rapidjson::Document m_document;
    bool m_isGood;
};

} // namespace vellumor
