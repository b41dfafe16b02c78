#include "history/UsageSample.h"

#include "base/Format.h"
#include "base/Json.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vellumor {

namespace {

namespace dom = simdjson::dom;

constexpr std::size_t usualSampleSize = 160; // bytes of text
// More than fit into the largest history: a sample a second, a percent a limit.
constexpr std::size_t maxHistoryValues = 4'000'000;

bool readDate(dom::element value, Instant& into)
{
    std::string_view text;
    if (value.get_string().get(text) != simdjson::SUCCESS)
        return false;
    const auto date = Format::parseISO8601(text);
    into = date.value_or(Instant());
    return date.has_value();
}

std::optional<double> readNumber(dom::element value)
{
    double number = 0;
    if (value.get_double().get(number) != simdjson::SUCCESS) // a text, a boolean, ...
        return std::nullopt;
    return number;
}

// Most samples have the kinds of the one before: then the percents take their list over. False when
// these have not.
bool readLike(const Percents& before, dom::object object, Percents& into)
{
    if (object.size() != before.size())
        return false;
    into = before;
    std::size_t index = 0;
    for (const auto [kind, value] : object) {
        const auto number = readNumber(value);
        if (!number || kind != before.kindAt(index))
            return false;
        into.setAt(index++, *number);
    }
    return true;
}

bool readPercents(dom::element value, const Percents& before, Percents& into)
{
    dom::object object;
    if (value.get_object().get(object) != simdjson::SUCCESS)
        return false;
    if (readLike(before, object, into))
        return true;
    std::vector<std::pair<std::string_view, double>> entries;
    entries.reserve(object.size());
    for (const auto [kind, percent] : object) {
        const auto number = readNumber(percent);
        if (!number)
            return false;
        entries.emplace_back(kind, *number);
    }
    into = Percents(std::move(entries));
    return true;
}

bool readSample(dom::element value, const Percents& before, UsageSample& into)
{
    dom::object object;
    if (value.get_object().get(object) != simdjson::SUCCESS)
        return false;
    bool hasAt = false;
    bool hasPercents = false;
    for (const auto [key, field] : object) {
        if (key == "at")
            hasAt = readDate(field, into.at);
        else if (key == "percents")
            hasPercents = readPercents(field, before, into.percents);
    }
    return hasAt && hasPercents;
}

// Adds the samples to a text in the form of writeJson: a tree of a week's history would cost more
// than all else that an append does.
class SampleWriter {
public:
    explicit SampleWriter(std::size_t expectedSize)
    {
        m_text.reserve(expectedSize);
        m_text = "[";
    }

    void sample(const UsageSample& sample)
    {
        m_text += m_text.size() == 1 ? "\n  {\n    \"at\": \"" : ",\n  {\n    \"at\": \"";
        m_text += Format::isoFractional(sample.at);
        m_text += "\",\n    \"percents\": {";
        const char* separator = "\n      ";
        for (const auto& [kind, percent] : sample.percents) {
            m_text += separator;
            key(kind);
            m_text += ": ";
            number(percent);
            separator = ",\n      ";
        }
        m_text += sample.percents.empty() ? "}\n  }" : "\n    }\n  }";
    }

    std::optional<std::string> finish()
    {
        m_text += m_text.size() == 1 ? "]" : "\n]";
        return m_isGood ? std::optional(std::move(m_text)) : std::nullopt;
    }

private:
    void key(const std::string& kind)
    {
        if (isPlain(kind)) {
            m_text.append("\"").append(kind).append("\"");
            return;
        }
        const auto quoted = writeJson(Json(kind), JsonLayout::compact);
        m_isGood = m_isGood && quoted;
        m_text += quoted.value_or("");
    }

    // True for what stands in JSON as it is.
    static bool isPlain(const std::string& kind)
    {
        return std::all_of(kind.begin(), kind.end(), [](char c) {
            return c >= ' ' && c <= '~' && c != '"' && c != '\\' && c != '/';
        });
    }

    void number(double percent)
    {
        // Between these the digits stand without an exponent, whichever library writes them.
        const double size = std::fabs(percent);
        const bool isPlainZero = percent == 0 && !std::signbit(percent);
        if (isPlainZero || (size >= 1e-4 && size < 1e15)) {
            std::array<char, 32> digits{};
            const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), percent,
                                           std::chars_format::fixed);
            m_text.append(digits.data(), end.ptr);
            return;
        }
        m_isGood = m_isGood && std::isfinite(percent);
        m_text += writeJson(Json(percent), JsonLayout::compact).value_or("");
    }

    std::string m_text;
    bool m_isGood = true;
};

} // namespace

UsageSample UsageSample::of(const Usage& usage)
{
    UsageSample sample;
    sample.at = usage.fetchedAt;
    std::vector<std::pair<std::string_view, double>> entries;
    entries.reserve(usage.windows.size());
    for (const LimitWindow& window : usage.windows)
        entries.emplace_back(window.kind, window.percent);
    sample.percents = Percents(std::move(entries));
    return sample;
}

std::optional<std::string> encodeSamples(const UsageSamples& samples)
{
    SampleWriter writer(samples.size() * usualSampleSize);
    for (const UsageSample& sample : samples)
        writer.sample(sample);
    return writer.finish();
}

std::optional<UsageSamples> decodeSamples(const std::string& bytes)
{
    dom::parser parser;
    dom::array array;
    if (!hasAtMostValues(bytes, maxHistoryValues) ||
        parser.allocate(bytes.size(), maxJsonDepth) != simdjson::SUCCESS ||
        parser.parse(bytes).get_array().get(array) != simdjson::SUCCESS)
        return std::nullopt;
    UsageSamples samples;
    samples.reserve(bytes.size() / usualSampleSize);
    const Percents none;
    for (const dom::element element : array) {
        const Percents& before = samples.empty() ? none : samples.back().percents;
        UsageSample sample;
        if (!readSample(element, before, sample))
            return std::nullopt;
        samples.push_back(std::move(sample));
    }
    return samples;
}

} // namespace vellumor
