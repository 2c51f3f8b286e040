#include "vantaro/tags/id3v2/id3v2_names.h"

#include <algorithm>
#include <array>

namespace vantaro::core::tags {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> pair_frames{
    {{"TRCK", "TRACKNUMBER"}, {"TPOS", "DISCNUMBER"}, {"MVIN", "MOVEMENTNUMBER"}}};
// COMMENT and COMMENT:X and so on: frame and field.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> described_frames{
    {{"COMM", "COMMENT"}, {"USLT", "LYRICS"}, {"WXXX", "URL"}}};

} // namespace

bool is_web_frame(std::string_view id) {
    return id.starts_with('W') && id != "WFED" && id != "WXXX";
}

const PairNames* pair_of_frame(std::string_view id) {
    for (const auto& [frame, field] : pair_frames)
        if (frame == id)
            return find_pair(field);
    return nullptr;
}

std::string_view frame_of_pair(const PairNames& names) {
    for (const auto& [frame, field] : pair_frames)
        if (field == names.number)
            return frame;
    return {};
}

std::string described_name(std::string_view field, const std::string& description) {
    if (description.empty() || (field == "LYRICS" && upper_name(description) == "LYRICS"))
        return std::string(field);
    return std::string(field) + ":" + upper_name(description);
}

std::string_view described_frame(std::string_view name) {
    for (const auto& [frame, field] : described_frames)
        if (name == field
            || (name.starts_with(field) && name.size() > field.size() + 1 && name[field.size()] == ':'))
            return frame;
    return {};
}

std::string field_of_frame(std::string_view id) {
    for (const auto& [frame, field] : described_frames)
        if (frame == id)
            return std::string(field);
    return {};
}

std::vector<std::pair<std::string, std::string>> v23_date(const std::string& date) {
    const auto has_form = [&](std::string_view form) {
        return date.size() == form.size()
               && std::equal(form.begin(), form.end(), date.begin(),
                             [](char f, char c) { return f == 'n' ? c >= '0' && c <= '9' : f == c; });
    };
    if (has_form("nnnn-nn-nn"))
        return {{"TYER", date.substr(0, 4)}, {"TDAT", date.substr(8, 2) + date.substr(5, 2)}};
    if (has_form("nnnn-nn-nnTnn:nn"))
        return {{"TYER", date.substr(0, 4)},
                {"TDAT", date.substr(8, 2) + date.substr(5, 2)},
                {"TIME", date.substr(11, 2) + date.substr(14, 2)}};
    return {{"TYER", date}};
}

bool may_hold_field(std::string_view id) {
    return id.starts_with('T') || id.starts_with('W') || id == "COMM" || id == "USLT" || id == "UFID"
           || id == "IPLS" || id == "MVNM" || id == "MVIN" || id == "GRP1";
}

bool is_date_frame(const Id3v2Frame& frame) {
    return frame.id == "TDRC" || frame.id == "TYER" || frame.id == "TDAT" || frame.id == "TIME";
}

} // namespace vantaro::core::tags
