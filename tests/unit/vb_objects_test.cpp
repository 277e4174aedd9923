#include <gtest/gtest.h>

#include "varsentix/platform/vb/Collection.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/ResumeNext.h"

using namespace varsentix::vb;

namespace {
struct Thing {
  int value = 0;
};
}  // namespace

TEST(VBObjects, UsingAnEmptyReferenceRaises91) {
  Ref<Thing> nothing;
  EXPECT_TRUE(nothing.isNothing());
  try {
    nothing->value = 1;
    FAIL();
  } catch (const VBError& e) {
    EXPECT_EQ(e.number(), 91);
    EXPECT_EQ(e.description(), "Object variable or With block variable not set");
  }
}

TEST(VBObjects, CopiesOfAReferenceShareTheObject) {
  auto a = Ref<Thing>::make();
  Ref<Thing> b = a;
  b->value = 7;
  EXPECT_EQ(a->value, 7);
  EXPECT_TRUE(a == b);
}

TEST(VBObjects, CollectionIsOneBasedAndShared) {
  auto items = Ref<Collection<Thing>>::make();
  auto first = Ref<Thing>::make();
  first->value = 1;
  auto second = Ref<Thing>::make();
  second->value = 2;
  items->Add(first);
  items->Add(second);
  Ref<Collection<Thing>> alias = items;
  EXPECT_EQ(alias->Count(), 2);
  EXPECT_EQ(alias->Item(1)->value, 1);
  EXPECT_EQ(alias->Item(2)->value, 2);
  alias->Remove(1);
  EXPECT_EQ(items->Count(), 1);
  EXPECT_EQ(items->Item(1)->value, 2);
}

TEST(VBObjects, CollectionIndexOutOfRangeRaises5) {
  Collection<Thing> items;
  items.Add(Ref<Thing>::make());
  for (int32_t bad : {0, 2, -1}) {
    try {
      (void)items.Item(bad);
      FAIL() << bad;
    } catch (const VBError& e) {
      EXPECT_EQ(e.number(), 5);
    }
  }
  EXPECT_THROW(items.Remove(3), VBError);
}

TEST(VBObjects, ResumeNextSwallowsOneStepAndTheNextRuns) {
  ResumeNext onError;
  std::vector<int> ran;
  EXPECT_FALSE(onError([&] {
    ran.push_back(1);
    raiseError(13);
  }));
  EXPECT_TRUE(onError([&] { ran.push_back(2); }));
  EXPECT_EQ(ran, (std::vector<int>{1, 2}));
  ASSERT_TRUE(onError.lastError().has_value());
  EXPECT_EQ(onError.errNumber(), 13);
  onError.clear();
  EXPECT_EQ(onError.errNumber(), 0);
}

TEST(VBObjects, ResumeNextTurnsForeignExceptionsIntoErrors) {
  ResumeNext onError;
  EXPECT_FALSE(onError([] { throw std::runtime_error("disk on fire"); }));
  EXPECT_EQ(onError.lastError()->description(), "disk on fire");
}
