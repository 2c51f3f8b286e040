#include "vantaro/tags/matroska/matroska_fields.h"

#include "host/api/exceptions.h"
#include "vantaro/common/utf8.h"
#include "vantaro/tags/matroska/ebml.h"
#include "vantaro/tags/matroska/matroska_places.h"
#include "vantaro/tags/number_pair.h"
#include "vantaro/tags/numbers.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::uint32_t tag_id = 0x7373;
constexpr std::uint32_t targets_id = 0x63C0;
constexpr std::uint32_t level_id = 0x68CA;
constexpr std::uint32_t level_name_id = 0x63CA;
constexpr std::uint32_t track_uid_id = 0x63C5;
constexpr std::uint32_t edition_uid_id = 0x63C9;
constexpr std::uint32_t chapter_uid_id = 0x63C4;
constexpr std::uint32_t attachment_uid_id = 0x63C6;
constexpr std::uint32_t simple_id = 0x67C8;
constexpr std::uint32_t name_id = 0x45A3;
constexpr std::uint32_t text_id = 0x4487;
constexpr std::uint32_t binary_id = 0x4485;
constexpr std::uint32_t language_id = 0x447A;
constexpr std::uint32_t new_language_id = 0x447B;

/// Reading takes time by its square.
constexpr std::size_t most_simples = 10'000;

std::string place_at(unsigned level, std::string_view name) {
    return std::to_string(level) + ":" + std::string(name);
}
unsigned level_of_place(std::string_view place) {
    return static_cast<unsigned>(place[0] - '0') * 10;
}
std::string_view name_of_place(std::string_view place) {
    return place.substr(3);
}

/// The simple tag with another text, or a new one. What else stands in it stays.
std::string simple_bytes(std::string_view old, const std::string& name, const std::string& value) {
    std::string body;
    if (old.empty()) {
        body = make_element(name_id, name) + make_element(text_id, value);
    } else {
        std::string_view children = take_element(old)->body;
        while (const std::optional<EbmlElement> child = take_element(children))
            body += child->id == text_id ? make_element(text_id, value) : std::string(child->whole);
        body += children;
    }
    return make_element(simple_id, body);
}

std::string level_element(unsigned level) {
    return make_element(level_id, std::string(1, static_cast<char>(level)));
}

/// Programs drop a level of 50 as what goes without saying; its name stays.
std::string targets_of(unsigned level) {
    constexpr unsigned album = 50;
    return make_element(targets_id,
                        level_element(level) + (level == album ? make_element(level_name_id, "ALBUM") : ""));
}

} // namespace

MatroskaFields::MatroskaFields(std::string_view bytes, std::uint64_t track) {
    std::size_t simples = 0;
    while (const std::optional<EbmlElement> element = take_element(bytes)) {
        if (element->id == tag_id) {
            tags_.push_back(read_tag(element->body, track));
            tags_.back().bytes = element->whole;
            simples += tags_.back().simples.size() + 1;
            if (simples > most_simples)
                throw vantaro_io::exception_io_data("The file has more than 10,000 tags");
        } else if (element->id != checksum_id && element->id != void_id) {
            rest_ += element->whole;
        }
    }
    if (!bytes.empty())
        throw vantaro_io::exception_io_data("A tag is larger than the Tags element that it stands in");
}

MatroskaFields::Tag MatroskaFields::read_tag(std::string_view body, std::uint64_t track) {
    Tag tag;
    bool is_of_track = false;
    while (const std::optional<EbmlElement> element = take_element(body)) {
        if (element->id == simple_id && tag.simples.size() <= most_simples) {
            tag.simples.push_back(read_simple(element->whole, element->body));
        } else if (element->id == targets_id && tag.targets.empty()) {
            tag.targets = element->whole;
            std::string_view targets = element->body;
            while (const std::optional<EbmlElement> child = take_element(targets)) {
                const std::uint64_t number = child->body.size() > 8 ? 0 : big_endian(child->body);
                if (child->id == level_id)
                    tag.told = number < 100 ? static_cast<unsigned>(number) : 1;
                else if (child->id == level_name_id && tag.told == no_level)
                    tag.told = same_text(clean_text(child->body), "TRACK") ? track_level : album_level;
                else if (child->id == track_uid_id && number != 0)
                    (number == track ? is_of_track : tag.counts) = number == track;
                else if ((child->id == edition_uid_id || child->id == chapter_uid_id
                          || child->id == attachment_uid_id)
                         && number != 0)
                    tag.counts = false;
            }
        } else if (element->id != checksum_id && element->id != void_id) {
            tag.head += element->whole;
        }
    }
    if (!body.empty())
        throw vantaro_io::exception_io_data("A simple tag is larger than the tag that it stands in");
    // Of a track alone, without a level, are statistics.
    if (is_of_track && tag.told == no_level)
        tag.counts = false;
    return tag;
}

MatroskaFields::Simple MatroskaFields::read_simple(std::string_view whole, std::string_view body) {
    Simple simple{{}, {}, std::string(whole)};
    bool is_field = true;
    while (const std::optional<EbmlElement> child = take_element(body)) {
        if (child->id == name_id)
            simple.name = clean_text(child->body);
        else if (child->id == text_id)
            simple.value = clean_text(child->body);
        else if (child->id == binary_id
                 || ((child->id == language_id || child->id == new_language_id)
                     && clean_text(child->body) != "und"))
            is_field = false;
    }
    if (!is_field || simple.name.empty())
        simple.value.reset();
    return simple;
}

std::string MatroskaFields::render() const {
    std::string result;
    for (const Tag& tag : tags_) {
        if (!tag.bytes.empty()) {
            result += tag.bytes;
            continue;
        }
        std::string body = tag.targets + tag.head;
        for (const Simple& simple : tag.simples)
            body += simple.bytes;
        result += make_element(tag_id, body);
    }
    return result + rest_;
}

bool MatroskaFields::tells_track() const {
    return std::ranges::any_of(tags_, [](const Tag& tag) { return tag.counts && tag.told == track_level; });
}

unsigned MatroskaFields::level_of(const Tag& tag) const {
    if (tag.told != no_level)
        return tag.told;
    return tells_track() ? album_level : track_level;
}

bool MatroskaFields::has(std::string_view place) const {
    return std::ranges::any_of(tags_, [&](const Tag& tag) {
        return tag.counts && level_of(tag) == level_of_place(place)
               && std::ranges::any_of(tag.simples, [&](const Simple& simple) {
                      return simple.value && same_text(simple.name, name_of_place(place));
                  });
    });
}

// Empty when nothing at this level is the field.
std::string MatroskaFields::field_at(unsigned level, const std::string& name) const {
    const FieldPlace* row = row_of_place(matroska_places, place_at(level, name));
    if (row == nullptr && level == album_level)
        row = row_of_place(matroska_places, place_at(track_level, name));
    if (row == nullptr)
        return level == track_level || level == album_level ? upper_name(name) : std::string();
    if (row->only_alone && std::ranges::any_of(matroska_places, [&](const FieldPlace& other) {
            return other.field == row->field && !other.only_alone
                   && (has(other.place) || has(place_at(album_level, name_of_place(other.place))));
        }))
        return upper_name(name);
    return std::string(row->field);
}

std::vector<TrackField> MatroskaFields::fields() const {
    RankedFields result;
    for (const Tag& tag : tags_) {
        if (!tag.counts)
            continue;
        const unsigned level = level_of(tag);
        for (const Simple& simple : tag.simples) {
            const std::string name = simple.value ? field_at(level, simple.name) : std::string();
            if (name.empty())
                continue;
            std::size_t rank = rank_of_place(matroska_places, place_at(level, simple.name));
            if (rank == matroska_places.size() && level == album_level)
                rank += 1 + rank_of_place(matroska_places, place_at(track_level, simple.name));
            const PairNames* names = find_pair(name);
            if (names != nullptr && names->number == name) {
                const NumberPair pair = split_pairs({*simple.value});
                result.add(name, rank, pair.numbers);
                // A text of its own says it better.
                result.add(std::string(names->total), 3 * matroska_places.size(), pair.totals);
            } else {
                result.add(name, rank, {*simple.value});
            }
        }
    }
    return result.take();
}

void MatroskaFields::set(const std::string& given_name, const Values& values) {
    const std::string name = listed_name(given_name);
    const bool told_track = tells_track();
    if (find_pair(name) != nullptr)
        split_pair(name);
    replace(name, values);
    tell_levels(told_track);
}

void MatroskaFields::split_pair(const std::string& name) {
    const PairNames& names = *find_pair(name);
    const bool is_joined = std::ranges::any_of(tags_, [&](const Tag& tag) {
        return tag.counts && std::ranges::any_of(tag.simples, [&](const Simple& simple) {
                   return simple.value && simple.value->find('/') != std::string::npos
                          && field_at(level_of(tag), simple.name) == names.number;
               });
    });
    if (!is_joined)
        return;
    const std::vector<TrackField> fields = this->fields();
    for (const std::string_view half : {names.number, names.total}) {
        const Values* values = find_values(fields, half);
        replace(std::string(half), values == nullptr ? Values() : *values);
    }
}

void MatroskaFields::replace(const std::string& field, const Values& values) {
    struct Match {
        Tag* tag;
        Simple* simple;
        std::string place;
    };
    struct Found {
        std::string place;
        std::size_t count;
    };
    std::vector<Found> done;
    const bool told_track = tells_track();
    // By what they mean before anything changes.
    std::vector<Match> matching;
    for (Tag& tag : tags_)
        for (Simple& simple : tag.simples) {
            const unsigned level = tag.counts && simple.value ? level_of(tag) : no_level;
            if (level != no_level && field_at(level, simple.name) == field)
                matching.push_back({&tag, &simple, upper_name(place_at(level, simple.name))});
        }
    for (const auto& [tag, simple, place] : matching) {
        auto found = std::ranges::find(done, place, &Found::place);
        if (found == done.end())
            found = done.insert(done.end(), {place, 0});
        if (found->count >= values.size()) {
            simple->bytes.clear();
            simple->value.reset();
            tag->bytes.clear();
        } else if (const std::string& value = values[found->count++]; *simple->value != value) {
            simple->bytes = simple_bytes(simple->bytes, simple->name, value);
            simple->value = value;
            tag->bytes.clear();
        }
    }
    if (done.empty())
        done.push_back({place_of_new(field), 0});
    for (const Found& found : done) {
        const unsigned level = level_of_place(found.place);
        for (std::size_t i = found.count; i < values.size(); ++i) {
            const std::string name(name_of_place(found.place));
            Tag* tag = nullptr;
            for (Tag& other : tags_) // where the others of the place stand
                if (other.counts && level_of(other) == level
                    && std::ranges::any_of(other.simples, [&](const Simple& simple) {
                           return simple.value && same_text(simple.name, name);
                       }))
                    tag = &other;
            if (tag == nullptr)
                tag = &tag_of_level(level);
            tag->bytes.clear();
            tag->simples.push_back({name, values[i], simple_bytes({}, name, values[i])});
        }
    }
    for (Tag& tag : tags_)
        std::erase_if(tag.simples, [](const Simple& simple) { return simple.bytes.empty(); });
    if (values.empty() && !matching.empty())
        std::erase_if(tags_, [](const Tag& tag) {
            return tag.bytes.empty() && tag.counts && tag.simples.empty() && tag.head.empty();
        });
    tell_levels(told_track);
}

// Where tags that tell no level speak of the track, a new field joins them.
std::string MatroskaFields::place_of_new(const std::string& field) const {
    const FieldPlace* row = row_of_field(matroska_places, field);
    if (row == nullptr)
        return place_at(track_level, field);
    const bool is_untold = !tells_track() && std::ranges::any_of(tags_, [](const Tag& tag) {
        return tag.counts && tag.told == no_level;
    });
    if (is_untold)
        for (const FieldPlace& other : matroska_places)
            if (other.field == field && level_of_place(other.place) == track_level)
                return std::string(other.place);
    return std::string(row->place);
}

MatroskaFields::Tag& MatroskaFields::tag_of_level(unsigned level) {
    for (Tag& tag : tags_)
        if (tag.counts && level_of(tag) == level)
            return tag;
    return tags_.emplace_back(Tag{{}, targets_of(level), level});
}

void MatroskaFields::tell_levels(bool told_track) {
    if (!told_track || tells_track())
        return;
    for (Tag& tag : tags_)
        if (tag.counts && tag.told == no_level) {
            tag.targets = targets_of(album_level);
            tag.bytes.clear();
            tag.told = album_level;
        }
}

} // namespace vantaro::core::tags
