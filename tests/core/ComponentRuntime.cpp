// The component runtime for all tests of the program: creators ask it for registered classes.
#include <gtest/gtest.h>
#include <objbase.h>

namespace {

class ComponentRuntime final : public testing::Environment {
 public:
  void SetUp() override { ASSERT_GE(CoInitialize(nullptr), 0); }
  void TearDown() override { CoUninitialize(); }
};

[[maybe_unused]] const testing::Environment* const runtime =
    testing::AddGlobalTestEnvironment(new ComponentRuntime);

}  // namespace
