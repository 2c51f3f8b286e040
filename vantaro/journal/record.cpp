#include "vantaro/journal/record.h"

#include "host/api/exceptions.h"
#include "vantaro/common/checksum.h"
#include "vantaro/journal/packing.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

#include <algorithm>
#include <array>
#include <concepts>
#include <optional>
#include <type_traits>

namespace vantaro::core {

namespace {

class Writer {
public:
    Writer() : stream_(&bytes_, QIODevice::WriteOnly) { stream_.setVersion(QDataStream::Qt_6_0); }

    template <class T>
    void number(T value) {
        stream_ << static_cast<quint64>(value);
    }
    void text(const std::string& text) {
        stream_ << QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    }
    std::string take() const { return bytes_.toStdString(); }
    void kind(std::size_t index) { stream_ << static_cast<quint8>(index); }

private:
    QByteArray bytes_;
    QDataStream stream_;
};

class Reader {
public:
    explicit Reader(std::string_view bytes)
        : bytes_(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()))),
          stream_(bytes_) {
        stream_.setVersion(QDataStream::Qt_6_0);
    }
    template <class T>
    void number(T& value) {
        quint64 stored = 0;
        stream_ >> stored;
        check();
        value = static_cast<T>(stored);
    }
    void text(std::string& text) {
        QByteArray stored;
        stream_ >> stored;
        check();
        text = stored.toStdString();
    }
    std::size_t kind() {
        quint8 stored = 0;
        stream_ >> stored;
        check();
        return stored;
    }
    void end() {
        if (!stream_.atEnd())
            throw vantaro_io::exception_io_data();
    }

private:
    void check() {
        if (stream_.status() != QDataStream::Ok)
            throw vantaro_io::exception_io_data();
    }

    const QByteArray bytes_;
    QDataStream stream_;
};

// One function a structure lists its members, for writing and for reading.

template <class Stream, class T>
requires std::integral<T>
void pass(Stream& stream, T& number) {
    stream.number(number);
}

template <class Stream, class T>
requires std::same_as<std::remove_const_t<T>, FileIdentity>
void pass(Stream& stream, T& identity) {
    stream.number(identity.device);
    stream.number(identity.inode);
    stream.number(identity.size);
    stream.number(identity.modified);
}

template <class T>
void pass_optional(Writer& stream, const std::optional<T>& value) {
    stream.number(value.has_value());
    if (value)
        pass(stream, *value);
}
template <class T>
void pass_optional(Reader& stream, std::optional<T>& value) {
    bool is_there = false;
    stream.number(is_there);
    if (is_there)
        pass(stream, value.emplace());
}

template <class T>
void pass(Writer& stream, const std::optional<T>& value) {
    pass_optional(stream, value);
}
template <class T>
void pass(Reader& stream, std::optional<T>& value) {
    pass_optional(stream, value);
}

template <class Stream, class T>
requires std::same_as<std::remove_const_t<T>, Extent>
void pass(Stream& stream, T& extent) {
    stream.number(extent.offset);
    stream.number(extent.size);
}

template <class Stream, class Range>
void pass_range(Stream& stream, Range& range) {
    stream.number(range.old_offset);
    stream.number(range.old_size);
    pass(stream, range.old_checksum);
    stream.text(range.old_bytes);
    stream.number(range.new_offset);
    stream.number(range.new_size);
    stream.number(range.new_checksum);
}

void pass(Writer& stream, const ChangedRange& range) {
    pass_range(stream, range);
    stream.text(range.new_bytes.empty() ? std::string() : pack(range.new_bytes, range.old_bytes));
}
void read_new_bytes(Reader& stream, ChangedRange& range) {
    std::string packed;
    stream.text(packed);
    if (!packed.empty())
        range.new_bytes = unpack(packed, range.old_bytes, range.new_size);
}
void pass(Reader& stream, ChangedRange& range) {
    pass_range(stream, range);
    read_new_bytes(stream, range);
}

template <class T>
void pass_list(Writer& stream, const std::vector<T>& list) {
    stream.number(list.size());
    for (const T& element : list)
        pass(stream, element);
}
template <class T>
void pass_list(Reader& stream, std::vector<T>& list) {
    std::size_t count = 0;
    stream.number(count);
    while (list.size() < count) // a count that is too large ends with the bytes
        pass(stream, list.emplace_back());
}

template <class Stream, class Change>
void pass_head(Stream& stream, Change& change) {
    stream.text(change.path);
    pass(stream, change.before);
    stream.number(change.new_size);
    stream.number(change.method);
    stream.number(change.shift_offset);
    stream.number(change.shift_size);
    stream.text(change.temporary);
    pass_optional(stream, change.modified);
}

template <class Stream, class Change>
void pass_change(Stream& stream, Change& change) {
    pass_head(stream, change);
    pass_list(stream, change.ranges);
    pass_list(stream, change.kept);
    stream.number(change.kept_checksum);
}

// As journals of version 1.9 and before have it: without kept parts, with what an undo restored, and the
// sizes of old bytes only where they are packed.
void read_early_change(Reader& stream, FileChange& change) {
    pass_head(stream, change);
    std::optional<FileIdentity> restored;
    pass_optional(stream, restored);
    std::uint64_t count = 0;
    stream.number(count);
    while (change.ranges.size() < count) {
        ChangedRange& range = change.ranges.emplace_back();
        stream.number(range.old_offset);
        stream.text(range.old_bytes);
        stream.number(range.new_offset);
        stream.number(range.new_size);
        stream.number(range.new_checksum);
        read_new_bytes(stream, range);
        range.old_size = range.old_bytes.size();
        range.old_checksum = checksum(range.old_bytes);
    }
}

void read_early_sizes(Reader& stream, FileChange& change) {
    std::vector<std::uint64_t> old_sizes;
    pass_list(stream, old_sizes);
    if (old_sizes.size() != change.ranges.size())
        throw vantaro_io::exception_io_data();
    for (std::size_t i = 0; i < old_sizes.size(); ++i) {
        change.ranges[i].old_size = old_sizes[i];
        change.ranges[i].old_checksum.reset(); // of the packed bytes
    }
}

template <class Stream, class R>
void pass_record(Stream& stream, R& record) {
    using Kind = std::remove_const_t<R>;
    if constexpr (std::is_same_v<Kind, RunStart>) {
        stream.number(record.time);
        stream.text(record.activity);
        stream.number(record.undoes);
    } else if constexpr (std::is_same_v<Kind, TemporaryName>) {
        stream.text(record.path);
    } else if constexpr (std::is_same_v<Kind, NotedChange>) {
        stream.number(record.number);
        pass_change(stream, record.change);
    } else if constexpr (std::is_same_v<Kind, ChangeOutcome>) {
        stream.number(record.number);
        stream.number(record.state);
        pass(stream, record.after);
        stream.number(record.is_settled);
    } else if constexpr (std::is_same_v<Kind, RunEnd>) {
        stream.number(record.files);
        stream.number(record.was_cut_off);
    } else {
        static_assert(std::is_same_v<Kind, KeptChange>);
        pass_change(stream, record.change);
        pass(stream, record.after);
    }
}

template <class Kind>
Record read_record(Reader& reader) {
    Kind record;
    pass_record(reader, record);
    reader.end();
    return record;
}

/// What kinds are called in a journal, in the order of Record; and what two of them were called before.
constexpr std::array<std::uint8_t, std::variant_size_v<Record>> kind_numbers{0, 1, 6, 3, 4, 7};
constexpr std::uint8_t early_noted = 2;
constexpr std::uint8_t early_kept = 5;

bool is_early(std::string_view bytes) {
    return bytes.front() == early_noted || bytes.front() == early_kept;
}

Record read_early(Reader& reader, std::string_view bytes) {
    if (bytes.front() == early_noted) {
        NotedChange noted;
        reader.number(noted.number);
        read_early_change(reader, noted.change);
        reader.end();
        return noted;
    }
    KeptChange kept;
    read_early_change(reader, kept.change);
    pass(reader, kept.after);
    read_early_sizes(reader, kept.change);
    reader.end();
    return kept;
}

Record read_present(Reader& reader, std::size_t kind) {
    switch (kind) {
    case 0:
        return read_record<RunStart>(reader);
    case 1:
        return read_record<TemporaryName>(reader);
    case 2:
        return read_record<NotedChange>(reader);
    case 3:
        return read_record<ChangeOutcome>(reader);
    case 4:
        return read_record<RunEnd>(reader);
    case 5:
        return read_record<KeptChange>(reader);
    default:
        throw vantaro_io::exception_io_data();
    }
}

} // namespace

std::string encode(const Record& record) {
    Writer writer;
    writer.kind(kind_numbers.at(record.index()));
    std::visit([&](const auto& kind) { pass_record(writer, kind); }, record);
    return writer.take();
}

Record decode(std::string_view bytes) {
    const std::size_t kind = kind_of(bytes);
    Reader reader(bytes);
    if (kind != std::variant_npos)
        reader.kind();
    Record record =
        kind != std::variant_npos && is_early(bytes) ? read_early(reader, bytes) : read_present(reader, kind);
    if (const auto* noted = std::get_if<NotedChange>(&record))
        check_change(noted->change);
    else if (const auto* kept = std::get_if<KeptChange>(&record))
        check_change(kept->change);
    return record;
}

std::size_t kind_of(std::string_view bytes) noexcept {
    if (bytes.empty())
        return std::variant_npos;
    const auto number = static_cast<std::uint8_t>(bytes.front());
    if (is_early(bytes))
        return number;
    const auto* const found = std::ranges::find(kind_numbers, number);
    return found == kind_numbers.end() ? std::variant_npos
                                       : static_cast<std::size_t>(found - kind_numbers.begin());
}

std::string path_in(std::string_view bytes) noexcept {
    try {
        Reader reader(bytes);
        reader.kind();
        std::uint64_t number = 0;
        if (begins<NotedChange>(bytes))
            reader.number(number);
        else if (!begins<KeptChange>(bytes))
            return {};
        std::string path;
        reader.text(path);
        return path.starts_with('/') && path.find('\0') == std::string::npos ? path : std::string();
    } catch (const std::exception&) {
        return {};
    }
}

std::uint64_t noted_number(std::string_view bytes) {
    if (!begins<NotedChange>(bytes))
        throw vantaro_io::exception_io_data();
    Reader reader(bytes);
    reader.kind();
    std::uint64_t number = 0;
    reader.number(number);
    return number;
}

} // namespace vantaro::core
