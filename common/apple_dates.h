#pragma once

// The system's dates count seconds from 2001-01-01 00:00 UTC. A stored value
// no real date has (not a number, or thousands of years away) is damage and
// gives no date, so it never reaches a conversion that would overflow.

#include <QtGlobal>

#include <cmath>
#include <optional>

namespace apple_dates {

constexpr qint64 k_seconds_1970_to_2001 = 978307200;

// Further than this either side of 2001 is damage, not a date.
constexpr double k_max_offset = 1e11;

// Seconds since 1970 of seconds since 2001, with their fraction.
inline std::optional<double> since_1970(double since_2001)
{
    if (!std::isfinite(since_2001) || std::fabs(since_2001) > k_max_offset)
        return std::nullopt;
    return since_2001 + double(k_seconds_1970_to_2001);
}

}  // namespace apple_dates
