// One run of a program over one track.
//
//     Run run(track, info, hook, filter);
//     std::string_view text = run.result_of(program);
//
// One thread, one use.
#pragma once

#include "host/api/title_format.h"
#include "host/api/track.h"
#include "vantaro/titleformat/fields.h"
#include "vantaro/titleformat/function_table.h"
#include "vantaro/titleformat/program.h"
#include "vantaro/titleformat/text_buffer.h"
#include "vantaro/titleformat/title_format.h"
#include "vantaro/titleformat/variables.h"

#include <span>
#include <string>
#include <vector>

namespace vantaro::core {

/// A place in the text, and how many fields had been found when the run was there.
struct Mark {
    std::size_t position;
    std::size_t end; // of an argument; set when its function is called
    std::uint64_t found;
};

class Run {
public:
    /// What is handed over outlives the run. `hook` and `filter` may be nullptr.
    Run(TrackHandle& track, const TrackInfo& info, TitleFormatHook* hook, TitleFormatTextFilter* filter)
        : track_(track), info_(info), hook_(hook), filter_(filter) {}

    /// The text of the program, or the text of the bound that was reached. Valid as long as the run.
    std::string_view result_of(const Program& program);

private:
    friend class Call;

    struct Loop {
        std::string values;
        std::size_t next = 0; // where the next value starts
        std::size_t start = 0;
        std::size_t length = 0;
        std::uint64_t count = 0;

        std::string_view value() const { return std::string_view(values).substr(start, length); }
    };

    /// Appends the text of the program.
    void execute(const Program& program);
    void put_field(BuiltInField field, const char* name, std::size_t length, bool as_values);
    void put_named_field(bool as_values);
    void call(const FunctionRow& row, std::size_t count);
    void call_unknown(std::string_view name, std::size_t count);
    /// Lets the hook write into the scratch text. Returns whether it knows the function.
    bool call_hook(std::string_view name, std::span<const Mark> arguments);
    std::span<Mark> take_arguments(std::size_t count);
    /// Puts the scratch text in the place of the arguments.
    void replace_arguments(std::size_t count, std::size_t start);
    void join_values(std::size_t start);
    void format_nested(std::size_t start);
    void begin_loop(std::size_t start);
    bool step_to_next_value();
    Mark pop_mark() {
        const Mark mark = marks_.back();
        marks_.pop_back();
        return mark;
    }
    void charge(std::uint64_t work) {
        if (work > title_format_work_limit - work_)
            throw TooMuchWork();
        work_ += work;
    }

    TrackHandle& track_;
    const TrackInfo& info_;
    TitleFormatHook* const hook_;
    TitleFormatTextFilter* const filter_;

    TextBuffer text_{title_format_text_limit};
    TextBuffer scratch_{title_format_text_limit};
    std::vector<Mark> marks_;
    std::vector<Loop> loops_;
    KeptSize kept_{title_format_text_limit};
    Variables variables_{kept_};
    std::uint64_t found_ = 0;
    std::uint64_t work_ = 0;
    std::size_t format_depth_ = 0;
};

} // namespace vantaro::core
