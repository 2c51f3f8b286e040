// Title formatting: patterns such as "%artist% - %title%", compiled once and run for many tracks.
//
//     TitleFormatScript* compiled = nullptr;
//     if (compiler->compile(compiled, "%title%"))
//         track->format_title(nullptr, out, *Ref<TitleFormatScript>::adopt(compiled), nullptr);
//
// A compiled script is immutable and may be run from any thread; a hook or filter is used by the one run that
// it was handed to.
#pragma once

#include "host/api/service.h"
#include "host/api/text_sink.h"

namespace vantaro {

class TitleFormatScript : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{0F2B9A4C-5E33-4C7C-9E43-8A2D5B6F1E70}");

protected:
    ~TitleFormatScript() = default;
};

class TitleFormatCompiler : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{C1E5E7C4-2D53-4F8B-8D65-3B9E0A7C4F21}");

    /// Compiles a pattern. On success stores the script in `out` with one reference for the caller,
    /// releasing what `out` held, and returns true; a pattern that does not compile returns false.
    virtual bool compile(TitleFormatScript*& out, const char* pattern) = 0;

protected:
    ~TitleFormatCompiler() = default;
};

/// Tells people what is wrong with a pattern. A host need not offer it.
class TitleFormatDiagnosis : public ServiceBase {
public:
    static constexpr Guid class_guid = guid("{7A94D3B2-61CE-4F08-9B57-E2C40D8A1F63}");

    /// Returns false for a pattern without a mistake, and sets nothing. Otherwise sets a sentence that says
    /// what is wrong, and in `position` the byte of the pattern, from 0, where that shows. A pattern that
    /// compiles has a mistake when it calls a function that the host does not know: only a hook can know it.
    virtual bool explain(const char* pattern, TextSink& text, std::size_t& position) = 0;

protected:
    ~TitleFormatDiagnosis() = default;
};

/// Where a running script writes.
class TitleFormatOutput {
public:
    virtual void write(const char* text, std::size_t length) = 0;

protected:
    ~TitleFormatOutput() = default;
};

/// The arguments of a function that a hook may provide.
class TitleFormatArguments {
public:
    virtual std::size_t count() const = 0;
    virtual void get(std::size_t index, TextSink& out) const = 0;

protected:
    ~TitleFormatArguments() = default;
};

/// Adds fields and functions to a run; asked before the host's own.
class TitleFormatHook {
public:
    /// Writes the field and returns true (and whether it was found, in `found`), or returns false when it
    /// does not provide it. The name is `length` bytes, without percent signs.
    virtual bool process_field(const char* name, std::size_t length, TitleFormatOutput& out, bool& found) = 0;
    /// The same for a function.
    virtual bool process_function(const char* name, std::size_t length, const TitleFormatArguments& arguments,
                                  TitleFormatOutput& out, bool& found) = 0;

protected:
    ~TitleFormatHook() = default;
};

/// Sees every field value on its way into the output.
class TitleFormatTextFilter {
public:
    virtual void write(TitleFormatOutput& out, const char* text, std::size_t length) = 0;

protected:
    ~TitleFormatTextFilter() = default;
};

} // namespace vantaro
