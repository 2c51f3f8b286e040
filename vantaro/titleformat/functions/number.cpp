#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/number_text.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

namespace vantaro::core::functions {

namespace {

using Number = std::int64_t;
using Result = std::optional<Number>;

Result sum_of(Number a, Number b) {
    Number result = 0;
    return __builtin_add_overflow(a, b, &result) ? Result() : Result(result);
}

Result difference_of(Number a, Number b) {
    Number result = 0;
    return __builtin_sub_overflow(a, b, &result) ? Result() : Result(result);
}

Result product_of(Number a, Number b) {
    Number result = 0;
    return __builtin_mul_overflow(a, b, &result) ? Result() : Result(result);
}

/// Rounded down, so that the remainder has the sign of the divisor.
Result quotient_of(Number a, Number b) {
    if (b == 0 || (b == -1 && a == std::numeric_limits<Number>::min()))
        return {};
    const Number quotient = a / b;
    return a % b != 0 && (a < 0) != (b < 0) ? quotient - 1 : quotient;
}

Result remainder_of(Number a, Number b) {
    if (b == 0)
        return {};
    if (b == -1)
        return 0;
    const Number remainder = a % b;
    return remainder != 0 && (remainder < 0) != (b < 0) ? remainder + b : remainder;
}

/// From left to right over all arguments. No number, or one beyond 64 bits on the way: nothing.
void put_folded(Call& call, Result (*operation)(Number, Number)) {
    Result result = call.integer(0);
    for (std::size_t i = 1; result && i < call.count(); ++i) {
        const Result operand = call.integer(i);
        result = operand ? operation(*result, *operand) : Result();
    }
    if (result)
        call.put_integer(*result);
}

void put_extreme(Call& call, bool wants_greatest) {
    std::optional<std::string_view> best;
    bool are_numbers = true;
    for (std::size_t i = 0; i < call.count(); ++i)
        for (const std::string_view value : call.values(i))
            are_numbers = are_numbers && parse_decimal(value).has_value();
    for (std::size_t i = 0; i < call.count(); ++i)
        for (const std::string_view value : call.values(i)) {
            const auto is_less = [&](std::string_view a, std::string_view b) {
                return are_numbers ? compare_texts(a, b) < 0 : a < b;
            };
            if (!best || (wants_greatest ? is_less(*best, value) : is_less(value, *best)))
                best = value;
        }
    if (best)
        call.out().append(without_blanks(*best));
}

/// With as many decimals as there are, at most six.
void put_decimal(Call& call, double number) {
    constexpr double most = 1e15;
    if (!(std::fabs(number) <= most))
        return;
    char text[40];
    const int size = std::snprintf(text, sizeof text, "%.6f", number);
    std::string_view shown(text, static_cast<std::size_t>(size));
    shown = shown.substr(0, shown.find_last_not_of('0') + 1);
    if (shown.ends_with('.'))
        shown.remove_suffix(1);
    call.out().append(shown == "-0" ? "0" : shown);
}

void put_rounded(Call& call, double (*rounding)(double)) {
    if (const auto whole = call.integer(0))
        return call.put_integer(*whole);
    if (const auto number = parse_decimal(call.text(0)))
        put_decimal(call, rounding(*number));
}

struct Total {
    double sum = 0;
    std::size_t count = 0;
};

Total total_of(const Call& call) {
    Total total;
    for (std::size_t i = 0; i < call.count(); ++i)
        for (const std::string_view value : call.values(i))
            if (const auto number = parse_decimal(value)) {
                total.sum += *number;
                ++total.count;
            }
    return total;
}

struct RomanDigit {
    Number value;
    std::string_view letters;
};
constexpr auto roman_digits = std::to_array<RomanDigit>({{1000, "M"},
                                                         {900, "CM"},
                                                         {500, "D"},
                                                         {400, "CD"},
                                                         {100, "C"},
                                                         {90, "XC"},
                                                         {50, "L"},
                                                         {40, "XL"},
                                                         {10, "X"},
                                                         {9, "IX"},
                                                         {5, "V"},
                                                         {4, "IV"},
                                                         {1, "I"}});
constexpr Number greatest_roman = 3999;

std::string to_roman(Number number) {
    std::string text;
    for (const RomanDigit& digit : roman_digits)
        for (; number >= digit.value; number -= digit.value)
            text += digit.letters;
    return text;
}

} // namespace

void num(Call& call) {
    const auto digits = call.integer(1);
    const std::string_view text = without_blanks(call.text(0));
    const std::size_t slash = text.find('/');
    std::string_view number = without_blanks(text.substr(0, slash));
    const bool is_negative = number.starts_with('-');
    if (is_negative || number.starts_with('+'))
        number.remove_prefix(1);
    if (!digits || number.empty() || number.find_first_not_of("0123456789") != std::string_view::npos)
        return;
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size() - 1));
    if (is_negative)
        call.out().append('-');
    if (*digits > 0 && static_cast<std::uint64_t>(*digits) > number.size())
        call.out().append(static_cast<std::size_t>(*digits) - number.size(), '0');
    call.out().append(number);
    if (slash != std::string_view::npos && is_true(call.text(2)))
        call.out().append(text.substr(slash));
}

void tonum(Call& call) {
    const std::string_view text = call.text(0);
    const std::size_t start = text.find_first_of("0123456789");
    if (start == std::string_view::npos)
        return;
    std::size_t end = text.find_first_not_of("0123456789", start);
    if (end != std::string_view::npos && text[end] == '.' && end + 1 < text.size()
        && is_ascii_digit(text[end + 1]))
        end = text.find_first_not_of("0123456789", end + 1);
    // A hyphen between letters or digits is no sign.
    const bool is_negative =
        start > 0 && text[start - 1] == '-'
        && (start == 1 || !(is_ascii_letter(text[start - 2]) || is_ascii_digit(text[start - 2])));
    const std::size_t from = is_negative ? start - 1 : start;
    call.out().append(text.substr(from, std::min(end, text.size()) - from));
}

void add(Call& call) {
    put_folded(call, sum_of);
}

void sub(Call& call) {
    put_folded(call, difference_of);
}

void mul(Call& call) {
    put_folded(call, product_of);
}

void div(Call& call) {
    put_folded(call, quotient_of);
}

void mod(Call& call) {
    put_folded(call, remainder_of);
}

void min(Call& call) {
    put_extreme(call, false);
}

void max(Call& call) {
    put_extreme(call, true);
}

void sum(Call& call) {
    if (const Total total = total_of(call); total.count > 0)
        put_decimal(call, total.sum);
}

void avg(Call& call) {
    if (const Total total = total_of(call); total.count > 0)
        put_decimal(call, total.sum / static_cast<double>(total.count));
}

void floor(Call& call) {
    put_rounded(call, [](double number) { return std::floor(number); });
}

void ceil(Call& call) {
    put_rounded(call, [](double number) { return std::ceil(number); });
}

void round(Call& call) {
    put_rounded(call, [](double number) { return std::round(number); });
}

void odd(Call& call) {
    const auto number = call.integer(0);
    call.put_truth(number && *number % 2 != 0);
}

void rand(Call& call) {
    thread_local std::mt19937_64 generator{std::random_device{}()};
    put_decimal(call, static_cast<double>(std::uniform_int_distribution<int>(0, 999'999)(generator)) / 1e6);
}

void roman(Call& call) {
    const auto number = call.integer(0);
    if (number && *number >= 1 && *number <= greatest_roman)
        call.out().append(to_roman(*number));
}

void fromroman(Call& call) {
    std::string text(without_blanks(call.text(0).substr(0, 40)));
    for (char& c : text)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    Number number = 0;
    std::string_view rest = text;
    for (const RomanDigit& digit : roman_digits)
        for (; rest.starts_with(digit.letters); rest.remove_prefix(digit.letters.size()))
            number += digit.value;
    // There is one way to write a number; "IIX" and "VV" are none.
    if (number > 0 && number <= greatest_roman && to_roman(number) == text)
        call.put_integer(number);
}

} // namespace vantaro::core::functions
