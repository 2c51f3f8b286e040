#include "vantaro/tags/field_places.h"
#include "vantaro/tags/id3v2/id3v2_content.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr auto roles = std::to_array<FieldPlace>({
    {"ARRANGER", "arranger"},
    {"ENGINEER", "engineer"},
    {"PRODUCER", "producer"},
    {"DJMIXER", "DJ-mix"},
    {"MIXER", "mix"},
});
static_assert(is_sound(roles));

constexpr std::string_view performer = "PERFORMER:";

bool is_people_frame(const Id3v2Frame& frame) {
    return frame.id == "TIPL" || frame.id == "TMCL" || frame.id == "IPLS";
}

// Files of 2.4 with a frame IPLS exist; pairs are pairs there too.
std::string new_frame_id(int version, std::string_view field) {
    if (version == 3)
        return "IPLS";
    return field.starts_with(performer) ? "TMCL" : "TIPL";
}

std::string encode_people(const std::vector<InvolvedPerson>& people, int version) {
    Values strings;
    for (const InvolvedPerson& person : people) {
        strings.push_back(person.role);
        strings.push_back(person.name);
    }
    return encode_text(strings, version);
}

std::string new_role(const std::string& field) {
    if (const FieldPlace* row = row_of_field(roles, field))
        return std::string(row->place);
    std::string role = field.substr(performer.size());
    std::ranges::transform(role, role.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return role;
}

void append_people(Id3v2Tag& tag, const std::string& id, const std::vector<InvolvedPerson>& people) {
    if (people.empty())
        return;
    const auto frame = std::ranges::find(tag.frames, id, &Id3v2Frame::id);
    const std::optional<std::string> content =
        frame == tag.frames.end() ? std::nullopt : frame_content(tag, *frame);
    if (!content) {
        tag.frames.push_back({id, 0, encode_people(people, tag.version)});
        return;
    }
    std::vector<InvolvedPerson> all = decode_people(*content);
    all.insert(all.end(), people.begin(), people.end());
    *frame = {id, 0, encode_people(all, tag.version)};
}

} // namespace

std::string field_of_role(std::string_view role) {
    if (const FieldPlace* row = row_of_place(roles, role))
        return std::string(row->field);
    return std::string(performer) + upper_name(role);
}

bool is_people_field(std::string_view name) {
    return row_of_field(roles, name) != nullptr
           || (name.starts_with(performer) && name.size() > performer.size());
}

std::vector<InvolvedPerson> decode_people(std::string_view body) {
    const Values strings = decode_text(body);
    std::vector<InvolvedPerson> people;
    for (std::size_t i = 0; i + 1 < strings.size(); i += 2)
        people.push_back({strings[i], strings[i + 1]});
    // An odd role at the end has lost its name; it stays where it is.
    if (strings.size() % 2 != 0)
        people.push_back({strings.back(), ""});
    return people;
}

void set_people(Id3v2Tag& tag, const std::string& field, const Values& names) {
    bool placed = names.empty();
    for (Id3v2Frame& frame : tag.frames) {
        const std::optional<std::string> content =
            is_people_frame(frame) ? frame_content(tag, frame) : std::nullopt;
        if (!content)
            continue;
        std::vector<InvolvedPerson> people;
        bool changed = false;
        for (InvolvedPerson& person : decode_people(*content)) {
            if (field_of_role(person.role) != field) {
                people.push_back(std::move(person));
                continue;
            }
            changed = true;
            if (!placed)
                for (const std::string& name : names)
                    people.push_back({person.role, name});
            placed = true;
        }
        if (changed)
            frame = {frame.id, 0, people.empty() ? std::string() : encode_people(people, tag.version)};
    }
    std::erase_if(tag.frames,
                  [](const Id3v2Frame& frame) { return is_people_frame(frame) && frame.body.size() == 0; });
    if (placed)
        return;
    std::vector<InvolvedPerson> people;
    for (const std::string& name : names)
        people.push_back({new_role(field), name});
    append_people(tag, new_frame_id(tag.version, field), people);
}

void split_people_list(Id3v2Tag& tag) {
    std::vector<InvolvedPerson> involved;
    std::vector<InvolvedPerson> musicians;
    std::erase_if(tag.frames, [&](const Id3v2Frame& frame) {
        const std::optional<std::string> content =
            frame.id == "IPLS" ? frame_content(tag, frame) : std::nullopt;
        if (!content)
            return false;
        for (const InvolvedPerson& person : decode_people(*content))
            (field_of_role(person.role).starts_with(performer) ? musicians : involved).push_back(person);
        return true;
    });
    append_people(tag, "TIPL", involved);
    append_people(tag, "TMCL", musicians);
}

} // namespace vantaro::core::tags
