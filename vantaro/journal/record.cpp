#include "vantaro/journal/record.h"

#include "host/api/exceptions.h"
#include "vantaro/journal/packing.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

#include <concepts>
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

template <class Stream, class Range>
void pass_range(Stream& stream, Range& range) {
    stream.number(range.old_offset);
    stream.text(range.old_bytes);
    stream.number(range.new_offset);
    stream.number(range.new_size);
    stream.number(range.new_checksum);
}

void pass(Writer& stream, const ChangedRange& range) {
    pass_range(stream, range);
    stream.text(range.new_bytes.empty() ? std::string() : pack(range.new_bytes, range.old_bytes));
}
void pass(Reader& stream, ChangedRange& range) {
    pass_range(stream, range);
    std::string packed;
    stream.text(packed);
    if (!packed.empty())
        range.new_bytes = unpack(packed, range.old_bytes, range.new_size);
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
void pass_change(Stream& stream, Change& change) {
    stream.text(change.path);
    pass(stream, change.before);
    stream.number(change.new_size);
    stream.number(change.method);
    stream.number(change.shift_offset);
    stream.number(change.shift_size);
    stream.text(change.temporary);
    pass_optional(stream, change.modified);
    pass_optional(stream, change.restores);
    pass_list(stream, change.ranges);
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
        pass_list(stream, record.old_sizes);
    }
}

template <class Kind>
Record read_record(Reader& reader) {
    Kind record;
    pass_record(reader, record);
    reader.end();
    return record;
}

} // namespace

std::string encode(const Record& record) {
    Writer writer;
    writer.kind(record.index());
    std::visit([&](const auto& kind) { pass_record(writer, kind); }, record);
    return writer.take();
}

Record decode(std::string_view bytes) {
    Reader reader(bytes);
    switch (reader.kind()) {
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
