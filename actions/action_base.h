// What most action kinds have in common: the descriptor that a kind is registered by, and the parts of an
// action that do not differ from kind to kind.
//
//     class SetValue final : public GrouplessAction<Action> { ... };
//     SingleService<TypeOf<SetValue>, ActionType> set_value;        // registers the kind
#pragma once

#include "host/api/exceptions.h"
#include "script/action.h"

#include <array>
#include <string>
#include <string_view>

namespace quorvex {

/// An action that counts tracks over the whole list.
template <class Interface>
class GrouplessAction : public vantaro::HeapService<Interface> {
public:
    bool uses_group_key() final { return false; }
    vantaro::Guid get_group_key(vantaro::TrackHandle*) final { return {}; }
};

/// The ActionType of an action class that offers
///     static constexpr Guid kind; static constexpr const char* menu_name;
///     static Ref<Action> create(); static Ref<Action> create_from_text(std::string_view);
/// and keeps no notify.
template <class Kind>
class TypeOf final : public vantaro::StaticService<ActionType> {
public:
    vantaro::Guid get_guid() override { return Kind::kind; }
    void get_name(vantaro::TextSink& out) override { vantaro::set_text(out, Kind::menu_name); }
    Action* create(vantaro::CompletionNotify*) override { return Kind::create().detach(); }
    Action* create_from_text(vantaro::CompletionNotify*, const char* text) override {
        return Kind::create_from_text(text).detach();
    }
};

/// Takes a parameter text of exactly two lines apart.
/// Throws: vantaro_io::exception_io_data when it does not hold exactly one line feed.
std::array<std::string_view, 2> split_two_lines(std::string_view text);

/// Puts two settings together as two lines. Line feeds inside them become "|", for good: the settings
/// themselves change.
std::string join_two_lines(std::string& first, std::string& second);

} // namespace quorvex
