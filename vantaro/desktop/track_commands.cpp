#include "vantaro/desktop/track_commands.h"

#include "vantaro/windows/shortcuts_window.h"

#include <algorithm>

namespace vantaro::core {

namespace {

std::vector<TrackHandle*> handles(const std::vector<Track*>& tracks) {
    return {tracks.begin(), tracks.end()};
}

void show_failure(Host& host, const std::string& text) {
    host.for_each_service<PopupMessage>(
        [&](PopupMessage& message) { message.show(text.data(), text.size(), "Vantaro", popup_icon::error); });
}

} // namespace

TrackCommands::TrackCommands(Host& host, TrackList& list, TrackLoader& loader, QMainWindow& window,
                             const std::string& config_dir)
    : host_(host), list_(list), loader_(loader), window_(window) {
    shortcuts_.load(config_dir, [&host](const std::string& line) { host.report(line); });
}

void TrackCommands::set_own_actions(const std::vector<QAction*>& actions) {
    own_actions_.clear();
    for (QAction* action : actions)
        if (!action->shortcuts().isEmpty())
            own_actions_.push_back({action, action->shortcuts()});
    update_shortcuts();
}

std::vector<MenuCommand> TrackCommands::commands_for(const std::vector<Track*>& tracks) {
    return context_menu(host_, handles(tracks), {});
}

void TrackCommands::fill(QMenu& menu) {
    const std::vector<Track*> tracks = list_.selected_tracks();
    if (!tracks.empty())
        fill_menu(menu, commands_for(tracks), shortcuts_,
                  [this, tracks](const MenuCommand& command) { run(command, tracks); });
}

void TrackCommands::update_shortcuts() {
    std::vector<QKeySequence> taken;
    key_actions_.clear();
    for (const MenuCommand& command : context_menu(host_, {}, menu_caller::command_list)) {
        const QKeySequence keys = shortcuts_.shortcut(command.guid);
        if (keys.isEmpty() || std::ranges::find(taken, keys) != taken.end())
            continue;
        taken.push_back(keys);
        QAction& action = *key_actions_.emplace_back(std::make_unique<QAction>());
        const QString name = QString::fromStdString(path_of(command));
        action.setShortcut(keys);
        QObject::connect(&action, &QAction::triggered,
                         [this, guid = command.guid, name] { run_by_guid(guid, name); });
        window_.addAction(&action);
    }
    for (const OwnAction& own : own_actions_) {
        QList<QKeySequence> left = own.keys;
        left.removeIf([&](const QKeySequence& keys) {
            return std::ranges::any_of(taken,
                                       [&](const auto& other) { return are_in_conflict(keys, other); });
        });
        own.action->setShortcuts(left);
    }
}

void TrackCommands::edit_keys() {
    try {
        std::vector<WindowKeys> own;
        for (const OwnAction& action : own_actions_)
            for (const QKeySequence& keys : action.keys)
                own.push_back({action.action->text().remove(u'&').remove(u'…'), keys});
        if (!edit_shortcuts(shortcuts_, context_menu(host_, {}, menu_caller::command_list), own, &window_))
            return;
        update_shortcuts();
        shortcuts_.save();
    } catch (const std::exception& error) {
        show_failure(host_, error.what());
    }
}

void TrackCommands::run_by_guid(const Guid& guid, const QString& name) {
    const std::vector<Track*> tracks = list_.selected_tracks();
    const std::vector<MenuCommand> commands = commands_for(tracks);
    if (const MenuCommand* command = find_command(commands, to_text(guid)))
        run(*command, tracks);
    else if (on_hint)
        on_hint(tracks.empty() ? QStringLiteral("Select the tracks first.")
                               : name + QStringLiteral(" is not there for these tracks."));
}

void TrackCommands::run(const MenuCommand& command, const std::vector<Track*>& tracks) {
    // Commands find the tags in memory.
    std::vector<Track*> unread;
    std::ranges::copy_if(tracks, std::back_inserter(unread),
                         [](const Track* track) { return !track->held(); });
    if (unread.empty())
        execute(command, tracks);
    else
        loader_.read(std::move(unread), [this, command, tracks] { execute(command, tracks); });
}

void TrackCommands::execute(const MenuCommand& command, const std::vector<Track*>& tracks) {
    host_.tag_io().set_activity(path_of(command));
    const std::vector<TrackHandle*> arguments = handles(tracks);
    try {
        command.node->execute(arguments.data(), arguments.size());
    } catch (const std::exception& error) {
        show_failure(host_, path_of(command) + ": " + error.what());
    }
    if (on_executed)
        on_executed();
}

} // namespace vantaro::core
