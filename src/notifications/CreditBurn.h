#pragma once

#include "usage/model/Usage.h"

#include <string>

// CreditBurn: the moment at which usage begins to cost credits. Pure.
namespace vellumor::CreditBurn {

// Nothing had been spent in the reading before, and something has in this one.
[[nodiscard]] bool creditBurnCrossed(const Usage* previous, const Usage& current);

// "Work · usage limit reached — now spending usage credits (€0.50 of €20.00)".
[[nodiscard]] std::string body(const Usage& current, const std::string& accountName);

} // namespace vellumor::CreditBurn
