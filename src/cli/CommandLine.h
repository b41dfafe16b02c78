#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vellumor {

// What the program was called for. Pure.
struct CommandLine {
    enum class Form { table, json, waybar, fields };

    struct Status {
        Form form = Form::table;
        std::string format = {};                 // with Form::fields
        std::string separator = {};              // between accounts, with Form::fields
        std::optional<std::string> account = {}; // its name or id
        bool isWatching = false;
        bool operator==(const Status&) const = default;
    };
    struct Desktop { // the program itself
        bool operator==(const Desktop&) const = default;
    };
    struct Text { // something to read, and no more
        std::string text;
        bool operator==(const Text&) const = default;
    };
    struct Mistake {
        std::string text; // what is wrong, and what to do, without line ends
        bool operator==(const Mistake&) const = default;
    };
    using Purpose = std::variant<Desktop, Status, Text, Mistake>;

    // `arguments` without the program's name.
    [[nodiscard]] static Purpose read(const std::vector<std::string>& arguments);
};

} // namespace vellumor
