// show_tags FILE: what read_tags says of a file, as JSON.
#include "vantaro/tags/tag_file.h"

#include <nlohmann/json.hpp>

#include <iostream>

int main(int argc, char** argv) {
    try {
        vantaro::TrackInfoRecord info;
        vantaro::core::read_tags(argc > 1 ? argv[1] : "", info);
        nlohmann::json fields = nlohmann::json::object();
        for (const vantaro::TrackField& field : info.fields())
            fields[field.name] = field.values;
        nlohmann::json technical = nlohmann::json::object();
        for (std::size_t i = 0; i < info.technical_count(); ++i)
            technical[info.technical_name(i)] = info.technical_value(i);
        const vantaro::ReplayGain gain = info.replay_gain();
        std::cout << nlohmann::json{{"fields", fields},
                                    {"technical", technical},
                                    {"length", info.length()},
                                    {"gain",
                                     {gain.track_gain, gain.track_peak, gain.album_gain, gain.album_peak}}}
                  << '\n';
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
