#pragma once
// The run-time error of the library: what Visual Basic's Err object carried.
#include <cstdint>
#include <stdexcept>
#include <string>

namespace varsentix::vb {

// Standard run-time error numbers used across the library.
namespace errnum {
inline constexpr int32_t InvalidProcedureCall = 5;
inline constexpr int32_t Overflow = 6;
inline constexpr int32_t OutOfMemory = 7;
inline constexpr int32_t SubscriptOutOfRange = 9;
inline constexpr int32_t DivisionByZero = 11;
inline constexpr int32_t TypeMismatch = 13;
inline constexpr int32_t OutOfStackSpace = 28;
inline constexpr int32_t FileNotFound = 53;
inline constexpr int32_t PathFileAccessError = 75;
inline constexpr int32_t ObjectNotSet = 91;
inline constexpr int32_t InvalidUseOfNull = 94;
inline constexpr int32_t ObjectRequired = 424;
inline constexpr int32_t ArgumentsWrongType = 3001;  // ADO adErrInvalidArgument
inline constexpr int32_t NoCurrentRecord = 3021;     // ADO adErrNoCurrentRecord
inline constexpr int32_t NotSupported = 3251;        // ADO adErrFeatureNotAvailable
inline constexpr int32_t ItemNotFound = 3265;        // ADO adErrItemNotFound
inline constexpr int32_t ObjectClosed = 3704;        // ADO adErrObjectClosed
inline constexpr int32_t ObjectOpen = 3705;          // ADO adErrObjectOpen
inline constexpr int32_t ProviderNotFound = 3706;    // ADO adErrProviderNotFound
inline constexpr int32_t BoundToCommand = 3707;      // ADO adErrBoundToCommand
// Provider (OLE DB) failures, as Visual Basic shows their HRESULTs.
inline constexpr int32_t ProviderError = -2147467259;         // E_FAIL: generic, connection failures
inline constexpr int32_t ProviderSyntaxError = -2147217900;   // DB_E_ERRORSINCOMMAND
inline constexpr int32_t ProviderNoSuchTable = -2147217865;   // DB_E_NOTABLE
inline constexpr int32_t ProviderIntegrityViolation = -2147217873;  // DB_E_INTEGRITYVIOLATION
inline constexpr int32_t ProviderReadOnly = -2147217911;      // DB_SEC_E_PERMISSIONDENIED
inline constexpr int32_t ProviderRowNotFound = -2147217864;   // DB_E_CANTFINDROW / row changed
}  // namespace errnum

// The standard text of a standard error number ("Overflow" for 6), or "Application-defined or
// object-defined error" for a number without one, as Visual Basic does.
std::string standardErrorText(int32_t number);

class VBError : public std::runtime_error {
 public:
  // An error with the standard text of its number.
  explicit VBError(int32_t number, std::string source = "VarsentiX");
  VBError(int32_t number, std::string description, std::string source);

  int32_t number() const noexcept { return number_; }
  const std::string& description() const noexcept { return description_; }
  const std::string& source() const noexcept { return source_; }

  // Driver-level detail kept beside the description: SQLSTATE (ODBC) or extended result code
  // (SQLite) and the engine's native error code. Empty / 0 when the failure has none.
  const std::string& sqlState() const noexcept { return sqlState_; }
  int32_t nativeError() const noexcept { return nativeError_; }
  VBError& withDriverDetail(std::string sqlState, int32_t nativeError);

 private:
  int32_t number_;
  std::string description_;
  std::string source_;
  std::string sqlState_;
  int32_t nativeError_ = 0;
};

// Throws VBError(number) with its standard text.
[[noreturn]] void raiseError(int32_t number);
[[noreturn]] void raiseError(int32_t number, const std::string& description,
                        const std::string& source = "VarsentiX");

}  // namespace varsentix::vb
