#include "actions/field_provider.h"

#include "host/shared/text.h"

#include <array>
#include <ctime>
#include <string>
#include <string_view>

namespace quorvex {

using namespace vantaro;

namespace {

enum class Field { index, total, now };

struct ProvidedField {
    std::string_view name;
    Field field;
};
constexpr std::array<ProvidedField, 5> provided_fields{{{"_quorvex_index", Field::index},
                                                        {"list_index", Field::index},
                                                        {"_quorvex_total", Field::total},
                                                        {"list_total", Field::total},
                                                        {"now", Field::now}}};

std::string padded(std::uint64_t number, std::size_t digits) {
    std::string text = std::to_string(number);
    text.insert(0, digits > text.size() ? digits - text.size() : 0, '0');
    return text;
}

std::string local_time_text(std::uint64_t time) {
    constexpr std::uint64_t ticks_per_second = 10'000'000;
    constexpr std::int64_t seconds_from_1601_to_1970 = 11'644'473'600;
    const std::time_t seconds =
        static_cast<std::int64_t>(time / ticks_per_second) - seconds_from_1601_to_1970;
    std::tm local = {};
    std::array<char, 64> text;
    if (!::localtime_r(&seconds, &local))
        return "<invalid timestamp>";
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return length == 0 ? "<invalid timestamp>" : std::string(text.data(), length);
}

} // namespace

bool FieldProvider::process_field(const char* name, std::size_t length, TitleFormatOutput& out, bool& found) {
    for (const ProvidedField& provided : provided_fields) {
        if (stricmp_utf8_ex(name, length, provided.name.data(), provided.name.size()) != 0)
            continue;
        if (provided.field == Field::now && time_ == 0)
            return false;
        const std::string total = std::to_string(total_);
        const std::string text = provided.field == Field::index   ? padded(index_, total.size())
                                 : provided.field == Field::total ? total
                                                                  : local_time_text(time_);
        out.write(text.data(), text.size());
        found = true;
        return true;
    }
    return false;
}

} // namespace quorvex
