// TrackInfo: one track's tag record. Metadata fields (a name and an ordered list of values each), technical
// fields (facts about the file), the length and the replay-gain values.
//
//     std::size_t field = info.find_field("artist");
//     if (field != no_field)
//         info.insert_value(field, info.value_count(field), "Second Artist");
//
// Texts are NUL-terminated UTF-8. Pointers returned stay valid until the record is next changed. Field names
// match without regard to case (ASCII letters); a field keeps its place and the spelling of its name when it
// is set again. An empty value is a value. A field with no values left is removed. A record of a file knows
// the other names that its tags have for a field (FieldRules). A record belongs to one thread at a time.
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

class TrackInfo;

/// What the tags of a file can hold: how they call a field, and what they make of its values. A record that
/// was read from a file has the rules of its tags, and so has every copy of it, so that a preview shows what
/// a run would write. Lives as long as the host. Any thread.
class FieldRules {
public:
    /// The name under which `info` has, or would get, what is called `name`: "ALBUMARTIST" for "ALBUM ARTIST"
    /// where the tags know both. `name` itself when they know no other; it is then the same pointer.
    virtual const char* resolve(const TrackInfo& info, const char* name) const = 0;
    /// Makes `after`, an edited copy of `before`, what reading the file would give once it is written: a
    /// track number "04" becomes "4" where the format stores numbers, empty values go where it keeps none.
    /// Throws exception_io naming the field and the reason when the tags cannot hold it.
    virtual void settle(const TrackInfo& before, TrackInfo& after) const = 0;
    /// The rules of a record in which a field has been made under its other name `name`: that name stays the
    /// field, as it would be for a reader of the written file. These rules where that makes no difference.
    virtual const FieldRules* when_made_as(const char* name) const = 0;

protected:
    ~FieldRules() = default;
};

class TrackInfo {
public:
    /// Index of the field of that name, or no_field. A field of this very name comes before one that the
    /// rules resolve it to.
    virtual std::size_t find_field(const char* name) const = 0;
    virtual std::size_t field_count() const = 0;
    /// Requires: field < field_count(); the same for every `field` below.
    virtual const char* field_name(std::size_t field) const = 0;
    virtual std::size_t value_count(std::size_t field) const = 0;
    /// Requires: value < value_count(field).
    virtual const char* value(std::size_t field, std::size_t value) const = 0;
    /// Makes `value` the only value of the field; creates the field behind the others when it is absent,
    /// under the name that the rules resolve it to.
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

    /// Becomes equal to `source`: fields, technical fields, length, gains and rules.
    virtual void copy(const TrackInfo& source) = 0;

    /// Null for a record that no file stands behind: names are then only themselves.
    virtual const FieldRules* rules() const = 0;

protected:
    ~TrackInfo() = default;
};

} // namespace vantaro
