// What safe writing costs: the same edits of the same files in one run that can be undone (piece table,
// journal, flush), by the same code on TagLib's file stream, which writes in place, and by TagLib's own save.
//
//     write_bench [FOLDER [FILES]]
//
// Needs ffmpeg. Prints milliseconds for all files of a format, and what writing safely takes in relation to
// the others: "fits" is an edit within the room that the tag has, "grows" one that the room is too small for.
// "flushed" includes waiting until everything is on the medium, for each of them.

#include "vantaro/common/present.h"
#include "vantaro/journal/run_writer.h"
#include "vantaro/safe_write/prepare.h"
#include "vantaro/tags/tag_file.h"

#include <fileref.h>
#include <tag.h>
#include <tpropertymap.h>

#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <span>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace vantaro::core;

struct Format {
    const char* name;
    const char* extension;
    const char* options; ///< of ffmpeg
    /// A WAV file's own form of tags stands in front of the audio and has no padding.
    bool has_tags = true;
};

// Each comes to three to nine megabytes.
constexpr std::array formats{Format{"MP3", "mp3", "-t 200 -b:a 160k"},
                             Format{"FLAC", "flac", "-t 60 -ac 2"},
                             Format{"Vorbis", "ogg", "-t 240 -c:a libvorbis -b:a 128k"},
                             Format{"Opus", "opus", "-t 240 -c:a libopus -b:a 128k"},
                             Format{"M4A", "m4a", "-t 200 -c:a aac -b:a 160k -movflags faststart"},
                             Format{"WAV", "wav", "-t 25 -ac 2 -bitexact", false}};

using Changes = std::vector<FieldChange>;

class Files {
public:
    Files(const fs::path& folder, std::span<const Format> kinds, std::size_t count) : folder_(folder) {
        fs::create_directories(folder);
        for (const Format& format : kinds)
            add(format, count);
    }
    ~Files() { fs::remove_all(folder_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    const std::vector<std::string>& paths() const { return paths_; }

private:
    void add(const Format& format, std::size_t count) {
        const fs::path master = folder_.parent_path() / (std::string("master.") + format.extension);
        const std::string command =
            std::string("ffmpeg -v error -y -f lavfi -i anoisesrc=r=44100:a=0.2 ")
            + (format.has_tags ? "-metadata title=Title -metadata artist=Artist " : "") + format.options
            + " '" + master.string() + "' </dev/null";
        if (!fs::exists(master) && std::system(command.c_str()) != 0)
            throw std::runtime_error("ffmpeg could not make " + master.string());
        for (std::size_t i = 0; i < count; ++i) {
            paths_.push_back(folder_ / (std::to_string(i) + "." + format.extension));
            fs::copy_file(master, paths_.back());
        }
    }

    fs::path folder_;
    std::vector<std::string> paths_;
};

void write_with_taglib(const std::string& path, const Changes& changes) {
    TagLib::FileRef file(path.c_str());
    TagLib::PropertyMap fields = file.file()->properties();
    for (const FieldChange& change : changes)
        fields.replace(change.name,
                       TagLib::StringList(TagLib::String(change.values.front(), TagLib::String::UTF8)));
    file.file()->setProperties(fields);
    file.file()->save();
}

void write_in_place(const std::string& path, const Changes& changes) {
    OpenFile file = OpenFile::open_for_change(real_system_calls(), path);
    const FileEdit edit = write_tags(file, changes).edit;
    const TemporaryNames names{[](const std::string& folder) { return folder + "/temporary"; },
                               [](const std::string&) {}};
    PreparedChange change = prepare_change(std::move(file), edit, {}, names);
    apply_change(change);
}

void write_safely(const std::vector<std::string>& paths, const Changes& changes, const fs::path& runs) {
    RunStore store(runs, real_system_calls());
    RunWriter writer(store, {present(), "benchmark", 0});
    for (const std::string& path : paths) {
        OpenFile file = OpenFile::open_for_change(store.calls(), path);
        const FileEdit edit = write_tags(file, changes).edit;
        writer.submit(writer.prepare(std::move(file), edit, {}), [&path](const WrittenFile& written) {
            if (!written.error.empty())
                std::cerr << path << ": " << written.error << '\n';
        });
    }
    writer.finish();
}

struct Times {
    double milliseconds = 0;
    double flushed = 0; ///< until it is on the medium
};

Times measure(const std::function<void()>& work) {
    ::sync();
    using Clock = std::chrono::steady_clock;
    const auto since = [](Clock::time_point start) {
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    };
    const auto start = Clock::now();
    work();
    const double time = since(start);
    ::sync();
    return {time, since(start)};
}

void print(const char* name, const char* edit, const Times& taglib, const Times& plain, const Times& safe) {
    std::printf("%-7s %-6s %9.1f %9.1f %9.1f   %6.2f %6.2f   %6.2f %6.2f\n", name, edit, taglib.milliseconds,
                plain.milliseconds, safe.milliseconds, safe.milliseconds / taglib.milliseconds,
                safe.milliseconds / plain.milliseconds, safe.flushed / taglib.flushed,
                safe.flushed / plain.flushed);
    std::fflush(stdout);
}

void compare(const char* name, std::span<const Format> kinds, const fs::path& folder, std::size_t count) {
    const fs::path runs = folder / "runs";
    // All begin with the room that our own first edit makes.
    const Files first(folder / "taglib", kinds, count);
    const Files second(folder / "in place", kinds, count);
    const Files third(folder / "safe", kinds, count);
    for (const Files* files : {&first, &second, &third})
        write_safely(files->paths(), {{"ALBUM", {"Album"}}, {"TITLE", {"Title"}}}, runs);
    const auto each = [&](const char* edit, const Changes& changes) {
        const Times taglib = measure([&] {
            for (const std::string& path : first.paths())
                write_with_taglib(path, changes);
        });
        const Times plain = measure([&] {
            for (const std::string& path : second.paths())
                write_in_place(path, changes);
        });
        const Times safe = measure([&] { write_safely(third.paths(), changes, runs); });
        print(name, edit, taglib, plain, safe);
    };
    each("fits", {{"TITLE", {"Another"}}});
    each("fits", {{"TITLE", {"Yet another title"}}});
    each("grows", {{"COMMENT", {std::string(20000, 'c')}}});
}

void run(const fs::path& folder, std::size_t count) {
    std::printf("%zu files a format, milliseconds; ratios: safe to TagLib's save, and to in place\n", count);
    std::printf("format  edit      TagLib  in place      safe      ratios        ratios, flushed\n");
    for (const Format& format : formats)
        compare(format.name, {&format, 1}, folder, count);
    compare("all", formats, folder, count);
}

} // namespace

int main(int argc, char** argv) {
    try {
        const fs::path parent = argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path();
        std::string name = parent / "write-bench-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder in " + parent.string());
        try {
            run(name, argc > 2 ? std::stoul(argv[2]) : 100);
        } catch (...) {
            fs::remove_all(name);
            throw;
        }
        fs::remove_all(name);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "write_bench: " << error.what() << '\n';
        return 1;
    }
}
