#include "host/access.h"

#include "host/filesystem_access.h"
#include "host/input_access.h"
#include "host/shared/failure.h"
#include "tests/support/failures.h"
#include "tests/support/fake_host.h"
#include "tests/support/memory_files.h"

namespace quorvex {
namespace {

using namespace vantaro;
namespace test = vantaro::test;
using test::failure_of;

using Access = test::WithHost;

TEST_F(Access, FindsTheOnlyServiceOfAClass) {
    EXPECT_EQ(failure_of([] { only_service<FileSystem>(); }), "Service not found");
    const auto files = make_service<test::MemoryFiles>();
    host_.offer<FileSystem>(files);
    EXPECT_EQ(only_service<FileSystem>(), files);
    EXPECT_EQ(test::references(*files), 2U) << "ours and the host's";
    host_.offer<FileSystem>(files);
    EXPECT_EQ(failure_of([] { only_service<FileSystem>(); }), "Service duplicated");
    EXPECT_EQ(failure_of([] { create_service<FileSystem>(2); }), "Service not found");
}

TEST_F(Access, EndsTheProcessWithoutARequiredService) {
    uCallStackTracker outer("the outer call");
    uCallStackTracker inner("the inner call");
    EXPECT_DEATH(required_service<FileSystem>(), "Fatal internal error(.|\n)*inner call(.|\n)*outer call");
    const auto tag_io = required_service<HostTagIO>();
    EXPECT_EQ(failure_of([&] { service_extension<HostConsole>(*tag_io); }), "Service extension not found");
}

TEST_F(Access, GoesToTheFileSystemThatServes) {
    host_.offer<FileSystem>(make_service<test::MemoryFiles>());
    for (const auto& [path, shown] : {std::pair("mem:\xFF", "\xFF"), {"mem:", "mem:"}, {"disk:a", "disk:a"}})
        EXPECT_EQ(filesystem::g_get_display_path(path), shown);
    EXPECT_EQ(failure_of([] { input_entry::g_open_for_info_read(nullptr, "a.mp3", test::run_on); }),
              "Unsupported format or corrupted file");
}

TEST_F(Access, PrintsOnEveryConsoleWhileServicesAreAvailable) {
    host_.offer<HostConsole>(create_service<HostConsole>(0));
    print_to_console("one");
    set_services_available(false);
    print_to_console("dropped");
    set_services_available(true);
    {
        const ConsoleSilence silence;
        print_to_console("dropped, too");
    }
    print_to_console("two");
    EXPECT_EQ(host_.take_events(), "one\none\ntwo\ntwo");
}

} // namespace
} // namespace quorvex
