// TrackInfo: one track's tag record. Metadata fields (a name and an ordered list of values each), technical
// fields (facts about the file), the length and the replay-gain values.
//
//     std::size_t field = info.find_field("artist");
//     if (field != no_field)
//         info.insert_value(field, info.value_count(field), "Second Artist");
//
// Texts are NUL-terminated UTF-8. Pointers returned stay valid until the record is next changed. Field names
// match without regard to case (ASCII letters); a field keeps its place and the spelling of its name when it
// is set again. An empty value is a value. A field with no values left is removed.
// A record belongs to one thread at a time.
#pragma once

#include <cstddef>

namespace vantaro {

inline constexpr std::size_t no_field = static_cast<std::size_t>(-1);

/// Selects some of the positions 0 to n-1.
class Mask {
public:
    virtual bool selects(std::size_t index) const = 0;

protected:
    ~Mask() = default;
};

/// Selects every position.
class MaskAll final : public Mask {
public:
    bool selects(std::size_t) const override { return true; }
};

/// Selects one position.
class MaskOne final : public Mask {
public:
    explicit MaskOne(std::size_t index) : index_(index) {}
    bool selects(std::size_t index) const override { return index == index_; }

private:
    std::size_t index_;
};

/// Gains in dB, peaks as a factor of full scale; a value that is not known is `unknown_gain`/`unknown_peak`.
struct ReplayGain {
    static constexpr float unknown_gain = -1000.0F;
    static constexpr float unknown_peak = -1.0F;
    float track_gain = unknown_gain;
    float album_gain = unknown_gain;
    float track_peak = unknown_peak;
    float album_peak = unknown_peak;

    friend bool operator==(const ReplayGain&, const ReplayGain&) = default;
};

class TrackInfo {
public:
    /// Index of the field of that name, or no_field.
    virtual std::size_t find_field(const char* name) const = 0;
    virtual std::size_t field_count() const = 0;
    /// Requires: field < field_count(); the same for every `field` below.
    virtual const char* field_name(std::size_t field) const = 0;
    virtual std::size_t value_count(std::size_t field) const = 0;
    /// Requires: value < value_count(field).
    virtual const char* value(std::size_t field, std::size_t value) const = 0;
    /// Makes `value` the only value of the field; creates the field behind the others when it is absent.
    virtual void set_field(const char* name, const char* value) = 0;
    /// Appends a value to the field, creating the field when it is absent.
    virtual void add_value(const char* name, const char* value) = 0;
    /// Puts a value before the one at `position`; position == value_count(field) appends.
    virtual void insert_value(std::size_t field, std::size_t position, const char* value) = 0;
    /// Replaces the value at `position`.
    virtual void modify_value(std::size_t field, std::size_t position, const char* value) = 0;
    /// Removes the fields that the mask selects, each with all of its values.
    virtual void remove_fields(const Mask& mask) = 0;
    /// Removes the values of one field that the mask selects; a field left without values goes too.
    virtual void remove_values(std::size_t field, const Mask& mask) = 0;

    /// Index of the technical field of that name, or no_field.
    virtual std::size_t find_technical(const char* name) const = 0;
    virtual std::size_t technical_count() const = 0;
    virtual const char* technical_name(std::size_t index) const = 0;
    virtual const char* technical_value(std::size_t index) const = 0;
    virtual void set_technical(const char* name, const char* value) = 0;

    /// In seconds; 0 when unknown.
    virtual double length() const = 0;
    virtual void set_length(double seconds) = 0;
    virtual ReplayGain replay_gain() const = 0;
    virtual void set_replay_gain(const ReplayGain& gain) = 0;

    /// Becomes equal to `source`: fields, technical fields, length and gains.
    virtual void copy(const TrackInfo& source) = 0;

protected:
    ~TrackInfo() = default;
};

} // namespace vantaro
