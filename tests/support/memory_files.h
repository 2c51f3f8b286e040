// Files in memory, for what opens files through the host. Paths begin with "mem:".
//
//     const auto files = make_service<MemoryFiles>();
//     host_.offer<FileSystem>(files);
//     files->content["mem:a.qvx"] = bytes("...");
#pragma once

#include "host/api/filesystem.h"
#include "host/api/memory_stream.h"

#include <map>

namespace vantaro::test {

class MemoryFiles final : public HeapService<FileSystem> {
public:
    /// By path. What is written arrives here with the flush, not before.
    std::map<std::string, std::string> content;

    bool serves(const char* path) override { return std::string_view(path).starts_with("mem:"); }
    bool is_remote(const char*) override { return false; }
    /// Declines the path "mem:".
    bool get_display_path(const char* path, TextSink& out) override {
        set_text(out, path + 4);
        return path[4] != '\0';
    }
    File* open(const char* path, OpenMode mode, AbortFlag&) override {
        if (mode == OpenMode::read && !content.contains(path))
            throw vantaro_io::exception_io_not_found();
        return new MemoryFile(content[path]);
    }

private:
    class MemoryFile final : public HeapService<File> {
    public:
        explicit MemoryFile(std::string& content) : content_(content) {}
        StreamReader& reader() override { return reader_; }
        StreamWriter& writer() override { return writer_; }
        bool get_size(std::uint64_t&, AbortFlag&) override { return false; }
        void flush(AbortFlag&) override { content_ = writer_.bytes(); }

    private:
        std::string& content_;
        const std::string before_ = content_;
        MemoryReader reader_{before_};
        MemoryWriter writer_;
    };
};

} // namespace vantaro::test
