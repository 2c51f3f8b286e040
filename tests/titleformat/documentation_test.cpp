// docs/title-formatting.md against the code: its examples are run, and it names every field and function.
#include "tests/titleformat/sample_track.h"
#include "vantaro/titleformat/fields.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <vector>

namespace vantaro::core {
namespace {

using Row = std::vector<std::string>;

/// The cells of a line of a table. A bar that is part of a text has a backslash before it.
Row cells_of(const std::string& line) {
    Row cells{""};
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '|')
            cells.back() += line[++i];
        else if (line[i] == '|')
            cells.emplace_back();
        else
            cells.back() += line[i];
    }
    for (std::string& cell : cells)
        cell = cell.size() > 2 ? cell.substr(1, cell.size() - 2) : "";
    return cells;
}

/// What stands between backticks in a cell; each of them.
std::vector<std::string> codes_of(const std::string& cell) {
    std::vector<std::string> codes;
    for (std::size_t start = cell.find('`'); start != std::string::npos; start = cell.find('`', start)) {
        const std::size_t end = cell.find('`', start + 1);
        codes.push_back(cell.substr(start + 1, end - start - 1));
        start = end + 1;
    }
    return codes;
}

std::string code_of(const std::string& cell) {
    const auto codes = codes_of(cell);
    return codes.empty() ? "" : codes.front();
}

/// Descriptions are written for a page of HTML.
std::string without_entities(std::string text) {
    for (const auto& [entity, character] : {std::pair{"&lt;", "<"}, {"&gt;", ">"}})
        for (std::size_t at; (at = text.find(entity)) != std::string::npos;)
            text.replace(at, 4, character);
    return text;
}

class TitleFormattingDocument : public testing::Test {
protected:
    /// The rows of all tables with that first heading.
    std::vector<Row> rows_of(const std::string& heading) {
        std::vector<Row> rows;
        for (const auto& [key, row] : rows_)
            if (key == heading)
                rows.push_back(row);
        return rows;
    }

    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
        std::ifstream document(TITLE_FORMATTING_DOCUMENT);
        ASSERT_TRUE(document.is_open());
        std::string heading;
        for (std::string line; std::getline(document, line);) {
            if (!line.starts_with('|'))
                heading.clear();
            else if (heading.empty())
                heading = cells_of(line).at(0);
            else if (!line.starts_with("|---"))
                rows_.emplace_back(heading, cells_of(line));
        }
        read_track();
    }

    void read_track() {
        std::map<std::string, std::string> about;
        for (const Row& row : rows_of("Of the track")) {
            const std::string name = code_of(row.at(0));
            const auto values = codes_of(row.at(1));
            if (name.empty())
                about[row.at(0)] = values.at(0);
            else if (name.starts_with("__"))
                track_.tags.set_technical(name.c_str() + 2, values.at(0).c_str());
            else
                for (const std::string& value : values)
                    track_.tags.add_value(name.c_str(), value.c_str());
        }
        track_.location = about.at("path");
        track_.stats = FileStats{std::stoull(about.at("size")), std::stoull(about.at("time"))};
        track_.tags.set_length(std::stod(about.at("length")));
        track_.tags.set_replay_gain({.track_gain = std::stof(about.at("track gain")),
                                     .album_gain = std::stof(about.at("album gain")),
                                     .track_peak = std::stof(about.at("track peak")),
                                     .album_peak = std::stof(about.at("album peak"))});
    }

    void expect_result(const std::string& pattern, const std::string& result) {
        EXPECT_EQ(track_.formatted(code_of(pattern)), code_of(result)) << pattern;
    }

    test::SampleTrack track_;
    std::vector<std::pair<std::string, Row>> rows_;
};

TEST_F(TitleFormattingDocument, DescribesTheLanguageAsItIs) {
    for (const Row& row : rows_of("What"))
        expect_result(row.at(1), row.at(2));
    for (const Row& row : rows_of("Pattern"))
        EXPECT_EQ(track_.formatted(code_of(row.at(0))), "ERROR " + row.at(1) + ": " + row.at(2));
    EXPECT_FALSE(rows_of("What").empty());
    EXPECT_FALSE(rows_of("Pattern").empty());
}

TEST_F(TitleFormattingDocument, HasEveryField) {
    std::set<std::string> documented;
    for (const Row& row : rows_of("Field")) {
        expect_result(row.at(2), row.at(3));
        EXPECT_NE(row.at(2).find('%' + code_of(row.at(0)) + '%'), std::string::npos) << row.at(2);
        documented.insert(code_of(row.at(0)));
    }
    std::set<std::string> all;
    for (const FieldRow& row : field_rows())
        all.emplace(row.name);
    EXPECT_EQ(documented, all);
}

TEST_F(TitleFormattingDocument, HasEveryFunction) {
    std::map<std::string, std::string> documented;
    for (const Row& row : rows_of("Function")) {
        const std::string signature = code_of(row.at(0));
        expect_result(row.at(2), row.at(3));
        EXPECT_NE(row.at(2).find(signature.substr(0, signature.find('(') + 1)), std::string::npos)
            << row.at(2);
        documented[signature] = without_entities(row.at(1));
    }
    std::map<std::string, std::string> all;
    for (const TitleFormatFunction& function : title_format_functions())
        all["$" + std::string(function.name) + "(" + std::string(function.arguments) + ")"] =
            function.description;
    EXPECT_EQ(documented, all);
    EXPECT_GT(all.size(), 80U);
}

} // namespace
} // namespace vantaro::core
