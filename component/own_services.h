// The services that tell of the component itself: its version record, the check of its file name, and its
// place in the host's advanced preferences.
//
// Constructed in component/entry/registration.cpp; called by the host on its main thread.
#pragma once

#include "component/configuration.h"
#include "host/api/registered_services.h"

#include <string>

namespace quorvex {

inline constexpr const char* component_name = "Quorvex";
inline constexpr const char* component_version = "1.9";

/// Where the host says the component's library lies. Empty until the host has said so.
void set_library_path(const char* path, const char* file_name);
const std::string& library_path();

class VersionRecord final : public vantaro::StaticService<vantaro::ComponentVersion> {
public:
    void get_file_name(vantaro::TextSink& out) override;
    void get_component_name(vantaro::TextSink& out) override;
    void get_version(vantaro::TextSink& out) override;
    void get_about(vantaro::TextSink& out) override;
};

class FileNameCheck final : public vantaro::StaticService<vantaro::InstallationCheck> {
public:
    /// The component works under one file name only, letter case included.
    bool is_installed_correctly() override;
};

class PreferencesBranch final : public vantaro::StaticService<vantaro::AdvancedPreferenceBranch> {
public:
    static constexpr vantaro::Guid id = vantaro::guid("{5A8F9BB1-E000-4C72-B0F7-66DF39463BAA}");

    void get_name(vantaro::TextSink& out) override;
    vantaro::Guid get_guid() override { return id; }
    vantaro::Guid get_parent() override { return vantaro::advanced_preferences_root; }
    double get_sort_priority() override { return 0.0; }
};

/// A number of the advanced preferences, kept in a configuration variable under the same GUID.
class IntegerPreference final : public vantaro::StaticService<vantaro::AdvancedPreferenceTypedText> {
public:
    struct Range {
        std::uint64_t initial;
        std::uint64_t minimum;
        std::uint64_t maximum;
    };
    /// `name` and `variable` outlive the object.
    IntegerPreference(const char* name, ConfigUint64& variable, const vantaro::Guid& parent,
                      const Range& range)
        : name_(name), variable_(variable), parent_(parent), range_(range) {}

    void get_name(vantaro::TextSink& out) override;
    vantaro::Guid get_guid() override { return variable_.id(); }
    vantaro::Guid get_parent() override { return parent_; }
    double get_sort_priority() override { return 0.0; }
    void get_value(vantaro::TextSink& out) override;
    /// Takes the decimal digits at the start of the text, modulo 2^64, and brings them into the range.
    void set_value(const char* text, std::size_t length) override;
    void reset() override { variable_.set({range_.initial}); }
    bool is_integer() override { return true; }

private:
    const char* name_;
    ConfigUint64& variable_;
    vantaro::Guid parent_;
    Range range_;
};

} // namespace quorvex
