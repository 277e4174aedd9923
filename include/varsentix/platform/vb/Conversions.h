#pragma once
// Visual Basic's conversion and text functions, with VB semantics and no locale.
#include <cstdint>
#include <string>
#include <string_view>

namespace varsentix::vb {

// CInt: text to Integer (int16). Surrounding blanks are allowed, a fraction is rounded to the
// nearest integer with ties to the even one. Raises 13 "Type mismatch" for text that is not a
// number (the empty text included) and 6 "Overflow" outside -32768..32767.
int16_t CInt(std::string_view text);
// CLng: the same for Long (int32).
int32_t CLng(std::string_view text);
// CDbl: text to Double; 13 for text that is not a number, 6 out of range.
double CDbl(std::string_view text);
// Rounds half to even and range-checks, as CInt/CLng do for a number (6 "Overflow").
int16_t CInt(double value);
int32_t CLng(double value);

// CStr: a number as decimal text with no leading blank, a boolean as "True" / "False".
std::string CStr(int64_t value);
inline std::string CStr(int32_t value) { return CStr(static_cast<int64_t>(value)); }
inline std::string CStr(int16_t value) { return CStr(static_cast<int64_t>(value)); }
std::string CStr(bool value);
// A floating-point number as the shortest text that reads back to the same number.
std::string CStr(double value);
std::string CStr(float value);
// Text passes through; without this overload a literal would choose the bool overload.
inline std::string CStr(const char* text) { return text; }
inline std::string CStr(const std::string& text) { return text; }

// Trim, LTrim, RTrim remove blanks (the space character only), as VB does.
std::string Trim(std::string_view text);
std::string LTrim(std::string_view text);
std::string RTrim(std::string_view text);

// InStr: the 1-based position of needle in haystack from the 1-based start, or 0 when absent.
// Case-sensitive (binary compare). An empty needle is found at start.
int32_t InStr(std::string_view haystack, std::string_view needle, int32_t start = 1);
// Left, Right, Mid with VB's 1-based positions; lengths past the end are cut to the end.
std::string Left(std::string_view text, int32_t length);
std::string Right(std::string_view text, int32_t length);
std::string Mid(std::string_view text, int32_t start);
std::string Mid(std::string_view text, int32_t start, int32_t length);
// UCase / LCase for ASCII letters; other bytes pass through.
std::string UCase(std::string_view text);
std::string LCase(std::string_view text);

}  // namespace varsentix::vb
