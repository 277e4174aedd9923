#include "varsentix/platform/vb/VBError.h"

namespace varsentix::vb {

std::string standardErrorText(int32_t number) {
  switch (number) {
    case errnum::InvalidProcedureCall: return "Invalid procedure call or argument";
    case errnum::Overflow: return "Overflow";
    case errnum::OutOfMemory: return "Out of memory";
    case errnum::SubscriptOutOfRange: return "Subscript out of range";
    case errnum::DivisionByZero: return "Division by zero";
    case errnum::TypeMismatch: return "Type mismatch";
    case errnum::OutOfStackSpace: return "Out of stack space";
    case errnum::FileNotFound: return "File not found";
    case errnum::PathFileAccessError: return "Path/File access error";
    case errnum::ObjectNotSet: return "Object variable or With block variable not set";
    case errnum::InvalidUseOfNull: return "Invalid use of Null";
    case errnum::ObjectRequired: return "Object required";
    case errnum::ArgumentsWrongType:
      return "Arguments are of the wrong type, are out of acceptable range, or are in conflict "
             "with one another.";
    case errnum::NoCurrentRecord:
      return "Either BOF or EOF is True, or the current record has been deleted. Requested "
             "operation requires a current record.";
    case errnum::NotSupported:
      return "Current Recordset does not support updating. This may be a limitation of the "
             "provider, or of the selected locktype.";
    case errnum::ItemNotFound:
      return "Item cannot be found in the collection corresponding to the requested name or "
             "ordinal.";
    case errnum::ObjectClosed: return "Operation is not allowed when the object is closed.";
    case errnum::ObjectOpen: return "Operation is not allowed when the object is open.";
    case errnum::ProviderNotFound:
      return "Provider cannot be found. It may not be properly installed.";
    default: return "Application-defined or object-defined error";
  }
}

VBError::VBError(int32_t number, std::string source)
    : VBError(number, standardErrorText(number), std::move(source)) {}

VBError::VBError(int32_t number, std::string description, std::string source)
    : std::runtime_error(description),
      number_(number),
      description_(std::move(description)),
      source_(std::move(source)) {}

VBError& VBError::withDriverDetail(std::string sqlState, int32_t nativeError) {
  sqlState_ = std::move(sqlState);
  nativeError_ = nativeError;
  return *this;
}

void raiseError(int32_t number) { throw VBError(number); }

void raiseError(int32_t number, const std::string& description, const std::string& source) {
  throw VBError(number, description, source);
}

}  // namespace varsentix::vb
