#include "component/own_services.h"

#include <algorithm>

namespace quorvex {

using namespace vantaro;

namespace {

constexpr std::string_view expected_file_name = "vnt_quorvex.dll";

std::string module_path;
std::string module_file_name;

} // namespace

void set_library_path(const char* path, const char* file_name) {
    module_path = path;
    module_file_name = file_name;
}

const std::string& library_path() {
    return module_path;
}

void VersionRecord::get_file_name(TextSink& out) {
    set_text(out, module_file_name);
}

void VersionRecord::get_component_name(TextSink& out) {
    set_text(out, component_name);
}

void VersionRecord::get_version(TextSink& out) {
    set_text(out, component_version);
}

void VersionRecord::get_about(TextSink& out) {
    set_text(out, "Edits the tags of many tracks at once with scripts of actions.");
}

bool FileNameCheck::is_installed_correctly() {
    const std::string_view path = module_path;
    const std::size_t separator = path.find_last_of("\\/|:");
    return path.substr(separator == std::string_view::npos ? 0 : separator + 1) == expected_file_name;
}

void PreferencesBranch::get_name(TextSink& out) {
    set_text(out, component_name);
}

void IntegerPreference::get_name(TextSink& out) {
    set_text(out, name_);
}

void IntegerPreference::get_value(TextSink& out) {
    set_text(out, std::to_string(variable_.get().front()));
}

void IntegerPreference::set_value(const char* text, std::size_t length) {
    std::uint64_t value = 0;
    for (const char c : std::string_view(text, length)) {
        if (c < '0' || c > '9')
            break;
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    variable_.set({std::clamp(value, range_.minimum, range_.maximum)});
}

} // namespace quorvex
