#include "vantaro/titleformat/function_table.h"

#include "vantaro/titleformat/functions/functions.h"
#include "vantaro/titleformat/names.h"

#include <array>

namespace vantaro::core {

namespace {

using enum FunctionForm;
namespace f = functions;

// Which arguments take values.
constexpr std::uint32_t no_values = 0;
constexpr std::uint32_t first = 1;
constexpr std::uint32_t second = 2;
constexpr std::uint32_t all = ~std::uint32_t{0};

constexpr std::uint8_t any = any_number;

constexpr FunctionRow text(std::string_view name, std::uint8_t least, std::uint8_t most,
                           void (*function)(Call&), std::string_view arguments, std::string_view description,
                           std::uint32_t values = no_values) {
    return {name, least, most, plain, values, false, function, arguments, description};
}

constexpr FunctionRow list(std::string_view name, std::uint8_t least, std::uint8_t most,
                           void (*function)(Call&), std::string_view arguments, std::string_view description,
                           std::uint32_t values = no_values) {
    return {name, least, most, plain, values, true, function, arguments, description};
}

constexpr FunctionRow form(std::string_view name, std::uint8_t least, std::uint8_t most, FunctionForm how,
                           std::string_view arguments, std::string_view description) {
    return {name, least, most, how, no_values, how == map, nullptr, arguments, description};
}

// clang-format off
constexpr auto rows = sorted_by_name(std::to_array<FunctionRow>({
    // case
    text("upper", 1, 1, f::upper, "text", "all letters in upper case"),
    text("lower", 1, 1, f::lower, "text", "all letters in lower case"),
    text("caps", 1, 2, f::caps, "text[,after]",
         "each word with a capital, the rest lower; words start behind anything but letters, digits "
         "and apostrophes, or only behind the characters of after"),
    text("caps2", 1, 1, f::caps2, "text", "each word with a capital, the rest as it is"),
    text("caps3", 1, 1, f::caps3, "text", "the first letter of the text upper, all others lower"),
    text("titlecase", 1, 1, f::titlecase, "text",
         "like $caps2, but English small words stay lower except at the start, at the end and behind . : -"),
    text("capsroman", 1, 1, f::capsroman, "text",
         "like $caps, but words made of I V X L C D M stay as they are"),

    // cutting
    text("left", 2, 2, f::left, "text,n", "the first n characters; with a negative n, all but the last ones"),
    text("right", 2, 2, f::right, "text,n",
         "the last n characters; with a negative n, all but the first ones"),
    text("mid", 3, 3, f::mid, "text,start,n", "n characters from position start on"),
    text("substr", 2, 3, f::substr, "text,start[,end]", "from position start up to, not including, end"),
    text("truncate", 2, 2, f::truncate, "text,n", "the first n characters, without white space at the end"),
    text("firstwords", 2, 2, f::firstwords, "text,n", "as many whole words as fit in n characters"),
    text("firstalpha", 1, 2, f::firstalpha, "text[,other]",
         "the first character in upper case when it is a letter, or else other (#)"),
    text("initials", 1, 1, f::initials, "text", "the first letter of each word"),
    text("trim", 1, 2, f::trim, "text[,chars]",
         "without white space, or without the characters of chars, at both ends"),
    text("trimleft", 1, 2, f::trimleft, "text[,chars]",
         "without white space, or the characters of chars, at the start"),
    text("trimright", 1, 2, f::trimright, "text[,chars]",
         "without white space, or the characters of chars, at the end"),
    text("collapse", 1, 1, f::collapse, "text", "each run of white space as one space, none at the ends"),
    text("reverse", 1, 1, f::reverse, "text", "the characters from the last to the first"),
    text("pad", 2, 3, f::pad, "text,n[,char]", "filled at the start to n characters, with spaces or char"),
    text("padright", 2, 3, f::padright, "text,n[,char]",
         "filled at the end to n characters, with spaces or char"),
    text("repeat", 2, 2, f::repeat, "text,n", "the text n times"),

    // name
    text("delprefix", 1, any, f::delprefix, "text[,article...]",
         "without the article at the start: The, A, An, or those given; in any case"),
    text("swapprefix", 1, any, f::swapprefix, "text[,article...]",
         "with the article moved behind a comma at the end"),
    text("bracketed", 1, 1, f::bracketed, "text",
         "what stands in the brackets at the very end: () [] ~~ -- and full-width ones"),
    text("unbracketed", 1, 1, f::unbracketed, "text", "without the brackets at the very end"),
    list("guests", 1, 1, f::guests, "text", "who follows feat., featuring, ft. or with, each as one value"),
    text("noguests", 1, 1, f::noguests, "text", "without feat. and what follows it"),
    list("splitsmart", 1, 1, f::splitsmart, "text",
         "the pieces between / or & or ,: whichever stands first in the text"),

    // searching
    text("len", 1, 1, f::len, "text", "the number of characters"),
    text("find", 2, 2, f::find, "text,part",
         "the position of the first such part; nothing when there is none"),
    text("findlast", 2, 2, f::findlast, "text,part",
         "the position of the last such part; nothing when there is none"),
    text("contains", 2, 2, f::contains, "text,part", "1 when the part stands in the text"),
    text("startswith", 2, 2, f::startswith, "text,part", "1 when the text starts with the part"),
    text("endswith", 2, 2, f::endswith, "text,part", "1 when the text ends with the part"),
    text("containsfold", 2, 2, f::containsfold, "text,part",
         "like $contains, but case and accents do not count"),
    text("count", 2, 2, f::count, "text,part", "how often the part stands in the text"),
    text("isnumber", 1, 1, f::isnumber, "text", "1 for a whole or decimal number, with or without a sign"),
    text("hasformat", 2, 2, f::hasformat, "pattern,text",
         "1 when the text fits a pattern of %names% and other text"),
    text("fromtext", 3, 3, f::fromtext, "text,pattern,output",
         "the output with %1 to %9 replaced by what they stood for in the pattern; the text itself "
         "when it does not fit"),

    // replacing
    text("replace", 3, 3, f::replace, "text,from,to", "every from replaced by to"),
    text("replaceword", 3, 3, f::replaceword, "text,from,to",
         "every from replaced by to where it stands as a word of its own"),
    text("replacelist", 3, any, f::replacelist, "text,from,to[,from,to...]",
         "several replacements, one after the other"),
    text("underscores", 1, 1, f::underscores, "text", "spaces replaced by underscores"),
    text("spaces", 1, 1, f::spaces, "text", "underscores replaced by spaces"),
    text("colons", 1, 1, f::colons, "text",
         "a colon or semicolon and the white space behind it replaced by \" - \""),

    // regular expression
    text("rreplace", 3, 4, f::rreplace, "text,regex,to[,matchcase]",
         "every match of the regular expression replaced; \\1 or $1 in to is the first group, \\0 the match"),
    text("rsearch", 2, 3, f::rsearch, "text,regex[,group]",
         "the first match: its first group that took part, or the group of that number or name, or "
         "all of it"),
    text("rmatch", 2, 3, f::rmatch, "text,regex[,matchcase]",
         "1 when the regular expression matches somewhere"),
    text("rescape", 1, 1, f::rescape, "text", "the text as a regular expression for itself"),

    // number
    text("num", 2, 3, f::num, "text,n[,keeptotal]",
         "the number before a slash, with n digits at least; with keeptotal what stands behind it as well"),
    text("tonum", 1, 1, f::tonum, "text", "the first number in the text"),
    text("add", 1, any, f::add, "n[,n...]", "the sum"),
    text("sub", 2, any, f::sub, "n,n[,n...]", "the first number less the others"),
    text("mul", 1, any, f::mul, "n[,n...]", "the product"),
    text("div", 2, any, f::div, "n,n[,n...]", "the quotient, rounded down"),
    text("mod", 2, any, f::mod, "n,n[,n...]", "the remainder, with the sign of the divisor"),
    text("min", 1, any, f::min, "values[,values...]",
         "the smallest of all values, by number when all are numbers", all),
    text("max", 1, any, f::max, "values[,values...]",
         "the greatest of all values, by number when all are numbers", all),
    text("sum", 1, any, f::sum, "values[,values...]", "the sum of all values that are numbers", all),
    text("avg", 1, any, f::avg, "values[,values...]", "the average of all values that are numbers", all),
    text("floor", 1, 1, f::floor, "n", "the next whole number downwards"),
    text("ceil", 1, 1, f::ceil, "n", "the next whole number upwards"),
    text("round", 1, 1, f::round, "n", "the nearest whole number; halves go away from 0"),
    text("odd", 1, 1, f::odd, "n", "1 for an odd number"),
    text("rand", 0, 0, f::rand, "", "a number from 0 up to, not including, 1, another one each time"),
    text("roman", 1, 1, f::roman, "n", "the number from 1 to 3999 in roman digits"),
    text("fromroman", 1, 1, f::fromroman, "text", "the number that the roman digits mean"),

    // logic
    text("eq", 2, 2, f::eq, "a,b", "1 when both texts are the same"),
    text("ne", 2, 2, f::ne, "a,b", "1 when the texts differ"),
    text("eqnocase", 2, 2, f::eqnocase, "a,b", "1 when both texts are the same but for their case"),
    text("lt", 2, 2, f::lt, "a,b", "1 when a is less than b, by number when both are numbers"),
    text("lte", 2, 2, f::lte, "a,b", "1 when a is less than or equal to b"),
    text("gt", 2, 2, f::gt, "a,b", "1 when a is greater than b"),
    text("gte", 2, 2, f::gte, "a,b", "1 when a is greater than or equal to b"),
    text("between", 3, 3, f::between, "a,low,high",
         "1 when a is neither less than low nor greater than high"),
    text("eqany", 1, any, f::eqany, "a[,b...]", "1 when a is the same as one of the others"),
    text("eqall", 1, any, f::eqall, "a[,b...]", "1 when a is the same as all of the others"),
    text("neany", 1, any, f::neany, "a[,b...]", "1 when a differs from one of the others"),
    text("neall", 1, any, f::neall, "a[,b...]", "1 when a differs from all of the others"),
    text("not", 1, 1, f::not_, "a", "1 when a is false"),
    text("xor", 2, any, f::xor_, "a,b[,c...]", "1 when an odd number of them is true"),
    text("iflonger", 4, 4, f::iflonger, "a,b,then,else",
         "then when a has more characters than b, or else else"),
    text("wrap", 3, 3, f::wrap, "before,text,after", "all three, or nothing when the text is empty"),

    // evaluated only as far as needed
    form("and", 1, any, and_, "a[,b...]", "1 when all are true; ends at the first that is not"),
    form("or", 1, any, or_, "a[,b...]", "1 when one is true; ends at the first that is"),
    form("if", 2, 3, if_, "condition,then[,else]", "then when the condition is true, or else else"),
    form("if2", 1, any, if_text, "a[,b...]", "the first that is not empty"),
    form("if3", 1, any, if_text, "a[,b...]", "the same as $if2"),
    form("ifdef", 1, 3, if_defined, "field[,then[,else]]",
         "then when there is such a field, or else else; without then the field itself"),
    form("select", 2, any, select, "n,a[,b...]", "the n-th of the others, counted from 1"),
    form("noop", 0, any, nothing, "[...]", "nothing; for notes"),
    form("while", 2, 2, while_, "condition,text",
         "the text again and again while the condition is true, at most 1000 times; %_loop_count% "
         "counts from 1"),
    form("map", 2, 2, map, "values,text",
         "the text for each value, which is %_loop_value%; empty ones are left out"),
    form("foreach", 2, 2, each, "values,text", "evaluates the text for each value and yields nothing"),
    form("format", 1, 1, format, "pattern", "evaluates a text as a pattern"),

    // value
    text("getmulti", 2, 2, f::getmulti, "values,n", "value number n, from 0; negative from the end", first),
    text("join", 2, 2, f::join, "values,separator", "all values with the separator between them", first),
    text("lenmulti", 1, 1, f::lenmulti, "values", "how many values there are", first),
    text("ismulti", 1, 1, f::ismulti, "values", "1 when there are several values", first),
    text("inmulti", 2, 2, f::inmulti, "values,value", "1 when one of the values is that one", first),
    list("slice", 2, 3, f::slice, "values,start[,end]",
         "the values from position start up to, not including, end", first),
    list("splitmulti", 1, 2, f::splitmulti, "text[,separator]",
         "the pieces between the separators (\"; \") as values"),
    list("sortmulti", 1, 2, f::sortmulti, "values[,descending]",
         "the values sorted as people sort: numbers by size, case does not count", first),
    list("reversemulti", 1, 1, f::reversemulti, "values", "the values from the last to the first", first),
    list("unique", 1, 2, f::unique, "values[,matchcase]",
         "without values that are there already; case counts with matchcase only", first),
    list("replacemulti", 3, 3, f::replacemulti, "values,from,to",
         "values that are from replaced by to; those that become empty are left out", first),
    list("cleanmulti", 1, 1, f::cleanmulti, "values", "without empty values", first),
    text("first", 1, 5, f::first, "text[,count[,skip[,separator[,glue]]]]",
         "the first count (1) of the pieces between separators (\"; \") behind the first skip (0)"),
    text("bucket", 1, any, f::bucket, "text[,range...]",
         "the first of the ranges A-D or 1990-1999 that the text is within, or else the year, or the "
         "first letter"),
    text("country", 1, 1, f::country, "code", "the English name of the country with that two-letter code"),
    list("tag", 1, 1, f::tag, "name", "the values of the stored field of that name, without fall-backs"),
    text("technical", 1, 1, f::technical, "name", "the technical field of that name"),
    list("performer", 0, 1, f::performer, "[role]",
         "the values of the fields PERFORMER:ROLE whose role contains that text"),
    list("people", 0, 0, f::people, "", "everyone credited, without repeats"),

    // date
    text("year", 1, 2, f::year, "date[,order]", "the year of a date whose order is ymd (or dmy, mdy)"),
    text("month", 1, 2, f::month, "date[,order]", "the month of a date"),
    text("day", 1, 2, f::day, "date[,order]", "the day of a date"),
    text("dateformat", 1, 3, f::dateformat, "date[,format[,order]]",
         "the date through the codes of strftime (%Y-%m-%d); nothing when there is no such day"),
    text("datetime", 0, 1, f::datetime, "[format]",
         "now, in local time, through the codes of strftime (%Y-%m-%d %H:%M:%S)"),

    // path
    text("validate", 1, 3, f::validate, "text[,to[,chars]]",
         "characters that file names should not hold replaced by to (_): / \\ : * ? \" < > | and "
         "control characters"),
    text("limitname", 1, 2, f::limitname, "name[,n]", "the name cut to n bytes (255), its extension kept"),
    text("filename", 1, 1, f::filename, "path", "the name of the file without extension"),
    text("filenameext", 1, 1, f::filenameext, "path", "the name of the file"),
    text("extension", 1, 1, f::extension, "path", "the extension, without its dot"),
    text("directory", 1, 2, f::directory, "path[,n]", "the name of the n-th folder upwards (1)"),
    text("directorypath", 1, 1, f::directorypath, "path", "the folder with its path"),

    // transliteration
    text("ascii", 1, 1, f::ascii, "text", "the nearest spelling in ASCII; what has none is left out"),
    text("transliterate", 2, 2, f::transliterate, "text,id",
         "through the ICU transliterator of that id, such as Greek-Latin; as it is when there is none"),
    text("noaccents", 1, 1, f::noaccents, "text", "Latin letters without accents"),
    text("asciionly", 1, 2, f::asciionly, "text[,to]", "each character that is not ASCII replaced by to (_)"),
    text("ord", 1, 1, f::ord, "char", "the code point of one character"),
    text("char", 1, 1, f::char_, "n", "the character of that code point"),
    text("convert", 2, 2, f::convert, "text,encoding",
         "repairs a text that was read as Latin-1 but is in that encoding"),
    text("urlencode", 1, 1, f::urlencode, "text", "percent-encoded"),
    text("htmlescape", 1, 1, f::htmlescape, "text", "with entities for < > & \" ' and what is not ASCII"),
    text("unescape", 1, 1, f::unescape, "text",
         "with \\n \\t \\r \\\\ \\a \\b \\f \\v turned into the characters they mean"),

    // variable
    list("get", 1, 1, f::get, "name", "the values of the variable"),
    text("set", 2, 2, f::set, "name,text", "sets the variable and yields nothing; an empty text removes it"),
    text("puts", 2, 2, f::set, "name,text", "the same as $set"),
    text("put", 2, 2, f::put, "name,text", "sets the variable and yields the text"),
    text("setmulti", 2, 3, f::setmulti, "name,text[,separator]",
         "sets the variable to the pieces between the separators (\"; \") and yields nothing"),
    text("unset", 1, 1, f::unset, "name", "removes the variable"),
    text("copy", 2, 2, f::copy, "name,values", "sets the variable to all of the values", second),
    text("copymerge", 2, 3, f::copymerge, "name,values[,keepdup]",
         "adds the values that the variable does not have yet; with keepdup all", second),
}));
// clang-format on
static_assert(names_are_unique(rows));

} // namespace

std::span<const FunctionRow> function_rows() {
    return rows;
}

const FunctionRow* find_function(std::string_view name) {
    return find_by_name(rows, name);
}

} // namespace vantaro::core
