#include "vantaro/tags/id3v2/id3v2_fields.h"

#include "host/api/exceptions.h"
#include "vantaro/tags/id3v2/id3v2_content.h"
#include "vantaro/tags/id3v2/id3v2_names.h"
#include "vantaro/tags/id3v2/id3v2_places.h"
#include "vantaro/tags/number_pair.h"

#include <algorithm>

namespace vantaro::core::tags {

namespace {

constexpr std::string_view user_text = "TXXX:";
constexpr std::string_view musicbrainz_owner = "http://musicbrainz.org";

bool is_digits(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

std::string Id3v2Fields::listed_name(const std::string& name) const {
    if (const FieldPlace* row = row_of_place(id3v2_places, std::string(user_text) + name))
        return std::string(row->only_alone && has_frame("TPE2") ? upper_name(name) : row->field);
    return upper_name(name);
}

bool Id3v2Fields::has_frame(std::string_view id) const {
    return std::ranges::find(tag_.frames, id, &Id3v2Frame::id) != tag_.frames.end();
}

// The place of a text, user text or web frame in the table's terms; empty for all other frames.
std::string Id3v2Fields::place_of(const Id3v2Frame& frame) const {
    if (const FieldPlace* row = row_of_place(id3v2_places, frame.id);
        frame.id != "TXXX" && (row == nullptr || row->place != frame.id)) // frames' names have a case
        return {};
    if (!has_content(tag_, frame) || frame.id != "TXXX")
        return has_content(tag_, frame) ? frame.id : "";
    const Values strings = decode_text(*frame_content(tag_, frame));
    return std::string(user_text) + (strings.empty() ? "" : strings[0]);
}

Values Id3v2Fields::texts_of(const Id3v2Frame& frame) const {
    const std::optional<std::string> content = frame_content(tag_, frame);
    if (!content)
        return {};
    if (is_web_frame(frame.id))
        return {from_latin1(std::string_view(*content).substr(0, content->find('\0')))};
    Values texts = decode_text(*content);
    if (frame.id == "TXXX" && !texts.empty())
        texts.erase(texts.begin());
    return texts;
}

std::string Id3v2Fields::date_of_v23() const {
    std::string year;
    std::string day;
    std::string time;
    for (const Id3v2Frame& frame : tag_.frames)
        for (const auto& [id, text] :
             {std::pair{"TYER", &year}, std::pair{"TDAT", &day}, std::pair{"TIME", &time}})
            if (frame.id == id && text->empty()) {
                const Values texts = texts_of(frame);
                *text = texts.empty() ? "" : texts[0];
            }
    const auto is_number = [](const std::string& text) { return text.size() == 4 && is_digits(text); };
    if (!is_number(year) || !is_number(day))
        return year;
    const std::string date = year + "-" + day.substr(2) + "-" + day.substr(0, 2);
    return is_number(time) ? date + "T" + time.substr(0, 2) + ":" + time.substr(2) : date;
}

std::vector<TrackField> Id3v2Fields::fields() const {
    RankedFields result;
    Values places;
    for (const Id3v2Frame& frame : tag_.frames)
        places.push_back(place_of(frame));
    const auto present = [&](std::string_view place) {
        return std::ranges::find(places, place) != places.end();
    };
    for (const Id3v2Frame& frame : tag_.frames) {
        const std::optional<std::string> content =
            may_hold_field(frame.id) ? frame_content(tag_, frame) : std::nullopt;
        if (!content)
            continue;
        if (const PairNames* names = pair_of_frame(frame.id)) {
            const NumberPair pair = split_pairs(texts_of(frame));
            result.add(std::string(names->number), 0, pair.numbers);
            result.add(std::string(names->total), 0, pair.totals);
        } else if (frame.id == "COMM" || frame.id == "USLT") {
            if (const auto text = decode_described(*content))
                result.add(described_name(field_of_frame(frame.id), text->description), 0, text->texts);
        } else if (frame.id == "WXXX") {
            if (const auto page = decode_web_page(*content))
                result.add(described_name("URL", page->description), 0, {page->address});
        } else if (frame.id == "UFID") {
            const std::size_t end = content->find('\0');
            if (end != std::string::npos && content->substr(0, end) == musicbrainz_owner)
                result.add("MUSICBRAINZ_TRACKID", 0,
                           {utf8_or_latin1(std::string_view(*content).substr(end + 1))});
        } else if (frame.id == "TIPL" || frame.id == "TMCL" || frame.id == "IPLS") {
            for (const InvolvedPerson& person : decode_people(*content))
                if (!person.role.empty())
                    result.add(field_of_role(person.role), 0, {person.name});
        } else if (frame.id == "TCON") {
            result.add("GENRE", 0, decode_genres(texts_of(frame), tag_.version));
        } else if (frame.id == "TDRC") {
            result.add("DATE", 0, texts_of(frame));
        } else if (frame.id == "TYER") {
            if (!has_frame("TDRC"))
                result.add("DATE", 0, {date_of_v23()});
        } else if (const std::string& place = places[static_cast<std::size_t>(&frame - tag_.frames.data())];
                   place.size() > user_text.size()) {
            const std::string name = listed_name(place.substr(user_text.size()));
            const bool own_name = name == upper_name(std::string_view(place).substr(user_text.size()));
            result.add(name, own_name ? id3v2_places.size() : rank_of_place(id3v2_places, place),
                       texts_of(frame));
        } else if (!place.empty() && place != user_text) {
            result.add(field_of_place(id3v2_places, place, present), rank_of_place(id3v2_places, place),
                       texts_of(frame));
        }
    }
    return result.take();
}

void Id3v2Fields::set(const std::string& given_name, const Values& values) {
    if (options_.id3v2 == Id3v2Policy::v24 && tag_.version == 3)
        upgrade_for_good();
    const std::string name = listed_name(given_name);
    const std::string_view described = described_frame(name);
    const bool simple = find_pair(name) == nullptr && described.empty() && !is_people_field(name)
                        && name != "DATE" && name != "GENRE" && name != "MUSICBRAINZ_TRACKID";
    if (simple) {
        set_texts(name, values, given_name);
        return;
    }
    // The field has a frame of its own kind; a user text frame of that name would only contradict it.
    replace_frames(
        [&](const Id3v2Frame& frame) {
            return frame.id == "TXXX" && upper_name(place_of(frame)) == std::string(user_text) + name;
        },
        {});
    if (find_pair(name) != nullptr)
        set_pair(name, values);
    else if (name == "DATE")
        set_date(values);
    else if (name == "GENRE")
        set_genres(values);
    else if (name == "MUSICBRAINZ_TRACKID")
        set_identifier(values);
    else if (described == "WXXX")
        set_web_page(name, values, given_name);
    else if (!described.empty())
        set_described(std::string(described), name, values, given_name);
    else
        set_people(tag_, name, values);
}

void Id3v2Fields::replace_frames(const IsFrame& matches, std::vector<Id3v2Frame> frames) {
    auto position = std::ranges::find_if(tag_.frames, matches);
    const auto index = position - tag_.frames.begin();
    std::erase_if(tag_.frames, matches);
    tag_.frames.insert(tag_.frames.begin() + index, std::make_move_iterator(frames.begin()),
                       std::make_move_iterator(frames.end()));
}

void Id3v2Fields::begin_with(const TagOptions& options) {
    follow(options);
    if (options.id3v2 == Id3v2Policy::v23)
        tag_.version = 3;
}

bool Id3v2Fields::joins_values() const {
    return tag_.version == 3 && (options_.id3v2 == Id3v2Policy::keep || options_.id3v2 == Id3v2Policy::v23);
}

Values Id3v2Fields::fitting(const Values& values) const {
    if (values.size() < 2 || !joins_values())
        return values;
    std::string joined = values.front();
    for (std::size_t i = 1; i < values.size(); ++i)
        joined += options_.separator + values[i];
    return {joined};
}

bool Id3v2Fields::holds(const std::string&, const Values& wanted, const Values& found) const {
    return found == wanted || found == fitting(wanted);
}

// Another tag of the file may take the change; this one would be left behind then.
void Id3v2Fields::upgrade_for_good() {
    try {
        upgrade_to_v24();
    } catch (const Refused& reason) {
        throw vantaro_io::exception_io(std::string("Nothing was written: ") + reason.what());
    }
}

void Id3v2Fields::allow_several(const Values& values) {
    if (values.size() > 1 && tag_.version == 3)
        upgrade_to_v24();
}

std::string Id3v2Fields::customary_place(const std::string& name, const std::string& spelling) const {
    const auto& foreign = tag_.version == 3 ? std::span<const std::string_view>(only_in_v24)
                                            : std::span<const std::string_view>(only_in_v23);
    for (const FieldPlace& row : id3v2_places)
        if (row.field == name && std::ranges::find(foreign, row.place) == foreign.end())
            return std::string(row.place);
    return std::string(user_text) + (upper_name(spelling) == name ? spelling : name);
}

Id3v2Frame Id3v2Fields::text_frame(const std::string& place, const Values& values) const {
    if (place.starts_with(user_text)) {
        Values strings = values;
        strings.insert(strings.begin(), place.substr(user_text.size()));
        return {"TXXX", 0, encode_text(strings, tag_.version)};
    }
    if (is_web_frame(place))
        return {place, 0, to_latin1(values.at(0)).value_or("")};
    return {place, 0, encode_text(values, tag_.version)};
}

void Id3v2Fields::set_texts(const std::string& name, const Values& given, const std::string& spelling) {
    const Values values = fitting(given);
    allow_several(values);
    const bool web_text = given.size() == 1 && to_latin1(given[0]);
    Values places; // those that the tag has, each once
    Values all_places;
    for (const Id3v2Frame& frame : tag_.frames)
        all_places.push_back(place_of(frame));
    const auto present = [&](std::string_view place) {
        return std::ranges::find(all_places, place) != all_places.end();
    };
    const auto is_place_of_field = [&](const std::string& place) {
        if (row_of_place(id3v2_places, place) != nullptr)
            return field_of_place(id3v2_places, place, present) == name;
        return place.starts_with(user_text) && upper_name(place.substr(user_text.size())) == name;
    };
    for (const std::string& place : all_places) {
        if (!place.empty() && is_place_of_field(place) && std::ranges::find(places, place) == places.end())
            places.push_back(place);
    }
    bool placed = values.empty();
    const auto put = [&](const std::string& place) {
        const bool fits = !values.empty() && (!is_web_frame(place) || web_text);
        std::vector<Id3v2Frame> frames;
        if (fits)
            frames.push_back(text_frame(place, values));
        replace_frames([&](const Id3v2Frame& frame) { return place_of(frame) == place; }, std::move(frames));
        placed = placed || fits;
    };
    for (const std::string& place : places)
        put(place);
    if (!placed)
        put(customary_place(name, spelling));
    if (!placed)
        put(std::string(user_text) + name);
}

void Id3v2Fields::set_pair(const std::string& name, const Values& values) {
    const PairNames& names = *find_pair(name);
    const std::string id(frame_of_pair(names));
    const auto matches = [&](const Id3v2Frame& frame) { return frame.id == id; };
    Values texts;
    for (const Id3v2Frame& frame : tag_.frames)
        if (matches(frame))
            std::ranges::copy(texts_of(frame), std::back_inserter(texts));
    NumberPair pair = split_pairs(texts);
    pair.half(names, name) = values;
    texts = join_pairs(pair);
    if (texts.size() > 1 && joins_values())
        throw vantaro_io::exception_io(name
                                       + ": an ID3v2.3 tag, which is to stay one, holds one number only");
    allow_several(texts);
    std::vector<Id3v2Frame> frames;
    if (!texts.empty())
        frames.push_back({id, 0, encode_text(texts, tag_.version)});
    replace_frames(matches, std::move(frames));
}

void Id3v2Fields::set_date(const Values& given) {
    const Values values = fitting(given);
    allow_several(values);
    std::vector<Id3v2Frame> frames;
    if (values.size() == 1 && tag_.version == 3) {
        for (const auto& [id, text] : v23_date(values[0]))
            frames.push_back({id, 0, encode_text({text}, 3)});
    } else if (!values.empty()) {
        frames.push_back({"TDRC", 0, encode_text(values, tag_.version)});
    }
    replace_frames(is_date_frame, std::move(frames));
}

void Id3v2Fields::set_genres(const Values& given) {
    const Values values = fitting(given);
    allow_several(values);
    std::vector<Id3v2Frame> frames;
    if (!values.empty())
        frames.push_back({"TCON", 0, encode_genres(values, tag_.version)});
    replace_frames([](const Id3v2Frame& frame) { return frame.id == "TCON"; }, std::move(frames));
}

void Id3v2Fields::set_identifier(const Values& values) {
    const auto matches = [&](const Id3v2Frame& frame) {
        const std::optional<std::string> content =
            frame.id == "UFID" ? frame_content(tag_, frame) : std::nullopt;
        return content && content->starts_with(std::string(musicbrainz_owner) + '\0');
    };
    if (values.size() > 1) {
        replace_frames(matches, {});
        set_texts("MUSICBRAINZ_TRACKID", values, "MUSICBRAINZ_TRACKID");
        return;
    }
    std::vector<Id3v2Frame> frames;
    if (!values.empty())
        frames.push_back({"UFID", 0, std::string(musicbrainz_owner) + '\0' + values[0]});
    replace_frames(matches, std::move(frames));
}

void Id3v2Fields::set_web_page(const std::string& name, const Values& values, const std::string& spelling) {
    std::string description = spelling.substr(std::min(spelling.size(), std::string_view("URL:").size()));
    const auto matches = [&](const Id3v2Frame& frame) {
        const std::optional<std::string> content =
            frame.id == "WXXX" ? frame_content(tag_, frame) : std::nullopt;
        const std::optional<WebPage> page = content ? decode_web_page(*content) : std::nullopt;
        return page && described_name("URL", page->description) == name;
    };
    const auto old = std::ranges::find_if(tag_.frames, matches);
    if (old != tag_.frames.end())
        description = decode_web_page(*frame_content(tag_, *old))->description;
    const bool fits = values.size() == 1 && to_latin1(values[0]);
    std::vector<Id3v2Frame> frames;
    if (fits)
        frames.push_back({"WXXX", 0, encode_web_page({description, values[0]}, tag_.version)});
    replace_frames(matches, std::move(frames));
    if (!fits && !values.empty())
        set_texts(name, values, spelling);
}

void Id3v2Fields::set_described(const std::string& id, const std::string& name, const Values& values,
                                const std::string& spelling) {
    const std::string field = field_of_frame(id);
    struct OldText {
        DescribedText text; // one text
        Id3v2Frame frame;
    };
    std::vector<OldText> old;
    const auto matches = [&](const Id3v2Frame& frame) {
        const std::optional<std::string> content = frame.id == id ? frame_content(tag_, frame) : std::nullopt;
        const std::optional<DescribedText> text = content ? decode_described(*content) : std::nullopt;
        return text && described_name(field, text->description) == name;
    };
    for (const Id3v2Frame& frame : tag_.frames)
        if (matches(frame)) {
            const DescribedText text = *decode_described(*frame_content(tag_, frame));
            for (const std::string& value : text.texts) {
                const DescribedText part{text.language, text.description, {value}};
                old.push_back({part, text.texts.size() == 1
                                         ? frame
                                         : Id3v2Frame{id, 0, encode_described(part, tag_.version)}});
            }
        }
    // Values that stay keep their frames; the others take over the languages that are left, in order.
    std::vector<const OldText*> models(values.size(), nullptr);
    std::vector<bool> used(old.size(), false);
    for (const bool same_text : {true, false})
        for (std::size_t i = 0; i < values.size(); ++i)
            for (std::size_t j = 0; j < old.size() && models[i] == nullptr; ++j)
                if (!used[j] && (!same_text || old[j].text.texts[0] == values[i])) {
                    models[i] = &old[j];
                    used[j] = true;
                }
    const DescribedText fresh{
        "eng", name.size() > field.size() ? spelling.substr(field.size() + 1) : std::string(), {}};
    std::vector<Id3v2Frame> frames;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (models[i] != nullptr && models[i]->text.texts[0] == values[i]) {
            frames.push_back(models[i]->frame);
            continue;
        }
        DescribedText text = models[i] != nullptr ? models[i]->text : old.empty() ? fresh : old.back().text;
        text.texts = {values[i]};
        frames.push_back({id, 0, encode_described(text, tag_.version)});
    }
    replace_frames(matches, std::move(frames));
}

void Id3v2Fields::upgrade_to_v24() {
    const std::string date = date_of_v23();
    Values genres;
    for (const Id3v2Frame& frame : tag_.frames)
        if (frame.id == "TCON")
            std::ranges::copy(decode_genres(texts_of(frame), 3), std::back_inserter(genres));
    restructure_as_v24(tag_);
    split_people_list(tag_);
    if (!genres.empty())
        set_genres(genres);
    if (!date.empty() && !has_frame("TDRC"))
        set_date({date});
    if (!has_frame("TDOR"))
        for (Id3v2Frame& frame : tag_.frames)
            if (frame.id == "TORY")
                frame.id = "TDOR";
}

} // namespace vantaro::core::tags
