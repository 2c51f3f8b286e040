#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/number_text.h"

#include <array>
#include <chrono>
#include <ctime>
#include <optional>

namespace vantaro::core::functions {

namespace {

struct Date {
    std::string_view year;
    std::string_view month;
    std::string_view day;
};

/// The first three runs of digits, in the order that "ymd", "dmy" or "mdy" tells.
Date split_date(std::string_view text, std::string_view order) {
    std::array<std::string_view, 3> parts;
    std::size_t at = 0;
    for (std::string_view& part : parts) {
        at = std::min(text.find_first_of("0123456789", at), text.size());
        const std::size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
        part = text.substr(at, end - at);
        at = end;
    }
    if (order == "dmy")
        return {parts[2], parts[1], parts[0]};
    if (order == "mdy")
        return {parts[2], parts[0], parts[1]};
    return {parts[0], parts[1], parts[2]};
}

/// Nothing when the date is incomplete or not in the calendar.
std::optional<std::tm> to_calendar(const Date& date) {
    const auto year = parse_integer(date.year);
    const auto month = parse_integer(date.month);
    const auto day = parse_integer(date.day);
    if (!year || *year < 1 || *year > 9999 || !month || *month > 12 || !day || *day > 31)
        return std::nullopt;
    const std::chrono::year_month_day checked(std::chrono::year(static_cast<int>(*year)),
                                              std::chrono::month(static_cast<unsigned>(*month)),
                                              std::chrono::day(static_cast<unsigned>(*day)));
    if (!checked.ok())
        return std::nullopt;
    const std::chrono::sys_days days(checked);
    std::tm parts{};
    parts.tm_year = static_cast<int>(*year) - 1900;
    parts.tm_mon = static_cast<int>(*month) - 1;
    parts.tm_mday = static_cast<int>(*day);
    parts.tm_wday = static_cast<int>(std::chrono::weekday(days).c_encoding());
    const std::chrono::sys_days new_year(checked.year() / std::chrono::January / 1);
    parts.tm_yday = static_cast<int>((days - new_year).count());
    return parts;
}

/// One code at a time, so that a width within a code cannot ask for more than the bytes there are.
void put_time(const std::tm& parts, std::string_view format, TextBuffer& out) {
    for (std::size_t at = 0; at < format.size(); ++at) {
        if (format[at] != '%' || at + 1 == format.size()
            || !(is_ascii_letter(format[at + 1]) || format[at + 1] == '%')) {
            out.append(format[at]);
            continue;
        }
        const char code[] = {'%', format[++at], '\0'};
        std::array<char, 256> text;
// The code is checked above: a letter without flags or width.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        out.append({text.data(), std::strftime(text.data(), text.size(), code, &parts)});
#pragma GCC diagnostic pop
    }
}

} // namespace

void year(Call& call) {
    call.out().append(split_date(call.text(0), call.text(1)).year);
}

void month(Call& call) {
    call.out().append(split_date(call.text(0), call.text(1)).month);
}

void day(Call& call) {
    call.out().append(split_date(call.text(0), call.text(1)).day);
}

void dateformat(Call& call) {
    if (const auto parts = to_calendar(split_date(call.text(0), call.text(2))))
        put_time(*parts, call.text(1).empty() ? "%Y-%m-%d" : call.text(1), call.out());
}

void datetime(Call& call) {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    if (localtime_r(&now, &parts))
        put_time(parts, call.text(0).empty() ? "%Y-%m-%d %H:%M:%S" : call.text(0), call.out());
}

} // namespace vantaro::core::functions
