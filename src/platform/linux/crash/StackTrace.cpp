#include "platform/linux/crash/StackTrace.h"

#include "base/Text.h"

#include <algorithm>
#include <charconv>

namespace vellumor::StackTrace {

namespace {

constexpr std::string_view threadBegin = "Stack trace of thread ";
constexpr std::string_view unknown = "n/a";

// Takes the next word, up to a blank, off the front of `rest`.
std::string_view takeWord(std::string_view& rest)
{
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    const std::string_view word = rest.substr(0, rest.find(' '));
    rest.remove_prefix(word.size());
    return word;
}

std::optional<std::uint64_t> hexadecimal(std::string_view text)
{
    if (!text.starts_with("0x"))
        return std::nullopt;
    text.remove_prefix(2);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

// Cut where a character ends.
std::string limited(std::string_view text)
{
    std::size_t size = std::min(text.size(), maxTextSize);
    while (size > 0 && size < text.size() &&
           (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U)
        --size;
    return Text::printable(text.substr(0, size));
}

// "(libc.so.6 + 0x10a3d7)", or without an offset as older systems write it.
void readPlace(std::string_view place, Frame& into)
{
    if (!place.starts_with('(') || !place.ends_with(')'))
        return;
    place.remove_prefix(1);
    place.remove_suffix(1);
    constexpr std::string_view plus = " + ";
    if (const auto at = place.rfind(plus); at != std::string_view::npos) {
        into.offset = hexadecimal(place.substr(at + plus.size()));
        place = place.substr(0, at);
    }
    if (place == unknown)
        into.offset.reset();
    else
        into.module = limited(place.substr(place.rfind('/') + 1)); // npos + 1 is 0
}

// "#3  0x00007f3bd2b0b3d7 __poll (libc.so.6 + 0x10a3d7)"
std::optional<Frame> parseFrame(std::string_view line)
{
    const std::string_view number = takeWord(line);
    if (!number.starts_with('#') || !hexadecimal(takeWord(line)))
        return std::nullopt;
    Frame frame;
    const std::string_view symbol = takeWord(line);
    if (!symbol.empty() && symbol != unknown)
        frame.symbol = limited(symbol);
    readPlace(Text::trimmed(line), frame);
    return frame;
}

} // namespace

std::vector<Thread> parse(std::string_view message)
{
    std::vector<Thread> threads;
    while (!message.empty()) {
        const std::string_view line = message.substr(0, message.find('\n'));
        message.remove_prefix(std::min(line.size() + 1, message.size()));
        if (line.starts_with(threadBegin)) {
            if (threads.size() == maxThreads)
                break;
            threads.emplace_back();
        } else if (!threads.empty() && threads.back().size() < maxFrames) {
            if (auto frame = parseFrame(line))
                threads.back().push_back(*std::move(frame));
        }
    }
    return threads;
}

} // namespace vellumor::StackTrace
