// Linked into a test executable, makes the one QApplication that widget tests need, before the
// first test runs. Tests run with QT_QPA_PLATFORM=offscreen, so no display is needed.
#include <QApplication>
#include <gtest/gtest.h>

#include <memory>

namespace {

class QtApplicationEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        if (!QApplication::instance()) {
            qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
            application_ = std::make_unique<QApplication>(argc_, argv_);
        }
    }
    // Destroyed here, after the last test and before the process exits: destroying it during exit
    // would run after Qt's own static data is gone.
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[16] = "tests";
    char *argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

::testing::Environment *const environment = ::testing::AddGlobalTestEnvironment(new QtApplicationEnvironment);

} // namespace
