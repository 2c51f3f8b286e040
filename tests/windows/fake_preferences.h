// Advanced preferences of a test's own.
#pragma once

#include "host/api/registered_services.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vantaro::test {

/// Where a line of the tree stands.
struct Place {
    std::string name;
    Guid id;
    Guid parent = advanced_preferences_root;
    double priority = 0;
};

template <class I>
class FakePreference : public StaticService<I> {
public:
    explicit FakePreference(Place place) : place_(std::move(place)) {}
    void get_name(TextSink& out) override { set_text(out, place_.name); }
    Guid get_guid() override { return place_.id; }
    Guid get_parent() override { return place_.parent; }
    double get_sort_priority() override { return place_.priority; }

protected:
    ~FakePreference() = default;

private:
    const Place place_;
};

class FakeBranch final : public FakePreference<AdvancedPreferenceBranch> {
public:
    using FakePreference::FakePreference;
};

class FakeText final : public FakePreference<AdvancedPreferenceText> {
public:
    using FakePreference::FakePreference;
    void get_value(TextSink& out) override { set_text(out, value); }
    void set_value(const char* text, std::size_t length) override {
        if (std::string(text, length) == "forbidden")
            throw std::runtime_error("not this one");
        value.assign(text, length);
    }
    void reset() override { value = "unset"; }
    std::string value = "unset";
};

/// 0 to 100, 50 when nothing else is said.
class FakeNumber final : public FakePreference<AdvancedPreferenceTypedText> {
public:
    using FakePreference::FakePreference;
    void get_value(TextSink& out) override { set_text(out, std::to_string(value)); }
    void set_value(const char* text, std::size_t length) override {
        taken.assign(text, length);
        value = std::clamp(std::stoi(taken.substr(0, 3)), 0, 100);
    }
    void reset() override { value = 50; }
    bool is_integer() override { return true; }
    int value = 50;
    /// The text that it was set from last.
    std::string taken;
};

} // namespace vantaro::test
