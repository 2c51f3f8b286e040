#include "host/api/registered_services.h"
#include "tests/component/component_fixture.h"

namespace quorvex {
namespace {

using namespace vantaro;

/// The advanced preferences in the order in which the host enumerates them.
enum : std::size_t { threshold, branch };

class OwnServices : public test::Component {
protected:
    static std::string described(std::size_t preference) {
        const auto entry = create_service<AdvancedPreference>(preference);
        std::string text = text_of([&](TextSink& out) { entry->get_name(out); });
        for (const Guid& id : {entry->get_guid(), entry->get_parent()})
            text += ' ' + to_text(id);
        text += ' ' + std::to_string(static_cast<int>(entry->get_sort_priority()));
        ServiceBase* out = nullptr;
        for (const Guid& id : {AdvancedPreference::class_guid, AdvancedPreferenceBranch::class_guid,
                               AdvancedPreferenceText::class_guid, AdvancedPreferenceTypedText::class_guid})
            text += entry->query(out, id) ? " yes" : " no";
        return text;
    }
    bool is_installed(const char* path) {
        client_.set_library_path(path, "whatever");
        return only_service<InstallationCheck>()->is_installed_correctly();
    }
    static std::string value() {
        return text_of([](TextSink& out) { threshold_entry()->get_value(out); });
    }
    static Ref<AdvancedPreferenceTypedText> threshold_entry() {
        return service_extension<AdvancedPreferenceTypedText>(*create_service<AdvancedPreference>(threshold));
    }
};

TEST_F(OwnServices, StandInTheAdvancedPreferences) {
    EXPECT_EQ(service_count(AdvancedPreference::class_guid), 2U);
    EXPECT_EQ(described(branch), "Quorvex {5A8F9BB1-E000-4C72-B0F7-66DF39463BAA} "
                                 "{35365484-CC58-4926-97E1-5E63F3ABB9E2} 0 yes yes no no");
    EXPECT_EQ(described(threshold), "Quick commands: warn before updating more than N items "
                                    "{3DBB31E7-F054-44D1-B3C8-F53DF2814987} "
                                    "{5A8F9BB1-E000-4C72-B0F7-66DF39463BAA} 0 yes no yes yes");
    EXPECT_TRUE(threshold_entry()->is_integer());
}

TEST_F(OwnServices, TakeTheThresholdFromText) {
    EXPECT_EQ(value(), "100");
    const struct {
        std::string_view text;
        const char* value;
    } rows[] = {{"7", "7"},
                {"", "0"},
                {"12a34", "12"},
                {"007", "7"},
                {" 5", "0"},
                {"-1", "0"},
                {"+1", "0"},
                {"18446744073709551615", "18446744073709551615"},
                {"18446744073709551616", "0"},
                {"18446744073709551617", "1"},
                {std::string_view("123").substr(0, 2), "12"}};
    for (const auto& [text, wanted] : rows) {
        threshold_entry()->set_value(text.data(), text.size());
        EXPECT_EQ(value(), wanted) << text;
    }
    EXPECT_TRUE(written().ends_with(test::bytes("08 00 00 00 0c 00 00 00 00 00 00 00")))
        << "the variable has it";
    threshold_entry()->reset();
    EXPECT_EQ(value(), "100");
}

TEST_F(OwnServices, TellOfTheComponent) {
    const auto version = only_service<ComponentVersion>();
    const auto told = [&] {
        return text_of([&](TextSink& out) { version->get_file_name(out); }) + '|'
               + text_of([&](TextSink& out) { version->get_component_name(out); }) + '|'
               + text_of([&](TextSink& out) { version->get_version(out); });
    };
    EXPECT_EQ(told(), "|Quorvex|1.9");
    client_.set_library_path("/opt/a/x.dll", "vnt_quorvex.dll");
    EXPECT_EQ(told(), "vnt_quorvex.dll|Quorvex|1.9");
    const std::string about = text_of([&](TextSink& out) { version->get_about(out); });
    EXPECT_TRUE(!about.empty() && about.find_first_of("\r\n") == std::string::npos) << about;
}

TEST_F(OwnServices, KnowTheComponentsFileName) {
    for (const char* path :
         {"vnt_quorvex.dll", "/a/vnt_quorvex.dll", "C:\\a\\vnt_quorvex.dll", "C:vnt_quorvex.dll",
          "pack|vnt_quorvex.dll", "/a\\b|c:vnt_quorvex.dll", "/\xFF/vnt_quorvex.dll"})
        EXPECT_TRUE(is_installed(path)) << path;
    for (const char* path :
         {"", "/", "/a/VNT_quorvex.dll", "/a/vnt_quorvex.DLL", "/a/vnt_quorvex.dll/", "/a/xvnt_quorvex.dll",
          "/vnt_quorvex.dll/x.dll", "vnt_quorvex.dll ", "a,vnt_quorvex.dll"})
        EXPECT_FALSE(is_installed(path)) << path;
}

} // namespace
} // namespace quorvex
