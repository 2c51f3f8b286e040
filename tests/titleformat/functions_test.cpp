// What functions make of unusual arguments; docs/title-formatting.md has an ordinary one for each.
#include "tests/titleformat/sample_track.h"

#include <gtest/gtest.h>

namespace vantaro::core {
namespace {

struct Expectation {
    const char* pattern;
    const char* result;
};

void expect_all(std::initializer_list<Expectation> rows) {
    test::SampleTrack track;
    for (const Expectation& row : rows)
        EXPECT_EQ(track.formatted(row.pattern), row.result) << row.pattern;
}

#define INVALID "\xC3" // the start of a character that does not go on

TEST(TitleFormatFunctions, ChangeCase) {
    expect_all({
        {"$upper(ßäﬁ" INVALID ")|$lower(ÄΣ" INVALID ")", "SSÄFI" INVALID "|äς" INVALID},
        {"$caps('o''NEIL can''t ''quote'' 3RD')", "O'neil Can't 'Quote' 3rd"},
        {"$caps(a-b_c d,-)|$caps(A,)", "A-B_c d|A"},
        {"$caps2(ǆ iPod " INVALID "x)", "ǅ IPod " INVALID "x"},
        {"$caps3('¡¿qUÉ?')|$caps3(12)", "¡¿Qué?|12"},
        {"$titlecase(of)|$titlecase(A OF b)|$titlecase('x - the y. a z: an e')",
         "Of|A of B|X - The Y. A Z: An E"},
        {"$capsroman(HENRY VIII and KIM)", "Henry VIII And Kim"},
    });
}

TEST(TitleFormatFunctions, Cut) {
    expect_all({
        {"$left(Häfen,2)|$left(Häfen,-2)|$left(a,9)|$left(a,-9)|$left(a,x)|$left(a,)", "Hä|Häf|a|||"},
        {"$right(Häfen,4)|$right(Häfen,-4)|$right(a,9)|$right(a,0)|$right(a,x)", "äfen|n|a||"},
        {"$mid(Häfen,1,2)|$mid(Häfen,-2,9)|$mid(a,1,1)|$mid(a,0,-1)|$mid(abc,-9,2)", "äf|en|||ab"},
        {"$substr(Häfen,1)|$substr(Häfen,,2)|$substr(Häfen,2,1)|$substr(Häfen,x)|$substr(Häfen,-2,)",
         "äfen|Hä|||en"},
        {"$left(" INVALID "ä,1)|$len(" INVALID INVALID "ä)|$reverse(" INVALID "ab\xE2\x82)",
         INVALID "|3|\x82\xE2"
                 "ba" INVALID},
        {"$truncate(a  b,3)|$firstwords(abc def,2)|$firstwords(ab cd,2)|$firstwords(ab cd,0)|$firstwords(' a "
         "b',2)",
         "a|ab|ab|| a"},
        {"$firstalpha(%n%)|$firstalpha(,0)|$firstalpha(éa)|$firstalpha(1,)", "#|0|É|"},
        {"$initials(a 1 b '(c' é)", "abé"},
        {"$trim('\t\xC2\xA0 a b \xE3\x80\x80')|$trim(xaxbx,x)|$trim(xx,x)|$trim(   )|$trim(éaé,é)",
         "a b|axb|||a"},
        {"$pad(ä,3)|$pad(ab,1)|$pad(a,3,xy)|$pad(a,3,)|$pad(a,x)|$padright(ä,2,.)", "  ä|ab|xyxya|a||ä."},
        {"$repeat(a,0)$repeat(a,-1)$repeat(,99999999999999999)", ""},
    });
}

TEST(TitleFormatFunctions, KnowNames) {
    expect_all({
        {"$delprefix(the  who)|$delprefix(Theo)|$delprefix(The)|$delprefix('The ')|$delprefix(Die "
         "Ärzte,die,der)",
         "who|Theo|The|The|Ärzte"},
        {"$swapprefix(A Ha)|$swapprefix(An Ox)|$swapprefix(Les Ogres)|$swapprefix(les Ogres,Les)",
         "Ha, A|Ox, An|Les Ogres|Ogres, les"},
        {"$bracketed('a (b (c))')|$unbracketed('a (b (c))')|$bracketed('a [b] ')|$bracketed('(a) "
         "b')|$bracketed(')')",
         "b (c)|a|b||"},
        {"$bracketed('a ~b~')|$unbracketed('a -b-')|$unbracketed(ab)|$bracketed(a（b）)", "b|a|ab|b"},
        {"$join($guests(a ft. b and c),/)|$join($guests('a [featuring b, c & d] e'),/)|$guests(with "
         "b)|$guests(a feat.)",
         "b/c|b/c/d||"},
        {"$noguests('a (Feat. b) (Live)')|$noguests(a with b)|$noguests(soft b)|$noguests(left b)",
         "a (Live)|a|soft b|left b"},
        {"$join($splitsmart('a & b & c, d'),/)|$lenmulti($splitsmart(a))|$lenmulti($splitsmart(%n%))",
         "a/b/c, d|1|0"},
        {"$country(de)|$country(XX)|$country(d1)|$country(deu)", "Germany|||"},
        {"$bucket(1994,1980-1989,1990-1999)|$bucket(2001,1990-1999)|$bucket(élan,A-D)|$bucket(d,A-D)|$bucket("
         ",A-D)",
         "1990-1999|2001|É|A-D|"},
    });
}

TEST(TitleFormatFunctions, Search) {
    expect_all({
        {"$find(Häfen,e)|$find(a,)|$find(,)|$find(a,b)|$findlast(ääa,ä)|$findlast(a,b)|$findlast(ab,)",
         "3|0|0||1||2"},
        {"$contains(a,)$contains(,a)$startswith(a,ab)$endswith(a,)|$count(aaa,aa)$count(a,)", "11|10"},
        {"$containsfold(MOTÖRHEAD,orhe)$containsfold(a,)$containsfold(Чай,чай)", "111"},
        {"$isnumber(%n%)$isnumber(-)$isnumber(1e5)$isnumber(inf)$isnumber(1.2.3)$isnumber(0x1)|$isnumber(' "
         "+1 "
         "')$isnumber(.5)",
         "|11"},
        {"$hasformat('%a%-%b%',a-b-c)$hasformat('%a%-%b%',-b)|$hasformat(x,x)$hasformat('x%a%y',xy)$"
         "hasformat('%a%%b%',ab)",
         "1|11"},
        {"$fromtext(a-b-c,'%1-%2','%2|%1|%3')|$fromtext(ab,'%1-%2',x)|$fromtext(a.mp3,'%1.mp3','%1%')|$"
         "fromtext(ab,'%1%2','%2%1')",
         "b-c|a||ab|a%|ba"},
    });
}

TEST(TitleFormatFunctions, Replace) {
    expect_all({
        {"$replace(aaa,aa,b)|$replace(a,,b)|$replace(a,a,)|$replace(aa,a,aa)", "ba|a||aaaa"},
        {"$replaceword(the the-the (the),the,x)|$replaceword(aaa aa,aa,x)|$replaceword(a,,x)",
         "x the-the (x)|aaa x|a"},
        {"$replacelist(a,a,b,b,c)|$replacelist(a,a,b,c)", "c|b"},
        {"$colons(a:b)|$colons(a; b)|$colons(a:)|$colons(a:   :  b)", "a:b|a - b|a:|a -  - b"},
        {"$rreplace(abc,'(x)?b','[\\1]$0\\\\')|$rreplace(aXa,x,-)|$rreplace(aXa,x,-,0)|$rreplace(aXa,x,-,1)",
         "a[]b\\c|aXa|a-a|aXa"},
        {"$rreplace(ab,,-)|$rreplace(ab,'x*',-)|$rreplace(a" INVALID
         ",x,y)|$rreplace(a,'(',x)|$rreplace(b" INVALID ",b,c)",
         "-a-b-|-a-b-|a" INVALID "|a|c\xEF\xBF\xBD"},
        {"$rsearch(ab12,'(x)|(\\d+)')|$rsearch(ab12,'b\\d',0)|$rsearch(a1,'(?<n>\\d)',n)|$rsearch(a1,'(\\d)',"
         "2)|$rsearch(a,'(')",
         "12|b1|1||"},
        {"$rmatch(a,A)$rmatch(a,'[')|$rmatch(a,A,0)$rmatch(äöü,'^.{3}$')$rmatch(a+b,$rescape(a+b))", "|111"},
        {"$unescape('\\n\\x\\\\\\')|$unescape(%n%)", "\n\\x\\\\|"},
    });
}

TEST(TitleFormatFunctions, Calculate) {
    expect_all({
        {"$num(3,2)|$num(003,2)|$num(123,2)|$num(,2)|$num(A1,2)|$num(3/12,2,1)|$num(-5,3)|$num(3,x)|$num( 7 "
         ",2)",
         "03|03|123|||03/12|-005||07"},
        {"$num(99999999999999999999999,2)|$num(0,0)|$num(000,1)", "99999999999999999999999|0|0"},
        {"$tonum(a-1)|$tonum(-1.5.2)|$tonum(x -3)|$tonum(1.)|$tonum(a)", "1|-1.5|-3|1|"},
        {"$add(1)|$add( 1 "
         ",+2)|$add(1,)|$add(1,a)|$add(1.5,1)|$add(9223372036854775807,1)|$add(9223372036854775808,-1)",
         "1|3|||||"},
        {"$sub(-9223372036854775808,1)|$sub(-9223372036854775807,1)|$mul(4294967296,2147483648)|$mul(-"
         "4294967296,2147483648)",
         "|-9223372036854775808||-9223372036854775808"},
        {"$div(7,2)|$div(-7,2)|$div(7,-2)|$div(1,0)|$div(-9223372036854775808,-1)|$div(24,2,3)",
         "3|-4|-4|||4"},
        {"$mod(7,3)|$mod(-7,3)|$mod(7,-3)|$mod(1,0)|$mod(-9223372036854775808,-1)", "1|2|-2||0"},
        {"$min(10,9,-1)|$max(2,10)|$max(2,10,a)|$max($splitmulti(1; 3),2)|$min(%nope%)|$max(1.5,1.25)",
         "-1|10|a|3||1.5"},
        {"$sum(1,a,2.25)|$sum(a)|$avg(1,2,a)|$avg(%n%)|$sum($splitmulti(1; 2; 3))", "3.25||1.5||6"},
        {"$floor(-1.5)|$ceil(-1.5)|$round(-2.5)|$round(2)|$round(-0.2)|$floor(a)|$round(9223372036854775807)",
         "-2|-1|-3|2|0||9223372036854775807"},
        {"$odd(-3)$odd(2)$odd(a)|$roman(3999)|$roman(4000)|$roman(0)|$fromroman(mcmxciv)|$fromroman(IIX)|"
         "$fromroman(%n%)",
         "1|MMMCMXCIX|||1994||"},
    });
}

TEST(TitleFormatFunctions, Compare) {
    expect_all({
        {"$lt(2,10)$lt(a,b)$lt(-1,1)$lt(1.5,1.75)$lt(9007199254740992,9007199254740993)|$lt(10,2)$lt(b10,b9)$"
         "lt(a,a)",
         "11111|1"},
        {"$gte(1,1.0)$lte(a,a)$gt(é,z)|$between(5,5,9)$between(b,a,c)|$between(10,2,9)", "111|11|"},
        {"$eqany(a)$eqall(a)$neany(a)$neall(a)|$eqall(a,a,a)$neany(a,a,b)$neall(a,b,c)", "11|111"},
        {"$eqnocase(STRASSE,straße)$eqnocase(a,b)|$not(%n%)$not(a)|$xor(1,1)$xor(1,0,0)|$iflonger(ää,abc,x,"
         "y)",
         "1|1|1|y"},
        {"$wrap(a,,b)|$wrap(,x,)|$first(a;b;c,2,1,;)|$first(a;b;c,2,0,;,+)|$first(a,1,1)|$first(a "
         "b,x)|$first(abc,1,0,)",
         "|x|b;c|a+b|||abc"},
    });
}

TEST(TitleFormatFunctions, WorkOnValues) {
    expect_all({
        {"$join($splitmulti(a;;b,;),/)|$join($splitmulti(a,;),/"
         ")|$lenmulti($splitmulti(,;))|$join($splitmulti(ab,),/)",
         "a//b|a|0|ab"},
        {"$sortmulti($splitmulti(b 10;B 9;a,;))|$sortmulti($splitmulti(a;b;A,;),1)", "a, B 9, b 10|b, a, A"},
        {"$sortmulti($splitmulti(Zappa;\u00C9dith;Eno;zz;\u00E9a,;))", "\u00E9a, \u00C9dith, Eno, Zappa, zz"},
        {"$unique($splitmulti(É;é;e,;))|$unique($splitmulti(A;a;A,;),1)", "É, e|A, a"},
        {"$replacemulti($splitmulti(a;b;a,;),a,)|$inmulti($splitmulti(a;b,;),a;b)", "b|"},
        {"$copy(x,$splitmulti(a;b,;))$copymerge(x,$splitmulti(b;c,;))$get(x)|$copymerge(x,c,1)$get(x)|$set(x,"
         ")$get(x)",
         "a, b, c|a, b, c, c|"},
        {"$setmulti(x,a;b,;)$unset(y)$lenmulti($get(x))$setmulti(x,)$get(x)$set(,n)$get(%n%)", "2n"},
    });
}

TEST(TitleFormatFunctions, TakeDatesPathsAndCharactersApart) {
    expect_all({
        {"$year(2019)$month(2019)$day(2019)|$month(4/1/2019,mdy)|$year(1.4.2019,dmy)|$day(2019-4)|$year(abc)",
         "2019|4|2019||"},
        {"$dateformat(2024-02-29)|$dateformat(2023-02-29)|$dateformat(2024-02)|$dateformat(1.2.2003,'%j %u "
         "%%%',dmy)|$dateformat(2003-1-1,'%999d%-d')",
         "2024-02-29|||032 6 %%|%999d%-d"},
        {"$validate('a/b\tc')|$validate(a/b,)|$validate(abc,-,b)|$validate(..)", "a_b_c|ab|a-c|.."},
        {"$limitname(äöü.mp3,7)|$limitname(a "
         "b.mp3,6)|$limitname(ab.extension,4)|$limitname(ab,0)|$limitname(ab,9)",
         "ä.mp3|a.mp3|ab.e||ab"},
        {"$directory(/a/b/c)|$directory(/a/b/c,2)|$directory(/a/b/c,3)|$directory(c)|$directory(/a/b,0)",
         "b|a|||"},
        {"$ascii(Ærø ½ 漢字 \xF0\x9F\x8E\xB5.)|$ascii(a" INVALID ")", "AEro  1/2 han zi .|a"},
        {"$noaccents(ǖﬁÅ한й)|$noaccents(e\xCC\x81)|$asciionly(ä" INVALID "b,)|$transliterate(aé,no-such)",
         "ufiA한й|e|b|aé"},
        {"$ord(" INVALID
         ")$ord(ab)$ord(%n%)|$ord(\xF0\x9F\x8E\xB5)|$char(0)$char(55296)$char(1114112)$char(x)|$char(127925)",
         "|127925||\xF0\x9F\x8E\xB5"},
        {"$convert(\xC3\x8F\xC3\xB0,windows-1251)|$convert(漢,UTF-8)|$convert(a,no-such)|$convert(a,../x)",
         "Пр|漢|a|a"},
        {"$urlencode(a-~ " INVALID ")|$htmlescape('<a href=\"''\">" INVALID "')",
         "a-~%20%C3|&lt;a href=&quot;&#39;&quot;&gt;&#65533;"},
    });
}

} // namespace
} // namespace vantaro::core
