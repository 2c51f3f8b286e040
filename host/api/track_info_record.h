// The one implementation of TrackInfo, for the host's records and for a component's own (scratch copies,
// tags read in the background). Header only: a component carries its own copy of the code.
//
//     TrackInfoRecord scratch;
//     scratch.copy(info);
//     scratch.set_field("GENRE", "Jazz");
//     bool changed = scratch.fields() != before.fields();
#pragma once

#include "host/api/track_info.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace vantaro {

/// Field names: equal when they differ in the case of ASCII letters at most.
inline bool equal_field_names(std::string_view a, std::string_view b) {
    constexpr auto fold = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    };
    return a.size() == b.size()
           && std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return fold(x) == fold(y); });
}

struct TrackField {
    std::string name;
    std::vector<std::string> values;

    friend bool operator==(const TrackField&, const TrackField&) = default;
};

struct TechnicalField {
    std::string name;
    std::string value;

    friend bool operator==(const TechnicalField&, const TechnicalField&) = default;
};

class TrackInfoRecord final : public TrackInfo {
public:
    TrackInfoRecord() = default;
    explicit TrackInfoRecord(const TrackInfo& source) { copy_from(source); }

    const std::vector<TrackField>& fields() const { return fields_; }
    const std::vector<TechnicalField>& technical_fields() const { return technical_; }
    /// Puts all metadata fields in place at once.
    void set_fields(std::vector<TrackField> fields) { fields_ = std::move(fields); }
    void set_rules(const FieldRules* rules) { rules_ = rules; }

    std::size_t find_field(const char* name) const override {
        const std::size_t index = index_of(fields_, name);
        return index != no_field || rules_ == nullptr ? index : index_of(fields_, resolved(name));
    }
    std::size_t field_count() const override { return fields_.size(); }
    const char* field_name(std::size_t field) const override { return fields_[field].name.c_str(); }
    std::size_t value_count(std::size_t field) const override { return fields_[field].values.size(); }
    const char* value(std::size_t field, std::size_t value) const override {
        return fields_[field].values[value].c_str();
    }
    void set_field(const char* name, const char* value) override {
        // Both texts may point into this record.
        std::vector<std::string> values{value};
        field_for(name).values = std::move(values);
    }
    void add_value(const char* name, const char* value) override {
        std::string text = value;
        field_for(name).values.push_back(std::move(text));
    }
    void insert_value(std::size_t field, std::size_t position, const char* value) override {
        std::string text = value;
        auto& values = fields_[field].values;
        values.insert(values.begin() + static_cast<std::ptrdiff_t>(position), std::move(text));
    }
    void modify_value(std::size_t field, std::size_t position, const char* value) override {
        std::string text = value;
        fields_[field].values[position] = std::move(text);
    }
    void remove_fields(const Mask& mask) override { remove_selected(fields_, mask); }
    void remove_values(std::size_t field, const Mask& mask) override {
        remove_selected(fields_[field].values, mask);
        if (fields_[field].values.empty())
            fields_.erase(fields_.begin() + static_cast<std::ptrdiff_t>(field));
    }

    std::size_t find_technical(const char* name) const override { return index_of(technical_, name); }
    std::size_t technical_count() const override { return technical_.size(); }
    const char* technical_name(std::size_t index) const override { return technical_[index].name.c_str(); }
    const char* technical_value(std::size_t index) const override { return technical_[index].value.c_str(); }
    void set_technical(const char* name, const char* value) override {
        TechnicalField field{name, value};
        const std::size_t index = find_technical(name);
        if (index == no_field)
            technical_.push_back(std::move(field));
        else
            technical_[index].value = std::move(field.value);
    }

    double length() const override { return length_; }
    void set_length(double seconds) override { length_ = seconds; }
    ReplayGain replay_gain() const override { return gain_; }
    void set_replay_gain(const ReplayGain& gain) override { gain_ = gain; }

    void copy(const TrackInfo& source) override { copy_from(source); }
    const FieldRules* rules() const override { return rules_; }

private:
    const char* resolved(const char* name) const {
        return rules_ == nullptr ? name : rules_->resolve(*this, name);
    }
    template <class Field>
    static std::size_t index_of(const std::vector<Field>& fields, std::string_view name) {
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (equal_field_names(fields[i].name, name))
                return i;
        return no_field;
    }
    TrackField& field_for(const char* name) {
        const std::size_t index = find_field(name);
        if (index != no_field)
            return fields_[index];
        const std::string field = resolved(name);
        if (rules_ != nullptr && field != name)
            rules_ = rules_->when_made_as(name);
        return fields_.emplace_back(TrackField{field, {}});
    }
    template <class Element>
    static void remove_selected(std::vector<Element>& elements, const Mask& mask) {
        std::size_t index = 0;
        std::erase_if(elements, [&](const Element&) { return mask.selects(index++); });
    }
    void copy_from(const TrackInfo& source) {
        if (&source == this)
            return;
        fields_.clear();
        fields_.reserve(source.field_count());
        for (std::size_t i = 0; i < source.field_count(); ++i) {
            TrackField& field = fields_.emplace_back(TrackField{source.field_name(i), {}});
            field.values.reserve(source.value_count(i));
            for (std::size_t j = 0; j < source.value_count(i); ++j)
                field.values.emplace_back(source.value(i, j));
        }
        technical_.clear();
        for (std::size_t i = 0; i < source.technical_count(); ++i)
            technical_.push_back({source.technical_name(i), source.technical_value(i)});
        length_ = source.length();
        gain_ = source.replay_gain();
        rules_ = source.rules();
    }

    std::vector<TrackField> fields_;
    std::vector<TechnicalField> technical_;
    double length_ = 0;
    ReplayGain gain_;
    const FieldRules* rules_ = nullptr;
};

} // namespace vantaro
