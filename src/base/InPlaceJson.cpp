#include "base/InPlaceJson.h"

#include "base/Json.h"
#include "base/Text.h"

namespace vellumor {

namespace {

constexpr unsigned parseFlags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag;

constexpr std::size_t chunkSize = std::size_t{64} * 1024;

// The decoder would take a zero byte for the end, and run past the end on cut UTF-8.
bool isDecodable(std::string_view bytes)
{
    return bytes.find('\0') == std::string_view::npos && Text::isValidUtf8(bytes) &&
           isNestedWithin(bytes, maxJsonDepth) && hasAtMostValues(bytes, maxJsonValues);
}

} // namespace

InPlaceJson::InPlaceJson(char* text, std::size_t size)
    : m_memory(m_firstChunk.data(), m_firstChunk.size(), chunkSize)
    , m_document(&m_memory)
    , m_isGood(isDecodable({text, size}) &&
               !m_document.ParseInsitu<parseFlags>(text).HasParseError())
{
}

const InPlaceJson::Value* InPlaceJson::find(const Value* object, std::string_view key)
{
    if (object == nullptr || !object->IsObject())
        return nullptr;
    const Value* found = nullptr;
    for (const auto& [name, value] : object->GetObject()) {
        if (std::string_view(name.GetString(), name.GetStringLength()) == key)
            found = &value;
    }
    return found == nullptr || found->IsNull() ? nullptr : found;
}

std::optional<std::string_view> InPlaceJson::textOf(const Value& value)
{
    if (!value.IsString())
        return std::nullopt;
    const std::string_view text(value.GetString(), value.GetStringLength());
    return Text::isValidUtf8(text) ? std::optional(text) : std::nullopt;
}

} // namespace vellumor
