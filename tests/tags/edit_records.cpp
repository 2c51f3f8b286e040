// edit_records: does to records of tags what scripts do, and says what a preview shows, what a run would
// write and what reading it gives then; no file is changed.
//
// Standard input: a line {"path", "edit", "name", "value"} each, and "id3v2" where the version is chosen.
// Standard output: a line each with "before", "preview" or "preview_error", "file" or "file_error",
// "tag_version".
#include "vantaro/tags/tag_file.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <iostream>
#include <iterator>

using namespace vantaro;
using Json = nlohmann::json;

namespace {

Json fields_of(const TrackInfoRecord& info) {
    Json result = Json::object();
    for (const TrackField& field : info.fields())
        result[field.name] = field.values;
    return result;
}

// By the operations that the actions of scripts use.
void edit(TrackInfo& info, const std::string& how, const char* name, const char* value) {
    const std::size_t field = info.find_field(name);
    if (how == "set")
        info.set_field(name, value);
    else if (how == "add")
        info.add_value(name, value);
    else if (how == "remove" && field != no_field)
        info.remove_fields(MaskOne(field));
    else if (how == "remove value" && field != no_field)
        info.remove_values(field, MaskOne(0));
    else if (how == "replace" && field != no_field)
        info.modify_value(field, 0, value);
    else if (how == "split" && field != no_field)
        info.insert_value(field, 1, value);
    else if (how == "copy" && field != no_field)
        info.set_field("COPY OF IT", info.value(field, 0));
    else if (how == "keep")
        for (std::size_t i = info.field_count(); i-- > 0;)
            if (i != info.find_field(name))
                info.remove_fields(MaskOne(i));
}

core::MemorySource whole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {path, std::string(std::istreambuf_iterator<char>(file), {})};
}

core::MemorySource edited(const core::MemorySource& file, const core::FileEdit& edit) {
    return {file.path(), core::edited_bytes(edit, file.bytes())};
}

Json answer(const Json& line) {
    Json result = Json::object();
    const core::MemorySource file = whole(line.at("path"));
    TrackInfoRecord before;
    const core::TagOptions options{*core::id3v2_policy(line.value("id3v2", "as-needed")), "; "};
    core::read_tags(file, before, nullptr, options);
    result["before"] = fields_of(before);
    TrackInfoRecord after = before;
    const std::string name = line.at("name");
    const std::string value = line.at("value");
    edit(after, line.at("edit"), name.c_str(), value.c_str());
    if (line.contains("then")) // a second action, on a copy as scripts work on
        edit(after = TrackInfoRecord(static_cast<const TrackInfo&>(after)), line.at("then"), name.c_str(),
             "second");
    const TrackInfoRecord raw = after;
    try {
        before.rules()->settle(before, after);
        result["preview"] = fields_of(after);
    } catch (const std::exception& error) {
        result["preview_error"] = error.what();
        after = raw;
    }
    try {
        const core::WriteResult result_of_writing =
            core::write_tags(file, core::field_changes(before.fields(), after.fields()), nullptr, options);
        TrackInfoRecord written;
        core::read_tags(edited(file, result_of_writing.edit), written);
        result["file"] = fields_of(written);
        const std::size_t kinds = written.find_technical("tagtype");
        result["tagtype"] = kinds == no_field ? "" : written.technical_value(kinds);
        if (result_of_writing.tag_version)
            result["tag_version"] = {result_of_writing.tag_version->before,
                                     result_of_writing.tag_version->after};
    } catch (const std::exception& error) {
        result["file_error"] = error.what();
    }
    return result;
}

} // namespace

int main() {
    for (std::string line; std::getline(std::cin, line);)
        try {
            std::cout << answer(Json::parse(line)) << '\n';
        } catch (const std::exception& error) {
            std::cerr << line << ": " << error.what() << '\n';
            return 1;
        }
}
