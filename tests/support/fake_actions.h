// Actions and kinds that tell how they were called.
//
//     script.push_back(make_service<FakeAction>(kind(1), "text"));       // adds LOG=[text 0/3] to every
//     track
#pragma once

#include "script/action.h"
#include "script/stored_script.h"

#include <new>

namespace vantaro::test {

/// A GUID by a number.
constexpr Guid kind(std::uint8_t number) {
    return Guid{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, number}};
}

class FakeAction final : public HeapService<quorvex::Action> {
public:
    /// With `asks_for_group`, tracks whose paths end in the same character stand in one group; "0" stands for
    /// a key that is all zero.
    FakeAction(const Guid& kind, std::string parameters, bool asks_for_group = false)
        : kind_(kind), parameters_(std::move(parameters)), asks_for_group_(asks_for_group) {}

    bool has_settings() override { return false; }
    void create_settings_dialog(WindowHandle, CompletionNotify*) override {}
    void get_description(TextSink& out) override { set_text(out, "described " + parameters_); }
    void get_parameter_text(TextSink& out) override { set_text(out, parameters_); }
    void apply(TrackHandle*, TrackInfo& info, std::uint32_t index, std::uint32_t total) override {
        if (parameters_ == "fail")
            throw vantaro_io::exception_io("no such luck");
        const std::string line = parameters_ + ' ' + std::to_string(index) + '/' + std::to_string(total);
        info.add_value("LOG", line.c_str());
    }
    Guid get_guid() override { return kind_; }
    bool uses_group_key() override { return asks_for_group_; }
    Guid get_group_key(TrackHandle* track) override {
        ++keys_asked;
        return test::kind(static_cast<std::uint8_t>(std::string_view(track->path()).back() - '0'));
    }

    int keys_asked = 0;

private:
    const Guid kind_;
    const std::string parameters_;
    const bool asks_for_group_;
};

/// Finds the texts "malformed" and "short" malformed, and has no memory for "large".
class FakeType final : public HeapService<quorvex::ActionType> {
public:
    FakeType(const Guid& kind, std::string name) : kind_(kind), name_(std::move(name)) {}

    Guid get_guid() override { return kind_; }
    void get_name(TextSink& out) override { set_text(out, name_); }
    quorvex::Action* create(CompletionNotify*) override {
        return make_service<FakeAction>(kind_, "").detach();
    }
    quorvex::Action* create_from_text(CompletionNotify*, const char* text) override {
        if (std::string_view(text) == "malformed")
            throw vantaro_io::exception_io_data();
        if (std::string_view(text) == "short")
            throw vantaro_io::exception_io_data_truncation();
        if (std::string_view(text) == "large")
            throw std::bad_alloc();
        return make_service<FakeAction>(kind_, text).detach();
    }

private:
    const Guid kind_;
    const std::string name_;
};

} // namespace vantaro::test
