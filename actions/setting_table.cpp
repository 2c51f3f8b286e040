#include "actions/setting_table.h"

#include "actions/auto_track_number.h"
#include "actions/copy_values.h"
#include "actions/embed_cuesheet.h"
#include "actions/fixed_value.h"
#include "actions/format_value.h"
#include "actions/guess_values.h"
#include "actions/input_data.h"
#include "actions/parameter_text.h"
#include "actions/remove_fields.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"
#include "host/api/exceptions.h"

namespace quorvex {

namespace {

/// Looks among these kinds.
template <class... Kinds>
std::optional<KindSettings> find(const vantaro::Guid& wanted) {
    std::optional<KindSettings> found;
    const auto look_at = [&]<class Kind>(const Kind*) {
        if (Kind::kind != wanted)
            return;
        found.emplace();
        if constexpr (requires { Kind::settings; })
            found = KindSettings{Kind::settings, &Kind::dialog};
    };
    (look_at(static_cast<const Kinds*>(nullptr)), ...);
    return found;
}

} // namespace

std::optional<KindSettings> settings_of(const vantaro::Guid& kind) {
    return find<AutoTrackNumber, EmbedCuesheet, InputData, RemoveValues, RemoveAllFields, RemoveField,
                RemoveAllFieldsExcept, ReplaceValue, GuessFromFileName, GuessFromFields, SetValue, AddValue,
                SplitArtists, SplitField, FormatValue, CopyValues>(kind);
}

const InputCheck& check_of(const KindSettings& kind, std::size_t setting) {
    for (const SettingControl& control : kind.dialog->controls)
        if (control.setting == setting)
            return control.check;
    return any_text;
}

std::optional<NamedFault> fault_of(const StoredAction& action) {
    const auto kind = settings_of(action.kind);
    if (!kind || !kind->dialog)
        return std::nullopt;
    try {
        const auto fault = first_fault(*kind->dialog, split_settings(kind->rows, action.parameters));
        if (!fault)
            return std::nullopt;
        return NamedFault{kind->rows[fault->setting].name, fault->message, fault->allowed};
    } catch (const vantaro_io::exception_io_data&) {
        return std::nullopt;
    }
}

} // namespace quorvex
