// The order of an interface's virtual operations, as rows of a table in which I is the interface:
//
//     INTERFACE(Mask, &I::selects);
//     SERVICE(HostConsole, "{90DF5270-65BB-4DBA-BAF5-86BE9E59DC20}", &I::print);
//
// A row checks that the interface has exactly these operations, in this order; the operations of a service
// follow the three of every service, and it has this class GUID.
#pragma once

#include "host/api/service.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

#define INTERFACE(NAME, ...)                                                                                 \
    do {                                                                                                     \
        using I = NAME;                                                                                      \
        vantaro::test::expect_slots<I>(#NAME, __VA_ARGS__);                                                  \
    } while (false)
#define SERVICE(NAME, GUID, ...)                                                                             \
    do {                                                                                                     \
        INTERFACE(NAME, &I::release, &I::add_ref, &I::query __VA_OPT__(, ) __VA_ARGS__);                     \
        EXPECT_EQ(vantaro::to_text(NAME::class_guid), GUID) << #NAME;                                        \
    } while (false)

namespace vantaro::test {

/// The slot of a virtual operation in its class. A pointer to it holds the offset in the table of virtual
/// operations in its first word, plus 1 on some machines.
template <class Operation>
std::size_t slot(Operation operation) {
    std::uintptr_t words[2];
    static_assert(sizeof operation == sizeof words);
    std::memcpy(words, &operation, sizeof words);
    return (words[0] & ~std::uintptr_t{1}) / sizeof(void*);
}

/// Its operation stands behind all of I's.
template <class I>
class OneMore : public I {
public:
    virtual void one_more() = 0;

protected:
    ~OneMore() = default;
};

template <class I, class... Operations>
void expect_slots(const char* name, Operations... operations) {
    std::vector<std::size_t> expected(sizeof...(operations) + 1);
    std::iota(expected.begin(), expected.end(), 0U);
    EXPECT_THAT((std::vector{slot(operations)..., slot(&OneMore<I>::one_more)}), expected) << name;
}

} // namespace vantaro::test
