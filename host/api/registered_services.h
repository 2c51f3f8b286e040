// What a component registers so that the host can reach it: command-line handlers, context-menu items,
// advanced preferences, its version record and its installation check.
//
// The host calls all of them on its main thread.
#pragma once

#include "host/api/service.h"
#include "host/api/text_sink.h"
#include "host/api/track.h"

namespace vantaro {

/// Takes arguments of the host's command line. The host makes a new object for every argument that it offers,
/// and goes on with the one that took it.
class CommandLineHandler : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{550B3A19-42A4-4C0F-91F2-90550189CBFF}");

    enum class Result : std::uint32_t {
        /// The argument is not for this handler.
        not_taken = 0,
        /// Taken; it wants nothing else.
        taken = 1,
        /// Taken; the arguments after it are files for it.
        taken_wants_files = 2,
    };

    virtual Result on_token(const char* text) = 0;
    /// A file, folder or playlist that follows the token.
    virtual void on_file(const char* location) = 0;
    /// No more files.
    virtual void on_files_done() = 0;
    /// Whether folders go to on_file as they are; otherwise the host hands over the tracks in them.
    virtual bool wants_directories() = 0;
    /// A track in place of a location.
    virtual void on_track(TrackHandle* track) = 0;

protected:
    ~CommandLineHandler() = default;
};

/// A node of the context menu: a command or a submenu.
class ContextMenuNode : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{A0D7E4C1-58B3-4F29-8C6A-3E1F9B5D7042}");

    /// Sets the text and the display flags; returns whether the node is shown.
    virtual bool get_display(TextSink& name, std::uint32_t& flags) = 0;
    /// Returns false when there is none.
    virtual bool get_description(TextSink& out) = 0;
    virtual Guid get_guid() = 0;
    virtual std::size_t child_count() = 0;
    /// Returns the child with one reference for the caller. Requires: index < child_count().
    virtual ContextMenuNode* child(std::size_t index) = 0;
    /// A command is carried out on the tracks; a submenu does nothing.
    virtual void execute(TrackHandle* const* tracks, std::size_t count) = 0;

protected:
    ~ContextMenuNode() = default;
};

/// One item of the context menu of selected tracks.
class ContextMenuItem : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{1C0802F7-CF24-49EF-B914-8B9866F19779}");

    /// How many commands or submenus the item has.
    virtual std::size_t command_count() = 0;
    virtual void get_item_name(std::size_t command, TextSink& out) = 0;
    /// Where the item stands, as menu names joined by '/'.
    virtual void get_default_path(std::size_t command, TextSink& out) = 0;
    virtual Guid get_item_guid(std::size_t command) = 0;
    virtual bool get_item_description(std::size_t command, TextSink& out) = 0;
    /// Returns the node for these tracks with one reference for the caller, or nullptr for none. `caller`
    /// says who asks.
    virtual ContextMenuNode* create_node(std::size_t command, TrackHandle* const* tracks, std::size_t count,
                                         const Guid& caller) = 0;
    /// Carries out a command by its GUID, without a menu; `node` is the GUID of a node below the item, all
    /// zero for the item itself.
    virtual void execute(std::size_t command, const Guid& node, TrackHandle* const* tracks, std::size_t count,
                         const Guid& caller) = 0;

protected:
    ~ContextMenuItem() = default;
};

/// Callers of context-menu items.
namespace menu_caller {
/// Somebody who lists all commands, with or without a selection, to bind a key to one.
inline constexpr Guid command_list = guid("{FABEE3E9-8901-4DF4-A2D7-B9898D86C39B}");
} // namespace menu_caller

/// A line of the advanced preferences: a branch or an entry.
class AdvancedPreference : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{7E84602E-DC49-4047-AAEE-63718BBC5A1F}");

    virtual void get_name(TextSink& out) = 0;
    virtual Guid get_guid() = 0;
    virtual Guid get_parent() = 0;
    virtual double get_sort_priority() = 0;

protected:
    ~AdvancedPreference() = default;
};

/// The host's own branch, under which components put theirs.
inline constexpr Guid advanced_preferences_root = guid("{35365484-CC58-4926-97E1-5E63F3ABB9E2}");

class AdvancedPreferenceBranch : public AdvancedPreference {
public:
    using Inherits = AdvancedPreference;
    static constexpr Guid class_guid = guid("{6A60B472-91AC-4681-9DC2-76C994005B63}");

protected:
    ~AdvancedPreferenceBranch() = default;
};

/// An entry whose value is a text.
class AdvancedPreferenceText : public AdvancedPreference {
public:
    using Inherits = AdvancedPreference;
    static constexpr Guid class_guid = guid("{2EC9B1FA-E1E4-42F0-8797-4A63169486BC}");

    virtual void get_value(TextSink& out) = 0;
    virtual void set_value(const char* text, std::size_t length) = 0;
    virtual void reset() = 0;

protected:
    ~AdvancedPreferenceText() = default;
};

/// The same, telling how the value is to be edited.
class AdvancedPreferenceTypedText : public AdvancedPreferenceText {
public:
    using Inherits = AdvancedPreferenceText;
    static constexpr Guid class_guid = guid("{185D582D-FBD8-4DB3-BE23-47AAC675FC11}");

    /// Whether the text is a whole number, from 0 to the largest of 64 bits.
    virtual bool is_integer() = 0;

protected:
    ~AdvancedPreferenceTypedText() = default;
};

/// What a component says of itself.
class ComponentVersion : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{10BB3EBD-DDF7-4975-A3CC-23084829453E}");

    virtual void get_file_name(TextSink& out) = 0;
    virtual void get_component_name(TextSink& out) = 0;
    virtual void get_version(TextSink& out) = 0;
    virtual void get_about(TextSink& out) = 0;

protected:
    ~ComponentVersion() = default;
};

/// Whether a component lies where it belongs.
class InstallationCheck : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{0639283E-3004-4E5C-B1B3-6DFF08A79284}");

    virtual bool is_installed_correctly() = 0;

protected:
    ~InstallationCheck() = default;
};

} // namespace vantaro
