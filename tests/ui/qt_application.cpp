// A QApplication from the first test of a program to the last; on the platform that needs no display, unless
// QUORVEX_TEST_PLATFORM names another.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>

#include <memory>

namespace {

class QtEnvironment final : public testing::Environment {
public:
    void SetUp() override {
        const QByteArray platform = qgetenv("QUORVEX_TEST_PLATFORM");
        qputenv("QT_QPA_PLATFORM", platform.isEmpty() ? "offscreen" : platform);
        QApplication::setStyle("fusion");
        application_ = std::make_unique<QApplication>(argument_count_, arguments_);
        QFont small = QApplication::font();
        small.setPointSize(6); // the screen of that platform is small
        QApplication::setFont(small);
    }
    void TearDown() override { application_.reset(); }

private:
    int argument_count_ = 1;
    char name_[8] = "widgets";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new QtEnvironment);

} // namespace
