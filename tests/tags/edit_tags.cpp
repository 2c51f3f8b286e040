// edit_tags FILE CHANGE...: CHANGE is NAME=VALUE, with further values behind backslashes, or NAME alone,
// which removes the field.
#include "vantaro/safe_write/prepare.h"
#include "vantaro/tags/tag_file.h"

#include <iostream>

int main(int argc, char** argv) {
    try {
        std::vector<vantaro::core::FieldChange> changes;
        for (int i = 2; i < argc; ++i) {
            const std::string text = argv[i];
            const std::size_t sign = text.find('=');
            vantaro::core::FieldChange& change = changes.emplace_back();
            change.name = text.substr(0, sign);
            for (std::size_t start = sign; start != std::string::npos;) {
                const std::size_t end = text.find('\\', start + 1);
                change.values.push_back(text.substr(start + 1, end - start - 1));
                start = end;
            }
        }
        vantaro::core::OpenFile file = vantaro::core::OpenFile::open_for_change(
            vantaro::core::real_system_calls(), argc > 1 ? argv[1] : "");
        const vantaro::core::FileEdit edit = vantaro::core::write_tags(file, changes).edit;
        if (edit.empty())
            return 0;
        const vantaro::core::TemporaryNames names{
            [](const std::string& folder) { return folder + "/edit_tags.temporary"; },
            [](const std::string&) {}};
        vantaro::core::PreparedChange change = prepare_change(std::move(file), edit, {}, names);
        apply_change(change);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
