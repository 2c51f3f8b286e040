// Which keys carry out which command: "shortcuts.json" in the folder of the configurations.
//
//     { "{0EA0C9D5-...}": "Ctrl+Shift+T", ... }
//
//     ShortcutTable shortcuts;
//     shortcuts.load(config_dir, report);
//     action->setShortcut(shortcuts.shortcut(command.guid));
//
// Keys stand for commands that are not there at the moment, too: a component may come back.
//
// Main thread.
#pragma once

#include "host/api/guid.h"

#include <QKeySequence>

#include <functional>
#include <map>
#include <string>

namespace vantaro::core {

/// Whether one of the two would keep the other from being typed: they are equal, or one begins with the
/// other.
bool are_in_conflict(const QKeySequence& one, const QKeySequence& other);

class ShortcutTable {
public:
    /// Takes a line about what went wrong.
    using Report = std::function<void(const std::string& line)>;

    /// Replaces everything by what the file says; without a file that is nothing. A file that cannot be read,
    /// and an entry that makes no sense, are reported and left out.
    void load(const std::string& config_dir, const Report& report);
    /// Stores everything where load has read. A file that has something in it that makes no sense is kept
    /// under another name. Requires: load() has been called.
    /// Throws: vantaro_io::exception_io; the file is as it was then.
    void save() const;

    /// The keys of the command; empty for none.
    QKeySequence shortcut(const Guid& command) const;
    /// Gives the command the keys, or none when they are empty. Other commands keep theirs.
    void set(const Guid& command, const QKeySequence& keys);
    /// Every command that has keys.
    const std::map<Guid, QKeySequence>& all() const { return shortcuts_; }

private:
    std::string path_;
    std::map<Guid, QKeySequence> shortcuts_;
};

} // namespace vantaro::core
