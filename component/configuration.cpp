#include "component/configuration.h"

#include "component/byte_order.h"
#include "host/api/memory_stream.h"
#include "host/shared/failure.h"

#include <map>

namespace quorvex {

using namespace vantaro;

namespace {

constinit ConfigurationVariable* write_head = nullptr;
constinit ConfigurationVariable* read_head = nullptr;

} // namespace

ConfigurationVariable::ConfigurationVariable(const Guid& id)
    : id_(id), next_to_write_(write_head), next_to_read_(read_head) {
    write_head = this;
    read_head = this;
}

void write_configuration(StreamWriter& writer, AbortFlag& abort) {
    for (const ConfigurationVariable* variable = write_head; variable; variable = variable->next_to_write_) {
        MemoryWriter data;
        variable->write(data, abort);
        const std::string& bytes = data.bytes();
        writer.write(variable->id_.bytes.data(), variable->id_.bytes.size(), abort);
        write_number(writer, static_cast<std::uint32_t>(bytes.size()), abort);
        if (!bytes.empty())
            writer.write(bytes.data(), bytes.size(), abort);
    }
}

void read_configuration(StreamReader& reader, AbortFlag& abort) {
    std::map<Guid, ConfigurationVariable*> variables;
    for (ConfigurationVariable* variable = read_head; variable; variable = variable->next_to_read_)
        variables.emplace(variable->id_, variable);

    Guid id;
    while (reader.read(id.bytes.data(), id.bytes.size(), abort) == id.bytes.size()) {
        const auto size = read_number<std::uint32_t>(reader, abort);
        LimitedReader record(reader, size);
        if (const auto found = variables.find(id); found != variables.end())
            found->second->read(record, size, abort);
        skip_exact(record, record.left(), abort);
    }
}

ConfigurationVariable& configuration_variable(const Guid& id) {
    ConfigurationVariable* variable = read_head;
    while (variable && variable->id_ != id)
        variable = variable->next_to_read_;
    if (!variable)
        uBugCheck("a configuration variable was never constructed");
    return *variable;
}

void ConfigText::write(StreamWriter& writer, AbortFlag& abort) const {
    writer.write(value_.data(), value_.size(), abort);
}

void ConfigText::read(StreamReader& reader, std::uint32_t, AbortFlag& abort) {
    // In steps, since the size that a damaged record claims need not be there.
    std::string text;
    std::array<char, 65536> step;
    while (const std::size_t count = reader.read(step.data(), step.size(), abort))
        text.append(step.data(), count);
    text.resize(std::min(text.find('\0'), text.size()));
    value_ = std::move(text);
}

template <class Integer, std::size_t count>
void ConfigIntegers<Integer, count>::write(StreamWriter& writer, AbortFlag& abort) const {
    for (const Integer value : values_)
        write_number(writer, value, abort);
}

template <class Integer, std::size_t count>
void ConfigIntegers<Integer, count>::read(StreamReader& reader, std::uint32_t, AbortFlag& abort) {
    Values values;
    for (Integer& value : values)
        value = read_number<Integer>(reader, abort);
    values_ = values;
}

template class ConfigIntegers<std::int32_t, 1>;
template class ConfigIntegers<std::uint64_t, 1>;
template class ConfigIntegers<std::int32_t, 6>;

} // namespace quorvex
