// The stored configuration of one component: "<config dir>/<component file name>.cfg", which holds the
// records that the component wrote (records.h) and nothing else.
//
//     ComponentConfiguration configuration(default_config_dir(), "example.so");
//     const auto loaded = configuration.load();
//     if (!component_takes(loaded.bytes))
//         show(configuration.set_aside("the component could not read it"));
//     ...
//     for (const std::string& notice : configuration.save(component_bytes()).notices)
//         show(notice);
//
// Several processes may use the same file. Saving merges by variable: what this component did not change
// since it was last loaded or saved is taken from the file, so that it does not undo what another process
// saved. What both changed is ours; the file as the other process left it is kept beside as
// "<file>.conflict-<date>". Nothing that is in the file goes away by saving, since a variable that the
// component does not write is one that it does not know, as those of its newer versions. A variable that
// stands in the file more often than the component writes it has the value of the last one; a copy of such a
// file is kept as well. take_changes() hands the component what other processes have stored.
//
// A file that cannot be understood is kept as "<file>.broken-<date>". When the file is a link, everything
// happens where it leads.
//
// A ComponentConfiguration is used by one thread at a time; different ones for one file by any.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro::core {

class ComponentConfiguration {
public:
    struct LoadResult {
        /// For the component; empty when there is no file.
        std::string bytes;
        /// One line each, for people: files that were set aside, why and as what.
        std::vector<std::string> notices;
    };
    struct SaveResult {
        /// False when the file already said the same.
        bool is_written = false;
        std::vector<std::string> notices;
    };

    /// Folders need not exist; saving makes them (0700).
    /// Throws: std::invalid_argument when the name is not that of a file in a folder.
    ComponentConfiguration(const std::string& config_dir, std::string_view component_file_name);

    const std::string& path() const { return path_; }

    /// Throws: vantaro_io::exception_io naming the file, exception_io_denied when it may not be read; save()
    /// then refuses until load() succeeds.
    LoadResult load();

    /// What the component writes once it has read what load() gave: where the file says nothing, this is what
    /// it starts with, and no change of its own.
    void complete(std::string_view bytes);

    /// For a component that fails to read what load() gave: the file is set aside and counts as empty from
    /// now on. `reason` is part of the returned notice. A file that another process has replaced or removed
    /// meanwhile stays so. Throws: vantaro_io::exception_io.
    std::string set_aside(std::string_view reason);

    /// Calls `hand_over` with the records that other processes have stored since, those of variables that the
    /// component has changed itself excepted; not at all when there are none, or the file cannot be
    /// understood. It returns whether the component has taken them; otherwise they remain theirs. `bytes` is
    /// all that the component writes. Throws: as save(), and what `hand_over` throws.
    void take_changes(std::string_view bytes, const std::function<bool(std::string_view records)>& hand_over);

    /// `bytes` is all that the component writes. Either all of it is on the medium or the file is as it was.
    /// Throws: vantaro_io::exception_io naming the file and the system's reason, exception_io_denied also
    /// without a successful load(); exception_io_data when the bytes are no records.
    SaveResult save(std::string_view bytes);

private:
    struct Outcome;
    Outcome merge_with_file(const std::string& file, std::string_view bytes) const;

    std::string path_;
    /// What the component had or wrote last, as far as the file knows; nothing before load().
    std::optional<std::string> base_;
};

} // namespace vantaro::core
