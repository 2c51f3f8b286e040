#include "script/action.h"
#include "tests/component/component_fixture.h"

namespace quorvex {
namespace {

using namespace vantaro;

using Client = test::Component;

TEST_F(Client, IsOneObjectForEveryHost) {
    EXPECT_EQ(client_.get_version(), 80U);
    EXPECT_FALSE(client_.is_debug());
    test::FakeHost second;
    EXPECT_EQ(vantaro_get_interface(&second), &client_);
    EXPECT_EQ(second.created(), 0) << "no service is touched";
    EXPECT_EQ(service_count(ActionType::class_guid), 0U) << "look-ups go through the second";
    EXPECT_EQ(vantaro_get_interface(&host_), &client_);
    EXPECT_GT(service_count(ActionType::class_guid), 0U);
}

TEST_F(Client, TellsTheConsoleWhileServicesAreAvailable) {
    for (const bool available : {true, false}) {
        client_.services_init(available);
        print_to_console("line");
    }
    EXPECT_EQ(host_.take_events(), "line");
}

TEST_F(Client, ListsServicesFromTheLastRegistered) {
    std::string list;
    for (ServiceRecord* record = client_.get_service_list(); record; record = record->next()) {
        ServiceBase* service = nullptr;
        record->create_instance(service);
        if (const auto type = query_interface<ActionType>(*service))
            list += text_of([&](TextSink& out) { type->get_name(out); }) + '\n';
        else
            list += to_text(record->class_guid()) + '\n';

        ServiceBase* again = nullptr;
        record->create_instance(again);
        const bool is_command_line = !record->next();
        EXPECT_EQ(again == service, !is_command_line) << list << "only the command line makes new objects";
        EXPECT_EQ(service->release(), is_command_line ? 0U : 1U) << list;
        EXPECT_EQ(again->release(), is_command_line ? 0U : 1U) << list;
    }
    EXPECT_EQ(list, "Copy values between fields...\n"
                    "Format value from other fields...\n"
                    "Split field by separator...\n"
                    "Split multiple artist fields\n"
                    "Add value...\n"
                    "Set value...\n"
                    "Guess values from other fields...\n"
                    "Guess values from file names...\n"
                    "Replace value...\n"
                    "Remove all fields except for...\n"
                    "Remove field...\n"
                    "Remove all fields\n"
                    "Remove values...\n"
                    "Input data (one line per track)...\n"
                    "Embed cuesheet\n"
                    "Auto track number...\n"
                    "{0639283E-3004-4E5C-B1B3-6DFF08A79284}\n" // installation check
                    "{10BB3EBD-DDF7-4975-A3CC-23084829453E}\n" // version record
                    "{1C0802F7-CF24-49EF-B914-8B9866F19779}\n" // context-menu items
                    "{1C0802F7-CF24-49EF-B914-8B9866F19779}\n"
                    "{7E84602E-DC49-4047-AAEE-63718BBC5A1F}\n"   // advanced preference: threshold
                    "{7E84602E-DC49-4047-AAEE-63718BBC5A1F}\n"   // and branch
                    "{550B3A19-42A4-4C0F-91F2-90550189CBFF}\n"); // command line
}

} // namespace
} // namespace quorvex
