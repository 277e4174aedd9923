#include <gtest/gtest.h>

#include "varsentix/platform/vb/VBError.h"
#include "varsentix/platform/vb/Variant.h"

using namespace varsentix::vb;

TEST(VBVariant, DefaultIsEmptyAndRendersAsEmptyText) {
  Variant v;
  EXPECT_TRUE(v.isEmpty());
  EXPECT_EQ(v.type(), VarType::Empty);
  EXPECT_EQ(v.toText(), "");
}

TEST(VBVariant, NullCannotBeRenderedAsText) {
  Variant v = Variant::null();
  EXPECT_TRUE(v.isNull());
  EXPECT_EQ(v.type(), VarType::Null);
  try {
    (void)v.toText();
    FAIL();
  } catch (const VBError& e) {
    EXPECT_EQ(e.number(), 94);
  }
}

TEST(VBVariant, TextFormsAreLocaleFree) {
  EXPECT_EQ(Variant(true).toText(), "True");
  EXPECT_EQ(Variant(int16_t{-3}).toText(), "-3");
  EXPECT_EQ(Variant(int32_t{70000}).toText(), "70000");
  EXPECT_EQ(Variant(int64_t{9007199254740993}).toText(), "9007199254740993");
  EXPECT_EQ(Variant(0.1 + 0.2).toText(), "0.30000000000000004");
  EXPECT_EQ(Variant(1.5f).toText(), "1.5");
  EXPECT_EQ(Variant(Currency{125000}).toText(), "12.5");
  EXPECT_EQ(Variant(Currency{-10000}).toText(), "-1");
  EXPECT_EQ(Variant(Decimal{"12.340"}).toText(), "12.340");
  EXPECT_EQ(Variant(std::string("O'Brien")).toText(), "O'Brien");
  EXPECT_EQ(Variant(Bytes{0x00, 0xAB, 0x7f}).toText(), "00AB7F");
}

TEST(VBVariant, DatesRenderIsoLike) {
  DateTime d{2024, 2, 29, 0, 0, 0, 0, DateTime::Kind::Date};
  EXPECT_EQ(Variant(d).toText(), "2024-02-29");
  DateTime ts{1999, 12, 31, 23, 59, 58, 123450000, DateTime::Kind::Timestamp};
  EXPECT_EQ(Variant(ts).toText(), "1999-12-31 23:59:58.12345");
  DateTime t{0, 1, 1, 7, 5, 0, 0, DateTime::Kind::Time};
  EXPECT_EQ(Variant(t).toText(), "07:05:00");
  DateTime old{999, 1, 2, 3, 4, 5, 0, DateTime::Kind::Timestamp};
  EXPECT_EQ(old.toText(), "0999-01-02 03:04:05");
}

TEST(VBVariant, DateTextParsesBack) {
  for (std::string text : {"2024-02-29", "1999-12-31 23:59:58.12345", "07:05:00",
                           "9999-12-31 23:59:59", "0100-01-01 00:00:00.000001"}) {
    EXPECT_EQ(DateTime::parse(text).toText(), text);
  }
  EXPECT_THROW(DateTime::parse("2024-13-01"), VBError);
  EXPECT_THROW(DateTime::parse("yesterday"), VBError);
}

TEST(VBVariant, NumericConversionsFollowVB) {
  EXPECT_EQ(Variant(std::string(" 4 ")).toInt16(), 4);
  EXPECT_EQ(Variant(2.5).toInt16(), 2);
  EXPECT_EQ(Variant(true).toInt16(), -1);
  EXPECT_THROW(Variant(std::string("abc")).toInt32(), VBError);
  EXPECT_THROW(Variant::null().toInt32(), VBError);
  EXPECT_EQ(Variant(int64_t{1} << 40).toInt64(), int64_t{1} << 40);
}

TEST(VBVariant, TypedAccessChecksTheSubType) {
  EXPECT_EQ(Variant("x").asString(), "x");
  EXPECT_THROW(Variant(int32_t{1}).asString(), VBError);
  EXPECT_EQ(Variant(Bytes{1, 2}).asBytes().size(), 2u);
}

TEST(VBVariant, EqualityComparesTypeAndValue) {
  EXPECT_EQ(Variant(int32_t{1}), Variant(int32_t{1}));
  EXPECT_NE(Variant(int32_t{1}), Variant(int16_t{1}));
  EXPECT_EQ(Variant::null(), Variant::null());
  EXPECT_NE(Variant(), Variant::null());
}

TEST(VBVariant, SetTakesTheSubTypeOfTheValueGiven) {
  Variant value = std::string("text");
  value.set(int32_t{7});
  EXPECT_EQ(value.type(), VarType::Long);
  EXPECT_EQ(value, Variant(int32_t{7}));
  value.set(int64_t{1} << 40);
  EXPECT_EQ(value.type(), VarType::LongLong);
  EXPECT_EQ(value.toInt64(), int64_t{1} << 40);
  value.set(int64_t{-3});  // the same sub-type, assigned over
  EXPECT_EQ(value, Variant(int64_t{-3}));
  value.set(2.5);
  EXPECT_EQ(value, Variant(2.5));
  value.set(false);
  EXPECT_EQ(value.type(), VarType::Boolean);
  value.set(int16_t{3});
  EXPECT_EQ(value.type(), VarType::Integer);
  value.set(Decimal{"-12.340"});
  EXPECT_EQ(value.type(), VarType::Decimal);
  EXPECT_EQ(value.toText(), "-12.340");
  value.set(std::string("again"));
  EXPECT_EQ(value.asString(), "again");
  static_assert(Variant::isSubType<std::string> && Variant::isSubType<double> && !Variant::isSubType<const char*> &&
                !Variant::isSubType<long long unsigned>);
}
