#include "component/configuration.h"
#include "component/own_services.h"
#include "component/service_list.h"
#include "host/api/memory_stream.h"
#include "tests/support/failures.h"
#include "tests/support/fake_host.h"
#include "tests/support/short_forms.h"

#include <cstring>

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;

constexpr Guid limited_id = guid("{00000000-0000-0000-0000-000000000001}");
ConfigUint64 limited_variable(limited_id, {7});
ConfigText text_variable(guid("{00000000-0000-0000-0000-000000000002}"), "t");

SingleService<IntegerPreference, AdvancedPreference>
    limited("limited", limited_variable, PreferencesBranch::id, IntegerPreference::Range{7, 5, 10});

class RefusingCheck final : public StaticService<InstallationCheck> {
public:
    bool query(ServiceBase*&, const Guid&) override { return false; }
    bool is_installed_correctly() override { return true; }
};
SingleService<RefusingCheck, InstallationCheck> refusing;

TEST(ConfigurationVariables, AreWrittenFromTheLastConstructed) {
    MemoryWriter writer;
    write_configuration(writer, test::run_on);
    EXPECT_EQ(
        writer.bytes(),
        test::bytes("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 02 01 00 00 00 't'"
                    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 08 00 00 00 07 00 00 00 00 00 00 00"));
    EXPECT_EQ(&configuration_variable(limited_id), &limited_variable);
    EXPECT_DEATH(configuration_variable(Guid()), "never constructed");
}

TEST(IntegerPreference, StaysInItsRange) {
    ServiceBase* service = nullptr;
    limited.create_instance(service);
    auto& preference = static_cast<IntegerPreference&>(*service);
    for (const auto& [text, wanted] : {std::pair("4", 5U), {"9", 9U}, {"11", 10U}}) {
        preference.set_value(text, std::strlen(text));
        EXPECT_EQ(limited_variable.get().front(), wanted) << text;
    }
    preference.reset();
    EXPECT_EQ(limited_variable.get().front(), 7U);
}

TEST(ServiceList, EndsTheProcessWhenAServiceRefusesItsClass) {
    EXPECT_EQ(service_list_head(), &refusing);
    EXPECT_EQ(service_list_head()->next(), &limited);
    ServiceBase* out = nullptr;
    EXPECT_DEATH(refusing.create_instance(out), "refuses its own class");
}

} // namespace
} // namespace quorvex
