#pragma once

#include "base/Instant.h"

#include <QLocale>

#include <string>

namespace vellumor {

// A moment's hour and minute as `locale` writes them, in the user's time zone, without seconds. The
// C locale, which would print them, gives "15:05".
[[nodiscard]] std::string shortTimeText(Instant instant, const QLocale& locale = QLocale::system());

} // namespace vellumor
