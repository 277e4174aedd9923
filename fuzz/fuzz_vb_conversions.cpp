// Text to numbers and dates: CInt, CLng, CDbl, DateTime::parse and the conversion of a
// persisted or engine text to the value of each column type. A value read is written as text
// and read back to the same value.
#include "FuzzSupport.h"
#include "platform/ado/TypeInfo.h"
#include "platform/ado/XmlPersistence.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/Variant.h"

using namespace varsentix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text = fuzz::text(data, size);
  fuzz::expectOnlyVBError([&] { vb::CInt(text); });
  fuzz::expectOnlyVBError([&] { vb::CLng(text); });
  fuzz::expectOnlyVBError([&] {
    double value = vb::CDbl(text);
    fuzz::expectOnlyVBError([&] { vb::CInt(value); });
    fuzz::expectOnlyVBError([&] { vb::CLng(value); });
    if (vb::CDbl(vb::CStr(value)) != value) fuzz::finding("CDbl(CStr(x)) differs from x for " + text);
  });
  fuzz::expectOnlyVBError([&] {
    vb::DateTime value = vb::DateTime::parse(text);
    if (!(vb::DateTime::parse(value.toText()) == value))
      fuzz::finding("a date read from '" + text + "' reads back otherwise from " + value.toText());
  });
  fuzz::expectOnlyVBError([&] { vb::Variant(text).toBool(); });
  fuzz::expectOnlyVBError([&] { vb::Variant(text).toInt64(); });
  using namespace ado;
  for (DataTypeEnum type : {adTinyInt, adSmallInt, adInteger, adUnsignedInt, adBigInt, adSingle, adDouble,
                            adCurrency, adNumeric, adBoolean, adDate, adDBDate, adDBTime, adDBTimeStamp,
                            adVarBinary, adVarWChar}) {
    fuzz::expectOnlyVBError([&] {
      vb::Variant value = ado::detail::variantFromText(type, text);
      std::string written = ado::detail::persistedText(type, value);
      vb::Variant back = ado::detail::variantFromText(type, written);
      if (!(back == value) && type != adSingle && type != adDouble)
        fuzz::finding("a value of type " + std::to_string(type) + " read from '" + text +
                      "' reads back otherwise from '" + written + "'");
      ado::detail::coerceToColumn(type, value);
      ado::detail::actualSizeOf(type, value);
      value.toText();
    });
  }
  return 0;
}
