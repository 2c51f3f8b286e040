#include "vantaro/titleformat/title_format.h"

#include "vantaro/titleformat/compiler.h"
#include "vantaro/titleformat/function_table.h"
#include "vantaro/titleformat/run.h"

#include <algorithm>
#include <vector>

namespace vantaro::core {

namespace {

class CompiledPattern final : public TitleFormatProgram {
public:
    explicit CompiledPattern(Program program) : program_(std::move(program)) {}

    void run(TrackHandle& track, const TrackInfo& info, TitleFormatHook* hook, TextSink& out,
             TitleFormatTextFilter* filter) override {
        Run run(track, info, hook, filter);
        set_text(out, run.result_of(program_));
    }

private:
    const Program program_;
};

} // namespace

std::variant<Ref<TitleFormatProgram>, TitleFormatError> compile_title_format(std::string_view pattern) {
    auto compiled = compile_program(pattern);
    if (auto* error = std::get_if<TitleFormatError>(&compiled))
        return std::move(*error);
    return Ref<TitleFormatProgram>(make_service<CompiledPattern>(std::get<Program>(std::move(compiled))));
}

bool TitleFormatting::compile(TitleFormatScript*& out, const char* pattern) {
    auto compiled = compile_title_format(pattern);
    auto* program = std::get_if<Ref<TitleFormatProgram>>(&compiled);
    if (!program)
        return false;
    const auto previous = Ref<TitleFormatScript>::adopt(out);
    out = program->detach();
    return true;
}

bool TitleFormattingDiagnosis::explain(const char* pattern, TextSink& text, std::size_t& position) {
    for (const auto unknown : {UnknownFunctions::left_to_hooks, UnknownFunctions::refused}) {
        const auto compiled = compile_program(pattern, unknown);
        if (const auto* error = std::get_if<TitleFormatError>(&compiled)) {
            set_text(text, error->text);
            position = error->position;
            return true;
        }
    }
    return false;
}

std::span<const TitleFormatFunction> title_format_functions() {
    static const std::vector<TitleFormatFunction> functions = [] {
        std::vector<TitleFormatFunction> all;
        for (const FunctionRow& row : function_rows())
            all.push_back({row.name, row.arguments, row.description});
        return all;
    }();
    return functions;
}

} // namespace vantaro::core
