// All tests of the program run in the locale that TORVIK_TEST_LOCALE names, if it does: they must not notice.
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace torvik::test {
namespace {

class DecimalComma : public testing::Environment {
  public:
    void SetUp() override {
        const char* const name = std::getenv("TORVIK_TEST_LOCALE");
        if (name == nullptr) return;
        ASSERT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
        std::array<char, 8> text{};
        std::snprintf(text.data(), text.size(), "%.1f", 1.5);
        ASSERT_STREQ(text.data(), "1,5");
        std::puts("running with a decimal comma");
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }
};

[[maybe_unused]] testing::Environment* const environment = testing::AddGlobalTestEnvironment(new DecimalComma);

}  // namespace
}  // namespace torvik::test
