// Configuration variables: values that the host keeps for the component from one run to the next.
//
//     ConfigText pattern(setting::last_formatting_pattern, "%artist% - %title%");     // a static object
//     write_configuration(writer, abort);
//
// The stored form is a sequence of records, one a variable, the variable constructed last coming first:
//
//     record := GUID (16 bytes), size (u32, little-endian), size bytes
//
// It has neither count nor terminator. Integers are little-endian, texts are UTF-8 without terminator.
// Variables are constructed while the library is being loaded and used on the main thread.
#pragma once

#include "host/api/guid.h"
#include "host/api/stream.h"

#include <array>
#include <string>
#include <string_view>

namespace quorvex {

class ConfigurationVariable {
public:
    ConfigurationVariable(const ConfigurationVariable&) = delete;
    ConfigurationVariable& operator=(const ConfigurationVariable&) = delete;

    const vantaro::Guid& id() const { return id_; }
    /// Writes the data of the variable's record.
    virtual void write(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) const = 0;
    /// Reads the data from a stream that holds exactly the `size` bytes stored for it.
    /// Throws: vantaro_io::exception_io_data and the stream's own failures.
    virtual void read(vantaro::StreamReader& reader, std::uint32_t size, vantaro::AbortFlag& abort) = 0;

protected:
    /// Links the variable at the head of both configuration lists.
    explicit ConfigurationVariable(const vantaro::Guid& id);
    virtual ~ConfigurationVariable() = default;

private:
    friend void write_configuration(vantaro::StreamWriter&, vantaro::AbortFlag&);
    friend void read_configuration(vantaro::StreamReader&, vantaro::AbortFlag&);
    friend ConfigurationVariable& configuration_variable(const vantaro::Guid&);

    vantaro::Guid id_;
    ConfigurationVariable* next_to_write_;
    ConfigurationVariable* next_to_read_;
};

/// Writes every variable.
void write_configuration(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort);
/// Reads every record of the stream; a record that belongs to no variable is passed over, a variable without
/// record keeps its value. Fewer than 16 bytes left count as the end.
/// Throws: what the stream and the variables throw; the variables read before keep what they have read.
void read_configuration(vantaro::StreamReader& reader, vantaro::AbortFlag& abort);

/// The variable of that GUID. Ends the process as a fatal internal error when there is none.
ConfigurationVariable& configuration_variable(const vantaro::Guid& id);

/// A UTF-8 text without NUL bytes.
class ConfigText final : public ConfigurationVariable {
public:
    ConfigText(const vantaro::Guid& id, std::string_view initial)
        : ConfigurationVariable(id), value_(initial) {}

    const std::string& get() const { return value_; }
    void set(std::string_view value) { value_ = value; }

    void write(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) const override;
    /// The text ends at its first NUL byte.
    void read(vantaro::StreamReader& reader, std::uint32_t size, vantaro::AbortFlag& abort) override;

private:
    std::string value_;
};

/// Integers of a fixed width, one or several.
template <class Integer, std::size_t count>
class ConfigIntegers final : public ConfigurationVariable {
public:
    using Values = std::array<Integer, count>;

    ConfigIntegers(const vantaro::Guid& id, const Values& initial)
        : ConfigurationVariable(id), values_(initial) {}

    const Values& get() const { return values_; }
    void set(const Values& values) { values_ = values; }

    void write(vantaro::StreamWriter& writer, vantaro::AbortFlag& abort) const override;
    void read(vantaro::StreamReader& reader, std::uint32_t size, vantaro::AbortFlag& abort) override;

private:
    Values values_;
};

using ConfigInt32 = ConfigIntegers<std::int32_t, 1>;
using ConfigUint64 = ConfigIntegers<std::uint64_t, 1>;
/// Client width and height, horizontal and vertical offset from the owner, horizontal and vertical DPI.
using ConfigPlacement = ConfigIntegers<std::int32_t, 6>;

extern template class ConfigIntegers<std::int32_t, 1>;
extern template class ConfigIntegers<std::uint64_t, 1>;
extern template class ConfigIntegers<std::int32_t, 6>;

/// The variables, by name; what each holds and starts with stands where it is constructed.
namespace setting {
using vantaro::guid;
using vantaro::Guid;
inline constexpr Guid quick_command_threshold = guid("{3DBB31E7-F054-44D1-B3C8-F53DF2814987}");
inline constexpr Guid close_when_done = guid("{EB68F415-9F69-4FF0-8642-C4B81024A911}");
inline constexpr Guid script_library = guid("{3AECC5FD-82C9-488B-8181-0875A387FF3E}");
inline constexpr Guid editor_placement = guid("{D7969AFC-98EC-4EF2-9771-A4655E05F4A1}");
inline constexpr Guid album_separation_pattern = guid("{FFC41DB0-9FA9-4ACD-B4E5-EDBA212B943E}");
inline constexpr Guid field_name_history = guid("{D9E9BCF9-3ECB-4CB2-9BF8-D4BCF7166EDE}");
inline constexpr Guid formatting_pattern_history = guid("{10BFF836-94B2-43F0-8915-795FEE2FC2FC}");
inline constexpr Guid guess_pattern_history = guid("{CBE217C3-9292-4E33-9641-44166011C433}");
inline constexpr Guid last_formatting_pattern = guid("{CAEF3051-63BA-44E0-9BEF-5CE834C3F280}");
inline constexpr Guid last_guess_pattern = guid("{8497DA86-68A5-47C0-9A46-9B145498776D}");
inline constexpr Guid last_input_data_scheme = guid("{37051D2A-B0D1-4CA4-9EBF-EA7E75EF004B}");
inline constexpr Guid kept_fields_list = guid("{0E2E173C-E752-46AB-809B-2080A838547D}");
} // namespace setting

inline ConfigText& text_setting(const vantaro::Guid& id) {
    return static_cast<ConfigText&>(configuration_variable(id));
}

} // namespace quorvex
