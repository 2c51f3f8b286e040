// Components and host are built apart: a class of the boundary may never change the order of its virtual
// operations. What stands here is what components that are installed were built with.

#include "host/api/configuration_storage.h"
#include "host/api/input.h"
#include "host/api/registered_services.h"
#include "host/api/system.h"
#include "host/api/tag_io.h"
#include "host/api/title_format.h"
#include "host/api/user_interaction.h"
#include "host/api/windows.h"
#include "script/action.h"
#include "tests/support/interface_slots.h"

namespace vantaro {
namespace {

TEST(InterfaceSlots, OfEntryAndStreams) {
    INTERFACE(HostApi, &I::find_service_class, &I::create_service, &I::count_services, &I::main_window,
              &I::ensure_main_thread, &I::is_main_thread);
    INTERFACE(ServiceRecord, &I::create_instance);
    INTERFACE(ComponentClient, &I::get_version, &I::get_service_list, &I::get_config, &I::set_config,
              &I::set_library_path, &I::services_init, &I::is_debug);
    INTERFACE(AbortFlag, &I::is_aborting, &I::wait_handle);
    INTERFACE(StreamReader, &I::read);
    INTERFACE(StreamWriter, &I::write);
    INTERFACE(TextSink, &I::set);
}

TEST(InterfaceSlots, OfActions) {
    SERVICE(quorvex::Action, "{ACC7251A-332A-4CD8-912D-693DD854C5DC}", &I::has_settings,
            &I::create_settings_dialog, &I::get_description, &I::get_parameter_text, &I::apply, &I::get_guid,
            &I::uses_group_key, &I::get_group_key);
    SERVICE(quorvex::ActionType, "{460B50E0-288E-48AE-B8DD-27B8C1900547}", &I::get_guid, &I::get_name,
            &I::create, &I::create_from_text);
    SERVICE(CompletionNotify, "{DF26D586-F7EC-40C3-9FE8-2EA0725D76C0}", &I::notify);
}

TEST(InterfaceSlots, OfRegisteredServices) {
    SERVICE(CommandLineHandler, "{550B3A19-42A4-4C0F-91F2-90550189CBFF}", &I::on_token, &I::on_file,
            &I::on_files_done, &I::wants_directories, &I::on_track);
    SERVICE(ContextMenuNode, "{A0D7E4C1-58B3-4F29-8C6A-3E1F9B5D7042}", &I::get_display, &I::get_description,
            &I::get_guid, &I::child_count, &I::child, &I::execute);
    SERVICE(ContextMenuItem, "{1C0802F7-CF24-49EF-B914-8B9866F19779}", &I::command_count, &I::get_item_name,
            &I::get_default_path, &I::get_item_guid, &I::get_item_description, &I::create_node, &I::execute);
    SERVICE(AdvancedPreference, "{7E84602E-DC49-4047-AAEE-63718BBC5A1F}", &I::get_name, &I::get_guid,
            &I::get_parent, &I::get_sort_priority);
    SERVICE(AdvancedPreferenceBranch, "{6A60B472-91AC-4681-9DC2-76C994005B63}", &I::get_name, &I::get_guid,
            &I::get_parent, &I::get_sort_priority);
    SERVICE(AdvancedPreferenceText, "{2EC9B1FA-E1E4-42F0-8797-4A63169486BC}", &I::get_name, &I::get_guid,
            &I::get_parent, &I::get_sort_priority, &I::get_value, &I::set_value, &I::reset);
    SERVICE(AdvancedPreferenceTypedText, "{185D582D-FBD8-4DB3-BE23-47AAC675FC11}", &I::get_name, &I::get_guid,
            &I::get_parent, &I::get_sort_priority, &I::get_value, &I::set_value, &I::reset, &I::is_integer);
    SERVICE(ComponentVersion, "{10BB3EBD-DDF7-4975-A3CC-23084829453E}", &I::get_file_name,
            &I::get_component_name, &I::get_version, &I::get_about);
    SERVICE(InstallationCheck, "{0639283E-3004-4E5C-B1B3-6DFF08A79284}", &I::is_installed_correctly);
}

TEST(InterfaceSlots, OfTracks) {
    INTERFACE(TrackInfo, &I::find_field, &I::field_count, &I::field_name, &I::value_count, &I::value,
              &I::set_field, &I::add_value, &I::insert_value, &I::modify_value, &I::remove_fields,
              &I::remove_values, &I::find_technical, &I::technical_count, &I::technical_name,
              &I::technical_value, &I::set_technical, &I::length, &I::set_length, &I::replay_gain,
              &I::set_replay_gain, &I::copy, &I::rules);
    INTERFACE(FieldRules, &I::resolve, &I::settle, &I::when_made_as);
    INTERFACE(Mask, &I::selects);
    INTERFACE(TrackSink, &I::add);
    INTERFACE(TagChangeListener, &I::tags_changed);
    SERVICE(TrackInfoHolder, "{6B1C2F0E-93C4-4C2B-8E52-1D7A60D0B7A4}", &I::info, &I::stats, &I::is_partial);
    SERVICE(TrackHandle, "{2E0B6A55-7D0F-4E0B-A1B5-0C8B9A7A2B6D}", &I::path, &I::subsong, &I::get_info,
            &I::format_title, &I::format_title_from);
    SERVICE(TrackFilter, "{A5F0B0C7-3E7E-4C0A-9C57-6D40F8D1C3E9}", &I::apply);
    SERVICE(HostTagIO, "{64D18B80-5E97-40E4-A30C-A4640C60BCE5}", &I::resolve_location,
            &I::add_change_listener, &I::remove_change_listener);
    SERVICE(UpdateNotify, "{8476B102-BF1C-43D6-8F80-BDD4E2E28CCD}", &I::notify, &I::summarise,
            &I::get_activity);
    SERVICE(HostTagIOUpdate, "{265C4ECE-FFB2-4299-91B5-6CA6603DA153}", &I::resolve_location,
            &I::add_change_listener, &I::remove_change_listener, &I::update_async);
    SERVICE(InputInfoReader, "{D4A7F3B2-6C1E-4D59-8F0A-2B5E9C7D1A46}", &I::get_file_stats, &I::get_info);
    SERVICE(InputEntry, "{B8E1C5D9-0F72-4A36-9C84-E7D2A6B3F501}", &I::reads, &I::open_for_info_read);
}

TEST(InterfaceSlots, OfTitleFormattingAndFiles) {
    SERVICE(TitleFormatScript, "{0F2B9A4C-5E33-4C7C-9E43-8A2D5B6F1E70}");
    SERVICE(TitleFormatCompiler, "{C1E5E7C4-2D53-4F8B-8D65-3B9E0A7C4F21}", &I::compile);
    SERVICE(TitleFormatDiagnosis, "{7A94D3B2-61CE-4F08-9B57-E2C40D8A1F63}", &I::explain);
    INTERFACE(TitleFormatOutput, &I::write);
    INTERFACE(TitleFormatArguments, &I::count, &I::get);
    INTERFACE(TitleFormatHook, &I::process_field, &I::process_function);
    INTERFACE(TitleFormatTextFilter, &I::write);
    SERVICE(File, "{7A3C9E15-4D0C-4E5B-B0B1-9F6E2C8D7A35}", &I::reader, &I::writer, &I::get_size, &I::flush);
    SERVICE(FileSystem, "{5C0E9D8B-1A64-4F4B-A7F9-0D3B7E2C6F18}", &I::serves, &I::is_remote,
            &I::get_display_path, &I::open);
    SERVICE(StoredFileSystem, "{3F5B7C92-E1A8-4D06-9C74-0B6A2E8D51F3}", &I::serves, &I::is_remote,
            &I::get_display_path, &I::open, &I::open_stored, &I::find_ignoring_case);
}

TEST(InterfaceSlots, OfTheHostsServices) {
    SERVICE(HostConsole, "{90DF5270-65BB-4DBA-BAF5-86BE9E59DC20}", &I::print);
    SERVICE(PopupMessage, "{D5CAC75A-3023-4DCE-8B0D-B502BD056A7C}", &I::show);
    SERVICE(PopupQuestion, "{EF3C83FD-1144-4EDB-B843-CFBAC6E5E18B}", &I::ask);
    SERVICE(UndoneWork, "{9FF492D9-45D0-4058-B7AA-E81A07555054}", &I::note);
    SERVICE(DigestState, "{E7B0D6F4-92A3-4C1D-8E65-5A1F3C9B7D20}", &I::process, &I::result);
    SERVICE(DigestService, "{4B897EC8-A2F9-478D-A95E-1A2110A40078}", &I::initialise, &I::digest);
    SERVICE(ClockCallback, "{3F8A1D5C-7E94-4B06-9D2F-C0B6E4A7F813}", &I::on_time);
    SERVICE(ClockService, "{86D3B9F0-2C4E-47A1-B5D8-0E9A7F1C6B54}", &I::register_callback,
            &I::unregister_callback);
    SERVICE(MainThreadCall, "{F09C4E72-B6A1-4D3E-85C7-1B7D5A2E9F68}", &I::run);
    SERVICE(MainThreadQueue, "{1D6F8B3A-E5C2-4097-A84B-9F2C7D0E5B16}", &I::post);
    SERVICE(LegacyCodePage, "{52B7E4D1-0C96-4F3A-9E18-D7A2C5F8B360}", &I::get_name);
    SERVICE(ConfigurationStorage, "{8D2F61B4-07CE-4A95-B3E8-5F94D0A17C26}", &I::change);
    SERVICE(HostVersion, "{6E2A0C9D-4B7F-4E18-93D5-A8C1F6B0E742}", &I::get_version_text);
    SERVICE(ModelessDialogRegistry, "{C71B99BD-12C5-48FE-A9C0-469F6FEA88BF}", &I::register_dialog,
            &I::unregister_dialog);
    SERVICE(DialogDecoration, "{9D2E6B17-3A5F-4C80-B6E4-71F0C8A5D932}", &I::set_dark, &I::add_dialog,
            &I::add_controls);
    SERVICE(DialogDecorationHook, "{E34839B0-D899-43C5-9471-14FF481D5EE8}", &I::is_dark, &I::create);
    SERVICE(ModalDialogGuard, "{41C7A9E6-8B2D-4F13-A05C-D6E9B7F28430}", &I::can_create_new,
            &I::poke_existing);
}

} // namespace
} // namespace vantaro
