#include "vantaro/titleformat/compiler.h"

#include "vantaro/titleformat/fields.h"
#include "vantaro/titleformat/function_table.h"
#include "vantaro/titleformat/parser.h"

#include <array>

namespace vantaro::core {

namespace {

using Kind = PatternNode::Kind;

/// Whether several values come out as one text, or each by itself.
enum class Yield : std::uint8_t { text, values };

std::string expected_count(const FunctionRow& row) {
    const auto number = [](std::uint8_t count) {
        return std::to_string(count) + (count == 1 ? " argument" : " arguments");
    };
    if (row.most == any_number)
        return "at least " + number(row.least);
    if (row.least == row.most)
        return row.most == 0 ? "no arguments" : number(row.most);
    return std::to_string(row.least) + (row.most == row.least + 1 ? " or " : " to ") + number(row.most);
}

/// The parser has bounded how deep the tree is, and so how deep this calls itself.
class Compiler {
public:
    Compiler(const ParsedPattern& pattern, UnknownFunctions unknown) : pattern_(pattern), unknown_(unknown) {}

    Program compile() {
        put_parts(pattern_.nodes.front());
        return std::move(program_);
    }

private:
    using Arguments = std::vector<const PatternNode*>;

    const PatternNode* node(std::uint32_t index) const {
        return index == no_node ? nullptr : &pattern_.nodes[index];
    }
    const PatternNode* first_child(const PatternNode& parent) const { return node(parent.first_child); }
    const PatternNode* next(const PatternNode& sibling) const { return node(sibling.next_sibling); }

    std::uint32_t here() const { return static_cast<std::uint32_t>(program_.instructions.size()); }
    std::uint32_t put(Operation operation, std::size_t first = 0, std::size_t second = 0) {
        program_.mark_count += operation == Operation::mark ? 1 : 0;
        program_.instructions.push_back(
            {operation, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(second)});
        return here() - 1;
    }
    /// Lets the jump go to what comes next.
    void land(std::uint32_t jump) { program_.instructions[jump].first = here(); }

    std::uint32_t add_text(std::string_view text) {
        const std::size_t start = program_.literals.size();
        program_.literals.append(text);
        return static_cast<std::uint32_t>(start);
    }
    std::uint32_t add_name(std::string_view name) {
        const std::uint32_t start = add_text(name);
        program_.literals.push_back('\0');
        return start;
    }

    void put_parts(const PatternNode& parent) {
        for (const PatternNode* part = first_child(parent); part; part = next(*part))
            put_part(*part);
    }

    void put_part(const PatternNode& part) {
        switch (part.kind) {
        case Kind::literal:
            put(Operation::literal, add_text(pattern_.text(part)), part.length);
            break;
        case Kind::field:
            put_field(part, Operation::field);
            break;
        case Kind::function:
            put_function(part, Yield::text);
            break;
        case Kind::section:
        case Kind::sequence:
            put(Operation::mark);
            put_parts(part);
            put(Operation::end_section);
            break;
        }
    }

    void put_field(const PatternNode& part, Operation operation) {
        const std::string_view name = pattern_.text(part);
        put(operation, program_.fields.size());
        program_.fields.push_back(
            {find_field(name), add_name(name), static_cast<std::uint32_t>(name.size())});
    }

    void put_yield(const PatternNode& sequence, Yield yield) {
        if (yield == Yield::text)
            put_parts(sequence);
        else
            put_values(sequence);
    }

    /// One field or function yields its values; all else is one value, or none when it is empty.
    void put_values(const PatternNode& sequence) {
        const PatternNode* part = first_child(sequence);
        if (!part)
            return;
        const bool is_single = next(*part) == nullptr;
        if (is_single && part->kind == Kind::field)
            return put_field(*part, Operation::field_values);
        if (is_single && part->kind == Kind::function)
            return put_function(*part, Yield::values);
        put(Operation::mark);
        if (is_single && part->kind == Kind::section) {
            put_values(*part);
            put(Operation::end_section);
        } else {
            put_parts(sequence);
            put(Operation::end_value);
        }
    }

    Arguments arguments_of(const PatternNode& function) const {
        Arguments arguments;
        for (const PatternNode* argument = first_child(function); argument; argument = next(*argument))
            arguments.push_back(argument);
        return arguments;
    }

    void put_function(const PatternNode& function, Yield yield) {
        const std::string_view name = pattern_.text(function);
        const Arguments arguments = arguments_of(function);
        const FunctionRow* row = find_function(name);
        if (row
            && (arguments.size() < row->least || (row->most != any_number && arguments.size() > row->most)))
            throw TitleFormatError{"$" + std::string(row->name) + " takes " + expected_count(*row) + ", not "
                                       + std::to_string(arguments.size()),
                                   function.position};
        if (!row && unknown_ == UnknownFunctions::refused)
            throw TitleFormatError{"There is no function $" + std::string(name), function.position};
        if (row && put_branches(row->form, arguments, yield))
            return;
        const bool yields_values = row && row->yields_values;
        const bool converts = yields_values != (yield == Yield::values);
        if (converts)
            put(Operation::mark);
        if (!row)
            put_unknown(name, arguments);
        else if (row->form == FunctionForm::plain)
            put_call(*row, arguments);
        else
            put_form(row->form, arguments);
        if (converts)
            put(yields_values ? Operation::join_values : Operation::end_value);
    }

    void put_call(const FunctionRow& row, const Arguments& arguments) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            put(Operation::mark);
            put_yield(*arguments[i], row.takes_values(i) ? Yield::values : Yield::text);
        }
        put(Operation::call, static_cast<std::size_t>(&row - function_rows().data()), arguments.size());
    }

    void put_unknown(std::string_view name, const Arguments& arguments) {
        for (const PatternNode* argument : arguments)
            put_marked(*argument);
        put(Operation::call_unknown, add_name(name), arguments.size());
    }

    void put_marked(const PatternNode& sequence) {
        put(Operation::mark);
        put_parts(sequence);
    }

    /// The forms that yield what one of their arguments yields. Returns whether it is one of them.
    bool put_branches(FunctionForm form, const Arguments& arguments, Yield yield) {
        std::vector<std::uint32_t> ends;
        const auto put_branch = [&](const PatternNode& argument) {
            put_yield(argument, yield);
            ends.push_back(put(Operation::jump));
        };
        switch (form) {
        case FunctionForm::nothing:
            return true;
        case FunctionForm::if_: {
            put_marked(*arguments[0]);
            const std::uint32_t otherwise = put(Operation::jump_if_false);
            put_branch(*arguments[1]);
            land(otherwise);
            if (arguments.size() > 2)
                put_yield(*arguments[2], yield);
            break;
        }
        case FunctionForm::if_text:
            for (const PatternNode* argument : arguments) {
                put(Operation::mark);
                put_yield(*argument, yield);
                ends.push_back(put(Operation::jump_if_text));
            }
            break;
        case FunctionForm::if_defined: {
            put(Operation::mark);
            put_tested_field(*arguments[0], yield);
            const std::uint32_t missing = put(Operation::jump_if_missing, 0, arguments.size() > 1 ? 1 : 0);
            if (arguments.size() > 1)
                put_branch(*arguments[1]);
            else
                ends.push_back(put(Operation::jump));
            land(missing);
            if (arguments.size() > 2)
                put_yield(*arguments[2], yield);
            break;
        }
        case FunctionForm::select: {
            put_marked(*arguments[0]);
            put(Operation::select, arguments.size() - 1);
            const std::uint32_t table = here();
            for (std::size_t i = 1; i < arguments.size(); ++i)
                put(Operation::jump);
            ends.push_back(put(Operation::jump));
            for (std::size_t i = 1; i < arguments.size(); ++i) {
                land(table + static_cast<std::uint32_t>(i - 1));
                put_branch(*arguments[i]);
            }
            break;
        }
        default:
            return false;
        }
        for (const std::uint32_t end : ends)
            land(end);
        return true;
    }

    /// A field between percent signs, or a text that is the name of one.
    void put_tested_field(const PatternNode& argument, Yield yield) {
        const PatternNode* part = first_child(argument);
        if (part && !next(*part) && part->kind == Kind::field)
            return put_field(*part, yield == Yield::text ? Operation::field : Operation::field_values);
        put_marked(argument);
        put(Operation::named_field, 0, yield == Yield::values ? 1 : 0);
    }

    void put_form(FunctionForm form, const Arguments& arguments) {
        switch (form) {
        case FunctionForm::and_:
        case FunctionForm::or_:
            return put_logic(form == FunctionForm::and_ ? Operation::jump_if_false : Operation::jump_if_true,
                             arguments);
        case FunctionForm::while_: {
            put(Operation::begin_loop);
            const std::uint32_t round = put(Operation::next_round);
            put_marked(*arguments[0]);
            const std::uint32_t done = put(Operation::jump_if_false);
            put_parts(*arguments[1]);
            put(Operation::jump, round);
            land(round);
            land(done);
            put(Operation::end_loop);
            break;
        }
        case FunctionForm::map:
        case FunctionForm::each: {
            put(Operation::mark);
            put_values(*arguments[0]);
            put(Operation::begin_values);
            const std::uint32_t value = put(Operation::next_value);
            put_marked(*arguments[1]);
            put(form == FunctionForm::map ? Operation::end_value : Operation::drop);
            put(Operation::jump, value);
            land(value);
            put(Operation::end_loop);
            break;
        }
        case FunctionForm::format:
            put_marked(*arguments[0]);
            put(Operation::format);
            break;
        default:
            break;
        }
    }

    /// $and leaves at the first false argument, $or at the first true one.
    void put_logic(Operation leave, const Arguments& arguments) {
        std::vector<std::uint32_t> leaving;
        for (const PatternNode* argument : arguments) {
            put_marked(*argument);
            leaving.push_back(put(leave));
        }
        const std::uint32_t one = add_text("1");
        if (leave == Operation::jump_if_false)
            put(Operation::literal, one, 1);
        const std::uint32_t end = leave == Operation::jump_if_false ? no_node : put(Operation::jump);
        for (const std::uint32_t jump : leaving)
            land(jump);
        if (leave == Operation::jump_if_true) {
            put(Operation::literal, one, 1);
            land(end);
        }
    }

    const ParsedPattern& pattern_;
    const UnknownFunctions unknown_;
    Program program_;
};

} // namespace

std::variant<Program, TitleFormatError> compile_program(std::string_view pattern, UnknownFunctions unknown) {
    auto parsed = parse_pattern(pattern);
    if (auto* error = std::get_if<TitleFormatError>(&parsed))
        return std::move(*error);
    try {
        return Compiler(std::get<ParsedPattern>(parsed), unknown).compile();
    } catch (TitleFormatError& error) {
        return std::move(error);
    }
}

} // namespace vantaro::core
