#include "vantaro/titleformat/run.h"

#include "vantaro/titleformat/compiler.h"
#include "vantaro/titleformat/functions/number_text.h"

#include <algorithm>
#include <utility>

namespace vantaro::core {

namespace {

constexpr std::uint64_t work_of_step = 16;
constexpr std::uint64_t most_rounds = 1000; // of one $while
constexpr std::size_t most_nested_formats = 8;

/// What a hook writes. Zero bytes, which would part values, are left out.
class HookOutput final : public TitleFormatOutput {
public:
    explicit HookOutput(TextBuffer& out) : out_(out) {}
    void write(const char* text, std::size_t length) override {
        for (const char c : std::string_view(text, length))
            if (c != '\0')
                out_.append(c);
    }

private:
    TextBuffer& out_;
};

/// Calls `use` with each of the values, which a zero byte each follows.
template <class Use>
void for_each_value(std::string_view values, Use use) {
    for (std::size_t at = 0; at < values.size();) {
        const std::size_t end = std::min(values.find('\0', at), values.size());
        use(values.substr(at, end - at));
        at = end + 1;
    }
}

/// Several values as one text.
std::string joined(std::string_view values) {
    TextBuffer text(title_format_text_limit);
    bool is_first = true;
    for_each_value(values, [&](std::string_view value) {
        if (!std::exchange(is_first, false))
            text.append(value_separator);
        text.append(value);
    });
    return std::string(text.view());
}

class HookArguments final : public TitleFormatArguments {
public:
    HookArguments(std::string_view text, std::span<const Mark> marks) : text_(text), marks_(marks) {}
    std::size_t count() const override { return marks_.size(); }
    void get(std::size_t index, TextSink& out) const override {
        set_text(out,
                 joined(text_.substr(marks_[index].position, marks_[index].end - marks_[index].position)));
    }

private:
    std::string_view text_;
    std::span<const Mark> marks_;
};

} // namespace

std::string_view Call::text(std::size_t index) const {
    if (index >= marks_.size())
        return {};
    return run_.text_.view().substr(marks_[index].position, marks_[index].end - marks_[index].position);
}

std::vector<std::string_view> Call::values(std::size_t index) const {
    constexpr std::size_t most_values = 1'000'000;
    std::vector<std::string_view> list;
    for_each_value(text(index), [&](std::string_view value) {
        if (list.size() == most_values)
            throw TextTooLong();
        list.push_back(value);
    });
    return list;
}

std::optional<std::int64_t> Call::integer(std::size_t index) const {
    return parse_integer(text(index));
}

TextBuffer& Call::out() {
    return run_.scratch_;
}

void Call::put_integer(std::int64_t number) {
    out().append(std::to_string(number));
}

const TrackInfo& Call::info() const {
    return run_.info_;
}

Variables& Call::variables() {
    return run_.variables_;
}

void Call::found() {
    ++run_.found_;
}

void Call::charge(std::uint64_t work) {
    run_.charge(work);
}

void Call::spend(std::uint64_t work) noexcept {
    run_.work_ += std::min(work, title_format_work_limit - run_.work_);
}

std::string_view Run::result_of(const Program& program) {
    try {
        execute(program);
        return text_.view();
    } catch (const TextTooLong&) {
        return title_format_text_too_long;
    } catch (const TooMuchWork&) {
        return title_format_too_much_work;
    }
}

void Run::execute(const Program& program) {
    marks_.reserve(std::min<std::size_t>(program.mark_count, 16));
    const Instruction* const instructions = program.instructions.data();
    const std::size_t count = program.instructions.size();
    for (std::size_t at = 0; at < count;) {
        const Instruction& instruction = instructions[at++];
        const std::size_t first = instruction.first;
        charge(work_of_step);
        switch (instruction.operation) {
        case Operation::literal:
            text_.append(program.text(instruction.first, instruction.second));
            charge(instruction.second);
            break;
        case Operation::field:
        case Operation::field_values: {
            const FieldReference& field = program.fields[first];
            put_field(field.built_in, program.literals.data() + field.name, field.length,
                      instruction.operation == Operation::field_values);
            break;
        }
        case Operation::named_field:
            put_named_field(instruction.second != 0);
            break;
        case Operation::mark:
            marks_.push_back({text_.size(), 0, found_});
            break;
        case Operation::end_section:
            if (const Mark mark = pop_mark(); mark.found == found_)
                text_.cut(mark.position);
            break;
        case Operation::end_value:
            if (pop_mark().position < text_.size())
                text_.append('\0');
            break;
        case Operation::join_values:
            join_values(pop_mark().position);
            break;
        case Operation::drop:
            text_.cut(pop_mark().position);
            break;
        case Operation::jump:
            at = first;
            break;
        case Operation::jump_if_false:
        case Operation::jump_if_true: {
            const std::size_t start = pop_mark().position;
            if (is_true(text_.from(start)) == (instruction.operation == Operation::jump_if_true))
                at = first;
            text_.cut(start);
            break;
        }
        case Operation::jump_if_text:
            if (pop_mark().position < text_.size())
                at = first;
            break;
        case Operation::jump_if_missing: {
            const Mark mark = pop_mark();
            const bool is_missing = mark.found == found_;
            if (is_missing || instruction.second != 0)
                text_.cut(mark.position);
            if (is_missing)
                at = first;
            break;
        }
        case Operation::select: {
            const std::size_t start = pop_mark().position;
            const std::optional<std::int64_t> number = parse_integer(text_.from(start));
            text_.cut(start);
            const bool is_choice = number && *number >= 1 && static_cast<std::uint64_t>(*number) <= first;
            at += is_choice ? static_cast<std::size_t>(*number - 1) : first;
            break;
        }
        case Operation::format:
            format_nested(pop_mark().position);
            break;
        case Operation::begin_loop:
            begin_loop(text_.size());
            break;
        case Operation::begin_values:
            begin_loop(pop_mark().position);
            break;
        case Operation::next_round:
            if (++loops_.back().count > most_rounds)
                at = first;
            break;
        case Operation::next_value:
            if (!step_to_next_value())
                at = first;
            break;
        case Operation::end_loop:
            kept_.remove(loops_.back().values.size());
            loops_.pop_back();
            break;
        case Operation::call:
            call(function_rows()[first], instruction.second);
            break;
        case Operation::call_unknown:
            call_unknown(program.literals.data() + first, instruction.second);
            break;
        }
    }
}

void Run::put_field(BuiltInField field, const char* name, std::size_t length, bool as_values) {
    const std::size_t start = text_.size();
    FieldSink sink(text_, filter_, as_values);
    if (hook_) {
        bool is_found = false;
        scratch_.clear();
        HookOutput output(scratch_);
        if (hook_->process_field(name, length, output, is_found)) {
            if (is_found || scratch_.size() > 0)
                sink.put(scratch_.view());
            if (is_found)
                ++found_;
            return charge(text_.size() - start);
        }
    }
    const Loop* loop = loops_.empty() ? nullptr : &loops_.back();
    const FieldSources sources{track_, info_, loop ? loop->value() : std::string_view(),
                               loop ? loop->count : 0};
    if (write_field(field, name, sources, sink))
        ++found_;
    charge(text_.size() - start);
}

void Run::put_named_field(bool as_values) {
    const std::size_t start = pop_mark().position;
    const std::string name(text_.from(start));
    text_.cut(start);
    charge(name.size());
    put_field(find_field(name), name.c_str(), name.size(), as_values);
}

std::span<Mark> Run::take_arguments(std::size_t count) {
    const std::span<Mark> arguments = std::span(marks_).last(count);
    for (std::size_t i = 0; i < count; ++i)
        arguments[i].end = i + 1 < count ? arguments[i + 1].position : text_.size();
    return arguments;
}

void Run::replace_arguments(std::size_t count, std::size_t start) {
    charge(text_.size() - start + scratch_.size());
    text_.cut(start);
    text_.append(scratch_.view());
    marks_.resize(marks_.size() - count);
}

bool Run::call_hook(std::string_view name, std::span<const Mark> arguments) {
    scratch_.clear();
    if (!hook_)
        return false;
    bool is_found = false;
    HookOutput output(scratch_);
    if (!hook_->process_function(name.data(), name.size(), HookArguments(text_.view(), arguments), output,
                                 is_found)) {
        scratch_.clear();
        return false;
    }
    if (is_found)
        ++found_;
    return true;
}

void Run::call(const FunctionRow& row, std::size_t count) {
    const std::span<const Mark> arguments = take_arguments(count);
    const std::size_t start = count > 0 ? arguments.front().position : text_.size();
    if (!call_hook(row.name, arguments)) {
        Call call(*this, arguments);
        row.function(call);
    } else if (row.yields_values && scratch_.size() > 0) {
        scratch_.append('\0');
    }
    replace_arguments(count, start);
}

void Run::call_unknown(std::string_view name, std::size_t count) {
    const std::span<const Mark> arguments = take_arguments(count);
    const std::size_t start = count > 0 ? arguments.front().position : text_.size();
    if (!call_hook(name, arguments)) {
        scratch_.append("[UNKNOWN FUNCTION $");
        scratch_.append(name);
        scratch_.append(']');
    }
    replace_arguments(count, start);
}

void Run::join_values(std::size_t start) {
    const std::string text = joined(text_.from(start));
    text_.cut(start);
    text_.append(text);
    charge(text.size());
}

void Run::format_nested(std::size_t start) {
    // A text that formats itself ends here.
    if (format_depth_ == most_nested_formats)
        throw TooMuchWork();
    const std::string pattern(text_.from(start));
    text_.cut(start);
    charge(pattern.size() * work_of_step);
    auto compiled = compile_program(pattern);
    const auto* program = std::get_if<Program>(&compiled);
    if (!program) {
        text_.append("[" + std::get<TitleFormatError>(compiled).text + "]");
        return;
    }
    ++format_depth_;
    execute(*program);
    --format_depth_;
}

void Run::begin_loop(std::size_t start) {
    Loop& loop = loops_.emplace_back();
    kept_.add(text_.size() - start);
    loop.values = text_.from(start);
    text_.cut(start);
}

bool Run::step_to_next_value() {
    Loop& loop = loops_.back();
    if (loop.next >= loop.values.size())
        return false;
    const std::size_t end = std::min(loop.values.find('\0', loop.next), loop.values.size());
    loop.start = loop.next;
    loop.length = end - loop.next;
    loop.next = end + 1;
    ++loop.count;
    return true;
}

} // namespace vantaro::core
