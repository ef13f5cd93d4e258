#include "ports/Clock.h"

namespace tlx {

namespace {
// Days from civil date, after Howard Hinnant's algorithm.
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}
}  // namespace

std::int64_t DateTime::dayNumber() const {
    return daysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day));
}

DateTime DateTime::fromDayNumber(std::int64_t z) {
    z += 719468;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t y = static_cast<std::int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    const unsigned d = doy - (153 * mp + 2) / 5 + 1;
    const unsigned m = mp < 10 ? mp + 3 : mp - 9;
    DateTime t;
    t.year = static_cast<int>(y + (m <= 2));
    t.month = static_cast<int>(m);
    t.day = static_cast<int>(d);
    return t;
}

std::int64_t DateTime::toMillis() const {
    return dayNumber() * 86'400'000LL + hour * 3'600'000LL + minute * 60'000LL + second * 1000LL +
           millisecond;
}

DateTime DateTime::fromMillis(std::int64_t ms) {
    std::int64_t days = ms / 86'400'000LL;
    std::int64_t rest = ms % 86'400'000LL;
    if (rest < 0) {
        rest += 86'400'000LL;
        --days;
    }
    DateTime t = fromDayNumber(days);
    t.hour = static_cast<int>(rest / 3'600'000LL);
    t.minute = static_cast<int>(rest / 60'000LL % 60);
    t.second = static_cast<int>(rest / 1000 % 60);
    t.millisecond = static_cast<int>(rest % 1000);
    return t;
}

DateTime DateTime::addDays(int days) const {
    return fromMillis(toMillis() + days * 86'400'000LL);
}

}  // namespace tlx
