// Every service and every configuration variable of the component, constructed in this order while the
// library is being loaded. The host walks the services, and the stored configuration lists the variables,
// from the last one here to the first. One file holds them all, since the order across several would be
// undefined.

#include "component/entry/registration.h"
#include "component/configuration.h"
#include "component/own_services.h"
#include "component/service_list.h"

#include "actions/auto_track_number.h"
#include "actions/copy_values.h"
#include "actions/embed_cuesheet.h"
#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/guess_values.h"
#include "actions/input_data.h"
#include "actions/remove_fields.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"
#include "entry/command_line.h"
#include "entry/context_menu.h"
#include "script/script_library.h"

#include <limits>

namespace quorvex {

namespace {

constexpr std::int32_t no_offset = std::numeric_limits<std::int32_t>::min();
constexpr std::uint64_t initial_threshold = 100;

ConfigUint64 quick_command_threshold(setting::quick_command_threshold, {initial_threshold});
ConfigInt32 close_when_done(setting::close_when_done, {0});
ScriptLibrary saved_scripts(setting::script_library);
ConfigPlacement editor_placement(setting::editor_placement, {-1, -1, no_offset, no_offset, 0, 0});
ConfigText album_separation_pattern(setting::album_separation_pattern, "");
ConfigText field_name_history(setting::field_name_history,
                              "ARTIST\nTITLE\nALBUM\nGENRE\nTRACKNUMBER\nCOMPOSER\nDATE\nCOMMENT\nPERFORMER");
ConfigText formatting_pattern_history(setting::formatting_pattern_history, "");
ConfigText guess_pattern_history(setting::guess_pattern_history, "");
ConfigText last_formatting_pattern(setting::last_formatting_pattern, "%artist% - %title%");
ConfigText last_guess_pattern(setting::last_guess_pattern, "%tracknumber%. %artist% - %title%");
ConfigText last_input_data_scheme(setting::last_input_data_scheme, "%tracknumber%. %title%");
ConfigText kept_fields_list(setting::kept_fields_list, "artist;title;album;tracknumber;genre;disc;date");

template <class Kind>
using KindRecord = SingleService<TypeOf<Kind>, ActionType>;

MultiService<TagCommandLine, vantaro::CommandLineHandler> command_line;
SingleService<PreferencesBranch, vantaro::AdvancedPreference> preferences_branch;
SingleService<IntegerPreference, vantaro::AdvancedPreference> threshold_preference(
    "Quick commands: warn before updating more than N items", quick_command_threshold, PreferencesBranch::id,
    IntegerPreference::Range{initial_threshold, 0, std::numeric_limits<std::uint64_t>::max()});
SingleService<ManageScripts, vantaro::ContextMenuItem> manage_scripts;
SingleService<SavedScripts, vantaro::ContextMenuItem> saved_scripts_menu;
SingleService<VersionRecord, vantaro::ComponentVersion> version_record;
SingleService<FileNameCheck, vantaro::InstallationCheck> file_name_check;
KindRecord<AutoTrackNumber> auto_track_number;
KindRecord<EmbedCuesheet> embed_cuesheet;
KindRecord<InputData> input_data;
KindRecord<RemoveValues> remove_values;
KindRecord<RemoveAllFields> remove_all_fields;
KindRecord<RemoveField> remove_field;
KindRecord<RemoveAllFieldsExcept> remove_all_fields_except;
KindRecord<ReplaceValue> replace_value;
KindRecord<GuessFromFileName> guess_from_file_name;
KindRecord<GuessFromFields> guess_from_fields;
KindRecord<SetValue> set_value;
KindRecord<AddValue> add_value;
KindRecord<SplitArtists> split_artists;
KindRecord<SplitField> split_field_by_separator;
KindRecord<FormatValue> format_value;
KindRecord<CopyValues> copy_values;

} // namespace

void link_registration() {}

} // namespace quorvex
