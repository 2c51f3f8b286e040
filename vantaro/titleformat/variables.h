// The variables of one run, by name. Each holds values as functions take them: each followed by a NUL byte.
//
//     variables.set("pieces", values);
//     std::string_view pieces = variables.get("pieces");
//
// One thread.
#pragma once

#include "vantaro/titleformat/text_buffer.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace vantaro::core {

/// How much the variables and loops of a run keep, in bytes.
class KeptSize {
public:
    explicit KeptSize(std::size_t limit) : limit_(limit) {}
    /// Throws TextTooLong.
    void add(std::size_t size) {
        if (size > limit_ - size_)
            throw TextTooLong();
        size_ += size;
    }
    void remove(std::size_t size) { size_ -= size; }

private:
    const std::size_t limit_;
    std::size_t size_ = 0;
};

class Variables {
public:
    explicit Variables(KeptSize& kept) : kept_(kept) {}

    /// Empty when there is none of that name. Stays valid until the variable is changed.
    std::string_view get(std::string_view name) const {
        const auto found = variables_.find(name);
        return found == variables_.end() ? std::string_view() : std::string_view(found->second);
    }
    /// No values: the variable is gone. Throws TextTooLong. `values` may be what `get` gave.
    void set(std::string_view name, std::string values) {
        unset(name);
        if (values.empty())
            return;
        kept_.add(name.size() + values.size() + overhead);
        variables_.emplace(name, std::move(values));
    }
    void unset(std::string_view name) {
        const auto found = variables_.find(name);
        if (found == variables_.end())
            return;
        kept_.remove(found->first.size() + found->second.size() + overhead);
        variables_.erase(found);
    }

private:
    static constexpr std::size_t overhead = 128; // what the map itself takes for a variable, about

    KeptSize& kept_;
    std::map<std::string, std::string, std::less<>> variables_;
};

} // namespace vantaro::core
