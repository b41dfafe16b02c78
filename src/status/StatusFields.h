#pragma once

#include "status/StatusReport.h"

#include <optional>
#include <string>
#include <string_view>

// StatusFields: a report in the form that the user gives, for prompts and status lines. Pure.
//
// "{name} {session}" stands for the account's name and how full its session is. "{{" and "}}" are
// braces. A field that says nothing of an account is empty.
namespace vellumor::StatusFields {

// Every name that a format may hold, with what it stands for, a line each.
[[nodiscard]] std::string help();

// The first thing in it that means nothing: a name, or a brace that stands alone. Nothing when all
// is well.
[[nodiscard]] std::optional<std::string> mistake(std::string_view format);

// Each account in this form, with `between` from one to the next. What is said of them is fit for
// one line; the rest of `format` is taken as it is.
[[nodiscard]] std::string text(const StatusReport& report, std::string_view format,
                               std::string_view between, Instant now);

} // namespace vellumor::StatusFields
