// What the benchmarks of whole collections share: a list of files, and doing something with each of them on
// several threads.
//
//     const std::vector<std::string> paths = paths_of_input();
//     const double seconds = on_threads(paths, 4, [](const std::string& path) { open(path); });
#pragma once

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

/// Standard input, one path a line.
inline std::vector<std::string> paths_of_input() {
    std::vector<std::string> paths;
    for (std::string line; std::getline(std::cin, line);)
        paths.push_back(line);
    return paths;
}

/// The argument of this number, or `otherwise` without one. Throws std::runtime_error when it is no number
/// above 0.
inline unsigned number_argument(int argc, char** argv, int place, unsigned otherwise) {
    if (argc <= place)
        return otherwise;
    const std::string text = argv[place];
    if (text.empty() || text.size() > 6 || text.find_first_not_of("0123456789") != std::string::npos
        || std::stoul(text) == 0)
        throw std::runtime_error("a number is expected, not \"" + text + '"');
    return static_cast<unsigned>(std::stoul(text));
}

/// Calls `work` with each path, on so many threads, which take the next path when they are done with one.
/// Returns the seconds. What `work` throws first ends it, and is thrown with the path.
inline double on_threads(const std::vector<std::string>& paths, unsigned threads,
                         const std::function<void(const std::string&)>& work) {
    std::atomic<std::size_t> next = 0;
    std::vector<std::string> errors(threads);
    const auto start = std::chrono::steady_clock::now();
    {
        std::vector<std::jthread> workers;
        for (unsigned i = 0; i < threads; ++i)
            workers.emplace_back([&, i] {
                for (std::size_t at = next++; at < paths.size(); at = next++) {
                    try {
                        work(paths[at]);
                    } catch (const std::exception& error) {
                        errors[i] = paths[at] + ": " + error.what();
                        next = paths.size();
                    }
                }
            });
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const std::string& error : errors)
        if (!error.empty())
            throw std::runtime_error(error);
    return seconds;
}
