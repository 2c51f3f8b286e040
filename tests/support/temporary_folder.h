// A folder of a test's own, and what tests do with the files in it.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vantaro::test {

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = std::filesystem::temp_directory_path() / "quorvex-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no folder " + name);
        path_ = name;
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(std::string_view name = {}) const { return name.empty() ? path_ : path_ / name; }
    std::string make_folder(std::string_view name) const {
        std::filesystem::create_directories(path(name));
        return path(name);
    }
    /// Makes the folders on the way as well.
    std::string write(std::string_view name, std::string_view content = {}) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }
    std::string read(std::string_view name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Makes a symbolic link to `target`, as the text stands.
    void link(std::string_view target, std::string_view name) const {
        std::filesystem::create_symlink(target, path(name));
    }
    void set_mode(std::string_view name, unsigned mode) const {
        std::filesystem::permissions(path(name), std::filesystem::perms(mode));
    }

private:
    std::filesystem::path path_;
};

/// While it exists, permissions count for the process, which they do not for root.
class OrdinaryUser {
public:
    OrdinaryUser() {
        if (was_ == 0 && ::seteuid(65534) != 0)
            throw std::runtime_error("cannot become an ordinary user");
    }
    ~OrdinaryUser() {
        if (was_ == 0 && ::seteuid(0) != 0)
            std::abort();
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    uid_t was_ = ::geteuid();
};

} // namespace vantaro::test
