// Kinds that edit a field by fixed rules: removing fields and values, replacing, copying, splitting.

#include "actions/copy_values.h"
#include "actions/remove_fields.h"
#include "actions/remove_values.h"
#include "actions/replace_value.h"
#include "actions/split_field.h"
#include "component/configuration.h"
#include "tests/actions/kinds_fixture.h"

namespace quorvex {
namespace {

using namespace vantaro;

using FieldKinds = test::Kinds;

TEST_F(FieldKinds, RemoveField) {
    expect_edits(RemoveField::kind, {
                                        {"COMMENT", "A=[x] Comment=[1][2][3] B=[y]", "A=[x] B=[y]"},
                                        {"COMMENT", "A=[x]", "A=[x]"},
                                        {"COMM", "COMMENT=[x]", "COMMENT=[x]"},
                                        {"COMMENT ", "COMMENT=[x]", "COMMENT=[x]"},
                                        {"", "A=[x]", "A=[x]"},
                                        {"A=B\n", "A=[x]", "A=[x]"},
                                    });
    expect_texts(RemoveField::kind, {{"", "Remove field: \"\""}, {"x\"\ny", "Remove field: \"x\"\ny\""}});
    EXPECT_EQ(defaults(RemoveField::kind), "");
}

TEST_F(FieldKinds, RemoveAllFieldsLeavesWhatIsNoField) {
    TrackInfoRecord info = test::tags("A=[x][y] B=[]");
    info.set_technical("codec", "FLAC");
    info.set_length(3);
    info.set_replay_gain({.track_gain = 2});
    action(RemoveAllFields::kind, "whatever\nstands here")->apply(&track_, info, 0, 1);
    EXPECT_EQ(test::tags_text(info), "<codec=FLAC> 3s 2dB");
    expect_texts(RemoveAllFields::kind, {{"", "Remove all fields"}});
}

TEST_F(FieldKinds, RemoveAllFieldsExcept) {
    const Guid kind = RemoveAllFieldsExcept::kind;
    expect_edits(kind, {
                           {"artist;title", "ARTIST=[a][b] Title=[t] ALBUM=[c]", "ARTIST=[a][b] Title=[t]"},
                           {"artist; title", "TITLE=[t] ARTIST=[a]", "ARTIST=[a]"},
                           {"a b;;c", "A B=[x] C=[y] D=[z]", "A B=[x] C=[y]"},
                           {"", "A=[x] B=[y]", ""},
                           {"ARTIST", "ART=[x] ARTISTS=[y]", ""},
                           {"\u00E9", "E=[y] \u00C9=[x]", "\u00C9=[x]"},
                           {"artist;\xFF;album", "ARTIST=[a] ALBUM=[b]", "ARTIST=[a]"},
                       });
    expect_texts(kind, {{"a; b;", "Remove all fields except for \"a; b;\""}});
    EXPECT_EQ(defaults(kind), "artist;title;album;tracknumber;genre;disc;date");
    text_setting(setting::kept_fields_list).set("genre");
    EXPECT_EQ(defaults(kind), "genre");
}

TEST_F(FieldKinds, RemoveValues) {
    expect_edits(RemoveValues::kind,
                 {
                     {"ARTIST\na;c\nn", "X=[a] Artist=[A][B][C] Y=[c]", "X=[a] Artist=[B] Y=[c]"},
                     {"ARTIST\na;c\nc", "ARTIST=[A][c][C]", "ARTIST=[A][C]"},
                     {"ARTIST\nA; B\nn", "ARTIST=[A][B][ b]", "ARTIST=[B]"},
                     {"ARTIST\nA;\nc", "ARTIST=[][B][]", "ARTIST=[B]"},
                     {"ARTIST\n\nn", "ARTIST=[][B]", "ARTIST=[B]"},
                     {"GENRE\nrock\nn", "GENRE=[Rock & Roll][Roc][ROCK]", "GENRE=[Rock & Roll][Roc]"},
                     {"GENRE\n\u00C9;b\nn", "GENRE=[\u00E9][b][x]", "GENRE=[x]"},
                     {"GENRE\n\u00C9\nc", "GENRE=[\u00E9]", "GENRE=[\u00E9]"},
                     {"GENRE\na\nn", "A=[a] GENRE=[a][A]", "A=[a]"},
                     {"GENRE\na\nn", "A=[a]", "A=[a]"},
                 });
    expect_texts(RemoveValues::kind,
                 {
                     {"GENRE\nPop;Rock\nn", "Remove values: GENRE = Pop;Rock, case-insensitive"},
                     {"GENRE\nSea shanty\nc", "Remove value: GENRE = Sea shanty, case-sensitive"},
                     {"\n\nn", "Remove value:  = , case-insensitive"},
                 });
    expect_rejected(RemoveValues::kind,
                    {"", "n", "a\nn", "a\nb\n", "a\nb\nx", "a\nb\ncc", "a\nb\nN", "a\nb\nc\n", "a\nb\nd\nn"});
    EXPECT_EQ(defaults(RemoveValues::kind), "\n\nn");
}

TEST_F(FieldKinds, ReplaceValue) {
    expect_edits(ReplaceValue::kind,
                 {
                     {"GENRE\nrock\nRock & Roll\nn", "Genre=[Rock][rock][Pop]",
                      "Genre=[Rock & Roll][Rock & Roll][Pop]"},
                     {"GENRE\nrock\nx\nc", "GENRE=[Rock][rock][Pop]", "GENRE=[Rock][x][Pop]"},
                     {"GENRE\nRock\nx\nn", "GENRE=[Rock & Roll][Roc]", "GENRE=[Rock & Roll][Roc]"},
                     {"GENRE\n\u00E9\nx\nn", "GENRE=[\u00C9]", "GENRE=[x]"},
                     {"GENRE\n\n-\nc", "GENRE=[][a]", "GENRE=[-][a]"},
                     {"GENRE\na\n\nn", "GENRE=[a]", "GENRE=[]"},
                     {"GENRE\na\nA\nn", "ALBUM=[a]", "ALBUM=[a]"},
                 });
    expect_texts(ReplaceValue::kind,
                 {
                     {"GENRE\na\nb\nc", "Replace GENRE value \"a\" with \"b\", case-sensitive"},
                     {"\n\n\nn", "Replace  value \"\" with \"\", case-insensitive"},
                 });
    expect_rejected(ReplaceValue::kind, {"", "a\nb\nc", "a\nb\nc\n", "a\nb\nc\nx", "a\nb\nc\ncc",
                                         "a\nb\nc\nd\nn", "a\nb\nc\nn\n"});
    EXPECT_EQ(defaults(ReplaceValue::kind), "\n\n\nn");
}

TEST_F(FieldKinds, CopyValues) {
    expect_edits(CopyValues::kind, {
                                       {"A\nB", "B=[x] A=[a][b][c] C=[y]", "A=[a][b][c] C=[y] B=[a][b][c]"},
                                       {"A\nB", "A=[][]", "A=[][] B=[][]"},
                                       {"A\nb", "A=[a] B=[x]", "A=[a] b=[a]"},
                                       {"A\nB", "B=[x] C=[y]", "C=[y]"},
                                       {"A\nB", "C=[y]", "C=[y]"},
                                       {"A\na", "A=[x][y] B=[z]", "A=[x][y] B=[z]"},
                                       {"A\n", "A=[x]", "A=[x]"},
                                       {"\nA", "A=[x]", "A=[x]"},
                                       {"A%\nB", "B=[x]", "B=[x]"},
                                       {"A\n\u00E9", "A=[x]", "A=[x]"},
                                   });
    expect_texts(CopyValues::kind, {{"A\nB", "Copy \"A\" to \"B\""}, {"\n", "Copy \"\" to \"\""}});
    expect_rejected(CopyValues::kind, {"", "A", "A\nB\n", "A\nB\nC"});
    EXPECT_EQ(defaults(CopyValues::kind), "\n");
}

TEST_F(FieldKinds, SplitField) {
    expect_edits(
        SplitField::kind,
        {
            {"ARTIST\n,", "X=[a,b] Artist=[a,b ,  c , d ] Y=[y]", "X=[a,b] Artist=[a][b][c][d ] Y=[y]"},
            {"ARTIST\n,", "ARTIST=[ a][,,][][b]", "ARTIST=[a][b]"},
            {"ARTIST\n,", "ARTIST=[ , ,][,]", "ARTIST=[ , ,][,]"},
            {"ARTIST\n,", "ARTIST=[\ta\t,\tb]", "ARTIST=[\ta\t][\tb]"},
            {"ARTIST\n feat. ", "ARTIST=[a feat. b feat.c Feat. d]", "ARTIST=[a][b feat.c Feat. d]"},
            {"ARTIST\n ", "ARTIST=[  a  b ]", "ARTIST=[a][b]"},
            {"ARTIST\n\n", "ARTIST=[a\nb]", "ARTIST=[a][b]"},
            {"ARTIST\n", "ARTIST=[ a,b]", "ARTIST=[ a,b]"},
            {"ARTIST\n,", "ALBUM=[a,b]", "ALBUM=[a,b]"},
        });
    expect_texts(SplitField::kind, {
                                       {"ARTIST\n,", "Split \"ARTIST\" field by \",\" separator"},
                                       {"\na\nb\n", "Split \"\" field by \"a\nb\n\" separator"},
                                   });
    expect_rejected(SplitField::kind, {"", "ARTIST"});
    EXPECT_EQ(defaults(SplitField::kind), "ARTIST\n,");
}

TEST_F(FieldKinds, SplitArtists) {
    expect_edits(SplitArtists::kind,
                 {
                     {"", "Artist=[A, B & C] GENRE=[x,y]", "Artist=[A][B][C] GENRE=[x,y]"},
                     {"ignored", "ARTIST=[A & B, C&D ]", "ARTIST=[A][B][C][D ]"},
                     {"", "ALBUM ARTIST=[a,b]", "ALBUM ARTIST=[a,b]"},
                 });
    expect_texts(SplitArtists::kind, {{"", "Split multiple artist fields"}});
}

} // namespace
} // namespace quorvex
