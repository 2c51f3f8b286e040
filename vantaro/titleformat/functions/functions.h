// The functions of the language, by subject. What each yields stands in function_table.cpp and, with
// examples, in docs/title-formatting.md.
//
// Any thread.
#pragma once

#include "vantaro/titleformat/function_table.h"

namespace vantaro::core::functions {

// case.cpp
void upper(Call& call);
void lower(Call& call);
void caps(Call& call);
void caps2(Call& call);
void caps3(Call& call);
void titlecase(Call& call);
void capsroman(Call& call);

// cutting.cpp
void left(Call& call);
void right(Call& call);
void mid(Call& call);
void substr(Call& call);
void truncate(Call& call);
void firstwords(Call& call);
void firstalpha(Call& call);
void initials(Call& call);
void trim(Call& call);
void trimleft(Call& call);
void trimright(Call& call);
void collapse(Call& call);
void reverse(Call& call);
void pad(Call& call);
void padright(Call& call);
void repeat(Call& call);

// name.cpp
void delprefix(Call& call);
void swapprefix(Call& call);
void bracketed(Call& call);
void unbracketed(Call& call);
void guests(Call& call);
void noguests(Call& call);
void splitsmart(Call& call);

// searching.cpp
void len(Call& call);
void find(Call& call);
void findlast(Call& call);
void contains(Call& call);
void startswith(Call& call);
void endswith(Call& call);
void containsfold(Call& call);
void count(Call& call);
void isnumber(Call& call);
void hasformat(Call& call);
void fromtext(Call& call);

// replacing.cpp
void replace(Call& call);
void replaceword(Call& call);
void replacelist(Call& call);
void underscores(Call& call);
void spaces(Call& call);
void colons(Call& call);

// regular_expression.cpp
void rreplace(Call& call);
void rsearch(Call& call);
void rmatch(Call& call);
void rescape(Call& call);

// number.cpp
void num(Call& call);
void tonum(Call& call);
void add(Call& call);
void sub(Call& call);
void mul(Call& call);
void div(Call& call);
void mod(Call& call);
void min(Call& call);
void max(Call& call);
void sum(Call& call);
void avg(Call& call);
void floor(Call& call);
void ceil(Call& call);
void round(Call& call);
void odd(Call& call);
void rand(Call& call);
void roman(Call& call);
void fromroman(Call& call);

// logic.cpp
void eq(Call& call);
void ne(Call& call);
void eqnocase(Call& call);
void lt(Call& call);
void lte(Call& call);
void gt(Call& call);
void gte(Call& call);
void between(Call& call);
void eqany(Call& call);
void eqall(Call& call);
void neany(Call& call);
void neall(Call& call);
void not_(Call& call);
void xor_(Call& call);
void iflonger(Call& call);
void wrap(Call& call);

// value.cpp
void getmulti(Call& call);
void join(Call& call);
void lenmulti(Call& call);
void ismulti(Call& call);
void inmulti(Call& call);
void slice(Call& call);
void splitmulti(Call& call);
void sortmulti(Call& call);
void reversemulti(Call& call);
void unique(Call& call);
void replacemulti(Call& call);
void cleanmulti(Call& call);
void first(Call& call);
void bucket(Call& call);
void country(Call& call);
void tag(Call& call);
void technical(Call& call);
void performer(Call& call);
void people(Call& call);

// date.cpp
void year(Call& call);
void month(Call& call);
void day(Call& call);
void dateformat(Call& call);
void datetime(Call& call);

// path.cpp
void validate(Call& call);
void limitname(Call& call);
void filename(Call& call);
void filenameext(Call& call);
void extension(Call& call);
void directory(Call& call);
void directorypath(Call& call);

// transliteration.cpp
void ascii(Call& call);
void transliterate(Call& call);
void noaccents(Call& call);
void asciionly(Call& call);
void ord(Call& call);
void char_(Call& call);
void convert(Call& call);
void urlencode(Call& call);
void htmlescape(Call& call);
void unescape(Call& call);

// variable.cpp
void get(Call& call);
void set(Call& call);
void put(Call& call);
void setmulti(Call& call);
void unset(Call& call);
void copy(Call& call);
void copymerge(Call& call);

} // namespace vantaro::core::functions
