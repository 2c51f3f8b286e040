#include "vantaro/titleformat/functions/functions.h"

#include "vantaro/titleformat/functions/characters.h"
#include "vantaro/titleformat/functions/number_text.h"

namespace vantaro::core::functions {

namespace {

/// How many of the other arguments the first one equals.
std::size_t equal_count(const Call& call) {
    std::size_t count = 0;
    for (std::size_t i = 1; i < call.count(); ++i)
        if (call.text(i) == call.text(0))
            ++count;
    return count;
}

} // namespace

void eq(Call& call) {
    call.put_truth(call.text(0) == call.text(1));
}

void ne(Call& call) {
    call.put_truth(call.text(0) != call.text(1));
}

void eqnocase(Call& call) {
    call.put_truth(folded_case(call.text(0)) == folded_case(call.text(1)));
}

void lt(Call& call) {
    call.put_truth(compare_texts(call.text(0), call.text(1)) < 0);
}

void lte(Call& call) {
    call.put_truth(compare_texts(call.text(0), call.text(1)) <= 0);
}

void gt(Call& call) {
    call.put_truth(compare_texts(call.text(0), call.text(1)) > 0);
}

void gte(Call& call) {
    call.put_truth(compare_texts(call.text(0), call.text(1)) >= 0);
}

void between(Call& call) {
    call.put_truth(compare_texts(call.text(1), call.text(0)) <= 0
                   && compare_texts(call.text(0), call.text(2)) <= 0);
}

void eqany(Call& call) {
    call.put_truth(equal_count(call) > 0);
}

void eqall(Call& call) {
    call.put_truth(equal_count(call) == call.count() - 1);
}

void neany(Call& call) {
    call.put_truth(equal_count(call) < call.count() - 1);
}

void neall(Call& call) {
    call.put_truth(equal_count(call) == 0);
}

void not_(Call& call) {
    call.put_truth(!is_true(call.text(0)));
}

void xor_(Call& call) {
    bool truth = false;
    for (std::size_t i = 0; i < call.count(); ++i)
        truth = truth != is_true(call.text(i));
    call.put_truth(truth);
}

void iflonger(Call& call) {
    const bool is_longer = count_characters(call.text(0)) > count_characters(call.text(1));
    call.out().append(call.text(is_longer ? 2 : 3));
}

void wrap(Call& call) {
    if (call.text(1).empty())
        return;
    call.out().append(call.text(0));
    call.out().append(call.text(1));
    call.out().append(call.text(2));
}

} // namespace vantaro::core::functions
