#include "host/api/registered_services.h"
#include "tests/support/fake_host.h"

namespace vantaro {
namespace {

TEST(GuidText, NamesTheBytesInTheirFieldOrder) {
    constexpr Guid id = guid("{00112233-4455-6677-8899-AABBCCDDEEFF}");
    const std::array<std::uint8_t, 16> bytes{0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                                             0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
    EXPECT_EQ(id.bytes, bytes);
    EXPECT_EQ(to_text(id), "{00112233-4455-6677-8899-AABBCCDDEEFF}");
    EXPECT_EQ(parse_guid("{00112233-4455-6677-8899-aabbccddeeff}"), id);
    EXPECT_LT(guid("{FF000000-0000-0000-0000-000000000000}"), guid("{00000001-0000-0000-0000-000000000000}"));
    for (const char* text :
         {"", "00112233-4455-6677-8899-AABBCCDDEEFF", "{00112233-4455-6677-8899-AABBCCDDEEF}",
          "{00112233-4455-6677-8899-AABBCCDDEEFF0}", "{00112233-4455-6677-8899+AABBCCDDEEFF}",
          "{00112233-4455-6677-8899-AABBCCDDEEFG}", "{0011-22334455-6677-8899-AABBCCDDEEFF}"})
        EXPECT_EQ(parse_guid(text), std::nullopt) << text;
}

using test::references;

class HeapObject : public test::WithHost {
protected:
    Ref<test::FakeTagIO> object_ = make_service<test::FakeTagIO>(host_);
};

TEST_F(HeapObject, LivesUntilItsLastReference) {
    EXPECT_EQ(object_->add_ref(), 2U);
    EXPECT_EQ(object_->release(), 1U);
    Ref<HostTagIO> wider = object_;
    Ref<HostTagIO> moved = std::move(wider);
    EXPECT_FALSE(wider); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(references(*object_), 2U);
    moved = Ref<HostTagIO>(moved.get());
    EXPECT_EQ(references(*object_), 2U);
    HostTagIO* detached = moved.detach();
    object_ = nullptr;
    EXPECT_EQ(detached->release(), 0U);
}

TEST_F(HeapObject, AnswersForItsClassesOnly) {
    const Ref<test::FakeTagIO> other = make_service<test::FakeTagIO>(host_);
    ServiceBase* out = Ref(other).detach();
    for (const Guid& own : {HostTagIOUpdate::class_guid, HostTagIO::class_guid}) {
        EXPECT_TRUE(object_->query(out, own)) << to_text(own);
        EXPECT_EQ(out, object_.get());
        EXPECT_EQ(references(*object_), 2U);
        EXPECT_EQ(references(*other), 1U) << "what out held is released";
    }
    EXPECT_FALSE(object_->query(out, TrackFilter::class_guid));
    EXPECT_EQ(out, object_.get());
    EXPECT_EQ(references(*object_), 2U) << "a refusal leaves out alone";
    out->release();
    EXPECT_FALSE(query_interface<TrackFilter>(*object_));
}

TEST(StaticObject, CountsNothing) {
    struct Check final : StaticService<InstallationCheck> {
        bool is_installed_correctly() override { return true; }
    } check;
    ServiceBase* out = nullptr;
    EXPECT_TRUE(check.query(out, InstallationCheck::class_guid));
    EXPECT_EQ(out, &check);
    EXPECT_EQ(check.add_ref(), 1U);
    EXPECT_EQ(check.release(), 1U);
}

} // namespace
} // namespace vantaro
