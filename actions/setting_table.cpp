#include "actions/setting_table.h"

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

namespace quorvex {

namespace {

/// Looks among these kinds.
template <class... Kinds>
std::optional<std::span<const Setting>> find(const vantaro::Guid& wanted) {
    std::optional<std::span<const Setting>> found;
    const auto look_at = [&]<class Kind>(const Kind*) {
        if (Kind::kind != wanted)
            return;
        found.emplace();
        if constexpr (requires { Kind::settings; })
            found = std::span<const Setting>(Kind::settings);
    };
    (look_at(static_cast<const Kinds*>(nullptr)), ...);
    return found;
}

} // namespace

std::optional<std::span<const Setting>> settings_of(const vantaro::Guid& kind) {
    return find<AutoTrackNumber, EmbedCuesheet, InputData, RemoveValues, RemoveAllFields, RemoveField,
                RemoveAllFieldsExcept, ReplaceValue, GuessFromFileName, GuessFromFields, SetValue, AddValue,
                SplitArtists, SplitField, FormatValue, CopyValues>(kind);
}

} // namespace quorvex
