// Bytes, texts and tags in tests as people read them.
//
//     bytes("02 00 00 00 'ab'")               hexadecimal pairs, and texts in single quotes
//     bytes_text(written)                     the same form again: one text when all is ASCII to be read, or
//     pairs tags("ARTIST=[a][b] COMMENT=[]")        the fields in order, each with its values tags_text(info)
//     the same form again
#pragma once

#include "host/api/guid.h"
#include "host/api/track_info_record.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace vantaro::test {

inline std::string repeat(std::string_view text, std::size_t count) {
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

inline std::string bytes(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        std::size_t used = 1;
        if (text.front() == '\'') {
            used = text.find('\'', 1) + 1;
            if (used == 0)
                throw std::invalid_argument("no closing quote");
            result += text.substr(1, used - 2);
        } else if (text.front() != ' ') {
            used = 2;
            result += static_cast<char>(detail::hex_digit(text.at(0)) * 16 + detail::hex_digit(text.at(1)));
        }
        text.remove_prefix(used);
    }
    return result;
}

inline std::string bytes_text(std::string_view bytes) {
    if (std::ranges::all_of(bytes, [](char c) { return c >= 0x20 && c < 0x7F; }))
        return '\'' + std::string(bytes) + '\'';
    std::string text;
    for (const char c : bytes) {
        text += text.empty() ? "" : " ";
        for (const int digit : {static_cast<unsigned char>(c) >> 4, static_cast<unsigned char>(c) & 15})
            text += "0123456789abcdef"[digit];
    }
    return text;
}

inline TrackInfoRecord tags(std::string_view text) {
    std::vector<TrackField> fields;
    while (!text.empty()) {
        const std::size_t equals = text.find('=');
        TrackField& field = fields.emplace_back(TrackField{std::string(text.substr(0, equals)), {}});
        text.remove_prefix(equals + 1);
        while (text.starts_with('[')) {
            field.values.emplace_back(text.substr(1, text.find(']') - 1));
            text.remove_prefix(text.find(']') + 1);
        }
        text.remove_prefix(text.starts_with(' ') ? 1 : 0);
    }
    TrackInfoRecord record;
    record.set_fields(std::move(fields));
    return record;
}

/// Technical fields, the length and the track gain stand behind the fields when there are any.
inline std::string tags_text(const TrackInfo& info) {
    std::ostringstream text;
    const char* separator = "";
    const auto part = [&]() -> std::ostream& { return text << std::exchange(separator, " "); };
    for (std::size_t i = 0; i < info.field_count(); ++i) {
        part() << info.field_name(i) << '=';
        for (std::size_t j = 0; j < info.value_count(i); ++j)
            text << '[' << info.value(i, j) << ']';
    }
    for (std::size_t i = 0; i < info.technical_count(); ++i)
        part() << '<' << info.technical_name(i) << '=' << info.technical_value(i) << '>';
    if (info.length() > 0)
        part() << info.length() << 's';
    if (info.replay_gain() != ReplayGain())
        part() << info.replay_gain().track_gain << "dB";
    return text.str();
}

} // namespace vantaro::test
