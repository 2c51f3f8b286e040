// The saved scripts: listing, showing, importing, exporting, deleting.

#include "quorvex/output.h"
#include "quorvex/script_json.h"
#include "quorvex/script_source.h"
#include "quorvex/verbs.h"

#include "host/access.h"
#include "host/filesystem_access.h"
#include "script/script_library.h"
#include "script/script_stream.h"
#include "vantaro/application/exit_status.h"

#include <filesystem>
#include <functional>

namespace quorvex::command {

using namespace vantaro;

namespace {

std::size_t index_of(const std::string& name) {
    if (const std::optional<std::size_t> index = script_library().find_script(name))
        return *index;
    throw vantaro_io::exception_io_not_found(name + ": there is no saved script of this name.");
}

/// Changes the library as it is stored now.
int change_library(Session& session, const std::function<void()>& change) {
    return session.host.change_configurations(change) ? core::exit_status::done
                                                      : core::exit_status::some_failed;
}

bool is_confirmed(const std::string& message) {
    PopupQuestion::Request question;
    question.title = "Warning";
    question.message = message.c_str();
    question.buttons = button::yes | button::no;
    question.default_button = button::no;
    question.icon = popup_icon::warning;
    return required_service<PopupQuestion>()->ask(question) == button::yes;
}

bool has_json_name(const std::string& path) {
    return std::filesystem::path(path).extension() == ".json";
}

} // namespace

int list_scripts() {
    for (const StoredScript& script : script_library().scripts())
        print_line(core::printable(script.name));
    return core::exit_status::done;
}

int show_script(const std::string& name) {
    print_line(
        core::printable_json(script_to_json(script_library().scripts()[index_of(name)], NotUtf8::replace)));
    return core::exit_status::done;
}

int import_script(Session& session, const std::string& path, std::string name, bool replace) {
    if (name.empty() && !has_lasting_name(path))
        throw vantaro_io::exception_io(path + " says no name for the script: give one with --name.");
    StoredScript script = read_script(session, path);
    if (name.empty())
        name = std::filesystem::path(path).stem().string();
    const auto is_free = [&] { return !script_library().find_script(name).has_value(); };
    if (!replace && !is_free())
        replace = is_confirmed("There is a saved script \"" + name + "\". Replace it ?");
    return change_library(session, [&] {
        if (!replace && !is_free())
            throw vantaro_io::exception_io("There is a saved script \"" + name
                                           + "\" already; --replace replaces it.");
        script_library().store_script(name, std::move(script.actions));
    });
}

int export_script(const std::string& name, const std::string& path) {
    StoredScript script = script_library().scripts()[index_of(name)];
    NeverAbort abort;
    try {
        if (has_json_name(path)) {
            const std::string text = script_to_json(script, NotUtf8::refuse) + '\n';
            const Ref<File> file = filesystem::g_open(path.c_str(), OpenMode::write_new, abort);
            file->writer().write(text.data(), text.size(), abort);
            file->flush(abort);
        } else {
            script.name.clear(); // script files carry none
            write_script_file(path.c_str(), script, abort);
        }
    } catch (const vantaro_io::exception_io& error) {
        throw vantaro_io::exception_io("Error writing quorvex script " + path + " (" + error.what() + ").");
    }
    return core::exit_status::done;
}

int delete_script(Session& session, const std::string& name) {
    return change_library(session, [&] { script_library().delete_script(index_of(name)); });
}

} // namespace quorvex::command
