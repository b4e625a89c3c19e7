// Reference counting, interfaces and class objects.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "platform/component/ClassFactory.h"
#include "platform/component/Guard.h"
#include "platform/component/SystemInterfaces.h"
#include "tests/platform/TestThing.h"

namespace platform {
namespace {

using testing_support::INumber;
using testing_support::ISettable;
using testing_support::NumberOf;
using testing_support::Thing;

int ended = 0;
Thing* MakeThing(int number) {
  return new Thing(number, [] { ++ended; });
}

class ComponentTest : public testing::Test {
 protected:
  ComponentTest() { ended = 0; }
  ~ComponentTest() override { EXPECT_FALSE(ModuleLock::AnyHeld()); }
};

TEST_F(ComponentTest, InterfacesBelongToOneObject) {
  const auto thing = ComPtr<Thing>::Attach(MakeThing(4));
  const auto number = ComPtr<INumber>::Query(static_cast<INumber*>(thing.Get()));
  const auto settable = ComPtr<ISettable>::Query(number.Get());
  ASSERT_TRUE(settable);
  EXPECT_EQ(settable->SetNumber(9), S_OK);
  EXPECT_EQ(NumberOf(number), 9);
  // A host takes two pointers for the same object when both give the same IUnknown.
  EXPECT_EQ(static_cast<void*>(ComPtr<IUnknown>::Query(settable.Get()).Get()),
            static_cast<void*>(number.Get()));
}

TEST_F(ComponentTest, ThePointerCounts) {
  ComPtr<INumber> first = ComPtr<INumber>::Attach(MakeThing(1));
  ComPtr<INumber> copy = first;
  ComPtr<INumber> moved = std::move(first);
  EXPECT_FALSE(first);
  EXPECT_EQ(NumberOf(copy), 1);
  moved.Reset();
  EXPECT_EQ(ended, 0);
  copy = ComPtr<INumber>::Attach(MakeThing(2));
  EXPECT_EQ(ended, 1);
  *copy.Put() = MakeThing(3);
  EXPECT_EQ(ended, 2);
  INumber* loose = copy.Detach();
  EXPECT_FALSE(copy);
  EXPECT_EQ(loose->Release(), 0u);
  EXPECT_EQ(ended, 3);
}

TEST_F(ComponentTest, AClassObjectMakesObjects) {
  const auto factory = ComPtr<ClassFactory>::Attach(
      new ClassFactory([]() -> IUnknown* { return static_cast<INumber*>(MakeThing(6)); }));
  ComPtr<INumber> made;
  EXPECT_EQ(factory->CreateInstance(nullptr, INumber::kIid, made.PutVoid()), S_OK);
  EXPECT_EQ(NumberOf(made), 6);
  void* result = &ended;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &result), E_NOINTERFACE);
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(ended, 1);  // the one that lacked the interface
}

TEST_F(ComponentTest, AMakerMayThrow) {
  const auto factory =
      ComPtr<ClassFactory>::Attach(new ClassFactory([]() -> IUnknown* { throw std::bad_alloc(); }));
  void* result = &ended;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &result), E_OUTOFMEMORY);
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(Guard([]() -> HRESULT { throw std::runtime_error("x"); }), E_FAIL);
  EXPECT_EQ(Guard([]() -> HRESULT { throw 1; }), E_FAIL);
}

}  // namespace
}  // namespace platform
