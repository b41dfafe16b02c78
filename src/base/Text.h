#pragma once

#include <string>
#include <string_view>

// Text: what the program does with UTF-8 text, by Unicode's own tables. Pure.
namespace vellumor::Text {

[[nodiscard]] bool isValidUtf8(std::string_view text);

// Unicode normalisation form C. Text that is not valid UTF-8 comes back unchanged.
[[nodiscard]] std::string composed(std::string_view text);

// Without white space and line ends at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

// Each word begins in upper case and goes on in lower case. A word begins at the start and behind
// every character that is neither letter nor digit.
[[nodiscard]] std::string capitalised(std::string_view text);

// Fit for a file's name: letters and figures of any script in lower case, with the marks that
// belong to them, and one "-" for whatever stands between.
[[nodiscard]] std::string slug(std::string_view text);

// The first character in upper case, the rest as it is.
[[nodiscard]] std::string withUpperFirst(std::string_view text);

// How many code points; text that is not valid UTF-8 counts bytes where it breaks.
[[nodiscard]] std::size_t length(std::string_view text);

// How many columns of a terminal it takes: two for a wide character, none for one that joins
// another.
[[nodiscard]] std::size_t columns(std::string_view text);

// No wider than `most` columns: what does not fit gives way to "…".
[[nodiscard]] std::string withinColumns(std::string_view text, std::size_t most);

// Fit for one line on a terminal: control characters, line and paragraph separators, and the marks
// that reorder text are replaced by U+FFFD, and so is what is not valid UTF-8.
[[nodiscard]] std::string printable(std::string_view text);

// The text of a JSON value, with what `printable` would replace written as \uXXXX.
[[nodiscard]] std::string escapedJson(std::string_view json);

// `text` with every `from` replaced by `to`. An empty `from` changes nothing.
[[nodiscard]] std::string replaced(std::string text, std::string_view from, std::string_view to);

} // namespace vellumor::Text
